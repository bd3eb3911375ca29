// The byte buffer from arbitrary input, under AddressSanitizer: hexadecimal text turned into
// bytes in place, and a copy clipped at the end of the contents. Any read or write outside a
// block, or a broken invariant, ends the run.
#include <utils/BytesBubble.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void Require(bool inCondition)
{
    if (!inCondition)
        std::abort();
}

void RequireTrailingZeros(const kvx::BytesBubble& inBubble)
{
    Require(inBubble.ptr()[inBubble.sizeInBytes()] == 0 && inBubble.ptr()[inBubble.sizeInBytes() + 1] == 0);
}

int HexDigit(unsigned char inChar)
{
    if (!std::isxdigit(inChar))
        return -1;
    return std::isdigit(inChar) ? inChar - '0' : std::tolower(inChar) - 'a' + 10;
}

// The whole input as text: half its size afterwards, every pair of two true digits giving
// their value, and the bytes printed as hexadecimal reading back as themselves.
void ParseText(const uint8_t* inData, size_t inSize)
{
    kvx::BytesBubble text(inData, inSize);
    text.parseCharsAsHexDigits();
    Require(text.sizeInBytes() == inSize / 2);
    RequireTrailingZeros(text);
    for (size_t p = 0; p + 1 < inSize; p += 2)
        if (HexDigit(inData[p]) >= 0 && HexDigit(inData[p + 1]) >= 0)
            Require(text.ptr()[p / 2] == HexDigit(inData[p]) * 16 + HexDigit(inData[p + 1]));

    const kvx::BytesBubble bytes(inData, inSize);
    const std::string hex = bytes.hexStr();
    kvx::BytesBubble again(reinterpret_cast<const unsigned char*>(hex.data()), hex.size());
    again.parseCharsAsHexDigits();
    Require(again.sizeInBytes() == inSize && std::memcmp(again.ptr(), inData, inSize) == 0);
}

// A header picks the buffer size, the length asked for (its top bit makes it enormous) and an
// offset within the contents; the source holds only what the clip should let through.
void CopyClipped(const uint8_t* inData, size_t inSize)
{
    if (inSize < 4)
        return;
    const unsigned long size = inData[0];
    const unsigned int offset = inData[1] % (size + 1);
    unsigned long length = inData[2];
    if (inData[3] & 0x80)
        length = ~0UL - length;
    const size_t copied = std::min<unsigned long>(length, size - offset);

    std::vector<unsigned char> start(size, 0xA5);
    kvx::BytesBubble bubble(start.data(), size);
    std::vector<unsigned char> source(copied);
    for (size_t i = 0; i < copied; ++i)
        source[i] = inSize > 4 ? inData[4 + i % (inSize - 4)] : 0x5A;
    bubble.copy(source.data(), length, offset);

    std::vector<unsigned char> expected = start;
    std::copy(source.begin(), source.end(), expected.begin() + offset);
    Require(std::memcmp(bubble.ptr(), expected.data(), size) == 0);
    RequireTrailingZeros(bubble);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* inData, size_t inSize)
{
    ParseText(inData, inSize);
    CopyClipped(inData, inSize);
    return 0;
}
