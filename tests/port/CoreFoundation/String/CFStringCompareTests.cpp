// Comparing and searching under the comparison flags; splitting and joining.
#include "CFTesting.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace cftest;

struct Comparison {
    const char* first;
    const char* second;
    CFStringCompareFlags flags;
    CFComparisonResult expected;
};

// Each flag is shown on a pair that it decides: the same pair compares otherwise without it.
TEST(StringComparison, EachFlagDecidesItsOwnPairInAnyRangeAndLocale)
{
    const std::string longPrefix(150, 'x');  // long enough that folded text leaves the stack
    const Comparison cases[] = {
        {"HELLO", "hello", 0, kCFCompareLessThan},
        {"HELLO", "hello", kCFCompareCaseInsensitive, kCFCompareEqualTo},
        {"abcSTRASSE",
         "ABCstra\xC3\x9F"
         "e",
         kCFCompareCaseInsensitive, kCFCompareEqualTo},
        {"abc\xC3\xA9", "ABC\xC3\x89", kCFCompareCaseInsensitive, kCFCompareEqualTo},
        {"a_", "AB", kCFCompareCaseInsensitive, kCFCompareLessThan},  // folds to lower case, not upper
        {"abc", "ABCD", kCFCompareCaseInsensitive, kCFCompareLessThan},
        {"\xC3\xA9", "e\xCC\x81", 0, kCFCompareGreaterThan},
        {"\xC3\xA9", "e\xCC\x81", kCFCompareNonliteral, kCFCompareEqualTo},
        {"a\xCC\xA3\xCC\x81", "a\xCC\x81\xCC\xA3", kCFCompareNonliteral, kCFCompareEqualTo},  // marks in either order
        {"r\xC3\xA9sum\xC3\xA9", "resume", 0, kCFCompareGreaterThan},
        {"r\xC3\xA9sum\xC3\xA9", "resume", kCFCompareDiacriticInsensitive, kCFCompareEqualTo},
        {"\xC3\x89"
         "COLE",
         "ecole", kCFCompareDiacriticInsensitive, kCFCompareLessThan},
        {"\xC3\x89"
         "COLE",
         "ecole", kCFCompareDiacriticInsensitive | kCFCompareCaseInsensitive, kCFCompareEqualTo},
        {"\xEF\xBC\xA1"
         "bc",
         "Abc", 0, kCFCompareGreaterThan},
        {"\xEF\xBC\xA1"
         "bc",
         "Abc", kCFCompareWidthInsensitive, kCFCompareEqualTo},
        {"file9", "file10", 0, kCFCompareGreaterThan},
        {"file9", "file10", kCFCompareNumerically, kCFCompareLessThan},
        {"v007", "v7", kCFCompareNumerically, kCFCompareEqualTo},
        {"v1.10", "v1.9", kCFCompareNumerically, kCFCompareGreaterThan},
        {"abc", "ABC", kCFCompareCaseInsensitive | kCFCompareForcedOrdering, kCFCompareGreaterThan},
        {"a", "B", 0, kCFCompareGreaterThan},
        {"a", "B", kCFCompareLocalized, kCFCompareLessThan},
        {"\xC3\xA9", "f", kCFCompareLocalized, kCFCompareLessThan},
        {"\xC3\xA9", "e", kCFCompareLocalized, kCFCompareGreaterThan},
        {"\xC3\xA9", "e", kCFCompareLocalized | kCFCompareDiacriticInsensitive, kCFCompareEqualTo},
        {"a", "A", kCFCompareLocalized, kCFCompareLessThan},
        {"a", "A", kCFCompareLocalized | kCFCompareCaseInsensitive, kCFCompareEqualTo},
        {"\xC3\xA9", "\xC3\x89", kCFCompareLocalized | kCFCompareDiacriticInsensitive, kCFCompareLessThan},
        {"file9", "file10", kCFCompareLocalized | kCFCompareNumerically, kCFCompareLessThan},
        {"\xEF\xBC\xA1", "A", kCFCompareLocalized | kCFCompareWidthInsensitive, kCFCompareEqualTo},
        {"a", "A", kCFCompareLocalized | kCFCompareCaseInsensitive | kCFCompareForcedOrdering, kCFCompareGreaterThan},
    };
    for (const Comparison& c : cases) {
        Owned<CFStringRef> first(Make(c.first));
        Owned<CFStringRef> second(Make(c.second));
        // Localised orders are checked in the root locale, so that the user's locale cannot
        // change them (Danish puts upper case first).
        CFComparisonResult result = (c.flags & kCFCompareLocalized)
                                        ? CFStringCompareWithOptionsAndLocale(
                                              first, second, CFRangeMake(0, CFStringGetLength(first)), c.flags, nullptr)
                                        : CFStringCompare(first, second, c.flags);
        EXPECT_EQ(result, c.expected) << c.first << " vs " << c.second << " with " << c.flags;
    }
    Owned<CFStringRef> longAccented(Make((longPrefix + "\xC3\x89").c_str()));
    Owned<CFStringRef> longPlain(Make((longPrefix + "e").c_str()));
    EXPECT_EQ(CFStringCompare(longAccented, longPlain, kCFCompareDiacriticInsensitive | kCFCompareCaseInsensitive),
              kCFCompareEqualTo);
    EXPECT_EQ(CFStringCompare(longAccented, longPlain, kCFCompareCaseInsensitive), kCFCompareGreaterThan);
    CFStringRef sentence = CFSTR("the cat sat");
    EXPECT_EQ(CFStringCompareWithOptions(sentence, CFSTR("CAT"), CFRangeMake(4, 3), kCFCompareCaseInsensitive),
              kCFCompareEqualTo);
    EXPECT_EQ(CFStringCompareWithOptions(sentence, CFSTR("cat"), CFRangeMake(4, 4), 0), kCFCompareGreaterThan);
    // Any user's locale puts a before B, which the code-unit order does not.
    EXPECT_EQ(CFStringCompare(CFSTR("a"), CFSTR("B"), kCFCompareLocalized), kCFCompareLessThan);
    EXPECT_EQ(CFStringCompareWithOptions(CFSTR("xa"), CFSTR("B"), CFRangeMake(1, 1), kCFCompareLocalized),
              kCFCompareLessThan);
    EXPECT_DEATH(CFStringCompareWithOptions(sentence, CFSTR("x"), CFRangeMake(8, 4), 0),
                 "CFStringCompareWithOptions: range \\{8, 4\\}");
}

