// Finding, starting and stopping the helpers, on applications the tests build from the demo
// helpers and on copies of the demo product, with real processes and real login-item files.
#include <platform/Mac/spindeckMac/spindeckMac.h>

#include "HelperTesting.h"

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using namespace spindeck::test;

std::string Text(CFStringRef inString)
{
    char buffer[4096] = "";
    if (inString != nullptr)
        CFStringGetCString(inString, buffer, sizeof buffer, kCFStringEncodingUTF8);
    return buffer;
}

std::string PathOf(CFURLRef inURL)
{
    UInt8 buffer[4096] = "";
    if (inURL != nullptr)
        CFURLGetFileSystemRepresentation(inURL, true, buffer, sizeof buffer);
    return reinterpret_cast<char*>(buffer);
}

Gx::CFString PathString(const std::string& inPath) { return Gx::CFString(inPath, kCFStringEncodingUTF8); }

// The outputs of a lookup, released with it.
struct Lookup {
    CFURLRef executable = nullptr;
    CFStringRef rootName = nullptr;
    CFURLRef package = nullptr;
    ~Lookup()
    {
        for (CFTypeRef owned : {CFTypeRef(executable), CFTypeRef(rootName), CFTypeRef(package)})
            if (owned != nullptr)
                CFRelease(owned);
    }
};

void ExpectNilReference(const std::function<void()>& inCall)
{
    try {
        inCall();
        ADD_FAILURE() << "nothing thrown";
    } catch (const Gx::RuntimeError& e) {
        EXPECT_EQ(e.What(), FourCC("cfnr"));
    }
}

class Helpers : public ::testing::Test {
protected:
    // An application bundle with the given information entries and an executable of its own.
    std::string MakeApp(const std::string& inName, const std::string& inEntries)
    {
        std::string app = mEnvironment.Path(inName);
        MakeBundle(app, inEntries, "App", "/bin/true");
        return app;
    }

    std::string MakeNamedApp(const std::string& inBundleName)
    {
        return MakeApp("app-" + std::to_string(++mApps) + ".app",
                       "<key>CFBundleName</key><string>" + inBundleName + "</string>");
    }

    // A helper package beside the application's executable, running inProgram.
    static std::string AddHelper(const std::string& inApp, const std::string& inFile, const char* inProgram)
    {
        std::string package = inApp + "/Contents/MacOS/" + inFile;
        MakeBundle(package, "", "Helper", inProgram);
        return package;
    }

    HelperEnvironment mEnvironment;
    int mApps = 0;
};

TEST_F(Helpers, TheLookupFollowsTheBundleName)
{
    struct Case {
        const char* bundleName;
        std::vector<std::string> packages;  // made beside the executable; the first is expected
        bool media;
        const char* rootName;
    };
    const std::vector<Case> cases{
        {"Vemora spindeck", {"Vemora spindeck Helper.app"}, false, "Vemora spindeck Helper"},
        {"Vemora spindeck-Pro", {"Vemora spindeck Helper-Pro.app"}, false, "Vemora spindeck Helper"},
        {"Vemora-spindeck-Pro", {"Vemora Helper.app"}, false, "Vemora Helper"},
        {"Vemora spindeck", {"Vemora spindeck Helper"}, false, "Vemora spindeck Helper"},
        {"Vemora spindeck", {"Vemora spindeck Helper", "Vemora spindeck Helper.app"}, false, "Vemora spindeck Helper"},
        {"Vemora spindeck-Pro", {"Vemora iTunes Helper-Pro.app"}, true, "Vemora iTunes Helper"},
        {"Other-Edition-X", {"Vemora iTunes Helper.app"}, true, "Vemora iTunes Helper"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.bundleName);
        std::string app = MakeNamedApp(test.bundleName);
        for (const std::string& package : test.packages)
            AddHelper(app, package, BACKEND_PROGRAM);
        Lookup found;
        auto lookup = test.media ? spindeck::CopyITunesHelperURL : spindeck::CopyBackendURL;
        found.executable = lookup(PathString(app), &found.rootName, &found.package);
        std::string expected = app + "/Contents/MacOS/" + test.packages.front();
        EXPECT_EQ(PathOf(found.executable), expected + "/Contents/MacOS/Helper");
        EXPECT_EQ(PathOf(found.package), expected);
        EXPECT_EQ(Text(found.rootName), test.rootName);
    }
}

