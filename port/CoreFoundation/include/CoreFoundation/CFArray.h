// Ordered collections of values, with callbacks that say how values are retained and compared.
#pragma once

#include <CoreFoundation/CFBase.h>

using CFArrayRef = const struct __CFArray*;
using CFMutableArrayRef = struct __CFArray*;

using CFArrayRetainCallBack = const void* (*)(CFAllocatorRef inAllocator, const void* inValue);
using CFArrayReleaseCallBack = void (*)(CFAllocatorRef inAllocator, const void* inValue);
using CFArrayCopyDescriptionCallBack = CFStringRef (*)(const void* inValue);
using CFArrayEqualCallBack = Boolean (*)(const void* inValue1, const void* inValue2);
using CFArrayApplierFunction = void (*)(const void* inValue, void* inContext);

struct CFArrayCallBacks {
    CFIndex version;
    CFArrayRetainCallBack retain;
    CFArrayReleaseCallBack release;
    CFArrayCopyDescriptionCallBack copyDescription;
    CFArrayEqualCallBack equal;
};

extern const CFArrayCallBacks kCFTypeArrayCallBacks;

CFTypeID CFArrayGetTypeID();

CFArrayRef CFArrayCreate(CFAllocatorRef inAllocator, const void** inValues, CFIndex inCount,
                         const CFArrayCallBacks* inCallBacks);
CFArrayRef CFArrayCreateCopy(CFAllocatorRef inAllocator, CFArrayRef inArray);
CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef inAllocator, CFIndex inCapacity,
                                       const CFArrayCallBacks* inCallBacks);
CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex inCapacity, CFArrayRef inArray);

CFIndex CFArrayGetCount(CFArrayRef inArray);
CFIndex CFArrayGetCountOfValue(CFArrayRef inArray, CFRange inRange, const void* inValue);
Boolean CFArrayContainsValue(CFArrayRef inArray, CFRange inRange, const void* inValue);
const void* CFArrayGetValueAtIndex(CFArrayRef inArray, CFIndex inIndex);
void CFArrayGetValues(CFArrayRef inArray, CFRange inRange, const void** outValues);
void CFArrayApplyFunction(CFArrayRef inArray, CFRange inRange, CFArrayApplierFunction inApplier, void* inContext);
CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef inArray, CFRange inRange, const void* inValue);
CFIndex CFArrayGetLastIndexOfValue(CFArrayRef inArray, CFRange inRange, const void* inValue);
CFIndex CFArrayBSearchValues(CFArrayRef inArray, CFRange inRange, const void* inValue,
                             CFComparatorFunction inComparator, void* inContext);

void CFArrayAppendValue(CFMutableArrayRef inArray, const void* inValue);
void CFArrayInsertValueAtIndex(CFMutableArrayRef inArray, CFIndex inIndex, const void* inValue);
void CFArraySetValueAtIndex(CFMutableArrayRef inArray, CFIndex inIndex, const void* inValue);
void CFArrayRemoveValueAtIndex(CFMutableArrayRef inArray, CFIndex inIndex);
void CFArrayRemoveAllValues(CFMutableArrayRef inArray);
void CFArrayReplaceValues(CFMutableArrayRef inArray, CFRange inRange, const void** inNewValues, CFIndex inNewCount);
void CFArrayExchangeValuesAtIndices(CFMutableArrayRef inArray, CFIndex inIndex1, CFIndex inIndex2);
void CFArraySortValues(CFMutableArrayRef inArray, CFRange inRange, CFComparatorFunction inComparator, void* inContext);
void CFArrayAppendArray(CFMutableArrayRef inArray, CFArrayRef inOtherArray, CFRange inOtherRange);
