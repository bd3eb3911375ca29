// Strings built from a format and arguments, printf style, with %@ for objects.
//
// The format is parsed completely before any argument is read: positional arguments (%2$d)
// may name arguments in any order, so the type of every argument has to be known first, and
// only the arguments the format names are ever taken from the list. A format that leaves an
// argument unnamed, names one with two different types, or asks for an absurd width makes
// the create calls answer NULL rather than guess at what lies on the argument list.
#include "CFStringObject.h"
#include "StringEncoding.h"

#include <CoreFoundation/CFNumber.h>
#include <PortSupport/UnicodeUnits.h>

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <limits>
#include <locale.h>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

// Numbers and booleans print as their values ("6001", "1.5", "true") rather than as their
// debugging descriptions, so that they read naturally inside a sentence.
std::optional<std::string> ValueText(CFTypeRef inObject)
{
    if (CFGetTypeID(inObject) == CFBooleanGetTypeID())
        return CFBooleanGetValue(static_cast<CFBooleanRef>(inObject)) ? "true" : "false";
    if (CFGetTypeID(inObject) != CFNumberGetTypeID())
        return std::nullopt;
    auto number = static_cast<CFNumberRef>(inObject);
    char text[40];
    std::to_chars_result end;
    if (CFNumberIsFloatType(number)) {
        double value = 0;
        CFNumberGetValue(number, kCFNumberDoubleType, &value);
        end = std::to_chars(text, text + sizeof text, value);  // the shortest text that reads back the same
    } else {
        long long value = 0;
        CFNumberGetValue(number, kCFNumberLongLongType, &value);
        end = std::to_chars(text, text + sizeof text, value);
    }
    return std::string(text, end.ptr);
}

// What an argument is read as, by the C type it was passed as.
enum class ArgKind { Int, Long, LongLong, Size, Ptrdiff, Intmax, WInt, Double, LongDouble, Pointer };

enum class Length { None, Char, Short, Long, LongLong, Size, Ptrdiff, Intmax, LongDouble };

using ArgValue = std::variant<std::intmax_t, double, long double, const void*>;

struct Literal {
    std::u16string_view text;
};

// One conversion. Argument numbers count from 1; 0 means "none".
struct Conversion {
    std::string flags;
    int width = -1;
    int precision = -1;
    size_t widthArg = 0;
    size_t precisionArg = 0;
    size_t valueArg = 0;
    Length length = Length::None;
    char16_t type = 0;
};

using Piece = std::variant<Literal, Conversion>;

struct ParsedFormat {
    std::vector<Piece> pieces;
    std::vector<std::optional<ArgKind>> args;  // index 0 is argument 1
};

bool IsDigit(char16_t inUnit) { return inUnit >= '0' && inUnit <= '9'; }

// The kind of the value argument a conversion takes, or nothing for one this formatter does
// not know (which is then copied to the output as it stands).
std::optional<ArgKind> ValueKind(char16_t inType, Length inLength)
{
    switch (inType) {
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        switch (inLength) {
        case Length::Long:
            return ArgKind::Long;
        case Length::LongLong:
        case Length::LongDouble:
            return ArgKind::LongLong;
        case Length::Size:
            return ArgKind::Size;
        case Length::Ptrdiff:
            return ArgKind::Ptrdiff;
        case Length::Intmax:
            return ArgKind::Intmax;
        default:
            return ArgKind::Int;
        }
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
        return inLength == Length::LongDouble ? ArgKind::LongDouble : ArgKind::Double;
    case 'c':
        return inLength == Length::Long ? ArgKind::WInt : ArgKind::Int;
    case 'C':
        return ArgKind::Int;  // a UniChar, promoted
    case 's':
    case 'S':
    case 'p':
    case '@':
        return ArgKind::Pointer;
    }
    return std::nullopt;
}

// Reads the text format. Keeps a cursor and the running count of unnumbered arguments.
class Parser {
public:
    explicit Parser(std::u16string_view inFormat) : mFormat(inFormat) {}

