// Dictionaries: key-value pairs in an open-addressing hash table.
#include "CollectionChecks.h"
#include "ElementCallBacks.h"
#include "HashTable.h"

#include <CoreFoundation/CFDictionary.h>

#include <algorithm>

struct __CFDictionary final : cf::Object {
    struct Entry {
        const void* key;
        const void* value;
    };
    using Table = cf::HashTable<Entry>;
    static constexpr std::size_t kAbsent = Table::kNotFound;

    __CFDictionary(CFAllocatorRef inAllocator, const cf::ElementCallBacks& inKeyCallBacks,
                   const cf::ElementCallBacks& inValueCallBacks, bool inMutable, CFIndex inCapacity)
        : Object(cf::kTypeIDDictionary), mKeyCallBacks(inKeyCallBacks), mValueCallBacks(inValueCallBacks),
          mTable(inAllocator), mCapacity(inCapacity), mMutable(inMutable)
    {
    }

    cf::ElementCallBacks mKeyCallBacks;
    cf::ElementCallBacks mValueCallBacks;
    Table mTable;
    CFIndex mCapacity;  // the most pairs the dictionary may hold; 0 for no limit
    bool mMutable;

    bool IsFixed() const override
    {
        return !mMutable && mKeyCallBacks.retain != nullptr && mValueCallBacks.retain != nullptr;
    }

    CFIndex Count() const { return mTable.Count(); }

    std::size_t Find(CFHashCode inHash, const void* inKey) const
    {
        return mTable.Find(inHash, [&](const Entry& entry) { return mKeyCallBacks.Equal(entry.key, inKey); });
    }
    std::size_t Find(const void* inKey) const { return Find(mKeyCallBacks.Hash(inKey), inKey); }

    // Adds a key that is absent, with room already reserved.
    void Add(CFHashCode inHash, const void* inKey, const void* inValue)
    {
        const void* key = mKeyCallBacks.Retain(Allocator(), inKey);
        mTable.Insert(inHash, Entry{key, mValueCallBacks.Retain(Allocator(), inValue)});
    }

    // The new value is retained before the old one goes, in case they are the same object.
    void ReplaceValueAt(std::size_t inSlot, const void* inValue)
    {
        const void* value = mValueCallBacks.Retain(Allocator(), inValue);
        mValueCallBacks.Release(Allocator(), std::exchange(mTable.At(inSlot).value, value));
    }

    // Out of the table first, so that whatever a release callback does finds it consistent.
    void RemoveAt(std::size_t inSlot)
    {
        const Entry entry = mTable.At(inSlot);
        mTable.Erase(inSlot);
        Release(entry);
    }

    void Release(const Entry& inEntry) const
    {
        mKeyCallBacks.Release(Allocator(), inEntry.key);
        mValueCallBacks.Release(Allocator(), inEntry.value);
    }

    void RemoveAll()
    {
        for (const Entry& entry : mTable)
            Release(entry);
        mTable.Clear();
    }

    void Finalize() noexcept override { RemoveAll(); }

    bool Equal(const Object& inOther) const override
    {
        const auto& other = static_cast<const __CFDictionary&>(inOther);
        if (Count() != other.Count() || !mKeyCallBacks.SameEquality(other.mKeyCallBacks) ||
            !mValueCallBacks.SameEquality(other.mValueCallBacks))
            return false;
        return std::ranges::all_of(mTable, [&](const Entry& entry) {
            const std::size_t slot = other.Find(entry.key);
            return slot != kAbsent && mValueCallBacks.Equal(entry.value, other.mTable.At(slot).value);
        });
    }

    CFHashCode Hash() const override { return CFHashCode(Count()); }

    std::string Describe() const override
    {
        std::string text = DescribePrefix() + "{type = " + (mMutable ? "mutable" : "immutable") +
                           ", count = " + std::to_string(Count()) + ", pairs = (\n";
        CFIndex index = 0;
        for (const Entry& entry : mTable)
            text += "\t" + std::to_string(index++) + " : " + mKeyCallBacks.Describe(entry.key) + " = " +
                    mValueCallBacks.Describe(entry.value) + "\n";
        return text + ")}";
    }
};

