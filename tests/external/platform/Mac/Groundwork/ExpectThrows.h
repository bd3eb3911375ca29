// Checks that a call throws a Gx exception of class E with the given identifier, or an
// OSError with the status and message that the throw hook is given.
#pragma once

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>

#include <gtest/gtest.h>

#include <string>

template <class E = Gx::Exception, class Call>
void ExpectThrows(Call inCall, Gx::ExceptionIDT inID)
{
    try {
        inCall();
        ADD_FAILURE() << "nothing thrown";
    } catch (const E& e) {
        EXPECT_EQ(e.What(), inID);
    }
}

// What the throw hook saw last.
struct ThrownOSError {
    OSStatus status = noErr;
    std::string message;
    const Gx::SourceLocation* location = nullptr;
};
inline ThrownOSError gThrownOSError;

// The exception carries only the status: the message and the location reach the hook alone,
// and this layer gives no location.
template <class Call>
void ExpectOSError(Call inCall, OSStatus inStatus, const std::string& inMessage)
{
    struct Hook {
        Hook()
        {
            gThrownOSError = {};
            Gx::OSError::SetThrowFunc([](OSStatus inCode, const char* inText, const Gx::SourceLocation& inWhere) {
                gThrownOSError = {inCode, inText, &inWhere};
            });
        }
        ~Hook() { Gx::OSError::SetThrowFunc(nullptr); }
    } hook;
    try {
        inCall();
        ADD_FAILURE() << "nothing thrown, expected \"" << inMessage << "\"";
    } catch (const Gx::OSError& e) {
        EXPECT_EQ(e.GetOSErrorCode(), inStatus) << inMessage;
        EXPECT_EQ(gThrownOSError.status, inStatus);
        EXPECT_EQ(gThrownOSError.message, inMessage);
        EXPECT_EQ(gThrownOSError.location, &Gx::sourceLocation_Nothing);
    }
}
