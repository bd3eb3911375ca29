#include "StringEncoding.h"

#include <PortSupport/UnicodeUnits.h>
#include <PortSupport/UniqueHandle.h>

#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <bit>
#include <map>
#include <memory>

namespace cf {

namespace {

// ICU's names for the 8-bit encodings we convert through its converters.
const char* ConverterName(CFStringEncoding inEncoding)
{
    switch (inEncoding) {
    case kCFStringEncodingMacRoman:
        return "macintosh";
    case kCFStringEncodingWindowsLatin1:
        return "windows-1252";
    case kCFStringEncodingISOLatin1:
        return "ISO-8859-1";
    case kCFStringEncodingASCII:
        return "US-ASCII";
    default:
        return nullptr;
    }
}

using ConverterPtr = port::UniqueHandle<UConverter, ucnv_close>;

// Opening a converter costs far more than a short conversion, so each thread keeps one
// per encoding, set to stop at the first character it cannot convert.
UConverter* Converter(CFStringEncoding inEncoding)
{
    thread_local std::map<CFStringEncoding, ConverterPtr> tConverters;
    auto found = tConverters.find(inEncoding);
    if (found != tConverters.end()) {
        ucnv_reset(found->second.get());
        return found->second.get();
    }
    UErrorCode status = U_ZERO_ERROR;
    ConverterPtr converter{ucnv_open(ConverterName(inEncoding), &status)};
    if (U_FAILURE(status))
        return nullptr;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status))
        return nullptr;
    return tConverters.emplace(inEncoding, std::move(converter)).first->second.get();
}

bool IsASCII(std::span<const UInt8> inBytes)
{
    for (UInt8 byte : inBytes)
        if (byte >= 0x80)
            return false;
    return true;
}

bool DecodeWithConverter(std::span<const UInt8> inBytes, CFStringEncoding inEncoding, std::u16string& outText)
{
    UConverter* converter = Converter(inEncoding);
    if (converter == nullptr)
        return false;
    outText.resize(inBytes.size() * 2 + 1);
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = ucnv_toUChars(converter, reinterpret_cast<UChar*>(outText.data()), int32_t(outText.size()),
                                   reinterpret_cast<const char*>(inBytes.data()), int32_t(inBytes.size()), &status);
    if (U_FAILURE(status))
        return false;
    outText.resize(size_t(length));
    return true;
}

bool DecodeUTF8(std::span<const UInt8> inBytes, std::u16string& outText)
{
    if (IsASCII(inBytes)) {
        outText.assign(inBytes.begin(), inBytes.end());
        return true;
    }
    outText.resize(inBytes.size());
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8(reinterpret_cast<UChar*>(outText.data()), int32_t(outText.size()), &length,
                  reinterpret_cast<const char*>(inBytes.data()), int32_t(inBytes.size()), &status);
    if (U_FAILURE(status))
        return false;
    outText.resize(size_t(length));
    return true;
}

enum class Order { Big, Little };

constexpr Order kHostOrder = std::endian::native == std::endian::big ? Order::Big : Order::Little;

// The byte order of a UTF-16/32 text and how many bytes of byte-order mark to skip.
Order DetectOrder(std::span<const UInt8> inBytes, CFStringEncoding inEncoding, bool inExternal, size_t& outSkip)
{
    outSkip = 0;
    if (inEncoding == kCFStringEncodingUTF16BE || inEncoding == kCFStringEncodingUTF32BE)
        return Order::Big;
    if (inEncoding == kCFStringEncodingUTF16LE || inEncoding == kCFStringEncodingUTF32LE)
        return Order::Little;
    bool wide = inEncoding == kCFStringEncodingUTF32;
    size_t unit = wide ? 4 : 2;
    if (!inExternal || inBytes.size() < unit)
        return kHostOrder;
    const UInt8* b = inBytes.data();
    bool big = wide ? (b[0] == 0 && b[1] == 0 && b[2] == 0xFE && b[3] == 0xFF) : (b[0] == 0xFE && b[1] == 0xFF);
    bool little = wide ? (b[0] == 0xFF && b[1] == 0xFE && b[2] == 0 && b[3] == 0) : (b[0] == 0xFF && b[1] == 0xFE);
    if (big || little)
        outSkip = unit;
    return big ? Order::Big : little ? Order::Little : kHostOrder;
}