namespace {

using Entry = __CFDictionary::Entry;

const __CFDictionary& Dictionary(CFDictionaryRef inDictionary, const char* inCall)
{
    return cf::Checked<__CFDictionary>(inDictionary, cf::kTypeIDDictionary, inCall);
}

__CFDictionary& MutableDictionary(CFMutableDictionaryRef inDictionary, const char* inCall)
{
    auto& dictionary = cf::CheckedMutable<__CFDictionary>(inDictionary, cf::kTypeIDDictionary, inCall);
    if (!dictionary.mMutable)
        cf::Fatal(inCall, "attempt to change the immutable dictionary %p", static_cast<const void*>(inDictionary));
    return dictionary;
}

// Adds a pair whose key is not in the dictionary yet.
void AddAbsent(__CFDictionary& ioDictionary, const char* inCall, CFHashCode inHash, const void* inKey,
               const void* inValue)
{
    const CFIndex count = ioDictionary.Count() + 1;
    cf::CheckRoom(inCall, ioDictionary.mCapacity, count);
    if (!ioDictionary.mTable.Reserve(std::size_t(count)))
        cf::OutOfMemory(inCall);
    ioDictionary.Add(inHash, inKey, inValue);
}

// Builds a dictionary from a source that calls its visitor with every pair; a key that
// comes twice keeps its first value.
template <class Source>
__CFDictionary* NewDictionary(CFAllocatorRef inAllocator, const cf::ElementCallBacks& inKeyCallBacks,
                              const cf::ElementCallBacks& inValueCallBacks, bool inMutable, CFIndex inCapacity,
                              CFIndex inCount, Source&& inSource)
{
    auto* dictionary = cf::Create<__CFDictionary>(inAllocator, inAllocator, inKeyCallBacks, inValueCallBacks, inMutable,
                                                  inCapacity);
    if (dictionary == nullptr)
        return nullptr;
    if (!dictionary->mTable.Reserve(std::size_t(inCount))) {
        CFRelease(dictionary);
        return nullptr;
    }
    inSource([dictionary](const void* inKey, const void* inValue) {
        const CFHashCode hash = dictionary->mKeyCallBacks.Hash(inKey);
        if (dictionary->Find(hash, inKey) == __CFDictionary::kAbsent)
            dictionary->Add(hash, inKey, inValue);
    });
    return dictionary;
}

__CFDictionary* CopyDictionary(CFAllocatorRef inAllocator, const __CFDictionary& inSource, bool inMutable,
                               CFIndex inCapacity)
{
    return NewDictionary(inAllocator, inSource.mKeyCallBacks, inSource.mValueCallBacks, inMutable, inCapacity,
                         inSource.Count(), [&](auto&& inAdd) {
                             for (const Entry& entry : inSource.mTable)
                                 inAdd(entry.key, entry.value);
                         });
}

}  // namespace

constinit const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{
    0, cf::RetainObject, cf::ReleaseObject, CFCopyDescription, CFEqual, CFHash};
constinit const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks{
    0, cf::CopyStringValue, cf::ReleaseObject, CFCopyDescription, CFEqual, CFHash};
constinit const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{0, cf::RetainObject, cf::ReleaseObject,
                                                                           CFCopyDescription, CFEqual};

CFTypeID CFDictionaryGetTypeID() { return cf::kTypeIDDictionary; }

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef inAllocator, const void** inKeys, const void** inValues,
                                   CFIndex inCount, const CFDictionaryKeyCallBacks* inKeyCallBacks,
                                   const CFDictionaryValueCallBacks* inValueCallBacks)
{
    cf::CheckValues("CFDictionaryCreate", inKeys, inCount);
    cf::CheckValues("CFDictionaryCreate", inValues, inCount);
    return NewDictionary(inAllocator, cf::ElementCallBacks::From(inKeyCallBacks),
                         cf::ElementCallBacks::From(inValueCallBacks), false, 0, inCount, [&](auto&& inAdd) {
                             for (CFIndex i = 0; i < inCount; ++i)
                                 inAdd(inKeys[i], inValues[i]);
                         });
}

CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef inAllocator, CFDictionaryRef inDictionary)
{
    return CopyDictionary(inAllocator, Dictionary(inDictionary, "CFDictionaryCreateCopy"), false, 0);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef inAllocator, CFIndex inCapacity,
                                                 const CFDictionaryKeyCallBacks* inKeyCallBacks,
                                                 const CFDictionaryValueCallBacks* inValueCallBacks)
{
    cf::CheckCapacity("CFDictionaryCreateMutable", inCapacity);
    return NewDictionary(inAllocator, cf::ElementCallBacks::From(inKeyCallBacks),
                         cf::ElementCallBacks::From(inValueCallBacks), true, inCapacity, 0, [](auto&&) {});
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex inCapacity,
                                                     CFDictionaryRef inDictionary)
{
    const __CFDictionary& source = Dictionary(inDictionary, "CFDictionaryCreateMutableCopy");
    cf::CheckCapacity("CFDictionaryCreateMutableCopy", inCapacity, source.Count());
    return CopyDictionary(inAllocator, source, true, inCapacity);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef inDictionary)
{
    return Dictionary(inDictionary, "CFDictionaryGetCount").Count();
}

CFIndex CFDictionaryGetCountOfKey(CFDictionaryRef inDictionary, const void* inKey)
{
    return Dictionary(inDictionary, "CFDictionaryGetCountOfKey").Find(inKey) != __CFDictionary::kAbsent ? 1 : 0;
}