    std::optional<ParsedFormat> Run()
    {
        while (mAt < mFormat.size()) {
            size_t percent = mFormat.find(u'%', mAt);
            if (percent == std::u16string_view::npos)
                percent = mFormat.size();
            if (percent > mAt)
                mResult.pieces.push_back(Literal{mFormat.substr(mAt, percent - mAt)});
            mAt = percent;
            if (mAt < mFormat.size() && !ParseConversion())
                return std::nullopt;
        }
        for (const auto& kind : mResult.args)
            if (!kind)
                return std::nullopt;  // an argument the format never names has no known type
        return std::move(mResult);
    }

private:
    // Reads decimal digits, if there are any, into outValue; false when they overflow an int.
    bool Number(int& outValue)
    {
        if (!IsDigit(Peek()))
            return true;
        long value = 0;
        while (IsDigit(Peek())) {
            value = value * 10 + (mFormat[mAt++] - '0');
            if (value > std::numeric_limits<int>::max())
                return false;
        }
        outValue = int(value);
        return true;
    }

    // "n$" at the cursor: an argument number, left in outArg. Without one the cursor stays
    // where it was (the digits are a width); "0$" is an error.
    bool Position(size_t& outArg)
    {
        size_t start = mAt;
        while (IsDigit(Peek()))
            ++mAt;
        if (mAt == start || Peek() != '$') {
            mAt = start;
            return true;
        }
        size_t value = 0;
        for (char16_t digit : mFormat.substr(start, mAt++ - start)) {
            value = value * 10 + (digit - '0');
            // No format names more distinct arguments than it has characters, so a larger
            // number always leaves a gap.
            if (value > mFormat.size())
                return false;
        }
        outArg = value;
        return value != 0;
    }

    // A width or precision: digits, "*" or "*n$".
    bool Amount(int& outValue, size_t& outArg)
    {
        if (Peek() != '*')
            return Number(outValue);
        ++mAt;
        size_t arg = 0;
        if (!Position(arg))
            return false;
        outArg = arg ? arg : kNext;
        return true;
    }

    Length ReadLength()
    {
        switch (Peek()) {
        case 'h':
            ++mAt;
            return Peek() == 'h' ? (++mAt, Length::Char) : Length::Short;
        case 'l':
            ++mAt;
            return Peek() == 'l' ? (++mAt, Length::LongLong) : Length::Long;
        case 'q':
            ++mAt;
            return Length::LongLong;
        case 'z':
            ++mAt;
            return Length::Size;
        case 't':
            ++mAt;
            return Length::Ptrdiff;
        case 'j':
            ++mAt;
            return Length::Intmax;
        case 'L':
            ++mAt;
            return Length::LongDouble;
        }
        return Length::None;
    }

    bool ParseConversion()
    {
        size_t start = mAt++;
        Conversion conversion;
        size_t valueArg = 0;
        if (!Position(valueArg))
            return false;
        while (std::u16string_view(u"-+ #0'").find(Peek()) != std::u16string_view::npos)
            conversion.flags += char(mFormat[mAt++]);
        if (!Amount(conversion.width, conversion.widthArg))
            return false;
        if (Peek() == '.') {
            ++mAt;
            conversion.precision = 0;
            if (!Amount(conversion.precision, conversion.precisionArg))
                return false;
        }
        conversion.length = ReadLength();
        conversion.type = mAt < mFormat.size() ? mFormat[mAt++] : 0;
        if (conversion.type == '%') {
            mResult.pieces.push_back(Literal{u"%"});
            return true;
        }
        std::optional<ArgKind> kind = ValueKind(conversion.type, conversion.length);
        if (!kind) {
            mResult.pieces.push_back(Literal{mFormat.substr(start, mAt - start)});
            return true;
        }
        // Unnumbered arguments are taken in the order C takes them: width, precision, value.
        if (!Claim(conversion.widthArg, ArgKind::Int) || !Claim(conversion.precisionArg, ArgKind::Int))
            return false;
        conversion.valueArg = valueArg ? valueArg : kNext;
        if (!Claim(conversion.valueArg, *kind))
            return false;
        mResult.pieces.push_back(std::move(conversion));
        return true;
    }

    // Records the kind of an argument; kNext stands for the next unnumbered one.
    bool Claim(size_t& ioArg, ArgKind inKind)
    {
        if (ioArg == 0)
            return true;
        if (ioArg == kNext)
            ioArg = ++mSequential;
        if (mResult.args.size() < ioArg)
            mResult.args.resize(ioArg);
        std::optional<ArgKind>& slot = mResult.args[ioArg - 1];
        if (slot && *slot != inKind)
            return false;
        slot = inKind;
        return true;
    }

