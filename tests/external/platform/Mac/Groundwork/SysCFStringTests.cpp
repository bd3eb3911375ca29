#include "ExpectThrows.h"
#include "RefusingAllocator.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFTextUtils.h>

#include <Carbon/MacErrors.h>

#include <bit>
#include <cstring>
#include <functional>
#include <string>

namespace {

using Gx::kIndexToEnd;

TEST(SysCFString, CreatedStringsAreAdoptedAndANullResultThrows)
{
    const Str255 pascal = {2, 'a', 'b'};
    const UniChar units[] = {'a', 'b'};
    const HFSUniStr255 name{2, {'a', 'b'}};
    const UInt8 bytes[] = {'a', 'b'};
    std::function<Gx::CFString(CFAllocatorRef)> makers[] = {
        [&](CFAllocatorRef a) { return Gx::CFString(pascal, kCFStringEncodingMacRoman, a); },
        [&](CFAllocatorRef a) { return Gx::CFString("ab", kCFStringEncodingUTF8, a); },
        [&](CFAllocatorRef a) { return Gx::CFString(units, 2, a); },
        [&](CFAllocatorRef a) { return Gx::CFString(name, a); },
        [&](CFAllocatorRef a) { return Gx::CFString(bytes, 2, kCFStringEncodingASCII, false, a); },
    };
    for (auto& make : makers) {
        Gx::CFString made = make(kCFAllocatorDefault);
        EXPECT_EQ(made.GetRetainCount(), 1);
        EXPECT_TRUE(made == CFSTR("ab"));
        ExpectThrows<Gx::RuntimeError>([&] { make(kCFAllocatorNull); }, FourCC("cfcr"));
    }
    ExpectThrows<Gx::RuntimeError>([] { Gx::CFString("\xFF", kCFStringEncodingUTF8); }, FourCC("cfcr"));
}

TEST(SysCFString, CopiesAreIndependentAndAFailedCopyChangesNothing)
{
    Gx::CFString first("abc");
    Gx::CFString second(first);
    second.Append("d");
    EXPECT_TRUE(first == CFSTR("abc") && second == CFSTR("abcd"));
    EXPECT_EQ(first.GetRetainCount(), 1);

    RefusingAllocator allocator;
    Gx::CFString created("abc", kCFStringEncodingUTF8, allocator.Get());
    CFStringRef before = created.GetRefValue();
    allocator.Refuse();
    ExpectThrows<Gx::RuntimeError>([&] { created.Append("d"); }, FourCC("cfcr"));
    EXPECT_TRUE(created.HasSameRef(before) && created == CFSTR("abc"));
}

TEST(SysCFString, IndicesAndRangesAreCheckedBeforeThePlatformSeesThem)
{
    Gx::CFString text("abc");
    EXPECT_EQ(text.GetCharacterAt(kIndexToEnd), 'c');
    ExpectThrows<Gx::LogicError>([&] { text[3]; }, FourCC("logc"));
    text.Insert(kIndexToEnd, CFSTR("d"));
    EXPECT_TRUE(text == CFSTR("abcd"));
    ExpectThrows<Gx::LogicError>([&] { text.Insert(5, CFSTR("x")); }, FourCC("logc"));
    ExpectThrows<Gx::LogicError>([&] { text.Delete(CFRangeMake(1, kIndexToEnd)); }, FourCC("logc"));
    EXPECT_TRUE(text == CFSTR("abcd"));
    text.Replace(CFRangeMake(kIndexToEnd, 1), CFSTR("DE"));
    UniChar units[2] = {};
    text.GetSubstring(CFRangeMake(3, 2), units);
    EXPECT_TRUE(units[0] == 'D' && units[1] == 'E');
    ExpectThrows<Gx::LogicError>([&] { text.GetSubstring(CFRangeMake(4, 2), units); }, FourCC("logc"));

    Gx::CFString greeting("Hello, hello");
    CFRange found = greeting.FindInRange(Gx::cfRange_All, CFSTR("HELLO"),
                                         kCFCompareCaseInsensitive | kCFCompareBackwards);
    EXPECT_TRUE(found.location == 7 && found.length == 5);
    EXPECT_EQ(greeting.FindInRange(CFRangeMake(1, 10), CFSTR("Hello")).length, 0);
    ExpectThrows<Gx::LogicError>([&] { greeting.FindInRange(CFRangeMake(1, kIndexToEnd), CFSTR("o")); },
                                 FourCC("logc"));

    text.Delete(CFRangeMake(0, kIndexToEnd));
    EXPECT_EQ(text.GetLength(), 0);
}

TEST(SysCFString, GetStringConvertsTheWholeTextButRefusesAnEmptyOne)
{
    const UniChar cafe[] = {'c', 'a', 'f', 0xE9};
    Gx::CFString text(cafe, 4);
    std::string bytes;
    text.GetString(bytes, kCFStringEncodingUTF8);
    EXPECT_EQ(bytes, "caf\xC3\xA9");
    text.GetString(bytes, kCFStringEncodingMacRoman);
    EXPECT_EQ(bytes, "caf\x8E");
    EXPECT_EQ(text.GetByteLength(CFRangeMake(3, 1), kCFStringEncodingUTF8), 2);
    UInt8 buffer[4] = {};
    EXPECT_EQ(text.GetByteRange(sizeof buffer, buffer, CFRangeMake(2, 2), kCFStringEncodingMacRoman), 2);
    EXPECT_EQ(buffer[1], 0x8E);

    ExpectThrows<Gx::LogicError>([&] { Gx::CFString("").GetString(bytes); }, FourCC("logc"));
    EXPECT_EQ(bytes, "caf\x8E") << "the output is left alone";
}

TEST(SysCFString, ConcatenationTakesEveryOperandKindOnEitherSideAndComparisonReadsTexts)
{
    const Gx::CFString ab("ab"), cd("cd"), none;
    const Str255 pascal = {2, 'c', 'd'};
    const std::pair<Gx::CFString, CFStringRef> cases[] = {
        {ab + "cd", CFSTR("abcd")},   {"cd" + ab, CFSTR("cdab")},        {ab + pascal, CFSTR("abcd")},
        {pascal + ab, CFSTR("cdab")}, {ab + CFSTR("cd"), CFSTR("abcd")}, {CFSTR("cd") + ab, CFSTR("cdab")},
        {ab + cd, CFSTR("abcd")},     {cd + ab, CFSTR("cdab")},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_TRUE(cases[i].first == cases[i].second) << "case " << i;
    EXPECT_TRUE(ab == CFSTR("ab"));
    EXPECT_EQ(ab.GetRetainCount(), 1) << "no result still shares the operand";
    ExpectThrows<Gx::RuntimeError>([&] { none + "x"; }, FourCC("cfnr"));
    ExpectThrows<Gx::RuntimeError>([&] { "x" + none; }, FourCC("cfnr"));

    EXPECT_TRUE(Gx::CFString("ab") == ab && CFSTR("ab") == ab);
    EXPECT_TRUE(ab != cd && ab < cd && cd > CFSTR("ab") && !(ab < CFSTR("AB")));
    ExpectThrows<Gx::RuntimeError>([&] { (void)(ab != none); }, FourCC("cfnr"));
}

TEST(SysCFString, FourCharCodesKeepTheirMemoryOrder)
{
    constexpr bool kLittleEndian = std::endian::native == std::endian::little;
    Gx::CFString code;
    code.Assign4CharCode(FourCC("oser"));
    EXPECT_TRUE(code == (kLittleEndian ? CFSTR("reso") : CFSTR("oser")));
    EXPECT_EQ(code.Get4CharCodeValue(), FourCC("oser"));
    FourCharCode read = Gx::CFString("abcd").Get4CharCodeValue();
    EXPECT_EQ(std::memcmp(&read, "abcd", 4), 0);
}

TEST(SysCFTextUtils, EncodingFromScriptInformationOrTheStatus)
{
    EXPECT_EQ(Gx::CFUtils::GetEncodingFromScriptCode(smRoman, langIcelandic), kTextEncodingMacIcelandic);
    ExpectOSError([] { Gx::CFUtils::GetEncodingFromScriptCode(99); }, paramErr,
                  "UpgradeScriptInfoToTextEncoding failed");
}

}  // namespace
