// Arrays: an ordered run of values in one block of the array's allocator's memory.
#include "AllocatedBlock.h"
#include "CollectionChecks.h"
#include "ElementCallBacks.h"

#include <CoreFoundation/CFArray.h>

#include <algorithm>
#include <cstring>
#include <span>

struct __CFArray final : cf::Object {
    __CFArray(CFAllocatorRef inAllocator, const cf::ElementCallBacks& inCallBacks, bool inMutable, CFIndex inCapacity)
        : Object(cf::kTypeIDArray), mCallBacks(inCallBacks), mValues(inAllocator), mCapacity(inCapacity),
          mMutable(inMutable)
    {
    }

    cf::ElementCallBacks mCallBacks;
    cf::AllocatedBlock<const void*> mValues;
    CFIndex mCount = 0;
    CFIndex mCapacity;  // the most values the array may hold; 0 for no limit
    bool mMutable;

    bool IsFixed() const override { return !mMutable && mCallBacks.retain != nullptr; }

    std::span<const void*> Values(CFRange inRange) const
    {
        return {mValues.Data() + inRange.location, std::size_t(inRange.length)};
    }
    std::span<const void*> Values() const { return Values(CFRangeMake(0, mCount)); }

    // Storage for at least inCount values, growing geometrically so that appending one value
    // at a time costs constant time on average.
    bool Reserve(CFIndex inCount)
    {
        if (std::size_t(inCount) <= mValues.Capacity())
            return true;
        return mValues.Resize(std::max({std::size_t(inCount), mValues.Capacity() * 2, std::size_t(4)}));
    }

    bool HasRoomForOne() const
    {
        return std::size_t(mCount) < mValues.Capacity() && (mCapacity == 0 || mCount < mCapacity);
    }

    void Append(const void* inValue)
    {
        mValues[std::size_t(mCount)] = mCallBacks.Retain(Allocator(), inValue);
        ++mCount;
    }

    // The storage Replace needs: room for the result, and after it for the new values.
    CFIndex ReplaceStorage(CFIndex inRemoved, CFIndex inAdded) const
    {
        return std::max(mCount, mCount - inRemoved + inAdded) + inAdded;
    }

    // Replaces the values in inRange by inCount new ones; ReplaceStorage must already fit.
    // Every new value is retained before any old one is released, since the new values may
    // be the very objects being replaced, held by nothing else. They wait beyond the end of
    // both the old and the new contents, where moving the tail cannot reach them.
    void Replace(CFRange inRange, const void* const* inValues, CFIndex inCount)
    {
        const CFIndex newCount = mCount - inRange.length + inCount;
        const void** data = mValues.Data();
        const void** staged = data + std::max(mCount, newCount);
        for (CFIndex i = 0; i < inCount; ++i)
            staged[i] = mCallBacks.Retain(Allocator(), inValues[i]);
        for (const void* old : Values(inRange))
            mCallBacks.Release(Allocator(), old);
        const CFIndex tail = inRange.location + inRange.length;
        if (inCount < inRange.length)
            std::copy(data + tail, data + mCount, data + inRange.location + inCount);
        else if (inCount > inRange.length)
            std::copy_backward(data + tail, data + mCount, data + newCount);
        std::copy_n(staged, inCount, data + inRange.location);
        mCount = newCount;
    }

    void Finalize() noexcept override
    {
        for (const void* value : Values())
            mCallBacks.Release(Allocator(), value);
        mCount = 0;
        mValues.Reset();
    }

    bool Equal(const Object& inOther) const override
    {
        const auto& other = static_cast<const __CFArray&>(inOther);
        if (mCount != other.mCount || !mCallBacks.SameEquality(other.mCallBacks))
            return false;
        return std::ranges::equal(Values(), other.Values(),
                                  [this](const void* a, const void* b) { return mCallBacks.Equal(a, b); });
    }

    CFHashCode Hash() const override { return CFHashCode(mCount); }

    std::string Describe() const override
    {
        std::string text = DescribePrefix() + "{type = " + (mMutable ? "mutable" : "immutable") +
                           ", count = " + std::to_string(mCount) + ", values = (\n";
        for (CFIndex i = 0; i < mCount; ++i)
            text += "\t" + std::to_string(i) + " : " + mCallBacks.Describe(mValues[std::size_t(i)]) + "\n";
        return text + ")}";
    }
};