TEST_F(Helpers, WhatCannotBeFoundIsNullAndWhatIsNoBundleThrows)
{
    // No "CFBundleName": nothing found and nothing handed out.
    std::string nameless = MakeApp("nameless.app", "");
    AddHelper(nameless, "nameless Helper.app", BACKEND_PROGRAM);
    Lookup none;
    EXPECT_EQ(spindeck::CopyBackendURL(PathString(nameless), &none.rootName, &none.package), nullptr);
    EXPECT_EQ(none.rootName, nullptr);
    EXPECT_EQ(none.package, nullptr);
    bool available = true;
    EXPECT_FALSE(spindeck::IsBackendRunning(PathString(nameless), &available));
    EXPECT_FALSE(available);
    EXPECT_FALSE(spindeck::ToggleBackendState(PathString(nameless), nullptr, false));

    // A package without its executable, or with a damaged Info.plist naming none: not found,
    // and the names searched are still handed out. The media helper answers its own codes.
    for (const char* damage : {"remove", "garble"}) {
        SCOPED_TRACE(damage);
        std::string app = MakeNamedApp("Vemora spindeck");
        std::string backend = AddHelper(app, "Vemora spindeck Helper.app", BACKEND_PROGRAM);
        std::string media = AddHelper(app, "Vemora iTunes Helper.app", MEDIA_PROGRAM);
        for (const std::string& package : {backend, media}) {
            if (std::string(damage) == "remove")
                fs::remove(package + "/Contents/MacOS/Helper");
            else
                WriteFile(package + "/Contents/Info.plist", "<plist><dict><key>CFBundleExecutable</key><str");
        }
        Lookup found;
        found.executable = spindeck::CopyBackendURL(PathString(app), &found.rootName, &found.package);
        EXPECT_EQ(found.executable, nullptr);
        EXPECT_EQ(PathOf(found.package), backend);
        EXPECT_EQ(Text(found.rootName), "Vemora spindeck Helper");
        bool wasLaunched = true;
        EXPECT_FALSE(spindeck::ToggleBackendState(PathString(app), &wasLaunched, false));
        EXPECT_FALSE(wasLaunched);
        EXPECT_EQ(spindeck::LaunchITunesHelper(PathString(app)), kLSApplicationNotFoundErr);
        EXPECT_EQ(spindeck::QuitITunesHelper(PathString(app)), spindeck::kHelperNotFound);
        EXPECT_FALSE(spindeck::IsITunesHelperRunning(PathString(app), &available));
        EXPECT_FALSE(available);
    }
    EXPECT_EQ(StoredItems(mEnvironment.Config()), "None\n") << "nothing was started, so nothing was listed";

    // An application path that is no folder, and a helper package that is not there at all,
    // make no bundle.
    std::string file = mEnvironment.Path("plain file");
    WriteFile(file, "not an application");
    ExpectNilReference([&] { spindeck::IsBackendRunning(PathString(file), nullptr); });
    ExpectNilReference([&] { spindeck::IsBackendRunning(PathString(mEnvironment.Path("missing.app")), nullptr); });
    std::string empty = MakeNamedApp("Vemora spindeck");
    ExpectNilReference([&] { spindeck::ToggleBackendState(PathString(empty), nullptr, false); });
    ExpectNilReference([&] { spindeck::QuitITunesHelper(PathString(empty)); });
}

