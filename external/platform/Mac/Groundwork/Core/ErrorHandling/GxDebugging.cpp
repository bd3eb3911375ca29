#include <Groundwork/Core/ErrorHandling/GxDebugging.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

namespace Gx {

namespace {

constexpr int kMaxPStrLength = 255;

// The capacity in characters of a destination of inDestSize bytes.
int Capacity(SInt16 inDestSize) { return std::min<int>(inDestSize - 1, kMaxPStrLength); }

}  // namespace

void MenuDebugStr::Display(ConstStringPtr inPStr, UInt32 inTicks)
{
    // Written by length: a Pascal string may hold NUL bytes.
    std::fwrite(inPStr + 1, 1, inPStr[0], stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
    std::this_thread::sleep_for(std::chrono::microseconds(inTicks * 1'000'000ULL / 60));
}

void MenuDebugStr::Display(const char* inCStr, UInt32 inTicks)
{
    Str255 text;
    Debugging::LoadPStrFromCStr(text, kMaxPStrLength, inCStr);
    Display(text, inTicks);
}

void MenuDebugStr::Display(long inNumber, UInt32 inTicks)
{
    // A 64-bit long can need more than the 15 characters a Str15 holds; its leading digits
    // are what gets shown then.
    char digits[32];
    std::snprintf(digits, sizeof digits, "%ld", inNumber);
    Str15 text;
    Debugging::LoadPStrFromCStr(text, sizeof text - 1, digits);
    Display(text, inTicks);
}

StringPtr Debugging::CopyPStr(ConstStringPtr inSource, StringPtr outDest, SInt16 inDestSize)
{
    if (inDestSize < 1)
        return outDest;
    if (inSource == nullptr) {
        outDest[0] = 0;
        return outDest;
    }
    int count = std::min<int>(inDestSize, inSource[0] + 1);
    std::memmove(outDest, inSource, size_t(count));
    outDest[0] = UInt8(count - 1);
    return outDest;
}

StringPtr Debugging::LoadPStrFromCStr(StringPtr outDest, UInt8 inMaxLength, const char* inSource)
{
    UInt8 count = 0;
    if (inSource != nullptr) {
        while (count < inMaxLength && inSource[count] != '\0') {
            outDest[count + 1] = UInt8(inSource[count]);
            ++count;
        }
    }
    outDest[0] = count;
    return outDest;
}

StringPtr Debugging::AppendPStr(StringPtr ioDest, ConstStringPtr inAppend, SInt16 inDestSize)
{
    if (inDestSize < 1)
        return ioDest;
    int capacity = Capacity(inDestSize);
    int length = ioDest[0];
    if (length >= capacity) {
        ioDest[0] = UInt8(capacity);
        return ioDest;
    }
    int appended = std::min(inAppend ? int(inAppend[0]) : 0, capacity - length);
    if (appended > 0)
        std::memmove(ioDest + 1 + length, inAppend + 1, size_t(appended));
    ioDest[0] = UInt8(length + appended);
    return ioDest;
}

}  // namespace Gx