UInt32 ReadUnit(const UInt8* inBytes, size_t inSize, Order inOrder)
{
    UInt32 value = 0;
    for (size_t i = 0; i < inSize; ++i) {
        size_t index = inOrder == Order::Big ? i : inSize - 1 - i;
        value = (value << 8) | inBytes[index];
    }
    return value;
}

void WriteUnit(std::string& ioBytes, UInt32 inValue, size_t inSize, Order inOrder)
{
    for (size_t i = 0; i < inSize; ++i) {
        size_t shift = 8 * (inOrder == Order::Big ? inSize - 1 - i : i);
        ioBytes.push_back(char((inValue >> shift) & 0xFF));
    }
}

bool IsUTF16(CFStringEncoding inEncoding)
{
    return inEncoding == kCFStringEncodingUTF16 || inEncoding == kCFStringEncodingUTF16BE ||
           inEncoding == kCFStringEncodingUTF16LE;
}

bool IsUTF32(CFStringEncoding inEncoding)
{
    return inEncoding == kCFStringEncodingUTF32 || inEncoding == kCFStringEncodingUTF32BE ||
           inEncoding == kCFStringEncodingUTF32LE;
}

bool DecodeWide(std::span<const UInt8> inBytes, CFStringEncoding inEncoding, bool inExternal, std::u16string& outText)
{
    size_t unit = IsUTF32(inEncoding) ? 4 : 2;
    size_t skip = 0;
    Order order = DetectOrder(inBytes, inEncoding, inExternal, skip);
    if ((inBytes.size() - skip) % unit != 0)
        return false;
    outText.clear();
    outText.reserve((inBytes.size() - skip) / unit);
    for (size_t at = skip; at < inBytes.size(); at += unit) {
        UInt32 value = ReadUnit(inBytes.data() + at, unit, order);
        if (unit == 2) {
            outText.push_back(char16_t(value));
            continue;
        }
        if (value > 0x10FFFF || U_IS_SURROGATE(value))
            return false;
        port::AppendUTF16(outText, value);
    }
    return true;
}

bool EncodeWide(std::u16string_view inText, CFStringEncoding inEncoding, UInt8 inLossByte, bool inExternal,
                std::string& outBytes)
{
    bool wide = IsUTF32(inEncoding);
    size_t unit = wide ? 4 : 2;
    Order order = inEncoding == kCFStringEncodingUTF16BE || inEncoding == kCFStringEncodingUTF32BE   ? Order::Big
                  : inEncoding == kCFStringEncodingUTF16LE || inEncoding == kCFStringEncodingUTF32LE ? Order::Little
                                                                                                     : kHostOrder;
    outBytes.clear();
    bool bom = inExternal && (inEncoding == kCFStringEncodingUTF16 || inEncoding == kCFStringEncodingUTF32);
    if (bom)
        WriteUnit(outBytes, 0xFEFF, unit, order);
    for (size_t i = 0; i < inText.size(); ++i) {
        UInt32 value = inText[i];
        if (wide && U16_IS_SURROGATE(value)) {
            if (CharacterLength(inText, i) == 2) {
                value = U16_GET_SUPPLEMENTARY(value, inText[i + 1]);
                ++i;
            } else if (inLossByte != 0) {
                value = inLossByte;
            } else {
                return false;
            }
        }
        WriteUnit(outBytes, value, unit, order);
    }
    return true;
}

