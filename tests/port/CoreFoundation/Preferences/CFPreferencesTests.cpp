// Preferences: pending values and synchronisation, typed readers, domains by user and host,
// other processes' changes, damaged files kept aside, and writers killed at random moments.
#include "PropertyList/PropertyListTesting.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

using namespace plisttest;
namespace fs = std::filesystem;

namespace {

constexpr const char* kApp = "com.vemora.test";

// Each test gets a home and configuration folder of its own, set before the first call.
class CFPreferences : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME"})
            mSaved.emplace_back(name, std::getenv(name) ? std::getenv(name) : "");
        setenv("HOME", mHome.Path().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (mHome / "config").c_str(), 1);
    }

    void TearDown() override
    {
        for (const auto& [name, value] : mSaved)
            value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
    }

    std::string Folder() const { return mHome / "config/preferences"; }
    std::string File(const char* inDomain = kApp) const { return Folder() + "/" + inDomain + ".plist"; }

    TemporaryFolder mHome;
    std::vector<std::pair<std::string, std::string>> mSaved;
};

std::string Copied(const char* inKey)
{
    Ref key(Str(inKey)), app(Str(kApp));
    Ref value(CFPreferencesCopyAppValue(key.as<CFStringRef>(), app.as<CFStringRef>()));
    return value ? Dump(value.get()) : "(none)";
}

void SetString(const char* inKey, const char* inValue)
{
    Ref key(Str(inKey)), app(Str(kApp)), value(inValue ? Str(inValue) : nullptr);
    CFPreferencesSetAppValue(key.as<CFStringRef>(), value.get(), app.as<CFStringRef>());
}

bool Synchronize()
{
    Ref app(Str(kApp));
    return CFPreferencesAppSynchronize(app.as<CFStringRef>());
}

std::string FileDump(const std::string& inPath)
{
    std::string error;
    Ref contents = Parse(ReadFile(inPath), kCFPropertyListImmutable, &error);
    return contents ? Dump(contents.get()) : "unreadable: " + error;
}

std::vector<std::string> Names(const std::string& inFolder, const std::string& inPart)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(inFolder))
        if (entry.path().filename().string().find(inPart) != std::string::npos)
            names.push_back(entry.path().string());
    return names;
}

TEST_F(CFPreferences, ValuesAreSeenAtOnceAndWrittenWhenSynchronised)
{
    SetString("Name", "Spindeck");
    EXPECT_EQ(Copied("Name"), "s\"Spindeck\"");
    EXPECT_FALSE(fs::exists(File()));
    ASSERT_TRUE(Synchronize());
    EXPECT_EQ(FileDump(File()), "{s\"Name\":s\"Spindeck\"}");
    EXPECT_EQ(ReadFile(File()).rfind("<?xml", 0), 0u);
    EXPECT_EQ(fs::status(File()).permissions(), fs::perms::owner_read | fs::perms::owner_write);

    SetString("Name", nullptr);  // NULL removes
    EXPECT_EQ(Copied("Name"), "(none)");
    EXPECT_EQ(FileDump(File()), "{s\"Name\":s\"Spindeck\"}");
    ASSERT_TRUE(Synchronize());
    EXPECT_EQ(FileDump(File()), "{}");
}

// A write that fails (here: a file-size limit, which holds even for root) loses nothing: the
// old file stays whole, the new values stay pending and are written by the next attempt.
TEST_F(CFPreferences, AFailedWriteKeepsTheNewValuesPending)
{
    SetString("Name", "Spindeck");
    ASSERT_TRUE(Synchronize());
    SetString("Name", "A name far longer than the file may grow");
    SetString("Other", "added");

    rlimit saved{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    rlimit tiny = saved;
    tiny.rlim_cur = 16;
    auto oldHandler = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tiny), 0);
    bool written = Synchronize();
    setrlimit(RLIMIT_FSIZE, &saved);
    signal(SIGXFSZ, oldHandler);

    EXPECT_FALSE(written);
    EXPECT_EQ(FileDump(File()), "{s\"Name\":s\"Spindeck\"}");
    EXPECT_EQ(Copied("Name"), "s\"A name far longer than the file may grow\"");
    ASSERT_TRUE(Synchronize());
    EXPECT_EQ(FileDump(File()), "{s\"Name\":s\"A name far longer than the file may grow\",s\"Other\":s\"added\"}");
}

