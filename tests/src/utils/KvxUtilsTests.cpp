// Text helpers: widening and narrowing, locale conversion limits, trimming, parsing,
// UTF-16 input and file names.
#include <utils/KvxUtils.h>

#include <gmock/gmock.h>

#include <climits>
#include <clocale>
#include <stdexcept>
#include <string>

namespace {

using kvx::kToStdString;
using kvx::kToStdWString;

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
    const std::string previous = std::setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);

    EXPECT_EQ(kvx::conv_string_W2S(L"a\u00E9"), "a\xC3\xA9");      // 3 bytes fit in 2 + 1
    EXPECT_EQ(kvx::conv_string_W2S(L"\u00E9"), "\xC3\xA9");        // fills the buffer exactly
    EXPECT_EQ(kvx::conv_string_W2S(L"\u00E9\u00E9"), "\xC3\xA9");  // the second would need bytes 3 and 4
    EXPECT_EQ(kvx::conv_string_W2S(L"\u20AC"), "");                // 3 bytes never fit in 2
    EXPECT_EQ(kvx::conv_string_S2W("a\xC3\xA9\xE2\x82\xAC"), L"a\u00E9\u20AC");
    std::setlocale(LC_CTYPE, previous.c_str());
}

TEST(KvxTrim, RemovesBlanksAtBothEndsOnly)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", ""}, {"x", "x"}, {" ", ""}, {"    ", ""}, {"   y", "y"}, {"\t\n\v\f\r a b \r\n", "a b"},
    };
    for (const auto& [text, trimmed] : cases)
        EXPECT_EQ(kvx::Trim(text), trimmed) << '"' << text << '"';
    EXPECT_EQ(kvx::Trim<wchar_t>(L"\t w \n"), L"w");
    EXPECT_EQ(kvx::Trim<wchar_t>(L"\n"), L"");
    EXPECT_EQ(kvx::Trim<wchar_t>(L"\u00E9"), L"\u00E9");
}

TEST(KvxConvertToLong, AcceptsOnlyAWholeDecimalNumber)
{
    EXPECT_EQ(kvx::ConvertToLong(L" -7"), -7);
    EXPECT_EQ(kvx::ConvertToLong(L"+5"), 5);
    EXPECT_EQ(kvx::ConvertToLong(L"99999999999999999999999"), LONG_MAX);  // clamped, not reported

    for (const wchar_t* bad : {L"", L"42 ", L"-", L" ", L"0x10", L"1.5"})
        EXPECT_THROW(kvx::ConvertToLong(bad), std::domain_error) << "input \"" << kvx::conv_string_W2S(bad) << '"';
    EXPECT_THROW(kvx::ConvertToLong(std::wstring(L"12\0"
                                                 L"3",
                                                 4)),
                 std::domain_error);
    EXPECT_THAT([] { kvx::ConvertToLong(L"12x"); },
                testing::ThrowsMessage<std::domain_error>(testing::AllOf(
                    testing::StartsWith("Error at "),
                    // The path is the one the compiler was given: absolute from CMake, relative
                    // when a compiler cache rewrites it.
                    testing::EndsWith(
                        "src/utils/KvxUtils.cpp: found invalid char while converting string 12x to long number."))));
}

TEST(KvxText, UTF16UnitsAndFileNames)
{
    const unsigned char bytes[] = {0x00, 0x41, 0xD8, 0x3D, 0xFF, 0xFE};
    std::wstring text = L"old";
    EXPECT_EQ(kvx::ConvertUTF16BEToWstring(bytes, 3, text), 0);
    EXPECT_EQ(text, (std::wstring{L'A', wchar_t(0xD83D), wchar_t(0xFFFE)})) << "one character per unit";
    EXPECT_EQ(kvx::ConvertUTF16BEToWstring(bytes, 0, text), 0);
    EXPECT_TRUE(text.empty());

    // What follows the last of any delimiter; the whole path without one.
    EXPECT_EQ(kvx::ExtractFilenameFromPath(L"/a/b.txt", L"/"), L"b.txt");
    EXPECT_EQ(kvx::ExtractFilenameFromPath(L"/a/", L"/"), L"");
    EXPECT_EQ(kvx::ExtractFilenameFromPath(L"b.txt", L"/"), L"b.txt");
    EXPECT_EQ(kvx::ExtractFilenameFromPath(L"a/b:c", L"/:"), L"c");
}

}  // namespace
