// A recursive-descent reader of the text form. It never reads past the end of its input and
// stops at a fixed nesting depth, so any bytes at all give either a value or a reason.
#include "CFPropertyListSupport.h"
#include "CFPropertyListText.h"
#include "String/StringEncoding.h"

#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace cf::plist {

namespace {

bool IsSpace(char16_t inUnit)
{
    switch (inUnit) {
    case u' ':
    case u'\t':
    case u'\n':
    case u'\r':
    case u'\f':
    case u'\v':
    case u'\u2028':
    case u'\u2029':
    case u'\uFEFF':
        return true;
    default:
        return false;
    }
}

// The characters a string may have without quotes.
bool IsUnquoted(char16_t inUnit)
{
    return (inUnit >= u'a' && inUnit <= u'z') || (inUnit >= u'A' && inUnit <= u'Z') ||
           (inUnit >= u'0' && inUnit <= u'9') ||
           std::u16string_view(u"_$+/:.-").find(inUnit) != std::u16string_view::npos;
}

int HexValue(char16_t inUnit)
{
    if (inUnit >= u'0' && inUnit <= u'9')
        return inUnit - u'0';
    if (inUnit >= u'a' && inUnit <= u'f')
        return inUnit - u'a' + 10;
    if (inUnit >= u'A' && inUnit <= u'F')
        return inUnit - u'A' + 10;
    return -1;
}

bool DecodeText(std::span<const UInt8> inBytes, std::u16string& outText, std::string& outError)
{
    auto startsWith = [&](std::initializer_list<UInt8> inMark) {
        return inBytes.size() >= inMark.size() && std::equal(inMark.begin(), inMark.end(), inBytes.begin());
    };
    CFStringEncoding encoding = kCFStringEncodingUTF8;
    if (startsWith({0xFE, 0xFF})) {
        encoding = kCFStringEncodingUTF16BE;
        inBytes = inBytes.subspan(2);
    } else if (startsWith({0xFF, 0xFE})) {
        encoding = kCFStringEncodingUTF16LE;
        inBytes = inBytes.subspan(2);
    } else if (startsWith({0xEF, 0xBB, 0xBF})) {
        inBytes = inBytes.subspan(3);
    }
    if (Decode(inBytes, encoding, false, outText))
        return true;
    outError = encoding == kCFStringEncodingUTF8 ? "the text is not valid UTF-8" : "the text is not valid UTF-16";
    return false;
}

class TextParser {
public:
    TextParser(std::u16string_view inText, CFAllocatorRef inAllocator, CFOptionFlags inOptions, std::string& outError)
        : mText(inText), mAllocator(inAllocator), mOptions(inOptions), mError(outError)
    {
    }

    OwnedValue Document()
    {
        if (!SkipSpace())
            return OwnedValue();
        if (AtEnd())
            return Made(MakeDictionary(mAllocator, {}, {}, mOptions));
        OwnedValue value = Value(0);
        if (!value || !SkipSpace())
            return OwnedValue();
        if (AtEnd())
            return value;
        // A string followed by '=' or ';' starts a string table: a dictionary without braces.
        if (KindOf(value.Get()) == Kind::String && (Peek() == u'=' || Peek() == u';')) {
            mPos = 0;
            return Dictionary(0, false);
        }
        return Fail("unexpected " + Describe(Peek()) + " after the value");
    }

private:
    bool AtEnd() const { return mPos >= mText.size(); }
    char16_t Peek(std::size_t inAhead = 0) const
    {
        return mPos + inAhead < mText.size() ? mText[mPos + inAhead] : u'\0';
    }

    int LineAt(std::size_t inPos) const
    {
        auto end = mText.begin() + std::ptrdiff_t(std::min(inPos, mText.size()));
        return 1 + int(std::count(mText.begin(), end, u'\n'));
    }

    static std::string Describe(char16_t inUnit)
    {
        char text[24];
        if (inUnit >= 0x21 && inUnit < 0x7F)
            std::snprintf(text, sizeof text, "character '%c'", char(inUnit));
        else
            std::snprintf(text, sizeof text, "character U+%04X", unsigned(inUnit));
        return text;
    }

