// IsRunning and LSLaunchItem with real programs: copies of a test program, launched as a user
// would launch them (so nobody's children here), and killed when the test ends.
#include "platform/Mac/utils/MacKvxUtils.h"

#include "LaunchTesting.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace {

using namespace spindeck::test;

auto Fields(const ProcessSerialNumber& inPSN) { return std::tuple(inPSN.highLongOfPSN, inPSN.lowLongOfPSN); }

class ApplicationProcesses : public ::testing::Test {
protected:
    ~ApplicationProcesses() override
    {
        for (pid_t pid : mLaunched)
            Launched{pid};
    }

    std::string Install(const std::string& inName)
    {
        std::string path = mFolder.Path(inName);
        fs::create_directories(fs::path(path).parent_path());
        fs::copy_file(LAUNCH_TARGET_PATH, path);
        return path;
    }

    // Launches inItem and answers the serial number of its process once it has reported.
    ProcessSerialNumber Launch(const std::string& inItem)
    {
        ScopedVariable report("SPINDECK_LAUNCH_REPORT", inItem + ".report");
        EXPECT_EQ(kvx::LSLaunchItem(Gx::CFString(inItem)), noErr) << inItem;
        std::optional<LaunchReport> started = AwaitReport(inItem + ".report");
        ProcessSerialNumber psn{};
        if (started)
            mLaunched.push_back(PIDOf(*started));
        EXPECT_TRUE(started && GetProcessForPID(PIDOf(*started), &psn) == noErr) << inItem << " did not start";
        return psn;
    }

    TemporaryFolder mFolder;
    std::vector<pid_t> mLaunched;
};

// The product looks its helpers up by the executable inside their bundles, so a bundled
// program must be found by that file, not by the bundle folder around it.
TEST_F(ApplicationProcesses, AProgramIsFoundByItsOwnFileAndABundledOneByItsExecutable)
{
    std::string original = Install("target");
    std::string copy = Install("elsewhere/target");
    std::string bundle = mFolder.Path("Spinner.app");
    MakeBundle(bundle, "<key>CFBundlePackageType</key><string>APPL</string>", "Spinner", LAUNCH_TARGET_PATH);
    auto originalURL = PathURL(original);
    auto executableURL = PathURL(bundle + "/Contents/MacOS/Spinner");

    // Only failures are reported on standard error.
    ::testing::internal::CaptureStderr();
    ProcessSerialNumber originalPSN = Launch(original);
    EXPECT_EQ(kvx::LSLaunchItem(Gx::CFString(mFolder.Path("missing"))), fnfErr);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "LSOpenCFURLRef error: -43\n");

    ProcessSerialNumber psn{};
    EXPECT_TRUE(kvx::IsRunning(originalURL.Get(), &psn));
    EXPECT_EQ(Fields(psn), Fields(originalPSN));
    EXPECT_TRUE(kvx::IsRunning(originalURL.Get(), nullptr));
    EXPECT_FALSE(kvx::IsRunning(PathURL(copy).Get(), &psn)) << "same name and contents, another file";
    EXPECT_EQ(Fields(psn), Fields(originalPSN)) << "not found leaves the serial number alone";
    EXPECT_FALSE(kvx::IsRunning(PathURL(mFolder.Path("never made")).Get(), &psn));
    EXPECT_FALSE(kvx::IsRunning(nullptr, &psn));
    EXPECT_EQ(Fields(psn), Fields(originalPSN));

    ProcessSerialNumber bundledPSN = Launch(bundle);
    EXPECT_TRUE(kvx::IsRunning(executableURL.Get(), &psn));
    EXPECT_EQ(Fields(psn), Fields(bundledPSN));
    EXPECT_FALSE(kvx::IsRunning(PathURL(bundle, true).Get(), nullptr));
    ::kill(mLaunched.back(), SIGKILL);
    ASSERT_TRUE(AwaitGone(mLaunched.back()));
    EXPECT_FALSE(kvx::IsRunning(executableURL.Get(), nullptr)) << "an ended process no longer runs";
}

}  // namespace
