// The byte buffer: allocation with two trailing zeros, copies, hexadecimal in and out, and
// the clock-seeded random fill.
#include <utils/BytesBubble.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace kvx {

namespace {

// Every block is two bytes longer than its contents, for the terminating zeros.
constexpr unsigned long kTrailingZeros = 2;
// The shortest buffer that holds a number as text.
constexpr unsigned long kMinimumNumberSize = 8;

constexpr char kHexDigits[] = "0123456789abcdef";

unsigned char* Allocate(unsigned long inSize)
{
    return static_cast<unsigned char*>(std::malloc(inSize + kTrailingZeros));
}

void Terminate(unsigned char* ioBytes, unsigned long inSize)
{
    ioBytes[inSize] = 0;
    ioBytes[inSize + 1] = 0;
}

}  // namespace

BytesBubble::BytesBubble(unsigned long inSize) : _size(inSize), _bytes(Allocate(inSize))
{
    for (unsigned long i = 0; i < _size; i += sizeof(int)) {
        // Reseeding before every draw is what callers have always got: a buffer made within
        // one second repeats one four-byte group, and equals any other made in that second.
        std::srand(unsigned(std::time(nullptr)));
        int draw = std::rand();
        std::memcpy(_bytes + i, &draw, std::min<unsigned long>(sizeof draw, _size - i));
    }
    Terminate(_bytes, _size);
}

BytesBubble::BytesBubble(const unsigned char* inBytes, unsigned long inSize) : _size(inSize), _bytes(Allocate(inSize))
{
    std::memcpy(_bytes, inBytes, _size);
    Terminate(_bytes, _size);
}

BytesBubble::BytesBubble(unsigned long inValue, unsigned long inSize)
    : _size(std::max(inSize, kMinimumNumberSize)), _bytes(Allocate(_size))
{
    std::memset(_bytes, 0, _size + kTrailingZeros);
    std::snprintf(reinterpret_cast<char*>(_bytes), _size + 1, "%lx", inValue);
}

BytesBubble::BytesBubble(const BytesBubble& inOther) : _size(inOther._size), _bytes(Allocate(_size))
{
    std::memcpy(_bytes, inOther._bytes, _size + kTrailingZeros);
}

BytesBubble& BytesBubble::operator=(const BytesBubble& inOther)
{
    // The old block is deliberately not freed (see the declaration): pointers into it that
    // callers still hold stay readable.
    _size = inOther._size;
    _bytes = Allocate(_size);
    std::memcpy(_bytes, inOther._bytes, _size + kTrailingZeros);
    return *this;
}

BytesBubble::~BytesBubble() { std::free(_bytes); }

void BytesBubble::reset(unsigned long inSize, const unsigned char* inBytes)
{
    std::free(_bytes);
    _bytes = Allocate(inSize);
    _size = inSize;
    if (inBytes) {
        std::memcpy(_bytes, inBytes, _size);
        Terminate(_bytes, _size);
    } else {
        std::memset(_bytes, 0, _size + kTrailingZeros);
    }
}

void BytesBubble::copy(const unsigned char* inSrc, unsigned long inLength, unsigned int inOffset)
{
    // Compared against the room left rather than as offset + length, so that no length,
    // however large, can wrap around past the clip.
    unsigned long room = _size - inOffset;
    std::memcpy(_bytes + inOffset, inSrc, std::min(inLength, room));
}

std::string BytesBubble::hexStr() const
{
    std::string text;
    text.reserve(2 * _size);
    for (unsigned long i = 0; i < _size; ++i) {
        text.push_back(kHexDigits[_bytes[i] >> 4]);
        text.push_back(kHexDigits[_bytes[i] & 0xF]);
    }
    return text;
}

void BytesBubble::printBytesAsHex(const unsigned char* inBytes, int inCount)
{
    for (int i = 0; i < inCount; ++i)
        std::fprintf(stderr, "%02x", inBytes[i]);
    std::fputc('\n', stderr);
}

void BytesBubble::parseCharsAsHexDigits()
{
    const unsigned long length = _size;
    _size = length / 2;
    // Each byte lands at half the position of its pair, never ahead of text still to be read.
    for (unsigned long p = 0; p + 1 < length; p += 2) {
        const char pair[] = {char(_bytes[p]), char(_bytes[p + 1]), '\0'};
        _bytes[p / 2] = static_cast<unsigned char>(std::strtol(pair, nullptr, 16));
    }
    Terminate(_bytes, _size);
}

}  // namespace kvx
