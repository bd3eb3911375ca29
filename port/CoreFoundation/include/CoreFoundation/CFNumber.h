// Boxed numbers and the two boolean objects.
#pragma once

#include <CoreFoundation/CFBase.h>

using CFBooleanRef = const struct __CFBoolean*;
using CFNumberRef = const struct __CFNumber*;

extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;

CFTypeID CFBooleanGetTypeID();
Boolean CFBooleanGetValue(CFBooleanRef inBoolean);

enum CFNumberType : CFIndex {
    kCFNumberSInt8Type = 1,
    kCFNumberSInt16Type = 2,
    kCFNumberSInt32Type = 3,
    kCFNumberSInt64Type = 4,
    kCFNumberFloat32Type = 5,
    kCFNumberFloat64Type = 6,
    kCFNumberCharType = 7,
    kCFNumberShortType = 8,
    kCFNumberIntType = 9,
    kCFNumberLongType = 10,
    kCFNumberLongLongType = 11,
    kCFNumberFloatType = 12,
    kCFNumberDoubleType = 13,
    kCFNumberCFIndexType = 14,
    kCFNumberMaxType = 14,
};

CFTypeID CFNumberGetTypeID();
CFNumberRef CFNumberCreate(CFAllocatorRef inAllocator, CFNumberType inType, const void* inValuePtr);
CFNumberType CFNumberGetType(CFNumberRef inNumber);
CFIndex CFNumberGetByteSize(CFNumberRef inNumber);
Boolean CFNumberIsFloatType(CFNumberRef inNumber);
// False when the value had to be rounded or clipped to fit the requested type.
Boolean CFNumberGetValue(CFNumberRef inNumber, CFNumberType inType, void* outValuePtr);
CFComparisonResult CFNumberCompare(CFNumberRef inNumber1, CFNumberRef inNumber2, void* inContext);
