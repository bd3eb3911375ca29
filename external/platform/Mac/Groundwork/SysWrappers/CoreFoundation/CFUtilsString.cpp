#include <Groundwork/SysWrappers/CoreFoundation/CFUtilsString.h>

#include <cstdarg>
#include <vector>

namespace CFUtils {

CFString::CFString(const char* inCString, CFStringEncoding inEncoding)
    : TypedObject(inCString ? CFStringCreateWithCString(kCFAllocatorDefault, inCString, inEncoding) : nullptr)
{
}

CFString::CFString(ConstStringPtr inPString, CFStringEncoding inEncoding)
    : TypedObject(inPString ? CFStringCreateWithPascalString(kCFAllocatorDefault, inPString, inEncoding) : nullptr)
{
}

CFString::CFString(Format inFormat, ...)
{
    CFString ownedFormat(inFormat.mCString);
    CFStringRef format = inFormat.mString ? inFormat.mString : ownedFormat.AsConstRef();
    if (format == nullptr)
        return;
    va_list arguments;
    va_start(arguments, inFormat);
    *this = CFStringCreateWithFormatAndArguments(kCFAllocatorDefault, nullptr, format, arguments);
    va_end(arguments);
}

std::string CFString::CStr(CFStringEncoding inEncoding) const
{
    if (_reference == nullptr)
        return {};
    CFIndex size = CFStringGetMaximumSizeForEncoding(CFStringGetLength(_reference), inEncoding) + 1;
    if (size <= 0)
        return {};
    std::vector<char> buffer(static_cast<size_t>(size));
    if (!CFStringGetCString(_reference, buffer.data(), size, inEncoding))
        return {};
    return buffer.data();
}

CFString::PascalString CFString::PStr(CFStringEncoding inEncoding) const
{
    PascalString text{};
    ConvertToPStr(text.data(), inEncoding);
    return text;
}

bool CFString::ConvertToCStr(char* outBuffer, CFIndex inSize, CFStringEncoding inEncoding) const
{
    if (outBuffer == nullptr || inSize <= 0)
        return false;
    if (_reference != nullptr && CFStringGetCString(_reference, outBuffer, inSize, inEncoding))
        return true;
    outBuffer[0] = '\0';
    return false;
}

bool CFString::ConvertToPStr(StringPtr outBuffer, CFStringEncoding inEncoding) const
{
    if (outBuffer == nullptr)
        return false;
    if (_reference != nullptr && CFStringGetPascalString(_reference, outBuffer, sizeof(Str255), inEncoding))
        return true;
    outBuffer[0] = 0;
    return false;
}

bool CFStringContains(CFStringRef inString, CFStringRef inFind, CFStringCompareFlags inFlags, CFRange* outRange)
{
    if (inString == nullptr || inFind == nullptr)
        return false;
    CFRange whole = CFRangeMake(0, CFStringGetLength(inString));
    return CFStringFindWithOptions(inString, inFind, whole, inFlags, outRange);
}

}  // namespace CFUtils
