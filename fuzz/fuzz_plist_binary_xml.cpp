// Property lists from arbitrary bytes, as XML and binary (and whatever else the bytes look
// like): reading answers a value or NULL with a reason, never crashes, hangs or leaks. A
// value read is written again in both forms and read back, and the value read back renders
// as the same XML as the first one. (XML, because binary dates keep microseconds that
// libplist truncates when it reads them, so their last digit may drift; XML keeps whole
// seconds and renders every other value exactly.)
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

bool SameBytes(CFDataRef inFirst, CFDataRef inSecond)
{
    return CFDataGetLength(inFirst) == CFDataGetLength(inSecond) &&
           std::memcmp(CFDataGetBytePtr(inFirst), CFDataGetBytePtr(inSecond), size_t(CFDataGetLength(inFirst))) == 0;
}

CFDataRef XML(CFPropertyListRef inValue)
{
    return CFPropertyListCreateData(nullptr, inValue, kCFPropertyListXMLFormat_v1_0, 0, nullptr);
}

void CheckStable(CFPropertyListRef inValue, CFPropertyListFormat inFormat)
{
    CFDataRef written = CFPropertyListCreateData(nullptr, inValue, inFormat, 0, nullptr);
    if (written == nullptr)  // the text form's strings may hold what the writer refuses
        return;
    CFPropertyListFormat format{};
    CFPropertyListRef back = CFPropertyListCreateWithData(nullptr, written, kCFPropertyListImmutable, &format, nullptr);
    if (back == nullptr || format != inFormat)
        std::abort();
    CFDataRef before = XML(inValue), after = XML(back);
    if (before == nullptr || after == nullptr || !SameBytes(before, after))
        std::abort();
    CFRelease(after);
    CFRelease(before);
    CFRelease(back);
    CFRelease(written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* inData, size_t inSize)
{
    CFIndex before = _CFRuntimeGetLiveObjectCount();
    CFDataRef data = CFDataCreateWithBytesNoCopy(nullptr, inData, CFIndex(inSize), kCFAllocatorNull);
    CFStringRef error = nullptr;
    CFPropertyListRef value = CFPropertyListCreateWithData(nullptr, data, inSize % 3, nullptr, &error);
    if ((value == nullptr) == (error == nullptr))
        std::abort();
    if (value) {
        CheckStable(value, kCFPropertyListXMLFormat_v1_0);
        CheckStable(value, kCFPropertyListBinaryFormat_v1_0);
        CFRelease(value);
    } else {
        CFRelease(error);
    }
    CFRelease(data);
    if (_CFRuntimeGetLiveObjectCount() != before)
        std::abort();
    return 0;
}
