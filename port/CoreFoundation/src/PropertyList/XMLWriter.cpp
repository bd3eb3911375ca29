// The XML writer: one pass over the tree into one string, dictionaries in key order so that
// the same values are always written the same way.
#include "XMLWriter.h"

#include "CFPropertyListSupport.h"
#include "CalendarDays.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace cf::plist {

namespace {

constexpr std::string_view kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

constexpr char kBase64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr const char* kLoneSurrogate = "a string holds a lone surrogate, which has no UTF-8 form";
constexpr const char* kZeroCharacter = "a string holds a zero character, which the XML form cannot carry";
constexpr const char* kTooDeep = "the property list is nested too deeply (or contains itself)";
constexpr const char* kNotAValue = "the tree holds an object that is not a property-list value";
constexpr const char* kKeyNotAString = "a dictionary has a key that is not a string";

// Characters written as they are, one byte each: the common case, taken in bulk.
bool IsPlain(char16_t inUnit)
{
    return inUnit >= 0x20 && inUnit < 0x80 && inUnit != '<' && inUnit != '>' && inUnit != '&';
}

// Why the string cannot be written, or nullptr.
const char* StringProblem(CFStringRef inString)
{
    const UniChar* units = CFStringGetCharactersPtr(inString);
    std::size_t count = std::size_t(CFStringGetLength(inString));
    for (std::size_t i = 0; i < count; ++i) {
        if (units[i] == 0)
            return kZeroCharacter;
        if (U16_IS_LEAD(units[i]) && i + 1 < count && U16_IS_TRAIL(units[i + 1]))
            ++i;
        else if (U16_IS_SURROGATE(units[i]))
            return kLoneSurrogate;
    }
    return nullptr;
}

struct DateFields {
    CivilDate date;
    int64_t secondOfDay;
};

// To the second, as the XML form holds dates; nullptr, or why the date cannot be written.
const char* DateProblem(CFAbsoluteTime inTime, DateFields& outFields)
{
    double seconds = std::floor(inTime) + double(kSecondsFrom1970To2001);
    if (!(std::fabs(seconds) < 1e15))
        return "a date lies too far from today to be written";
    auto whole = int64_t(seconds);
    int64_t days = whole / 86400 - (whole % 86400 < 0 ? 1 : 0);
    outFields = {CivilFromDays(days), whole - days * 86400};
    if (outFields.date.year < 0 || outFields.date.year > 9999)
        return "a date lies outside the years 0 to 9999, which the XML form can hold";
    return nullptr;
}

// The first problem met in a walk of the tree is the one reported.
class FirstProblem {
public:
    explicit FirstProblem(std::string& outError) : mError(outError) {}

    bool Fail(const char* inReason)
    {
        if (mError.empty())
            mError = inReason;
        return false;
    }

private:
    std::string& mError;
};

// Whether the tree can be written, walking it without writing.
class Checker : FirstProblem {
public:
    using FirstProblem::FirstProblem;

    bool Value(CFTypeRef inValue, int inDepth)
    {
        if (inDepth > kMaxDepth)
            return Fail(kTooDeep);
        DateFields fields{};
        switch (KindOf(inValue)) {
        case Kind::String:
            return Check(StringProblem(CFStringRef(inValue)));
        case Kind::Date:
            return Check(DateProblem(CFDateGetAbsoluteTime(CFDateRef(inValue)), fields));
        case Kind::Number:
        case Kind::Boolean:
        case Kind::Data:
            return true;
        case Kind::Array: {
            auto array = CFArrayRef(inValue);
            for (CFIndex i = 0, count = CFArrayGetCount(array); i < count; ++i)
                if (!Value(CFArrayGetValueAtIndex(array, i), inDepth + 1))
                    return false;
            return true;
        }
        case Kind::Dictionary:
            return Dictionary(CFDictionaryRef(inValue), inDepth);
        case Kind::Other:
            break;
        }
        return Fail(kNotAValue);
    }

private:
    // True when there is no problem; otherwise notes it.
    bool Check(const char* inProblem) { return inProblem == nullptr || Fail(inProblem); }

