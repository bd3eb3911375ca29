// The string, data and URL wrappers: what each creating call and each copy before a change
// makes or reports, and the checks each does before the platform sees an index or a range.
#include "ExpectThrows.h"
#include "RefusingAllocator.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFData.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFTextUtils.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>

#include <Carbon/MacErrors.h>

#include <bit>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>

namespace {

using Gx::kIndexToEnd;

TEST(SysCFString, CreatedStringsAreAdoptedAndANullResultThrows)
{
    const Str255 pascal = {2, 'a', 'b'};
    const UniChar units[] = {'a', 'b'};
    const UInt8 bytes[] = {'a', 'b'};
    std::function<Gx::CFString(CFAllocatorRef)> makers[] = {
        [&](CFAllocatorRef a) { return Gx::CFString(pascal, kCFStringEncodingMacRoman, a); },
        [&](CFAllocatorRef a) { return Gx::CFString("ab", kCFStringEncodingUTF8, a); },
        [&](CFAllocatorRef a) { return Gx::CFString(units, 2, a); },
        [&](CFAllocatorRef a) { return Gx::CFString(bytes, 2, kCFStringEncodingASCII, false, a); },
    };
    for (auto& make : makers) {
        ExpectAdoptedOrRefused(make);
        EXPECT_TRUE(make(kCFAllocatorDefault) == CFSTR("ab"));
    }
    ExpectThrows<Gx::RuntimeError>([] { Gx::CFString("\xFF", kCFStringEncodingUTF8); }, FourCC("cfcr"));

    RefusingAllocator allocator;
    Gx::CFString created("abc", kCFStringEncodingUTF8, allocator.Get());
    allocator.ExpectRefusedChangeKeeps(created, [&] { created.Append("d"); });
    EXPECT_TRUE(created == CFSTR("abc"));
}

// The changes below copy the immutable string first, so they also show that the copy holds
// the whole text.
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

TEST(SysCFString, FourCharCodesKeepTheirMemoryOrderAndScriptsGiveTheirEncoding)
{
    constexpr bool kLittleEndian = std::endian::native == std::endian::little;
    Gx::CFString code;
    code.Assign4CharCode(FourCC("oser"));
    EXPECT_TRUE(code == (kLittleEndian ? CFSTR("reso") : CFSTR("oser")));
    EXPECT_EQ(code.Get4CharCodeValue(), FourCC("oser"));
    FourCharCode read = Gx::CFString("abcd").Get4CharCodeValue();
    EXPECT_EQ(std::memcmp(&read, "abcd", 4), 0);

    EXPECT_EQ(Gx::CFUtils::GetEncodingFromScriptCode(smRoman, langIcelandic), kTextEncodingMacIcelandic);
    ExpectOSError([] { Gx::CFUtils::GetEncodingFromScriptCode(99); }, paramErr,
                  "UpgradeScriptInfoToTextEncoding failed");
}

const UInt8 kBytes[] = {1, 2, 3, 4};

std::string_view Bytes(const Gx::CFData& inData)
{
    return {reinterpret_cast<const char*>(inData.GetBytePtr()), std::size_t(inData.GetLength())};
}

TEST(SysCFData, CreatedBlocksAreAdoptedAndOnlyImmutableOnesCopiedBeforeAChange)
{
    ExpectAdoptedOrRefused([](CFAllocatorRef a) { return Gx::CFData(0, a); });
    ExpectAdoptedOrRefused([](CFAllocatorRef a) { return Gx::CFData(kBytes, 4, a); });

    Gx::CFData growing(0);
    CFDataRef created = growing.GetRefValue();
    growing.AppendBytes(kBytes, 2);
    growing.IncreaseLength(1);
    EXPECT_TRUE(growing.HasSameRef(created)) << "a block made mutable is changed in place";
    EXPECT_EQ(Bytes(growing), std::string_view("\1\2\0", 3));

    Gx::CFData fixed(kBytes, 4);
    created = fixed.GetRefValue();
    fixed.ReplaceBytes(CFRangeMake(0, 1), kBytes + 3, 1);
    EXPECT_FALSE(fixed.HasSameRef(created)) << "a block made immutable is copied first";
    EXPECT_EQ(Bytes(fixed), "\4\2\3\4");

    RefusingAllocator allocator;
    Gx::CFData data(kBytes, 4, allocator.Get());
    allocator.ExpectRefusedChangeKeeps(data, [&] { data.AppendBytes(kBytes, 1); });
    EXPECT_EQ(Bytes(data), "\1\2\3\4");
}

const UInt8 kTmp[] = "/tmp";
const UInt8 kSpaced[] = "a b";

TEST(SysCFURL, EachCreatingConstructorAdoptsOrThrows)
{
    FSRef tmp{};
    ASSERT_EQ(FSPathMakeRef(kTmp, &tmp, nullptr), noErr);
    const FSRef nothing{};
    const Gx::CFURL base(CFSTR("file:///tmp/"), nullptr);
    using Make = std::function<Gx::CFURL(CFAllocatorRef)>;
    // How each is made, whether the base must be used, and how to make it fail other than by
    // refusing memory.
    const struct {
        Make make;
        bool relative;
        Make makeInvalid;
    } makers[] = {
        {[&](CFAllocatorRef a) { return Gx::CFURL(tmp, a); }, false,
         [&](CFAllocatorRef a) { return Gx::CFURL(nothing, a); }},
        {[&](CFAllocatorRef a) { return Gx::CFURL(CFSTR("x"), base, a); }, true,
         [&](CFAllocatorRef a) { return Gx::CFURL(CFSTR("a b"), base, a); }},
        {[&](CFAllocatorRef a) { return Gx::CFURL(kTmp, 4, kCFStringEncodingUTF8, nullptr, a); }, false,
         [&](CFAllocatorRef a) { return Gx::CFURL(kSpaced, 3, kCFStringEncodingUTF8, nullptr, a); }},
        {[&](CFAllocatorRef a) { return Gx::CFURL(CFSTR("/tmp"), true, nullptr, kCFURLPOSIXPathStyle, a); }, false, {}},
        {[&](CFAllocatorRef a) { return Gx::CFURL(CFSTR("x"), false, base, kCFURLPOSIXPathStyle, a); }, true, {}},
        {[&](CFAllocatorRef a) { return Gx::CFURL(kTmp, 4, true, nullptr, a); }, false, {}},
        {[&](CFAllocatorRef a) { return Gx::CFURL(kTmp + 1, 3, false, base, a); }, true, {}},
    };
    for (std::size_t i = 0; i < std::size(makers); ++i) {
        SCOPED_TRACE(testing::Message() << "constructor " << i);
        ExpectAdoptedOrRefused(makers[i].make);
        EXPECT_EQ(makers[i].make(kCFAllocatorDefault).GetBaseURL().IsValid(), makers[i].relative);
        if (makers[i].makeInvalid)
            ExpectThrows<Gx::RuntimeError>([&] { makers[i].makeInvalid(kCFAllocatorDefault); }, FourCC("cfcr"));
    }
}

TEST(SysCFURL, CopiedResultsAreAdoptedAndKeptOnesRetained)
{
    Gx::CFURL url(CFSTR("http://user@host:8080/dir/file.txt?q=1"), nullptr);
    Gx::CFString host = url.GetHostName();
    EXPECT_TRUE(host == CFSTR("host"));
    EXPECT_EQ(host.GetRetainCount(), 1);
    EXPECT_EQ(url.GetAsData(false).GetRetainCount(), 1);
    EXPECT_FALSE(url.GetPassword().IsValid()) << "an absent component is an empty wrapper";
    bool isAbsolute = false;
    EXPECT_TRUE(url.GetStrictPath(&isAbsolute) == CFSTR("dir/file.txt") && isAbsolute);

    EXPECT_EQ(url.GetString().GetRetainCount(), 2) << "the URL keeps its own string";
    EXPECT_FALSE(url.GetBaseURL().IsValid());
    Gx::CFURL base(CFSTR("file:///tmp/"), nullptr);
    Gx::CFURL relative(CFSTR("sub/"), base);
    EXPECT_TRUE(relative.GetBaseURL().HasSameRef(base));
    EXPECT_EQ(base.GetRetainCount(), 2) << "held by the relative URL, not by the dropped wrapper";
}

TEST(SysCFURL, PathEditsReplaceTheURLOrThrowAndKeepIt)
{
    RefusingAllocator allocator;
    Gx::CFURL url(CFSTR("/a/b.txt"), false, nullptr, kCFURLPOSIXPathStyle, allocator.Get());
    url.DeletePathExtension();
    url.AppendPathExtension(CFSTR("rtf"));
    url.AppendPathComponent(CFSTR("c"), true);
    url.DeleteLastPathComponent();
    EXPECT_TRUE(url.GetPath() == CFSTR("/a/b.rtf/"));
    EXPECT_EQ(url.GetRetainCount(), 1);

    allocator.ExpectRefusedChangeKeeps(url, [&] { url.AppendPathComponent(CFSTR("d"), false); });
    allocator.ExpectRefusedChangeKeeps(url, [&] { url.DeleteLastPathComponent(); });
    allocator.ExpectRefusedChangeKeeps(url, [&] { url.AppendPathExtension(CFSTR("e")); });
    allocator.ExpectRefusedChangeKeeps(url, [&] { url.DeletePathExtension(); });
}

}  // namespace
