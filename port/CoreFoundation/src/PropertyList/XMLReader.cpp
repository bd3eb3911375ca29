// The fast XML reader: one pass over the text, values made as their elements close.
#include "XMLReader.h"

#include "String/StringEncoding.h"
#include "CalendarDays.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <PortSupport/UnicodeUnits.h>

#include <charconv>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace cf::plist {

namespace {

constexpr std::string_view kUTF8Mark = "\xEF\xBB\xBF";

bool IsSpace(char inCharacter)
{
    return inCharacter == ' ' || inCharacter == '\t' || inCharacter == '\n' || inCharacter == '\r';
}

// A character reference's code, or 0 when it is none this reader takes.
char32_t CharacterReference(std::string_view inBody)
{
    int base = 10;
    if (inBody.starts_with('x')) {
        base = 16;
        inBody.remove_prefix(1);
    }
    uint32_t code = 0;
    auto [end, error] = std::from_chars(inBody.data(), inBody.data() + inBody.size(), code, base);
    bool whole = error == std::errc() && end == inBody.data() + inBody.size() && !inBody.empty();
    bool scalar = code <= 0x10FFFF && !U_IS_SURROGATE(code);
    return whole && scalar ? char32_t(code) : 0;
}

int Base64Digit(char inCharacter)
{
    if (inCharacter >= 'A' && inCharacter <= 'Z')
        return inCharacter - 'A';
    if (inCharacter >= 'a' && inCharacter <= 'z')
        return inCharacter - 'a' + 26;
    if (inCharacter >= '0' && inCharacter <= '9')
        return inCharacter - '0' + 52;
    return inCharacter == '+' ? 62 : inCharacter == '/' ? 63 : -1;
}

// Whole groups of four digits, white space anywhere, padding only at the end.
bool DecodeBase64(std::string_view inText, std::vector<UInt8>& outBytes)
{
    uint32_t group = 0;
    int digits = 0, padding = 0;
    for (std::size_t at = 0; at < inText.size(); ++at) {
        char character = inText[at];
        if (IsSpace(character))
            continue;
        if (character == '=') {
            ++padding;
        } else {
            int digit = Base64Digit(character);
            if (digit < 0 || padding > 0)
                return false;
            group = group << 6 | uint32_t(digit);
        }
        if (++digits < 4)
            continue;
        if (padding > 2)
            return false;
        group <<= 6 * padding;
        outBytes.push_back(UInt8(group >> 16));
        if (padding < 2)
            outBytes.push_back(UInt8(group >> 8));
        if (padding < 1)
            outBytes.push_back(UInt8(group));
        if (padding > 0)
            return inText.find_first_not_of(" \t\r\n", at + 1) == std::string_view::npos;
        group = 0;
        digits = 0;
    }
    return digits == 0;
}

// "YYYY-MM-DDTHH:MM:SSZ" as seconds from 2001, within the 32-bit range the full reader holds
// dates in, so both readers agree on every date they both take.
bool ParseDate(std::string_view inText, CFAbsoluteTime& outTime)
{
    if (inText.size() != 20 || inText[4] != '-' || inText[7] != '-' || inText[10] != 'T' || inText[13] != ':' ||
        inText[16] != ':' || inText[19] != 'Z')
        return false;
    auto field = [&](std::size_t inAt, std::size_t inLength, int& outValue) {
        auto [end, error] = std::from_chars(inText.data() + inAt, inText.data() + inAt + inLength, outValue);
        return error == std::errc() && end == inText.data() + inAt + inLength && outValue >= 0;
    };
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (!field(0, 4, year) || !field(5, 2, month) || !field(8, 2, day) || !field(11, 2, hour) ||
        !field(14, 2, minute) || !field(17, 2, second))
        return false;
    if (month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month) || hour > 23 || minute > 59 || second > 59)
        return false;
    int64_t seconds = DaysFromCivil({year, month, day}) * 86400 + hour * 3600 + minute * 60 + second -
                      kSecondsFrom1970To2001;
    if (seconds <= std::numeric_limits<int32_t>::min() || seconds >= std::numeric_limits<int32_t>::max())
        return false;
    outTime = CFAbsoluteTime(seconds);
    return true;
}

class Reader {
public:
    Reader(CFAllocatorRef inAllocator, std::string_view inText, CFOptionFlags inOptions)
        : mAllocator(inAllocator), mText(inText), mOptions(inOptions)
    {
    }

    OwnedValue Document()
    {
        if (mText.starts_with(kUTF8Mark))
            mText.remove_prefix(kUTF8Mark.size());
        if (mText.starts_with("<?xml ") && !Skip("?>"))
            return {};
        if (!SkipProlog() || !Take("<plist") || mAt >= mText.size() || !(IsSpace(mText[mAt]) || mText[mAt] == '>') ||
            !Skip(">") || mText[mAt - 2] == '/' || !SkipMisc())
            return {};
        OwnedValue root = Value(0);
        if (!root || !SkipMisc() || !Take("</plist>") || !SkipMisc() || mAt != mText.size())
            return {};
        return root;
    }

private:
    std::string_view Rest() const { return mText.substr(mAt); }

