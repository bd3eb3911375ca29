// Sets: distinct values in an open-addressing hash table.
#include "CollectionChecks.h"
#include "ElementCallBacks.h"
#include "HashTable.h"

#include <CoreFoundation/CFSet.h>

#include <algorithm>
#include <ranges>
#include <vector>
#include <span>

struct __CFSet final : cf::Object {
    struct Member {
        const void* value;
    };
    using Table = cf::HashTable<Member>;
    static constexpr std::size_t kAbsent = Table::kNotFound;

    __CFSet(CFAllocatorRef inAllocator, const cf::ElementCallBacks& inCallBacks, bool inMutable, CFIndex inCapacity)
        : Object(cf::kTypeIDSet), mCallBacks(inCallBacks), mTable(inAllocator), mCapacity(inCapacity),
          mMutable(inMutable)
    {
    }

    cf::ElementCallBacks mCallBacks;
    Table mTable;
    CFIndex mCapacity;  // the most values the set may hold; 0 for no limit
    bool mMutable;

    CFIndex Count() const { return mTable.Count(); }

    std::size_t Find(CFHashCode inHash, const void* inValue) const
    {
        return mTable.Find(inHash, [&](const Member& member) { return mCallBacks.Equal(member.value, inValue); });
    }
    std::size_t Find(const void* inValue) const { return Find(mCallBacks.Hash(inValue), inValue); }

    // Adds a value that is absent, with room already reserved.
    void Add(CFHashCode inHash, const void* inValue)
    {
        mTable.Insert(inHash, Member{mCallBacks.Retain(Allocator(), inValue)});
    }

    // The new value is retained before the old one goes, in case they are the same object.
    // Equal values hash alike, so the slot stays right for it.
    void ReplaceAt(std::size_t inSlot, const void* inValue)
    {
        const void* value = mCallBacks.Retain(Allocator(), inValue);
        mCallBacks.Release(Allocator(), std::exchange(mTable.At(inSlot).value, value));
    }

    // Out of the table first, so that whatever a release callback does finds it consistent.
    void RemoveAt(std::size_t inSlot)
    {
        const void* value = mTable.At(inSlot).value;
        mTable.Erase(inSlot);
        mCallBacks.Release(Allocator(), value);
    }

    void RemoveAll()
    {
        for (const Member& member : mTable)
            mCallBacks.Release(Allocator(), member.value);
        mTable.Clear();
    }

    void Finalize() noexcept override { RemoveAll(); }

    bool Equal(const Object& inOther) const override
    {
        const auto& other = static_cast<const __CFSet&>(inOther);
        if (Count() != other.Count() || !mCallBacks.SameEquality(other.mCallBacks))
            return false;
        return std::ranges::all_of(mTable, [&](const Member& member) { return other.Find(member.value) != kAbsent; });
    }

    CFHashCode Hash() const override { return CFHashCode(Count()); }

    std::string Describe() const override
    {
        std::string text = DescribePrefix() + "{type = " + (mMutable ? "mutable" : "immutable") +
                           ", count = " + std::to_string(Count()) + ", values = (\n";
        CFIndex index = 0;
        for (const Member& member : mTable)
            text += "\t" + std::to_string(index++) + " : " + mCallBacks.Describe(member.value) + "\n";
        return text + ")}";
    }
};

namespace {

using Member = __CFSet::Member;

const __CFSet& Set(CFSetRef inSet, const char* inCall) { return cf::Checked<__CFSet>(inSet, cf::kTypeIDSet, inCall); }

__CFSet& MutableSet(CFMutableSetRef inSet, const char* inCall)
{
    auto& set = cf::CheckedMutable<__CFSet>(inSet, cf::kTypeIDSet, inCall);
    if (!set.mMutable)
        cf::Fatal(inCall, "attempt to change the immutable set %p", static_cast<const void*>(inSet));
    return set;
}

void AddAbsent(__CFSet& ioSet, const char* inCall, CFHashCode inHash, const void* inValue)
{
    const CFIndex count = ioSet.Count() + 1;
    cf::CheckRoom(inCall, ioSet.mCapacity, count);
    if (!ioSet.mTable.Reserve(std::size_t(count)))
        cf::OutOfMemory(inCall);
    ioSet.Add(inHash, inValue);
}

// A set of the given values; a value that comes twice is kept once, the first time.
template <class Values>
__CFSet* NewSet(CFAllocatorRef inAllocator, const cf::ElementCallBacks& inCallBacks, bool inMutable, CFIndex inCapacity,
                CFIndex inCount, Values&& inValues)
{
    auto* set = cf::Create<__CFSet>(inAllocator, inAllocator, inCallBacks, inMutable, inCapacity);
    if (set == nullptr)
        return nullptr;
    if (!set->mTable.Reserve(std::size_t(inCount))) {
        CFRelease(set);
        return nullptr;
    }
    for (const void* value : inValues) {
        const CFHashCode hash = set->mCallBacks.Hash(value);
        if (set->Find(hash, value) == __CFSet::kAbsent)
            set->Add(hash, value);
    }
    return set;
}

__CFSet* CopySet(CFAllocatorRef inAllocator, const __CFSet& inSource, bool inMutable, CFIndex inCapacity)
{
    std::vector<const void*> values;
    values.reserve(std::size_t(inSource.Count()));
    for (const Member& member : inSource.mTable)
        values.push_back(member.value);
    return NewSet(inAllocator, inSource.mCallBacks, inMutable, inCapacity, inSource.Count(), values);
}

}  // namespace

