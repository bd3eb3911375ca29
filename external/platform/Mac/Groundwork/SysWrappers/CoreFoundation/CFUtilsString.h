// The product code's type-checked string wrapper, with creation from and conversion to
// 8-bit text. Like the other CFUtils wrappers it never throws: a failed creation or a
// failed conversion gives an empty wrapper or an empty result.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/CFUtilsObject.h>

#include <CoreFoundation/CFString.h>

#include <array>
#include <string>

namespace CFUtils {

class CFString : public TypedObject<CFStringRef, CFStringGetTypeID> {
public:
    // A Pascal string by value: length byte first, then up to 255 characters.
    using PascalString = std::array<UInt8, 256>;

    // The format of the formatting constructor. Spelled out at the call, so that a format
    // with one integer argument is not mistaken for text plus an encoding.
    class Format {
    public:
        explicit Format(const char* inFormat) : mCString(inFormat) {}  // UTF-8
        explicit Format(CFStringRef inFormat) : mString(inFormat) {}

    private:
        friend class CFString;
        const char* mCString = nullptr;
        CFStringRef mString = nullptr;
    };

    using TypedObject::TypedObject;
    using TypedObject::operator=;

    // UTF-8 unless said otherwise; NULL text or text invalid in the encoding gives an empty wrapper.
    explicit CFString(const char* inCString, CFStringEncoding inEncoding = kCFStringEncodingUTF8);
    explicit CFString(ConstStringPtr inPString, CFStringEncoding inEncoding = kCFStringEncodingUTF8);
    // printf-style, with %@ for objects, as the platform's string formatting understands it.
    CFString(Format inFormat, ...);

    // The text in inEncoding; empty when the wrapper is empty or the text cannot be converted.
    std::string CStr(CFStringEncoding inEncoding = kCFStringEncodingUTF8) const;
    // Likewise as a Pascal string; also empty when the text needs more than 255 bytes.
    PascalString PStr(CFStringEncoding inEncoding = kCFStringEncodingUTF8) const;
    // Into a caller's buffer of inSize bytes (NUL-terminated) or of 256 bytes (Pascal).
    // On failure the buffer holds the empty string and the answer is false.
    bool ConvertToCStr(char* outBuffer, CFIndex inSize, CFStringEncoding inEncoding = kCFStringEncodingUTF8) const;
    bool ConvertToPStr(StringPtr outBuffer, CFStringEncoding inEncoding = kCFStringEncodingUTF8) const;
};

// Whether inFind occurs in inString (false if either is NULL); outRange, when given,
// receives where.
bool CFStringContains(CFStringRef inString, CFStringRef inFind, CFStringCompareFlags inFlags = 0,
                      CFRange* outRange = nullptr);

}  // namespace CFUtils
