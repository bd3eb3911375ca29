// Helpers of the runtime's tests: owning what a test creates, and making and reading strings.
#pragma once

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>

#include <string>

namespace cftest {

// Owns one reference for the length of a test, so that a failed assertion does not leak.
template <class Ref>
class Owned {
public:
    explicit Owned(Ref inRef = nullptr) : mRef(inRef) {}
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned()
    {
        if (mRef)
            CFRelease(mRef);
    }
    operator Ref() const { return mRef; }
    Ref get() const { return mRef; }

private:
    Ref mRef;
};

inline CFStringRef Make(const char* inUTF8) { return CFStringCreateWithCString(nullptr, inUTF8, kCFStringEncodingUTF8); }

inline CFMutableStringRef MakeMutable(const char* inUTF8)
{
    CFMutableStringRef string = CFStringCreateMutable(nullptr, 0);
    CFStringAppendCString(string, inUTF8, kCFStringEncodingUTF8);
    return string;
}

inline std::string Text(CFStringRef inString) { return cf::UTF8(inString); }

}  // namespace cftest
