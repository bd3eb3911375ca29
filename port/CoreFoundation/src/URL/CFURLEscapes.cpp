// Adding and replacing percent escapes.
#include "CFURLEscapes.h"

#include "String/CFStringObject.h"
#include "String/StringEncoding.h"

#include <algorithm>
#include <span>

namespace cf::url {

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

void AppendEscaped(std::u16string& ioText, UInt8 inByte)
{
    ioText.push_back(u'%');
    ioText.push_back(char16_t(kHexDigits[inByte >> 4]));
    ioText.push_back(char16_t(kHexDigits[inByte & 0xF]));
}

bool ShouldEscape(Text inCharacter, const EscapeRule& inRule)
{
    if (!inRule.neverEscape.empty() && inRule.neverEscape.find(inCharacter) != Text::npos)
        return false;
    if (inCharacter.size() > 1 || !inRule.keepsAsIs(inCharacter[0]))
        return true;
    return inRule.escapeAnyway.find(inCharacter[0]) != Text::npos;
}

// The number of bytes a UTF-8 sequence announces in its first byte, 0 for a byte that
// cannot start one.
std::size_t UTF8SequenceLength(UInt8 inLead)
{
    return inLead < 0x80 ? 1 : inLead < 0xC2 ? 0 : inLead < 0xE0 ? 2 : inLead < 0xF0 ? 3 : inLead < 0xF5 ? 4 : 0;
}

// Decodes the first character of inBytes into outCharacter and answers how many bytes it
// took, 0 when no prefix is a character of the encoding. For encodings other than UTF-8 the
// shortest prefix that decodes wins, which is right for every byte encoding we support.
std::size_t DecodeOne(std::string_view inBytes, CFStringEncoding inEncoding, std::u16string& outCharacter)
{
    std::size_t shortest = 1;
    std::size_t longest = std::min<std::size_t>(4, inBytes.size());
    if (inEncoding == kCFStringEncodingUTF8)
        shortest = longest = UTF8SequenceLength(UInt8(inBytes[0]));
    for (std::size_t length = shortest; length != 0 && length <= longest; ++length) {
        std::span<const UInt8> bytes(reinterpret_cast<const UInt8*>(inBytes.data()), length);
        if (cf::Decode(bytes, inEncoding, false, outCharacter) && !outCharacter.empty())
            return length;
    }
    return 0;
}

// Appends the characters spelled by one run of escapes (inEscapes, whose bytes are inBytes).
bool AppendDecoded(std::string_view inBytes, Text inEscapes, Text inKeepEscaped, CFStringEncoding inEncoding,
                   std::u16string& ioText)
{
    std::u16string character;
    for (std::size_t at = 0; at < inBytes.size();) {
        std::size_t length = DecodeOne(inBytes.substr(at), inEncoding, character);
        if (length == 0)
            return false;
        if (!inKeepEscaped.empty() && inKeepEscaped.find(character) != Text::npos)
            ioText.append(inEscapes.substr(at * 3, length * 3));
        else
            ioText.append(character);
        at += length;
    }
    return true;
}

}  // namespace

std::optional<std::u16string> Escape(Text inText, const EscapeRule& inRule, CFStringEncoding inEncoding)
{
    std::u16string escaped;
    escaped.reserve(inText.size());
    std::string bytes;
    for (std::size_t at = 0; at < inText.size();) {
        Text character = inText.substr(at, CharacterLength(inText, at));
        at += character.size();
        if (!ShouldEscape(character, inRule)) {
            escaped.append(character);
            continue;
        }
        if (!cf::Encode(character, inEncoding, 0, false, bytes) || bytes.empty())
            return std::nullopt;
        for (char byte : bytes)
            AppendEscaped(escaped, UInt8(byte));
    }
    return escaped;
}

std::u16string EscapeBytes(std::string_view inBytes, bool (*inKeepsAsIs)(char32_t))
{
    std::u16string escaped;
    escaped.reserve(inBytes.size());
    for (char byte : inBytes) {
        if (UInt8(byte) < 0x80 && inKeepsAsIs(UInt8(byte)))
            escaped.push_back(char16_t(byte));
        else
            AppendEscaped(escaped, UInt8(byte));
    }
    return escaped;
}

