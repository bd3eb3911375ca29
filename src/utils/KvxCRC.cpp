// CRC-32 checksums of bytes and of wide text, and in-place byte-order reversal.
#include <utils/KvxUtils.h>

#include <utils/CRCEngine.h>

#include <array>
#include <bit>
#include <cstring>

namespace kvx {

namespace {

constexpr std::uint32_t kReflectedPolynomial = 0xEDB88320;

// Wide text is checksummed through a stack buffer of this many characters at a time: small
// enough to stay in the first-level cache between the reordering and the checksum, large
// enough that the engine's per-call setup is lost in the noise.
using WideChunk = std::array<std::uint32_t, 1024>;

static_assert(sizeof(wchar_t) == 4, "wide text is checksummed as 32-bit characters");

constexpr std::uint32_t ByteSwap32(std::uint32_t inValue)
{
    return (inValue >> 24) | ((inValue >> 8) & 0xFF00) | ((inValue << 8) & 0xFF0000) | (inValue << 24);
}

constexpr std::uint16_t ByteSwap16(std::uint16_t inValue) { return std::uint16_t((inValue >> 8) | (inValue << 8)); }

// The value of a character as the big-endian processor would store it in memory.
constexpr std::uint32_t BigEndianOrder(std::uint32_t inValue)
{
    if constexpr (std::endian::native == std::endian::big)
        return inValue;
    else
        return ByteSwap32(inValue);
}

void ReorderCharacters(const wchar_t* inText, std::uint32_t* outWords, std::size_t inCount)
{
    for (std::size_t i = 0; i < inCount; ++i)
        outWords[i] = BigEndianOrder(std::uint32_t(inText[i]));
}

// With the count fixed, the compiler vectorises the loop at the ordinary optimisation level;
// the AVX2 copy, chosen at load time where the processor has it, reorders eight characters
// per byte shuffle and keeps the wide checksum close to the byte checksum's speed.
#if defined(__x86_64__)
[[gnu::target_clones("arch=x86-64-v4", "avx2", "default")]]
#endif
void ReorderWholeChunk(const wchar_t* inText, WideChunk& outChunk)
{
    ReorderCharacters(inText, outChunk.data(), outChunk.size());
}

// Through memcpy, because the groups need not be aligned for their integer type.
template <class Word, Word (*Swap)(Word)>
void SwapGroups(unsigned char* ioBuffer, unsigned long inCount)
{
    for (unsigned long group = 0; group < inCount; ++group) {
        unsigned char* at = ioBuffer + group * sizeof(Word);
        Word word;
        std::memcpy(&word, at, sizeof word);
        word = Swap(word);
        std::memcpy(at, &word, sizeof word);
    }
}

}  // namespace

CRC::CRC()
{
    for (std::uint32_t n = 0; n < 256; ++n) {
        std::uint32_t c = n;
        for (int bit = 0; bit < 8; ++bit)
            c = (c & 1) ? (c >> 1) ^ kReflectedPolynomial : c >> 1;
        crcTable[n] = c;
    }
}

std::uint32_t CRC::updateWithTable(std::uint32_t inCRC, const unsigned char* inData, std::uint64_t inLength) const
{
    std::uint32_t r = ~inCRC;
    for (std::uint64_t i = 0; i < inLength; ++i)
        r = (r >> 8) ^ crcTable[(r ^ inData[i]) & 0xFF];
    return ~r;
}

std::uint32_t CRC::update(std::uint32_t inCRC, const unsigned char* inData, std::uint64_t inLength) const
{
    if (crc_engine::Available())
        return crc_engine::Update(inCRC, inData, inLength);
    return updateWithTable(inCRC, inData, inLength);
}

unsigned long CRC::getCRC(const unsigned char* inData, unsigned long inLength) const
{
    return inData ? update(0, inData, inLength) : 0;
}

unsigned long CRC::getTableCRC(const unsigned char* inData, unsigned long inLength) const
{
    return inData ? updateWithTable(0, inData, inLength) : 0;
}

unsigned long CRC::getCRC(const wchar_t* inText, unsigned long inCount) const
{
    if (inText == nullptr)
        return 0;
    if constexpr (std::endian::native == std::endian::big)
        return update(0, reinterpret_cast<const unsigned char*>(inText), std::uint64_t(inCount) * 4);

    // The caller's text stays untouched and nothing goes to the heap: each piece is reordered
    // into a buffer on the stack and checksummed there, the checksum carried from piece to piece.
    WideChunk chunk;
    std::uint32_t crc = 0;
    unsigned long done = 0;
    for (; inCount - done >= chunk.size(); done += chunk.size()) {
        ReorderWholeChunk(inText + done, chunk);
        crc = update(crc, reinterpret_cast<const unsigned char*>(chunk.data()), sizeof chunk);
    }
    if (const std::size_t rest = inCount - done; rest > 0) {
        ReorderCharacters(inText + done, chunk.data(), rest);
        crc = update(crc, reinterpret_cast<const unsigned char*>(chunk.data()), rest * sizeof chunk[0]);
    }
    return crc;
}

void swap32(unsigned char* ioBuffer, unsigned long inCount)
{
    SwapGroups<std::uint32_t, ByteSwap32>(ioBuffer, inCount);
}

void swap16(unsigned char* ioBuffer, unsigned long inCount)
{
    SwapGroups<std::uint16_t, ByteSwap16>(ioBuffer, inCount);
}

}  // namespace kvx
