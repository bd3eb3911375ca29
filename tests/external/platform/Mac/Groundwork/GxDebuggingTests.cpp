#include <Groundwork/Core/ErrorHandling/GxDebugging.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace {

using namespace Gx::Debugging;

std::string Text(ConstStringPtr inPStr) { return std::string(reinterpret_cast<const char*>(inPStr + 1), inPStr[0]); }

TEST(GxDebugging, PascalStringsTruncateAtTheirEdges)
{
    const Str255 hello = {5, 'h', 'e', 'l', 'l', 'o'};
    Str255 dest = {3, 'o', 'l', 'd'};
    EXPECT_EQ(Text(CopyPStr(nullptr, dest, sizeof dest)), "");
    EXPECT_EQ(Text(CopyPStr(hello, dest, 6)), "hello");
    LoadPStrFromCStr(dest, 255, "abcd");
    EXPECT_EQ(Text(CopyPStr(hello, dest, 3)), "he");
    EXPECT_EQ(dest[3], 'c') << "wrote beyond the destination size";

    EXPECT_EQ(Text(LoadPStrFromCStr(dest, 3, "abcdef")), "abc");
    EXPECT_EQ(Text(LoadPStrFromCStr(dest, 255, nullptr)), "");
    EXPECT_EQ(Text(LoadPStrFromCStr(dest, 255, "ab")), "ab");

    const Str255 tail = {3, 'x', 'y', 'z'};
    EXPECT_EQ(Text(AppendPStr(dest, tail, sizeof dest)), "abxyz");
    EXPECT_EQ(Text(AppendPStr(dest, tail, 7)), "abxyzx");  // room for one more
    EXPECT_EQ(Text(AppendPStr(dest, tail, 7)), "abxyzx");  // full
    EXPECT_EQ(Text(AppendPStr(dest, tail, 4)), "abx");     // over capacity: cut back
}

TEST(GxDebugging, DisplayWritesOneLineAndWaits)
{
    testing::internal::CaptureStderr();
    Gx::MenuDebugStr::Display("note", 0);
    Gx::MenuDebugStr::Display(-1234L, 0);
    Gx::MenuDebugStr::Display(std::string(300, 'z').c_str(), 0);
    auto start = std::chrono::steady_clock::now();
    const Str255 pascal = {2, 'o', 'k'};
    Gx::MenuDebugStr::Display(pascal, 6);
    auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "note\n-1234\n" + std::string(255, 'z') + "\nok\n");
    EXPECT_GE(waited, std::chrono::milliseconds(100));
}

}  // namespace
