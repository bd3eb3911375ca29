// The Apple event wrappers under test: descriptors counted around each test, and each
// OSError's status, message and location seen through the throw hook.
#pragma once

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>

#include <Carbon/AEDataModel.h>

#include <gtest/gtest.h>

#include <string>

namespace spindeck::test {

// What the throw hook saw last.
struct ThrownOSError {
    OSStatus status = noErr;
    std::string message;
    const Gx::SourceLocation* location = nullptr;
};

class EventTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        mLive = _AEGetLiveDescriptorCount();
        Gx::OSError::SetThrowFunc(Record);
    }
    void TearDown() override
    {
        Gx::OSError::SetThrowFunc(nullptr);
        EXPECT_EQ(_AEGetLiveDescriptorCount(), mLive) << "a descriptor was not disposed of";
    }

    // Descriptors alive now that were not at the start of the test.
    long NewDescriptors() const { return _AEGetLiveDescriptorCount() - mLive; }

    template <class Call>
    void ExpectOSError(Call inCall, OSStatus inStatus, const std::string& inMessage)
    {
        sLast = ThrownOSError{};
        try {
            inCall();
            ADD_FAILURE() << "nothing thrown, expected \"" << inMessage << "\"";
        } catch (const Gx::OSError& e) {
            EXPECT_EQ(e.GetOSErrorCode(), inStatus) << inMessage;
            EXPECT_EQ(sLast.status, inStatus);
            EXPECT_EQ(sLast.message, inMessage);
            EXPECT_EQ(sLast.location, &Gx::sourceLocation_Nothing);
        }
    }

private:
    static inline ThrownOSError sLast;
    static void Record(OSStatus inStatus, const char* inMessage, const Gx::SourceLocation& inLocation)
    {
        sLast = ThrownOSError{inStatus, inMessage, &inLocation};
    }

    long mLive = 0;
};

}  // namespace spindeck::test
