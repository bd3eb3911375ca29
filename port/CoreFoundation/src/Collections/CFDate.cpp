// Date objects: an absolute time and nothing else.
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFRuntime.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <ctime>

struct __CFDate final : cf::Object {
    CFAbsoluteTime mTime;

    explicit __CFDate(CFAbsoluteTime inTime) : Object(CFDateGetTypeID()), mTime(inTime) {}

    bool Equal(const Object& inOther) const override { return mTime == static_cast<const __CFDate&>(inOther).mTime; }

    CFHashCode Hash() const override
    {
        // Equal times must hash alike, and +0.0 equals -0.0.
        double time = mTime == 0.0 ? 0.0 : mTime;
        return CFHashCode(std::bit_cast<UInt64>(time) * 0x9E3779B97F4A7C15ull);
    }

    std::string Describe() const override
    {
        char text[64] = "out of range";
        double unixSeconds = std::floor(mTime + kCFAbsoluteTimeIntervalSince1970);
        std::tm parts{};
        if (std::isfinite(unixSeconds) && std::fabs(unixSeconds) < 1e15) {
            std::time_t seconds = std::time_t(unixSeconds);
            if (gmtime_r(&seconds, &parts))
                std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts);
        }
        return DescribePrefix() + "{time = " + text + "}";
    }
};

namespace {

const __CFDate& Date(CFDateRef inDate, const char* inCall)
{
    return cf::Checked<__CFDate>(inDate, CFDateGetTypeID(), inCall);
}

}  // namespace

CFAbsoluteTime CFAbsoluteTimeGetCurrent()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return double(now.tv_sec) - kCFAbsoluteTimeIntervalSince1970 + double(now.tv_nsec) * 1e-9;
}

CFTypeID CFDateGetTypeID()
{
    static const CFTypeID sTypeID = cf::RegisterClass("CFDate");
    return sTypeID;
}

CFDateRef CFDateCreate(CFAllocatorRef inAllocator, CFAbsoluteTime inTime)
{
    return cf::Create<__CFDate>(inAllocator, inTime);
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef inDate) { return Date(inDate, "CFDateGetAbsoluteTime").mTime; }

CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef inDate, CFDateRef inOtherDate)
{
    return Date(inDate, "CFDateGetTimeIntervalSinceDate").mTime -
           Date(inOtherDate, "CFDateGetTimeIntervalSinceDate").mTime;
}

CFComparisonResult CFDateCompare(CFDateRef inDate, CFDateRef inOtherDate, void*)
{
    CFAbsoluteTime first = Date(inDate, "CFDateCompare").mTime;
    CFAbsoluteTime second = Date(inOtherDate, "CFDateCompare").mTime;
    if (first < second)
        return kCFCompareLessThan;
    return first > second ? kCFCompareGreaterThan : kCFCompareEqualTo;
}
