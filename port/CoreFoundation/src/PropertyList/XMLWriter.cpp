// The XML writer: one pass over the tree into one string, dictionaries in key order so that
// the same values are always written the same way.
#include "XMLWriter.h"

#include "CFPropertyListSupport.h"
#include "CalendarDays.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace cf::plist {

namespace {

constexpr std::string_view kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

constexpr char kBase64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

class Writer {
public:
    Writer(std::string& outBytes, std::string& outError) : mOut(outBytes), mError(outError) {}

    bool Value(CFTypeRef inValue, int inDepth)
    {
        if (inDepth > kMaxDepth)
            return Fail("the property list is nested too deeply (or contains itself)");
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
        return Fail("the tree holds an object that is not a property-list value");
    }

private:
    bool Fail(const char* inReason)
    {
        if (mError.empty())
            mError = inReason;
        return false;
    }

    void Code(char32_t inCode)
    {
        if (inCode < 0x80) {
            mOut += char(inCode);
        } else if (inCode < 0x800) {
            mOut += char(0xC0 | (inCode >> 6));
            mOut += char(0x80 | (inCode & 0x3F));
        } else if (inCode < 0x10000) {
            mOut += char(0xE0 | (inCode >> 12));
            mOut += char(0x80 | ((inCode >> 6) & 0x3F));
            mOut += char(0x80 | (inCode & 0x3F));
        } else {
            mOut += char(0xF0 | (inCode >> 18));
            mOut += char(0x80 | ((inCode >> 12) & 0x3F));
            mOut += char(0x80 | ((inCode >> 6) & 0x3F));
            mOut += char(0x80 | (inCode & 0x3F));
        }
    }

    // The string as escaped UTF-8. Control characters are written as references, since XML
    // readers would drop or refuse them raw, and a carriage return would become a line feed.
    bool Escaped(CFStringRef inString)
    {
        const UniChar* units = CFStringGetCharactersPtr(inString);
        std::size_t count = std::size_t(CFStringGetLength(inString));
        for (std::size_t i = 0; i < count; ++i) {
            char32_t code = units[i];
            if (code >= 0xD800 && code <= 0xDBFF && i + 1 < count && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF)
                code = 0x10000 + ((code - 0xD800) << 10) + (units[++i] - 0xDC00);
            else if (code >= 0xD800 && code <= 0xDFFF)
                return Fail("a string holds a lone surrogate, which has no UTF-8 form");
            if (code == 0)
                return Fail("a string holds a zero character, which the XML form cannot carry");
            if (code == '<')
                mOut += "&lt;";
            else if (code == '>')
                mOut += "&gt;";
            else if (code == '&')
                mOut += "&amp;";
            else if (code < 0x20 && code != '\t' && code != '\n')
                mOut += "&#" + std::to_string(unsigned(code)) + ";";
            else
                Code(code);
        }
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

    // To the second, as the XML form holds dates.
    bool Date(CFAbsoluteTime inTime)
    {
        double seconds = std::floor(inTime) + double(kSecondsFrom1970To2001);
        if (!(std::fabs(seconds) < 1e15))
            return Fail("a date lies too far from today to be written");
        auto whole = int64_t(seconds);
        int64_t days = whole / 86400 - (whole % 86400 < 0 ? 1 : 0);
        int64_t inDay = whole - days * 86400;
        CivilDate date = CivilFromDays(days);
        if (date.year < 0 || date.year > 9999)
            return Fail("a date lies outside the years 0 to 9999, which the XML form can hold");
        char text[64];
        std::snprintf(text, sizeof text, "<date>%04d-%02d-%02dT%02d:%02d:%02dZ</date>\n", int(date.year), date.month,
                      date.day, int(inDay / 3600), int(inDay / 60 % 60), int(inDay % 60));
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
        auto entries = SortedEntries(inDictionary);
        if (entries.empty()) {
            mOut += "<dict/>\n";
            return true;
        }
        mOut += "<dict>\n";
        for (auto [key, value] : entries) {
            if (KindOf(key) != Kind::String)
                return Fail("a dictionary has a key that is not a string");
            mOut.append(std::size_t(inDepth + 1), '\t');
            if (!Element("key", CFStringRef(key)) || !Value(value, inDepth + 1))
                return false;
        }
        Closing("dict", inDepth);
        return true;
    }

    std::string& mOut;
    std::string& mError;
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

}  // namespace cf::plist