constinit const CFSetCallBacks kCFTypeSetCallBacks{
    0, cf::RetainObject, cf::ReleaseObject, CFCopyDescription, CFEqual, CFHash};
constinit const CFSetCallBacks kCFCopyStringSetCallBacks{
    0, cf::CopyStringValue, cf::ReleaseObject, CFCopyDescription, CFEqual, CFHash};

CFTypeID CFSetGetTypeID() { return cf::kTypeIDSet; }

CFSetRef CFSetCreate(CFAllocatorRef inAllocator, const void** inValues, CFIndex inCount,
                     const CFSetCallBacks* inCallBacks)
{
    cf::CheckValues("CFSetCreate", inValues, inCount);
    return NewSet(inAllocator, cf::ElementCallBacks::From(inCallBacks), false, 0, inCount,
                  std::span(inValues, std::size_t(inCount)));
}

CFSetRef CFSetCreateCopy(CFAllocatorRef inAllocator, CFSetRef inSet)
{
    return CopySet(inAllocator, Set(inSet, "CFSetCreateCopy"), false, 0);
}

CFMutableSetRef CFSetCreateMutable(CFAllocatorRef inAllocator, CFIndex inCapacity, const CFSetCallBacks* inCallBacks)
{
    cf::CheckCapacity("CFSetCreateMutable", inCapacity);
    return NewSet(inAllocator, cf::ElementCallBacks::From(inCallBacks), true, inCapacity, 0,
                  std::span<const void* const>());
}

CFMutableSetRef CFSetCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex inCapacity, CFSetRef inSet)
{
    const __CFSet& source = Set(inSet, "CFSetCreateMutableCopy");
    cf::CheckCapacity("CFSetCreateMutableCopy", inCapacity, source.Count());
    return CopySet(inAllocator, source, true, inCapacity);
}

CFIndex CFSetGetCount(CFSetRef inSet) { return Set(inSet, "CFSetGetCount").Count(); }

CFIndex CFSetGetCountOfValue(CFSetRef inSet, const void* inValue)
{
    return Set(inSet, "CFSetGetCountOfValue").Find(inValue) != __CFSet::kAbsent ? 1 : 0;
}

Boolean CFSetContainsValue(CFSetRef inSet, const void* inValue)
{
    return Set(inSet, "CFSetContainsValue").Find(inValue) != __CFSet::kAbsent;
}

const void* CFSetGetValue(CFSetRef inSet, const void* inValue)
{
    const __CFSet& set = Set(inSet, "CFSetGetValue");
    const std::size_t slot = set.Find(inValue);
    return slot == __CFSet::kAbsent ? nullptr : set.mTable.At(slot).value;
}

Boolean CFSetGetValueIfPresent(CFSetRef inSet, const void* inCandidate, const void** outValue)
{
    const __CFSet& set = Set(inSet, "CFSetGetValueIfPresent");
    const std::size_t slot = set.Find(inCandidate);
    if (slot == __CFSet::kAbsent)
        return false;
    if (outValue)
        *outValue = set.mTable.At(slot).value;
    return true;
}

void CFSetGetValues(CFSetRef inSet, const void** outValues)
{
    const __CFSet& set = Set(inSet, "CFSetGetValues");
    cf::CheckValues("CFSetGetValues", outValues, set.Count());
    for (const Member& member : set.mTable)
        *outValues++ = member.value;
}

void CFSetApplyFunction(CFSetRef inSet, CFSetApplierFunction inApplier, void* inContext)
{
    const __CFSet& set = Set(inSet, "CFSetApplyFunction");
    cf::CheckFunction("CFSetApplyFunction", inApplier);
    for (const Member& member : set.mTable)
        inApplier(member.value, inContext);
}

void CFSetAddValue(CFMutableSetRef inSet, const void* inValue)
{
    __CFSet& set = MutableSet(inSet, "CFSetAddValue");
    const CFHashCode hash = set.mCallBacks.Hash(inValue);
    if (set.Find(hash, inValue) == __CFSet::kAbsent)
        AddAbsent(set, "CFSetAddValue", hash, inValue);
}

void CFSetReplaceValue(CFMutableSetRef inSet, const void* inValue)
{
    __CFSet& set = MutableSet(inSet, "CFSetReplaceValue");
    const std::size_t slot = set.Find(inValue);
    if (slot != __CFSet::kAbsent)
        set.ReplaceAt(slot, inValue);
}

void CFSetSetValue(CFMutableSetRef inSet, const void* inValue)
{
    __CFSet& set = MutableSet(inSet, "CFSetSetValue");
    const CFHashCode hash = set.mCallBacks.Hash(inValue);
    const std::size_t slot = set.Find(hash, inValue);
    if (slot == __CFSet::kAbsent)
        AddAbsent(set, "CFSetSetValue", hash, inValue);
    else
        set.ReplaceAt(slot, inValue);
}

void CFSetRemoveValue(CFMutableSetRef inSet, const void* inValue)
{
    __CFSet& set = MutableSet(inSet, "CFSetRemoveValue");
    const std::size_t slot = set.Find(inValue);
    if (slot != __CFSet::kAbsent)
        set.RemoveAt(slot);
}

void CFSetRemoveAllValues(CFMutableSetRef inSet) { MutableSet(inSet, "CFSetRemoveAllValues").RemoveAll(); }