namespace {

const __CFArray& Array(CFArrayRef inArray, const char* inCall)
{
    return cf::Checked<__CFArray>(inArray, cf::kTypeIDArray, inCall);
}

__CFArray& MutableArray(CFMutableArrayRef inArray, const char* inCall)
{
    auto& array = cf::CheckedMutable<__CFArray>(inArray, cf::kTypeIDArray, inCall);
    if (!array.mMutable)
        cf::Fatal(inCall, "attempt to change the immutable array %p", static_cast<const void*>(inArray));
    return array;
}

// Room for a change that leaves inNewCount values and needs inStorage slots on the way.
void MakeRoom(__CFArray& ioArray, const char* inCall, CFIndex inNewCount, CFIndex inStorage)
{
    cf::CheckRoom(inCall, ioArray.mCapacity, inNewCount);
    if (!ioArray.Reserve(inStorage))
        cf::OutOfMemory(inCall);
}

void ReplaceChecked(__CFArray& ioArray, const char* inCall, CFRange inRange, const void* const* inValues,
                    CFIndex inCount)
{
    MakeRoom(ioArray, inCall, ioArray.mCount - inRange.length + inCount,
             ioArray.ReplaceStorage(inRange.length, inCount));
    ioArray.Replace(inRange, inValues, inCount);
}

__CFArray* NewArray(CFAllocatorRef inAllocator, const cf::ElementCallBacks& inCallBacks, bool inMutable,
                    CFIndex inCapacity, std::span<const void* const> inValues)
{
    __CFArray* array = cf::Create<__CFArray>(inAllocator, inAllocator, inCallBacks, inMutable, inCapacity);
    if (array == nullptr)
        return nullptr;
    if (!array->Reserve(CFIndex(inValues.size()))) {
        CFRelease(array);
        return nullptr;
    }
    for (const void* value : inValues)
        array->Append(value);
    return array;
}

bool Less(CFComparatorFunction inComparator, void* inContext, const void* inValue1, const void* inValue2)
{
    return inComparator(inValue1, inValue2, inContext) < 0;
}

// A merge sort: stable, and safe with a comparator that contradicts itself, which may give
// an odd order but never reads outside the values. inScratch holds half of them.
void MergeSort(std::span<const void*> ioValues, const void** inScratch, CFComparatorFunction inComparator,
               void* inContext)
{
    const std::size_t count = ioValues.size();
    if (count <= 8) {
        for (std::size_t i = 1; i < count; ++i) {
            const void* value = ioValues[i];
            std::size_t j = i;
            for (; j > 0 && Less(inComparator, inContext, value, ioValues[j - 1]); --j)
                ioValues[j] = ioValues[j - 1];
            ioValues[j] = value;
        }
        return;
    }
    const std::size_t half = count / 2;
    MergeSort(ioValues.first(half), inScratch, inComparator, inContext);
    MergeSort(ioValues.subspan(half), inScratch, inComparator, inContext);
    if (!Less(inComparator, inContext, ioValues[half], ioValues[half - 1]))
        return;
    std::copy_n(ioValues.begin(), half, inScratch);
    std::size_t left = 0, right = half, out = 0;
    while (left < half && right < count)
        ioValues[out++] = Less(inComparator, inContext, ioValues[right], inScratch[left]) ? ioValues[right++]
                                                                                          : inScratch[left++];
    while (left < half)
        ioValues[out++] = inScratch[left++];
}

}  // namespace

constinit const CFArrayCallBacks kCFTypeArrayCallBacks{0, cf::RetainObject, cf::ReleaseObject, CFCopyDescription,
                                                       CFEqual};

CFTypeID CFArrayGetTypeID() { return cf::kTypeIDArray; }

CFArrayRef CFArrayCreate(CFAllocatorRef inAllocator, const void** inValues, CFIndex inCount,
                         const CFArrayCallBacks* inCallBacks)
{
    cf::CheckValues("CFArrayCreate", inValues, inCount);
    return NewArray(inAllocator, cf::ElementCallBacks::From(inCallBacks), false, 0, {inValues, std::size_t(inCount)});
}

CFArrayRef CFArrayCreateCopy(CFAllocatorRef inAllocator, CFArrayRef inArray)
{
    const __CFArray& source = Array(inArray, "CFArrayCreateCopy");
    return NewArray(inAllocator, source.mCallBacks, false, 0, source.Values());
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef inAllocator, CFIndex inCapacity,
                                       const CFArrayCallBacks* inCallBacks)
{
    cf::CheckCapacity("CFArrayCreateMutable", inCapacity);
    return NewArray(inAllocator, cf::ElementCallBacks::From(inCallBacks), true, inCapacity, {});
}

CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex inCapacity, CFArrayRef inArray)
{
    const __CFArray& source = Array(inArray, "CFArrayCreateMutableCopy");
    cf::CheckCapacity("CFArrayCreateMutableCopy", inCapacity, source.mCount);
    return NewArray(inAllocator, source.mCallBacks, true, inCapacity, source.Values());
}

CFIndex CFArrayGetCount(CFArrayRef inArray) { return Array(inArray, "CFArrayGetCount").mCount; }

CFIndex CFArrayGetCountOfValue(CFArrayRef inArray, CFRange inRange, const void* inValue)
{
    const __CFArray& array = Array(inArray, "CFArrayGetCountOfValue");
    cf::CheckRange("CFArrayGetCountOfValue", inRange, array.mCount);
    return std::ranges::count_if(array.Values(inRange),
                                 [&](const void* value) { return array.mCallBacks.Equal(value, inValue); });
}

Boolean CFArrayContainsValue(CFArrayRef inArray, CFRange inRange, const void* inValue)
{
    const __CFArray& array = Array(inArray, "CFArrayContainsValue");
    cf::CheckRange("CFArrayContainsValue", inRange, array.mCount);
    return std::ranges::any_of(array.Values(inRange),
                               [&](const void* value) { return array.mCallBacks.Equal(value, inValue); });
}

const void* CFArrayGetValueAtIndex(CFArrayRef inArray, CFIndex inIndex)
{
    const __CFArray& array = Array(inArray, "CFArrayGetValueAtIndex");
    cf::CheckIndex("CFArrayGetValueAtIndex", inIndex, array.mCount);
    return array.mValues[std::size_t(inIndex)];
}

void CFArrayGetValues(CFArrayRef inArray, CFRange inRange, const void** outValues)
{
    const __CFArray& array = Array(inArray, "CFArrayGetValues");
    cf::CheckRange("CFArrayGetValues", inRange, array.mCount);
    cf::CheckValues("CFArrayGetValues", outValues, inRange.length);
    std::ranges::copy(array.Values(inRange), outValues);
}

void CFArrayApplyFunction(CFArrayRef inArray, CFRange inRange, CFArrayApplierFunction inApplier, void* inContext)
{
    const __CFArray& array = Array(inArray, "CFArrayApplyFunction");
    cf::CheckFunction("CFArrayApplyFunction", inApplier);
    cf::CheckRange("CFArrayApplyFunction", inRange, array.mCount);
    for (const void* value : array.Values(inRange))
        inApplier(value, inContext);
}

CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef inArray, CFRange inRange, const void* inValue)
{
    const __CFArray& array = Array(inArray, "CFArrayGetFirstIndexOfValue");
    cf::CheckRange("CFArrayGetFirstIndexOfValue", inRange, array.mCount);
    for (CFIndex i = inRange.location; i < inRange.location + inRange.length; ++i)
        if (array.mCallBacks.Equal(array.mValues[std::size_t(i)], inValue))
            return i;
    return kCFNotFound;
}

CFIndex CFArrayGetLastIndexOfValue(CFArrayRef inArray, CFRange inRange, const void* inValue)
{
    const __CFArray& array = Array(inArray, "CFArrayGetLastIndexOfValue");
    cf::CheckRange("CFArrayGetLastIndexOfValue", inRange, array.mCount);
    for (CFIndex i = inRange.location + inRange.length - 1; i >= inRange.location; --i)
        if (array.mCallBacks.Equal(array.mValues[std::size_t(i)], inValue))
            return i;
    return kCFNotFound;
}

