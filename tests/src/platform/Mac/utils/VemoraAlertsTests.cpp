// User alerts posted to a notification server of the test's own on a private session bus.
#include "platform/Mac/utils/VemoraAlerts.h"

#include "platform/Mac/utils/BundleUtils.h"

#include "LaunchTesting.h"
#include "NotificationTesting.h"

#include <gmock/gmock.h>

namespace {

using namespace spindeck::test;

// The family's count of notices up, which a test that ends with one up must bring back.
struct AlertFamily : vmr::FBAAlert {
    using FBAAlert::_openedCount;
};

const char kNavButton2Text[] =
    "Multiple triggerpoints were accidentally activated.\n\nYou only need to lightly tap on triggerpoint II to "
    "activate it.  Pushing down on it will cause multiple triggerpoints to activate.";

// A current bundle whose only language is French, with one of the three texts translated.
class Alerts : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!mBus.Running() || !mServer.Serving())
            GTEST_SKIP() << "dbus-daemon did not start (scripts/setup installs it)";
        std::string bundle = mFolder.Path("Host.bundle");
        MakeBundle(bundle, "<key>CFBundleDevelopmentRegion</key><string>fr</string>");
        std::filesystem::create_directories(bundle + "/Contents/Resources/fr.lproj");
        WriteFile(bundle + "/Contents/Resources/fr.lproj/Localizable.strings",
                  "\"NoPluginWarning\" = \"Le module Vemora est mal install\xC3\xA9.\";\n");
        kvx::SetBundle(Gx::CFString(bundle));
    }
    void TearDown() override
    {
        kvx::GetBundle() = Gx::CFBundle(CFBundleGetMainBundle(), true);
        AlertFamily::_openedCount = 0;
    }

    // The server closes the newest notice as a user would, and the run loop hears of it.
    void Dismiss()
    {
        mServer.Dismiss(mServer.Calls().back().id);
        ASSERT_TRUE(RunLoopUntil([] { return AlertFamily::_openedCount == 0; }));
    }

    TemporaryFolder mFolder;
    PrivateSessionBus mBus;
    NotificationServer mServer;
};

TEST_F(Alerts, OneNoticeIsUpAtATimeWhateverItsKind)
{
    EXPECT_EQ(vmr::NoPluginFBAAlert(5000).notifyUser(), 0);
    EXPECT_EQ(vmr::AccessibilityOffFBAAlert().notifyUser(), 0) << "declined while the first is up";
    EXPECT_EQ(vmr::NoPluginFBAAlert(5000).notifyUser(), 0);
    ASSERT_EQ(mServer.Calls().size(), 1u);
    EXPECT_EQ(mServer.Calls()[0].body, "Le module Vemora est mal install\xC3\xA9.");
    EXPECT_EQ(mServer.Calls()[0].soundName, "bell");

    Dismiss();
    EXPECT_EQ(vmr::NavButton2MisusageFBAAlert().notifyUser(), 0);
    ASSERT_EQ(mServer.Calls().size(), 2u);
    EXPECT_EQ(mServer.Calls()[1].body, kNavButton2Text) << "untranslated: the default text";
    Dismiss();
    EXPECT_EQ(vmr::AccessibilityOffFBAAlert().notifyUser(), 0);
    ASSERT_EQ(mServer.Calls().size(), 3u);
    EXPECT_THAT(mServer.Calls()[2].body, testing::HasSubstr("the \"Universal Access\" pane"));
    Dismiss();

    kvx::SetBundle(Gx::CFString(mFolder.Path("Missing.bundle")));
    EXPECT_THROW(vmr::NoPluginFBAAlert(1), Gx::RuntimeError) << "no bundle, no text";
}

TEST_F(Alerts, ALongTextIsCutToWholeCharactersAndOutlivesItsAlert)
{
    std::string accents;
    for (int i = 0; i < 200; ++i)
        accents += "\xC3\xA9";  // 400 bytes
    {
        vmr::FBAAlert alert{Gx::CFString(accents.c_str(), kCFStringEncodingUTF8).UseRef()};
        EXPECT_EQ(alert.notifyUser(), 0);
    }  // gone at once, as the platform services let theirs go
    ASSERT_EQ(mServer.Calls().size(), 1u);
    EXPECT_EQ(mServer.Calls()[0].body, accents.substr(0, 254));
    Dismiss();
}

}  // namespace
