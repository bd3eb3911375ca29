// Strings as bytes: partial conversion into buffers, external representations, encoding
// names and the system encoding.
#include "CFTesting.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace cftest;

struct Converted {
    CFIndex characters;
    CFIndex used;
    std::string bytes;
};

// CFStringGetBytes into a buffer of inCapacity bytes; a negative capacity passes no buffer.
Converted GetBytes(CFStringRef inString, CFRange inRange, CFStringEncoding inEncoding, UInt8 inLossByte,
                   bool inExternal, CFIndex inCapacity)
{
    std::vector<UInt8> buffer(size_t(std::max<CFIndex>(inCapacity, 0)) + 1, 0xEE);
    Converted result{};
    result.characters = CFStringGetBytes(inString, inRange, inEncoding, inLossByte, inExternal,
                                         inCapacity < 0 ? nullptr : buffer.data(), inCapacity, &result.used);
    if (inCapacity >= 0) {
        EXPECT_EQ(buffer[size_t(inCapacity)], 0xEE) << "wrote beyond the buffer";
        result.bytes.assign(buffer.begin(), buffer.begin() + result.used);
    }
    return result;
}

TEST(StringBytes, GetBytesStopsWhereConversionOrRoomEnds)
{
    Owned<CFStringRef> text(Make("na\xC3\xAFve \xE2\x82\xAC"));  // naïve €
    Owned<CFStringRef> astral(Make("a\xF0\x9F\x98\x80"));
    struct Case {
        CFStringRef string;
        CFRange range;
        CFStringEncoding encoding;
        UInt8 lossByte;
        CFIndex capacity;  // negative: no buffer, only counting
        CFIndex characters;
        CFIndex used;
        std::string bytes;
    };
    const Case cases[] = {
        {text, CFRangeMake(0, 7), kCFStringEncodingASCII, 0, 20, 2, 2, "na"},
        {text, CFRangeMake(0, 7), kCFStringEncodingASCII, '?', 20, 7, 7, "na?ve ?"},
        {text, CFRangeMake(0, 7), kCFStringEncodingMacRoman, 0, 20, 7, 7, "na\x95ve \xDB"},
        {text, CFRangeMake(0, 7), kCFStringEncodingUTF8, 0, -1, 7, 10, ""},
        {text, CFRangeMake(0, 7), kCFStringEncodingUTF8, 0, 3, 2, 2, "na"},  // ï needs two bytes
        {text, CFRangeMake(2, 3), kCFStringEncodingISOLatin1, 0, 20, 3, 3, "\xEFve"},
        {astral, CFRangeMake(0, 3), kCFStringEncodingUTF16BE, 0, 4, 1, 2, std::string("\0a", 2)},  // never half a pair
        {astral, CFRangeMake(0, 3), kCFStringEncodingUTF32BE, 0, 8, 3, 8, std::string("\0\0\0a\0\x01\xF6\x00", 8)},
    };
    for (const Case& c : cases) {
        Converted converted = GetBytes(c.string, c.range, c.encoding, c.lossByte, false, c.capacity);
        EXPECT_EQ(converted.characters, c.characters) << c.encoding << " into " << c.capacity;
        EXPECT_EQ(converted.used, c.used) << c.encoding << " into " << c.capacity;
        EXPECT_EQ(converted.bytes, c.bytes) << c.encoding << " into " << c.capacity;
    }
    EXPECT_DEATH(GetBytes(text, CFRangeMake(5, 3), kCFStringEncodingUTF8, 0, false, 20),
                 "CFStringGetBytes: range \\{5, 3\\}");
}

TEST(StringBytes, ExternalRepresentationsCarryAByteOrderMark)
{
    const bool little = std::endian::native == std::endian::little;
    Owned<CFStringRef> text(Make("h\xC3\xA9"));
    Converted utf16 = GetBytes(text, CFRangeMake(0, 2), kCFStringEncodingUTF16, 0, true, 20);
    EXPECT_EQ(utf16.characters, 2);
    EXPECT_EQ(utf16.bytes, little ? std::string("\xFF\xFEh\0\xE9\0", 6) : std::string("\xFE\xFF\0h\0\xE9", 6));
    Converted noRoom = GetBytes(text, CFRangeMake(0, 2), kCFStringEncodingUTF16, 0, true, 1);
    EXPECT_EQ(noRoom.characters, 0);
    EXPECT_EQ(noRoom.used, 0);
    EXPECT_EQ(GetBytes(text, CFRangeMake(0, 2), kCFStringEncodingUTF16BE, 0, true, 20).bytes,
              std::string("\0h\0\xE9", 4));

    struct Case {
        CFStringEncoding encoding;
        CFIndex length;
        std::string prefix;
    };
    const Case cases[] = {
        {kCFStringEncodingUTF16, 6, little ? "\xFF\xFE" : "\xFE\xFF"},
        {kCFStringEncodingUTF32, 12, little ? std::string("\xFF\xFE\0\0", 4) : std::string("\0\0\xFE\xFF", 4)},
        {kCFStringEncodingUTF16LE, 4, "h"},
        {kCFStringEncodingUTF8, 3, "h\xC3"},
        {kCFStringEncodingMacRoman, 2, "h\x8E"},
    };
    for (const Case& c : cases) {
        Owned<CFDataRef> data(CFStringCreateExternalRepresentation(nullptr, text, c.encoding, 0));
        ASSERT_NE(data.get(), nullptr) << c.encoding;
        std::string bytes(reinterpret_cast<const char*>(CFDataGetBytePtr(data)), size_t(CFDataGetLength(data)));
        EXPECT_EQ(bytes.size(), size_t(c.length)) << c.encoding;
        EXPECT_EQ(bytes.substr(0, c.prefix.size()), c.prefix) << c.encoding;
        Owned<CFStringRef> back(CFStringCreateFromExternalRepresentation(nullptr, data, c.encoding));
        EXPECT_TRUE(back.get() && CFEqual(back, text)) << c.encoding;
    }
    EXPECT_EQ(CFStringCreateExternalRepresentation(nullptr, text, kCFStringEncodingASCII, 0), nullptr);
    Owned<CFDataRef> lossy(CFStringCreateExternalRepresentation(nullptr, text, kCFStringEncodingASCII, '_'));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(lossy)), 2), "h_");
    const UInt8 marked[] = {0xEF, 0xBB, 0xBF, 'o', 'k'};
    Owned<CFStringRef> unmarked(CFStringCreateWithBytes(nullptr, marked, 5, kCFStringEncodingUTF8, true));
    EXPECT_TRUE(CFEqual(unmarked, CFSTR("ok")));
}