// The index of the first value in the range that is not less than inValue: where it is, if
// it is there, and otherwise where it would be inserted to keep the range sorted (the end of
// the range when every value is less).
CFIndex CFArrayBSearchValues(CFArrayRef inArray, CFRange inRange, const void* inValue,
                             CFComparatorFunction inComparator, void* inContext)
{
    const __CFArray& array = Array(inArray, "CFArrayBSearchValues");
    cf::CheckFunction("CFArrayBSearchValues", inComparator);
    cf::CheckRange("CFArrayBSearchValues", inRange, array.mCount);
    CFIndex low = inRange.location, high = inRange.location + inRange.length;
    while (low < high) {
        const CFIndex middle = low + (high - low) / 2;
        if (Less(inComparator, inContext, array.mValues[std::size_t(middle)], inValue))
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

// Building arrays one value at a time is the common case; flattening folds the type and
// room checks into the call instead of paying a call for each.
[[gnu::flatten]] void CFArrayAppendValue(CFMutableArrayRef inArray, const void* inValue)
{
    __CFArray& array = MutableArray(inArray, "CFArrayAppendValue");
    if (!array.HasRoomForOne())
        MakeRoom(array, "CFArrayAppendValue", array.mCount + 1, array.mCount + 1);
    array.Append(inValue);
}

void CFArrayInsertValueAtIndex(CFMutableArrayRef inArray, CFIndex inIndex, const void* inValue)
{
    __CFArray& array = MutableArray(inArray, "CFArrayInsertValueAtIndex");
    cf::CheckInsertionIndex("CFArrayInsertValueAtIndex", inIndex, array.mCount);
    ReplaceChecked(array, "CFArrayInsertValueAtIndex", CFRangeMake(inIndex, 0), &inValue, 1);
}

// An index equal to the count appends, as on the platform.
void CFArraySetValueAtIndex(CFMutableArrayRef inArray, CFIndex inIndex, const void* inValue)
{
    __CFArray& array = MutableArray(inArray, "CFArraySetValueAtIndex");
    cf::CheckInsertionIndex("CFArraySetValueAtIndex", inIndex, array.mCount);
    ReplaceChecked(array, "CFArraySetValueAtIndex", CFRangeMake(inIndex, inIndex < array.mCount ? 1 : 0), &inValue, 1);
}

void CFArrayRemoveValueAtIndex(CFMutableArrayRef inArray, CFIndex inIndex)
{
    __CFArray& array = MutableArray(inArray, "CFArrayRemoveValueAtIndex");
    cf::CheckIndex("CFArrayRemoveValueAtIndex", inIndex, array.mCount);
    array.Replace(CFRangeMake(inIndex, 1), nullptr, 0);
}

void CFArrayRemoveAllValues(CFMutableArrayRef inArray)
{
    __CFArray& array = MutableArray(inArray, "CFArrayRemoveAllValues");
    array.Replace(CFRangeMake(0, array.mCount), nullptr, 0);
}

void CFArrayReplaceValues(CFMutableArrayRef inArray, CFRange inRange, const void** inNewValues, CFIndex inNewCount)
{
    __CFArray& array = MutableArray(inArray, "CFArrayReplaceValues");
    cf::CheckRange("CFArrayReplaceValues", inRange, array.mCount);
    cf::CheckValues("CFArrayReplaceValues", inNewValues, inNewCount);
    ReplaceChecked(array, "CFArrayReplaceValues", inRange, inNewValues, inNewCount);
}

void CFArrayExchangeValuesAtIndices(CFMutableArrayRef inArray, CFIndex inIndex1, CFIndex inIndex2)
{
    __CFArray& array = MutableArray(inArray, "CFArrayExchangeValuesAtIndices");
    cf::CheckIndex("CFArrayExchangeValuesAtIndices", inIndex1, array.mCount);
    cf::CheckIndex("CFArrayExchangeValuesAtIndices", inIndex2, array.mCount);
    std::swap(array.mValues[std::size_t(inIndex1)], array.mValues[std::size_t(inIndex2)]);
}

void CFArraySortValues(CFMutableArrayRef inArray, CFRange inRange, CFComparatorFunction inComparator, void* inContext)
{
    __CFArray& array = MutableArray(inArray, "CFArraySortValues");
    cf::CheckFunction("CFArraySortValues", inComparator);
    cf::CheckRange("CFArraySortValues", inRange, array.mCount);
    cf::AllocatedBlock<const void*> scratch(array.Allocator());
    if (!scratch.Resize(std::size_t(inRange.length / 2)))
        cf::OutOfMemory("CFArraySortValues");
    MergeSort(array.Values(inRange), scratch.Data(), inComparator, inContext);
}

void CFArrayAppendArray(CFMutableArrayRef inArray, CFArrayRef inOtherArray, CFRange inOtherRange)
{
    __CFArray& array = MutableArray(inArray, "CFArrayAppendArray");
    const __CFArray& other = Array(inOtherArray, "CFArrayAppendArray");
    cf::CheckRange("CFArrayAppendArray", inOtherRange, other.mCount);
    const CFRange end = CFRangeMake(array.mCount, 0);
    // Room first: when an array is appended to itself, growing moves the values being read.
    MakeRoom(array, "CFArrayAppendArray", array.mCount + inOtherRange.length,
             array.ReplaceStorage(0, inOtherRange.length));
    array.Replace(end, other.Values(inOtherRange).data(), inOtherRange.length);
}
