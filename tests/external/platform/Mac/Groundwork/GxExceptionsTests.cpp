#include "ExpectThrows.h"

#include <string>

namespace {

using Gx::sourceLocation_Nothing;

struct {
    int count = 0;
    OSStatus code = 0;
    std::string message;
    const Gx::SourceLocation* location = nullptr;
} sHookCall;

void RecordingHook(OSStatus inCode, const char* inMessage, const Gx::SourceLocation& inLocation)
{
    sHookCall = {sHookCall.count + 1, inCode, inMessage, &inLocation};
}

TEST(GxExceptions, BaseHandlerCatchesEveryKindWithItsClassAndIdentifier)
{
    ExpectThrows<Gx::LogicError>([] { Gx::LogicError::Throw(FourCC("logc"), "m", sourceLocation_Nothing); },
                                 0x6C6F6763);
    ExpectThrows<Gx::RuntimeError>([] { Gx::RuntimeError::Throw(FourCC("cfnr"), "m", sourceLocation_Nothing); },
                                   0x63666E72);
    ExpectThrows<Gx::DataError>([] { Gx::DataError::Throw(FourCC("data"), "m", sourceLocation_Nothing); },
                                FourCC("data"));
    // An OS error's identifier is fixed, whatever the status looks like.
    ExpectThrows<Gx::OSError>([] { Gx::OSError::Throw(FourCC("cfnr"), "m", sourceLocation_Nothing); }, 0x6F736572);
    ExpectThrows([] { Gx::OSError::Throw(-43, "m", sourceLocation_Nothing); }, FourCC("oser"));
    ExpectThrows([] { Gx::DataError::Throw(1, "m", sourceLocation_Nothing); }, 1);
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
        EXPECT_EQ(&e.Where(), &sourceLocation_Nothing);
        EXPECT_TRUE(e.Where().function == nullptr && e.Where().file == nullptr && e.Where().line == 0);
    }
}

TEST(GxExceptions, HookSeesEachOSErrorOnceAndTheThrowGoesAhead)
{
    sHookCall = {};
    Gx::OSError::SetThrowFunc(RecordingHook);
    Gx::SourceLocation here("Function", "File.cpp", 42);
    EXPECT_THROW(Gx::OSError::Throw(-1401, "File object has no FSRef", here), Gx::OSError);
    EXPECT_EQ(sHookCall.count, 1);
    EXPECT_EQ(sHookCall.code, -1401);
    EXPECT_EQ(sHookCall.message, "File object has no FSRef");
    EXPECT_EQ(sHookCall.location, &here);
    EXPECT_THROW(Gx::RuntimeError::Throw(FourCC("runt"), "x", here), Gx::RuntimeError);

    Gx::OSError::SetThrowFunc([](OSStatus, const char*, const Gx::SourceLocation&) { throw 7; });
    EXPECT_THROW(Gx::OSError::Throw(-43, "x", here), int);
    Gx::OSError::SetThrowFunc(nullptr);
    EXPECT_THROW(Gx::OSError::Throw(-36, "x", here), Gx::OSError);
    EXPECT_EQ(sHookCall.count, 1);
}

}  // namespace
