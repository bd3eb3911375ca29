// Launch Services with real programs: how they are detached, bundles that run once, the
// statuses of what cannot be launched, the desktop's opener, and no children left behind.
#include "LaunchTesting.h"

#include <Carbon/LaunchServices.h>
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFRuntime.h>

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/wait.h>

#include <set>
#include <sstream>
#include <utility>
#include <vector>

using namespace spindeck::test;

namespace {

const std::string kTarget = LAUNCH_TARGET_PATH;

std::string PathOf(CFURLRef inURL)
{
    char path[PATH_MAX] = "";
    auto buffer = reinterpret_cast<UInt8*>(path);
    return inURL && CFURLGetFileSystemRepresentation(inURL, true, buffer, sizeof path) ? path : "";
}

OSStatus Launch(CFURLRef inApp, std::vector<CFURLRef> inItems, LSLaunchFlags inFlags, URL* outLaunched = nullptr)
{
    CFArrayRef items = CFArrayCreate(nullptr, reinterpret_cast<const void**>(inItems.data()), CFIndex(inItems.size()),
                                     &kCFTypeArrayCallBacks);
    LSLaunchURLSpec spec{inApp, inItems.empty() ? nullptr : items, nullptr, inFlags, nullptr};
    CFURLRef launched = nullptr;
    OSStatus status = LSOpenFromURLSpec(&spec, outLaunched ? &launched : nullptr);
    if (outLaunched)
        outLaunched->Reset(launched);
    CFRelease(items);
    return status;
}

// How many processes run this very file.
int CountRunning(const std::string& inProgram)
{
    int count = 0;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::error_code error;
        pid_t pid = pid_t(std::atoi(entry.path().filename().c_str()));
        count += pid > 0 && fs::equivalent(entry.path() / "exe", inProgram, error) && !IsGone(pid);
    }
    return count;
}

