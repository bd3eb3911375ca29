// Name conversions. Linux stores names as bytes: UTF-8 by convention, not by rule, so a name
// read from disk may be anything but '/' and NUL, and every such name must convert to Unicode
// and back to the very same bytes.
#include "FSNames.h"

#include <Carbon/MacErrors.h>
#include <CoreFoundation/CFString.h>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <limits.h>

namespace carbon {

namespace {

constexpr char16_t kEscapeBase = 0xDC00;  // + the byte, for 0x80-0xFF
constexpr std::size_t kLongestName = 255;

bool IsEscape(char16_t inUnit) { return inUnit >= kEscapeBase + 0x80 && inUnit <= kEscapeBase + 0xFF; }

void AppendUTF8(char32_t inCode, std::string& ioBytes)
{
    char bytes[U8_MAX_LENGTH];
    int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, inCode);
    ioBytes.append(bytes, std::size_t(length));
}

// The code point of a well-formed UTF-8 sequence at the start of inBytes and its length, or
// length 0 when the sequence is malformed, overlong, a surrogate or out of range.
std::pair<char32_t, std::size_t> DecodeOne(std::string_view inBytes)
{
    auto byte = [&](std::size_t inAt) { return inAt < inBytes.size() ? UInt8(inBytes[inAt]) : 0; };
    UInt8 lead = byte(0);
    std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 0;
    if (length == 0 || length > inBytes.size() || lead > 0xF4)
        return {0, 0};
    char32_t code = length == 1 ? lead : lead & (0x7F >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0) != 0x80)
            return {0, 0};
        code = (code << 6) | (byte(at) & 0x3F);
    }
    static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kSmallest[length] || code > 0x10FFFF || U_IS_SURROGATE(code))
        return {0, 0};
    return {code, length};
}

OSErr CheckedDiskName(std::span<const UniChar> inName, std::string& outDiskName)
{
    if (inName.empty())
        return errFSMissingName;
    if (inName.size() > kLongestName)
        return errFSNameTooLong;
    std::u16string_view text(reinterpret_cast<const char16_t*>(inName.data()), inName.size());
    if (!EncodeUTF8(text, outDiskName))
        return bdNamErr;
    // NAME_MAX counts bytes: a name of 255 units can need up to three times that, and such a
    // name has no place on disk. Cutting it would name a different item.
    if (outDiskName.size() > NAME_MAX || outDiskName.find_first_of(std::string_view("/\0", 2)) != std::string::npos ||
        outDiskName == "." || outDiskName == "..")
        return bdNamErr;
    return noErr;
}

}  // namespace

bool IsReservedName(std::string_view inDiskName) { return inDiskName.starts_with(kCompanionPrefix); }

bool EncodeUTF8(std::u16string_view inText, std::string& outBytes)
{
    outBytes.clear();
    for (std::size_t at = 0; at < inText.size(); ++at) {
        char16_t unit = inText[at];
        if (U16_IS_LEAD(unit) && at + 1 < inText.size() && U16_IS_TRAIL(inText[at + 1])) {
            AppendUTF8(char32_t(U16_GET_SUPPLEMENTARY(unit, inText[at + 1])), outBytes);
            ++at;
        } else if (IsEscape(unit)) {
            outBytes += char(unit - kEscapeBase);
        } else if (U16_IS_SURROGATE(unit)) {
            return false;
        } else {
            AppendUTF8(unit, outBytes);
        }
    }
    return true;
}

OSErr DiskNameForNewItem(std::span<const UniChar> inName, std::string& outDiskName)
{
    OSErr status = CheckedDiskName(inName, outDiskName);
    return status == noErr && IsReservedName(outDiskName) ? OSErr(bdNamErr) : status;
}

OSErr DiskNameForLookup(std::span<const UniChar> inName, std::string& outDiskName)
{
    OSErr status = CheckedDiskName(inName, outDiskName);
    if (status == bdNamErr || (status == noErr && IsReservedName(outDiskName)))
        return fnfErr;
    return status;
}

std::u16string UnicodeName(std::string_view inDiskName)
{
    std::u16string name;
    while (!inDiskName.empty()) {
        auto [code, length] = DecodeOne(inDiskName);
        if (length == 0) {
            name += char16_t(kEscapeBase + UInt8(inDiskName[0]));
            length = 1;
        } else if (code >= 0x10000) {
            name += char16_t(0xD800 + ((code - 0x10000) >> 10));
            name += char16_t(0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            name += char16_t(code);
        }
        inDiskName.remove_prefix(length);
    }
    return name;
}

void SetHFSName(std::u16string_view inName, HFSUniStr255& outName)
{
    std::size_t length = std::min(inName.size(), kLongestName);
    outName.length = UInt16(length);
    inName.copy(reinterpret_cast<char16_t*>(outName.unicode), length);
}

bool PascalName(std::u16string_view inName, StringPtr outName, std::size_t inCapacity)
{
    CFStringRef text = CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(inName.data()),
                                                    CFIndex(inName.size()));
    if (text == nullptr)
        return false;
    bool fits = CFStringGetPascalString(text, outName, CFIndex(inCapacity), CFStringGetSystemEncoding());
    CFRelease(text);
    return fits;
}

bool UnicodeOfPascalName(ConstStringPtr inName, std::u16string& outName)
{
    CFStringRef text = CFStringCreateWithPascalString(nullptr, inName, CFStringGetSystemEncoding());
    if (text == nullptr)
        return false;
    outName.resize(std::size_t(CFStringGetLength(text)));
    CFStringGetCharacters(text, CFRangeMake(0, CFIndex(outName.size())), reinterpret_cast<UniChar*>(outName.data()));
    CFRelease(text);
    return true;
}

}  // namespace carbon
