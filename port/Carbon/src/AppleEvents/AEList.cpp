// Lists and records: items by index, fields by keyword. An Apple event answers the same
// calls with its parameters.
#include "AEDesc.h"
#include "AECoercion.h"
#include "AEFlatten.h"

#include <cstring>

using namespace carbon::ae;

namespace {

constexpr Size kFactoredTypeSize = sizeof(DescType);

OSErr ReadContainer(const AEDescList* inList, const Value*& outValue)
{
    if (OSErr status = Read(inList, outValue); status != noErr)
        return status;
    return outValue->IsContainer() ? noErr : errAEWrongDataType;
}

OSErr ReadKeyed(const AERecord* inRecord, const Value*& outValue)
{
    if (OSErr status = Read(inRecord, outValue); status != noErr)
        return status;
    return outValue->IsKeyed() ? noErr : errAEWrongDataType;
}

OSErr WriteContainer(AEDescList* ioList, Value*& outValue, bool inKeyed)
{
    if (OSErr status = Write(ioList, outValue); status != noErr)
        return status;
    bool fits = inKeyed ? outValue->IsKeyed() : outValue->kind == Kind::List;
    return fits ? noErr : errAEWrongDataType;
}

// The item at a 1-based index of a list, record or event.
const Entry* NthItem(const Value& inValue, long inIndex)
{
    if (inIndex < 1 || std::size_t(inIndex) > inValue.items.size())
        return nullptr;
    return &inValue.items[std::size_t(inIndex - 1)];
}

// The item at a 1-based index of a list, record or event: errAEBadListItem where there is none.
OSErr ReadNthItem(const AEDescList* inList, long inIndex, const Entry*& outItem)
{
    const Value* value = nullptr;
    if (OSErr status = ReadContainer(inList, value); status != noErr)
        return status;
    outItem = NthItem(*value, inIndex);
    return outItem ? noErr : OSErr(errAEBadListItem);
}

// The field of a record or event with that keyword: errAEDescNotFound where there is none.
OSErr ReadField(const AERecord* inRecord, AEKeyword inKeyword, const Entry*& outField)
{
    const Value* record = nullptr;
    if (OSErr status = ReadKeyed(inRecord, record); status != noErr)
        return status;
    return FindKeyed(record->items, inKeyword, outField);
}

// Every item of a factored list begins with its common data: the type, then leading bytes.
bool MatchesFactoring(const Value& inList, DescType inType, const Value& inItem)
{
    if (inList.factoring.empty())
        return true;
    DescType factoredType;
    std::memcpy(&factoredType, inList.factoring.data(), sizeof factoredType);
    std::span<const UInt8> leading = std::span(inList.factoring).subspan(kFactoredTypeSize);
    if (factoredType != inType)
        return false;
    if (leading.empty())
        return true;
    return !inItem.IsContainer() && inItem.bytes.size() >= leading.size() &&
           std::equal(leading.begin(), leading.end(), inItem.bytes.begin());
}

OSErr PutItem(Value& ioList, long inIndex, DescType inType, Value&& inItem)
{
    std::size_t count = ioList.items.size();
    if (inIndex < 0 || std::size_t(inIndex) > count + 1)
        return errAEIllegalIndex;
    if (!MatchesFactoring(ioList, inType, inItem))
        return errAEWrongDataType;
    if (inIndex == 0 || std::size_t(inIndex) == count + 1)
        ioList.items.push_back(Entry{typeWildCard, inType, std::move(inItem)});
    else
        ioList.items[std::size_t(inIndex - 1)] = Entry{typeWildCard, inType, std::move(inItem)};
    return noErr;
}

}  // namespace

OSErr AECreateList(const void* inFactoringPtr, Size inFactoredSize, Boolean inIsRecord, AEDescList* outList)
{
    if (outList == nullptr)
        return paramErr;
    AEInitializeDesc(outList);
    bool factored = !inIsRecord && inFactoringPtr != nullptr && inFactoredSize > 0;
    if (factored && inFactoredSize < kFactoredTypeSize)
        return paramErr;
    return Guarded([&]() -> OSErr {
        Value list;
        list.kind = inIsRecord ? Kind::Record : Kind::List;
        if (factored)
            list.factoring = DataValue(inFactoringPtr, inFactoredSize).bytes;
        StoreDesc(inIsRecord ? typeAERecord : typeAEList, std::move(list), outList);
        return noErr;
    });
}

OSErr AECountItems(const AEDescList* inList, long* outCount)
{
    const Value* value = nullptr;
    if (OSErr status = ReadContainer(inList, value); status != noErr)
        return status;
    if (outCount == nullptr)
        return paramErr;
    *outCount = long(value->items.size());
    return noErr;
}

OSErr AEPutPtr(AEDescList* ioList, long inIndex, DescType inTypeCode, const void* inDataPtr, Size inDataSize)
{
    Value* list = nullptr;
    if (OSErr status = WriteContainer(ioList, list, false); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        Value item;
        if (OSErr status = MakeValue(inTypeCode, inDataPtr, inDataSize, item); status != noErr)
            return status;
        return PutItem(*list, inIndex, inTypeCode, std::move(item));
    });
}

