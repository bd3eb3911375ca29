// Text helpers shared by the whole product: narrow, wide and big-endian UTF-16 text,
// trimming, file names out of paths, and strict decimal parsing.
#pragma once

#include <string>

namespace kvx {

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
