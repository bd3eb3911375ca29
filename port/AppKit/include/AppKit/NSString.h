// Strings of the framework: the same objects as the runtime's CFStrings (toll-free bridged),
// so an NSString* and a CFStringRef name one object and either may be passed where the other
// is expected through the casts below.
#pragma once

#include <AppKit/NSObject.h>
#include <CoreFoundation/CFString.h>

#include <string>

class NSString final {
public:
    NSString() = delete;

    static NSString* bridge(CFStringRef inString)
    {
        return reinterpret_cast<NSString*>(const_cast<__CFString*>(inString));
    }
    // A string value of the runtime, or nil for NULL or any other kind of object.
    static NSString* cast(CFTypeRef inObject);
    CFStringRef CFString() const { return reinterpret_cast<CFStringRef>(this); }

    // An autoreleased string built from a format with printf conversions and %@ for objects.
    static NSString* stringWithFormat(NSString* inFormat, ...);
    static NSString* stringWithUTF8String(const char* inText);

    std::string UTF8String() const;
    NSInteger length() const;
    BOOL isEqualToString(NSString* inOther) const;
};

// A constant string, like a literal of the language: never released.
inline NSString* NSSTR(const char* inText) { return NSString::bridge(CFSTR(inText)); }
