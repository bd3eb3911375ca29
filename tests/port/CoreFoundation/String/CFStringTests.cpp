// Strings: creation from encodings, reading back, copies and appending.
#include "CFTesting.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

using cftest::Owned;

std::u16string Characters(CFStringRef inString)
{
    std::u16string text(size_t(CFStringGetLength(inString)), u'\0');
    CFStringGetCharacters(inString, CFRangeMake(0, CFIndex(text.size())), reinterpret_cast<UniChar*>(text.data()));
    return text;
}

CFStringRef FromBytes(std::vector<UInt8> inBytes, CFStringEncoding inEncoding, bool inExternal = false)
{
    return CFStringCreateWithBytes(nullptr, inBytes.data(), CFIndex(inBytes.size()), inEncoding, inExternal);
}

TEST(StringCreation, DecodesEachEncodingIntoTheSameCharactersAndRejectsInvalidBytes)
{
    Owned utf8(CFStringCreateWithCString(nullptr, "caf\xC3\xA9 \xE2\x82\xAC", kCFStringEncodingUTF8));
    Owned roman(FromBytes({'c', 'a', 'f', 0x8E, ' ', 0xDB}, kCFStringEncodingMacRoman));
    Owned windows(FromBytes({'c', 'a', 'f', 0xE9, ' ', 0x80}, kCFStringEncodingWindowsLatin1));
    Owned big(
        FromBytes({0xFE, 0xFF, 0, 'c', 0, 'a', 0, 'f', 0, 0xE9, 0, ' ', 0x20, 0xAC}, kCFStringEncodingUTF16, true));
    Owned little(FromBytes({'c', 0, 'a', 0, 'f', 0, 0xE9, 0, ' ', 0, 0xAC, 0x20}, kCFStringEncodingUTF16LE));
    EXPECT_EQ(Characters(utf8), u"café €");
    for (CFStringRef other : {roman.get(), windows.get(), big.get(), little.get()}) {
        ASSERT_NE(other, nullptr);
        EXPECT_TRUE(CFEqual(utf8, other)) << cf::UTF8(other);
        EXPECT_EQ(CFHash(utf8), CFHash(other));
    }
    Owned latin1(FromBytes({'c', 'a', 'f', 0xE9}, kCFStringEncodingISOLatin1));
    EXPECT_EQ(Characters(latin1), u"café");
    Owned astral(FromBytes({0, 0, 0xFE, 0xFF, 0, 1, 0xF6, 0x00}, kCFStringEncodingUTF32, true));
    EXPECT_EQ(Characters(astral), u"\U0001F600");
    EXPECT_EQ(FromBytes({'a', 0xC3}, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(FromBytes({0xED, 0xA0, 0x80}, kCFStringEncodingUTF8), nullptr);  // an encoded surrogate
    EXPECT_EQ(FromBytes({'a', 0x80}, kCFStringEncodingASCII), nullptr);
    EXPECT_EQ(FromBytes({0, 'a', 0}, kCFStringEncodingUTF16BE), nullptr);      // odd length
    EXPECT_EQ(FromBytes({0, 0x11, 0, 0}, kCFStringEncodingUTF32BE), nullptr);  // beyond U+10FFFF
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "x", 0x7777), nullptr);       // unknown encoding
    EXPECT_EQ(CFStringCreateWithCString(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
}

TEST(StringCreation, PascalStringsUseTheirLengthByte)
{
    const unsigned char pascal[] = {3, 'a', 'b', 'c', 'd'};
    Owned string(CFStringCreateWithPascalString(nullptr, pascal, kCFStringEncodingMacRoman));
    EXPECT_EQ(Characters(string), u"abc");
    unsigned char out[8];
    ASSERT_TRUE(CFStringGetPascalString(string, out, sizeof out, kCFStringEncodingMacRoman));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 4), "\x03"
                                                            "abc");
    // Text that does not fit answers false but leaves the longest whole-character prefix that does.
    EXPECT_FALSE(CFStringGetPascalString(string, out, 3, kCFStringEncodingMacRoman));  // no room for 3 + length byte
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 3), "\x02"
                                                            "ab");
    Owned tooLong(CFStringCreateWithCString(nullptr, std::string(256, 'x').c_str(), kCFStringEncodingASCII));
    unsigned char big[300];
    EXPECT_FALSE(CFStringGetPascalString(tooLong, big, sizeof big, kCFStringEncodingASCII));
    EXPECT_EQ(big[0], 255);
    std::string accents;
    for (int i = 0; i < 200; ++i)
        accents += "\xC3\xA9";
    Owned wide(CFStringCreateWithCString(nullptr, accents.c_str(), kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetPascalString(wide, big, sizeof big, kCFStringEncodingUTF8));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(big), 255), "\xFE" + accents.substr(0, 254));  // not half an é
}

int sFreedBuffers = 0;

void* AllocateBuffer(CFIndex inSize, CFOptionFlags, void*) { return std::malloc(size_t(inSize)); }

void FreeBuffer(void* inBuffer, void*)
{
    ++sFreedBuffers;
    std::free(inBuffer);
}