    bool Take(std::string_view inExpected)
    {
        if (!Rest().starts_with(inExpected))
            return false;
        mAt += inExpected.size();
        return true;
    }

    // Moves past the next inEnd.
    bool Skip(std::string_view inEnd)
    {
        std::size_t end = mText.find(inEnd, mAt);
        if (end == std::string_view::npos)
            return false;
        mAt = end + inEnd.size();
        return true;
    }

    void SkipSpace()
    {
        while (mAt < mText.size() && IsSpace(mText[mAt]))
            ++mAt;
    }

    // White space and comments, which may stand between any two elements.
    bool SkipMisc()
    {
        for (;;) {
            SkipSpace();
            if (!Rest().starts_with("<!--"))
                return true;
            if (!Skip("-->"))
                return false;
        }
    }

    // A document type without an internal subset, which could define entities.
    bool SkipProlog()
    {
        if (!SkipMisc())
            return false;
        if (!Rest().starts_with("<!DOCTYPE"))
            return true;
        std::size_t end = mText.find('>', mAt);
        if (end == std::string_view::npos || mText.substr(mAt, end - mAt).find('[') != std::string_view::npos)
            return false;
        mAt = end + 1;
        return SkipMisc();
    }

    // The name of an opening tag without attributes, and whether it is empty ("<name/>").
    bool OpeningTag(std::string_view& outName, bool& outEmpty)
    {
        if (!Take("<"))
            return false;
        std::size_t start = mAt;
        while (mAt < mText.size() && mText[mAt] >= 'a' && mText[mAt] <= 'z')
            ++mAt;
        outName = mText.substr(start, mAt - start);
        outEmpty = Take("/>");
        return outEmpty || Take(">");
    }

    bool ClosingTag(std::string_view inName) { return Take("</") && Take(inName) && Take(">"); }

    // The character data up to the element's closing tag, raw: no markup may stand inside.
    bool RawContent(std::string_view inName, std::string_view& outText)
    {
        std::size_t end = mText.find('<', mAt);
        if (end == std::string_view::npos)
            return false;
        outText = mText.substr(mAt, end - mAt);
        mAt = end;
        return ClosingTag(inName);
    }

    // Text with its references resolved into mBytes, as UTF-8.
    bool Content(std::string_view inName)
    {
        std::string_view raw;
        if (!RawContent(inName, raw))
            return false;
        mBytes.clear();
        for (std::size_t at = 0; at < raw.size(); ++at) {
            std::size_t plain = at;
            while (plain < raw.size() && raw[plain] != '&' &&
                   (UInt8(raw[plain]) >= 0x20 || raw[plain] == '\t' || raw[plain] == '\n'))
                ++plain;
            mBytes.append(raw.substr(at, plain - at));
            if ((at = plain) == raw.size())
                break;
            if (raw[at] != '&')
                return false;  // line ends would need normalising, control characters are not XML
            std::size_t end = raw.find(';', at);
            if (end == std::string_view::npos || !Reference(raw.substr(at + 1, end - at - 1)))
                return false;
            at = end;
        }
        return true;
    }

