// Universally unique identifiers: random (version 4) or parsed from text or bytes.
#pragma once

#include <CoreFoundation/CFBase.h>

using CFUUIDRef = const struct __CFUUID*;

struct CFUUIDBytes {
    UInt8 byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
    UInt8 byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
};

CFTypeID CFUUIDGetTypeID();
CFUUIDRef CFUUIDCreate(CFAllocatorRef inAllocator);
CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef inAllocator, CFStringRef inText);
CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef inAllocator, CFUUIDBytes inBytes);
CFStringRef CFUUIDCreateString(CFAllocatorRef inAllocator, CFUUIDRef inUUID);
CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef inUUID);
