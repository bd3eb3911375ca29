// Notes for the user, posted to a notification server on a private session bus: the test's
// own server, which records the exact calls, and a notification daemon from the system's
// packages where one is installed.
#include "NotificationTesting.h"
#include "XvfbDisplay.h"

#include <Carbon/Notification.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

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
    ASSERT_TRUE(server.Serving());
    unsigned char text[] = "\x05Hello";
    NMRec loud = Note(text, true);
    ASSERT_EQ(NMInstall(&loud), noErr);
    std::memcpy(text, "\x05Gone!", 6);  // the text was copied when the note was posted
    unsigned char roman[] = "\x04" "caf\x8E";  // not UTF-8: read as Mac Roman
    NMRec quiet = Note(roman, false);
    ASSERT_EQ(NMInstall(&quiet), noErr);

    std::vector<NotifyCall> calls = server.Calls();
    ASSERT_EQ(calls.size(), 2u);
    std::string program = std::filesystem::path(program_invocation_name).filename();
    EXPECT_EQ(calls[0].application, program);
    EXPECT_EQ(calls[0].summary, program);
    EXPECT_EQ(calls[0].body, "Hello");
    EXPECT_EQ(calls[0].soundName, "bell");
    EXPECT_EQ(calls[0].timeout, 0) << "a note stays until it is dismissed";
    EXPECT_EQ(calls[1].body, "caf\xC3\xA9");
    EXPECT_EQ(calls[1].soundName, "");

    EXPECT_TRUE(sResponses.empty()) << "routines run from the run loop, not from NMInstall";
    server.Dismiss(calls[1].id);
    ASSERT_TRUE(RunLoopUntil([] { return !sResponses.empty(); }));
    EXPECT_EQ(sResponses, std::vector<NMRecPtr>{&quiet});

    // Removing a note closes it without its routine.
    EXPECT_EQ(NMRemove(&loud), noErr);
    EXPECT_EQ(server.CloseCalls(), std::vector<std::uint32_t>{calls[0].id});
    RunLoopUntil([] { return false; }, 0.2);
    EXPECT_EQ(sResponses.size(), 1u);
    EXPECT_EQ(NMRemove(&loud), qErr);
}

TEST_F(Notes, NothingIsPostedWithoutABusOrAServerThatAccepts)
{
    unsigned char text[] = "\x01x";
    NMRec note = Note(text, true);
    note.qType = 0;
    EXPECT_EQ(NMInstall(&note), nmTypErr);
    note.qType = nmType;
    {
        NotificationServer refusing(true);
        ASSERT_TRUE(refusing.Serving());
        EXPECT_EQ(NMInstall(&note), ioErr);
        EXPECT_TRUE(refusing.Calls().empty());
    }
    ScopedVariable noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    EXPECT_EQ(NMInstall(&note), notOpenErr);
    EXPECT_EQ(NMRemove(&note), qErr);
    RunLoopUntil([] { return false; }, 0.1);
    EXPECT_TRUE(sResponses.empty());
}

// A bus that goes away takes its notices with it.
TEST_F(Notes, NotesEndWithTheirBus)
{
    unsigned char text[] = "\x01x";
    NMRec note = Note(text, false);
    {
        PrivateSessionBus shortLived;
        NotificationServer server;
        ASSERT_TRUE(server.Serving());
        ASSERT_EQ(NMInstall(&note), noErr);
    }
    EXPECT_TRUE(RunLoopUntil([] { return !sResponses.empty(); }));
    EXPECT_EQ(sResponses, std::vector<NMRecPtr>{&note});
}

// The same note through a notification daemon from the system's packages, on a private X
// server, closed by another client as a user's click would close it.
TEST_F(Notes, ARealNotificationDaemonShowsAndClosesTheNote)
{
    const char* daemon = "/usr/bin/dunst";
    if (!std::filesystem::exists(daemon))
        GTEST_SKIP() << "dunst is not installed (scripts/setup installs it)";
    XvfbDisplay display;
    if (!display.Unavailable().empty())
        GTEST_SKIP() << display.Unavailable();
    DisplayVariable variable(display.Name());
    ChildProcess dunst(daemon, {});
    sd_bus* bus = nullptr;
    ASSERT_GE(sd_bus_open_user(&bus), 0);
    std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> closer(bus, sd_bus_flush_close_unref);
    auto owned = [&] {
        return sd_bus_get_name_creds(bus, "org.freedesktop.Notifications", 0, nullptr) >= 0;
    };
    ASSERT_TRUE(XvfbDisplay::Eventually(owned)) << "dunst did not take the notification service";

    unsigned char text[] = "\x0BThree words";
    NMRec note = Note(text, true);
    ASSERT_EQ(NMInstall(&note), noErr);
    // Which number the daemon gave the notice is its own matter: closing numbers it never
    // gave out is no error, so the first few are closed.
    for (std::uint32_t id = 1; id <= 8; ++id)
        EXPECT_GE(sd_bus_call_method(bus, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                                     "org.freedesktop.Notifications", "CloseNotification", nullptr, nullptr, "u", id), 0);
    EXPECT_TRUE(RunLoopUntil([] { return !sResponses.empty(); }));
    EXPECT_EQ(sResponses, std::vector<NMRecPtr>{&note});
}

}  // namespace