// The whole cycle on the demo product, copied to a path with spaces and non-ASCII letters,
// with a login-window list that holds entries of other programs' making.
TEST_F(Helpers, ToggleStartsAndStopsTheBackendAndKeepsTheLoginItemsInStep)
{
    std::string app = mEnvironment.CopyDemo("Programme für Prüfung");
    std::string package = app + "/" + kBackend;
    std::string executable = app + "/" + kBackendExecutable;
    const std::string foreign =
        R"(["not a dictionary", {"Name": "no path"}, {"Hide": true, "Path": "/opt/Other.app"}])";
    ASSERT_EQ(StoreItems(mEnvironment.Config(), foreign), "");
    const std::string listed = foreign.substr(0, foreign.size() - 1) + R"(, {"Hide": false, "Path": ")" + package +
                               "\"}]\n";

    // Reconcile on a stopped backend that is no login item does nothing.
    bool launched = true;
    EXPECT_TRUE(spindeck::ToggleBackendState(PathString(app), &launched, true));
    EXPECT_FALSE(launched);
    EXPECT_EQ(RunningPID(executable), 0);
    EXPECT_EQ(StoredItems(mEnvironment.Config()),
              R"(["not a dictionary", {"Name": "no path"}, {"Hide": true, "Path": "/opt/Other.app"}])"
              "\n");

    // Toggle on a stopped backend: listed (exactly "Path" and "Hide"), then launched.
    EXPECT_TRUE(spindeck::ToggleBackendState(PathString(app), &launched, false));
    EXPECT_TRUE(launched);
    EXPECT_EQ(StoredItems(mEnvironment.Config()), listed);
    pid_t pid = RunningPID(executable);
    ASSERT_NE(pid, 0);
    bool available = false;
    EXPECT_TRUE(spindeck::IsBackendRunning(PathString(app), &available));
    EXPECT_TRUE(available);

    // Reconcile on a running backend does nothing either.
    EXPECT_TRUE(spindeck::ToggleBackendState(PathString(app), &launched, true));
    EXPECT_FALSE(launched);
    EXPECT_EQ(RunningPID(executable), pid);

    // Toggle on a running backend: asked to quit, taken off the list, gone soon after.
    EXPECT_TRUE(spindeck::ToggleBackendState(PathString(app), &launched, false));
    EXPECT_FALSE(launched);
    EXPECT_EQ(StoredItems(mEnvironment.Config()),
              R"(["not a dictionary", {"Name": "no path"}, {"Hide": true, "Path": "/opt/Other.app"}])"
              "\n");
    EXPECT_TRUE(AwaitGone(pid)) << "the helper did not quit";
    EXPECT_FALSE(spindeck::IsBackendRunning(PathString(app), nullptr));

    // Reconcile on a stopped login item starts it.
    ASSERT_EQ(StoreItems(mEnvironment.Config(), R"([{"Hide": false, "Path": ")" + package + "\"}]"), "");
    EXPECT_TRUE(spindeck::ToggleBackendState(PathString(app), &launched, true));
    EXPECT_TRUE(launched);
    EXPECT_TRUE(AwaitRunning(executable));
}

TEST_F(Helpers, AFailedLaunchKeepsTheLoginItem)
{
    std::string app = mEnvironment.CopyDemo("demo");
    fs::permissions(app + "/" + kBackendExecutable, fs::perms::owner_read | fs::perms::owner_write);
    bool launched = true;
    EXPECT_TRUE(spindeck::ToggleBackendState(PathString(app), &launched, false));
    EXPECT_FALSE(launched);
    EXPECT_EQ(StoredItems(mEnvironment.Config()), R"([{"Hide": false, "Path": ")" + app + "/" + kBackend + "\"}]\n");
    EXPECT_EQ(RunningPID(app + "/" + kBackendExecutable), 0);
}

TEST_F(Helpers, TheMediaHelperStartsOnceQuitsAndLeavesTheLoginItemsAlone)
{
    std::string app = mEnvironment.CopyDemo("demo");
    std::string executable = app + "/" + kMediaHelperExecutable;
    ASSERT_EQ(StoreItems(mEnvironment.Config(), R"([{"Hide": true, "Path": "/opt/Vemora iTunes Helper.app"}])"), "");
    std::string file = LoginWindowFile(mEnvironment.Config());
    std::string before = ReadFile(file);

    EXPECT_EQ(spindeck::QuitITunesHelper(PathString(app)), spindeck::kHelperNotRunning);
    EXPECT_EQ(spindeck::LaunchITunesHelper(PathString(app)), noErr);
    pid_t pid = RunningPID(executable);
    ASSERT_NE(pid, 0);
    EXPECT_TRUE(spindeck::IsITunesHelperRunning(PathString(app), nullptr));
    EXPECT_EQ(spindeck::LaunchITunesHelper(PathString(app)), noErr);
    EXPECT_EQ(ProcessesRunning(executable), std::vector<pid_t>{pid}) << "a second launch started another helper";
    EXPECT_EQ(spindeck::QuitITunesHelper(PathString(app)), noErr);
    EXPECT_TRUE(AwaitGone(pid));
    EXPECT_EQ(ReadFile(file), before);
}

}  // namespace