struct Search {
    const char* text;
    const char* find;
    CFStringCompareFlags flags;
    CFIndex location;  // kCFNotFound when there is no match
    CFIndex length;
};

// Ranges are in the searched string's UTF-16 units, whatever folding did to the lengths.
TEST(StringSearch, EachFlagFindsItsMatchReportedInSourceUnits)
{
    const Search cases[] = {
        {"one two One two", "two", 0, 4, 3},
        {"one two One two", "two", kCFCompareBackwards, 12, 3},
        {"one two One two", "one", kCFCompareBackwards, 0, 3},
        {"one two One two", "one", kCFCompareBackwards | kCFCompareCaseInsensitive, 8, 3},
        {"one two One two", "two", kCFCompareAnchored, kCFNotFound, 0},
        {"one two One two", "", 0, kCFNotFound, 0},
        {"Stra\xC3\x9F"
         "e",
         "SS", kCFCompareCaseInsensitive, 4, 1},
        {"\xC3\x9F", "s", kCFCompareCaseInsensitive, kCFNotFound, 0},  // half of ß is no match
        {"cafe\xCC\x81 noir", "caf\xC3\xA9", kCFCompareNonliteral, 0, 5},
        {"cafe\xCC\x81 noir", "caf\xC3\xA9", 0, kCFNotFound, 0},
        {"caf\xC3\xA9", "e", kCFCompareNonliteral, kCFNotFound, 0},
        {"cafe\xCC\x81", "e", kCFCompareNonliteral, kCFNotFound, 0},
        {"cafe\xCC\x81", "e", 0, 3, 1},
        {"caf\xC3\xA9", "E", kCFCompareDiacriticInsensitive | kCFCompareCaseInsensitive, 3, 1},
        {"\xEF\xBC\xA1\xEF\xBC\xA2\xEF\xBC\xA3"
         "abc",
         "abc", kCFCompareWidthInsensitive | kCFCompareCaseInsensitive, 0, 3},
        {"\xEF\xBC\xA1\xEF\xBC\xA2\xEF\xBC\xA3"
         "abc",
         "abc", kCFCompareWidthInsensitive | kCFCompareCaseInsensitive | kCFCompareBackwards, 3, 3},
        {"\xF0\x9F\x98\x80x\xC3\x9F", "XSS", kCFCompareCaseInsensitive, 2, 2},
        {"-x\xF0\x9F\x98\x80", "X\xF0\x9F\x98\x80", kCFCompareCaseInsensitive, 1, 3},
        {"\xC3\x89"
         "clair",
         "e", kCFCompareAnchored | kCFCompareDiacriticInsensitive | kCFCompareCaseInsensitive, 0, 1},
        {"clair\xC3\x89", "e",
         kCFCompareAnchored | kCFCompareBackwards | kCFCompareDiacriticInsensitive | kCFCompareCaseInsensitive, 5, 1},
        {"clair\xC3\x89", "e", kCFCompareAnchored | kCFCompareDiacriticInsensitive | kCFCompareCaseInsensitive,
         kCFNotFound, 0},
        {"x\xCC\x81", "\xCC\x81", kCFCompareDiacriticInsensitive, kCFNotFound, 0},  // folds to nothing
    };
    for (const Search& c : cases) {
        Owned<CFStringRef> text(Make(c.text));
        Owned<CFStringRef> find(Make(c.find));
        CFRange found = CFStringFind(text, find, c.flags);
        EXPECT_EQ(found.location, c.location) << c.text << " / " << c.find << " with " << c.flags;
        EXPECT_EQ(found.length, c.length) << c.text << " / " << c.find << " with " << c.flags;
    }
    CFRange found{};
    EXPECT_TRUE(CFStringFindWithOptions(CFSTR("one two"), CFSTR("o"), CFRangeMake(5, 2), 0, &found));
    EXPECT_EQ(found.location, 6);
    EXPECT_FALSE(CFStringFindWithOptions(CFSTR("one two"), CFSTR("two"), CFRangeMake(5, 2), 0, nullptr));
    Owned<CFStringRef> text(Make("A\xC3\xA4"
                                 "a\xC3\xA4"));
    EXPECT_TRUE(CFStringFindWithOptions(text, CFSTR("a"), CFRangeMake(1, 3), kCFCompareDiacriticInsensitive, &found));
    EXPECT_EQ(found.location, 1);
    EXPECT_TRUE(CFStringFindWithOptionsAndLocale(text, CFSTR("A"), CFRangeMake(1, 3),
                                                 kCFCompareBackwards | kCFCompareCaseInsensitive, nullptr, &found));
    EXPECT_EQ(found.location, 2);
}

