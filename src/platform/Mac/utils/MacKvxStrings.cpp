// Platform strings to and from standard strings.
#include "platform/Mac/utils/MacKvxUtils.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace kvx {

std::string conv_string_CF2S(CFStringRef inString, CFStringEncoding inEncoding)
{
    if (const char* direct = CFStringGetCStringPtr(inString, inEncoding))
        return direct;
    // The buffer has room for two bytes per character, but the conversion is told the length
    // plus one: callers rely on text longer than that failing rather than converting.
    CFIndex length = CFStringGetLength(inString);
    auto buffer = std::make_unique<char[]>(std::size_t(2 * length + 2));
    if (!CFStringGetCString(inString, buffer.get(), length + 1, inEncoding))
        throw std::logic_error("Error converting CFString to std::string.");
    return buffer.get();
}

Gx::CFString Convert(const std::wstring& inText, const CFStringRef&)
{
    Gx::CFString result(CFSTR(""), true);
    std::string narrow = Convert(inText, kToStdString);
    if (!narrow.empty())
        result = Gx::CFString(narrow, Gx::encoding_System);
    return result;
}

std::string Convert(const CFStringRef& inString, const std::string*)
{
    if (inString == nullptr)
        return {};
    // Deliberately lenient: the result keeps the string's length whatever the conversion
    // makes of it, and a failed conversion leaves the buffer as it was, all NULs.
    CFIndex length = CFStringGetLength(inString);
    std::string result(std::size_t(length + 1), '\0');
    CFStringGetCString(inString, result.data(), length + 1, CFStringGetSystemEncoding());
    result.resize(std::size_t(length));
    return result;
}

std::wstring Convert(const CFStringRef& inString, const std::wstring*)
{
    return Convert(Convert(inString, kToStdString), kToStdWString);
}

std::string stringValue(const Gx::Exception& inException)
{
    // Why fills the buffer on every call; the answer of the second is the one used.
    Str255 reason;
    inException.Why(reason);
    StringPtr why = inException.Why(reason);

    char text[300] = {};
    Gx::CFString message(CFStringCreateWithPascalString(kCFAllocatorDefault, why, kCFStringEncodingUTF8), false);
    if (message.IsValid())
        CFStringGetCString(message, text, 256, kCFStringEncodingUTF8);

    // Room for three characters and the NUL, so every text ends in "; F" and the code itself
    // never appears. That cut is intended, and callers match this exact form: do not widen it.
    char* end = text + std::strlen(text);
    // GCC rightly sees the cut coming; clang has no such warning and rejects its name.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-truncation"
#endif
    std::snprintf(end, 4, "; FourCharCode=%lu;", static_cast<unsigned long>(inException.What()));
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
    return text;
}

}  // namespace kvx
