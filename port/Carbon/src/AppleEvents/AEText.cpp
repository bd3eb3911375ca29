// Text coercion through UTF-16. UTF-8 is converted here, strictly; other system encodings
// go through the string object's converters.
#include "AEText.h"

#include <Carbon/AEDataModel.h>
#include <CoreFoundation/CFString.h>
#include <PortSupport/Owned.h>
#include <PortSupport/UnicodeUnits.h>

#include <unicode/utf16.h>

#include <cstring>
#include <memory>

namespace carbon::ae {

namespace {

constexpr char16_t kByteOrderMark = 0xFEFF;
constexpr char16_t kSwappedByteOrderMark = 0xFFFE;

std::optional<std::u16string> DecodeUTF8(std::span<const UInt8> inBytes)
{
    std::u16string text;
    text.reserve(inBytes.size());
    std::string_view bytes(reinterpret_cast<const char*>(inBytes.data()), inBytes.size());
    while (!bytes.empty()) {
        port::UTF8Step step = port::NextUTF8(bytes);
        if (step.length == 0)
            return std::nullopt;
        port::AppendUTF16(text, step.scalar);
        bytes.remove_prefix(step.length);
    }
    return text;
}

// A lone surrogate has no UTF-8 form.
std::optional<std::vector<UInt8>> EncodeUTF8(const std::u16string& inText)
{
    std::vector<UInt8> bytes;
    bytes.reserve(inText.size());
    for (std::size_t i = 0; i < inText.size(); ++i) {
        UInt32 unit = inText[i];
        if (U16_IS_LEAD(unit) && i + 1 < inText.size() && U16_IS_TRAIL(inText[i + 1])) {
            unit = U16_GET_SUPPLEMENTARY(unit, inText[i + 1]);
            ++i;
        } else if (U16_IS_SURROGATE(unit)) {
            return std::nullopt;
        }
        port::AppendUTF8(bytes, unit);
    }
    return bytes;
}

// UTF-16 as stored: a leading byte-order mark is dropped, and a swapped one means the rest
// is in the other byte order.
std::optional<std::u16string> DecodeUTF16(std::span<const UInt8> inBytes)
{
    if (inBytes.size() % 2 != 0)
        return std::nullopt;
    std::u16string text(inBytes.size() / 2, u'\0');
    std::memcpy(text.data(), inBytes.data(), inBytes.size());
    if (!text.empty() && text[0] == kByteOrderMark) {
        text.erase(0, 1);
    } else if (!text.empty() && text[0] == kSwappedByteOrderMark) {
        text.erase(0, 1);
        for (char16_t& unit : text)
            unit = char16_t(unit << 8 | unit >> 8);
    }
    return text;
}

std::optional<std::u16string> DecodeSystem(std::span<const UInt8> inBytes, CFStringEncoding inEncoding)
{
    port::Owned<CFStringRef> string(
        CFStringCreateWithBytes(nullptr, inBytes.data(), CFIndex(inBytes.size()), inEncoding, false));
    if (!string)
        return std::nullopt;
    std::u16string text(std::size_t(CFStringGetLength(string.Get())), u'\0');
    CFStringGetCharacters(string.Get(), CFRangeMake(0, CFIndex(text.size())), reinterpret_cast<UniChar*>(text.data()));
    return text;
}

// Through a C string, so text holding U+0000 has no form here.
std::optional<std::vector<UInt8>> EncodeSystem(const std::u16string& inText, CFStringEncoding inEncoding)
{
    if (inText.find(u'\0') != std::u16string::npos)
        return std::nullopt;
    port::Owned<CFStringRef> string(
        CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(inText.data()), CFIndex(inText.size())));
    if (!string)
        return std::nullopt;
    std::vector<char> buffer(std::size_t(CFStringGetMaximumSizeForEncoding(CFIndex(inText.size()), inEncoding)) + 1);
    if (!CFStringGetCString(string.Get(), buffer.data(), CFIndex(buffer.size()), inEncoding))
        return std::nullopt;
    return std::vector<UInt8>(buffer.data(), buffer.data() + std::strlen(buffer.data()));
}

bool SystemIsUTF8() { return CFStringGetSystemEncoding() == kCFStringEncodingUTF8; }

}  // namespace

bool IsTextType(DescType inType) { return inType == typeChar || inType == typeUTF8Text || inType == typeUnicodeText; }

std::optional<std::u16string> DecodeText(DescType inType, std::span<const UInt8> inBytes)
{
    if (inType == typeUnicodeText)
        return DecodeUTF16(inBytes);
    if (inType == typeUTF8Text || SystemIsUTF8())
        return DecodeUTF8(inBytes);
    return DecodeSystem(inBytes, CFStringGetSystemEncoding());
}

std::optional<std::vector<UInt8>> EncodeText(DescType inType, const std::u16string& inText)
{
    if (inType == typeUnicodeText) {
        auto bytes = reinterpret_cast<const UInt8*>(inText.data());
        return std::vector<UInt8>(bytes, bytes + inText.size() * sizeof(char16_t));
    }
    if (inType == typeUTF8Text || SystemIsUTF8())
        return EncodeUTF8(inText);
    return EncodeSystem(inText, CFStringGetSystemEncoding());
}

}  // namespace carbon::ae
