// An owned block of bytes on the C heap, always followed by two zero bytes so that its
// contents can be read as a NUL-terminated narrow or 16-bit string.
#pragma once

#include <string>

namespace kvx {

class BytesBubble {
public:
    // inSize bytes from the C library's generator, reseeded from the clock (in seconds) before
    // every four-byte draw: the groups of one buffer are normally all equal.
    explicit BytesBubble(unsigned long inSize);
    // A copy of inSize bytes at inBytes, which must hold that many.
    BytesBubble(const unsigned char* inBytes, unsigned long inSize);
    // inValue as lower-case hexadecimal text, in a buffer of inSize bytes (at least 8) that
    // the text's zero bytes fill up: the size is the buffer's, not the text's.
    BytesBubble(unsigned long inValue, unsigned long inSize);

    BytesBubble(const BytesBubble& inOther);
    // Takes a fresh copy of inOther's block and does NOT release the block held before: code
    // that still reads through a pointer it took from ptr() keeps valid memory. That block is
    // leaked, on purpose. Assigning an object to itself is not supported.
    BytesBubble& operator=(const BytesBubble& inOther);
    virtual ~BytesBubble();

    unsigned char* ptr() { return _bytes; }
    const unsigned char* ptr() const { return _bytes; }
    unsigned long sizeInBytes() const { return _size; }
    // Declared for callers that never came; it has no definition.
    void zero();

    // Replaces the block by inSize bytes copied from inBytes, or by zeros when inBytes is null.
    void reset(unsigned long inSize, const unsigned char* inBytes);
    // Copies inLength bytes of inSrc to inOffset, clipped at the end of the contents: the
    // block never grows. inOffset must not be beyond the end.
    void copy(const unsigned char* inSrc, unsigned long inLength, unsigned int inOffset);

    // The contents as lower-case hexadecimal, two digits per byte.
    std::string hexStr() const;
    // Writes inCount bytes as hexadecimal to standard error, then a line feed.
    static void printBytesAsHex(const unsigned char* inBytes, int inCount);

    // Reads the contents as hexadecimal text and replaces them, in place, by the bytes it
    // spells: each pair goes through strtol, so a pair with a bad digit still gives a value
    // (7g is 7, g7 is 0, -1 is 0xFF) and an odd last character is dropped. Never fails.
    void parseCharsAsHexDigits();

private:
    unsigned long _size;
    unsigned char* _bytes;
};

}  // namespace kvx
