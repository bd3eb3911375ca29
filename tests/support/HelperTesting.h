// Helpers that really run: a private configuration and runtime folder for each test, copies
// of the demo product (so that tests running side by side never see each other's helpers),
// and every helper started from the test's folder ended with the test.
#pragma once

#include "LoginWindowTesting.h"

#include <platform/Mac/utils/MacKvxUtils.h>

#include <Carbon/Files.h>
#include <Carbon/Processes.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace spindeck::test {

inline const std::string kBackend = "Contents/MacOS/Vemora spindeck Helper.app";
inline const std::string kBackendExecutable = kBackend + "/Contents/MacOS/Vemora spindeck Helper";
inline const std::string kMediaHelper = "Contents/MacOS/Vemora iTunes Helper.app";
inline const std::string kMediaHelperExecutable = kMediaHelper + "/Contents/MacOS/Vemora iTunes Helper";

// The processes whose executable path starts with inPrefix (a whole path matches itself).
inline std::vector<pid_t> ProcessesRunning(const std::string& inPrefix)
{
    std::vector<pid_t> found;
    ProcessSerialNumber psn{0, kNoProcess};
    while (GetNextProcess(&psn) == noErr) {
        FSRef file{};
        UInt8 path[4096];
        ProcessInfoRec info{};
        info.processInfoLength = sizeof info;
        info.processAppRef = &file;
        pid_t pid = 0;
        if (GetProcessInformation(&psn, &info) == noErr && FSRefMakePath(&file, path, sizeof path) == noErr &&
            std::string(reinterpret_cast<char*>(path)).starts_with(inPrefix) && GetProcessPID(&psn, &pid) == noErr)
            found.push_back(pid);
    }
    return found;
}

// The process running the file at inPath, as the product finds it, or 0.
inline pid_t RunningPID(const std::string& inPath)
{
    ProcessSerialNumber psn{};
    pid_t pid = 0;
    URL url = PathURL(inPath);
    return url && kvx::IsRunning(url.Get(), &psn) && GetProcessPID(&psn, &pid) == noErr ? pid : 0;
}

inline bool AwaitRunning(const std::string& inPath)
{
    for (int i = 0; i < 300 && RunningPID(inPath) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return RunningPID(inPath) != 0;
}

// Waits until process inPID takes the quit request itself. A process is listed as running
// from the moment it starts, but until it installs its quit handler SIGTERM still ends it
// by default; installing the handler blocks SIGTERM on its main thread, which the kernel
// shows in the process's status.
inline bool AwaitQuitHandler(pid_t inPID)
{
    const std::string status = "/proc/" + std::to_string(inPID) + "/status";
    for (int i = 0; i < 500; ++i) {
        std::ifstream file(status);
        std::string line;
        while (std::getline(file, line))
            if (line.starts_with("SigBlk:") && (std::stoull(line.substr(7), nullptr, 16) >> (SIGTERM - 1)) & 1)
                return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

class HelperEnvironment {
public:
    HelperEnvironment()
    {
        fs::create_directories(Runtime());
        fs::permissions(Runtime(), fs::perms::owner_all);
    }
    HelperEnvironment(const HelperEnvironment&) = delete;
    HelperEnvironment& operator=(const HelperEnvironment&) = delete;
    ~HelperEnvironment() { EndHelpers(); }

    std::string Path(const std::string& inName) const { return mFolder.Path(inName); }
    std::string Config() const { return mFolder.Path("config"); }
    std::string Runtime() const { return mFolder.Path("runtime"); }

    // A copy of the demo product as built, at inFolder (relative to the test's folder).
    std::string CopyDemo(const std::string& inFolder) const
    {
        std::string app = mFolder.Path(inFolder) + "/Vemora spindeck.app";
        fs::create_directories(mFolder.Path(inFolder));
        fs::copy(SPINDECK_DEMO_APP, app, fs::copy_options::recursive);
        return app;
    }

    // Kills every process whose executable lies in the test's folder.
    void EndHelpers() const
    {
        for (pid_t pid : ProcessesRunning(mFolder.Path() + "/"))
            Launched{pid};
    }

private:
    TemporaryFolder mFolder;
    ScopedVariable mConfig{"XDG_CONFIG_HOME", mFolder.Path("config")};
    ScopedVariable mRuntime{"XDG_RUNTIME_DIR", mFolder.Path("runtime")};
    // Quitting helpers take a fifth of a second instead of a whole one.
    ScopedVariable mQuitTime{"VEMORA_HELPER_QUIT_SECONDS", "0.2"};
};

}  // namespace spindeck::test
