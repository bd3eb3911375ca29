#include "platform/Mac/utils/BundleUtils.h"

#include "BridgesTesting.h"

namespace {

bool ThrowsNilReference(void (*inCall)())
{
    try {
        inCall();
    } catch (const Gx::RuntimeError& e) {
        return e.What() == Gx::exceptionID_NilReference;
    }
    return false;
}

// Every test leaves the main bundle current again, so that a bundle it set is released.
class CurrentBundle : public ::testing::Test {
protected:
    ~CurrentBundle() override { kvx::GetBundle() = Gx::CFBundle(CFBundleGetMainBundle(), true); }

    spindeck::test::ScratchFolder mFolder;
};

TEST_F(CurrentBundle, IsTheMainBundleUntilAHostSetsAnother)
{
    EXPECT_EQ(kvx::GetCurrentBundle(), CFBundleGetMainBundle());

    std::string path = mFolder.Path("Host.bundle");
    spindeck::test::MakeBundle(path, "<key>CFBundleIdentifier</key><string>com.vemora.test.host</string>");
    kvx::SetBundle(Gx::CFString(path));
    CFBundleRef current = kvx::GetCurrentBundle();
    EXPECT_TRUE(kvx::GetBundle().HasSameRef(current)) << "GetBundle is the current bundle itself";
    EXPECT_TRUE(Gx::CFString(CFBundleGetIdentifier(current), true) == CFSTR("com.vemora.test.host"));
}

TEST_F(CurrentBundle, NilPathsAndBundlesAreTheNilReferenceError)
{
    EXPECT_TRUE(ThrowsNilReference([] { kvx::SetBundle(nullptr); }));
    EXPECT_EQ(kvx::GetCurrentBundle(), CFBundleGetMainBundle()) << "a refused path changes nothing";

    // A folder that holds no bundle is taken without a check; the next lookup fails.
    kvx::SetBundle(Gx::CFString(mFolder.Path("Missing.bundle")));
    EXPECT_TRUE(ThrowsNilReference([] { kvx::GetCurrentBundle(); }));
}

}  // namespace
