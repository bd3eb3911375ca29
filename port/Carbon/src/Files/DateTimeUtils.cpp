// Dates: the clock, and conversions between UTCDateTime, the kernel's times and CFAbsoluteTime.
#include "UTCDates.h"

#include <Carbon/MacErrors.h>

#include <cmath>

namespace carbon {

namespace {

constexpr double kFractionSteps = 65536.0;
constexpr SInt64 kLargestSeconds = (SInt64(1) << 48) - 1;

UTCDateTime Make(SInt64 inSeconds1904, UInt32 inFraction)
{
    return {UInt16(inSeconds1904 >> 32), UInt32(inSeconds1904), UInt16(inFraction)};
}

}  // namespace

UTCDateTime UTCDateTimeOf(SInt64 inUnixSeconds, UInt32 inNanoseconds)
{
    SInt64 seconds = inUnixSeconds + kSeconds1904To1970;
    if (seconds < 0)
        return {};
    // Rounded down, so that a date read and written back never moves into the next step.
    return Make(std::min(seconds, kLargestSeconds), UInt32((UInt64(inNanoseconds) << 16) / 1000000000u));
}

timespec TimespecOf(const UTCDateTime& inDateTime)
{
    SInt64 seconds = (SInt64(inDateTime.highSeconds) << 32 | inDateTime.lowSeconds) - kSeconds1904To1970;
    // Rounded up, the inverse of the rounding down above.
    long nanoseconds = long((UInt64(inDateTime.fraction) * 1000000000u + 65535) >> 16);
    return {time_t(seconds), nanoseconds};
}

}  // namespace carbon

using namespace carbon;

OSStatus GetUTCDateTime(UTCDateTime* outDateTime, OptionBits)
{
    if (outDateTime == nullptr)
        return paramErr;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    *outDateTime = UTCDateTimeOf(now.tv_sec, UInt32(now.tv_nsec));
    return noErr;
}

OSStatus UCConvertUTCDateTimeToCFAbsoluteTime(const UTCDateTime* inDateTime, CFAbsoluteTime* outTime)
{
    if (inDateTime == nullptr || outTime == nullptr)
        return paramErr;
    double seconds = double(SInt64(inDateTime->highSeconds) << 32 | inDateTime->lowSeconds);
    *outTime = seconds + inDateTime->fraction / kFractionSteps - kCFAbsoluteTimeIntervalSince1904;
    return noErr;
}

OSStatus UCConvertCFAbsoluteTimeToUTCDateTime(CFAbsoluteTime inTime, UTCDateTime* outDateTime)
{
    if (outDateTime == nullptr || std::isnan(inTime))
        return paramErr;
    double seconds1904 = inTime + kCFAbsoluteTimeIntervalSince1904;
    if (seconds1904 < 0)
        return kUTCUnderflowErr;
    double whole = std::floor(seconds1904);
    if (whole > double(kLargestSeconds))
        return kUTCOverflowErr;
    *outDateTime = Make(SInt64(whole), UInt32(std::floor((seconds1904 - whole) * kFractionSteps)));
    return noErr;
}
