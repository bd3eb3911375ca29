#include "platform/Mac/utils/MacKvxUtils.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

using namespace std::string_literals;

Gx::CFString Text(const char* inUTF8) { return Gx::CFString(inUTF8, kCFStringEncodingUTF8); }

// The system encoding is fixed when a process first asks for it. A test that needs a
// single-byte one runs again, alone, in a new copy of this program under the C locale (whose
// system encoding is Mac Roman), and answers whether it passed there.
bool PassesUnderTheCLocale()
{
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string command = "LC_ALL=C LANG=C '" + std::filesystem::read_symlink("/proc/self/exe").string() +
                          "' --gtest_filter="s + test->test_suite_name() + "." + test->name();
    return std::system(command.c_str()) == 0;
}

TEST(MacKvxStrings, ConvCF2SGivesTheLengthPlusOneAndConvertIsLenient)
{
    EXPECT_EQ(kvx::conv_string_CF2S(CFSTR("direct"), kCFStringEncodingUTF8), "direct");
    EXPECT_EQ(kvx::conv_string_CF2S(Text("made at run time"), kCFStringEncodingUTF8), "made at run time");
    // One UTF-16 unit that is one byte in Latin 1 fits; two bytes in UTF-8 do not.
    EXPECT_EQ(kvx::conv_string_CF2S(Text("caf\u00E9"), kCFStringEncodingISOLatin1), "caf\xE9");
    EXPECT_THAT([] { kvx::conv_string_CF2S(Text("caf\u00E9"), kCFStringEncodingUTF8); },
                testing::ThrowsMessage<std::logic_error>(testing::StrEq("Error converting CFString to std::string.")))
        << "a UTF-8 form longer than the length must not convert";

    // Convert, unlike it, is lenient.
    Gx::CFString empty = kvx::Convert(std::wstring(), kvx::kToCFString);
    ASSERT_TRUE(empty.IsValid()) << "an empty platform string, not an empty wrapper";
    EXPECT_EQ(empty.GetLength(), 0);
    EXPECT_TRUE(kvx::Convert(std::wstring(L"Spindeck 2"), kvx::kToCFString) == CFSTR("Spindeck 2"));

    EXPECT_EQ(kvx::Convert(CFStringRef(nullptr), kvx::kToStdString), "");
    EXPECT_EQ(kvx::Convert(Text("plain"), kvx::kToStdString), "plain");
    // No system encoding holds these in one byte each: nothing converts, the length stays.
    EXPECT_EQ(kvx::Convert(Text("\u4E2D\u6587"), kvx::kToStdString), "\0\0"s);
}

TEST(MacKvxStrings, WideConvertSignExtendsTheSystemEncodingsBytes)
{
    CFStringEncoding system = CFStringGetSystemEncoding();
    if (system == kCFStringEncodingUTF8) {
        ASSERT_STRNE(std::getenv("LC_ALL"), "C") << "the C locale did not give a single-byte encoding";
        EXPECT_TRUE(PassesUnderTheCLocale());
        return;
    }
    // A, and whatever the system encoding writes as 0xE9: È in Mac Roman, é in Latin 1.
    const UInt8 bytes[] = {0x41, 0xE9};
    std::wstring wide = kvx::Convert(Gx::CFString(bytes, 2, system, false), kvx::kToStdWString);
    EXPECT_EQ(wide, (std::wstring{L'A', wchar_t(0xFFFFFFE9)}));
}

// An exception with a reason of its own, as a subclass may give one.
struct ReasonedError : Gx::RuntimeError {
    ReasonedError() : RuntimeError(Gx::exceptionID_Runtime, nullptr, Gx::sourceLocation_Nothing) {}
    StringPtr Why(StringPtr outReason) const override
    {
        static const UInt8 kReason[] = "\x0Etoo many turns";
        std::copy(std::begin(kReason), std::end(kReason), outReason);
        return outReason;
    }
};

TEST(MacKvxStrings, StringValueEndsInTheFirstThreeCharactersOfTheCodeSuffix)
{
    EXPECT_EQ(kvx::stringValue(Gx::RuntimeError(Gx::exceptionID_NilReference, "Nil CF reference", {})), "; F");
    EXPECT_EQ(kvx::stringValue(Gx::OSError(-43, "FSGetCatalogInfo failed", {})), "; F");
    EXPECT_EQ(kvx::stringValue(ReasonedError()), "too many turns; F");
}

}  // namespace
