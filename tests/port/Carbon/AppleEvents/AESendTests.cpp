// Sending events: to this process's handlers, the quit event to other processes, and the
// refusals with the platform's statuses.
#include "AETesting.h"
#include "ChildProcess.h"

#include <Carbon/AEDataModel.h>
#include <Carbon/AppleEvents.h>
#include <Carbon/MacErrors.h>
#include <Carbon/Processes.h>

#include <gtest/gtest.h>

#include <csignal>
#include <string>

using spindeck::test::AttributeOf;
using spindeck::test::ChildProcess;
using spindeck::test::Desc;
using spindeck::test::ParamOf;
using spindeck::test::SameDescs;

namespace {

constexpr AEEventClass kTestClass = FourCC("SdTs");
constexpr AEEventID kEcho = FourCC("echo");

template <class Address>
void MakeEvent(DescType inAddressType, const Address& inAddress, AEEventClass inClass, AEEventID inID,
               AppleEvent& outEvent)
{
    Desc address;
    ASSERT_EQ(AECreateDesc(inAddressType, &inAddress, sizeof inAddress, &address.d), noErr);
    ASSERT_EQ(AECreateAppleEvent(inClass, inID, &address.d, kAutoGenerateReturnID, kAnyTransactionID, &outEvent),
              noErr);
}

OSErr Send(const AppleEvent& inEvent, AppleEvent* outReply, AESendMode inMode, long inTimeout = kAEDefaultTimeout)
{
    return AESend(&inEvent, outReply, inMode, kAENormalPriority, inTimeout, nullptr, nullptr);
}

// The quit request as the product sends it: no reply, default time-out.
OSErr SendQuit(const ProcessSerialNumber& inPSN)
{
    Desc event;
    MakeEvent(typeProcessSerialNumber, inPSN, kCoreEventClass, kAEQuitApplication, event.d);
    return Send(event.d, nullptr, kAEQueueReply);
}

// Copies the direct object into the reply and counts its calls; a "fail" parameter makes
// it answer that status.
OSErr EchoHandler(const AppleEvent* inEvent, AppleEvent* ioReply, SRefCon inRefcon)
{
    ++*static_cast<int*>(inRefcon);
    SInt16 failure = 0;
    if (AEGetParamPtr(inEvent, FourCC("fail"), typeSInt16, nullptr, &failure, sizeof failure, nullptr) == noErr)
        return failure;
    Desc direct;
    if (OSErr status = AEGetParamDesc(inEvent, keyDirectObject, typeWildCard, &direct.d); status != noErr)
        return status;
    return AEPutParamDesc(ioReply, keyDirectObject, &direct.d);
}

OSErr AnyEventHandler(const AppleEvent*, AppleEvent*, SRefCon inRefcon)
{
    ++*static_cast<int*>(inRefcon);
    return noErr;
}

using AEQuit = spindeck::test::DescriptorTest;

class AESendToSelf : public spindeck::test::DescriptorTest {
protected:
    void SetUp() override
    {
        DescriptorTest::SetUp();
        ASSERT_EQ(AEInstallEventHandler(kTestClass, kEcho, EchoHandler, &mCalls, false), noErr);
    }
    void TearDown() override
    {
        EXPECT_EQ(AERemoveEventHandler(kTestClass, kEcho, EchoHandler, false), noErr);
        DescriptorTest::TearDown();
    }

