// Steps between Unicode scalar values and their UTF-8 and UTF-16 units, for every part of the
// port that converts text by hand (file names, property lists, Apple event text, formatting).
// The arithmetic is ICU's; only the shapes our callers want are added here.
#pragma once

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace port {

// Appends a scalar value (not a surrogate, at most U+10FFFF) as one or two UTF-16 units.
template <class Units>
void AppendUTF16(Units& ioUnits, char32_t inScalar)
{
    if (U_IS_BMP(inScalar)) {
        ioUnits.push_back(char16_t(inScalar));
    } else {
        ioUnits.push_back(U16_LEAD(inScalar));
        ioUnits.push_back(U16_TRAIL(inScalar));
    }
}

// Appends a scalar value as one to four UTF-8 bytes to a string or a byte vector.
template <class Bytes>
void AppendUTF8(Bytes& ioBytes, char32_t inScalar)
{
    uint8_t bytes[U8_MAX_LENGTH];
    int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, inScalar);
    ioBytes.insert(ioBytes.end(), bytes, bytes + length);
}

struct UTF8Step {
    char32_t scalar = 0;
    // 0 when the bytes do not start with a well-formed sequence.
    std::size_t length = 0;
};

// The scalar value that the bytes start with. Overlong forms, encoded surrogates, values past
// U+10FFFF and cut sequences are not well-formed.
inline UTF8Step NextUTF8(std::string_view inBytes)
{
    if (inBytes.empty())
        return {};
    const auto* bytes = reinterpret_cast<const uint8_t*>(inBytes.data());
    int32_t length = int32_t(std::min<std::size_t>(inBytes.size(), U8_MAX_LENGTH));
    int32_t at = 0;
    UChar32 scalar = 0;
    U8_NEXT(bytes, at, length, scalar);
    if (scalar < 0)
        return {};
    return {char32_t(scalar), std::size_t(at)};
}

}  // namespace port
