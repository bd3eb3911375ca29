// Narrow/wide/UTF-16 conversion, trimming, file names and strict number parsing.
#include <utils/KvxUtils.h>

#include <cstdlib>
#include <cwchar>
#include <locale>
#include <stdexcept>
#include <string_view>

namespace kvx {

namespace {

// Parse errors name the file they come from, exactly as the compiler spells its path. A
// build-machine path in a message is odd but intended: the message's form is fixed, and callers
// that match it expect this path, so do not swap it for a tidier name.
constexpr std::string_view kThisSourceFile = __FILE__;

// The text up to the first NUL of a conversion buffer; the whole buffer when the platform
// call filled it to the brim without terminating it.
template <class Char>
void CutAtTerminator(std::basic_string<Char>& ioBuffer)
{
    auto end = ioBuffer.find(Char());
    if (end != std::basic_string<Char>::npos)
        ioBuffer.resize(end);
}

}  // namespace

std::wstring Convert(const std::string& inText, const std::wstring*)
{
    std::wstring wide;
    wide.reserve(inText.size());
    // Through signed char, so that the widening is the same whatever the signedness of char.
    for (char byte : inText)
        wide.push_back(wchar_t(static_cast<signed char>(byte)));
    return wide;
}

std::string Convert(const std::wstring& inText, const std::string*)
{
    std::string narrow;
    narrow.reserve(inText.size());
    for (wchar_t character : inText)
        narrow.push_back(char(static_cast<unsigned char>(character & 0xFF)));
    return narrow;
}

std::string conv_string_W2S(const std::wstring& inText)
{
    // Callers rely on the limit of one byte per character (plus the terminator): text whose
    // multibyte form is longer comes back shortened, never longer than the buffer.
    std::string buffer(inText.length() + 1, '\0');
    std::wcstombs(buffer.data(), inText.c_str(), buffer.size());
    CutAtTerminator(buffer);
    return buffer;
}

std::wstring conv_string_S2W(const std::string& inText)
{
    std::wstring buffer(inText.length() + 1, L'\0');
    std::mbstowcs(buffer.data(), inText.c_str(), buffer.size());
    CutAtTerminator(buffer);
    return buffer;
}

template <class Char>
std::basic_string<Char> Trim(const std::basic_string<Char>& inText)
{
    const auto& classic = std::use_facet<std::ctype<Char>>(std::locale::classic());
    auto isBlank = [&classic](Char inChar) { return classic.is(std::ctype_base::space, inChar); };

    std::size_t first = 0;
    while (first + 1 < inText.length() && isBlank(inText[first]))
        ++first;
    std::size_t end = inText.length();
    while (end > first && isBlank(inText[end - 1]))
        --end;
    return inText.substr(first, end - first);
}

template std::string Trim<char>(const std::string&);
template std::wstring Trim<wchar_t>(const std::wstring&);

long ConvertToLong(const std::wstring& inText)
{
    wchar_t* end = nullptr;
    // Too many digits answer the clamped LONG_MAX or LONG_MIN, not an error: intended, so errno
    // is deliberately not looked at.
    long value = std::wcstol(inText.c_str(), &end, 10);
    if (!inText.empty() && end == inText.c_str() + inText.length())
        return value;

    std::string message = "Error at ";
    message += kThisSourceFile;
    message += ": found invalid char while converting ";
    message += "string ";
    message += conv_string_W2S(inText);
    message += " to long number.";
    throw std::domain_error(message);
}

int ConvertUTF16BEToWstring(const unsigned char* inData, unsigned long inCount, std::wstring& outText)
{
    outText.clear();
    outText.reserve(inCount);
    for (unsigned long unit = 0; unit < inCount; ++unit)
        outText.push_back(wchar_t(inData[2 * unit] * 256 + inData[2 * unit + 1]));
    return 0;
}

std::wstring ExtractFilenameFromPath(const std::wstring& inPath, const std::wstring& inDelimiters)
{
    std::size_t delimiter = inPath.find_last_of(inDelimiters);
    if (delimiter == std::wstring::npos)
        return inPath;
    return inPath.substr(delimiter + 1);
}

}  // namespace kvx