    bool Reference(std::string_view inName)
    {
        static constexpr std::pair<std::string_view, char> kNamed[] = {
            {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
        for (auto [name, character] : kNamed)
            if (inName == name) {
                mBytes += character;
                return true;
            }
        if (!inName.starts_with('#'))
            return false;
        char32_t code = CharacterReference(inName.substr(1));
        if (code == 0)
            return false;
        port::AppendUTF8(mBytes, code);
        return true;
    }

    OwnedValue Text(CFOptionFlags inOptions)
    {
        mUnits.clear();
        if (!Decode({reinterpret_cast<const UInt8*>(mBytes.data()), mBytes.size()}, kCFStringEncodingUTF8, false,
                    mUnits))
            return {};
        return OwnedValue(MakeString(mAllocator, mUnits, inOptions));
    }

    // Keys stay immutable whatever the options say, so the dictionaries of a list, which
    // mostly share their keys, share their key strings too.
    OwnedValue Key()
    {
        if (auto known = mKeys.find(mBytes); known != mKeys.end())
            return OwnedValue(CFRetain(known->second.Get()));
        OwnedValue key = Text(kCFPropertyListImmutable);
        if (key && mKeys.size() < kMostSharedKeys)
            mKeys.emplace(mBytes, OwnedValue(CFRetain(key.Get())));
        return key;
    }

    OwnedValue Value(int inDepth)
    {
        std::string_view name;
        bool empty = false;
        if (inDepth > kMaxDepth || !OpeningTag(name, empty))
            return {};
        if (name == "dict")
            return empty ? Dictionary({}, {}) : DictionaryContent(inDepth);
        if (name == "array")
            return empty ? Array({}) : ArrayContent(inDepth);
        if (name == "string") {
            mBytes.clear();
            return empty || Content(name) ? Text(mOptions) : OwnedValue();
        }
        if (name == "true" || name == "false")
            return empty ? OwnedValue(CFRetain(name == "true" ? kCFBooleanTrue : kCFBooleanFalse)) : OwnedValue();
        if (name == "data") {
            std::string_view raw;
            std::vector<UInt8> bytes;
            if (!empty && (!RawContent(name, raw) || !DecodeBase64(raw, bytes)))
                return {};
            return OwnedValue(MakeData(mAllocator, bytes, mOptions));
        }
        std::string_view raw;
        if (empty || !RawContent(name, raw))
            return {};
        return Scalar(name, raw);
    }

    // Numbers with leading zeros are left to the full reader, which reads long ones its own way.
    static bool LeadingZero(std::string_view inText)
    {
        std::string_view digits = inText.substr(inText.starts_with('-') ? 1 : 0);
        return digits.size() > 1 && digits[0] == '0' && digits[1] >= '0' && digits[1] <= '9';
    }

    OwnedValue Scalar(std::string_view inName, std::string_view inText)
    {
        const char* end = inText.data() + inText.size();
        if (LeadingZero(inText))
            return {};
        if (inName == "integer") {
            int64_t value = 0;
            auto [stop, error] = std::from_chars(inText.data(), end, value);
            if (error != std::errc() || stop != end || inText.empty())
                return {};
            return OwnedValue(CFNumberCreate(mAllocator, kCFNumberSInt64Type, &value));
        }
        if (inName == "real") {
            // Only plain decimal numbers: the readers differ on names such as "nan".
            double value = 0;
            auto [stop, error] = std::from_chars(inText.data(), end, value);
            if (error != std::errc() || stop != end ||
                inText.find_first_not_of("0123456789.eE+-") != std::string_view::npos)
                return {};
            return OwnedValue(CFNumberCreate(mAllocator, kCFNumberFloat64Type, &value));
        }
        CFAbsoluteTime time = 0;
        if (inName == "date" && ParseDate(inText, time))
            return OwnedValue(CFDateCreate(mAllocator, time));
        return {};
    }

    // The values of the containers open at one depth. Kept from one container to the next, so
    // that a list of many small dictionaries does not allocate for each of them.
    struct Level {
        std::vector<OwnedValue> keys, values;

        // Empties the level when the container's value is made (or reading fails).
        struct Clearing {
            Level& level;
            ~Clearing()
            {
                level.keys.clear();
                level.values.clear();
            }
        };
    };

    Level& LevelAt(int inDepth)
    {
        while (mLevels.size() <= std::size_t(inDepth))
            mLevels.push_back(std::make_unique<Level>());
        return *mLevels[std::size_t(inDepth)];
    }

    OwnedValue ArrayContent(int inDepth)
    {
        Level& level = LevelAt(inDepth);
        Level::Clearing clearing{level};
        std::vector<OwnedValue>& elements = level.values;
        for (;;) {
            if (!SkipMisc())
                return {};
            if (ClosingTagAhead("array"))
                return Array(elements);
            elements.push_back(Value(inDepth + 1));
            if (!elements.back())
                return {};
        }
    }

    OwnedValue DictionaryContent(int inDepth)
    {
        Level& level = LevelAt(inDepth);
        Level::Clearing clearing{level};
        std::vector<OwnedValue>& keys = level.keys;
        std::vector<OwnedValue>& values = level.values;
        for (;;) {
            if (!SkipMisc())
                return {};
            if (ClosingTagAhead("dict"))
                return Dictionary(keys, values);
            mBytes.clear();
            if (!Take("<key>") || !Content("key"))
                return {};
            keys.push_back(Key());
            if (!keys.back() || !SkipMisc())
                return {};
            values.push_back(Value(inDepth + 1));
            if (!values.back())
                return {};
        }
    }

    bool ClosingTagAhead(std::string_view inName)
    {
        std::size_t start = mAt;
        if (ClosingTag(inName))
            return true;
        mAt = start;
        return false;
    }

    OwnedValue Array(std::span<const OwnedValue> inElements)
    {
        return OwnedValue(MakeArray(mAllocator, inElements, mOptions));
    }

    OwnedValue Dictionary(std::span<const OwnedValue> inKeys, std::span<const OwnedValue> inValues)
    {
        return OwnedValue(MakeDictionary(mAllocator, inKeys, inValues, mOptions));
    }

    static constexpr std::size_t kMostSharedKeys = 256;

    CFAllocatorRef mAllocator;
    std::string_view mText;
    CFOptionFlags mOptions;
    std::size_t mAt = 0;
    std::string mBytes;     // the text being read, references resolved
    std::u16string mUnits;  // the same, decoded
    std::map<std::string, OwnedValue, std::less<>> mKeys;
    std::vector<std::unique_ptr<Level>> mLevels;  // by depth; stable while deeper ones are added
};

}  // namespace

OwnedValue ReadXML(CFAllocatorRef inAllocator, std::string_view inText, CFOptionFlags inOptions)
{
    return Reader(inAllocator, inText, inOptions).Document();
}

}  // namespace cf::plist
