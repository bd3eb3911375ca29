// CRC-32 against zlib's crc32 (the checksum it must equal, bit for bit) and the byte-order swaps.
#include <utils/KvxUtils.h>

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes RandomBytes(std::size_t inCount)
{
    std::independent_bits_engine<std::mt19937, 8, unsigned> generator{unsigned(inCount)};
    Bytes bytes(inCount);
    std::generate(bytes.begin(), bytes.end(), generator);
    return bytes;
}

unsigned long Zlib(const Bytes& inBytes) { return crc32_z(0, inBytes.data(), inBytes.size()); }

// The fast path reads in wide blocks, so every head alignment and tail length must agree.
TEST(CRC, EqualsZlibAtEveryLengthAndAlignment)
{
    const kvx::CRC crc;
    const Bytes bytes = RandomBytes(4096 + 64);
    for (std::size_t alignment = 0; alignment < 64; ++alignment)
        for (std::size_t length = 0; length <= 4096; ++length) {
            const unsigned char* data = bytes.data() + alignment;
            if (crc.getCRC(data, length) != crc32_z(0, data, length))
                FAIL() << "length " << length << " at alignment " << alignment;
        }
    for (std::size_t length = 0; length <= 4096; ++length)
        ASSERT_EQ(crc.getTableCRC(bytes.data(), length), crc32_z(0, bytes.data(), length)) << "table, " << length;

    const Bytes large = RandomBytes(64 << 20);
    EXPECT_EQ(crc.getCRC(large.data(), large.size()), Zlib(large));
    EXPECT_EQ(crc.getTableCRC(large.data(), large.size()), Zlib(large));
}

// Wide text goes through a stack buffer in pieces: counts around the piece size catch a
// checksum that is not carried over, or a piece that is lost or doubled.
TEST(CRC, WideTextKnownValuesAndNullInputs)
{
    const kvx::CRC crc, copied = crc;
    const unsigned char digits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(crc.getCRC(digits, 9), 0xCBF43926UL);
    EXPECT_EQ(copied.getTableCRC(digits, 9), 0xCBF43926UL);
    const wchar_t wideA = L'A';
    EXPECT_EQ(crc.getCRC(&wideA, 1), Zlib({0, 0, 0, 0x41}));
    EXPECT_EQ(crc.getCRC(static_cast<const unsigned char*>(nullptr), 16), 0UL);
    EXPECT_EQ(crc.getCRC(static_cast<const wchar_t*>(nullptr), 16), 0UL);

    for (std::size_t count : {0u, 1023u, 1024u, 1025u, 4099u}) {
        const Bytes bigEndian = RandomBytes(4 * count);
        std::vector<wchar_t> text(count);
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t byte = 4 * i; byte < 4 * i + 4; ++byte)
                text[i] = wchar_t(std::uint32_t(text[i]) << 8 | bigEndian[byte]);
        const std::vector<wchar_t> original = text;
        EXPECT_EQ(crc.getCRC(text.data(), count), Zlib(bigEndian)) << count << " characters";
        EXPECT_EQ(text, original);
    }
}

TEST(ByteOrder, SwapsEachGroupInPlace)
{
    Bytes words = {0xEE, 1, 2, 3, 4, 5, 6, 7, 8, 0xEE};
    kvx::swap32(words.data() + 1, 2);  // groups need not be aligned
    EXPECT_EQ(words, (Bytes{0xEE, 4, 3, 2, 1, 8, 7, 6, 5, 0xEE}));

    Bytes halves = {1, 2, 3, 4, 5};
    kvx::swap16(halves.data(), 2);
    kvx::swap16(halves.data(), 0);
    kvx::swap32(halves.data(), 0);
    EXPECT_EQ(halves, (Bytes{2, 1, 4, 3, 5}));
}

}  // namespace