std::size_t OpenDescriptorCount()
{
    return std::size_t(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

// The test's own standard output and error go into a pipe until Restore, as when the test
// program's output is piped to a reader.
class OutputToPipe {
public:
    OutputToPipe()
    {
        if (::pipe2(mEnds, O_CLOEXEC) != 0)
            return;
        for (int fd : {STDOUT_FILENO, STDERR_FILENO}) {
            mSaved[fd - STDOUT_FILENO] = ::dup(fd);
            ::dup2(mEnds[1], fd);
        }
    }
    OutputToPipe(const OutputToPipe&) = delete;
    OutputToPipe& operator=(const OutputToPipe&) = delete;
    ~OutputToPipe()
    {
        Restore();
        if (mEnds[0] >= 0)
            ::close(mEnds[0]);
    }

    // Gives the test its output back and closes every end of the pipe's writing side it held.
    void Restore()
    {
        for (int fd : {STDOUT_FILENO, STDERR_FILENO})
            if (int& saved = mSaved[fd - STDOUT_FILENO]; saved >= 0) {
                ::dup2(saved, fd);
                ::close(std::exchange(saved, -1));
            }
        if (mEnds[1] >= 0)
            ::close(std::exchange(mEnds[1], -1));
    }

    // What the reader sees within a few seconds: "" at end-of-file, else what it read or a
    // note that it is still waiting.
    std::string Read()
    {
        pollfd readable{mEnds[0], POLLIN, 0};
        if (::poll(&readable, 1, 5000) != 1)
            return "(still open, nothing written)";
        char bytes[256];
        ssize_t length = ::read(mEnds[0], bytes, sizeof bytes);
        return length > 0 ? std::string(bytes, std::size_t(length)) : std::string();
    }

private:
    int mEnds[2] = {-1, -1};
    int mSaved[2] = {-1, -1};
};

TEST(LaunchServices, StartsAProgramDetachedWithItsItems)
{
    TemporaryFolder folder;
    // Standard input is a pipe during the launch, and none of these descriptors is marked
    // close-on-exec: the program must still read /dev/null and see none of them.
    int input[2];
    ASSERT_EQ(::pipe(input), 0);
    int savedInput = ::dup(STDIN_FILENO);
    ::dup2(input[0], STDIN_FILENO);
    URL app = PathURL(kTarget), report = PathURL(folder.Path("report")), spaced = PathURL(folder.Path("a b")),
        web = TextURL("https://example.org/a?b=1"), launched;
    OSStatus status = Launch(app.Get(), {report.Get(), spaced.Get(), web.Get()}, kLSLaunchDontSwitch, &launched);
    ::dup2(savedInput, STDIN_FILENO);
    for (int fd : {savedInput, input[0], input[1]})
        ::close(fd);
    ASSERT_EQ(status, noErr);
    EXPECT_EQ(PathOf(launched.Get()), kTarget);

    std::optional<LaunchReport> started = AwaitReport(folder.Path("report"));
    ASSERT_TRUE(started);
    Launched program{PIDOf(*started)};
    EXPECT_EQ(Value(*started, "fds"), "0 1 2");
    EXPECT_EQ(Value(*started, "stdin"), "/dev/null");
    EXPECT_EQ(Value(*started, "cwd"), "/");
    EXPECT_NE(Value(*started, "sid"), std::to_string(::getsid(0)));
    auto [first, last] = started->equal_range("arg");
    std::multimap<std::string, std::string> arguments(first, last);
    EXPECT_EQ(arguments, (LaunchReport{{"arg", folder.Path("a b")}, {"arg", "https://example.org/a?b=1"}}));
}

TEST(LaunchServices, LaunchedProgramsDoNotHoldTheCallersOutputOpen)
{
    TemporaryFolder folder;
    WriteProgram(folder.Path("garbage"), "neither a program nor a script\n");
    URL app = PathURL(kTarget), report = PathURL(folder.Path("report")), missing = PathURL(folder.Path("missing")),
        garbage = PathURL(folder.Path("garbage"));
    OutputToPipe output;
    OSStatus launched = Launch(app.Get(), {report.Get()}, 0);
    // What cannot be executed is still told, though the program's output goes elsewhere.
    OSStatus missingStatus = LSOpenCFURLRef(missing.Get(), nullptr);
    OSStatus garbageStatus = LSOpenCFURLRef(garbage.Get(), nullptr);
    std::optional<LaunchReport> started = AwaitReport(folder.Path("report"));
    output.Restore();
    ASSERT_EQ(launched, noErr);
    EXPECT_EQ(missingStatus, fnfErr);
    EXPECT_EQ(garbageStatus, kLSNoExecutableErr);
    ASSERT_TRUE(started);
    Launched program{PIDOf(*started)};

    // The program has written its lines and still runs, yet the reader is at the end.
    EXPECT_EQ(output.Read(), "");
    EXPECT_FALSE(IsGone(program.pid));
    // The journal when the machine has one, else nowhere.
    std::string written = Value(*started, "stdout");
    EXPECT_TRUE(written == "/dev/null" || written.starts_with("socket:")) << written;
    EXPECT_EQ(Value(*started, "stderr"), written);
}

TEST(LaunchServices, RunsABundleOnceUnlessAnotherInstanceIsAsked)
{
    TemporaryFolder folder;
    std::string bundle = folder.Path("Probe.app"), executable = bundle + "/Contents/MacOS/Probe";
    MakeBundle(bundle, "<key>CFBundlePackageType</key><string>APPL</string>", "Probe", kTarget);
    URL bundleURL = PathURL(bundle, true), executableURL = PathURL(executable),
        secondReport = PathURL(folder.Path("2"));
    ScopedVariable reportTo("SPINDECK_LAUNCH_REPORT", folder.Path("1"));

    CFURLRef launched = nullptr;
    ASSERT_EQ(LSOpenCFURLRef(bundleURL.Get(), &launched), noErr);
    URL owned(launched);
    EXPECT_EQ(PathOf(launched), bundle);
    EXPECT_TRUE(CFURLHasDirectoryPath(launched));
    std::optional<LaunchReport> first = AwaitReport(folder.Path("1"));
    ASSERT_TRUE(first);
    Launched firstProgram{PIDOf(*first)};

    EXPECT_EQ(LSOpenCFURLRef(bundleURL.Get(), nullptr), noErr);
    // Its executable, named as the product names its helpers, is the same application.
    EXPECT_EQ(Launch(executableURL.Get(), {}, kLSLaunchDontAddToRecents | kLSLaunchDontSwitch | kLSLaunchNoParams),
              noErr);
    EXPECT_EQ(CountRunning(executable), 1);

    ASSERT_EQ(Launch(bundleURL.Get(), {secondReport.Get()}, kLSLaunchNewInstance), noErr);
    std::optional<LaunchReport> second = AwaitReport(folder.Path("2"));
    ASSERT_TRUE(second);
    Launched secondProgram{PIDOf(*second)};
    EXPECT_EQ(CountRunning(executable), 2);
}

TEST(LaunchServices, AnswersWhyNothingCouldBeLaunched)
{
    TemporaryFolder folder;
    WriteProgram(folder.Path("garbage"), "neither a program nor a script\n");
    WriteFile(folder.Path("notes.txt"), "text\n");
    MakeBundle(folder.Path("Empty.app"), "", "Missing");
    MakeBundle(folder.Path("Undeclared.app"), "");
    MakeBundle(folder.Path("Faceless.app"), "<key>LSBackgroundOnly</key><true/>", "True", "/bin/true");
    fs::create_directory(folder.Path("folder"));

    CFURLRef launched = reinterpret_cast<CFURLRef>(&folder);
    EXPECT_EQ(LSOpenCFURLRef(nullptr, &launched), paramErr);
    EXPECT_EQ(launched, nullptr) << "a failed launch names no application";
    EXPECT_EQ(LSOpenFromURLSpec(nullptr, nullptr), paramErr);
    EXPECT_EQ(Launch(nullptr, {}, 0), paramErr);

    const struct {
        const char* name;
        bool asApplication;
        LSLaunchFlags flags;
        OSStatus status;
    } cases[] = {
        {"missing", false, 0, fnfErr},
        {"missing", true, 0, fnfErr},
        {"garbage", false, 0, kLSNoExecutableErr},
        {"notes.txt", true, 0, kLSNoExecutableErr},
        {"Empty.app", false, 0, kLSNoExecutableErr},
        {"Undeclared.app", true, 0, kLSNoExecutableErr},
        {"folder", true, 0, kLSNotAnApplicationErr},
        {"Faceless.app", true, kLSLaunchInhibitBGOnly, kLSNotAnApplicationErr},
        {"Faceless.app", true, kLSLaunchInClassic, kLSNoClassicEnvironmentErr},
    };
    for (const auto& c : cases) {
        URL url = PathURL(folder.Path(c.name), fs::is_directory(folder.Path(c.name)));
        OSStatus status = c.asApplication ? Launch(url.Get(), {}, c.flags) : LSOpenCFURLRef(url.Get(), nullptr);
        EXPECT_EQ(status, c.status) << c.name << (c.asApplication ? " as application" : "");
    }
}

TEST(LaunchServices, HandsEverythingElseToTheDesktopsOpener)
{
    TemporaryFolder folder;
    fs::create_directories(folder.Path("bin"));
    fs::create_directories(folder.Path("opened"));
    ScopedVariable path("PATH", folder.Path("bin"));
    WriteFile(folder.Path("notes.txt"), "text\n");
    MakeBundle(folder.Path("Panel.prefPane"), "<key>CFBundlePackageType</key><string>BNDL</string>", "P", "/bin/true");
    URL document = PathURL(folder.Path("notes.txt")), pane = PathURL(folder.Path("Panel.prefPane"), true),
        web = TextURL("https://example.org/page?q=1"), launched;

    EXPECT_EQ(LSOpenCFURLRef(document.Get(), nullptr), kLSApplicationNotFoundErr);
    EXPECT_EQ(LSOpenCFURLRef(web.Get(), nullptr), kLSApplicationNotFoundErr);

    // Each run of the opener leaves a file named after its process, holding its argument.
    std::string opened = folder.Path("opened/");
    WriteProgram(folder.Path("bin/xdg-open"),
                 "#!/bin/sh\necho \"$1\" > " + opened + ".$$ && /bin/mv " + opened + ".$$ " + opened + "$$\n");
    ASSERT_EQ(Launch(nullptr, {document.Get(), pane.Get(), web.Get()}, kLSLaunchAsync, &launched), noErr);
    EXPECT_EQ(PathOf(launched.Get()), folder.Path("bin/xdg-open"));

    std::set<std::string> arguments;
    for (int i = 0; i < 500 && arguments.size() < 3; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10)))
        for (const auto& entry : fs::directory_iterator(opened))
            if (entry.path().filename().string()[0] != '.')
                arguments.insert((std::ostringstream() << std::ifstream(entry.path()).rdbuf()).str());
    EXPECT_EQ(arguments, (std::set<std::string>{folder.Path("notes.txt") + "\n", folder.Path("Panel.prefPane") + "\n",
                                                "https://example.org/page?q=1\n"}));
}

