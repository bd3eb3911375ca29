// Points in time, counted in seconds from the first instant of 2001 (UTC), and the date
// objects that box them.
#pragma once

#include <CoreFoundation/CFBase.h>

using CFTimeInterval = double;
using CFAbsoluteTime = CFTimeInterval;
using CFDateRef = const struct __CFDate*;

// Seconds from the start of 1970 (the Unix epoch) and of 1904 to the reference date.
inline constexpr CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200.0;
inline constexpr CFTimeInterval kCFAbsoluteTimeIntervalSince1904 = 3061152000.0;

// The system clock, as seconds from the reference date.
CFAbsoluteTime CFAbsoluteTimeGetCurrent();

CFTypeID CFDateGetTypeID();
CFDateRef CFDateCreate(CFAllocatorRef inAllocator, CFAbsoluteTime inTime);
CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef inDate);
// inDate minus inOtherDate, in seconds.
CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef inDate, CFDateRef inOtherDate);
CFComparisonResult CFDateCompare(CFDateRef inDate, CFDateRef inOtherDate, void* inContext);
