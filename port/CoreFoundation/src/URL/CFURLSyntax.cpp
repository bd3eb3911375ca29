// Splitting, composing and resolving URLs by the generic syntax.
#include "CFURLSyntax.h"

#include <utility>

namespace cf::url {

namespace {

bool InSet(char32_t inCharacter, std::string_view inSet)
{
    return inCharacter < 0x80 && inSet.find(char(inCharacter)) != std::string_view::npos;
}

bool IsAlpha(char32_t inCharacter) { return (inCharacter | 0x20) >= 'a' && (inCharacter | 0x20) <= 'z'; }

bool IsDigit(char32_t inCharacter) { return inCharacter >= '0' && inCharacter <= '9'; }

int HexValue(char16_t inUnit)
{
    if (IsDigit(inUnit))
        return inUnit - '0';
    if ((inUnit | 0x20) >= 'a' && (inUnit | 0x20) <= 'f')
        return (inUnit | 0x20) - 'a' + 10;
    return -1;
}

bool IsScheme(Text inText)
{
    if (inText.empty() || !IsAlpha(inText[0]))
        return false;
    for (char16_t unit : inText)
        if (!IsAlpha(unit) && !IsDigit(unit) && !InSet(unit, "+-."))
            return false;
    return true;
}

// Cuts inText at the first of inDelimiters: the head is returned, the rest stays in ioText.
Text TakeUntil(Text& ioText, Text inDelimiters)
{
    std::size_t end = ioText.find_first_of(inDelimiters);
    if (end == Text::npos)
        end = ioText.size();
    Text head = ioText.substr(0, end);
    ioText.remove_prefix(end);
    return head;
}

// A piece introduced by inDelimiter at the start of ioText, up to the next of inEnd.
Piece TakeIntroduced(Text& ioText, char16_t inDelimiter, Text inEnd)
{
    if (ioText.empty() || ioText.front() != inDelimiter)
        return std::nullopt;
    ioText.remove_prefix(1);
    return TakeUntil(ioText, inEnd);
}

void DropLastSegment(std::u16string& ioPath)
{
    std::size_t slash = ioPath.rfind(u'/');
    ioPath.erase(slash == std::u16string::npos ? 0 : slash);
}

std::u16string Merge(const Parts& inBase, Text inRefPath)
{
    if (inBase.authority && inBase.path.empty())
        return u"/" + std::u16string(inRefPath);
    std::size_t slash = inBase.path.rfind(u'/');
    std::u16string merged(slash == Text::npos ? Text() : inBase.path.substr(0, slash + 1));
    return merged.append(inRefPath);
}

}  // namespace

bool IsUnreserved(char32_t inCharacter)
{
    return IsAlpha(inCharacter) || IsDigit(inCharacter) || InSet(inCharacter, "-._~");
}

bool IsLegal(char32_t inCharacter) { return IsUnreserved(inCharacter) || InSet(inCharacter, ":/?#[]@!$&'()*+,;="); }

bool IsPathCharacter(char32_t inCharacter) { return IsUnreserved(inCharacter) || InSet(inCharacter, "!$&'()*+,=:@/"); }

int EscapedByte(Text inText, std::size_t inAt)
{
    if (inAt + 2 >= inText.size() || inText[inAt] != u'%')
        return -1;
    int high = HexValue(inText[inAt + 1]);
    int low = HexValue(inText[inAt + 2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

bool IsValidURLText(Text inText)
{
    bool seenFragment = false;
    for (std::size_t at = 0; at < inText.size(); ++at) {
        char16_t unit = inText[at];
        if (unit == u'%') {
            if (EscapedByte(inText, at) < 0)
                return false;
            at += 2;
        } else if (unit == u'#') {
            if (std::exchange(seenFragment, true))
                return false;
        } else if (!IsLegal(unit)) {
            return false;
        }
    }
    return true;
}

Parts Split(Text inText)
{
    Parts parts;
    std::size_t colon = inText.find_first_of(u":/?#");
    if (colon != Text::npos && inText[colon] == u':' && IsScheme(inText.substr(0, colon))) {
        parts.scheme = inText.substr(0, colon);
        inText.remove_prefix(colon + 1);
    }
    if (inText.starts_with(u"//")) {
        inText.remove_prefix(2);
        parts.authority = TakeUntil(inText, u"/?#");
    }
    parts.path = TakeUntil(inText, u"?#");
    parts.query = TakeIntroduced(inText, u'?', u"#");
    parts.fragment = TakeIntroduced(inText, u'#', u"");
    return parts;
}

Authority SplitAuthority(Text inAuthority)
{
    Authority authority;
    std::size_t at = inAuthority.rfind(u'@');
    if (at != Text::npos) {
        Text userInfo = inAuthority.substr(0, at);
        std::size_t colon = userInfo.find(u':');
        authority.user = userInfo.substr(0, colon);
        if (colon != Text::npos)
            authority.password = userInfo.substr(colon + 1);
        inAuthority.remove_prefix(at + 1);
    }
    std::size_t close = inAuthority.starts_with(u'[') ? inAuthority.find(u']') : Text::npos;
    std::size_t colon = inAuthority.find(u':', close == Text::npos ? 0 : close);
    if (colon != Text::npos)
        authority.port = inAuthority.substr(colon + 1);
    authority.host = inAuthority.substr(0, colon);
    if (close != Text::npos && close < colon)
        authority.host = inAuthority.substr(1, close - 1);
    return authority;
}

Text PathWithoutParameters(Text inPath) { return inPath.substr(0, inPath.find(u';')); }

Piece Parameters(Text inPath)
{
    std::size_t semicolon = inPath.find(u';');
    if (semicolon == Text::npos)
        return std::nullopt;
    return inPath.substr(semicolon + 1);
}

Text LastSegment(Text inPath)
{
    if (inPath == u"/")
        return inPath;
    if (inPath.ends_with(u'/'))
        inPath.remove_suffix(1);
    std::size_t slash = inPath.rfind(u'/');
    return slash == Text::npos ? inPath : inPath.substr(slash + 1);
}

std::size_t ExtensionPeriod(Text inSegment)
{
    std::size_t period = inSegment.rfind(u'.');
    return period == 0 || inSegment == u".." ? Text::npos : period;
}

std::u16string Compose(const Parts& inParts)
{
    std::u16string text;
    if (inParts.scheme)
        text.append(*inParts.scheme).push_back(u':');
    if (inParts.authority)
        text.append(u"//").append(*inParts.authority);
    else if (inParts.path.starts_with(u"//"))
        text.append(u"/.");  // "//" would be read back as the start of a net location
    text.append(inParts.path);
    if (inParts.query)
        text.append(u"?").append(*inParts.query);
    if (inParts.fragment)
        text.append(u"#").append(*inParts.fragment);
    return text;
}

// Each step takes a dot segment off the front of the input, or moves one segment to the
// output; ".." also takes the last segment off the output.
std::u16string RemoveDotSegments(Text inPath)
{
    std::u16string output;
    while (!inPath.empty()) {
        if (inPath.starts_with(u"../")) {
            inPath.remove_prefix(3);
        } else if (inPath.starts_with(u"./") || inPath.starts_with(u"/./")) {
            inPath.remove_prefix(2);
        } else if (inPath == u"/.") {
            inPath = u"/";
        } else if (inPath.starts_with(u"/../") || inPath == u"/..") {
            inPath = inPath.size() == 3 ? Text(u"/") : inPath.substr(3);
            DropLastSegment(output);
        } else if (inPath == u"." || inPath == u"..") {
            inPath = {};
        } else {
            std::size_t end = inPath.find(u'/', 1);
            if (end == Text::npos)
                end = inPath.size();
            output.append(inPath.substr(0, end));
            inPath.remove_prefix(end);
        }
    }
    return output;
}

std::u16string Resolve(const Parts& inBase, const Parts& inRef)
{
    Parts target = inRef;
    std::u16string path;
    if (inRef.scheme || inRef.authority) {
        path = RemoveDotSegments(inRef.path);
    } else if (inRef.path.empty()) {
        path = inBase.path;
        if (!inRef.query)
            target.query = inBase.query;
    } else {
        path = RemoveDotSegments(inRef.path.front() == u'/' ? std::u16string(inRef.path) : Merge(inBase, inRef.path));
    }
    if (!inRef.scheme) {
        target.scheme = inBase.scheme;
        if (!inRef.authority)
            target.authority = inBase.authority;
    }
    target.path = path;
    return Compose(target);
}

}  // namespace cf::url