    // Keeps the first fault only: what follows it is noise.
    bool Error(const std::string& inWhat, std::size_t inPos)
    {
        if (mError.empty())
            mError = inWhat + " at line " + std::to_string(LineAt(inPos));
        return false;
    }
    bool Error(const std::string& inWhat) { return Error(inWhat, mPos); }
    OwnedValue Fail(const std::string& inWhat, std::size_t inPos)
    {
        Error(inWhat, inPos);
        return OwnedValue();
    }
    OwnedValue Fail(const std::string& inWhat) { return Fail(inWhat, mPos); }

    OwnedValue Made(CFTypeRef inValue)
    {
        if (inValue == nullptr && mError.empty())
            mError = "out of memory";
        return OwnedValue(inValue);
    }

    // Skips white space and comments; false when a comment is not closed.
    bool SkipSpace()
    {
        while (!AtEnd()) {
            if (IsSpace(Peek())) {
                ++mPos;
            } else if (Peek() == u'/' && Peek(1) == u'/') {
                while (!AtEnd() && Peek() != u'\n' && Peek() != u'\r')
                    ++mPos;
            } else if (Peek() == u'/' && Peek(1) == u'*') {
                std::size_t close = mText.find(u"*/", mPos + 2);
                if (close == std::u16string_view::npos)
                    return Error("the comment is not closed");
                mPos = close + 2;
            } else {
                return true;
            }
        }
        return true;
    }

    OwnedValue Value(int inDepth)
    {
        if (inDepth > kMaxDepth)
            return Fail("the property list is nested too deeply");
        if (AtEnd())
            return Fail("a value is missing");
        switch (Peek()) {
        case u'(':
            return Array(inDepth);
        case u'{':
            ++mPos;
            return Dictionary(inDepth, true);
        case u'<':
            return Data();
        default:
            return String(mOptions);
        }
    }

    OwnedValue String(CFOptionFlags inOptions)
    {
        std::u16string text;
        if (!(Peek() == u'"' || Peek() == u'\'' ? Quoted(text) : Unquoted(text)))
            return OwnedValue();
        return Made(MakeString(mAllocator, text, inOptions));
    }

    bool Unquoted(std::u16string& outText)
    {
        std::size_t start = mPos;
        while (!AtEnd() && IsUnquoted(Peek()) && !(Peek() == u'/' && (Peek(1) == u'/' || Peek(1) == u'*')))
            ++mPos;
        if (mPos == start)
            return Error("unexpected " + Describe(Peek()));
        outText.assign(mText.substr(start, mPos - start));
        return true;
    }

    bool Quoted(std::u16string& outText)
    {
        std::size_t start = mPos;
        char16_t quote = mText[mPos++];
        while (!AtEnd() && Peek() != quote) {
            char16_t unit = mText[mPos++];
            if (unit != u'\\') {
                outText.push_back(unit);
            } else if (!AtEnd()) {
                outText.push_back(Escape());
            }
        }
        if (AtEnd())
            return Error("the quoted string is not closed", start);
        ++mPos;
        return true;
    }

    // The character after a backslash, and any digits that belong to it.
    char16_t Escape()
    {
        char16_t unit = mText[mPos++];
        switch (unit) {
        case u'a':
            return u'\a';
        case u'b':
            return u'\b';
        case u'f':
            return u'\f';
        case u'n':
            return u'\n';
        case u'r':
            return u'\r';
        case u't':
            return u'\t';
        case u'v':
            return u'\v';
        case u'U':
        case u'u': {
            unsigned value = 0;
            for (int digits = 0; digits < 4 && HexValue(Peek()) >= 0; ++digits)
                value = value * 16 + unsigned(HexValue(mText[mPos++]));
            return char16_t(value);
        }
        default:
            break;
        }
        if (unit >= u'0' && unit <= u'7') {
            // Up to three octal digits: one byte, taken as Latin-1.
            unsigned value = unit - u'0';
            for (int digits = 1; digits < 3 && Peek() >= u'0' && Peek() <= u'7'; ++digits)
                value = value * 8 + unsigned(mText[mPos++] - u'0');
            return char16_t(value & 0xFF);
        }
        return unit;  // \" \' \\ and any other character stand for themselves
    }