OSErr AEPutDesc(AEDescList* ioList, long inIndex, const AEDesc* inDesc)
{
    Value* list = nullptr;
    const Value* item = nullptr;
    if (OSErr status = WriteContainer(ioList, list, false); status != noErr)
        return status;
    if (OSErr status = Read(inDesc, item); status != noErr)
        return status;
    // Copied before the list changes: the item may be the list itself.
    return Guarded([&]() -> OSErr { return PutItem(*list, inIndex, inDesc->descriptorType, Value(*item)); });
}

OSErr AEGetNthPtr(const AEDescList* inList, long inIndex, DescType inDesiredType, AEKeyword* outKeyword,
                  DescType* outTypeCode, void* outDataPtr, Size inMaximumSize, Size* outActualSize)
{
    const Entry* item = nullptr;
    if (OSErr status = ReadNthItem(inList, inIndex, item); status != noErr)
        return status;
    if (outKeyword)
        *outKeyword = item->keyword;
    return Guarded([&]() -> OSErr {
        return GetAsPtr(item->type, item->value, inDesiredType, outTypeCode, outDataPtr, inMaximumSize, outActualSize);
    });
}

OSErr AEGetNthDesc(const AEDescList* inList, long inIndex, DescType inDesiredType, AEKeyword* outKeyword,
                   AEDesc* outResult)
{
    AEInitializeDesc(outResult);
    const Entry* item = nullptr;
    if (OSErr status = ReadNthItem(inList, inIndex, item); status != noErr)
        return status;
    if (outKeyword)
        *outKeyword = item->keyword;
    return Guarded([&]() -> OSErr { return GetAsDesc(item->type, item->value, inDesiredType, outResult); });
}

OSErr AESizeOfNthItem(const AEDescList* inList, long inIndex, DescType* outTypeCode, Size* outDataSize)
{
    const Entry* item = nullptr;
    if (OSErr status = ReadNthItem(inList, inIndex, item); status != noErr)
        return status;
    return SizeOfEntry(*item, outTypeCode, outDataSize);
}

OSErr AEDeleteItem(AEDescList* ioList, long inIndex)
{
    Value* value = nullptr;
    if (OSErr status = Write(ioList, value); status != noErr)
        return status;
    if (!value->IsContainer())
        return errAEWrongDataType;
    if (NthItem(*value, inIndex) == nullptr)
        return errAEBadListItem;
    value->items.erase(value->items.begin() + (inIndex - 1));
    return noErr;
}

Boolean AECheckIsRecord(const AEDesc* inDesc)
{
    const Value* value = nullptr;
    return Read(inDesc, value) == noErr && value->IsKeyed();
}

OSErr AEPutKeyPtr(AERecord* ioRecord, AEKeyword inKeyword, DescType inTypeCode, const void* inDataPtr, Size inDataSize)
{
    Value* record = nullptr;
    if (OSErr status = WriteContainer(ioRecord, record, true); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        Value field;
        if (OSErr status = MakeValue(inTypeCode, inDataPtr, inDataSize, field); status != noErr)
            return status;
        PutEntry(record->items, inKeyword, inTypeCode, std::move(field));
        return noErr;
    });
}

OSErr AEPutKeyDesc(AERecord* ioRecord, AEKeyword inKeyword, const AEDesc* inDesc)
{
    Value* record = nullptr;
    const Value* field = nullptr;
    if (OSErr status = WriteContainer(ioRecord, record, true); status != noErr)
        return status;
    if (OSErr status = Read(inDesc, field); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        PutEntry(record->items, inKeyword, inDesc->descriptorType, Value(*field));
        return noErr;
    });
}

OSErr AEGetKeyPtr(const AERecord* inRecord, AEKeyword inKeyword, DescType inDesiredType, DescType* outTypeCode,
                  void* outDataPtr, Size inMaximumSize, Size* outActualSize)
{
    const Entry* field = nullptr;
    if (OSErr status = ReadField(inRecord, inKeyword, field); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        return GetAsPtr(field->type, field->value, inDesiredType, outTypeCode, outDataPtr, inMaximumSize,
                        outActualSize);
    });
}

OSErr AEGetKeyDesc(const AERecord* inRecord, AEKeyword inKeyword, DescType inDesiredType, AEDesc* outResult)
{
    AEInitializeDesc(outResult);
    const Entry* field = nullptr;
    if (OSErr status = ReadField(inRecord, inKeyword, field); status != noErr)
        return status;
    return Guarded([&]() -> OSErr { return GetAsDesc(field->type, field->value, inDesiredType, outResult); });
}

OSErr AESizeOfKeyDesc(const AERecord* inRecord, AEKeyword inKeyword, DescType* outTypeCode, Size* outDataSize)
{
    const Entry* field = nullptr;
    if (OSErr status = ReadField(inRecord, inKeyword, field); status != noErr)
        return status;
    return SizeOfEntry(*field, outTypeCode, outDataSize);
}

OSErr AEDeleteKeyDesc(AERecord* ioRecord, AEKeyword inKeyword)
{
    Value* record = nullptr;
    if (OSErr status = WriteContainer(ioRecord, record, true); status != noErr)
        return status;
    auto field = FindEntry(record->items, inKeyword);
    if (field == record->items.end())
        return errAEDescNotFound;
    record->items.erase(field);
    return noErr;
}
