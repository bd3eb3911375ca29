// UUID text from arbitrary input: the parser answers NULL, or a UUID that prints as the text
// it was read from (up to letter case).
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

// The first byte chooses how the rest becomes text: UTF-16 units (any, lone surrogates
// included) or UTF-8, falling back to Latin 1 so that every input makes some string.
CFStringRef MakeText(const uint8_t* inData, size_t inSize)
{
    if (inSize > 0 && (inData[0] & 1)) {
        std::vector<UniChar> units((inSize - 1) / sizeof(UniChar));
        if (!units.empty())  // copied, because the input need not be aligned for UniChar
            std::memcpy(units.data(), inData + 1, units.size() * sizeof(UniChar));
        return CFStringCreateWithCharacters(nullptr, units.data(), CFIndex(units.size()));
    }
    const uint8_t* bytes = inSize > 0 ? inData + 1 : inData;
    CFIndex length = inSize > 0 ? CFIndex(inSize - 1) : 0;
    CFStringRef text = CFStringCreateWithBytes(nullptr, bytes, length, kCFStringEncodingUTF8, false);
    return text ? text : CFStringCreateWithBytes(nullptr, bytes, length, kCFStringEncodingISOLatin1, false);
}

std::vector<UniChar> Units(CFStringRef inText)
{
    std::vector<UniChar> units(size_t(CFStringGetLength(inText)));
    CFStringGetCharacters(inText, CFRangeMake(0, CFIndex(units.size())), units.data());
    return units;
}

UniChar Upper(UniChar inUnit) { return inUnit >= 'a' && inUnit <= 'z' ? UniChar(inUnit - 'a' + 'A') : inUnit; }

// Equal but for the case of ASCII letters, the only case UUID text has.
bool SameText(CFStringRef inFirst, CFStringRef inSecond)
{
    std::vector<UniChar> first = Units(inFirst), second = Units(inSecond);
    if (first.size() != second.size())
        return false;
    for (size_t i = 0; i < first.size(); ++i)
        if (Upper(first[i]) != Upper(second[i]))
            return false;
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* inData, size_t inSize)
{
    CFStringRef text = MakeText(inData, inSize);
    if (text == nullptr)
        return 0;
    if (CFUUIDRef uuid = CFUUIDCreateFromString(nullptr, text)) {
        CFStringRef printed = CFUUIDCreateString(nullptr, uuid);
        if (!SameText(printed, text))
            std::abort();
        CFRelease(printed);
        CFRelease(uuid);
    }
    CFRelease(text);
    return 0;
}