CFIndex CFDictionaryGetCountOfValue(CFDictionaryRef inDictionary, const void* inValue)
{
    const __CFDictionary& dictionary = Dictionary(inDictionary, "CFDictionaryGetCountOfValue");
    return std::ranges::count_if(
        dictionary.mTable, [&](const Entry& entry) { return dictionary.mValueCallBacks.Equal(entry.value, inValue); });
}

Boolean CFDictionaryContainsKey(CFDictionaryRef inDictionary, const void* inKey)
{
    return Dictionary(inDictionary, "CFDictionaryContainsKey").Find(inKey) != __CFDictionary::kAbsent;
}

Boolean CFDictionaryContainsValue(CFDictionaryRef inDictionary, const void* inValue)
{
    const __CFDictionary& dictionary = Dictionary(inDictionary, "CFDictionaryContainsValue");
    return std::ranges::any_of(
        dictionary.mTable, [&](const Entry& entry) { return dictionary.mValueCallBacks.Equal(entry.value, inValue); });
}

const void* CFDictionaryGetValue(CFDictionaryRef inDictionary, const void* inKey)
{
    const __CFDictionary& dictionary = Dictionary(inDictionary, "CFDictionaryGetValue");
    const std::size_t slot = dictionary.Find(inKey);
    return slot == __CFDictionary::kAbsent ? nullptr : dictionary.mTable.At(slot).value;
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef inDictionary, const void* inKey, const void** outValue)
{
    const __CFDictionary& dictionary = Dictionary(inDictionary, "CFDictionaryGetValueIfPresent");
    const std::size_t slot = dictionary.Find(inKey);
    if (slot == __CFDictionary::kAbsent)
        return false;
    if (outValue)
        *outValue = dictionary.mTable.At(slot).value;
    return true;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef inDictionary, const void** outKeys, const void** outValues)
{
    const __CFDictionary& dictionary = Dictionary(inDictionary, "CFDictionaryGetKeysAndValues");
    std::size_t index = 0;
    for (const Entry& entry : dictionary.mTable) {
        if (outKeys)
            outKeys[index] = entry.key;
        if (outValues)
            outValues[index] = entry.value;
        ++index;
    }
}

void CFDictionaryApplyFunction(CFDictionaryRef inDictionary, CFDictionaryApplierFunction inApplier, void* inContext)
{
    const __CFDictionary& dictionary = Dictionary(inDictionary, "CFDictionaryApplyFunction");
    cf::CheckFunction("CFDictionaryApplyFunction", inApplier);
    for (const Entry& entry : dictionary.mTable)
        inApplier(entry.key, entry.value, inContext);
}

void CFDictionaryAddValue(CFMutableDictionaryRef inDictionary, const void* inKey, const void* inValue)
{
    __CFDictionary& dictionary = MutableDictionary(inDictionary, "CFDictionaryAddValue");
    const CFHashCode hash = dictionary.mKeyCallBacks.Hash(inKey);
    if (dictionary.Find(hash, inKey) == __CFDictionary::kAbsent)
        AddAbsent(dictionary, "CFDictionaryAddValue", hash, inKey, inValue);
}

void CFDictionarySetValue(CFMutableDictionaryRef inDictionary, const void* inKey, const void* inValue)
{
    __CFDictionary& dictionary = MutableDictionary(inDictionary, "CFDictionarySetValue");
    const CFHashCode hash = dictionary.mKeyCallBacks.Hash(inKey);
    const std::size_t slot = dictionary.Find(hash, inKey);
    if (slot == __CFDictionary::kAbsent)
        AddAbsent(dictionary, "CFDictionarySetValue", hash, inKey, inValue);
    else
        dictionary.ReplaceValueAt(slot, inValue);
}

void CFDictionaryReplaceValue(CFMutableDictionaryRef inDictionary, const void* inKey, const void* inValue)
{
    __CFDictionary& dictionary = MutableDictionary(inDictionary, "CFDictionaryReplaceValue");
    const std::size_t slot = dictionary.Find(inKey);
    if (slot != __CFDictionary::kAbsent)
        dictionary.ReplaceValueAt(slot, inValue);
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef inDictionary, const void* inKey)
{
    __CFDictionary& dictionary = MutableDictionary(inDictionary, "CFDictionaryRemoveValue");
    const std::size_t slot = dictionary.Find(inKey);
    if (slot != __CFDictionary::kAbsent)
        dictionary.RemoveAt(slot);
}

void CFDictionaryRemoveAllValues(CFMutableDictionaryRef inDictionary)
{
    MutableDictionary(inDictionary, "CFDictionaryRemoveAllValues").RemoveAll();
}