    char16_t Peek() const { return mAt < mFormat.size() ? mFormat[mAt] : 0; }

    static constexpr size_t kNext = std::numeric_limits<size_t>::max();

    std::u16string_view mFormat;
    size_t mAt = 0;
    size_t mSequential = 0;
    ParsedFormat mResult;
};

ArgValue ReadArgument(ArgKind inKind, va_list& ioArguments)
{
    switch (inKind) {
    case ArgKind::Int:
        return std::intmax_t(va_arg(ioArguments, int));
    case ArgKind::Long:
        return std::intmax_t(va_arg(ioArguments, long));
    case ArgKind::LongLong:
        return std::intmax_t(va_arg(ioArguments, long long));
    case ArgKind::Size:
        return std::intmax_t(va_arg(ioArguments, size_t));
    case ArgKind::Ptrdiff:
        return std::intmax_t(va_arg(ioArguments, ptrdiff_t));
    case ArgKind::Intmax:
        return va_arg(ioArguments, std::intmax_t);
    case ArgKind::WInt:
        return std::intmax_t(va_arg(ioArguments, wint_t));
    case ArgKind::Double:
        return va_arg(ioArguments, double);
    case ArgKind::LongDouble:
        return va_arg(ioArguments, long double);
    case ArgKind::Pointer:
        return va_arg(ioArguments, const void*);
    }
    return std::intmax_t(0);
}

// Numbers are printed in the C locale whatever the process has set, so that a format gives
// the same text (a "." before the fraction) on every machine.
class CLocaleScope {
public:
    CLocaleScope() : mPrevious(uselocale(CLocale())) {}
    ~CLocaleScope() { uselocale(mPrevious); }
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;

private:
    static locale_t CLocale()
    {
        static locale_t sLocale = newlocale(LC_ALL_MASK, "C", locale_t(0));  // kept for the process
        return sLocale;
    }

    locale_t mPrevious;
};

void AppendCodePoint(std::u16string& ioText, char32_t inCodePoint)
{
    if (inCodePoint > 0x10FFFF || U_IS_SURROGATE(inCodePoint))
        ioText += u'\uFFFD';
    else
        port::AppendUTF16(ioText, inCodePoint);
}

// UTF-8 to UTF-16; each byte that does not start a valid sequence becomes U+FFFD, so that a
// C string from anywhere still prints as much as can be read.
void AppendUTF8(std::u16string& ioText, std::string_view inBytes)
{
    while (!inBytes.empty()) {
        port::UTF8Step step = port::NextUTF8(inBytes);
        if (step.length == 0) {
            ioText += u'\uFFFD';
            step.length = 1;
        } else {
            port::AppendUTF16(ioText, step.scalar);
        }
        inBytes.remove_prefix(step.length);
    }
}

// Renders one conversion. Holds the resolved width and precision and the argument values.
class Renderer {
public:
    Renderer(const Conversion& inConversion, const std::vector<ArgValue>& inArgs)
        : mConversion(inConversion), mArgs(inArgs)
    {
        mWidth = inConversion.widthArg ? int(Integer(inConversion.widthArg)) : inConversion.width;
        mPrecision = inConversion.precisionArg ? int(Integer(inConversion.precisionArg)) : inConversion.precision;
        // As in C: a negative width from an argument means left-justified, a negative
        // precision means none at all.
        if (mWidth < 0 && inConversion.widthArg) {
            mLeft = true;
            mWidth = mWidth == std::numeric_limits<int>::min() ? std::numeric_limits<int>::max() : -mWidth;
        }
        mLeft = mLeft || inConversion.flags.find('-') != std::string::npos;
        if (mPrecision < 0)
            mPrecision = -1;
    }

    bool Append(std::u16string& ioText) const
    {
        switch (mConversion.type) {
        case 'd':
        case 'i':
            return PrintC(ioText, CFormat("ll"), SignedValue());
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            return PrintC(ioText, CFormat("ll"), UnsignedValue());
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            return Floating(ioText);
        case 'p':
            return Pointer(ioText);
        }
        std::u16string text;
        Characters(text);
        Pad(ioText, text);
        return true;
    }

private:
    std::intmax_t Integer(size_t inArg) const { return std::get<std::intmax_t>(mArgs[inArg - 1]); }
    const void* Address() const { return std::get<const void*>(mArgs[mConversion.valueArg - 1]); }