    int mCalls = 0;
    const ProcessSerialNumber mSelf{0, kCurrentProcess};
};

TEST_F(AESendToSelf, DispatchesToTheHandlerAndReturnsItsReply)
{
    Desc event, reply;
    MakeEvent(typeProcessSerialNumber, mSelf, kTestClass, kEcho, event.d);
    ASSERT_EQ(AEPutParamPtr(&event.d, keyDirectObject, typeUTF8Text, "ping", 4), noErr);

    ASSERT_EQ(Send(event.d, &reply.d, kAEWaitReply), noErr);
    EXPECT_EQ(mCalls, 1);
    char text[4];
    Size size = 0;
    ASSERT_EQ(AEGetParamPtr(&reply.d, keyDirectObject, typeUTF8Text, nullptr, text, 4, &size), noErr);
    EXPECT_EQ(std::string(text, 4), "ping");
    EXPECT_EQ(AttributeOf<AEEventID>(reply.d, keyEventIDAttr, typeType), kAEAnswer);

    // Without waiting there is no reply to give, but the handler still runs.
    AEDisposeDesc(&reply.d);
    ASSERT_EQ(Send(event.d, &reply.d, kAENoReply), noErr);
    EXPECT_EQ(mCalls, 2);
    EXPECT_EQ(reply.d.descriptorType, typeNull);

    // Addressed by process id, the event reaches the same handler.
    Desc byPID;
    MakeEvent(typeKernelProcessID, ::getpid(), kTestClass, kEcho, byPID.d);
    ASSERT_EQ(Send(byPID.d, nullptr, kAENoReply), noErr);
    EXPECT_EQ(mCalls, 3);
}

TEST_F(AESendToSelf, FailuresComeBackInTheReplyAndRefusalsAsStatuses)
{
    Desc failing, unknown, reply, otherReply, record, bySignature;
    MakeEvent(typeProcessSerialNumber, mSelf, kTestClass, kEcho, failing.d);
    SInt16 failure = -4242;
    AEPutParamPtr(&failing.d, FourCC("fail"), typeSInt16, &failure, sizeof failure);
    ASSERT_EQ(Send(failing.d, &reply.d, kAEWaitReply), noErr);
    EXPECT_EQ(ParamOf<SInt32>(reply.d, keyErrorNumber, typeSInt32), -4242);

    MakeEvent(typeProcessSerialNumber, mSelf, kTestClass, FourCC("none"), unknown.d);
    EXPECT_EQ(Send(unknown.d, &otherReply.d, kAEWaitReply), errAEEventNotHandled);
    EXPECT_EQ(ParamOf<SInt32>(otherReply.d, keyErrorNumber, typeSInt32), errAEEventNotHandled);

    EXPECT_EQ(Send(failing.d, nullptr, 0), errAEUnknownSendMode);
    AECreateList(nullptr, 0, true, &record.d);
    EXPECT_EQ(Send(record.d, nullptr, kAENoReply), errAENotAppleEvent);
    MakeEvent(typeApplSignature, FourCC("ttxt"), kTestClass, kEcho, bySignature.d);
    EXPECT_EQ(Send(bySignature.d, nullptr, kAENoReply), errAEUnknownAddressType);
    EXPECT_EQ(mCalls, 1);
}

TEST_F(AESendToSelf, PrefersTheMostSpecificHandler)
{
    int anyCalls = 0;
    ASSERT_EQ(AEInstallEventHandler(typeWildCard, typeWildCard, AnyEventHandler, &anyCalls, false), noErr);
    Desc echo, other;
    MakeEvent(typeProcessSerialNumber, mSelf, kTestClass, kEcho, echo.d);
    MakeEvent(typeProcessSerialNumber, mSelf, FourCC("othr"), FourCC("evnt"), other.d);
    EXPECT_EQ(Send(echo.d, nullptr, kAENoReply), noErr);
    EXPECT_EQ(Send(other.d, nullptr, kAENoReply), noErr);
    EXPECT_EQ(mCalls, 1);
    EXPECT_EQ(anyCalls, 1);

    AEEventHandlerUPP handler = nullptr;
    SRefCon refcon = nullptr;
    ASSERT_EQ(AEGetEventHandler(typeWildCard, typeWildCard, &handler, &refcon, false), noErr);
    EXPECT_EQ(handler, AnyEventHandler);
    EXPECT_EQ(refcon, &anyCalls);
    EXPECT_EQ(AERemoveEventHandler(typeWildCard, typeWildCard, EchoHandler, false), errAEHandlerNotFound);
    EXPECT_EQ(AERemoveEventHandler(typeWildCard, typeWildCard, AnyEventHandler, false), noErr);
    EXPECT_EQ(AEGetEventHandler(typeWildCard, typeWildCard, &handler, &refcon, false), errAEHandlerNotFound);
}

TEST_F(AEQuit, EndsExactlyTheProcessItNames)
{
    ChildProcess child("/bin/sleep", {"30"}), byPID("/bin/sleep", {"30"});
    ProcessSerialNumber psn = child.PSN();
    // A process that installed no handler through the port takes no other event.
    Desc echo;
    MakeEvent(typeProcessSerialNumber, psn, kTestClass, kEcho, echo.d);
    EXPECT_EQ(Send(echo.d, nullptr, kAENoReply), connectionInvalid);
    ProcessSerialNumber forged{psn.highLongOfPSN, psn.lowLongOfPSN + 1};
    EXPECT_EQ(SendQuit(forged), procNotFound);
    EXPECT_TRUE(child.StillRunning());

    ASSERT_EQ(SendQuit(psn), noErr);
    EXPECT_TRUE(child.EndsBy(SIGTERM));
    EXPECT_EQ(SendQuit(psn), procNotFound);
    Desc gone, quit, reply;
    MakeEvent(typeKernelProcessID, child.PID(), kCoreEventClass, kAEQuitApplication, gone.d);
    EXPECT_EQ(Send(gone.d, nullptr, kAENoReply), procNotFound);

    // By process id, waiting for the reply.
    MakeEvent(typeKernelProcessID, byPID.PID(), kCoreEventClass, kAEQuitApplication, quit.d);
    ASSERT_EQ(Send(quit.d, &reply.d, kAEWaitReply), noErr);
    EXPECT_EQ(reply.d.descriptorType, typeAppleEvent);
    EXPECT_TRUE(byPID.EndsBy(SIGTERM));
}

class AERemoteResponder : public spindeck::test::DescriptorTest {
protected:
    void SetUp() override
    {
        DescriptorTest::SetUp();
        ASSERT_EQ(mResponder.ReadLine(), "ready");
        mPSN = mResponder.PSN();
    }

