// Changing mutable strings: inserting, deleting, replacing, padding, trimming, and replacing
// every occurrence of a string.
#include "CFStringObject.h"
#include "CFStringFind.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>

namespace {

// The text of inOther, copied when it is the string being changed, so that a change never
// reads text it is overwriting.
std::u16string_view Source(const __CFString& inTarget, CFStringRef inOther, std::u16string& ioCopy, const char* inCall)
{
    const __CFString& other = cf::String(inOther, inCall);
    if (&other != &inTarget)
        return other.View();
    ioCopy = other.mText;
    return ioCopy;
}

void ReplaceRange(CFMutableStringRef inString, CFRange inRange, CFStringRef inReplacement, const char* inCall)
{
    __CFString& string = cf::MutableString(inString, inCall);
    cf::CheckRange(string, inRange, inCall);
    std::u16string copy;
    std::u16string_view replacement = Source(string, inReplacement, copy, inCall);
    string.mText.replace(std::size_t(inRange.location), std::size_t(inRange.length), replacement);
    string.Changed();
}

bool IsWhitespace(std::u16string_view inText, std::size_t inAt, bool inForward, std::size_t& outUnits)
{
    UChar32 c;
    int32_t at = int32_t(inAt);
    if (inForward)
        U16_NEXT(inText.data(), at, int32_t(inText.size()), c);
    else
        U16_PREV(inText.data(), 0, at, c);
    outUnits = std::size_t(inForward ? at - int32_t(inAt) : int32_t(inAt) - at);
    return u_isUWhiteSpace(c);
}

}  // namespace

void CFStringInsert(CFMutableStringRef inString, CFIndex inIndex, CFStringRef inInserted)
{
    constexpr const char* kCall = "CFStringInsert";
    __CFString& string = cf::MutableString(inString, kCall);
    if (inIndex < 0 || std::size_t(inIndex) > string.mText.size())
        cf::Fatal(kCall, "index %ld is outside a string of length %zu", inIndex, string.mText.size());
    ReplaceRange(inString, CFRangeMake(inIndex, 0), inInserted, kCall);
}

void CFStringDelete(CFMutableStringRef inString, CFRange inRange)
{
    __CFString& string = cf::MutableString(inString, "CFStringDelete");
    cf::CheckRange(string, inRange, "CFStringDelete");
    string.mText.erase(std::size_t(inRange.location), std::size_t(inRange.length));
    string.Changed();
}

void CFStringReplace(CFMutableStringRef inString, CFRange inRange, CFStringRef inReplacement)
{
    ReplaceRange(inString, inRange, inReplacement, "CFStringReplace");
}

void CFStringReplaceAll(CFMutableStringRef inString, CFStringRef inReplacement)
{
    __CFString& string = cf::MutableString(inString, "CFStringReplaceAll");
    ReplaceRange(inString, CFRangeMake(0, CFIndex(string.mText.size())), inReplacement, "CFStringReplaceAll");
}

// Truncates to inLength, or grows to it with the pad string repeated, its first copy starting
// at inPadIndex: padding "ab" with "xyz" to 6 from index 1 gives "abyzxy".
void CFStringPad(CFMutableStringRef inString, CFStringRef inPadString, CFIndex inLength, CFIndex inPadIndex)
{
    constexpr const char* kCall = "CFStringPad";
    __CFString& string = cf::MutableString(inString, kCall);
    if (inLength < 0)
        cf::Fatal(kCall, "negative length %ld", inLength);
    std::size_t length = std::size_t(inLength);
    if (length <= string.mText.size()) {
        string.mText.resize(length);
        string.Changed();
        return;
    }
    if (inPadString == nullptr)
        cf::Fatal(kCall, "a NULL pad string cannot lengthen a string");
    std::u16string copy;
    std::u16string_view pad = Source(string, inPadString, copy, kCall);
    if (inPadIndex < 0 || std::size_t(inPadIndex) >= pad.size())
        cf::Fatal(kCall, "pad index %ld is outside a pad string of length %zu", inPadIndex, pad.size());
    std::size_t at = std::size_t(inPadIndex);
    string.mText.reserve(length);
    while (string.mText.size() < length) {
        std::size_t take = std::min(pad.size() - at, length - string.mText.size());
        string.mText.append(pad.substr(at, take));
        at = 0;
    }
    string.Changed();
}

CFIndex CFStringFindAndReplace(CFMutableStringRef inString, CFStringRef inFind, CFStringRef inReplacement,
                               CFRange inRange, CFStringCompareFlags inOptions)
{
    constexpr const char* kCall = "CFStringFindAndReplace";
    __CFString& string = cf::MutableString(inString, kCall);
    std::u16string findCopy, replacementCopy;
    std::u16string_view find = Source(string, inFind, findCopy, kCall);
    std::u16string_view replacement = Source(string, inReplacement, replacementCopy, kCall);
    std::u16string_view text = cf::Substring(string, inRange, kCall);
    std::vector<cf::Match> matches = cf::FindAll(text, find, cf::SearchOptionsFor(inOptions, nullptr, true, kCall));
    // From the last occurrence back, so the ones still to do keep their places.
    std::sort(matches.begin(), matches.end(),
              [](const cf::Match& a, const cf::Match& b) { return a.location > b.location; });
    for (const cf::Match& match : matches)
        string.mText.replace(std::size_t(inRange.location) + match.location, match.length, replacement);
    if (!matches.empty())
        string.Changed();
    return CFIndex(matches.size());
}

void CFStringTrimWhitespace(CFMutableStringRef inString)
{
    __CFString& string = cf::MutableString(inString, "CFStringTrimWhitespace");
    std::u16string_view text = string.View();
    std::size_t begin = 0;
    std::size_t end = text.size();
    std::size_t units = 0;
    while (begin < end && IsWhitespace(text, begin, true, units))
        begin += units;
    while (end > begin && IsWhitespace(text, end, false, units))
        end -= units;
    if (begin == 0 && end == text.size())
        return;
    string.mText = string.mText.substr(begin, end - begin);
    string.Changed();
}
