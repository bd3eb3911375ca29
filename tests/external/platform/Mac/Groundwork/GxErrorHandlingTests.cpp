#include "ExpectThrows.h"

#include <Groundwork/Core/ErrorHandling/GxDebugging.h>

#include <chrono>
#include <string>

namespace {

const Gx::SourceLocation& kNowhere = Gx::sourceLocation_Nothing;

TEST(GxExceptions, BaseHandlerCatchesEveryKindWithItsClassAndIdentifier)
{
    ExpectThrows<Gx::LogicError>([] { Gx::LogicError::Throw(FourCC("logc"), "m", kNowhere); }, 0x6C6F6763);
    ExpectThrows<Gx::RuntimeError>([] { Gx::RuntimeError::Throw(FourCC("cfnr"), "m", kNowhere); }, 0x63666E72);
    ExpectThrows<Gx::DataError>([] { Gx::DataError::Throw(FourCC("data"), "m", kNowhere); }, FourCC("data"));
    // An OS error's identifier is fixed, whatever the status looks like.
    ExpectThrows<Gx::OSError>([] { Gx::OSError::Throw(FourCC("cfnr"), "m", kNowhere); }, 0x6F736572);
    ExpectThrows([] { Gx::OSError::Throw(-43, "m", kNowhere); }, FourCC("oser"));
    ExpectThrows([] { Gx::DataError::Throw(1, "m", kNowhere); }, 1);
}

TEST(GxExceptions, CarryOnlyIdentifierAndStatus)
{
    try {
        Gx::OSError::Throw(-43, "FSGetCatalogInfo failed", Gx::SourceLocation("Function", "File.cpp", 42));
    } catch (const Gx::OSError& e) {
        Gx::OSError copy(e);
        EXPECT_EQ(copy.GetOSErrorCode(), -43);
        Str255 reason = {3, 'o', 'l', 'd'};
        EXPECT_EQ(static_cast<const Gx::Exception&>(copy).Why(reason), reason);
        EXPECT_EQ(reason[0], 0);
        EXPECT_EQ(&e.Where(), &kNowhere);
    }
}

// Every file-layer failure checked with ExpectOSError shows the hook the status and message;
// here: the caller's own location, once per OS error only, and a hook that throws itself.
TEST(GxExceptions, HookSeesEachOSErrorOnceAndTheThrowGoesAhead)
{
    static int calls = 0;
    static const Gx::SourceLocation* seen = nullptr;
    Gx::OSError::SetThrowFunc(
        [](OSStatus, const char*, const Gx::SourceLocation& inWhere) { ++calls, seen = &inWhere; });
    Gx::SourceLocation here("Function", "File.cpp", 42);
    EXPECT_THROW(Gx::OSError::Throw(-1401, "File object has no FSRef", here), Gx::OSError);
    EXPECT_THROW(Gx::RuntimeError::Throw(FourCC("runt"), "x", here), Gx::RuntimeError);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(seen, &here);

    Gx::OSError::SetThrowFunc([](OSStatus, const char*, const Gx::SourceLocation&) { throw 7; });
    EXPECT_THROW(Gx::OSError::Throw(-43, "x", here), int);
    Gx::OSError::SetThrowFunc(nullptr);
    EXPECT_THROW(Gx::OSError::Throw(-36, "x", here), Gx::OSError);
}

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
