// Descriptor storage: each data handle is one heap value behind a magic word, so that a
// handle that was disposed of or never was one is answered with errAENotAEDesc.
#include "AEValue.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace carbon::ae {

namespace {

constexpr UInt32 kStorageMagic = 0x41456473;  // "AEds"

std::atomic<long> sLiveDescriptors{0};

struct Storage {
    UInt32 magic = kStorageMagic;
    Value value;
};

Storage* StorageOf(const AEDesc& inDesc)
{
    auto* storage = reinterpret_cast<Storage*>(inDesc.dataHandle);
    return storage && storage->magic == kStorageMagic ? storage : nullptr;
}

}  // namespace

Value DataValue(const void* inData, Size inSize)
{
    Value value;
    if (inSize > 0) {
        auto bytes = static_cast<const UInt8*>(inData);
        value.bytes.assign(bytes, bytes + inSize);
    }
    return value;
}

std::optional<Kind> ContainerKind(DescType inType)
{
    switch (inType) {
    case typeAEList:
        return Kind::List;
    case typeAERecord:
        return Kind::Record;
    case typeAppleEvent:
        return Kind::Event;
    default:
        return std::nullopt;
    }
}

const Value* ValueOf(const AEDesc& inDesc)
{
    static const Value sEmpty;
    if (inDesc.dataHandle == nullptr)
        return &sEmpty;
    Storage* storage = StorageOf(inDesc);
    return storage ? &storage->value : nullptr;
}

Value* MutableValueOf(AEDesc& ioDesc)
{
    Storage* storage = StorageOf(ioDesc);
    return storage ? &storage->value : nullptr;
}

void StoreDesc(DescType inType, Value&& inValue, AEDesc* outDesc)
{
    AEDataStorage handle = nullptr;
    if (inType != typeNull) {
        auto* storage = new Storage{kStorageMagic, std::move(inValue)};
        handle = reinterpret_cast<AEDataStorage>(storage);
        sLiveDescriptors.fetch_add(1, std::memory_order_relaxed);
    }
    *outDesc = AEDesc{inType, handle};
}

void DisposeStorage(AEDesc& ioDesc)
{
    if (Storage* storage = StorageOf(ioDesc)) {
        storage->magic = 0;
        delete storage;
        sLiveDescriptors.fetch_sub(1, std::memory_order_relaxed);
    }
    ioDesc = AEDesc{typeNull, nullptr};
}

std::vector<Entry>::iterator FindEntry(std::vector<Entry>& inEntries, AEKeyword inKeyword)
{
    return std::find_if(inEntries.begin(), inEntries.end(), [=](const Entry& e) { return e.keyword == inKeyword; });
}

std::vector<Entry>::const_iterator FindEntry(const std::vector<Entry>& inEntries, AEKeyword inKeyword)
{
    return std::find_if(inEntries.begin(), inEntries.end(), [=](const Entry& e) { return e.keyword == inKeyword; });
}

OSErr FindKeyed(const std::vector<Entry>& inEntries, AEKeyword inKeyword, const Entry*& outEntry)
{
    auto found = FindEntry(inEntries, inKeyword);
    if (found == inEntries.end())
        return errAEDescNotFound;
    outEntry = &*found;
    return noErr;
}

// A keyword already present keeps its place and takes the new value.
void PutEntry(std::vector<Entry>& ioEntries, AEKeyword inKeyword, DescType inType, Value&& inValue)
{
    auto existing = FindEntry(ioEntries, inKeyword);
    if (existing != ioEntries.end()) {
        existing->type = inType;
        existing->value = std::move(inValue);
    } else {
        ioEntries.push_back(Entry{inKeyword, inType, std::move(inValue)});
    }
}

}  // namespace carbon::ae

long _AEGetLiveDescriptorCount() { return carbon::ae::sLiveDescriptors.load(std::memory_order_relaxed); }
