// Blocks of bytes, immutable or mutable.
#pragma once

#include <CoreFoundation/CFBase.h>

using CFDataRef = const struct __CFData*;
using CFMutableDataRef = struct __CFData*;

CFTypeID CFDataGetTypeID();

CFDataRef CFDataCreate(CFAllocatorRef inAllocator, const UInt8* inBytes, CFIndex inLength);
// Uses the caller's bytes in place; inBytesDeallocator frees them with the object
// (kCFAllocatorNull: the caller keeps ownership).
CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef inAllocator, const UInt8* inBytes, CFIndex inLength,
                                      CFAllocatorRef inBytesDeallocator);
CFDataRef CFDataCreateCopy(CFAllocatorRef inAllocator, CFDataRef inData);
CFMutableDataRef CFDataCreateMutable(CFAllocatorRef inAllocator, CFIndex inCapacity);
CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex inCapacity, CFDataRef inData);

CFIndex CFDataGetLength(CFDataRef inData);
const UInt8* CFDataGetBytePtr(CFDataRef inData);
UInt8* CFDataGetMutableBytePtr(CFMutableDataRef inData);
void CFDataGetBytes(CFDataRef inData, CFRange inRange, UInt8* outBuffer);

void CFDataSetLength(CFMutableDataRef inData, CFIndex inLength);
void CFDataIncreaseLength(CFMutableDataRef inData, CFIndex inExtraLength);
void CFDataAppendBytes(CFMutableDataRef inData, const UInt8* inBytes, CFIndex inLength);
void CFDataReplaceBytes(CFMutableDataRef inData, CFRange inRange, const UInt8* inNewBytes, CFIndex inNewLength);
void CFDataDeleteBytes(CFMutableDataRef inData, CFRange inRange);
