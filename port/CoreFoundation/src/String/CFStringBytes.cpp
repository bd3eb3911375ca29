// Strings as bytes in an encoding: converting part of a string into a caller's buffer, and
// the external representation (bytes with a byte-order mark where the encoding needs one).
#include "CFStringObject.h"
#include "StringEncoding.h"

#include <CoreFoundation/CFData.h>

#include <cstring>

namespace {

// Copies converted bytes out, keeping count of what was used.
class Output {
public:
    Output(UInt8* outBuffer, CFIndex inCapacity) : mBuffer(outBuffer), mCapacity(inCapacity) {}

    // False, writing nothing, when the bytes do not fit; with no buffer everything fits.
    bool Write(std::string_view inBytes)
    {
        if (mBuffer != nullptr && CFIndex(inBytes.size()) > mCapacity - mUsed)
            return false;
        if (mBuffer != nullptr)
            std::memcpy(mBuffer + mUsed, inBytes.data(), inBytes.size());
        mUsed += CFIndex(inBytes.size());
        return true;
    }

    CFIndex Used() const { return mUsed; }

private:
    UInt8* mBuffer;
    CFIndex mCapacity;
    CFIndex mUsed = 0;
};

// Converts one character at a time until one cannot be converted (with no loss byte) or no
// longer fits; answers the UTF-16 units converted. A surrogate pair is one character here:
// half of it is never written.
CFIndex ConvertPiecewise(std::u16string_view inText, CFStringEncoding inEncoding, UInt8 inLossByte, Output& ioOutput)
{
    std::string bytes;
    std::size_t at = 0;
    while (at < inText.size()) {
        std::size_t units = cf::CharacterLength(inText, at);
        if (!cf::Encode(inText.substr(at, units), inEncoding, inLossByte, false, bytes) || !ioOutput.Write(bytes))
            break;
        at += units;
    }
    return CFIndex(at);
}

}  // namespace

CFIndex CFStringGetBytes(CFStringRef inString, CFRange inRange, CFStringEncoding inEncoding, UInt8 inLossByte,
                         Boolean inIsExternalRepresentation, UInt8* outBuffer, CFIndex inMaxBufferLength,
                         CFIndex* outUsedBufferLength)
{
    constexpr const char* kCall = "CFStringGetBytes";
    std::u16string_view text = cf::Substring(cf::String(inString, kCall), inRange, kCall);
    Output output(outBuffer, inMaxBufferLength);
    CFIndex converted = 0;
    std::string bytes;
    if (cf::IsSupportedEncoding(inEncoding)) {
        // The mark comes from converting nothing in the external form.
        cf::Encode({}, inEncoding, 0, inIsExternalRepresentation, bytes);
        if (output.Write(bytes)) {
            // Whole at once in the usual case; piece by piece only to find where it stops.
            if (cf::Encode(text, inEncoding, inLossByte, false, bytes) && output.Write(bytes))
                converted = inRange.length;
            else
                converted = ConvertPiecewise(text, inEncoding, inLossByte, output);
        }
    }
    if (outUsedBufferLength)
        *outUsedBufferLength = output.Used();
    return converted;
}

CFDataRef CFStringCreateExternalRepresentation(CFAllocatorRef inAllocator, CFStringRef inString,
                                               CFStringEncoding inEncoding, UInt8 inLossByte)
{
    const __CFString& string = cf::String(inString, "CFStringCreateExternalRepresentation");
    std::string bytes;
    if (!cf::Encode(string.View(), inEncoding, inLossByte, true, bytes))
        return nullptr;
    return CFDataCreate(inAllocator, reinterpret_cast<const UInt8*>(bytes.data()), CFIndex(bytes.size()));
}

CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef inAllocator, CFDataRef inData,
                                                     CFStringEncoding inEncoding)
{
    return CFStringCreateWithBytes(inAllocator, CFDataGetBytePtr(inData), CFDataGetLength(inData), inEncoding, true);
}
