// The byte buffer: what each constructor leaves in the block, the two zeros after it, the
// assignment that keeps the old block, the clipped copy and hexadecimal in both directions.
#include <utils/BytesBubble.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using namespace std::string_literals;

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
    const kvx::BytesBubble abc(Of("abc").data(), 3);
    const std::pair<kvx::BytesBubble, std::string> cases[] = {
        {abc, "abc"},
        {kvx::BytesBubble(nullptr, 0), ""},
        {kvx::BytesBubble(0x1a2bUL, 0UL), "1a2b\0\0\0\0"s},
        {kvx::BytesBubble(0xdeadbeefUL, 12UL), "deadbeef\0\0\0\0"s},
        {kvx::BytesBubble(ULONG_MAX, 8UL), "ffffffff"},  // cut to the size
    };
    for (const auto& [bubble, contents] : cases)
        EXPECT_EQ(Block(bubble), Terminated(Of(contents))) << '"' << contents << '"';
}

// The generator is reseeded from the clock before every draw, so a buffer made within one
// second repeats the first draw after seeding with that second; retried across a tick.
TEST(BytesBubble, RandomFillRepeatsTheDrawOfTheCurrentSecond)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        const std::time_t before = std::time(nullptr);
        const kvx::BytesBubble first(10UL), second(10UL);
        if (std::time(nullptr) != before)
            continue;
        std::srand(unsigned(before));
        const int draw = std::rand();
        Bytes expected(10);
        for (std::size_t at = 0; at < 10; at += 4)
            std::memcpy(expected.data() + at, &draw, std::min<std::size_t>(4, 10 - at));
        EXPECT_EQ(Block(first), Terminated(expected));
        EXPECT_EQ(Block(second), Block(first));
        return;
    }
    FAIL() << "the clock ticked during every attempt";
}

TEST(BytesBubble, AssignmentCopiesIntoAFreshBlockAndKeepsTheOldOne)
{
    kvx::BytesBubble target(Of("old").data(), 3);
    const kvx::BytesBubble source(Of("new!").data(), 4);
    unsigned char* old = target.ptr();
    target = source;
    EXPECT_EQ(Block(target), Terminated(Of("new!")));
    EXPECT_NE(target.ptr(), source.ptr());
    // Still allocated and unchanged: had it been freed, reading it would fail under ASan.
    EXPECT_EQ(Bytes(old, old + 5), Terminated(Of("old")));
    std::free(old);  // the block the assignment leaks on purpose, released here to keep the leak check quiet
}

TEST(BytesBubble, ResetAndCopyClippedAtTheEnd)
{
    kvx::BytesBubble bubble(Of("x").data(), 1);
    bubble.reset(8, nullptr);
    EXPECT_EQ(Block(bubble), Bytes(10, 0));

    // The source holds only what the clip lets through: reading further fails under ASan.
    const struct {
        unsigned long length;
        unsigned int offset;
        std::size_t copied;
    } cases[] = {{10, 4, 4}, {3, 2, 3}, {0, 0, 0}, {5, 8, 0}, {ULONG_MAX, 6, 2}, {8, 0, 8}};
    for (const auto& [length, offset, copied] : cases) {
        bubble.reset(8, Of("ABCDEFGH").data());
        bubble.copy(Bytes(copied, '*').data(), length, offset);
        Bytes expected = Of("ABCDEFGH");
        std::fill_n(expected.begin() + offset, copied, '*');
        EXPECT_EQ(Block(bubble), Terminated(expected)) << length << " bytes at " << offset;
    }
}

TEST(BytesBubble, HexadecimalTextBothWays)
{
    const std::pair<std::string_view, Bytes> cases[] = {
        {"0aFF", {0x0A, 0xFF}}, {"abc", {0xAB}}, {"", {}}, {"7gg7", {7, 0}}, {" 7-1+f", {7, 0xFF, 0x0F}},
    };
    for (const auto& [text, parsed] : cases) {
        kvx::BytesBubble bubble(Of(text).data(), text.size());
        bubble.parseCharsAsHexDigits();
        EXPECT_EQ(Block(bubble), Terminated(parsed)) << '"' << text << '"';
    }

    const Bytes bytes = {0x00, 0x0A, 0x7F, 0x80, 0xFF};
    EXPECT_EQ(kvx::BytesBubble(bytes.data(), 5).hexStr(), "000a7f80ff");
    EXPECT_EQ(kvx::BytesBubble(bytes.data(), 0).hexStr(), "");
    for (int count : {5, 0, -1}) {
        testing::internal::CaptureStderr();
        kvx::BytesBubble::printBytesAsHex(bytes.data(), count);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), count > 0 ? "000a7f80ff\n" : "\n");
    }
}

}  // namespace
