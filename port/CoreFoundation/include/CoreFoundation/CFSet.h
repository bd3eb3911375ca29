// Unordered collections of distinct values, with callbacks for retain, equality and hash.
#pragma once

#include <CoreFoundation/CFBase.h>

using CFSetRef = const struct __CFSet*;
using CFMutableSetRef = struct __CFSet*;

using CFSetRetainCallBack = const void* (*)(CFAllocatorRef inAllocator, const void* inValue);
using CFSetReleaseCallBack = void (*)(CFAllocatorRef inAllocator, const void* inValue);
using CFSetCopyDescriptionCallBack = CFStringRef (*)(const void* inValue);
using CFSetEqualCallBack = Boolean (*)(const void* inValue1, const void* inValue2);
using CFSetHashCallBack = CFHashCode (*)(const void* inValue);
using CFSetApplierFunction = void (*)(const void* inValue, void* inContext);

struct CFSetCallBacks {
    CFIndex version;
    CFSetRetainCallBack retain;
    CFSetReleaseCallBack release;
    CFSetCopyDescriptionCallBack copyDescription;
    CFSetEqualCallBack equal;
    CFSetHashCallBack hash;
};

extern const CFSetCallBacks kCFTypeSetCallBacks;
extern const CFSetCallBacks kCFCopyStringSetCallBacks;

CFTypeID CFSetGetTypeID();

CFSetRef CFSetCreate(CFAllocatorRef inAllocator, const void** inValues, CFIndex inCount,
                     const CFSetCallBacks* inCallBacks);
CFSetRef CFSetCreateCopy(CFAllocatorRef inAllocator, CFSetRef inSet);
CFMutableSetRef CFSetCreateMutable(CFAllocatorRef inAllocator, CFIndex inCapacity, const CFSetCallBacks* inCallBacks);
CFMutableSetRef CFSetCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex inCapacity, CFSetRef inSet);

CFIndex CFSetGetCount(CFSetRef inSet);
CFIndex CFSetGetCountOfValue(CFSetRef inSet, const void* inValue);
Boolean CFSetContainsValue(CFSetRef inSet, const void* inValue);
const void* CFSetGetValue(CFSetRef inSet, const void* inValue);
Boolean CFSetGetValueIfPresent(CFSetRef inSet, const void* inCandidate, const void** outValue);
void CFSetGetValues(CFSetRef inSet, const void** outValues);
void CFSetApplyFunction(CFSetRef inSet, CFSetApplierFunction inApplier, void* inContext);

void CFSetAddValue(CFMutableSetRef inSet, const void* inValue);
void CFSetReplaceValue(CFMutableSetRef inSet, const void* inValue);
void CFSetSetValue(CFMutableSetRef inSet, const void* inValue);
void CFSetRemoveValue(CFMutableSetRef inSet, const void* inValue);
void CFSetRemoveAllValues(CFMutableSetRef inSet);
