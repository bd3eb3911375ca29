// An owning, copy-on-write array of T (a platform reference type). Indices and ranges are
// checked with the layer's index rules before they reach the platform.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFObject.h>

#include <CoreFoundation/CFArray.h>

namespace Gx {

template <class T>
class CFArray : public CFMutableObject<CFArrayRef, CFMutableArrayRef> {
    using Base = CFMutableObject<CFArrayRef, CFMutableArrayRef>;

public:
    CFArray() = default;
    // A new, empty, private mutable array.
    explicit CFArray(CFIndex inCapacity, const CFArrayCallBacks* inCallBacks = &kCFTypeArrayCallBacks,
                     CFAllocatorRef inAllocator = kCFAllocatorDefault)
    {
        AttachMutableRef(CFUtils::CheckCreated(CFArrayCreateMutable(inAllocator, inCapacity, inCallBacks),
                                               "CFArrayCreateMutable failed"),
                         false);
    }
    // An immutable array of the given values; the first change copies it.
    CFArray(const T* inValues, CFIndex inCount, const CFArrayCallBacks* inCallBacks = &kCFTypeArrayCallBacks,
            CFAllocatorRef inAllocator = kCFAllocatorDefault)
        : Base(CFUtils::CheckCreated(CFArrayCreate(inAllocator, AsValues(inValues), inCount, inCallBacks),
                                     "CFArrayCreate failed"),
               false)
    {
    }
    CFArray(CFArrayRef inRef, bool inRetain) : Base(inRef, inRetain) {}
    CFArray(CFMutableArrayRef inRef, bool inRetain) { AttachMutableRef(inRef, inRetain); }
    CFArray(const CFArray&) = default;
    CFArray& operator=(const CFArray&) = default;
    ~CFArray() override = default;

    CFIndex GetCount() const { return CFArrayGetCount(UseRef()); }
    bool IsEmpty() const { return GetCount() == 0; }

    // Without a range these search the whole array, empty or not; a given range is checked.
    CFIndex GetCountOfValue(T inValue) const { return CFArrayGetCountOfValue(UseRef(), All(), inValue); }
    CFIndex GetCountOfValue(T inValue, CFRange inRange) const
    {
        return CFArrayGetCountOfValue(UseRef(), Checked(inRange), inValue);
    }
    bool ContainsValue(T inValue) const { return CFArrayContainsValue(UseRef(), All(), inValue); }
    bool ContainsValue(T inValue, CFRange inRange) const
    {
        return CFArrayContainsValue(UseRef(), Checked(inRange), inValue);
    }
    CFIndex GetFirstIndexOf(T inValue) const { return CFArrayGetFirstIndexOfValue(UseRef(), All(), inValue); }
    CFIndex GetFirstIndexOf(T inValue, CFRange inRange) const
    {
        return CFArrayGetFirstIndexOfValue(UseRef(), Checked(inRange), inValue);
    }
    CFIndex GetLastIndexOf(T inValue) const { return CFArrayGetLastIndexOfValue(UseRef(), All(), inValue); }
    CFIndex GetLastIndexOf(T inValue, CFRange inRange) const
    {
        return CFArrayGetLastIndexOfValue(UseRef(), Checked(inRange), inValue);
    }

    T GetValueAt(CFIndex inIndex) const
    {
        CFUtils::VerifyIndex(GetCount(), inIndex);
        return static_cast<T>(CFArrayGetValueAtIndex(UseRef(), inIndex));
    }
    T operator[](CFIndex inIndex) const { return GetValueAt(inIndex); }
    void GetValues(CFRange inRange, T* outValues) const
    {
        CFArrayGetValues(UseRef(), Checked(inRange), AsValues(outValues));
    }

    void AppendValue(T inValue) { CFArrayAppendValue(UseMutableRef(), inValue); }
    void InsertValueAt(CFIndex inIndex, T inValue)
    {
        CFUtils::VerifyInsertIndex(GetCount(), inIndex);
        CFArrayInsertValueAtIndex(UseMutableRef(), inIndex, inValue);
    }
    void SetValueAt(CFIndex inIndex, T inValue)
    {
        CFUtils::VerifyIndex(GetCount(), inIndex);
        CFArraySetValueAtIndex(UseMutableRef(), inIndex, inValue);
    }
    void RemoveValueAt(CFIndex inIndex)
    {
        CFUtils::VerifyIndex(GetCount(), inIndex);
        CFArrayRemoveValueAtIndex(UseMutableRef(), inIndex);
    }
    void RemoveAllValues() { CFArrayRemoveAllValues(UseMutableRef()); }
    void ReplaceValues(CFRange inRange, const T* inValues, CFIndex inCount)
    {
        CFRange range = Checked(inRange);
        CFArrayReplaceValues(UseMutableRef(), range, AsValues(inValues), inCount);
    }
    void ExchangeValuesAt(CFIndex inIndex1, CFIndex inIndex2)
    {
        CFIndex count = GetCount();
        CFUtils::VerifyIndex(count, inIndex1);
        CFUtils::VerifyIndex(count, inIndex2);
        CFArrayExchangeValuesAtIndices(UseMutableRef(), inIndex1, inIndex2);
    }

    CFIndex BinarySearchFor(T inValue, CFComparatorFunction inComparator, void* inContext, CFRange inRange) const
    {
        return CFArrayBSearchValues(UseRef(), Checked(inRange), inValue, inComparator, inContext);
    }
    void Sort(CFComparatorFunction inComparator, void* inContext)
    {
        CFRange range = All();
        CFArraySortValues(UseMutableRef(), range, inComparator, inContext);
    }
    void Sort(CFComparatorFunction inComparator, void* inContext, CFRange inRange)
    {
        CFRange range = Checked(inRange);
        CFArraySortValues(UseMutableRef(), range, inComparator, inContext);
    }
    void ApplyFunction(CFArrayApplierFunction inFunction, void* inContext) const
    {
        CFArrayApplyFunction(UseRef(), All(), inFunction, inContext);
    }
    void ApplyFunction(CFArrayApplierFunction inFunction, void* inContext, CFRange inRange) const
    {
        CFArrayApplyFunction(UseRef(), Checked(inRange), inFunction, inContext);
    }

private:
    CFMutableArrayRef MutableCopy(CFArrayRef inRef) const override
    {
        return CFUtils::CheckCreated(CFArrayCreateMutableCopy(CFGetAllocator(inRef), 0, inRef),
                                     "CFArrayCreateMutableCopy failed");
    }

    CFRange All() const { return CFRangeMake(0, GetCount()); }
    CFRange Checked(CFRange inRange) const
    {
        CFUtils::VerifyRange(GetCount(), inRange);
        return inRange;
    }

    // The platform's value arrays are untyped; T is always a pointer type.
    static const void** AsValues(const T* inValues) { return reinterpret_cast<const void**>(const_cast<T*>(inValues)); }
};

}  // namespace Gx