TEST(StringEncodings, NamesAndIANACharacterSetNamesRoundTrip)
{
    const CFStringEncoding* list = CFStringGetListOfAvailableEncodings();
    std::vector<CFStringEncoding> available;
    for (; *list != kCFStringEncodingInvalidId; ++list)
        available.push_back(*list);
    EXPECT_GE(available.size(), 11u);
    for (CFStringEncoding encoding : available) {
        EXPECT_TRUE(CFStringIsEncodingAvailable(encoding)) << encoding;
        EXPECT_NE(CFStringGetNameOfEncoding(encoding), nullptr) << encoding;
        CFStringRef iana = CFStringConvertEncodingToIANACharSetName(encoding);
        ASSERT_NE(iana, nullptr) << encoding;
        EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(iana), encoding) << cftest::Text(iana);
    }
    EXPECT_TRUE(CFEqual(CFStringGetNameOfEncoding(kCFStringEncodingMacRoman), CFSTR("Western (Mac OS Roman)")));
    EXPECT_TRUE(CFEqual(CFStringConvertEncodingToIANACharSetName(kCFStringEncodingUTF8), CFSTR("utf-8")));

    const std::pair<const char*, CFStringEncoding> aliases[] = {
        {"MACINTOSH", kCFStringEncodingMacRoman},
        {"x-mac-roman", kCFStringEncodingMacRoman},
        {"Latin1", kCFStringEncodingISOLatin1},
        {"ISO_8859-1", kCFStringEncodingISOLatin1},
        {"CP1252", kCFStringEncodingWindowsLatin1},
        {"Windows-1252", kCFStringEncodingWindowsLatin1},
        {"US-ASCII", kCFStringEncodingASCII},
        {"ANSI_X3.4-1968", kCFStringEncodingASCII},
        {"UTF8", kCFStringEncodingUTF8},
        {"UTF-16LE", kCFStringEncodingUTF16LE},
        {"utf-32be", kCFStringEncodingUTF32BE},
        {"klingon", kCFStringEncodingInvalidId},
        {"utf-8 ", kCFStringEncodingInvalidId},
        {"\xC3\xBCtf-8", kCFStringEncodingInvalidId},
    };
    for (auto [name, encoding] : aliases) {
        Owned<CFStringRef> string(Make(name));
        EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(string), encoding) << name;
    }
    EXPECT_FALSE(CFStringIsEncodingAvailable(0x7777));
    EXPECT_EQ(CFStringGetNameOfEncoding(0x7777), nullptr);
    EXPECT_EQ(CFStringConvertEncodingToIANACharSetName(kCFStringEncodingNonLossyASCII), nullptr);
}

// The system encoding is read once per process, so each locale is tried in a child.
int SystemEncodingUnder(const char* inLocale)
{
    setenv("LC_ALL", inLocale, 1);
    CFStringEncoding encoding = CFStringGetSystemEncoding();
    return encoding == kCFStringEncodingMacRoman    ? 1
           : encoding == kCFStringEncodingUTF8      ? 2
           : encoding == kCFStringEncodingISOLatin1 ? 3
                                                    : 4;
}

TEST(StringEncodingsDeathTest, SystemEncodingFollowsTheLocaleCodeset)
{
    EXPECT_EXIT(std::exit(SystemEncodingUnder("C")), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(std::exit(SystemEncodingUnder("POSIX")), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(std::exit(SystemEncodingUnder("C.UTF-8")), testing::ExitedWithCode(2), "");
    // Not installed here: the codeset in the name still counts.
    EXPECT_EXIT(std::exit(SystemEncodingUnder("xx_XX.ISO-8859-1")), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(std::exit(SystemEncodingUnder("xx_XX.utf8@euro")), testing::ExitedWithCode(2), "");
}

}  // namespace
