// Key-value collections with callbacks for keys (retain, equality, hash) and for values.
#pragma once

#include <CoreFoundation/CFBase.h>

using CFDictionaryRef = const struct __CFDictionary*;
using CFMutableDictionaryRef = struct __CFDictionary*;

using CFDictionaryRetainCallBack = const void* (*)(CFAllocatorRef inAllocator, const void* inValue);
using CFDictionaryReleaseCallBack = void (*)(CFAllocatorRef inAllocator, const void* inValue);
using CFDictionaryCopyDescriptionCallBack = CFStringRef (*)(const void* inValue);
using CFDictionaryEqualCallBack = Boolean (*)(const void* inValue1, const void* inValue2);
using CFDictionaryHashCallBack = CFHashCode (*)(const void* inValue);
using CFDictionaryApplierFunction = void (*)(const void* inKey, const void* inValue, void* inContext);

struct CFDictionaryKeyCallBacks {
    CFIndex version;
    CFDictionaryRetainCallBack retain;
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
    CFDictionaryHashCallBack hash;
};

struct CFDictionaryValueCallBacks {
    CFIndex version;
    CFDictionaryRetainCallBack retain;
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
};

extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
// Like kCFTypeDictionaryKeyCallBacks, but a key is copied on the way in, so that a mutable
// string used as a key cannot change under the dictionary.
extern const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CFTypeID CFDictionaryGetTypeID();

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef inAllocator, const void** inKeys, const void** inValues,
                                   CFIndex inCount, const CFDictionaryKeyCallBacks* inKeyCallBacks,
                                   const CFDictionaryValueCallBacks* inValueCallBacks);
CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef inAllocator, CFDictionaryRef inDictionary);
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef inAllocator, CFIndex inCapacity,
                                                 const CFDictionaryKeyCallBacks* inKeyCallBacks,
                                                 const CFDictionaryValueCallBacks* inValueCallBacks);
CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex inCapacity,
                                                     CFDictionaryRef inDictionary);

CFIndex CFDictionaryGetCount(CFDictionaryRef inDictionary);
CFIndex CFDictionaryGetCountOfKey(CFDictionaryRef inDictionary, const void* inKey);
CFIndex CFDictionaryGetCountOfValue(CFDictionaryRef inDictionary, const void* inValue);
Boolean CFDictionaryContainsKey(CFDictionaryRef inDictionary, const void* inKey);
Boolean CFDictionaryContainsValue(CFDictionaryRef inDictionary, const void* inValue);
const void* CFDictionaryGetValue(CFDictionaryRef inDictionary, const void* inKey);
Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef inDictionary, const void* inKey, const void** outValue);
void CFDictionaryGetKeysAndValues(CFDictionaryRef inDictionary, const void** outKeys, const void** outValues);
void CFDictionaryApplyFunction(CFDictionaryRef inDictionary, CFDictionaryApplierFunction inApplier, void* inContext);

void CFDictionaryAddValue(CFMutableDictionaryRef inDictionary, const void* inKey, const void* inValue);
void CFDictionarySetValue(CFMutableDictionaryRef inDictionary, const void* inKey, const void* inValue);
void CFDictionaryReplaceValue(CFMutableDictionaryRef inDictionary, const void* inKey, const void* inValue);
void CFDictionaryRemoveValue(CFMutableDictionaryRef inDictionary, const void* inKey);
void CFDictionaryRemoveAllValues(CFMutableDictionaryRef inDictionary);
