// Changing mutable strings: edits by range and index, padding, replacing occurrences,
// trimming, case mapping and normalisation, and misuse.
#include "CFTesting.h"

#include <gtest/gtest.h>

namespace {

using cftest::MakeMutable;
using cftest::Owned;
using cftest::Text;

TEST(StringMutation, InsertDeleteReplaceAndPadKeepTheRestOfTheText)
{
    Owned<CFMutableStringRef> string(MakeMutable("bcd"));
    CFHashCode before = CFHash(string);
    CFStringInsert(string, 0, CFSTR("a"));
    CFStringInsert(string, CFStringGetLength(string), CFSTR("e"));
    EXPECT_EQ(Text(string), "abcde");
    EXPECT_NE(CFHash(string), before);
    CFStringInsert(string, 2, string);  // a string inserted into itself is read before it changes
    EXPECT_EQ(Text(string), "ababcdecde");
    CFStringDelete(string, CFRangeMake(1, 3));
    EXPECT_EQ(Text(string), "acdecde");
    CFStringReplace(string, CFRangeMake(1, 2), CFSTR("XYZ"));
    EXPECT_EQ(Text(string), "aXYZecde");
    CFStringReplace(string, CFRangeMake(0, CFStringGetLength(string)), string);
    EXPECT_EQ(Text(string), "aXYZecde");
    CFStringReplaceAll(string, CFSTR("fin"));
    EXPECT_TRUE(CFEqual(string, CFSTR("fin")));
    EXPECT_EQ(CFHash(string), CFHash(CFSTR("fin")));
    const unsigned char pascal[] = {3, 'a', 'l', 0x8E, 'X'};  // the length byte leaves X out
    CFStringAppendPascalString(string, pascal, kCFStringEncodingMacRoman);
    EXPECT_EQ(Text(string), "final\xC3\xA9");
    // Padding lengthens from the pad index, or truncates.
    Owned<CFMutableStringRef> padded(MakeMutable("ab"));
    CFStringPad(padded, CFSTR("xyz"), 9, 1);
    EXPECT_EQ(Text(padded), "abyzxyzxy");
    CFStringPad(padded, nullptr, 3, 0);
    EXPECT_EQ(Text(padded), "aby");
    CFStringPad(padded, padded, 5, 2);  // padding with itself uses the text from before
    EXPECT_EQ(Text(padded), "abyya");
    CFStringPad(padded, nullptr, 0, 0);
    EXPECT_EQ(CFStringGetLength(padded), 0);
}

TEST(StringMutation, FindAndReplaceCountsWithinTheRangeAndUnderTheOptions)
{
    Owned<CFMutableStringRef> string(MakeMutable("a-b-c-d"));
    EXPECT_EQ(CFStringFindAndReplace(string, CFSTR("-"), CFSTR("+"), CFRangeMake(2, 3), 0), 1);
    EXPECT_EQ(Text(string), "a-b+c-d");
    EXPECT_EQ(CFStringFindAndReplace(string, CFSTR("-"), CFSTR("--"), CFRangeMake(0, 7), 0), 2);
    EXPECT_EQ(Text(string), "a--b+c--d");
    EXPECT_EQ(CFStringFindAndReplace(string, CFSTR("?"), CFSTR("!"), CFRangeMake(0, 9), 0), 0);
    EXPECT_EQ(Text(string), "a--b+c--d");

    struct Case {
        const char* text;
        const char* find;
        const char* replacement;
        CFStringCompareFlags options;
        CFIndex count;
        const char* result;
    };
    const Case cases[] = {
        {"Foo foo FOO", "foo", "x", 0, 1, "Foo x FOO"},
        {"Foo foo FOO", "foo", "x", kCFCompareCaseInsensitive, 3, "x x x"},
        {"aaa", "aa", "b", 0, 1, "ba"},
        {"aaa", "aa", "b", kCFCompareBackwards, 1, "ab"},
        {"xx-xx", "xx", "y", kCFCompareAnchored, 1, "y-xx"},
        {"xx-xx", "xx", "y", kCFCompareAnchored | kCFCompareBackwards, 1, "xx-y"},
        {"-xx", "xx", "y", kCFCompareAnchored, 0, "-xx"},
        {"Stra\xC3\x9F"
         "e",
         "SS", "ss", kCFCompareCaseInsensitive, 1, "Strasse"},
        {"r\xC3\xA9sum\xC3\xA9 resume", "resume", "CV", kCFCompareDiacriticInsensitive, 2, "CV CV"},
    };
    for (const Case& c : cases) {
        Owned<CFMutableStringRef> text(MakeMutable(c.text));
        Owned<CFStringRef> find(cftest::Make(c.find));
        Owned<CFStringRef> replacement(cftest::Make(c.replacement));
        CFRange all = CFRangeMake(0, CFStringGetLength(text));
        EXPECT_EQ(CFStringFindAndReplace(text, find, replacement, all, c.options), c.count)
            << c.text << " / " << c.find;
        EXPECT_EQ(Text(text), c.result) << c.text << " / " << c.find;
    }
}

TEST(StringMutation, TrimWhitespaceCaseMappingAndTheFourNormalForms)
{
    Owned<CFMutableStringRef> string(MakeMutable(" \t\xC2\xA0 two words\n\xE3\x80\x80"));
    CFStringTrimWhitespace(string);
    EXPECT_EQ(Text(string), "two words");
    Owned<CFMutableStringRef> blank(MakeMutable(" \r\n "));
    CFStringTrimWhitespace(blank);
    EXPECT_EQ(CFStringGetLength(blank), 0);

    Owned<CFMutableStringRef> text(MakeMutable("stra\xC3\x9F"
                                               "e \xC3\xA0 l'\xC3\x89T\xC3\x89 hello wORLD"));
    CFStringUppercase(text, nullptr);
    EXPECT_EQ(Text(text), "STRASSE \xC3\x80 L'\xC3\x89T\xC3\x89 HELLO WORLD");  // ß grows into two letters
    CFStringLowercase(text, nullptr);
    EXPECT_EQ(Text(text), "strasse \xC3\xA0 l'\xC3\xA9t\xC3\xA9 hello world");
    CFStringCapitalize(text, nullptr);
    EXPECT_EQ(Text(text), "Strasse \xC3\x80 L'\xC3\xA9t\xC3\xA9 Hello World");
    Owned<CFMutableStringRef> forms(
        MakeMutable("\xC3\xA9\xEF\xAC\x81\xEF\xBC\xA1"));  // é, the fi ligature, full-width A
    CFStringNormalize(forms, kCFStringNormalizationFormD);
    EXPECT_EQ(Text(forms), "e\xCC\x81\xEF\xAC\x81\xEF\xBC\xA1");
    CFStringNormalize(forms, kCFStringNormalizationFormC);
    EXPECT_EQ(Text(forms), "\xC3\xA9\xEF\xAC\x81\xEF\xBC\xA1");
    CFStringNormalize(forms, kCFStringNormalizationFormKD);
    EXPECT_EQ(Text(forms), "e\xCC\x81"
                           "fiA");
    CFStringNormalize(forms, kCFStringNormalizationFormKC);
    EXPECT_EQ(Text(forms), "\xC3\xA9"
                           "fiA");
}

TEST(StringMutationDeathTest, ImmutableStringsAndBadPlacesStopTheProcess)
{
    auto constant = const_cast<CFMutableStringRef>(CFSTR("fixed"));
    EXPECT_DEATH(CFStringInsert(constant, 0, CFSTR("x")), "CFStringInsert: the string .* is not mutable");
    EXPECT_DEATH(CFStringPad(constant, nullptr, 0, 0), "CFStringPad: the string .* is not mutable");
    EXPECT_DEATH(CFStringUppercase(constant, nullptr), "CFStringUppercase: the string .* is not mutable");
    EXPECT_DEATH(CFStringFindAndReplace(constant, CFSTR("f"), CFSTR("g"), CFRangeMake(0, 1), 0),
                 "CFStringFindAndReplace: the string .* is not mutable");
    Owned<CFMutableStringRef> string(MakeMutable("abc"));
    EXPECT_DEATH(CFStringInsert(string, 4, CFSTR("x")), "CFStringInsert: index 4");
    EXPECT_DEATH(CFStringDelete(string, CFRangeMake(2, 2)), "CFStringDelete: range \\{2, 2\\}");
    EXPECT_DEATH(CFStringReplace(string, CFRangeMake(-1, 1), CFSTR("x")), "CFStringReplace: range \\{-1, 1\\}");
    EXPECT_DEATH(CFStringPad(string, CFSTR("xy"), 5, 2), "CFStringPad: pad index 2");
    EXPECT_DEATH(CFStringPad(string, nullptr, 5, 0), "CFStringPad: a NULL pad string");
    EXPECT_DEATH(CFStringNormalize(string, CFStringNormalizationForm(7)), "CFStringNormalize: 7 is not");
    EXPECT_DEATH(CFStringLowercase(string, reinterpret_cast<CFLocaleRef>(CFSTR("en"))),
                 "CFStringLowercase: .* not a locale");
}

}  // namespace
