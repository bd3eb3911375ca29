// User alerts posted to a notification server of the test's own on a private session bus.
#include "platform/Mac/utils/VemoraAlerts.h"

#include "NotificationTesting.h"
#include "PlatformTesting.h"

namespace {

using namespace spindeck::test;

const char kNavButton2Text[] =
    "Multiple triggerpoints were accidentally activated.\n\nYou only need to lightly tap on triggerpoint II to "
    "activate it.  Pushing down on it will cause multiple triggerpoints to activate.";

// A current bundle whose only language is French, with one of the three texts translated.
class Alerts : public PrivateHome {
protected:
    void SetUp() override
    {
        if (!mBus.Running() || !mServer.Serving())
            GTEST_SKIP() << "dbus-daemon did not start (scripts/setup installs it)";
        UseBundle("Host.bundle", "\"NoPluginWarning\" = \"Le module Vemora est mal install\xC3\xA9.\";\n");
    }
    void TearDown() override { AlertFamily::_openedCount = 0; }

    // The server closes the newest notice as a user would, and the run loop hears of it.
    void Dismiss()
    {
        mServer.Dismiss(mServer.Calls().back().id);
        ASSERT_TRUE(RunLoopUntil([] { return AlertFamily::_openedCount == 0; }));
    }

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