TEST_F(CFPreferences, TypedReadersAcceptNumbersTextAndBooleans)
{
    fs::create_directories(Folder());
    WriteFile(File(), R"(<plist><dict>
        <key>int</key><integer>-42</integer> <key>text</key><string>17</string>
        <key>junk</key><string>17x</string> <key>real</key><real>2.9</real>
        <key>yes</key><true/> <key>YES</key><string>YES</string> <key>no</key><string>false</string>
        <key>zero</key><integer>0</integer></dict></plist>)");
    struct Expected {
        const char* key;
        CFIndex integer;
        bool integerValid;
        bool boolean;
        bool booleanValid;
    };
    const Expected cases[] = {
        {"int", -42, true, true, true},   {"text", 17, true, false, false}, {"real", 0, false, true, true},
        {"junk", 0, false, false, false}, {"yes", 0, false, true, true},    {"YES", 0, false, true, true},
        {"no", 0, false, false, true},    {"zero", 0, true, false, true},   {"missing", 0, false, false, false},
    };
    Ref app(Str(kApp));
    for (const Expected& expected : cases) {
        Ref key(Str(expected.key));
        Boolean integerValid = !expected.integerValid, booleanValid = !expected.booleanValid;
        EXPECT_EQ(CFPreferencesGetAppIntegerValue(key.as<CFStringRef>(), app.as<CFStringRef>(), &integerValid),
                  expected.integer)
            << expected.key;
        EXPECT_EQ(CFPreferencesGetAppBooleanValue(key.as<CFStringRef>(), app.as<CFStringRef>(), &booleanValid),
                  expected.boolean)
            << expected.key;
        EXPECT_EQ(integerValid, expected.integerValid) << expected.key;
        EXPECT_EQ(booleanValid, expected.booleanValid) << expected.key;
    }
}