    bool Dictionary(CFDictionaryRef inDictionary, int inDepth)
    {
        struct Walk {
            Checker& checker;
            int depth;
            bool sound = true;
        } walk{*this, inDepth + 1};
        CFDictionaryApplyFunction(
            inDictionary,
            [](const void* inKey, const void* inValue, void* ioWalk) {
                auto& walk = *static_cast<Walk*>(ioWalk);
                if (!walk.sound)
                    return;
                if (KindOf(inKey) != Kind::String)
                    walk.sound = walk.checker.Fail(kKeyNotAString);
                else
                    walk.sound = walk.checker.Check(StringProblem(CFStringRef(inKey))) &&
                                 walk.checker.Value(inValue, walk.depth);
            },
            &walk);
        return walk.sound;
    }
};

class Writer : FirstProblem {
public:
    Writer(std::string& outBytes, std::string& outError) : FirstProblem(outError), mOut(outBytes) {}

    bool Value(CFTypeRef inValue, int inDepth)
    {
        if (inDepth > kMaxDepth)
            return Fail(kTooDeep);
        mOut.append(std::size_t(inDepth), '\t');
        switch (KindOf(inValue)) {
        case Kind::String:
            return Element("string", CFStringRef(inValue));
        case Kind::Number:
            return Number(CFNumberRef(inValue));
        case Kind::Boolean:
            mOut += CFBooleanGetValue(CFBooleanRef(inValue)) ? "<true/>\n" : "<false/>\n";
            return true;
        case Kind::Date:
            return Date(CFDateGetAbsoluteTime(CFDateRef(inValue)));
        case Kind::Data:
            Data(CFDataRef(inValue));
            return true;
        case Kind::Array:
            return Array(CFArrayRef(inValue), inDepth);
        case Kind::Dictionary:
            return Dictionary(CFDictionaryRef(inValue), inDepth);
        case Kind::Other:
            break;
        }
        return Fail(kNotAValue);
    }

private:
    // One character, escaped where needed, as UTF-8 at outBytes; answers how many bytes.
    static std::size_t Encoded(char32_t inCode, char* outBytes)
    {
        switch (inCode) {
        case '<':
            return Copy("&lt;", outBytes);
        case '>':
            return Copy("&gt;", outBytes);
        case '&':
            return Copy("&amp;", outBytes);
        }
        // Control characters are written as references, since XML readers would drop or
        // refuse them raw, and a carriage return would become a line feed.
        if (inCode < 0x20 && inCode != '\t' && inCode != '\n')
            return std::size_t(std::snprintf(outBytes, kLongestEncoding + 1, "&#%u;", unsigned(inCode)));
        int32_t length = 0;
        U8_APPEND_UNSAFE(outBytes, length, inCode);
        return std::size_t(length);
    }

    static std::size_t Copy(std::string_view inText, char* outBytes)
    {
        inText.copy(outBytes, inText.size());
        return inText.size();
    }

    // The string as escaped UTF-8, gathered in a local buffer: appending to the output one
    // byte at a time costs more than everything else the writer does.
    bool Escaped(CFStringRef inString)
    {
        const UniChar* units = CFStringGetCharactersPtr(inString);
        std::size_t count = std::size_t(CFStringGetLength(inString));
        char buffer[1024];
        std::size_t used = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (used + kLongestEncoding > sizeof buffer) {
                mOut.append(buffer, used);
                used = 0;
            }
            if (IsPlain(units[i])) {
                buffer[used++] = char(units[i]);
                continue;
            }
            char32_t code = units[i];
            if (U16_IS_LEAD(code) && i + 1 < count && U16_IS_TRAIL(units[i + 1]))
                code = U16_GET_SUPPLEMENTARY(code, units[++i]);
            else if (U16_IS_SURROGATE(code))
                return Fail(kLoneSurrogate);
            if (code == 0)
                return Fail(kZeroCharacter);
            used += Encoded(code, buffer + used);
        }
        mOut.append(buffer, used);
        return true;
    }

    bool Element(std::string_view inName, CFStringRef inString)
    {
        mOut += '<';
        mOut += inName;
        mOut += '>';
        if (!Escaped(inString))
            return false;
        mOut += "</";
        mOut += inName;
        mOut += ">\n";
        return true;
    }