TEST(StringCreation, NoCopyHandsTheBufferBackWhenTheStringGoes)
{
    CFAllocatorContext context{0, nullptr, nullptr, nullptr, nullptr, AllocateBuffer, nullptr, FreeBuffer, nullptr};
    CFAllocatorRef counting = CFAllocatorCreate(nullptr, &context);
    auto* chars = static_cast<UniChar*>(CFAllocatorAllocate(counting, 3 * sizeof(UniChar), 0));
    chars[0] = 'o', chars[1] = 'w', chars[2] = 'n';
    sFreedBuffers = 0;
    CFStringRef owner = CFStringCreateWithCharactersNoCopy(nullptr, chars, 3, counting);
    EXPECT_EQ(Characters(owner), u"own");
    EXPECT_EQ(sFreedBuffers, 0);  // the caller may still read its characters while the string lives
    CFRelease(owner);
    EXPECT_EQ(sFreedBuffers, 1);
    UniChar kept[] = {'k'};
    CFRelease(CFStringCreateWithCharactersNoCopy(nullptr, kept, 1, kCFAllocatorNull));
    EXPECT_EQ(sFreedBuffers, 1);
    CFRelease(counting);
    EXPECT_EQ(CFStringGetPascalStringPtr(CFSTR("p"), kCFStringEncodingMacRoman), nullptr);
}

TEST(StringExtraction, CStringsNeedRoomAndARepresentableTextDirectPointersTheRightStorage)
{
    Owned string(CFStringCreateWithCString(nullptr, "na\xC3\xAFve", kCFStringEncodingUTF8));
    char buffer[8];
    ASSERT_TRUE(CFStringGetCString(string, buffer, 7, kCFStringEncodingUTF8));  // 6 bytes + NUL
    EXPECT_STREQ(buffer, "na\xC3\xAFve");
    EXPECT_FALSE(CFStringGetCString(string, buffer, 6, kCFStringEncodingUTF8));
    ASSERT_TRUE(CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingMacRoman));
    EXPECT_STREQ(buffer, "na\x95ve");
    EXPECT_FALSE(CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingASCII));
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(5, kCFStringEncodingUTF8), 15);
    CFStringRef constant = CFSTR("direct");
    EXPECT_STREQ(CFStringGetCStringPtr(constant, kCFStringEncodingUTF8), "direct");
    EXPECT_EQ(CFStringGetCStringPtr(constant, kCFStringEncodingUTF16), nullptr);
    EXPECT_EQ(CFStringGetCStringPtr(CFSTR("d\xC3\xA9j\xC3\xA0"), kCFStringEncodingASCII), nullptr);
    Owned made(CFStringCreateWithCString(nullptr, "direct", kCFStringEncodingUTF8));
    EXPECT_EQ(CFStringGetCStringPtr(made, kCFStringEncodingUTF8), nullptr);
    const UniChar* units = CFStringGetCharactersPtr(made);
    ASSERT_NE(units, nullptr);
    EXPECT_EQ(units[0], u'd');
}

TEST(StringCopies, ImmutableCopiesShareMutableOnesDoNot)
{
    Owned original(CFStringCreateWithCString(nullptr, "base", kCFStringEncodingUTF8));
    Owned copy(CFStringCreateCopy(nullptr, original));
    EXPECT_EQ(copy.get(), original.get());
    EXPECT_EQ(CFGetRetainCount(original), 2);

    CFMutableStringRef mutableCopy = CFStringCreateMutableCopy(nullptr, 0, original);
    CFStringAppendCString(mutableCopy, "ball", kCFStringEncodingUTF8);
    EXPECT_EQ(Characters(original), u"base");
    EXPECT_EQ(Characters(mutableCopy), u"baseball");
    CFHashCode before = CFHash(mutableCopy);
    Owned snapshot(CFStringCreateCopy(nullptr, mutableCopy));
    EXPECT_NE(snapshot.get(), mutableCopy);
    CFStringAppend(mutableCopy, mutableCopy);
    EXPECT_EQ(Characters(mutableCopy), u"baseballbaseball");
    EXPECT_NE(CFHash(mutableCopy), before);  // the cached hash follows the change
    EXPECT_EQ(Characters(snapshot), u"baseball");
    const UniChar bang[] = {'!'};
    CFStringAppendCharacters(mutableCopy, bang, 1);
    EXPECT_EQ(CFStringGetCharacterAtIndex(mutableCopy, 16), u'!');
    CFRelease(mutableCopy);

    Owned middle(CFStringCreateWithSubstring(nullptr, original, CFRangeMake(1, 2)));
    EXPECT_EQ(Characters(middle), u"as");
}

TEST(StringSearchDeathTest, RangeOutsideTheStringStops)
{
    EXPECT_DEATH(CFStringFindWithOptions(CFSTR("abc"), CFSTR("a"), CFRangeMake(2, 5), 0, nullptr),
                 "CFStringFindWithOptions: range \\{2, 5\\} is outside a string of length 3");
    EXPECT_DEATH(CFStringGetCharacterAtIndex(CFSTR("abc"), 3), "CFStringGetCharacterAtIndex: index 3");
}

}  // namespace
