// Launching real programs in tests: bundles made in a temporary folder, URLs, the reports
// that LaunchTarget writes, and launched programs that are ended with the test.
#pragma once

#include "FilesTesting.h"

#include <Carbon/MacErrors.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CFURL.h>
#include <PortSupport/Owned.h>

#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace spindeck::test {

namespace fs = std::filesystem;

// A file that may be run: a script, or bytes that only look like a program.
inline void WriteProgram(const std::string& inPath, const std::string& inText)
{
    WriteFile(inPath, inText);
    fs::permissions(inPath, fs::perms(0755));
}

// Contents/Info.plist with inEntries (XML keys and values) and, when inProgram is given, a
// copy of it as Contents/MacOS/<inExecutable>.
inline void MakeBundle(const std::string& inPath, const std::string& inEntries, const std::string& inExecutable = "",
                       const std::string& inProgram = "")
{
    fs::create_directories(inPath + "/Contents/MacOS");
    std::string executable = inExecutable.empty()
                                 ? ""
                                 : "<key>CFBundleExecutable</key><string>" + inExecutable + "</string>";
    WriteFile(inPath + "/Contents/Info.plist",
              "<plist version=\"1.0\"><dict>" + executable + inEntries + "</dict></plist>");
    if (!inProgram.empty())
        fs::copy_file(inProgram, inPath + "/Contents/MacOS/" + inExecutable);
}

using URL = port::Owned<CFURLRef>;

inline URL PathURL(const std::string& inPath, bool inIsFolder = false)
{
    auto bytes = reinterpret_cast<const UInt8*>(inPath.data());
    return URL(CFURLCreateFromFileSystemRepresentation(nullptr, bytes, CFIndex(inPath.size()), inIsFolder));
}

inline URL TextURL(const char* inText)
{
    auto bytes = reinterpret_cast<const UInt8*>(inText);
    return URL(CFURLCreateWithBytes(nullptr, bytes, CFIndex(std::strlen(inText)), kCFStringEncodingUTF8, nullptr));
}

// The "key=value" lines of a LaunchTarget report, in order; "arg" repeats.
using LaunchReport = std::multimap<std::string, std::string>;

inline std::string Value(const LaunchReport& inReport, const std::string& inKey)
{
    auto found = inReport.find(inKey);
    return found == inReport.end() ? std::string() : found->second;
}

inline pid_t PIDOf(const LaunchReport& inReport) { return pid_t(std::atoi(Value(inReport, "pid").c_str())); }

inline std::optional<LaunchReport> AwaitReport(const std::string& inPath)
{
    for (int i = 0; i < 500; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10)))
        if (std::ifstream file{inPath}) {
            LaunchReport report;
            for (std::string line; std::getline(file, line);)
                if (std::size_t equals = line.find('='); equals != std::string::npos)
                    report.emplace(line.substr(0, equals), line.substr(equals + 1));
            return report;
        }
    return std::nullopt;
}

inline bool IsGone(pid_t inPID)
{
    ProcessSerialNumber psn;
    return GetProcessForPID(inPID, &psn) == procNotFound;
}

// Launched programs are not our children: ending is seen through the Process Manager.
inline bool AwaitGone(pid_t inPID)
{
    for (int i = 0; i < 500 && !IsGone(inPID); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return IsGone(inPID);
}

// Kills the program at the end of the test if the test did not end it.
struct Launched {
    pid_t pid;
    ~Launched()
    {
        if (pid > 0 && !IsGone(pid) && ::kill(pid, SIGKILL) == 0)
            AwaitGone(pid);
    }
};

// An environment variable, for the programs launched while it is in scope.
class ScopedVariable {
public:
    ScopedVariable(const char* inName, const std::string& inValue) : mName(inName)
    {
        if (const char* old = std::getenv(inName))
            mOld = old;
        ::setenv(inName, inValue.c_str(), 1);
    }
    ~ScopedVariable() { mOld ? ::setenv(mName, mOld->c_str(), 1) : ::unsetenv(mName); }

private:
    const char* mName;
    std::optional<std::string> mOld;
};

}  // namespace spindeck::test
