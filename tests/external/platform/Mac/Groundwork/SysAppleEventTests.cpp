// Apple events made, copied, filled and sent, and the quit request sent to real programs
// that Launch Services started.
#include "DescriptorTesting.h"
#include "ExpectThrows.h"
#include "LaunchTesting.h"

#include <Groundwork/SysWrappers/Events/SysAEDesc.h>
#include <Groundwork/SysWrappers/Events/SysAppleEvent.h>

#include <Carbon/LaunchServices.h>

#include <pthread.h>

using namespace spindeck::test;
using SysAppleEvent = spindeck::test::DescriptorTest;

namespace {

const std::string kTarget = LAUNCH_TARGET_PATH;
constexpr SInt32 kFirst = 42;
constexpr SInt32 kSecond = -7;

SInt32 DirectObject(const Gx::SysAppleEvent& inEvent)
{
    SInt32 value = 0;
    EXPECT_EQ(inEvent.GetParameter(keyDirectObject, typeSInt32, nullptr, sizeof value, nullptr, &value), noErr);
    return value;
}

// The product's request to quit: the target by serial number, 'aevt'/'quit', sent without
// waiting for the reply.
void Quit(const ProcessSerialNumber& inPSN)
{
    Gx::AutoAEDesc target;
    ASSERT_EQ(AECreateDesc(typeProcessSerialNumber, &inPSN, sizeof inPSN, target.GetPtr()), noErr);
    Gx::SysAppleEvent quit(kCoreEventClass, kAEQuitApplication, target.GetRef(), kAutoGenerateReturnID,
                           kAnyTransactionID);
    quit.Send(nullptr, kAEQueueReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr);
}

// Starts the program or bundle and answers what it reported.
std::optional<LaunchReport> Start(const std::string& inPath, bool inIsBundle, const std::string& inReport)
{
    ScopedVariable reportTo("SPINDECK_LAUNCH_REPORT", inReport);
    EXPECT_EQ(LSOpenCFURLRef(PathURL(inPath, inIsBundle).Get(), nullptr), noErr) << inPath;
    return AwaitReport(inReport);
}

TEST_F(SysAppleEvent, CopiesAreIndependentAndAssignmentIsSafe)
{
    pid_t self = ::getpid();
    Gx::AutoAEDesc target(typeKernelProcessID, &self, sizeof self);
    Gx::SysAppleEvent event(kCoreEventClass, kAEOpenDocuments, target.GetRef(), kAutoGenerateReturnID,
                            kAnyTransactionID);
    EXPECT_EQ(event.GetEventClass(), kCoreEventClass);
    EXPECT_EQ(event.GetEventKind(), kAEOpenDocuments);
    event.SetParameter(keyDirectObject, typeSInt32, sizeof kFirst, &kFirst);

    Gx::SysAppleEvent copy(event);
    EXPECT_NE(copy.GetAppleEvent().dataHandle, event.GetAppleEvent().dataHandle);
    Gx::AutoAEDesc second(typeSInt32, &kSecond, sizeof kSecond);
    copy.SetParamDesc(keyDirectObject, second.GetRef());
    EXPECT_EQ(DirectObject(event), kFirst);
    EXPECT_EQ(DirectObject(copy), kSecond);

    long live = NewDescriptors();
    copy = copy;
    EXPECT_EQ(DirectObject(copy), kSecond);
    copy = event;
    EXPECT_EQ(DirectObject(copy), kFirst);
    EXPECT_EQ(NewDescriptors(), live) << "assignment disposes of the event it replaces";

    Gx::SysAppleEvent fromRecord(event.GetAppleEvent());
    EXPECT_EQ(fromRecord.GetEventKind(), kAEOpenDocuments);
    AEDesc missing{typeNull, nullptr};
    EXPECT_EQ(fromRecord.GetParamDesc(FourCC("none"), typeWildCard, &missing), errAEDescNotFound);
    SInt32 unused = 0;
    EXPECT_EQ(fromRecord.GetParameter(FourCC("none"), typeSInt32, nullptr, sizeof unused, nullptr, &unused),
              errAEDescNotFound);
}

TEST_F(SysAppleEvent, RaisesEachFailureWithItsMessage)
{
    // A handle that belongs to no descriptor.
    UInt32 foreignData[4] = {};
    const AEDesc foreign{typeAppleEvent, reinterpret_cast<AEDataStorage>(foreignData)};
    ExpectOSError([&] { Gx::SysAppleEvent duplicate(foreign); }, errAENotAEDesc, "AEDuplicateDesc failed");
    ExpectOSError([&] { Gx::SysAppleEvent made(kCoreEventClass, kAEQuitApplication, foreign, -1, 0); }, errAENotAEDesc,
                  "AECreateAppleEvent failed");

    Gx::SysAppleEvent empty;
    ExpectOSError([&] { empty.GetEventClass(); }, errAENotAppleEvent, "AEGetAttributePtr failed to get event class");
    ExpectOSError([&] { empty.GetEventKind(); }, errAENotAppleEvent, "AEGetAttributePtr failed to get event kind");
    ExpectOSError([&] { empty.SetParameter(keyDirectObject, typeSInt32, sizeof kFirst, &kFirst); }, errAEWrongDataType,
                  "AEPutParamPtr failed");
    ExpectOSError([&] { empty.SetParamDesc(keyDirectObject, foreign); }, errAEWrongDataType, "AEPutParamDesc failed");
    ExpectOSError([&] { empty.Send(nullptr, kAEQueueReply, kAENormalPriority, kAEDefaultTimeout); }, errAENotAppleEvent,
                  "AESend failed");

    // A failed assignment leaves the event as it was.
    pid_t self = ::getpid();
    Gx::AutoAEDesc target(typeKernelProcessID, &self, sizeof self);
    Gx::SysAppleEvent kept(kCoreEventClass, kAEOpenApplication, target.GetRef(), -1, 0);
    Gx::SysAppleEvent broken;
    broken.GetAppleEvent() = foreign;
    ExpectOSError([&] { kept = broken; }, errAENotAEDesc, "AEDuplicateDesc failed");
    EXPECT_EQ(kept.GetEventKind(), kAEOpenApplication);
    broken.GetAppleEvent() = AEDesc{typeNull, nullptr};
}

// A forged serial number (right process id, wrong start time) must not reach the process.
TEST_F(SysAppleEvent, QuitsALaunchedProgramAndALaunchedBundleButNotByAForgedSerialNumber)
{
    TemporaryFolder folder;
    std::string bundle = folder.Path("Helper.app");
    MakeBundle(bundle, "", "Helper", kTarget);
    // A host with a signal source on its run loop keeps SIGTERM blocked; what it launches
    // must still end on SIGTERM.
    sigset_t terminate, saved;
    sigemptyset(&terminate);
    sigaddset(&terminate, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &terminate, &saved);

    for (bool isBundle : {false, true}) {
        std::optional<LaunchReport> started = Start(isBundle ? bundle : kTarget, isBundle,
                                                    folder.Path(isBundle ? "b" : "p"));
        ASSERT_TRUE(started);
        Launched program{PIDOf(*started)};
        ProcessSerialNumber psn;
        ASSERT_EQ(GetProcessForPID(program.pid, &psn), noErr);
        if (!isBundle) {
            ExpectOSError([&] { Quit({psn.highLongOfPSN, psn.lowLongOfPSN + 1}); }, procNotFound, "AESend failed");
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            EXPECT_FALSE(IsGone(program.pid)) << "the forged request reached the process";
        }

        Quit(psn);
        EXPECT_TRUE(AwaitGone(program.pid)) << (isBundle ? "bundle" : "program");
        ProcessInfoRec info{};
        info.processInfoLength = sizeof info;
        EXPECT_EQ(GetProcessInformation(&psn, &info), procNotFound);
        ExpectOSError([&] { Quit(psn); }, procNotFound, "AESend failed");
    }
    pthread_sigmask(SIG_SETMASK, &saved, nullptr);
}

}  // namespace
