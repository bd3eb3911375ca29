// CRC-32 against zlib's crc32 (the checksum it must equal, bit for bit) and the byte-order swaps.
#include <utils/KvxUtils.h>

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

std::vector<unsigned char> RandomBytes(std::size_t inCount)
{
    std::mt19937 generator(inCount);
    std::vector<unsigned char> bytes(inCount);
    for (auto& byte : bytes)
        byte = static_cast<unsigned char>(generator());
    return bytes;
}

unsigned long Zlib(const unsigned char* inData, std::size_t inLength) { return crc32_z(0, inData, inLength); }

// The fast path reads in wide blocks, so every head alignment and tail length must agree.
TEST(CRC, EqualsZlibAtEveryLengthAndAlignment)
{
    const kvx::CRC crc;
    const std::vector<unsigned char> bytes = RandomBytes(4096 + 64);
    for (std::size_t alignment = 0; alignment < 64; ++alignment)
        for (std::size_t length = 0; length <= 4096; ++length) {
            const unsigned char* data = bytes.data() + alignment;
            if (crc.getCRC(data, length) != Zlib(data, length))
                FAIL() << "length " << length << " at alignment " << alignment;
        }
    for (std::size_t length = 0; length <= 4096; ++length)
        ASSERT_EQ(crc.getTableCRC(bytes.data(), length), Zlib(bytes.data(), length)) << "table, length " << length;

    const std::vector<unsigned char> large = RandomBytes(64 << 20);
    EXPECT_EQ(crc.getCRC(large.data(), large.size()), Zlib(large.data(), large.size()));
    EXPECT_EQ(crc.getTableCRC(large.data(), large.size()), Zlib(large.data(), large.size()));
}

TEST(CRC, KnownValuesAndNullInputs)
{
    const kvx::CRC crc;
    const kvx::CRC copied = crc;
    const unsigned char digits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(crc.getCRC(digits, 9), 0xCBF43926UL);
    EXPECT_EQ(copied.getTableCRC(digits, 9), 0xCBF43926UL);
    EXPECT_EQ(crc.getCRC(digits, 0), 0UL);

    const unsigned char bigEndianA[] = {0x00, 0x00, 0x00, 0x41};
    const wchar_t wideA = L'A';
    EXPECT_EQ(crc.getCRC(&wideA, 1), crc.getCRC(bigEndianA, 4));

    EXPECT_EQ(crc.getCRC(static_cast<const unsigned char*>(nullptr), 16), 0UL);
    EXPECT_EQ(crc.getTableCRC(nullptr, 16), 0UL);
    EXPECT_EQ(crc.getCRC(static_cast<const wchar_t*>(nullptr), 16), 0UL);
}

// Wide text goes through a stack buffer in pieces: counts around the piece size catch a
// checksum that is not carried over, or a piece that is lost or doubled.
TEST(CRC, WideTextIsItsBigEndianBytesAndStaysUntouched)
{
    const kvx::CRC crc;
    for (std::size_t count : {0u, 1u, 1023u, 1024u, 1025u, 2048u, 4099u}) {
        std::mt19937 generator(count);
        std::vector<wchar_t> text(count);
        std::vector<unsigned char> bigEndian;
        for (wchar_t& character : text) {
            std::uint32_t value = generator();
            character = wchar_t(value);
            for (int shift : {24, 16, 8, 0})
                bigEndian.push_back(static_cast<unsigned char>(value >> shift));
        }
        const std::vector<wchar_t> original = text;
        EXPECT_EQ(crc.getCRC(text.data(), count), Zlib(bigEndian.data(), bigEndian.size())) << count << " characters";
        EXPECT_EQ(text, original);
    }
}

TEST(ByteOrder, SwapsEachGroupInPlace)
{
    unsigned char words[] = {0xEE, 1, 2, 3, 4, 5, 6, 7, 8, 0xEE};
    kvx::swap32(words + 1, 2);  // groups need not be aligned
    EXPECT_EQ(std::vector<unsigned char>(words, words + 10),
              (std::vector<unsigned char>{0xEE, 4, 3, 2, 1, 8, 7, 6, 5, 0xEE}));

    unsigned char halves[] = {1, 2, 3, 4, 5};
    kvx::swap16(halves, 2);
    EXPECT_EQ(std::vector<unsigned char>(halves, halves + 5), (std::vector<unsigned char>{2, 1, 4, 3, 5}));
    kvx::swap16(halves, 0);
    kvx::swap32(halves, 0);
    EXPECT_EQ(std::vector<unsigned char>(halves, halves + 5), (std::vector<unsigned char>{2, 1, 4, 3, 5}));
}

}  // namespace
