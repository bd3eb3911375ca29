// Apple events: their attributes, set when the event is made, and their parameters, which
// are the event's record fields.
#include "AEDesc.h"
#include "AECoercion.h"

#include <Carbon/AppleEvents.h>

#include <atomic>

using namespace carbon::ae;

namespace {

// Return IDs that the process hands out: positive, so never kAutoGenerateReturnID, and
// never 0, which some senders treat as "none".
AEReturnID NextReturnID()
{
    static std::atomic<UInt32> sCounter{0};
    return AEReturnID(sCounter.fetch_add(1, std::memory_order_relaxed) % 0x7FFF + 1);
}

template <class T>
void PutScalar(std::vector<Entry>& ioEntries, AEKeyword inKeyword, DescType inType, T inValue)
{
    PutEntry(ioEntries, inKeyword, inType, DataValue(&inValue, sizeof inValue));
}

OSErr ReadEvent(const AppleEvent* inEvent, const Value*& outValue)
{
    if (OSErr status = Read(inEvent, outValue); status != noErr)
        return status;
    return outValue->kind == Kind::Event ? noErr : errAENotAppleEvent;
}

// The attribute of an event with that keyword: errAEDescNotFound where there is none.
OSErr ReadAttribute(const AppleEvent* inEvent, AEKeyword inKeyword, const Entry*& outAttribute)
{
    const Value* event = nullptr;
    if (OSErr status = ReadEvent(inEvent, event); status != noErr)
        return status;
    return FindKeyed(event->attributes, inKeyword, outAttribute);
}

OSErr WriteEvent(AppleEvent* ioEvent, Value*& outValue)
{
    if (OSErr status = Write(ioEvent, outValue); status != noErr)
        return status == errAEWrongDataType ? OSErr(errAENotAppleEvent) : status;
    return outValue->kind == Kind::Event ? noErr : errAENotAppleEvent;
}

}  // namespace

OSErr AECreateAppleEvent(AEEventClass inEventClass, AEEventID inEventID, const AEAddressDesc* inTarget,
                         AEReturnID inReturnID, AETransactionID inTransactionID, AppleEvent* outResult)
{
    if (outResult == nullptr)
        return paramErr;
    AEInitializeDesc(outResult);
    const Value* target = nullptr;
    if (OSErr status = Read(inTarget, target); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        Value event;
        event.kind = Kind::Event;
        AEReturnID returnID = inReturnID == kAutoGenerateReturnID ? NextReturnID() : inReturnID;
        PutScalar(event.attributes, keyEventClassAttr, typeType, inEventClass);
        PutScalar(event.attributes, keyEventIDAttr, typeType, inEventID);
        PutEntry(event.attributes, keyAddressAttr, inTarget->descriptorType, Value(*target));
        PutScalar(event.attributes, keyReturnIDAttr, typeSInt16, returnID);
        PutScalar(event.attributes, keyTransactionIDAttr, typeSInt32, inTransactionID);
        StoreDesc(typeAppleEvent, std::move(event), outResult);
        return noErr;
    });
}

// Parameters are an event's record fields, so the record calls serve them.
OSErr AEPutParamPtr(AppleEvent* ioEvent, AEKeyword inKeyword, DescType inTypeCode, const void* inDataPtr,
                    Size inDataSize)
{
    return AEPutKeyPtr(ioEvent, inKeyword, inTypeCode, inDataPtr, inDataSize);
}

OSErr AEPutParamDesc(AppleEvent* ioEvent, AEKeyword inKeyword, const AEDesc* inDesc)
{
    return AEPutKeyDesc(ioEvent, inKeyword, inDesc);
}

OSErr AEGetParamPtr(const AppleEvent* inEvent, AEKeyword inKeyword, DescType inDesiredType, DescType* outTypeCode,
                    void* outDataPtr, Size inMaximumSize, Size* outActualSize)
{
    return AEGetKeyPtr(inEvent, inKeyword, inDesiredType, outTypeCode, outDataPtr, inMaximumSize, outActualSize);
}

OSErr AEGetParamDesc(const AppleEvent* inEvent, AEKeyword inKeyword, DescType inDesiredType, AEDesc* outResult)
{
    return AEGetKeyDesc(inEvent, inKeyword, inDesiredType, outResult);
}

OSErr AESizeOfParam(const AppleEvent* inEvent, AEKeyword inKeyword, DescType* outTypeCode, Size* outDataSize)
{
    return AESizeOfKeyDesc(inEvent, inKeyword, outTypeCode, outDataSize);
}

OSErr AEDeleteParam(AppleEvent* ioEvent, AEKeyword inKeyword) { return AEDeleteKeyDesc(ioEvent, inKeyword); }

OSErr AEPutAttributePtr(AppleEvent* ioEvent, AEKeyword inKeyword, DescType inTypeCode, const void* inDataPtr,
                        Size inDataSize)
{
    Value* event = nullptr;
    if (OSErr status = WriteEvent(ioEvent, event); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        Value attribute;
        if (OSErr status = MakeValue(inTypeCode, inDataPtr, inDataSize, attribute); status != noErr)
            return status;
        PutEntry(event->attributes, inKeyword, inTypeCode, std::move(attribute));
        return noErr;
    });
}

OSErr AEPutAttributeDesc(AppleEvent* ioEvent, AEKeyword inKeyword, const AEDesc* inDesc)
{
    Value* event = nullptr;
    const Value* attribute = nullptr;
    if (OSErr status = WriteEvent(ioEvent, event); status != noErr)
        return status;
    if (OSErr status = Read(inDesc, attribute); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        PutEntry(event->attributes, inKeyword, inDesc->descriptorType, Value(*attribute));
        return noErr;
    });
}

OSErr AEGetAttributePtr(const AppleEvent* inEvent, AEKeyword inKeyword, DescType inDesiredType, DescType* outTypeCode,
                        void* outDataPtr, Size inMaximumSize, Size* outActualSize)
{
    const Entry* attribute = nullptr;
    if (OSErr status = ReadAttribute(inEvent, inKeyword, attribute); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        return GetAsPtr(attribute->type, attribute->value, inDesiredType, outTypeCode, outDataPtr, inMaximumSize,
                        outActualSize);
    });
}

OSErr AEGetAttributeDesc(const AppleEvent* inEvent, AEKeyword inKeyword, DescType inDesiredType, AEDesc* outResult)
{
    AEInitializeDesc(outResult);
    const Entry* attribute = nullptr;
    if (OSErr status = ReadAttribute(inEvent, inKeyword, attribute); status != noErr)
        return status;
    return Guarded([&]() -> OSErr { return GetAsDesc(attribute->type, attribute->value, inDesiredType, outResult); });
}

OSErr AESizeOfAttribute(const AppleEvent* inEvent, AEKeyword inKeyword, DescType* outTypeCode, Size* outDataSize)
{
    const Entry* attribute = nullptr;
    if (OSErr status = ReadAttribute(inEvent, inKeyword, attribute); status != noErr)
        return status;
    return SizeOfEntry(*attribute, outTypeCode, outDataSize);
}
