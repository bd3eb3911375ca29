// The object runtime's base: scalar types, ranges, allocators and the calls every object answers.
#pragma once

#include <MacTypes.h>

using CFIndex = long;
using CFTypeID = unsigned long;
using CFHashCode = unsigned long;
using CFOptionFlags = unsigned long;

using CFTypeRef = const void*;
using CFStringRef = const struct __CFString*;
using CFMutableStringRef = struct __CFString*;
using CFAllocatorRef = const struct __CFAllocator*;
using CFNullRef = const struct __CFNull*;
using CFPropertyListRef = CFTypeRef;

struct CFRange {
    CFIndex location;
    CFIndex length;
};

constexpr CFRange CFRangeMake(CFIndex inLocation, CFIndex inLength) { return CFRange{inLocation, inLength}; }

enum : CFIndex { kCFNotFound = -1 };

enum CFComparisonResult : CFIndex {
    kCFCompareLessThan = -1,
    kCFCompareEqualTo = 0,
    kCFCompareGreaterThan = 1,
};

using CFComparatorFunction = CFComparisonResult (*)(const void* inValue1, const void* inValue2, void* inContext);

// Allocators. Objects are carved out of their allocator's memory, so an allocator that
// refuses (kCFAllocatorNull, or a custom one) makes the create call return NULL.
using CFAllocatorRetainCallBack = const void* (*)(const void* inInfo);
using CFAllocatorReleaseCallBack = void (*)(const void* inInfo);
using CFAllocatorCopyDescriptionCallBack = CFStringRef (*)(const void* inInfo);
using CFAllocatorAllocateCallBack = void* (*)(CFIndex inSize, CFOptionFlags inHint, void* inInfo);
using CFAllocatorReallocateCallBack = void* (*)(void* inPtr, CFIndex inNewSize, CFOptionFlags inHint, void* inInfo);
using CFAllocatorDeallocateCallBack = void (*)(void* inPtr, void* inInfo);
using CFAllocatorPreferredSizeCallBack = CFIndex (*)(CFIndex inSize, CFOptionFlags inHint, void* inInfo);

struct CFAllocatorContext {
    CFIndex version;
    void* info;
    CFAllocatorRetainCallBack retain;
    CFAllocatorReleaseCallBack release;
    CFAllocatorCopyDescriptionCallBack copyDescription;
    CFAllocatorAllocateCallBack allocate;
    CFAllocatorReallocateCallBack reallocate;
    CFAllocatorDeallocateCallBack deallocate;
    CFAllocatorPreferredSizeCallBack preferredSize;
};

extern const CFAllocatorRef kCFAllocatorDefault;  // NULL: "the current default"
extern const CFAllocatorRef kCFAllocatorSystemDefault;
extern const CFAllocatorRef kCFAllocatorMalloc;
extern const CFAllocatorRef kCFAllocatorNull;  // allocates nothing, frees nothing

CFTypeID CFAllocatorGetTypeID();
CFAllocatorRef CFAllocatorGetDefault();
CFAllocatorRef CFAllocatorCreate(CFAllocatorRef inAllocator, CFAllocatorContext* inContext);
void* CFAllocatorAllocate(CFAllocatorRef inAllocator, CFIndex inSize, CFOptionFlags inHint);
void* CFAllocatorReallocate(CFAllocatorRef inAllocator, void* inPtr, CFIndex inNewSize, CFOptionFlags inHint);
void CFAllocatorDeallocate(CFAllocatorRef inAllocator, void* inPtr);
void CFAllocatorGetContext(CFAllocatorRef inAllocator, CFAllocatorContext* outContext);

// Every object.
CFTypeRef CFRetain(CFTypeRef inObject);
void CFRelease(CFTypeRef inObject);
CFIndex CFGetRetainCount(CFTypeRef inObject);
CFTypeID CFGetTypeID(CFTypeRef inObject);
CFStringRef CFCopyTypeIDDescription(CFTypeID inTypeID);
CFStringRef CFCopyDescription(CFTypeRef inObject);
CFHashCode CFHash(CFTypeRef inObject);
Boolean CFEqual(CFTypeRef inObject1, CFTypeRef inObject2);
CFAllocatorRef CFGetAllocator(CFTypeRef inObject);
void CFShow(CFTypeRef inObject);

// The null object, used where a collection needs a value that stands for nothing.
extern const CFNullRef kCFNull;
CFTypeID CFNullGetTypeID();
