#include "platform/Mac/utils/BundleUtils.h"

#include "PlatformTesting.h"

namespace {

using spindeck::test::kThrowsNilReference;
// Leaves the main bundle current again, so that a bundle a test set is released.
using CurrentBundle = spindeck::test::PrivateHome;

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