    long long SignedValue() const
    {
        std::intmax_t value = Integer(mConversion.valueArg);
        switch (mConversion.length) {
        case Length::Char:
            return static_cast<signed char>(value);
        case Length::Short:
            return static_cast<short>(value);
        case Length::None:
            return static_cast<int>(value);
        default:
            return static_cast<long long>(value);
        }
    }

    unsigned long long UnsignedValue() const
    {
        std::intmax_t value = Integer(mConversion.valueArg);
        switch (mConversion.length) {
        case Length::Char:
            return static_cast<unsigned char>(value);
        case Length::Short:
            return static_cast<unsigned short>(value);
        case Length::None:
            return static_cast<unsigned>(value);
        case Length::Long:
            return static_cast<unsigned long>(value);
        case Length::Size:
            return static_cast<size_t>(value);
        default:
            return static_cast<unsigned long long>(value);
        }
    }

    // The conversion as a C format with the width and precision passed as "*" arguments.
    std::string CFormat(const char* inLength) const
    {
        std::string format = "%" + mConversion.flags + (mLeft ? "-" : "") + "*";
        if (mPrecision >= 0)
            format += ".*";
        return format + inLength + char(mConversion.type);
    }

    // Numbers go through the C library, which knows every flag and precision rule.
    template <class T>
    bool PrintC(std::u16string& ioText, const std::string& inFormat, T inValue) const
    {
        CLocaleScope locale;
        int width = std::max(mWidth, 0);
        int size = mPrecision >= 0 ? std::snprintf(nullptr, 0, inFormat.c_str(), width, mPrecision, inValue)
                                   : std::snprintf(nullptr, 0, inFormat.c_str(), width, inValue);
        if (size < 0)
            return false;
        std::string text(size_t(size), '\0');
        if (mPrecision >= 0)
            std::snprintf(text.data(), text.size() + 1, inFormat.c_str(), width, mPrecision, inValue);
        else
            std::snprintf(text.data(), text.size() + 1, inFormat.c_str(), width, inValue);
        ioText.append(text.begin(), text.end());
        return true;
    }

    bool Floating(std::u16string& ioText) const
    {
        const ArgValue& value = mArgs[mConversion.valueArg - 1];
        if (auto* wide = std::get_if<long double>(&value))
            return PrintC(ioText, CFormat("L"), *wide);
        return PrintC(ioText, CFormat(""), std::get<double>(value));
    }

    // "0x" and lower-case digits, NULL included, as the platform prints pointers.
    bool Pointer(std::u16string& ioText) const
    {
        char digits[32];
        std::snprintf(digits, sizeof digits, "0x%llx",
                      static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(Address())));
        std::u16string text(digits, digits + std::strlen(digits));
        Pad(ioText, text);
        return true;
    }

    void Characters(std::u16string& outText) const
    {
        switch (mConversion.type) {
        case 'c':
            if (mConversion.length == Length::Long)
                AppendCodePoint(outText, char32_t(Integer(mConversion.valueArg)));
            else  // one byte cannot be a UTF-8 sequence of its own; read it as Latin 1
                outText += char16_t(static_cast<unsigned char>(Integer(mConversion.valueArg)));
            return;
        case 'C':
            outText += char16_t(static_cast<UniChar>(Integer(mConversion.valueArg)));
            return;
        case 's':
            return mConversion.length == Length::Long ? WideString(outText) : CString(outText);
        case 'S':
            return UniString(outText);
        case '@':
            return Description(outText);
        }
    }

    // The precision bounds what is read, so a buffer without a terminator is safe with it.
    size_t Limit() const { return mPrecision >= 0 ? size_t(mPrecision) : std::numeric_limits<size_t>::max(); }

    void CString(std::u16string& outText) const
    {
        auto* bytes = static_cast<const char*>(Address());
        if (bytes == nullptr)
            return Null(outText);
        AppendUTF8(outText, std::string_view(bytes, strnlen(bytes, Limit())));
    }

    void UniString(std::u16string& outText) const
    {
        auto* units = static_cast<const UniChar*>(Address());
        if (units == nullptr)
            return Null(outText);
        for (size_t i = 0; i < Limit() && units[i] != 0; ++i)
            outText += char16_t(units[i]);
    }

    void WideString(std::u16string& outText) const
    {
        auto* characters = static_cast<const wchar_t*>(Address());
        if (characters == nullptr)
            return Null(outText);
        for (size_t i = 0; outText.size() < Limit() && characters[i] != 0; ++i) {
            std::u16string::size_type before = outText.size();
            AppendCodePoint(outText, char32_t(characters[i]));
            if (outText.size() > Limit()) {
                outText.resize(before);
                break;
            }
        }
    }

    // An object prints as its description; a string as itself, a number or boolean as its value.
    void Description(std::u16string& outText) const
    {
        CFTypeRef object = Address();
        if (object == nullptr)
            return Null(outText);
        if (CFGetTypeID(object) == CFStringGetTypeID()) {
            outText = cf::String(static_cast<CFStringRef>(object), "CFStringCreateWithFormat").mText;
        } else if (std::optional<std::string> value = ValueText(object)) {
            outText.assign(value->begin(), value->end());
        } else {
            CFStringRef description = CFCopyDescription(object);
            outText = cf::String(description, "CFCopyDescription").mText;
            CFRelease(description);
        }
        if (outText.size() > Limit())
            outText.resize(Limit());
    }

    void Null(std::u16string& outText) const
    {
        outText = u"(null)";
        if (outText.size() > Limit())
            outText.resize(Limit());
    }

    void Pad(std::u16string& ioText, const std::u16string& inText) const
    {
        size_t fill = size_t(std::max(mWidth, 0)) > inText.size() ? size_t(mWidth) - inText.size() : 0;
        if (!mLeft)
            ioText.append(fill, u' ');
        ioText += inText;
        if (mLeft)
            ioText.append(fill, u' ');
    }

    const Conversion& mConversion;
    const std::vector<ArgValue>& mArgs;
    int mWidth = -1;
    int mPrecision = -1;
    bool mLeft = false;
};