TEST_F(CFPreferences, DomainsAreKeptByApplicationUserAndHost)
{
    Ref app(Str(kApp)), key(Str("Where")), here(Str("this host")), global(Str("global")), own(Str("own"));
    CFStringRef application = app.as<CFStringRef>(), where = key.as<CFStringRef>();

    CFPreferencesSetValue(where, here.get(), application, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
    EXPECT_TRUE(CFPreferencesSynchronize(application, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost));
    EXPECT_EQ(Names(Folder() + "/ByHost", kApp).size(), 1u);
    EXPECT_FALSE(Ref(CFPreferencesCopyValue(where, application, kCFPreferencesCurrentUser, kCFPreferencesAnyHost)));
    EXPECT_EQ(Copied("Where"), "s\"this host\"");  // this host comes first in the search list

    // The global domain is seen through every application, unless the application has the key.
    Ref other(Str("Other"));
    CFPreferencesSetValue(other.as<CFStringRef>(), global.get(), kCFPreferencesAnyApplication,
                          kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    EXPECT_EQ(Copied("Other"), "s\"global\"");
    CFPreferencesSetAppValue(other.as<CFStringRef>(), own.get(), application);
    EXPECT_EQ(Copied("Other"), "s\"own\"");
    Ref keys(CFPreferencesCopyKeyList(application, kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
    EXPECT_EQ(Dump(keys.get()), "[s\"Other\"]");

    // Every user's domains are read only; other users' are not kept here.
    CFPreferencesSetValue(where, own.get(), application, kCFPreferencesAnyUser, kCFPreferencesAnyHost);
    EXPECT_FALSE(CFPreferencesSynchronize(application, kCFPreferencesAnyUser, kCFPreferencesAnyHost));
    Ref stranger(Str("someone-else-entirely"));
    EXPECT_FALSE(CFPreferencesSynchronize(application, stranger.as<CFStringRef>(), kCFPreferencesAnyHost));
    EXPECT_FALSE(Ref(CFPreferencesCopyValue(where, application, stranger.as<CFStringRef>(), kCFPreferencesAnyHost)));

    // The current application is the running program; paths follow the environment.
    setenv("XDG_CONFIG_HOME", (mHome / "elsewhere").c_str(), 1);
    CFPreferencesSetAppValue(where, own.get(), kCFPreferencesCurrentApplication);
    EXPECT_TRUE(CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication));
    EXPECT_TRUE(fs::exists(mHome / "elsewhere/preferences/CoreFoundationTests.plist"));
}

TEST_F(CFPreferences, OtherProcessesChangesArePickedUpAndMerged)
{
    SetString("Ours", "first");
    ASSERT_TRUE(Synchronize());
    int status = -1;
    RunProgram({SPINDECK_PREFERENCES_WRITER, "set", kApp, "Theirs", "second"}, &status);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(Copied("Theirs"), "s\"second\"");  // read again because the file was replaced

    SetString("Pending", "third");
    RunProgram({SPINDECK_PREFERENCES_WRITER, "set", kApp, "Later", "fourth"}, &status);
    ASSERT_EQ(status, 0);
    ASSERT_TRUE(Synchronize());
    EXPECT_EQ(FileDump(File()), R"({s"Later":s"fourth",s"Ours":s"first",s"Pending":s"third",s"Theirs":s"second"})");

    // A file replaced by any other means is read again too.
    WriteFile(File() + ".new", "<plist><dict><key>Ours</key><string>replaced</string></dict></plist>");
    fs::rename(File() + ".new", File());
    EXPECT_EQ(Copied("Ours"), "s\"replaced\"");
}

TEST_F(CFPreferences, DamagedFileIsKeptAsideReportedAndNeverLost)
{
    fs::create_directories(Folder());
    const std::string damaged = "<plist><dict><key>broken";
    WriteFile(File(), damaged);
    testing::internal::CaptureStderr();
    EXPECT_EQ(Copied("broken"), "(none)");
    std::string report = testing::internal::GetCapturedStderr();
    EXPECT_NE(report.find("\"" + File() + "\" could not be read"), std::string::npos) << report;
    std::vector<std::string> aside = Names(Folder(), ".plist.corrupt-");
    ASSERT_EQ(aside.size(), 1u);
    EXPECT_NE(report.find(aside[0]), std::string::npos) << report;
    EXPECT_EQ(ReadFile(aside[0]), damaged);

    SetString("Fresh", "start");
    ASSERT_TRUE(Synchronize());
    EXPECT_EQ(FileDump(File()), "{s\"Fresh\":s\"start\"}");

    // A second damaged file, even within the same second, does not replace the first.
    WriteFile(File() + ".new", "not { a property list");
    fs::rename(File() + ".new", File());
    testing::internal::CaptureStderr();
    EXPECT_EQ(Copied("Fresh"), "(none)");
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(Names(Folder(), ".plist.corrupt-").size(), 2u);
    EXPECT_EQ(ReadFile(aside[0]), damaged);
}

// A file in XML that only the full reader understands is used, not set aside; a value the
// file could not hold is refused when it is set, and the others are still written.
TEST_F(CFPreferences, UncommonXMLIsReadAndAnUnwritableValueIsRefusedAlone)
{
    fs::create_directories(Folder());
    WriteFile(File(), "<?xml version=\"1.0\"?>\n<plist version=\"1.0\"><dict><key>Kept</key>"
                      "<string><![CDATA[a <b>]]></string></dict></plist>\n");
    EXPECT_EQ(Copied("Kept"), "s\"a <b>\"");
    EXPECT_TRUE(Names(Folder(), ".corrupt-").empty());

    const UniChar kLone[] = {'x', 0xD800};
    Ref key(Str("Bad")), app(Str(kApp)), bad(CFStringCreateWithCharacters(nullptr, kLone, 2));
    testing::internal::CaptureStderr();
    CFPreferencesSetAppValue(key.as<CFStringRef>(), bad.get(), app.as<CFStringRef>());
    std::string report = testing::internal::GetCapturedStderr();
    EXPECT_NE(report.find("\"Bad\" was not stored"), std::string::npos) << report;
    SetString("Good", "yes");
    ASSERT_TRUE(Synchronize());
    EXPECT_EQ(FileDump(File()), "{s\"Good\":s\"yes\",s\"Kept\":s\"a <b>\"}");
}

TEST_F(CFPreferences, KillingAWriterAtAnyMomentLeavesTheFileWhole)
{
    const char* app = "com.vemora.killtest";
    std::string path = File(app);
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> delayMicroseconds(1000, 30000);
    bool written = false;
    long lastCounter = 0;
    for (int round = 0; round < 200; ++round) {
        int ready[2];
        ASSERT_EQ(pipe2(ready, O_CLOEXEC), 0);
        pid_t writer = fork();
        if (writer == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            dup2(ready[1], 3);
            execl(SPINDECK_PREFERENCES_WRITER, SPINDECK_PREFERENCES_WRITER, "loop", app, "3", nullptr);
            _exit(127);
        }
        close(ready[1]);
        char byte = 0;
        ssize_t started = read(ready[0], &byte, 1);
        close(ready[0]);
        usleep(useconds_t(delayMicroseconds(random)));
        kill(writer, SIGKILL);
        int status = 0;
        waitpid(writer, &status, 0);
        ASSERT_EQ(started, 1) << "the writer did not start";
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself with status " << WEXITSTATUS(status);

        bool exists = fs::exists(path);
        ASSERT_TRUE(exists || !written) << "the file vanished in round " << round;
        if (!exists)
            continue;
        written = true;
        std::string error;
        Ref contents = Parse(ReadFile(path), kCFPropertyListImmutable, &error);
        ASSERT_TRUE(contents) << "round " << round << ": " << error;
        Ref counterKey(Str("Counter")), payloadKey(Str("Payload"));
        long counter = 0;
        CFNumberGetValue(CFNumberRef(CFDictionaryGetValue(contents.as<CFDictionaryRef>(), counterKey.get())),
                         kCFNumberLongType, &counter);
        auto payload = CFDataRef(CFDictionaryGetValue(contents.as<CFDictionaryRef>(), payloadKey.get()));
        ASSERT_GE(counter, lastCounter);
        ASSERT_EQ(BytesOf(payload), WriterPayload(counter));
        lastCounter = counter;
    }
    EXPECT_TRUE(written);
    std::printf("the writers completed %ld rewrites in 200 rounds\n", lastCounter);
    // Nothing is left but the file and at most the temporary file of the last writer killed.
    EXPECT_LE(Names(Folder(), app).size(), 2u);
    EXPECT_TRUE(Names(Folder(), ".corrupt-").empty());
}

}  // namespace
