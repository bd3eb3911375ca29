// Finding, starting and stopping the helpers, on applications the tests build from the demo
// helpers and on copies of the demo product, with real processes and real login-item files.
#include <platform/Mac/spindeckMac/spindeckMac.h>

#include "HelperTesting.h"

#include "PlatformTesting.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <sys/stat.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace spindeck::test;

const std::string kNull = "(null)";

// Takes the reference given and answers its text or path; kNull when nothing was handed out.
std::string Take(CFTypeRef inOwned)
{
    if (inOwned == nullptr)
        return kNull;
    char buffer[4096] = "";
    if (CFGetTypeID(inOwned) == CFStringGetTypeID())
        CFStringGetCString(CFStringRef(inOwned), buffer, sizeof buffer, kCFStringEncodingUTF8);
    else
        CFURLGetFileSystemRepresentation(CFURLRef(inOwned), true, reinterpret_cast<UInt8*>(buffer), sizeof buffer);
    CFRelease(inOwned);
    return buffer;
}

Gx::CFString PathString(const std::string& inPath) { return Gx::CFString(inPath, kCFStringEncodingUTF8); }

// What a lookup hands out: the executable, the root name and the package.
using Found = std::tuple<std::string, std::string, std::string>;

Found Find(CFURLRef (*inLookup)(CFStringRef, CFStringRef*, CFURLRef*), const std::string& inApp)
{
    CFStringRef rootName = nullptr;
    CFURLRef package = nullptr;
    std::string executable = Take(inLookup(PathString(inApp), &rootName, &package));
    return {executable, Take(rootName), Take(package)};
}

class Helpers : public ::testing::Test {
protected:
    // An application bundle with an executable of its own and inBundleName as its
    // "CFBundleName", or with no name at all.
    std::string MakeApp(const std::string& inBundleName)
    {
        std::string app = mEnvironment.Path("app-" + std::to_string(++mApps) + ".app");
        MakeBundle(app, inBundleName.empty() ? "" : "<key>CFBundleName</key><string>" + inBundleName + "</string>",
                   "App", "/bin/true");
        return app;
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
        std::string app = MakeApp(test.bundleName);
        for (const std::string& package : test.packages)
            AddHelper(app, package, BACKEND_PROGRAM);
        std::string expected = app + "/Contents/MacOS/" + test.packages.front();
        EXPECT_EQ(Find(test.media ? spindeck::CopyITunesHelperURL : spindeck::CopyBackendURL, app),
                  Found(expected + "/Contents/MacOS/Helper", test.rootName, expected));
    }
}

TEST_F(Helpers, WhatCannotBeFoundIsNullAndWhatIsNoBundleThrows)
{
    // No "CFBundleName": nothing found and nothing handed out, not even a helper named after
    // the application's folder.
    std::string nameless = MakeApp("");
    AddHelper(nameless, fs::path(nameless).stem().string() + " Helper.app", BACKEND_PROGRAM);
    EXPECT_EQ(Find(spindeck::CopyBackendURL, nameless), Found(kNull, kNull, kNull));
    bool available = true;
    EXPECT_FALSE(spindeck::IsBackendRunning(PathString(nameless), &available));
    EXPECT_FALSE(available);
    EXPECT_FALSE(spindeck::ToggleBackendState(PathString(nameless), nullptr, false));

    // A package without its executable, or with a damaged Info.plist naming none: not found,
    // and the names searched are still handed out. The media helper answers its own codes.
    for (const char* damage : {"remove", "garble"}) {
        SCOPED_TRACE(damage);
        std::string app = MakeApp("Vemora spindeck");
        std::string backend = AddHelper(app, "Vemora spindeck Helper.app", BACKEND_PROGRAM);
        std::string media = AddHelper(app, "Vemora iTunes Helper.app", MEDIA_PROGRAM);
        for (const std::string& package : {backend, media}) {
            if (std::string(damage) == "remove")
                fs::remove(package + "/Contents/MacOS/Helper");
            else
                WriteFile(package + "/Contents/Info.plist", "<plist><dict><key>CFBundleExecutable</key><str");
        }
        EXPECT_EQ(Find(spindeck::CopyBackendURL, app), Found(kNull, "Vemora spindeck Helper", backend));
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
    EXPECT_THAT([&] { spindeck::IsBackendRunning(PathString(file), nullptr); }, kThrowsNilReference);
    std::string missing = mEnvironment.Path("missing.app");
    EXPECT_THAT([&] { spindeck::IsBackendRunning(PathString(missing), nullptr); }, kThrowsNilReference);
    std::string empty = MakeApp("Vemora spindeck");
    EXPECT_THAT([&] { spindeck::ToggleBackendState(PathString(empty), nullptr, false); }, kThrowsNilReference);
    EXPECT_THAT([&] { spindeck::QuitITunesHelper(PathString(empty)); }, kThrowsNilReference);
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
    EXPECT_EQ(StoredItems(mEnvironment.Config()), foreign + "\n");

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
    EXPECT_EQ(StoredItems(mEnvironment.Config()), foreign + "\n");
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
