// UTCDateTime and the kernel's times (seconds and nanoseconds since 1970).
#pragma once

#include <Carbon/DateTimeUtils.h>

#include <time.h>

namespace carbon {

// Seconds from the start of 1904 to the start of 1970.
inline constexpr SInt64 kSeconds1904To1970 = 2082844800;

// Times before 1904 read as 1904.
UTCDateTime UTCDateTimeOf(SInt64 inUnixSeconds, UInt32 inNanoseconds);
timespec TimespecOf(const UTCDateTime& inDateTime);

}  // namespace carbon
