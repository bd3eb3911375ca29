// The process list, process information and serial numbers, with real processes.
#include "ChildProcess.h"
#include "FilesTesting.h"

#include <Carbon/MacErrors.h>
#include <Carbon/Files.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace spindeck::test;

namespace {

ProcessInfoRec InfoRecord(StringPtr ioName)
{
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info;
    info.processName = ioName;
    return info;
}

// A copy of sleep(1) at inPath, so that the process's executable lives there.
fs::path InstallSleeper(const fs::path& inPath)
{
    fs::create_directories(inPath.parent_path());
    fs::copy_file("/bin/sleep", inPath);
    return inPath;
}

TEST(ProcessList, HoldsAndDescribesThisProcess)
{
    ProcessSerialNumber current{};
    ASSERT_EQ(GetCurrentProcess(&current), noErr);
    EXPECT_EQ(current.highLongOfPSN, UInt32(::getpid()));

    ProcessSerialNumber psn{0, kNoProcess};
    UInt32 previous = 0;
    bool found = false;
    OSErr status;
    while ((status = GetNextProcess(&psn)) == noErr) {
        EXPECT_GT(psn.highLongOfPSN, previous);
        previous = psn.highLongOfPSN;
        found = found || psn == current;
    }
    EXPECT_EQ(status, procNotFound);
    EXPECT_TRUE(found);
    EXPECT_EQ(psn, (ProcessSerialNumber{0, kNoProcess}));

    Boolean same = false;
    ProcessSerialNumber self{0, kCurrentProcess};
    ASSERT_EQ(SameProcess(&self, &current, &same), noErr);
    EXPECT_TRUE(same);

    Str255 name;
    ProcessInfoRec info = InfoRecord(name);
    FSRef application{}, executable = RefOf("/proc/self/exe");
    info.processAppRef = &application;
    ASSERT_EQ(GetProcessInformation(&self, &info), noErr);
    EXPECT_EQ(PascalText(name), fs::read_symlink("/proc/self/exe").filename().string());
    ProcessSerialNumber parent{};
    EXPECT_EQ(info.processNumber, current);
    ASSERT_EQ(GetProcessForPID(::getppid(), &parent), noErr);
    EXPECT_EQ(info.processLauncher, parent);
    EXPECT_EQ(info.processType, FourCC("APPL"));
    EXPECT_GT(info.processSize, 0u);
    EXPECT_EQ(FSCompareFSRefs(&application, &executable), noErr);

    CFStringRef fullName = nullptr;
    ASSERT_EQ(CopyProcessName(&self, &fullName), noErr);
    EXPECT_EQ(cf::UTF8(fullName), PascalText(name));
    CFRelease(fullName);

    info.processInfoLength = 59;
    EXPECT_EQ(GetProcessInformation(&self, &info), paramErr);
}

TEST(ProcessInformation, NamesABundledApplicationAfterItsBundle)
{
    TemporaryFolder folder;
    fs::path bundle = folder.Path("Sample Tool.app");
    ChildProcess bundled(InstallSleeper(bundle / "Contents/MacOS/sampletool"), {"30"});
    WriteFile(bundle / "Contents/Info.plist", R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>CFBundlePackageType</key><string>TEST</string>
<key>CFBundleSignature</key><string>SmTl</string>
</dict></plist>
)");
    const std::string bare = folder.Path("an-executable-name-longer-than-31-bytes");
    ChildProcess longName(InstallSleeper(bare), {"30"});

    Str255 name;
    FSRef application{};
    ProcessInfoRec info = InfoRecord(name);
    info.processAppRef = &application;
    ProcessSerialNumber psn = bundled.PSN();
    ASSERT_EQ(GetProcessInformation(&psn, &info), noErr);
    EXPECT_EQ(PascalText(name), "Sample Tool");
    EXPECT_EQ(info.processType, FourCC("TEST"));
    EXPECT_EQ(info.processSignature, FourCC("SmTl"));
    // The application file of a bundled program is its bundle, of a bare one its executable.
    FSRef expected = RefOf(bundle);
    EXPECT_EQ(FSCompareFSRefs(&application, &expected), noErr);

    psn = longName.PSN();
    ASSERT_EQ(GetProcessInformation(&psn, &info), noErr);
    expected = RefOf(bare);
    EXPECT_EQ(FSCompareFSRefs(&application, &expected), noErr);
    EXPECT_EQ(info.processSignature, FourCC("????"));
    EXPECT_EQ(PascalText(name), std::string("an-executable-name-longer-than-31-bytes").substr(0, 31));
    CFStringRef fullName = nullptr;
    ASSERT_EQ(CopyProcessName(&psn, &fullName), noErr);
    EXPECT_EQ(cf::UTF8(fullName), "an-executable-name-longer-than-31-bytes");
    CFRelease(fullName);
}

TEST(ProcessSerialNumbers, StopMatchingWhenTheProcessEnds)
{
    ChildProcess child("/bin/sleep", {"30"});
    ProcessSerialNumber psn = child.PSN();
    EXPECT_EQ(psn.highLongOfPSN, UInt32(child.PID()));
    pid_t pid = 0;
    ASSERT_EQ(GetProcessPID(&psn, &pid), noErr);
    EXPECT_EQ(pid, child.PID());

    ProcessSerialNumber forged{psn.highLongOfPSN, psn.lowLongOfPSN + 1};
    ProcessInfoRec info = InfoRecord(nullptr);
    EXPECT_EQ(GetProcessInformation(&forged, &info), procNotFound);
    EXPECT_EQ(GetProcessPID(&forged, &pid), procNotFound);

    ::kill(child.PID(), SIGKILL);
    ASSERT_TRUE(child.EndsBy(SIGKILL));
    EXPECT_EQ(GetProcessInformation(&psn, &info), procNotFound);
    EXPECT_EQ(GetProcessForPID(child.PID(), &psn), procNotFound);
    // The walk goes on after a process that has ended.
    OSErr status = GetNextProcess(&psn);
    EXPECT_TRUE(status == procNotFound || psn.highLongOfPSN > UInt32(child.PID()));
}

TEST(ProcessSerialNumbers, NameTheFrontProcessOfATerminal)
{
    // A child in a session of its own on a new pseudo-terminal is that terminal's
    // foreground process, and without a display that is the front process.
    pid_t child = ::fork();
    if (child == 0) {
        ::unsetenv("DISPLAY");
        int master = ::posix_openpt(O_RDWR | O_NOCTTY);
        bool ready = master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0 && ::setsid() > 0 &&
                     ::open(::ptsname(master), O_RDWR) >= 0;
        ProcessSerialNumber front{}, self{0, kCurrentProcess};
        Boolean same = false;
        bool answered = ready && GetFrontProcess(&front) == noErr && SameProcess(&front, &self, &same) == noErr;
        ::_exit(answered && same ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

}  // namespace
