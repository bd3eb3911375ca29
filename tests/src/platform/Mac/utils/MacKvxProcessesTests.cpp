#include "platform/Mac/utils/MacKvxUtils.h"

#include "BridgesTesting.h"

#include <Carbon/LaunchServices.h>
#include <Carbon/MacErrors.h>

#include <signal.h>

#include <chrono>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using spindeck::test::MakeBundle;
using spindeck::test::PathURL;
using spindeck::test::ScratchFolder;
namespace fs = std::filesystem;

bool IsGone(pid_t inPID)
{
    ProcessSerialNumber psn;
    return GetProcessForPID(inPID, &psn) == procNotFound;
}

// Copies of the target program, launched as a user would launch them (so nobody's children
// here), and killed when the test ends.
class ApplicationProcesses : public ::testing::Test {
protected:
    ~ApplicationProcesses() override
    {
        for (pid_t pid : mLaunched)
            Kill(pid);
    }

    std::string Install(const std::string& inName)
    {
        std::string path = mFolder.Path(inName);
        fs::create_directories(fs::path(path).parent_path());
        fs::copy_file(RUNNING_TARGET_PATH, path);
        return path;
    }

    // The serial number of the program at inExecutable, once it has reported its process id.
    ProcessSerialNumber AwaitStarted(const std::string& inExecutable)
    {
        ProcessSerialNumber psn{};
        int pid = 0;
        for (int i = 0; i < 500 && !(std::ifstream(inExecutable + ".pid") >> pid); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (pid <= 0) {
            ADD_FAILURE() << inExecutable << " did not start";
            return psn;
        }
        mLaunched.push_back(pid);
        EXPECT_EQ(GetProcessForPID(pid, &psn), noErr);
        return psn;
    }

    static bool Kill(pid_t inPID)
    {
        ::kill(inPID, SIGKILL);
        for (int i = 0; i < 500 && !IsGone(inPID); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return IsGone(inPID);
    }

    ScratchFolder mFolder;
    std::vector<pid_t> mLaunched;
};

TEST_F(ApplicationProcesses, AProgramIsFoundByItsFileAndACopyElsewhereIsAnother)
{
    std::string original = Install("target");
    std::string copy = Install("elsewhere/target");
    auto originalURL = PathURL(original);
    auto copyURL = PathURL(copy);

    ASSERT_EQ(kvx::LSLaunchItem(Gx::CFString(original)), noErr);
    ProcessSerialNumber originalPSN = AwaitStarted(original);
    ProcessSerialNumber psn{};
    EXPECT_TRUE(kvx::IsRunning(originalURL.get(), &psn));
    EXPECT_EQ(psn, originalPSN);
    EXPECT_TRUE(kvx::IsRunning(originalURL.get(), nullptr));
    EXPECT_FALSE(kvx::IsRunning(copyURL.get(), &psn)) << "same name and contents, another file";

    ASSERT_EQ(LSOpenCFURLRef(copyURL.get(), nullptr), noErr);
    ProcessSerialNumber copyPSN = AwaitStarted(copy);
    EXPECT_TRUE(kvx::IsRunning(copyURL.get(), &psn));
    EXPECT_EQ(psn, copyPSN);

    ASSERT_TRUE(Kill(mLaunched.back()));
    EXPECT_FALSE(kvx::IsRunning(copyURL.get(), nullptr)) << "an ended process no longer runs";
}

TEST_F(ApplicationProcesses, ABundledProgramIsFoundByItsBundle)
{
    std::string bundle = mFolder.Path("Spinner.app");
    MakeBundle(bundle, "<key>CFBundlePackageType</key><string>APPL</string>", "Spinner", RUNNING_TARGET_PATH);
    std::string copy = mFolder.Path("Spinner copy.app");
    fs::copy(bundle, copy, fs::copy_options::recursive);

    ASSERT_EQ(kvx::LSLaunchItem(Gx::CFString(bundle)), noErr);
    ProcessSerialNumber launched = AwaitStarted(bundle + "/Contents/MacOS/Spinner");
    ProcessSerialNumber psn{};
    EXPECT_TRUE(kvx::IsRunning(PathURL(bundle, true).get(), &psn));
    EXPECT_EQ(psn, launched);
    EXPECT_FALSE(kvx::IsRunning(PathURL(copy, true).get(), &psn));
}

TEST_F(ApplicationProcesses, NothingRunsFromAFileThatIsNotThere)
{
    const ProcessSerialNumber untouched{0xDEAD, 0xBEEF};
    ProcessSerialNumber psn = untouched;
    EXPECT_FALSE(kvx::IsRunning(PathURL(mFolder.Path("never made")).get(), &psn));
    EXPECT_FALSE(kvx::IsRunning(nullptr, &psn));
    EXPECT_EQ(psn, untouched);
}

TEST_F(ApplicationProcesses, LSLaunchItemReportsOnlyFailuresOnStandardError)
{
    std::string program = Install("quiet");
    ::testing::internal::CaptureStderr();
    OSStatus launched = kvx::LSLaunchItem(Gx::CFString(program));
    OSStatus missing = kvx::LSLaunchItem(Gx::CFString(mFolder.Path("missing")));
    std::string logged = ::testing::internal::GetCapturedStderr();
    AwaitStarted(program);
    EXPECT_EQ(std::tuple(launched, missing), std::tuple(noErr, OSStatus(fnfErr)));
    EXPECT_EQ(logged, "LSOpenCFURLRef error: -43\n");
}

}  // namespace