    OwnedValue Data()
    {
        std::size_t start = mPos++;
        std::vector<UInt8> bytes;
        int high = -1;
        for (;;) {
            if (!SkipSpace())
                return OwnedValue();
            if (AtEnd())
                return Fail("the data value is not closed with '>'", start);
            char16_t unit = mText[mPos];
            if (unit == u'>')
                break;
            int digit = HexValue(unit);
            if (digit < 0)
                return Fail("unexpected " + Describe(unit) + " in a data value");
            ++mPos;
            if (high < 0) {
                high = digit;
            } else {
                bytes.push_back(UInt8(high * 16 + digit));
                high = -1;
            }
        }
        if (high >= 0)
            return Fail("the data value has an odd number of hexadecimal digits");
        ++mPos;
        return Made(MakeData(mAllocator, bytes, mOptions));
    }

    OwnedValue Array(int inDepth)
    {
        std::size_t start = mPos++;
        std::vector<OwnedValue> elements;
        for (;;) {
            if (!SkipSpace())
                return OwnedValue();
            if (AtEnd())
                return Fail("the array is not closed with ')'", start);
            if (Peek() == u')')
                break;
            elements.push_back(Value(inDepth + 1));
            if (!elements.back() || !SkipSpace())
                return OwnedValue();
            if (Peek() == u',')
                ++mPos;
            else if (Peek() != u')')
                return AtEnd() ? Fail("the array is not closed with ')'", start)
                               : Fail("expected ',' or ')' in the array, found " + Describe(Peek()));
        }
        ++mPos;
        return Made(MakeArray(mAllocator, elements, mOptions));
    }

    // Entries up to the closing brace, or up to the end of the text for a bare table.
    OwnedValue Dictionary(int inDepth, bool inBraced)
    {
        std::size_t start = mPos;
        std::vector<OwnedValue> keys, values;
        for (;;) {
            if (!SkipSpace())
                return OwnedValue();
            if (AtEnd()) {
                if (inBraced)
                    return Fail("the dictionary is not closed with '}'", start);
                break;
            }
            if (inBraced && Peek() == u'}') {
                ++mPos;
                break;
            }
            if (!Entry(inDepth, keys, values))
                return OwnedValue();
        }
        return Made(MakeDictionary(mAllocator, keys, values, mOptions));
    }

    // key = value; or, as string tables allow, key; meaning key = key;
    bool Entry(int inDepth, std::vector<OwnedValue>& ioKeys, std::vector<OwnedValue>& ioValues)
    {
        if (Peek() == u'(' || Peek() == u'{' || Peek() == u'<')
            return Error("a dictionary key must be a string, found " + Describe(Peek()));
        ioKeys.push_back(String(kCFPropertyListImmutable));
        if (!ioKeys.back() || !SkipSpace())
            return false;
        if (Peek() == u';') {
            ++mPos;
            ioValues.push_back(Made(MakeString(mAllocator, Units(CFStringRef(ioKeys.back().Get())), mOptions)));
            return bool(ioValues.back());
        }
        if (Peek() != u'=')
            return Error(AtEnd() ? "expected '=' after the key, found the end of the text"
                                 : "expected '=' after the key, found " + Describe(Peek()));
        ++mPos;
        if (!SkipSpace())
            return false;
        ioValues.push_back(Value(inDepth + 1));
        if (!ioValues.back() || !SkipSpace())
            return false;
        if (Peek() == u';') {
            ++mPos;
            return true;
        }
        // The last entry may go without its semicolon.
        if (AtEnd() || Peek() == u'}')
            return true;
        return Error("expected ';' after the value, found " + Describe(Peek()));
    }

    std::u16string_view mText;
    std::size_t mPos = 0;
    CFAllocatorRef mAllocator;
    CFOptionFlags mOptions;
    std::string& mError;
};

}  // namespace

CFPropertyListRef ParseText(CFAllocatorRef inAllocator, std::span<const UInt8> inBytes, CFOptionFlags inOptions,
                            std::string& outError)
{
    std::u16string text;
    if (!DecodeText(inBytes, text, outError))
        return nullptr;
    return TextParser(text, inAllocator, inOptions, outError).Document().Take();
}

}  // namespace cf::plist
