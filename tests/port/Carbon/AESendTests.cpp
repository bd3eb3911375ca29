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

using spindeck::test::ChildProcess;
using spindeck::test::Desc;

namespace {

constexpr AEEventClass kTestClass = FourCC("SdTs");
constexpr AEEventID kEcho = FourCC("echo");

template <class Address>
void MakeEvent(DescType inAddressType, const Address& inAddress, AEEventClass inClass, AEEventID inID, AppleEvent& outEvent)
{
    Desc address;
    ASSERT_EQ(AECreateDesc(inAddressType, &inAddress, sizeof inAddress, &address.d), noErr);
    ASSERT_EQ(AECreateAppleEvent(inClass, inID, &address.d, kAutoGenerateReturnID, kAnyTransactionID, &outEvent), noErr);
}

// The quit request as the product sends it: no reply, default time-out.
OSErr SendQuit(const ProcessSerialNumber& inPSN)
{
    Desc event;
    MakeEvent(typeProcessSerialNumber, inPSN, kCoreEventClass, kAEQuitApplication, event.d);
    return AESend(&event.d, nullptr, kAEQueueReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr);
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

using AESendRefusals = spindeck::test::DescriptorTest;
using AEQuit = spindeck::test::DescriptorTest;
using AERemote = spindeck::test::DescriptorTest;

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
};

TEST_F(AESendToSelf, DispatchesToTheHandlerAndReturnsItsReply)
{
    ProcessSerialNumber self{0, kCurrentProcess};
    Desc event, reply;
    MakeEvent(typeProcessSerialNumber, self, kTestClass, kEcho, event.d);
    ASSERT_EQ(AEPutParamPtr(&event.d, keyDirectObject, typeUTF8Text, "ping", 4), noErr);

    ASSERT_EQ(AESend(&event.d, &reply.d, kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr), noErr);
    EXPECT_EQ(mCalls, 1);
    char text[4];
    Size size = 0;
    ASSERT_EQ(AEGetParamPtr(&reply.d, keyDirectObject, typeUTF8Text, nullptr, text, 4, &size), noErr);
    EXPECT_EQ(std::string(text, 4), "ping");
    AEEventID replyID = 0;
    AEGetAttributePtr(&reply.d, keyEventIDAttr, typeType, nullptr, &replyID, 4, nullptr);
    EXPECT_EQ(replyID, kAEAnswer);

    // Without waiting there is no reply to give, but the handler still runs.
    AEDisposeDesc(&reply.d);
    ASSERT_EQ(AESend(&event.d, &reply.d, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr), noErr);
    EXPECT_EQ(mCalls, 2);
    EXPECT_EQ(reply.d.descriptorType, typeNull);

    // Addressed by process id, the event reaches the same handler.
    Desc byPID;
    MakeEvent(typeKernelProcessID, ::getpid(), kTestClass, kEcho, byPID.d);
    ASSERT_EQ(AESend(&byPID.d, nullptr, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr), noErr);
    EXPECT_EQ(mCalls, 3);
}

TEST_F(AESendToSelf, ReportsFailuresInTheReply)
{
    ProcessSerialNumber self{0, kCurrentProcess};
    Desc failing, unknown, reply, otherReply;
    MakeEvent(typeProcessSerialNumber, self, kTestClass, kEcho, failing.d);
    SInt16 failure = -4242;
    AEPutParamPtr(&failing.d, FourCC("fail"), typeSInt16, &failure, sizeof failure);
    ASSERT_EQ(AESend(&failing.d, &reply.d, kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr), noErr);
    SInt32 error = 0;
    ASSERT_EQ(AEGetParamPtr(&reply.d, keyErrorNumber, typeSInt32, nullptr, &error, sizeof error, nullptr), noErr);
    EXPECT_EQ(error, -4242);

    MakeEvent(typeProcessSerialNumber, self, kTestClass, FourCC("none"), unknown.d);
    EXPECT_EQ(AESend(&unknown.d, &otherReply.d, kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr),
              errAEEventNotHandled);
    ASSERT_EQ(AEGetParamPtr(&otherReply.d, keyErrorNumber, typeSInt32, nullptr, &error, sizeof error, nullptr), noErr);
    EXPECT_EQ(error, errAEEventNotHandled);
}

TEST_F(AESendToSelf, PrefersTheMostSpecificHandler)
{
    int anyCalls = 0;
    ASSERT_EQ(AEInstallEventHandler(typeWildCard, typeWildCard, AnyEventHandler, &anyCalls, false), noErr);
    ProcessSerialNumber self{0, kCurrentProcess};
    Desc echo, other;
    MakeEvent(typeProcessSerialNumber, self, kTestClass, kEcho, echo.d);
    MakeEvent(typeProcessSerialNumber, self, FourCC("othr"), FourCC("evnt"), other.d);
    EXPECT_EQ(AESend(&echo.d, nullptr, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr), noErr);
    EXPECT_EQ(AESend(&other.d, nullptr, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr), noErr);
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

TEST_F(AESendRefusals, NameTheProblem)
{
    ProcessSerialNumber self{0, kCurrentProcess};
    Desc event, record, bySignature;
    MakeEvent(typeProcessSerialNumber, self, kTestClass, kEcho, event.d);
    EXPECT_EQ(AESend(&event.d, nullptr, 0, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr),
              errAEUnknownSendMode);
    AECreateList(nullptr, 0, true, &record.d);
    EXPECT_EQ(AESend(&record.d, nullptr, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr),
              errAENotAppleEvent);
    MakeEvent(typeApplSignature, FourCC("ttxt"), kTestClass, kEcho, bySignature.d);
    EXPECT_EQ(AESend(&bySignature.d, nullptr, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr),
              errAEUnknownAddressType);
}

TEST_F(AEQuit, EndsExactlyTheProcessItNames)
{
    ChildProcess child("/bin/sleep", {"30"});
    ProcessSerialNumber psn = child.PSN();

    ProcessSerialNumber forged{psn.highLongOfPSN, psn.lowLongOfPSN + 1};
    EXPECT_EQ(SendQuit(forged), procNotFound);
    EXPECT_TRUE(child.StillRunning());

    ASSERT_EQ(SendQuit(psn), noErr);
    std::optional<int> status = child.Reap();
    ASSERT_TRUE(status);
    EXPECT_TRUE(WIFSIGNALED(*status));
    EXPECT_EQ(WTERMSIG(*status), SIGTERM);

    EXPECT_EQ(SendQuit(psn), procNotFound);
    Desc byPID;
    MakeEvent(typeKernelProcessID, child.PID(), kCoreEventClass, kAEQuitApplication, byPID.d);
    EXPECT_EQ(AESend(&byPID.d, nullptr, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr),
              procNotFound);
}

TEST_F(AEQuit, ReachesAProcessByItsId)
{
    ChildProcess child("/bin/sleep", {"30"});
    Desc event, reply;
    MakeEvent(typeKernelProcessID, child.PID(), kCoreEventClass, kAEQuitApplication, event.d);
    ASSERT_EQ(AESend(&event.d, &reply.d, kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr), noErr);
    EXPECT_EQ(reply.d.descriptorType, typeAppleEvent);
    std::optional<int> status = child.Reap();
    ASSERT_TRUE(status);
    EXPECT_EQ(WTERMSIG(*status), SIGTERM);
}

TEST_F(AERemote, AProcessWithoutHandlersCannotBeReached)
{
    ChildProcess child("/bin/sleep", {"30"});
    ProcessSerialNumber psn = child.PSN();
    Desc event;
    MakeEvent(typeProcessSerialNumber, psn, kTestClass, kEcho, event.d);
    EXPECT_EQ(AESend(&event.d, nullptr, kAENoReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr),
              connectionInvalid);
    EXPECT_TRUE(child.StillRunning());
}

// The descriptors are the same if their flat forms are.
bool SameDescs(const AEDesc& inA, const AEDesc& inB)
{
    std::vector<char> a(std::size_t(AESizeOfFlattenedDesc(&inA))), b(std::size_t(AESizeOfFlattenedDesc(&inB)));
    AEFlattenDesc(&inA, a.data(), Size(a.size()), nullptr);
    AEFlattenDesc(&inB, b.data(), Size(b.size()), nullptr);
    return a == b;
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
        std::optional<int> status = mResponder.Reap();
        ASSERT_TRUE(status);
        EXPECT_TRUE(WIFSIGNALED(*status) && WTERMSIG(*status) == SIGTERM);
        DescriptorTest::TearDown();
    }

    ChildProcess mResponder{AE_RESPONDER_PATH, {}, true};
    ProcessSerialNumber mPSN{};
};

TEST_F(AERemoteResponder, DeliversTheEventAndBringsBackTheReply)
{
    Desc event, reply, list, sent, echoed;
    MakeEvent(typeProcessSerialNumber, mPSN, kTestClass, kEcho, event.d);
    ASSERT_EQ(AEPutParamPtr(&event.d, keyDirectObject, typeUTF8Text, "\xC3\xBC" "ber", 5), noErr);
    AECreateList(nullptr, 0, false, &list.d);
    for (SInt64 value : {SInt64(-1), SInt64(1) << 40})
        AEPutPtr(&list.d, 0, typeSInt64, &value, sizeof value);
    AEPutPtr(&list.d, 0, typeNull, nullptr, 0);
    ASSERT_EQ(AEPutParamDesc(&event.d, FourCC("list"), &list.d), noErr);

    ASSERT_EQ(AESend(&event.d, &reply.d, kAEWaitReply, kAENormalPriority, 10 * 60, nullptr, nullptr), noErr);
    for (AEKeyword keyword : {AEKeyword(keyDirectObject), FourCC("list")}) {
        ASSERT_EQ(AEGetParamDesc(&event.d, keyword, typeWildCard, &sent.d), noErr);
        ASSERT_EQ(AEGetParamDesc(&reply.d, keyword, typeWildCard, &echoed.d), noErr);
        EXPECT_TRUE(SameDescs(sent.d, echoed.d));
        AEDisposeDesc(&sent.d);
        AEDisposeDesc(&echoed.d);
    }
    ProcessSerialNumber sender{}, self{};
    GetCurrentProcess(&self);
    ASSERT_EQ(AEGetParamPtr(&reply.d, keyOriginalAddressAttr, typeProcessSerialNumber, nullptr, &sender, sizeof sender,
                            nullptr),
              noErr);
    EXPECT_EQ(sender, self);
    SInt16 source = 0;
    AEGetParamPtr(&reply.d, keyEventSourceAttr, typeSInt16, nullptr, &source, sizeof source, nullptr);
    EXPECT_EQ(source, kAELocalProcess);

    // Without waiting, the event is delivered and the call returns at once.
    EXPECT_EQ(AESend(&event.d, nullptr, kAEQueueReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr), noErr);
}

TEST_F(AERemoteResponder, AnswersWithTheReceiversStatus)
{
    Desc unknown, slow, reply;
    MakeEvent(typeProcessSerialNumber, mPSN, kTestClass, FourCC("none"), unknown.d);
    EXPECT_EQ(AESend(&unknown.d, &reply.d, kAEWaitReply, kAENormalPriority, 10 * 60, nullptr, nullptr),
              errAEEventNotHandled);
    SInt32 error = 0;
    ASSERT_EQ(AEGetParamPtr(&reply.d, keyErrorNumber, typeSInt32, nullptr, &error, sizeof error, nullptr), noErr);
    EXPECT_EQ(error, errAEEventNotHandled);

    MakeEvent(typeProcessSerialNumber, mPSN, kTestClass, FourCC("slow"), slow.d);
    EXPECT_EQ(AESend(&slow.d, nullptr, kAEWaitReply, kAENormalPriority, 6, nullptr, nullptr), errAETimeout);
}

}  // namespace