std::optional<std::u16string> Format(std::u16string_view inFormat, va_list inArguments)
{
    std::optional<ParsedFormat> parsed = Parser(inFormat).Run();
    if (!parsed)
        return std::nullopt;
    std::vector<ArgValue> values;
    values.reserve(parsed->args.size());
    va_list arguments;
    va_copy(arguments, inArguments);
    for (const auto& kind : parsed->args)
        values.push_back(ReadArgument(*kind, arguments));
    va_end(arguments);

    std::u16string text;
    for (const Piece& piece : parsed->pieces) {
        if (auto* literal = std::get_if<Literal>(&piece))
            text += literal->text;
        else if (!Renderer(std::get<Conversion>(piece), values).Append(text))
            return std::nullopt;
    }
    return text;
}

}  // namespace

CFStringRef CFStringCreateWithFormat(CFAllocatorRef inAllocator, CFDictionaryRef inFormatOptions, CFStringRef inFormat,
                                     ...)
{
    va_list arguments;
    va_start(arguments, inFormat);
    CFStringRef result = CFStringCreateWithFormatAndArguments(inAllocator, inFormatOptions, inFormat, arguments);
    va_end(arguments);
    return result;
}

CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef inAllocator, CFDictionaryRef, CFStringRef inFormat,
                                                 va_list inArguments)
{
    const std::u16string& format = cf::String(inFormat, "CFStringCreateWithFormat").mText;
    std::optional<std::u16string> text = Format(format, inArguments);
    if (!text)
        return nullptr;
    return CFStringCreateWithCharacters(inAllocator, reinterpret_cast<const UniChar*>(text->data()),
                                        CFIndex(text->size()));
}

void CFStringAppendFormat(CFMutableStringRef inString, CFDictionaryRef inFormatOptions, CFStringRef inFormat, ...)
{
    va_list arguments;
    va_start(arguments, inFormat);
    CFStringAppendFormatAndArguments(inString, inFormatOptions, inFormat, arguments);
    va_end(arguments);
}

void CFStringAppendFormatAndArguments(CFMutableStringRef inString, CFDictionaryRef, CFStringRef inFormat,
                                      va_list inArguments)
{
    cf::MutableString(inString, "CFStringAppendFormat");
    const std::u16string& format = cf::String(inFormat, "CFStringAppendFormat").mText;
    // Built completely before appending, so the format or an argument may be the string itself.
    std::optional<std::u16string> text = Format(format, inArguments);
    if (text)
        CFStringAppendCharacters(inString, reinterpret_cast<const UniChar*>(text->data()), CFIndex(text->size()));
}
