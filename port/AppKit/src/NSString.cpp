// Framework strings over the runtime's strings.
#include <AppKit/NSString.h>

#include <vector>

NSString* NSString::cast(CFTypeRef inObject)
{
    if (inObject == nullptr || CFGetTypeID(inObject) != CFStringGetTypeID())
        return nullptr;
    return bridge(static_cast<CFStringRef>(inObject));
}

NSString* NSString::stringWithFormat(NSString* inFormat, ...)
{
    va_list arguments;
    va_start(arguments, inFormat);
    CFStringRef text = CFStringCreateWithFormatAndArguments(nullptr, nullptr, inFormat->CFString(), arguments);
    va_end(arguments);
    if (text == nullptr)
        return nullptr;
    NSAutoreleasePool::addObject(text);
    return bridge(text);
}

NSString* NSString::stringWithUTF8String(const char* inText)
{
    CFStringRef text = inText ? CFStringCreateWithCString(nullptr, inText, kCFStringEncodingUTF8) : nullptr;
    if (text == nullptr)
        return nullptr;
    NSAutoreleasePool::addObject(text);
    return bridge(text);
}

std::string NSString::UTF8String() const { return cf::UTF8(CFString()); }

NSInteger NSString::length() const { return CFStringGetLength(CFString()); }

BOOL NSString::isEqualToString(NSString* inOther) const
{
    return inOther != nullptr && CFStringCompare(CFString(), inOther->CFString(), 0) == kCFCompareEqualTo;
}
