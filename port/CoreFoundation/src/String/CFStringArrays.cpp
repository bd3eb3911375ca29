// Splitting a string at a separator into an array of strings, and joining an array back.
#include "CFStringObject.h"

namespace {

// Appends a new string to the array, handing the array the only reference.
bool AppendString(CFMutableArrayRef ioArray, CFAllocatorRef inAllocator, std::u16string_view inText)
{
    CFStringRef string = cf::CreateString(inAllocator, std::u16string(inText));
    if (string == nullptr)
        return false;
    CFArrayAppendValue(ioArray, string);
    CFRelease(string);
    return true;
}

}  // namespace

CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef inAllocator, CFStringRef inString,
                                                  CFStringRef inSeparator)
{
    constexpr const char* kCall = "CFStringCreateArrayBySeparatingStrings";
    std::u16string_view text = cf::String(inString, kCall).View();
    std::u16string_view separator = cf::String(inSeparator, kCall).View();
    CFMutableArrayRef array = CFArrayCreateMutable(inAllocator, 0, &kCFTypeArrayCallBacks);
    if (array == nullptr)
        return nullptr;
    // An empty separator separates nothing: the one element is the whole string.
    std::size_t start = 0;
    for (std::size_t at = separator.empty() ? text.npos : text.find(separator); at != text.npos;
         at = text.find(separator, start)) {
        if (!AppendString(array, inAllocator, text.substr(start, at - start))) {
            CFRelease(array);
            return nullptr;
        }
        start = at + separator.size();
    }
    if (!AppendString(array, inAllocator, text.substr(start))) {
        CFRelease(array);
        return nullptr;
    }
    return array;
}

CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef inAllocator, CFArrayRef inArray, CFStringRef inSeparator)
{
    constexpr const char* kCall = "CFStringCreateByCombiningStrings";
    std::u16string_view separator = cf::String(inSeparator, kCall).View();
    CFIndex count = CFArrayGetCount(inArray);
    std::u16string text;
    for (CFIndex i = 0; i < count; ++i) {
        if (i > 0)
            text += separator;
        text += cf::String(static_cast<CFStringRef>(CFArrayGetValueAtIndex(inArray, i)), kCall).View();
    }
    return cf::CreateString(inAllocator, std::move(text));
}
