// Text helpers: widening and narrowing, locale conversion limits, trimming, parsing,
// UTF-16 input and file names.
#include <utils/KvxUtils.h>

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <stdexcept>
#include <string>

namespace {

using kvx::kToStdString;
using kvx::kToStdWString;

// Switches the C locale's character type for one test and puts the previous one back.
class CharacterLocale {
public:
    explicit CharacterLocale(const char* inName) : mPrevious(std::setlocale(LC_CTYPE, nullptr))
    {
        mActive = std::setlocale(LC_CTYPE, inName) != nullptr;
    }
    ~CharacterLocale() { std::setlocale(LC_CTYPE, mPrevious.c_str()); }
    bool Active() const { return mActive; }

private:
    std::string mPrevious;
    bool mActive = false;
};

std::string ParseError(const std::wstring& inText)
{
    try {
        kvx::ConvertToLong(inText);
    } catch (const std::domain_error& error) {
        return error.what();
    }
    return "(no error)";
}

TEST(KvxConvert, WidensBySignExtensionAndNarrowsToTheLowByte)
{
    EXPECT_EQ(kvx::Convert(std::string("A\xE9"), kToStdWString), (std::wstring{L'A', wchar_t(0xFFFFFFE9)}));
    EXPECT_EQ(kvx::Convert(std::wstring{wchar_t(0x1E9), L'z'}, kToStdString), "\xE9z");

    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte.push_back(char(byte));
    EXPECT_EQ(kvx::Convert(kvx::Convert(everyByte, kToStdWString), kToStdString), everyByte);
}

TEST(KvxConvert, LocaleConversionKeepsOneBytePerCharacterPlusOne)
{
    CharacterLocale utf8("C.UTF-8");
    ASSERT_TRUE(utf8.Active());

    EXPECT_EQ(kvx::conv_string_W2S(L"a\u00E9"), "a\xC3\xA9");   // 3 bytes fit in 2 + 1
    EXPECT_EQ(kvx::conv_string_W2S(L"\u00E9"), "\xC3\xA9");     // fills the buffer exactly
    EXPECT_EQ(kvx::conv_string_W2S(L"\u00E9\u00E9"), "\xC3\xA9");  // the second would need bytes 3 and 4
    EXPECT_EQ(kvx::conv_string_W2S(L"\u20AC"), "");              // 3 bytes never fit in 2
    EXPECT_EQ(kvx::conv_string_W2S(L""), "");

    EXPECT_EQ(kvx::conv_string_S2W("a\xC3\xA9\xE2\x82\xAC"), L"a\u00E9\u20AC");
}

TEST(KvxTrim, RemovesBlanksAtBothEndsOnly)
{
    EXPECT_EQ(kvx::Trim(std::string()), "");
    EXPECT_EQ(kvx::Trim(std::string("  a  ")), "a");
    EXPECT_EQ(kvx::Trim(std::string("\t\n\v\f\r a b \r\n")), "a b");
    EXPECT_EQ(kvx::Trim(std::string("x")), "x");
    EXPECT_EQ(kvx::Trim(std::string(" ")), "");
    EXPECT_EQ(kvx::Trim(std::string("    ")), "");
    EXPECT_EQ(kvx::Trim(std::string("   y")), "y");

    EXPECT_EQ(kvx::Trim<wchar_t>(L"\t w \n"), L"w");
    EXPECT_EQ(kvx::Trim<wchar_t>(L"\n"), L"");
    EXPECT_EQ(kvx::Trim<wchar_t>(L"\u00E9"), L"\u00E9");
}

TEST(KvxConvertToLong, AcceptsOnlyAWholeDecimalNumber)
{
    EXPECT_EQ(kvx::ConvertToLong(L"42"), 42);
    EXPECT_EQ(kvx::ConvertToLong(L" -7"), -7);
    EXPECT_EQ(kvx::ConvertToLong(L"+5"), 5);
    EXPECT_EQ(kvx::ConvertToLong(L"99999999999999999999999"), LONG_MAX);  // clamped, not reported

    for (const wchar_t* bad : {L"", L"42 ", L"-", L" ", L"0x10", L"1.5"})
        EXPECT_THROW(kvx::ConvertToLong(bad), std::domain_error) << "input \"" << kvx::conv_string_W2S(bad) << '"';
    EXPECT_THROW(kvx::ConvertToLong(std::wstring(L"12\0" L"3", 4)), std::domain_error);

    EXPECT_EQ(ParseError(L"12x"), std::string("Error at ") + KVX_UTILS_SOURCE_PATH +
                                      ": found invalid char while converting string 12x to long number.");
}

TEST(KvxUTF16, EachBigEndianUnitBecomesOneCharacter)
{
    const unsigned char bytes[] = {0x00, 0x41, 0xD8, 0x3D, 0xFF, 0xFE};
    std::wstring text = L"old";
    EXPECT_EQ(kvx::ConvertUTF16BEToWstring(bytes, 3, text), 0);
    EXPECT_EQ(text, (std::wstring{L'A', wchar_t(0xD83D), wchar_t(0xFFFE)}));

    EXPECT_EQ(kvx::ConvertUTF16BEToWstring(bytes, 0, text), 0);
    EXPECT_TRUE(text.empty());
}

TEST(KvxFileName, TakesWhatFollowsTheLastDelimiter)
{
    EXPECT_EQ(kvx::ExtractFilenameFromPath(L"/a/b.txt", L"/"), L"b.txt");
    EXPECT_EQ(kvx::ExtractFilenameFromPath(L"/a/", L"/"), L"");
    EXPECT_EQ(kvx::ExtractFilenameFromPath(L"b.txt", L"/"), L"b.txt");
    EXPECT_EQ(kvx::ExtractFilenameFromPath(L"a/b:c", L"/:"), L"c");
    EXPECT_EQ(kvx::ExtractFilenameFromPath(L"a:b/c", L"/:"), L"c");
}

}  // namespace