    bool Number(CFNumberRef inNumber)
    {
        char text[64];
        std::to_chars_result written{};
        if (CFNumberIsFloatType(inNumber)) {
            double value = 0;
            CFNumberGetValue(inNumber, kCFNumberFloat64Type, &value);
            written = std::to_chars(text, text + sizeof text, value);
            mOut += "<real>";
        } else {
            SInt64 value = 0;
            CFNumberGetValue(inNumber, kCFNumberSInt64Type, &value);
            written = std::to_chars(text, text + sizeof text, value);
            mOut += "<integer>";
        }
        mOut.append(text, written.ptr);
        mOut += CFNumberIsFloatType(inNumber) ? "</real>\n" : "</integer>\n";
        return true;
    }

    bool Date(CFAbsoluteTime inTime)
    {
        DateFields fields{};
        if (const char* problem = DateProblem(inTime, fields))
            return Fail(problem);
        char text[64];
        std::snprintf(text, sizeof text, "<date>%04d-%02d-%02dT%02d:%02d:%02dZ</date>\n", int(fields.date.year),
                      fields.date.month, fields.date.day, int(fields.secondOfDay / 3600),
                      int(fields.secondOfDay / 60 % 60), int(fields.secondOfDay % 60));
        mOut += text;
        return true;
    }

    void Data(CFDataRef inData)
    {
        const UInt8* bytes = CFDataGetBytePtr(inData);
        std::size_t count = std::size_t(CFDataGetLength(inData));
        mOut += "<data>";
        for (std::size_t i = 0; i < count; i += 3) {
            uint32_t group = uint32_t(bytes[i]) << 16;
            if (i + 1 < count)
                group |= uint32_t(bytes[i + 1]) << 8;
            if (i + 2 < count)
                group |= bytes[i + 2];
            mOut += kBase64Digits[group >> 18];
            mOut += kBase64Digits[(group >> 12) & 0x3F];
            mOut += i + 1 < count ? kBase64Digits[(group >> 6) & 0x3F] : '=';
            mOut += i + 2 < count ? kBase64Digits[group & 0x3F] : '=';
        }
        mOut += "</data>\n";
    }

    void Closing(std::string_view inName, int inDepth)
    {
        mOut.append(std::size_t(inDepth), '\t');
        mOut += "</";
        mOut += inName;
        mOut += ">\n";
    }

    bool Array(CFArrayRef inArray, int inDepth)
    {
        CFIndex count = CFArrayGetCount(inArray);
        if (count == 0) {
            mOut += "<array/>\n";
            return true;
        }
        mOut += "<array>\n";
        for (CFIndex i = 0; i < count; ++i)
            if (!Value(CFArrayGetValueAtIndex(inArray, i), inDepth + 1))
                return false;
        Closing("array", inDepth);
        return true;
    }

    bool Dictionary(CFDictionaryRef inDictionary, int inDepth)
    {
        if (mEntries.size() <= std::size_t(inDepth))
            mEntries.resize(std::size_t(inDepth) + 1);
        Entries& entries = mEntries[std::size_t(inDepth)];
        SortedEntries(inDictionary, entries);
        if (entries.empty()) {
            mOut += "<dict/>\n";
            return true;
        }
        mOut += "<dict>\n";
        for (auto [key, value] : entries) {
            if (KindOf(key) != Kind::String)
                return Fail(kKeyNotAString);
            mOut.append(std::size_t(inDepth + 1), '\t');
            if (!Element("key", CFStringRef(key)) || !Value(value, inDepth + 1))
                return false;
        }
        Closing("dict", inDepth);
        return true;
    }

    // The longest one character becomes: a character reference such as "&#31;".
    static constexpr std::size_t kLongestEncoding = 8;

    std::string& mOut;
    std::vector<Entries> mEntries;  // per depth, reused by every dictionary at that depth
};

}  // namespace

bool WriteXML(CFPropertyListRef inValue, std::string& outBytes, std::string& outError)
{
    outBytes = kHeader;
    if (!Writer(outBytes, outError).Value(inValue, 0))
        return false;
    outBytes += "</plist>\n";
    return true;
}

bool CheckXMLWritable(CFPropertyListRef inValue, std::string& outError) { return Checker(outError).Value(inValue, 0); }

}  // namespace cf::plist
