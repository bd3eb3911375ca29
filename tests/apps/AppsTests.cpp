// The programs as a user runs them: the demo helpers, spindeckctl and the log-in launcher, on
// copies of the demo product, with private configuration and runtime folders.
#include "ChildProcess.h"
#include "HelperTesting.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <string>

namespace {

using namespace spindeck::test;

struct Result {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs a shell command; paths reach it through the environment, so nothing needs quoting.
// Output goes to files, read once the command has ended.
Result RunShell(const std::string& inCommand, const std::string& inOutputFile)
{
    int status = std::system((inCommand + " >\"" + inOutputFile + ".out\" 2>\"" + inOutputFile + ".err\"").c_str());
    Result result;
    result.status = status >= 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.out = ReadFile(inOutputFile + ".out");
    result.err = ReadFile(inOutputFile + ".err");
    return result;
}

class Programs : public ::testing::Test {
protected:
    Result Ctl(const std::string& inArguments)
    {
        return RunShell("\"$SPINDECKCTL\" --app \"$APP\" " + inArguments, mEnvironment.Path("output"));
    }

    HelperEnvironment mEnvironment;
    std::string mApp = mEnvironment.CopyDemo("Mes programmes à moi");
    ScopedVariable mAppVariable{"APP", mApp};
    ScopedVariable mCtl{"SPINDECKCTL", SPINDECKCTL_PROGRAM};
};

TEST_F(Programs, TheHelperRunsOncePerUserAndTakesItsTimeToQuit)
{
    std::string executable = mApp + "/" + kBackendExecutable;
    ScopedVariable quitTime("VEMORA_HELPER_QUIT_SECONDS", "0.5");
    ChildProcess first(executable, {});
    // Once the first helper takes the quit request it also holds the lock. The second run is
    // bounded, so that a second helper that does start cannot hang the test.
    ASSERT_TRUE(AwaitQuitHandler(first.PID()));
    ScopedVariable helper("HELPER", executable);
    Result second = RunShell("timeout 20 \"$HELPER\"", mEnvironment.Path("output"));
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.err, "Vemora spindeck Helper: already running for this user (lock " + mEnvironment.Runtime() +
                              "/Vemora spindeck Helper.lock)\n");

    auto asked = std::chrono::steady_clock::now();
    ::kill(first.PID(), SIGTERM);
    std::optional<int> status = first.Reap();
    ASSERT_TRUE(status.has_value());
    EXPECT_TRUE(WIFEXITED(*status) && WEXITSTATUS(*status) == 0) << "the quit request ends the helper normally";
    EXPECT_GE(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(500));
}

TEST_F(Programs, SpindeckctlControlsBothHelpers)
{
    Result result = Ctl("status");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "The background helper is not running.\n");
    result = Ctl("start");
    EXPECT_EQ(result.status, 0) << result.err;
    pid_t backend = RunningPID(mApp + "/" + kBackendExecutable);
    EXPECT_NE(backend, 0);
    result = Ctl("--json status");
    EXPECT_EQ(result.out,
              "{\"helper\":\"backend\",\"app\":\"" + mApp +
                  "\",\"found\":true,\"running\":true,\"message\":\"The background helper is running.\"}\n");
    EXPECT_NE(StoredItems(mEnvironment.Config()).find(mApp + "/" + kBackend), std::string::npos);
    EXPECT_EQ(Ctl("reconcile").out, "Nothing to do: the helper runs, or it is not a login item.\n");

    EXPECT_EQ(Ctl("media start").status, 0);
    pid_t media = RunningPID(mApp + "/" + kMediaHelperExecutable);
    EXPECT_NE(media, 0);
    EXPECT_EQ(Ctl("media status").out, "The media-player helper is running.\n");
    EXPECT_EQ(Ctl("media stop").out, "The media-player helper was asked to quit.\n");
    EXPECT_TRUE(AwaitGone(media));

    EXPECT_EQ(Ctl("stop").out, "The background helper was asked to quit.\n");
    EXPECT_TRUE(AwaitGone(backend));
    EXPECT_EQ(StoredItems(mEnvironment.Config()), "[]\n");
    // The login item is back, so reconciling starts it again.
    ASSERT_EQ(StoreItems(mEnvironment.Config(), R"([{"Hide": false, "Path": ")" + mApp + "/" + kBackend + "\"}]"), "");
    result = Ctl("--json reconcile");
    EXPECT_NE(result.out.find("\"action\":\"started\""), std::string::npos) << result.out;
    EXPECT_TRUE(AwaitRunning(mApp + "/" + kBackendExecutable));
}

TEST_F(Programs, SpindeckctlAnswersMissingHelpersAndBadUsage)
{
    fs::remove(mApp + "/" + kMediaHelperExecutable);
    Result result = Ctl("media start");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "The media-player helper was not found in the application.\n");
    ScopedVariable missing("APP", mEnvironment.Path("nowhere.app"));
    result = Ctl("--json status");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.out.find("\"found\":false"), std::string::npos) << result.out;
    // Run from the build folder without --app, it has no installed application, and does not
    // take the one in the folder it is run from.
    ScopedVariable folder("FOLDER", fs::path(mApp).parent_path().string());
    result = RunShell("cd \"$FOLDER\" && \"$SPINDECKCTL\" status", mEnvironment.Path("output"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out,
              "This spindeckctl is not installed with a Vemora spindeck application; name one with --app PATH.\n");
    for (const char* bad : {"", "launch", "media", "media pause", "status extra", "--verbose status"}) {
        result = Ctl(bad);
        EXPECT_EQ(result.status, 2) << bad;
        EXPECT_EQ(result.err, "spindeckctl: unknown command or option; see spindeckctl --help\n") << bad;
    }
    EXPECT_EQ(Ctl("--help").status, 0);
}

// A log-in: the launcher opens the list, skipping what is gone and what already runs.
TEST_F(Programs, TheLauncherOpensTheLoginItemsOnce)
{
    const std::string gone = mEnvironment.Path("Removed Helper.app");
    ASSERT_EQ(StoreItems(mEnvironment.Config(), R"([{"Hide": false, "Path": ")" + gone +
                                                    R"("}, {"Name": "no path"}, {"Hide": false, "Path": ")" + mApp +
                                                    "/" + kBackend + R"("}, {"Hide": false, "Path": ")" + mApp + "/" +
                                                    kMediaHelper + "\"}]"),
              "");
    ScopedVariable launcher("LAUNCHER", LAUNCHER_PROGRAM);
    Result result = RunShell("\"$LAUNCHER\"", mEnvironment.Path("output"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "vemora-login-launcher: skipped " + gone + ": it no longer exists\n");
    ASSERT_TRUE(AwaitRunning(mApp + "/" + kBackendExecutable));
    ASSERT_TRUE(AwaitRunning(mApp + "/" + kMediaHelperExecutable));
    std::vector<pid_t> before = ProcessesRunning(mApp + "/");

    result = RunShell("\"$LAUNCHER\"", mEnvironment.Path("output"));
    EXPECT_EQ(result.status, 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(ProcessesRunning(mApp + "/"), before) << "a second log-in started the helpers again";
}

}  // namespace
