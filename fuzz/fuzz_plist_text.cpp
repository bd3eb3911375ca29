// The text form of property lists from arbitrary bytes: the reader answers a value made of
// strings, data, arrays and dictionaries, or NULL with a reason; it never crashes, hangs or
// leaks. A value that can be written as XML reads back equal.
#include "PropertyList/CFPropertyListText.h"

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void CheckRoundTrip(CFPropertyListRef inValue)
{
    CFDataRef xml = CFPropertyListCreateData(nullptr, inValue, kCFPropertyListXMLFormat_v1_0, 0, nullptr);
    if (xml == nullptr)  // strings holding NUL or lone surrogates have no XML form
        return;
    CFPropertyListRef back = CFPropertyListCreateWithData(nullptr, xml, kCFPropertyListImmutable, nullptr, nullptr);
    if (back == nullptr || !CFEqual(back, inValue))
        std::abort();
    CFRelease(back);
    CFRelease(xml);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* inData, size_t inSize)
{
    CFIndex before = _CFRuntimeGetLiveObjectCount();
    std::string error;
    CFOptionFlags options = inSize % 3;  // immutable, mutable containers, and leaves too
    CFPropertyListRef value = cf::plist::ParseText(nullptr, {inData, inSize}, options, error);
    if ((value == nullptr) == error.empty())
        std::abort();
    if (value) {
        if (!CFPropertyListIsValid(value, kCFPropertyListOpenStepFormat))
            std::abort();
        CheckRoundTrip(value);
        CFRelease(value);
    }
    if (_CFRuntimeGetLiveObjectCount() != before)
        std::abort();
    return 0;
}
