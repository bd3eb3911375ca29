// UCCompareTextDefault: the file-name options, each option on its own, arguments, threads.
#include <Carbon/MacErrors.h>
#include <Carbon/UnicodeUtilities.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

// The options the file layer compares names with.
constexpr UCCollateOptions kFileNames = 0x3800E;

// -1, 0 or 1, checked against the equivalence the call answers on its own.
SInt32 Order(std::u16string_view inLeft, std::u16string_view inRight, UCCollateOptions inOptions = kFileNames)
{
    auto* left = reinterpret_cast<const UniChar*>(inLeft.data());
    auto* right = reinterpret_cast<const UniChar*>(inRight.data());
    SInt32 order = 99;
    Boolean equivalent = 2;
    EXPECT_EQ(UCCompareTextDefault(inOptions, left, inLeft.size(), right, inRight.size(), nullptr, &order), noErr);
    EXPECT_EQ(UCCompareTextDefault(inOptions, left, inLeft.size(), right, inRight.size(), &equivalent, nullptr), noErr);
    EXPECT_EQ(equivalent, order == 0);
    return order;
}

TEST(Collation, FileNameOptions)
{
    EXPECT_EQ(Order(u"Report", u"report"), 0);
    EXPECT_EQ(Order(u"file9", u"file10"), -1);
    EXPECT_EQ(Order(u"file10", u"file9"), 1);
    EXPECT_EQ(Order(u"file010", u"file10"), 0);
    EXPECT_NE(Order(u"é", u"e"), 0);
    EXPECT_EQ(Order(u"\uFF21", u"A"), 0);              // full-width A
    EXPECT_EQ(Order(u"\uFF76\uFF9E", u"\u30AC"), 0);   // half-width ka with voicing mark
    EXPECT_EQ(Order(u"caf\u00E9", u"cafe\u0301"), 0);  // composed and decomposed
    EXPECT_NE(Order(u"a-b", u"ab"), 0);                // punctuation counts
    EXPECT_EQ(Order(u"", u""), 0);
    EXPECT_EQ(Order(u"", u"a"), -1);
    EXPECT_EQ(Order(u"apple", u"Banana"), -1);
    EXPECT_EQ(Order(u"Straße", u"STRASSE"), 0);
}

TEST(Collation, EachOptionOnItsOwnAndTheArguments)
{
    // Without an insensitivity, the difference it would pass over counts.
    EXPECT_NE(Order(u"Report", u"report", 0), 0);
    EXPECT_EQ(Order(u"Report", u"report", kUCCollateCaseInsensitiveMask), 0);
    EXPECT_NE(Order(u"\uFF21", u"A", 0), 0);
    EXPECT_EQ(Order(u"\uFF21", u"A", kUCCollateWidthInsensitiveMask), 0);
    EXPECT_NE(Order(u"\u00E9", u"e\u0301", 0), 0);
    EXPECT_EQ(Order(u"\u00E9", u"e\u0301", kUCCollateComposeInsensitiveMask), 0);
    EXPECT_EQ(Order(u"R\u00E9sum\u00E9", u"Resume", kUCCollateDiacritInsensitiveMask), 0);
    EXPECT_NE(Order(u"R\u00E9sum\u00E9", u"resume", kUCCollateDiacritInsensitiveMask), 0);
    EXPECT_EQ(Order(u"R\u00C9SUM\u00C9", u"resume", kUCCollateDiacritInsensitiveMask | kUCCollateCaseInsensitiveMask),
              0);

    // Punctuation and spaces are passed over unless they are significant.
    EXPECT_EQ(Order(u"a-b c", u"abc", 0), 0);
    EXPECT_NE(Order(u"a-b c", u"abc", kUCCollatePunctuationSignificantMask), 0);

    // Digits by value only when asked.
    EXPECT_EQ(Order(u"file10", u"file9", 0), -1);
    EXPECT_EQ(Order(u"file10", u"file9", kUCCollateDigitsOverrideMask), -1);
    EXPECT_EQ(Order(u"file10", u"file9", kUCCollateDigitsAsNumberMask), 1);

    // The collation type in the top byte is accepted.
    EXPECT_EQ(Order(u"a", u"a", kUCCollateTypeHFSExtended << kUCCollateTypeShiftBits), 0);

    const UniChar text[] = {'a'};
    SInt32 order = 0;
    Boolean equivalent = false;
    EXPECT_EQ(UCCompareTextDefault(kFileNames, text, 1, text, 1, nullptr, nullptr), paramErr);
    EXPECT_EQ(UCCompareTextDefault(kFileNames, nullptr, 1, text, 1, &equivalent, &order), paramErr);
    EXPECT_EQ(UCCompareTextDefault(kFileNames, text, 1, nullptr, 3, &equivalent, &order), paramErr);
    EXPECT_EQ(UCCompareTextDefault(1 << 20, text, 1, text, 1, &equivalent, &order), paramErr);
    EXPECT_EQ(UCCompareTextDefault(kFileNames, nullptr, 0, text, 1, &equivalent, &order), noErr);
    EXPECT_EQ(order, -1);
    EXPECT_FALSE(equivalent);
}

TEST(Collation, ThreadsShareTheCollators)
{
    const UniChar nine[] = {'f', '9'}, ten[] = {'F', '1', '0'};
    std::vector<int> wrong(4, 0);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < wrong.size(); ++t)
        threads.emplace_back([&, t] {
            // Numbers by value, or digit by digit.
            UCCollateOptions options = t % 2 ? kFileNames : kUCCollateCaseInsensitiveMask;
            for (int i = 0; i < 2000; ++i) {
                SInt32 order = 0;
                UCCompareTextDefault(options, nine, 2, ten, 3, nullptr, &order);
                wrong[t] += order != (t % 2 ? -1 : 1);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
