// The platform services against a private home, bundles made by the test and a private
// session bus.
#include "platform/PlatformServices.h"

#include "utils/BytesBubble.h"

#include "NotificationTesting.h"
#include "PlatformTesting.h"

#include <Groundwork/SysWrappers/CoreFoundation/CFUtilsObject.h>

#include <Carbon/CarbonEvents.h>
#include <Carbon/Finder.h>
#include <Carbon/Folders.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFPreferences.h>

#include <sys/wait.h>
#include <unistd.h>

#include <regex>

namespace {

using namespace spindeck::test;
using kvx::Platform;

kvx::Platform& P() { return Platform::instance(); }

class PlatformServices : public PrivateHome {
protected:
    static std::string Preferences()
    {
        FSRef folder;
        FSFindFolder(kUserDomain, kPreferencesFolderType, kCreateFolder, &folder);
        return Text(Gx::FSObject(folder).GetPath());
    }
};

void SetPreference(const char* inKey, CFPropertyListRef inValue, CFStringRef inApp)
{
    CFPreferencesSetAppValue(Gx::CFString(inKey).UseRef(), inValue, inApp);
    ASSERT_TRUE(CFPreferencesAppSynchronize(inApp));
}

TEST_F(PlatformServices, PortsAndIntegersComeFromPreferencesWithZeroMeaningTheDefault)
{
    const char* app = "com.vemora.test.ports";
    CFStringRef appID = CFSTR("com.vemora.test.ports");
    EXPECT_EQ(P().GetSocketPort(5000, app), 5000);
    int port = 6001, zero = 0;
    double real = 1.5;
    CFUtils::CFObject<CFNumberRef> configured(CFNumberCreate(nullptr, kCFNumberIntType, &port));
    CFUtils::CFObject<CFNumberRef> none(CFNumberCreate(nullptr, kCFNumberIntType, &zero));
    CFUtils::CFObject<CFNumberRef> fraction(CFNumberCreate(nullptr, kCFNumberDoubleType, &real));
    SetPreference("Port 5000", configured.AsRef(), appID);
    EXPECT_EQ(P().GetSocketPort(5000, app), 6001);
    EXPECT_EQ(P().GetSocketPort(5001, app), 5001) << "the key names the default port";
    SetPreference("Port 5000", none.AsRef(), appID);
    EXPECT_EQ(P().GetSocketPort(5000, app), 5000);
    SetPreference("Speed", fraction.AsRef(), appID);
    EXPECT_EQ(P().GetPrefsFileInteger("Speed", 7, app), 7) << "a fraction is no integer";
    SetPreference("Speed", configured.AsRef(), appID);
    EXPECT_EQ(P().GetPrefsFileInteger("Speed", 7, app), 6001);
}

TEST_F(PlatformServices, ActionsPaletteFilesLiveInTheHostsSettingsFolder)
{
    std::string preferences = mFolder.Path("home/config");
    EXPECT_FALSE(P().getActionsPaletteFile(Platform::kInDesignCS2).IsValid());
    EXPECT_FALSE(std::filesystem::exists(preferences)) << "InDesign's answer touches nothing";

    UseBundle("Host.bundle", "\"ILCS2SettingsFolder\" = \"Param\xC3\xA8tres Adobe Illustrator CS2\";\n");
    EXPECT_FALSE(P().getActionsPaletteFile(Platform::kPhotoshopCS2).IsValid()) << "no settings folder";
    EXPECT_FALSE(P().getActionsPaletteFile(Platform::kIllustratorCS2).IsValid());
    std::string photoshop = Preferences() + "/Adobe Photoshop CS2 Settings";
    std::string illustrator = Preferences() + "/Param\xC3\xA8tres Adobe Illustrator CS2";
    std::filesystem::create_directories(photoshop);
    std::filesystem::create_directories(illustrator);
    Gx::FSObject palette = P().getActionsPaletteFile(Platform::kPhotoshopCS2);
    EXPECT_EQ(Text(palette.GetPath()), photoshop + "/Actions Palette.psp");
    EXPECT_FALSE(palette.Exists()) << "the file itself need not exist";
    EXPECT_EQ(Text(P().getActionsPaletteFile(Platform::kIllustratorCS2).GetPath()),
              illustrator + "/Actions Palette.psp");

    kvx::SetBundle(Gx::CFString(mFolder.Path("Missing.bundle")));
    EXPECT_THROW(P().getActionsPaletteFile(Platform::kPhotoshopCS2), Gx::RuntimeError);
}

TEST_F(PlatformServices, FilesAreReadWholeOrInPartFoldersMadeAndIdentifiersFresh)
{
    std::string path = mFolder.Path("data.bin");
    WriteFile(path, "0123456789");
    Gx::FSObject file(Gx::CFString(path), kCFURLPOSIXPathStyle);
    kvx::BytesBubble bytes(1ul);
    ASSERT_EQ(P().readFile(bytes, file, 0, 0), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes.ptr()), bytes.sizeInBytes()), "0123456789");
    ASSERT_EQ(P().readFile(bytes, file, 3, 4), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes.ptr())), "3456") << "followed by zeros";
    EXPECT_EQ(P().fileSize(file), 0u);

    Gx::FSObject folder(Gx::CFString(mFolder.Path("made")), kCFURLPOSIXPathStyle);
    P().CreateFolder(folder, true);
    EXPECT_TRUE(folder.IsFolder());
    EXPECT_NE(folder.GetFinderFlags() & kIsInvisible, 0);

    std::string first = Text(P().GetUUIDString()), second = Text(P().GetUUIDString());
    EXPECT_TRUE(std::regex_match(first, std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"))) << first;
    EXPECT_NE(first, second);
}

// The path reaches the shell unescaped: what the shell makes of it is what gets deleted.
TEST_F(PlatformServices, DeletingGoesThroughTheShellUnescaped)
{
    EXPECT_EQ(P().deleteFile(mFolder.Path("missing")), 0);
    for (const char* name : {"victim", "other", "$VICTIM", "`echo other`"})
        WriteFile(mFolder.Path(name), "x");
    ScopedVariable victim("VICTIM", "victim");
    EXPECT_EQ(P().deleteFile(mFolder.Path("$VICTIM")), 0);
    EXPECT_EQ(P().deleteFile(mFolder.Path("`echo other`")), 0);
    EXPECT_FALSE(Exists(mFolder.Path("victim")));
    EXPECT_FALSE(Exists(mFolder.Path("other")));
    EXPECT_TRUE(Exists(mFolder.Path("$VICTIM"))) << "the file of that very name is left";
    EXPECT_TRUE(Exists(mFolder.Path("`echo other`")));
}

OSStatus TakeAttribute(EventHandlerCallRef, EventRef inEvent, void* outValue)
{
    return GetEventParameter(inEvent, FourCC("vmiv"), typeSInt32, nullptr, sizeof(SInt32), nullptr, outValue);
}

TEST_F(PlatformServices, TheInitialAttributeValueReachesTheApplicationsHandler)
{
    SInt32 value = 0;
    EventTypeSpec type{FourCC("VmRe"), 1};
    EventHandlerRef handler = nullptr;
    ASSERT_EQ(InstallEventHandler(GetApplicationEventTarget(), TakeAttribute, 1, &type, &value, &handler), noErr);
    EXPECT_EQ(P().SetInitialAttributeValue(-42), noErr);
    EXPECT_TRUE(RunLoopUntil([&] { return value != 0; }));
    EXPECT_EQ(value, -42);
    RemoveEventHandler(handler);
}

// With no bus the notice fails, says so, and the family declines every later one.
TEST_F(PlatformServices, ANoticeThatCannotBePostedIsReportedAndBlocksTheNext)
{
    ScopedVariable noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    testing::internal::CaptureStderr();
    int status = P().openNoPluginFBAAlert(5000);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Vemora: [192] NMInstall notification error: " + std::to_string(notOpenErr) + "\n");
    EXPECT_EQ(status, notOpenErr);
    {
        PrivateSessionBus bus;
        NotificationServer server;
        ASSERT_TRUE(server.Serving());
        EXPECT_EQ(P().openNoPluginFBAAlert(5000), 0);
        EXPECT_TRUE(server.Calls().empty());
    }
    AlertFamily::_openedCount = 0;
}

// Without any display or terminal there is no front process, and the failure is written out
// as two lines.
TEST_F(PlatformServices, WithoutADisplayTheFrontProcessIsAnErrorWrittenOut)
{
    // The child's standard error is the test's, captured until it has ended.
    testing::internal::CaptureStderr();
    pid_t child = ::fork();
    if (child == 0) {
        ::setsid();  // no terminal to fall back on
        ::unsetenv("DISPLAY");
        ::_exit(P().getFrontProcessName().empty() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Vemora: [109] Error while determining front-most app (GetFrontProcess)\n"
              "Vemora: [114] Error while reading front-most app info (GetProcessInformation)\n");
    EXPECT_EQ(status, 0);
}

}  // namespace
