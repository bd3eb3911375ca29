// The byte buffer: what each constructor leaves in the block, the two zeros after it, the
// assignment that keeps the old block, the clipped copy and hexadecimal in both directions.
#include <utils/BytesBubble.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes Of(std::string_view inText) { return Bytes(inText.begin(), inText.end()); }

// The contents and the two zeros that must follow them.
Bytes Block(const kvx::BytesBubble& inBubble)
{
    return Bytes(inBubble.ptr(), inBubble.ptr() + inBubble.sizeInBytes() + 2);
}

Bytes Terminated(Bytes inContents)
{
    inContents.insert(inContents.end(), {0, 0});
    return inContents;
}

TEST(BytesBubble, ConstructorsFillTheBlockAndEndInTwoZeros)
{
    const unsigned char abc[] = {'a', 'b', 'c'};
    const struct {
        const char* what;
        std::function<kvx::BytesBubble()> make;
        Bytes contents;
    } cases[] = {
        {"bytes", [&] { return kvx::BytesBubble(abc, 3); }, Of("abc")},
        {"no bytes", [&] { return kvx::BytesBubble(abc, 0); }, {}},
        {"short number", [] { return kvx::BytesBubble(0x1a2bUL, 0UL); }, Of(std::string_view("1a2b\0\0\0\0", 8))},
        {"number in 12", [] { return kvx::BytesBubble(0xdeadbeefUL, 12UL); }, Of(std::string_view("deadbeef\0\0\0\0", 12))},
        {"zero", [] { return kvx::BytesBubble(0UL, 8UL); }, Of(std::string_view("0\0\0\0\0\0\0\0", 8))},
        {"cut to the size", [] { return kvx::BytesBubble(ULONG_MAX, 8UL); }, Of("ffffffff")},
        {"copy", [&] { kvx::BytesBubble source(abc, 2); return kvx::BytesBubble(source); }, Of("ab")},
    };
    for (const auto& [what, make, contents] : cases)
        EXPECT_EQ(Block(make()), Terminated(contents)) << what;
}

// The generator is reseeded from the clock before every draw, so a buffer made within one
// second repeats the first draw after seeding with that second; retried across a tick.
TEST(BytesBubble, RandomFillRepeatsTheDrawOfTheCurrentSecond)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        const std::time_t before = std::time(nullptr);
        kvx::BytesBubble first(10UL), second(10UL);
        if (std::time(nullptr) != before)
            continue;
        std::srand(unsigned(before));
        const int draw = std::rand();
        Bytes group(sizeof draw);
        std::memcpy(group.data(), &draw, sizeof draw);
        Bytes expected = group;
        expected.insert(expected.end(), group.begin(), group.end());
        expected.insert(expected.end(), group.begin(), group.begin() + 2);
        EXPECT_EQ(Block(first), Terminated(expected));
        EXPECT_EQ(Block(second), Block(first));
        return;
    }
    FAIL() << "the clock ticked during every attempt";
}

TEST(BytesBubble, AssignmentCopiesIntoAFreshBlockAndKeepsTheOldOne)
{
    const unsigned char one[] = {1, 2, 3}, two[] = {9, 8};
    kvx::BytesBubble target(one, 3);
    const kvx::BytesBubble source(two, 2);
    unsigned char* old = target.ptr();

    target = source;
    EXPECT_EQ(Block(target), Terminated({9, 8}));
    EXPECT_NE(target.ptr(), source.ptr());
    // Still allocated and unchanged: a freed block would be a use-after-free under ASan.
    EXPECT_NE(target.ptr(), old);
    EXPECT_EQ(Bytes(old, old + 5), Terminated({1, 2, 3}));
    std::free(old);  // the block the assignment leaks by design, released so the leak check stays quiet
}

TEST(BytesBubble, ResetAndCopyClippedAtTheEnd)
{
    kvx::BytesBubble bubble(Of("x").data(), 1);
    bubble.reset(8, nullptr);
    EXPECT_EQ(Block(bubble), Bytes(10, 0));

    // The source holds only what the clip lets through, so a copy that reads further is an
    // error under ASan as well as a wrong result here.
    const struct {
        unsigned long length;
        unsigned int offset;
        std::size_t copied;
    } cases[] = {{10, 4, 4}, {3, 2, 3}, {0, 0, 0}, {5, 8, 0}, {ULONG_MAX, 6, 2}, {8, 0, 8}};
    for (const auto& [length, offset, copied] : cases) {
        const Bytes start = Of("ABCDEFGH");
        bubble.reset(8, start.data());
        const Bytes source(copied, '*');
        bubble.copy(source.data(), length, offset);
        Bytes expected = start;
        std::fill_n(expected.begin() + offset, copied, '*');
        EXPECT_EQ(Block(bubble), Terminated(expected)) << length << " bytes at " << offset;
    }
}

TEST(BytesBubble, HexadecimalTextBothWays)
{
    const struct {
        std::string_view text;
        Bytes parsed;
    } cases[] = {
        {"0aFF", {0x0A, 0xFF}}, {"abc", {0xAB}}, {"", {}}, {"7gg7", {7, 0}}, {" 7-1+f", {7, 0xFF, 0x0F}},
    };
    for (const auto& [text, parsed] : cases) {
        kvx::BytesBubble bubble(Of(text).data(), text.size());
        bubble.parseCharsAsHexDigits();
        EXPECT_EQ(Block(bubble), Terminated(parsed)) << '"' << text << '"';
    }

    const Bytes bytes = {0x00, 0x0A, 0x7F, 0x80, 0xFF};
    const kvx::BytesBubble bubble(bytes.data(), bytes.size());
    EXPECT_EQ(bubble.hexStr(), "000a7f80ff");
    EXPECT_EQ(kvx::BytesBubble(bytes.data(), 0).hexStr(), "");
    kvx::BytesBubble text(Of(bubble.hexStr()).data(), 10);
    text.parseCharsAsHexDigits();
    EXPECT_EQ(Block(text), Block(bubble));

    for (int count : {5, 0, -1}) {
        testing::internal::CaptureStderr();
        kvx::BytesBubble::printBytesAsHex(bytes.data(), count);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), count > 0 ? "000a7f80ff\n" : "\n");
    }
}

}  // namespace