TEST(StringSearch, EveryOccurrencePrefixesAndSuffixes)
{
    CFStringRef text = CFSTR("a,b,,c");
    Owned<CFArrayRef> forward(CFStringCreateArrayWithFindResults(nullptr, text, CFSTR(","), CFRangeMake(0, 6), 0));
    ASSERT_NE(forward.get(), nullptr);
    ASSERT_EQ(CFArrayGetCount(forward), 3);
    const CFIndex locations[] = {1, 3, 4};
    for (CFIndex i = 0; i < 3; ++i) {
        auto* range = static_cast<const CFRange*>(CFArrayGetValueAtIndex(forward, i));
        EXPECT_EQ(range->location, locations[i]);
        EXPECT_EQ(range->length, 1);
    }
    Owned<CFArrayRef> backward(
        CFStringCreateArrayWithFindResults(nullptr, text, CFSTR(","), CFRangeMake(2, 4), kCFCompareBackwards));
    ASSERT_EQ(CFArrayGetCount(backward), 2);
    EXPECT_EQ(static_cast<const CFRange*>(CFArrayGetValueAtIndex(backward, 0))->location, 4);
    EXPECT_EQ(CFStringCreateArrayWithFindResults(nullptr, text, CFSTR(";"), CFRangeMake(0, 6), 0), nullptr);

    EXPECT_TRUE(CFStringHasPrefix(text, CFSTR("a,")));
    EXPECT_FALSE(CFStringHasPrefix(text, CFSTR("A,")));
    EXPECT_TRUE(CFStringHasSuffix(text, CFSTR(",c")));
    EXPECT_FALSE(CFStringHasSuffix(text, CFSTR("a,b,,c,")));
    EXPECT_FALSE(CFStringHasPrefix(text, CFSTR("")));
}

TEST(StringArrays, SeparatingAndCombiningRoundTrip)
{
    struct Case {
        const char* text;
        const char* separator;
        std::vector<std::string> parts;
    };
    const Case cases[] = {
        {"a,b,,c", ",", {"a", "b", "", "c"}},
        {"::a::", "::", {"", "a", ""}},
        {"whole", ";", {"whole"}},
        {"", ",", {""}},
        {"no separator", "", {"no separator"}},
    };
    for (const Case& c : cases) {
        Owned<CFStringRef> text(Make(c.text));
        Owned<CFStringRef> separator(Make(c.separator));
        Owned<CFArrayRef> parts(CFStringCreateArrayBySeparatingStrings(nullptr, text, separator));
        ASSERT_EQ(CFArrayGetCount(parts), CFIndex(c.parts.size())) << c.text;
        for (CFIndex i = 0; i < CFArrayGetCount(parts); ++i)
            EXPECT_EQ(Text(static_cast<CFStringRef>(CFArrayGetValueAtIndex(parts, i))), c.parts[size_t(i)]) << c.text;
        Owned<CFStringRef> joined(CFStringCreateByCombiningStrings(nullptr, parts, separator));
        EXPECT_TRUE(CFEqual(joined, text)) << c.text;
    }
    Owned<CFArrayRef> none(CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks));
    Owned<CFStringRef> empty(CFStringCreateByCombiningStrings(nullptr, none, CFSTR(",")));
    EXPECT_EQ(CFStringGetLength(empty), 0);
}

}  // namespace
