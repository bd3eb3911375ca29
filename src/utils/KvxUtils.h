// Utilities shared by the whole product: the CRC-32 checksum and byte-order reversal, and the
// text helpers (narrow, wide and big-endian UTF-16 text, trimming, file names out of paths,
// strict decimal parsing).
#pragma once

#include <cstdint>
#include <string>

namespace kvx {

// The CRC-32 of IEEE 802.3, the checksum of zlib and PNG (reflected polynomial 0xEDB88320,
// register starting at all ones, complemented at the end). The table is built once, by the
// constructor; the checksums run on a library's carry-less-multiplication folding when the
// build has one, and on the table otherwise.
class CRC {
public:
    // A byte-order routine of the shape of swap32 and swap16.
    using swapFunction = void (*)(unsigned char* ioBuffer, unsigned long inCount);

    CRC();

    // The checksum of inLength bytes; 0 for a null inData.
    unsigned long getCRC(const unsigned char* inData, unsigned long inLength) const;
    // The checksum of inCount wide characters taken as 32-bit big-endian values, so that a
    // text has the same checksum on every processor. inText is left as it is; 0 when null.
    unsigned long getCRC(const wchar_t* inText, unsigned long inCount) const;
    // The same checksum as getCRC, one byte at a time through the table: the definition the
    // fast path must agree with.
    unsigned long getTableCRC(const unsigned char* inData, unsigned long inLength) const;

private:
    // Continues a running checksum the way zlib's crc32 does: 0 starts one, and a previous
    // result continues it over the next piece.
    std::uint32_t update(std::uint32_t inCRC, const unsigned char* inData, std::uint64_t inLength) const;
    std::uint32_t updateWithTable(std::uint32_t inCRC, const unsigned char* inData, std::uint64_t inLength) const;

    std::uint32_t crcTable[256];
};

// Reverses, in place, the byte order of each of inCount consecutive 4-byte groups (inCount
// counts groups, not bytes), on every processor.
void swap32(unsigned char* ioBuffer, unsigned long inCount);
// The same for inCount 2-byte groups.
void swap16(unsigned char* ioBuffer, unsigned long inCount);

// Passed as the second argument of Convert to ask for the result type they point to;
// only their type matters, the value is never read.
inline constexpr const std::string* kToStdString = nullptr;
inline constexpr const std::wstring* kToStdWString = nullptr;

// One wide character per byte, sign-extended: a byte 0xE9 becomes 0xFFFFFFE9. No character
// set is involved, so the bytes come back unchanged through the narrowing Convert.
std::wstring Convert(const std::string& inText, const std::wstring* inTag);
// One byte per wide character: its low eight bits.
std::string Convert(const std::wstring& inText, const std::string* inTag);

// The C locale's multibyte form of inText, in a buffer of inText.length() + 1 bytes: a
// longer multibyte form is cut at the last whole character that fits.
std::string conv_string_W2S(const std::wstring& inText);
// The C locale's wide form of inText.
std::wstring conv_string_S2W(const std::string& inText);

// inText without leading and trailing blanks (the classic locale's white space). The
// forward scan never looks at the last character, so a lone character survives unless
// it is itself blank.
template <class Char>
std::basic_string<Char> Trim(const std::basic_string<Char>& inText);

extern template std::string Trim<char>(const std::string&);
extern template std::wstring Trim<wchar_t>(const std::wstring&);

// The decimal value of inText. Leading blanks and one sign are accepted, overflow is not
// detected; anything else left over, or an empty text, throws std::domain_error.
long ConvertToLong(const std::wstring& inText);

// Replaces outText by inCount big-endian 16-bit units of inData, one wide character each;
// surrogate pairs stay two characters. Answers 0.
int ConvertUTF16BEToWstring(const unsigned char* inData, unsigned long inCount, std::wstring& outText);

// The part of inPath after its last character that is one of inDelimiters; the whole
// path when it has none.
std::wstring ExtractFilenameFromPath(const std::wstring& inPath, const std::wstring& inDelimiters);

}  // namespace kvx
