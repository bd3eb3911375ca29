// Notes for the user, posted to the test's own notification server on a private session bus
// (which records the exact calls) and to a notification daemon from the system's packages.
#include "NotificationTesting.h"
#include "XvfbServer.h"

#include <Carbon/Notification.h>
#include <PortSupport/UniqueHandle.h>

#include <gtest/gtest.h>

namespace {

using namespace spindeck::test;

std::vector<NMRecPtr> sResponses;

void Respond(NMRecPtr inRecord) { sResponses.push_back(inRecord); }

NMRec Note(StringPtr inText, bool inSound)
{
    NMRec record{};
    record.qType = nmType;
    record.nmSound = inSound ? reinterpret_cast<Handle>(-1) : nullptr;
    record.nmStr = inText;
    record.nmResp = NewNMUPP(Respond);
    return record;
}

bool Responded() { return !sResponses.empty(); }

class Notes : public ::testing::Test {
protected:
    void SetUp() override
    {
        sResponses.clear();
        if (!mBus.Running())
            GTEST_SKIP() << "dbus-daemon did not start (scripts/setup installs it)";
    }

    PrivateSessionBus mBus;
};

TEST_F(Notes, EachNoteIsOneNotificationAndItsRoutineRunsOnTheRunLoopWhenClosed)
{
    NotificationServer server;
    unsigned char text[] = "\x05Hello", roman[] = "\x08"
                                                  "caf\x8E <&>";  // not UTF-8: read as Mac Roman
    NMRec loud = Note(text, true), quiet = Note(roman, false);
    ASSERT_EQ(NMInstall(&loud), noErr);
    text[1] = 'J';  // the text was copied when the note was posted
    ASSERT_EQ(NMInstall(&quiet), noErr);

    std::vector<NotifyCall> calls = server.Calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].application, program_invocation_short_name);
    EXPECT_EQ(calls[0].summary, program_invocation_short_name);
    EXPECT_EQ(std::tuple(calls[0].body, calls[0].soundName, calls[0].timeout), std::tuple("Hello", "bell", 0));
    EXPECT_EQ(std::tuple(calls[1].body, calls[1].soundName), std::tuple("caf\xC3\xA9 &lt;&amp;&gt;", ""));

    EXPECT_FALSE(Responded()) << "routines run from the run loop, not from NMInstall";
    server.Dismiss(calls[1].id);
    ASSERT_TRUE(RunLoopUntil(Responded));
    EXPECT_EQ(sResponses, std::vector<NMRecPtr>{&quiet});

    // Removing a note closes it without its routine.
    EXPECT_EQ(NMRemove(&loud), noErr);
    EXPECT_EQ(server.ClosedByClient(), std::vector<std::uint32_t>{calls[0].id});
    RunLoopUntil([] { return false; }, 0.2);
    EXPECT_EQ(sResponses.size(), 1u);
    EXPECT_EQ(NMRemove(&loud), qErr);
}

TEST_F(Notes, NothingIsPostedWithoutABusOrAServerThatAcceptsAndABusTakesItsNotesAlong)
{
    unsigned char text[] = "\x01x";
    NMRec note = Note(text, true);
    note.qType = 0;
    EXPECT_EQ(NMInstall(&note), nmTypErr);
    note.qType = nmType;
    {
        NotificationServer refusing(true);
        EXPECT_EQ(NMInstall(&note), ioErr);
    }
    {
        ScopedVariable noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        EXPECT_EQ(NMInstall(&note), notOpenErr);
    }
    RunLoopUntil([] { return false; }, 0.1);
    EXPECT_FALSE(Responded());
    {
        PrivateSessionBus shortLived;
        NotificationServer server;
        ASSERT_EQ(NMInstall(&note), noErr);
    }
    EXPECT_TRUE(RunLoopUntil(Responded)) << "the bus went, and the note with it";
}

// A daemon from the system's packages on a private X server; another client closes the note
// as a user's click would.
TEST_F(Notes, ARealNotificationDaemonShowsAndClosesTheNote)
{
    if (!std::filesystem::exists("/usr/bin/dunst"))
        GTEST_SKIP() << "dunst is not installed (scripts/setup installs it)";
    XvfbServer display;
    if (!display.Unavailable().empty())
        GTEST_SKIP() << display.Unavailable();
    DisplayVariable variable(display.Name());
    ChildProcess dunst("/usr/bin/dunst", {});
    sd_bus* bus = nullptr;
    ASSERT_GE(sd_bus_open_user(&bus), 0);
    port::UniqueHandle<sd_bus, sd_bus_flush_close_unref> closer(bus);
    const char* name = "org.freedesktop.Notifications";
    ASSERT_TRUE(XvfbServer::Eventually([&] { return sd_bus_get_name_creds(bus, name, 0, nullptr) >= 0; }));

    unsigned char text[] = "\x0BThree words";
    NMRec note = Note(text, true);
    ASSERT_EQ(NMInstall(&note), noErr);
    // The number the daemon gave is its own matter; closing numbers never given out is no error.
    for (std::uint32_t id = 1; id <= 8; ++id)
        sd_bus_call_method(bus, name, "/org/freedesktop/Notifications", name, "CloseNotification", nullptr, nullptr,
                           "u", id);
    EXPECT_TRUE(RunLoopUntil(Responded));
    EXPECT_EQ(sResponses, std::vector<NMRecPtr>{&note});
}

}  // namespace
