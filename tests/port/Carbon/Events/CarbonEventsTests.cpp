// The event queue: events posted from any thread and handed out by priority on the main run
// loop to the application's handlers; and the alert sound on a terminal.
#include "NotificationTesting.h"

#include <Carbon/CarbonEvents.h>
#include <Carbon/Sound.h>

#include <gtest/gtest.h>

#include <poll.h>

namespace {

constexpr UInt32 kTestClass = FourCC("test");

using Calls = std::vector<std::pair<char, UInt32>>;  // handler, kind

// Handler 'b' passes every event on to the older handlers.
template <char kName>
OSStatus Record(EventHandlerCallRef, EventRef inEvent, void* inCalls)
{
    static_cast<Calls*>(inCalls)->emplace_back(kName, GetEventKind(inEvent));
    return kName == 'b' ? eventNotHandledErr : noErr;
}

EventRef Make(UInt32 inKind)
{
    EventRef event = nullptr;
    EXPECT_EQ(CreateEvent(nullptr, kTestClass, inKind, 0, kEventAttributeUserEvent, &event), noErr);
    return event;
}

TEST(CarbonEvents, TheRunLoopHandsEventsOutByPriorityToTheNewestHandlerThatTakesThem)
{
    Calls calls;
    std::vector<EventHandlerRef> handlers(4);
    std::pair<EventHandlerUPP, UInt32> installs[] = {
        {Record<'a'>, 1}, {Record<'a'>, 2}, {Record<'b'>, 1}, {Record<'a'>, 3}};
    for (size_t i = 0; i < handlers.size(); ++i) {
        EventTypeSpec type{kTestClass, installs[i].second};
        EXPECT_EQ(InstallEventHandler(GetApplicationEventTarget(), installs[i].first, 1, &type, &calls, &handlers[i]),
                  noErr);
    }
    EventRef low = Make(3), standard = Make(1), high = Make(2);
    SInt32 value = -12, read = 0;
    EXPECT_EQ(SetEventParameter(high, FourCC("vmiv"), typeSInt32, sizeof value, &value), noErr);
    EXPECT_EQ(GetEventParameter(high, FourCC("vmiv"), typeSInt16, nullptr, sizeof read, nullptr, &read),
              errAECoercionFail);
    EXPECT_EQ(GetEventParameter(high, FourCC("none"), typeWildCard, nullptr, 0, nullptr, nullptr),
              eventParameterNotFoundErr);
    EXPECT_EQ(GetEventParameter(high, FourCC("vmiv"), typeWildCard, nullptr, sizeof read, nullptr, &read), noErr);
    EXPECT_EQ(read, -12);

    std::thread([&] { EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), low, kEventPriorityLow), noErr); }).join();
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), standard, kEventPriorityStandard), noErr);
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), high, kEventPriorityHigh), noErr);
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), high, kEventPriorityHigh), eventAlreadyPostedErr);
    EXPECT_EQ(GetNumEventsInQueue(GetMainEventQueue()), 3u);
    EXPECT_EQ(GetEventRetainCount(high), 2u) << "the queue holds its own reference";
    for (EventRef event : {low, standard, high})
        ReleaseEvent(event);
    EXPECT_TRUE(calls.empty()) << "nothing is handled before the run loop runs";

    ASSERT_TRUE(spindeck::test::RunLoopUntil([&] { return calls.size() == 4; }));
    EXPECT_EQ(calls, (Calls{{'a', 2}, {'b', 1}, {'a', 1}, {'a', 3}}));
    for (EventHandlerRef handler : handlers)
        EXPECT_EQ(RemoveEventHandler(handler), noErr);
}

// A child on a terminal of the test's own, with no display: the bell reaches the terminal.
TEST(SysBeep, RingsTheTerminalWithoutADisplay)
{
    int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
    std::string name = ::ptsname(terminal);
    pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        bool opened = ::open(name.c_str(), O_RDWR) >= 0;  // it becomes the controlling terminal
        ::unsetenv("DISPLAY");
        SysBeep(30);
        ::_exit(opened ? 0 : 1);
    }
    pollfd ready{terminal, POLLIN, 0};
    char bell = 0;
    bool read = ::poll(&ready, 1, 5000) == 1 && ::read(terminal, &bell, 1) == 1;
    int status = -1;
    ::waitpid(child, &status, 0);
    ::close(terminal);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(read && bell == '\a');
}

}  // namespace
