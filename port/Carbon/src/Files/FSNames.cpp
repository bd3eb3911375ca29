// Name conversions. Linux stores names as bytes: UTF-8 by convention, not by rule, so a name
// read from disk may be anything but '/' and NUL, and every such name must convert to Unicode
// and back to the very same bytes.
#include "FSNames.h"

#include <Carbon/MacErrors.h>
#include <CoreFoundation/CFString.h>
#include <PortSupport/UnicodeUnits.h>

#include <unicode/utf16.h>

#include <limits.h>

namespace carbon {

namespace {

constexpr char16_t kEscapeBase = 0xDC00;  // + the byte, for 0x80-0xFF
constexpr std::size_t kLongestName = 255;

bool IsEscape(char16_t inUnit) { return inUnit >= kEscapeBase + 0x80 && inUnit <= kEscapeBase + 0xFF; }

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
            port::AppendUTF8(outBytes, char32_t(U16_GET_SUPPLEMENTARY(unit, inText[at + 1])));
            ++at;
        } else if (IsEscape(unit)) {
            outBytes += char(unit - kEscapeBase);
        } else if (U16_IS_SURROGATE(unit)) {
            return false;
        } else {
            port::AppendUTF8(outBytes, unit);
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
        auto [scalar, length] = port::NextUTF8(inDiskName);
        if (length == 0) {
            name += char16_t(kEscapeBase + UInt8(inDiskName[0]));
            length = 1;
        } else {
            port::AppendUTF16(name, scalar);
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
