// UUIDs: random ones are version 4, and the text form round-trips and rejects malformed text.
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>
#include <PortSupport/Owned.h>

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>
#include <type_traits>

namespace {

using port::Owned;

std::string Text(CFUUIDRef inUUID)
{
    Owned<CFStringRef> text(CFUUIDCreateString(nullptr, inUUID));
    return cf::UTF8(text.Get());
}

Owned<CFUUIDRef> Parse(const char* inText) { return Owned<CFUUIDRef>(CFUUIDCreateFromString(nullptr, CFSTR(inText))); }

TEST(UUID, RandomOnesAreVersion4AndTextRoundTripsInEitherCase)
{
    Owned<CFUUIDRef> first(CFUUIDCreate(nullptr));
    Owned<CFUUIDRef> second(CFUUIDCreate(nullptr));
    CFUUIDBytes bytes = CFUUIDGetUUIDBytes(first.Get());
    EXPECT_EQ(bytes.byte6 >> 4, 4);
    EXPECT_EQ(bytes.byte8 & 0xC0, 0x80);
    EXPECT_FALSE(CFEqual(first.Get(), second.Get()));
    EXPECT_TRUE(std::regex_match(Text(first.Get()),
                                 std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")));
    CFUUIDBytes counting{0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07,
                         0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0xFE, 0xFF};
    Owned<CFUUIDRef> made(CFUUIDCreateFromUUIDBytes(nullptr, counting));
    EXPECT_EQ(Text(made.Get()), "00010203-0405-0607-0809-0A0B0C0DFEFF");
    auto upper = Parse("00010203-0405-0607-0809-0A0B0C0DFEFF");
    auto lower = Parse("00010203-0405-0607-0809-0a0b0c0dfeff");
    ASSERT_TRUE(upper && lower);
    // One object per value, however it was made.
    EXPECT_EQ(made.Get(), upper.Get());
    EXPECT_EQ(upper.Get(), lower.Get());
    EXPECT_EQ(CFGetRetainCount(made.Get()), 3);
    EXPECT_EQ(CFHash(made.Get()), CFHash(lower.Get()));
    EXPECT_TRUE(CFEqual(first.Get(), Parse(Text(first.Get()).c_str()).Get()));
}

TEST(UUID, MalformedTextGivesNull)
{
    for (const char* text : {"", "00010203-0405-0607-0809-0A0B0C0DFEF", "00010203-0405-0607-0809-0A0B0C0DFEFF0",
                             "000102030-405-0607-0809-0A0B0C0DFEFF", "00010203-0405-0607-0809-0A0B0C0DFEFG",
                             "00010203 0405 0607 0809 0A0B0C0DFEFF", "{00010203-0405-0607-0809-0A0B0C0DFEF}",
                             "00010203-0405-0607-0809-0A0B0C0DFEF\xC5\x86"})  // U+0146: its low byte is 'F'
        EXPECT_EQ(Parse(text).Get(), nullptr) << text;
    EXPECT_EQ(CFUUIDCreateFromString(nullptr, nullptr), nullptr);
}

}  // namespace