bool EncodeUTF8(std::u16string_view inText, UInt8 inLossByte, std::string& outBytes)
{
    outBytes.resize(inText.size() * 3);
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    int32_t substitutions = 0;
    u_strToUTF8WithSub(outBytes.data(), int32_t(outBytes.size()), &length,
                       reinterpret_cast<const UChar*>(inText.data()), int32_t(inText.size()),
                       inLossByte != 0 ? UChar32(inLossByte) : U_SENTINEL, &substitutions, &status);
    if (U_FAILURE(status))
        return false;
    outBytes.resize(size_t(length));
    return true;
}

// Converts one code point at a time, so that a character the encoding lacks becomes the
// loss byte instead of ending the conversion.
bool EncodeWithConverter(std::u16string_view inText, CFStringEncoding inEncoding, UInt8 inLossByte,
                         std::string& outBytes)
{
    UConverter* converter = Converter(inEncoding);
    if (converter == nullptr)
        return false;
    outBytes.clear();
    outBytes.reserve(inText.size());
    for (size_t i = 0; i < inText.size();) {
        size_t units = CharacterLength(inText, i);
        char bytes[8];
        UErrorCode status = U_ZERO_ERROR;
        ucnv_reset(converter);
        int32_t length = ucnv_fromUChars(converter, bytes, sizeof bytes,
                                         reinterpret_cast<const UChar*>(inText.data() + i), int32_t(units), &status);
        if (U_FAILURE(status)) {
            if (inLossByte == 0)
                return false;
            outBytes.push_back(char(inLossByte));
        } else {
            outBytes.append(bytes, size_t(length));
        }
        i += units;
    }
    return true;
}

}  // namespace

bool IsSupportedEncoding(CFStringEncoding inEncoding)
{
    return ConverterName(inEncoding) != nullptr || inEncoding == kCFStringEncodingUTF8 || IsUTF16(inEncoding) ||
           IsUTF32(inEncoding);
}

bool Decode(std::span<const UInt8> inBytes, CFStringEncoding inEncoding, bool inExternal, std::u16string& outText)
{
    if (inEncoding == kCFStringEncodingUTF8) {
        // Some writers mark UTF-8 files too; the mark is not part of the text.
        bool marked = inExternal && inBytes.size() >= 3 && inBytes[0] == 0xEF && inBytes[1] == 0xBB &&
                      inBytes[2] == 0xBF;
        return DecodeUTF8(marked ? inBytes.subspan(3) : inBytes, outText);
    }
    if (IsUTF16(inEncoding) || IsUTF32(inEncoding))
        return DecodeWide(inBytes, inEncoding, inExternal, outText);
    if (ConverterName(inEncoding) == nullptr)
        return false;
    if (IsASCII(inBytes)) {
        outText.assign(inBytes.begin(), inBytes.end());
        return true;
    }
    return DecodeWithConverter(inBytes, inEncoding, outText);
}

bool Encode(std::u16string_view inText, CFStringEncoding inEncoding, UInt8 inLossByte, bool inExternal,
            std::string& outBytes)
{
    if (inEncoding == kCFStringEncodingUTF8)
        return EncodeUTF8(inText, inLossByte, outBytes);
    if (IsUTF16(inEncoding) || IsUTF32(inEncoding))
        return EncodeWide(inText, inEncoding, inLossByte, inExternal, outBytes);
    if (ConverterName(inEncoding) == nullptr)
        return false;
    bool ascii = true;
    for (char16_t unit : inText)
        ascii = ascii && unit < 0x80;
    if (ascii) {
        outBytes.assign(inText.begin(), inText.end());
        return true;
    }
    return EncodeWithConverter(inText, inEncoding, inLossByte, outBytes);
}

CFIndex MaxBytesPerUnit(CFStringEncoding inEncoding)
{
    if (inEncoding == kCFStringEncodingUTF8)
        return 3;
    if (IsUTF16(inEncoding))
        return 2;
    if (IsUTF32(inEncoding))
        return 4;
    return 1;
}

}  // namespace cf
