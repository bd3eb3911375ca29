// Conversion between UTF-16 text and the byte encodings that strings are created from or
// written to.
#pragma once

#include <CoreFoundation/CFString.h>

#include <unicode/utf16.h>

#include <span>
#include <string>
#include <string_view>

namespace cf {

bool IsSupportedEncoding(CFStringEncoding inEncoding);

// Decodes bytes into UTF-16. With inExternal, a leading byte-order mark of a UTF-16 or UTF-32
// text chooses the byte order and is dropped, and one of a UTF-8 text is dropped. False when
// the bytes are not valid in the encoding (nothing useful is left in outText then).
bool Decode(std::span<const UInt8> inBytes, CFStringEncoding inEncoding, bool inExternal, std::u16string& outText);

// Encodes UTF-16 into bytes. A character the encoding cannot represent becomes inLossByte,
// or makes the call fail when inLossByte is 0. With inExternal, UTF-16 and UTF-32 output
// starts with a byte-order mark.
bool Encode(std::u16string_view inText, CFStringEncoding inEncoding, UInt8 inLossByte, bool inExternal,
            std::string& outBytes);

// The largest number of bytes one UTF-16 unit can need in the encoding.
CFIndex MaxBytesPerUnit(CFStringEncoding inEncoding);

// The UTF-16 units of the character at inText[inAt]: two for a surrogate pair, else one, so
// that a character is never split between two conversions.
inline std::size_t CharacterLength(std::u16string_view inText, std::size_t inAt)
{
    return U16_IS_LEAD(inText[inAt]) && inAt + 1 < inText.size() && U16_IS_TRAIL(inText[inAt + 1]) ? 2 : 1;
}

}  // namespace cf