TEST(LaunchServices, LeavesNoChildAndNoDescriptorBehind)
{
    TemporaryFolder folder;
    MakeBundle(folder.Path("True.app"), "", "True", "/bin/true");
    URL plain = PathURL("/bin/true"), bundle = PathURL(folder.Path("True.app"), true);
    std::size_t descriptors = OpenDescriptorCount();
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(LSOpenCFURLRef(i % 2 ? plain.Get() : bundle.Get(), nullptr), noErr) << "launch " << i;
    errno = 0;
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD) << "a launched program, or the process that started it, is still our child";
    EXPECT_EQ(OpenDescriptorCount(), descriptors);
}

TEST(LaunchServices, NamesBundlesByTheirNameAndOtherItemsByTheirFileName)
{
    TemporaryFolder folder;
    MakeBundle(folder.Path("Named.app"), "<key>CFBundleName</key><string>Spindeck Demo</string>");
    MakeBundle(folder.Path("Plain.app"), "");
    WriteFile(folder.Path("notes.txt"), "text\n");
    for (auto [file, name] :
         {std::pair{"Named.app", "Spindeck Demo"}, {"Plain.app", "Plain"}, {"notes.txt", "notes.txt"}}) {
        URL url = PathURL(folder.Path(file), fs::is_directory(folder.Path(file)));
        CFStringRef displayName = nullptr;
        EXPECT_EQ(LSCopyDisplayNameForURL(url.Get(), &displayName), noErr);
        EXPECT_EQ(displayName ? cf::UTF8(displayName) : "", name);
        if (displayName)
            CFRelease(displayName);
    }
    URL missing = PathURL(folder.Path("missing")), web = TextURL("https://example.org/");
    CFStringRef none = nullptr;
    EXPECT_EQ(LSCopyDisplayNameForURL(missing.Get(), &none), fnfErr);
    EXPECT_EQ(LSCopyDisplayNameForURL(web.Get(), &none), kLSDataUnavailableErr);
    EXPECT_EQ(none, nullptr);
}

}  // namespace
