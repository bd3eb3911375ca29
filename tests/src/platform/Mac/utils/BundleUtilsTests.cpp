#include "platform/Mac/utils/BundleUtils.h"

#include "LaunchTesting.h"

#include <gmock/gmock.h>

namespace {

// Every test leaves the main bundle current again, so that a bundle it set is released.
class CurrentBundle : public ::testing::Test {
protected:
    ~CurrentBundle() override { kvx::GetBundle() = Gx::CFBundle(CFBundleGetMainBundle(), true); }

    spindeck::test::TemporaryFolder mFolder;
};

const auto kThrowsNilReference =
    testing::Throws<Gx::RuntimeError>(testing::Property(&Gx::RuntimeError::What, Gx::exceptionID_NilReference));

TEST_F(CurrentBundle, IsTheMainBundleUntilAHostSetsAnother)
{
    EXPECT_EQ(kvx::GetCurrentBundle(), CFBundleGetMainBundle());
    EXPECT_THAT([] { kvx::SetBundle(nullptr); }, kThrowsNilReference);
    EXPECT_EQ(kvx::GetCurrentBundle(), CFBundleGetMainBundle()) << "a refused path changes nothing";

    std::string path = mFolder.Path("Host.bundle");
    spindeck::test::MakeBundle(path, "<key>CFBundleIdentifier</key><string>com.vemora.test.host</string>");
    kvx::SetBundle(Gx::CFString(path));
    CFBundleRef current = kvx::GetCurrentBundle();
    EXPECT_TRUE(kvx::GetBundle().HasSameRef(current)) << "GetBundle is the current bundle itself";
    EXPECT_TRUE(Gx::CFString(CFBundleGetIdentifier(current), true) == CFSTR("com.vemora.test.host"));

    // A folder that holds no bundle is taken without a check; the next lookup fails.
    kvx::SetBundle(Gx::CFString(mFolder.Path("Missing.bundle")));
    EXPECT_THAT([] { kvx::GetCurrentBundle(); }, kThrowsNilReference);
}

}  // namespace