void EscapeColonsOfFirstSegment(std::u16string& ioPath)
{
    std::size_t firstSlash = std::min(ioPath.find(u'/'), ioPath.size());
    for (std::size_t colon; (colon = ioPath.find(u':')) < firstSlash; firstSlash += 2)
        ioPath.replace(colon, 1, u"%3A");
}

std::optional<std::u16string> Unescape(Text inText, Text inKeepEscaped, CFStringEncoding inEncoding)
{
    std::u16string text;
    text.reserve(inText.size());
    std::string bytes;
    for (std::size_t at = 0; at < inText.size();) {
        if (inText[at] != u'%') {
            text.push_back(inText[at++]);
            continue;
        }
        std::size_t start = at;
        bytes.clear();
        for (; at < inText.size() && inText[at] == u'%'; at += 3) {
            int byte = EscapedByte(inText, at);
            if (byte < 0)
                return std::nullopt;
            bytes.push_back(char(byte));
        }
        if (!AppendDecoded(bytes, inText.substr(start, at - start), inKeepEscaped, inEncoding, text))
            return std::nullopt;
    }
    return text;
}

std::optional<std::string> UnescapeToBytes(Text inText)
{
    std::string bytes;
    std::string run;
    for (std::size_t at = 0; at < inText.size();) {
        if (inText[at] == u'%') {
            int byte = EscapedByte(inText, at);
            if (byte < 0)
                return std::nullopt;
            bytes.push_back(char(byte));
            at += 3;
            continue;
        }
        std::size_t end = std::min(inText.find(u'%', at), inText.size());
        cf::Encode(inText.substr(at, end - at), kCFStringEncodingUTF8, '?', false, run);
        bytes += run;
        at = end;
    }
    return bytes;
}

}  // namespace cf::url

namespace {

// What the escaping call leaves as it is: the characters a URL may hold anywhere without
// changing its meaning. '#' would start a fragment and '[' ']' are unsafe, so they are
// escaped with the space, '"', '%', '<', '>' and the other unsafe characters.
bool KeepsUnescaped(char32_t inCharacter)
{
    constexpr std::string_view kDelimiters = "!*'();:@&=+$,/?";
    return cf::url::IsUnreserved(inCharacter) ||
           (inCharacter < 0x80 && kDelimiters.find(char(inCharacter)) != kDelimiters.npos);
}

std::u16string_view TextOf(CFStringRef inString, const char* inCall)
{
    return inString ? std::u16string_view(cf::String(inString, inCall).mText) : std::u16string_view();
}

}  // namespace

CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef inAllocator, CFStringRef inOriginalString,
                                                    CFStringRef inCharactersToLeaveUnescaped,
                                                    CFStringRef inLegalURLCharactersToBeEscaped,
                                                    CFStringEncoding inEncoding)
{
    constexpr const char* kCall = "CFURLCreateStringByAddingPercentEscapes";
    cf::url::EscapeRule rule{KeepsUnescaped, TextOf(inLegalURLCharactersToBeEscaped, kCall),
                             TextOf(inCharactersToLeaveUnescaped, kCall)};
    auto escaped = cf::url::Escape(cf::String(inOriginalString, kCall).mText, rule, inEncoding);
    return escaped ? cf::CreateString(inAllocator, std::move(*escaped)) : nullptr;
}

CFStringRef CFURLCreateStringByReplacingPercentEscapesUsingEncoding(CFAllocatorRef inAllocator,
                                                                    CFStringRef inOriginalString,
                                                                    CFStringRef inCharactersToLeaveEscaped,
                                                                    CFStringEncoding inEncoding)
{
    constexpr const char* kCall = "CFURLCreateStringByReplacingPercentEscapes";
    const __CFString& original = cf::String(inOriginalString, kCall);
    if (inCharactersToLeaveEscaped == nullptr)
        return CFStringCreateCopy(inAllocator, inOriginalString);
    auto text = cf::url::Unescape(original.mText, TextOf(inCharactersToLeaveEscaped, kCall), inEncoding);
    return text ? cf::CreateString(inAllocator, std::move(*text)) : nullptr;
}

CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef inAllocator, CFStringRef inOriginalString,
                                                       CFStringRef inCharactersToLeaveEscaped)
{
    return CFURLCreateStringByReplacingPercentEscapesUsingEncoding(inAllocator, inOriginalString,
                                                                   inCharactersToLeaveEscaped, kCFStringEncodingUTF8);
}
