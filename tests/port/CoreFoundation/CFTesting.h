// Helpers of the runtime's tests: owning what a test creates, and making and reading strings.
#pragma once

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>
#include <PortSupport/Owned.h>

#include <string>

namespace cftest {

// The port's owner, read where a raw reference is wanted, so that a failed assertion does
// not leak what the test created.
template <class Ref>
struct Owned : port::Owned<Ref> {
    using port::Owned<Ref>::Owned;
    operator Ref() const { return this->Get(); }
    Ref get() const { return this->Get(); }
};
template <class Ref>
Owned(Ref) -> Owned<Ref>;

inline CFStringRef Make(const char* inUTF8)
{
    return CFStringCreateWithCString(nullptr, inUTF8, kCFStringEncodingUTF8);
}

inline CFMutableStringRef MakeMutable(const char* inUTF8)
{
    CFMutableStringRef string = CFStringCreateMutable(nullptr, 0);
    CFStringAppendCString(string, inUTF8, kCFStringEncodingUTF8);
    return string;
}

inline std::string Text(CFStringRef inString) { return cf::UTF8(inString); }

}  // namespace cftest
