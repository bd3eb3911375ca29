// Descriptors that may own their data (ownership that moves on copy but not on assignment,
// Reset and Adopt, and getters that never own what they hand back), and Apple events made,
// copied, filled and sent, with the quit request sent to real programs that Launch Services
// started.
#include "DescriptorTesting.h"
#include "ExpectThrows.h"
#include "LaunchTesting.h"

#include <Groundwork/SysWrappers/Events/SysAEDesc.h>
#include <Groundwork/SysWrappers/Events/SysAppleEvent.h>

#include <Carbon/AppleEvents.h>
#include <Carbon/LaunchServices.h>
#include <Carbon/MacErrors.h>

#include <pthread.h>
#include <unistd.h>

using namespace spindeck::test;
using Gx::AutoAEDesc;
using SysAEDesc = DescriptorTest;
using SysAppleEvent = DescriptorTest;

namespace {

const std::string kTarget = LAUNCH_TARGET_PATH;
constexpr SInt32 kFirst = 42;
constexpr SInt32 kSecond = -7;

// An event of the core class addressed to this process.
Gx::SysAppleEvent SelfEvent(AEEventID inKind)
{
    pid_t self = ::getpid();
    AutoAEDesc target(typeKernelProcessID, &self, sizeof self);
    return Gx::SysAppleEvent(kCoreEventClass, inKind, target.GetRef(), kAutoGenerateReturnID, kAnyTransactionID);
}

SInt32 ValueOf(const AutoAEDesc& inDesc)
{
    SInt32 value = 0;
    EXPECT_EQ(AEGetDescData(inDesc.GetPtr(), &value, sizeof value), noErr);
    return value;
}

TEST_F(SysAEDesc, CopyMovesOwnershipSoTheDataIsDisposedOfOnce)
{
    AutoAEDesc original(typeSInt32, &kFirst, sizeof kFirst);
    {
        AutoAEDesc copy(original);
        EXPECT_FALSE(original.IsOwner());
        EXPECT_TRUE(copy.IsOwner());
        EXPECT_EQ(ValueOf(copy), kFirst);
        EXPECT_EQ(NewDescriptors(), 1);
    }
    // The copy was the only owner: the data went with it, and the original ending later must
    // not dispose of it again (which the sanitiser build would see).
    EXPECT_EQ(NewDescriptors(), 0);
    ExpectOSError([] { AutoAEDesc broken(typeSInt32, nullptr, 4); }, paramErr, "AECreateDesc failed");
}

TEST_F(SysAEDesc, AssignmentLeavesBothOwners)
{
    AutoAEDesc source(typeSInt32, &kFirst, sizeof kFirst);
    {
        AutoAEDesc target(typeSInt32, &kSecond, sizeof kSecond);
        EXPECT_EQ(NewDescriptors(), 2);
        target = source;
        EXPECT_EQ(NewDescriptors(), 1) << "the target's own descriptor is disposed of first";
        EXPECT_TRUE(target.IsOwner());
        EXPECT_TRUE(source.IsOwner());
        EXPECT_EQ(ValueOf(target), kFirst);
        target.Release();
    }
    EXPECT_EQ(NewDescriptors(), 1) << "a released descriptor is left to its other owner";
    source = source;
    EXPECT_TRUE(source.IsOwner());
    EXPECT_EQ(ValueOf(source), kFirst);
}

TEST_F(SysAEDesc, ResetAndAdoptWithTheHeldHandleChangeNothing)
{
    AutoAEDesc owner(typeSInt32, &kFirst, sizeof kFirst);
    const AEDesc held = owner.GetRef();
    owner.Reset(held);
    owner.Adopt(held);
    EXPECT_TRUE(owner.IsOwner());
    AutoAEDesc viewer(held);
    viewer.Adopt(held);
    EXPECT_FALSE(viewer.IsOwner()) << "adopting the handle already held keeps the flag";
    EXPECT_EQ(NewDescriptors(), 1);

    AEDesc other;
    ASSERT_EQ(AECreateDesc(typeSInt32, &kSecond, sizeof kSecond, &other), noErr);
    owner.Reset(other);
    EXPECT_FALSE(owner.IsOwner());
    EXPECT_EQ(ValueOf(owner), kSecond);
    EXPECT_EQ(NewDescriptors(), 1) << "the owned descriptor is disposed of when another replaces it";
    viewer.Reset(other);  // the handle it viewed is gone; it must not be touched again

    AutoAEDesc adopter;
    adopter.Adopt(other);
    adopter.Reset();
    EXPECT_TRUE(adopter.IsNull());
    EXPECT_TRUE(adopter.IsOwner()) << "Reset keeps the flag";
    EXPECT_EQ(NewDescriptors(), 0);

    AutoAEDesc disposed(typeSInt32, &kFirst, sizeof kFirst);
    disposed.DisposeDesc();
    EXPECT_EQ(NewDescriptors(), 0) << "and the destructor must not dispose of it again";
}

TEST_F(SysAEDesc, GettersHandBackDescriptorsTheyDoNotOwn)
{
    AEDescList list;
    ASSERT_EQ(AECreateList(nullptr, 0, true, &list), noErr);
    AutoAEDesc record;
    record.Adopt(list);
    ASSERT_EQ(AEPutKeyPtr(record.GetPtr(), FourCC("frst"), typeSInt32, &kFirst, sizeof kFirst), noErr);
    ASSERT_EQ(AEPutKeyPtr(record.GetPtr(), FourCC("scnd"), typeSInt32, &kSecond, sizeof kSecond), noErr);
    EXPECT_EQ(record.GetCount(), 2);

    AEKeyword keyword = 0;
    AutoAEDesc item = record.GetNthDesc(2, typeSInt32, &keyword);
    EXPECT_FALSE(item.IsOwner());
    EXPECT_EQ(keyword, FourCC("scnd"));
    EXPECT_EQ(ValueOf(item), kSecond);
    AutoAEDesc kept;
    kept.Adopt(item.GetRef());
    EXPECT_EQ(NewDescriptors(), 2);
    ExpectOSError([&] { record.GetNthDesc(3, typeWildCard); }, errAEBadListItem, "AEGetNthDesc failed");
    ExpectOSError([&] { kept.GetCount(); }, errAEWrongDataType, "AECountItems failed");

    Gx::SysAppleEvent made = SelfEvent(kAEOpenApplication);
    AutoAEDesc event(made.GetAppleEvent());
    ASSERT_EQ(AEPutParamPtr(event.GetPtr(), keyDirectObject, typeSInt32, &kFirst, sizeof kFirst), noErr);

    AutoAEDesc direct = event.GetRequiredParamDesc(keyDirectObject, typeSInt32);
    AutoAEDesc eventClass = event.GetAttributeDesc(keyEventClassAttr, typeType);
    EXPECT_FALSE(direct.IsOwner() || eventClass.IsOwner());
    EXPECT_EQ(ValueOf(direct), kFirst);
    EXPECT_EQ(AEDisposeDesc(direct.GetPtr()), noErr);
    AutoAEDesc ownedClass;
    ownedClass.Adopt(eventClass.GetRef());

    AutoAEDesc optional = event.GetOptionalParamDesc(FourCC("none"), typeWildCard);
    EXPECT_TRUE(optional.IsNull());
    EXPECT_EQ(optional.GetRef().dataHandle, nullptr);
    ExpectOSError([&] { event.GetRequiredParamDesc(FourCC("none"), typeWildCard); }, errAEDescNotFound,
                  "AEGetParamDesc failed");
    ExpectOSError([&] { event.GetAttributeDesc(FourCC("none"), typeWildCard); }, errAEDescNotFound,
                  "AEGetAttributeDesc failed");
}

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
    AutoAEDesc target;
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
    Gx::SysAppleEvent event = SelfEvent(kAEOpenDocuments);
    EXPECT_EQ(event.GetEventClass(), kCoreEventClass);
    EXPECT_EQ(event.GetEventKind(), kAEOpenDocuments);
    event.SetParameter(keyDirectObject, typeSInt32, sizeof kFirst, &kFirst);

    Gx::SysAppleEvent copy(event);
    AutoAEDesc second(typeSInt32, &kSecond, sizeof kSecond);
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
    Gx::SysAppleEvent kept = SelfEvent(kAEOpenApplication);
    Gx::SysAppleEvent broken;
    broken.GetAppleEvent() = foreign;
    ExpectOSError([&] { kept = broken; }, errAENotAEDesc, "AEDuplicateDesc failed");
    EXPECT_EQ(kept.GetEventKind(), kAEOpenApplication);
    broken.GetAppleEvent() = AEDesc{typeNull, nullptr};
}

// What the port's own tests cannot show: the request as the product sends it, through this
// wrapper, to what Launch Services started from a host that blocks SIGTERM.
TEST_F(SysAppleEvent, QuitsALaunchedProgramAndALaunchedBundle)
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
        Quit(psn);
        EXPECT_TRUE(AwaitGone(program.pid)) << (isBundle ? "bundle" : "program");
        ExpectOSError([&] { Quit(psn); }, procNotFound, "AESend failed");
    }
    pthread_sigmask(SIG_SETMASK, &saved, nullptr);
}

}  // namespace
