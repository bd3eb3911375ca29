// Descriptors as a whole: creating, copying, disposing, reading their data, coercing and
// flattening them.
#include "AEDesc.h"
#include "AECoercion.h"
#include "AEFlatten.h"

#include <cstring>

using namespace carbon::ae;

namespace carbon::ae {

OSErr Read(const AEDesc* inDesc, const Value*& outValue)
{
    if (inDesc == nullptr)
        return paramErr;
    outValue = ValueOf(*inDesc);
    return outValue ? noErr : errAENotAEDesc;
}

OSErr Write(AEDesc* ioDesc, Value*& outValue)
{
    if (ioDesc == nullptr)
        return paramErr;
    if (ioDesc->dataHandle == nullptr)
        return errAEWrongDataType;
    outValue = MutableValueOf(*ioDesc);
    return outValue ? noErr : errAENotAEDesc;
}

bool ValidData(const void* inDataPtr, Size inDataSize)
{
    return inDataSize >= 0 && (inDataPtr != nullptr || inDataSize == 0);
}

OSErr MakeValue(DescType inType, const void* inDataPtr, Size inDataSize, Value& outValue)
{
    if (!ValidData(inDataPtr, inDataSize))
        return paramErr;
    if (std::optional<Kind> kind = ContainerKind(inType)) {
        std::span bytes(static_cast<const UInt8*>(inDataPtr), std::size_t(inDataSize));
        return ParseContainerData(*kind, bytes, outValue);
    }
    outValue = DataValue(inDataPtr, inDataSize);
    return noErr;
}

Size DataSize(const Value& inValue)
{
    return Size(inValue.IsContainer() ? ContainerData(inValue).size() : inValue.bytes.size());
}

OSErr SizeOfEntry(const Entry& inEntry, DescType* outTypeCode, Size* outDataSize)
{
    if (outTypeCode)
        *outTypeCode = inEntry.type;
    return Guarded([&]() -> OSErr {
        if (outDataSize)
            *outDataSize = DataSize(inEntry.value);
        return noErr;
    });
}

}  // namespace carbon::ae

namespace {

std::vector<UInt8> DataOf(const Value& inValue)
{
    return inValue.IsContainer() ? ContainerData(inValue) : inValue.bytes;
}

}  // namespace

void AEInitializeDesc(AEDesc* outDesc)
{
    if (outDesc)
        *outDesc = AEDesc{typeNull, nullptr};
}

OSErr AECreateDesc(DescType inTypeCode, const void* inDataPtr, Size inDataSize, AEDesc* outResult)
{
    if (outResult == nullptr)
        return paramErr;
    AEInitializeDesc(outResult);
    return Guarded([&]() -> OSErr {
        Value value;
        if (OSErr status = MakeValue(inTypeCode, inDataPtr, inDataSize, value); status != noErr)
            return status;
        StoreDesc(inTypeCode, std::move(value), outResult);
        return noErr;
    });
}

OSErr AEDisposeDesc(AEDesc* ioDesc)
{
    const Value* value = nullptr;
    if (OSErr status = Read(ioDesc, value); status != noErr)
        return status;
    DisposeStorage(*ioDesc);
    return noErr;
}

OSErr AEDuplicateDesc(const AEDesc* inDesc, AEDesc* outResult)
{
    if (outResult == nullptr)
        return paramErr;
    const Value* value = nullptr;
    if (OSErr status = Read(inDesc, value); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        Value copy = *value;
        StoreDesc(inDesc->descriptorType, std::move(copy), outResult);
        return noErr;
    });
}

OSErr AEReplaceDescData(DescType inTypeCode, const void* inDataPtr, Size inDataSize, AEDesc* ioDesc)
{
    const Value* value = nullptr;
    if (OSErr status = Read(ioDesc, value); status != noErr)
        return status;
    return Guarded([&]() -> OSErr {
        Value replacement;
        if (OSErr status = MakeValue(inTypeCode, inDataPtr, inDataSize, replacement); status != noErr)
            return status;
        DisposeStorage(*ioDesc);
        StoreDesc(inTypeCode, std::move(replacement), ioDesc);
        return noErr;
    });
}

Size AEGetDescDataSize(const AEDesc* inDesc)
{
    const Value* value = nullptr;
    if (Read(inDesc, value) != noErr)
        return 0;
    return DataSize(*value);
}

OSErr AEGetDescData(const AEDesc* inDesc, void* outDataPtr, Size inMaximumSize)
{
    const Value* value = nullptr;
    if (OSErr status = Read(inDesc, value); status != noErr)
        return status;
    if (!ValidData(outDataPtr, inMaximumSize))
        return paramErr;
    return Guarded([&]() -> OSErr {
        std::vector<UInt8> data = DataOf(*value);
        if (std::size_t copied = std::min(data.size(), std::size_t(inMaximumSize)); copied > 0)
            std::memcpy(outDataPtr, data.data(), copied);
        return noErr;
    });
}

OSErr AECoercePtr(DescType inTypeCode, const void* inDataPtr, Size inDataSize, DescType inToType, AEDesc* outResult)
{
    if (outResult == nullptr)
        return paramErr;
    AEInitializeDesc(outResult);
    return Guarded([&]() -> OSErr {
        Value value;
        if (OSErr status = MakeValue(inTypeCode, inDataPtr, inDataSize, value); status != noErr)
            return status;
        return GetAsDesc(inTypeCode, value, inToType, outResult);
    });
}

OSErr AECoerceDesc(const AEDesc* inDesc, DescType inToType, AEDesc* outResult)
{
    const Value* value = nullptr;
    if (OSErr status = Read(inDesc, value); status != noErr)
        return status;
    return Guarded([&]() -> OSErr { return GetAsDesc(inDesc->descriptorType, *value, inToType, outResult); });
}

Size AESizeOfFlattenedDesc(const AEDesc* inDesc)
{
    const Value* value = nullptr;
    if (Read(inDesc, value) != noErr)
        return 0;
    return Size(Flatten(inDesc->descriptorType, *value).size());
}

OSStatus AEFlattenDesc(const AEDesc* inDesc, Ptr outBuffer, Size inBufferSize, Size* outActualSize)
{
    const Value* value = nullptr;
    if (OSErr status = Read(inDesc, value); status != noErr)
        return status;
    if (!ValidData(outBuffer, inBufferSize))
        return paramErr;
    return Guarded([&]() -> OSErr {
        std::vector<UInt8> flat = Flatten(inDesc->descriptorType, *value);
        if (outActualSize)
            *outActualSize = Size(flat.size());
        if (Size(flat.size()) > inBufferSize)
            return errAEBufferTooSmall;
        std::memcpy(outBuffer, flat.data(), flat.size());
        return noErr;
    });
}

// Like the platform's, this call has no buffer size: the header says how long the flat
// form is, and the caller vouches that the bytes are there.
OSStatus AEUnflattenDesc(const void* inBuffer, AEDesc* outResult)
{
    if (inBuffer == nullptr || outResult == nullptr)
        return paramErr;
    AEInitializeDesc(outResult);
    auto bytes = static_cast<const UInt8*>(inBuffer);
    std::optional<Size> length = FlatLength(std::span<const UInt8, kFlatHeaderSize>(bytes, kFlatHeaderSize));
    if (!length)
        return errAECorruptData;
    return Guarded([&]() -> OSErr {
        DescType type = typeNull;
        Value value;
        if (OSErr status = Unflatten(std::span(bytes, std::size_t(*length)), type, value); status != noErr)
            return status;
        StoreDesc(type, std::move(value), outResult);
        return noErr;
    });
}