    // Asks the responder to quit and sees it end as asked.
    void TearDown() override
    {
        EXPECT_EQ(SendQuit(mPSN), noErr);
        EXPECT_TRUE(mResponder.EndsBy(SIGTERM));
        DescriptorTest::TearDown();
    }

    ChildProcess mResponder{AE_RESPONDER_PATH, {}, true};
    ProcessSerialNumber mPSN{};
};

TEST_F(AERemoteResponder, DeliversTheEventAndBringsBackTheReplyOrStatus)
{
    Desc event, reply, list, sent, echoed, unknown, unknownReply, slow;
    MakeEvent(typeProcessSerialNumber, mPSN, kTestClass, kEcho, event.d);
    ASSERT_EQ(AEPutParamPtr(&event.d, keyDirectObject, typeUTF8Text,
                            "\xC3\xBC"
                            "ber",
                            5),
              noErr);
    AECreateList(nullptr, 0, false, &list.d);
    for (SInt64 value : {SInt64(-1), SInt64(1) << 40})
        AEPutPtr(&list.d, 0, typeSInt64, &value, sizeof value);
    AEPutPtr(&list.d, 0, typeNull, nullptr, 0);
    ASSERT_EQ(AEPutParamDesc(&event.d, FourCC("list"), &list.d), noErr);

    ASSERT_EQ(Send(event.d, &reply.d, kAEWaitReply, 10 * 60), noErr);
    for (AEKeyword keyword : {AEKeyword(keyDirectObject), FourCC("list")}) {
        ASSERT_EQ(AEGetParamDesc(&event.d, keyword, typeWildCard, &sent.d), noErr);
        ASSERT_EQ(AEGetParamDesc(&reply.d, keyword, typeWildCard, &echoed.d), noErr);
        EXPECT_TRUE(SameDescs(sent.d, echoed.d));
        AEDisposeDesc(&sent.d);
        AEDisposeDesc(&echoed.d);
    }
    ProcessSerialNumber self{};
    GetCurrentProcess(&self);
    EXPECT_EQ(ParamOf<ProcessSerialNumber>(reply.d, keyOriginalAddressAttr, typeProcessSerialNumber), self);
    EXPECT_EQ(ParamOf<SInt16>(reply.d, keyEventSourceAttr, typeSInt16), kAELocalProcess);

    // Without waiting, the event is delivered and the call returns at once.
    EXPECT_EQ(Send(event.d, nullptr, kAEQueueReply), noErr);

    MakeEvent(typeProcessSerialNumber, mPSN, kTestClass, FourCC("none"), unknown.d);
    EXPECT_EQ(Send(unknown.d, &unknownReply.d, kAEWaitReply, 10 * 60), errAEEventNotHandled);
    EXPECT_EQ(ParamOf<SInt32>(unknownReply.d, keyErrorNumber, typeSInt32), errAEEventNotHandled);
    MakeEvent(typeProcessSerialNumber, mPSN, kTestClass, FourCC("slow"), slow.d);
    EXPECT_EQ(Send(slow.d, nullptr, kAEWaitReply, 6), errAETimeout);
}

}  // namespace
