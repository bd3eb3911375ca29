// The event queue: events with parameters, posted from any thread and handed out by priority
// on the main run loop to the application's handlers; and the alert sound on a terminal.
#include "NotificationTesting.h"

#include <Carbon/CarbonEvents.h>
#include <Carbon/Sound.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using spindeck::test::RunLoopUntil;

constexpr UInt32 kTestClass = FourCC("test");

struct Seen {
    std::vector<std::pair<std::string, UInt32>> calls;  // handler, kind
    OSStatus answer = noErr;
};

template <char kName>
OSStatus Record(EventHandlerCallRef, EventRef inEvent, void* inSeen)
{
    auto& seen = *static_cast<Seen*>(inSeen);
    seen.calls.emplace_back(std::string(1, kName), GetEventKind(inEvent));
    return kName == 'b' ? seen.answer : noErr;
}

EventRef Make(UInt32 inKind)
{
    EventRef event = nullptr;
    EXPECT_EQ(CreateEvent(nullptr, kTestClass, inKind, 0, kEventAttributeUserEvent, &event), noErr);
    return event;
}

class Handlers {
public:
    Handlers(Seen& ioSeen, std::initializer_list<std::pair<EventHandlerUPP, EventTypeSpec>> inHandlers)
    {
        for (auto& [routine, type] : inHandlers) {
            EventHandlerRef handler = nullptr;
            EXPECT_EQ(InstallEventHandler(GetApplicationEventTarget(), routine, 1, &type, &ioSeen, &handler), noErr);
            mHandlers.push_back(handler);
        }
    }
    ~Handlers()
    {
        for (EventHandlerRef handler : mHandlers)
            EXPECT_EQ(RemoveEventHandler(handler), noErr);
    }

private:
    std::vector<EventHandlerRef> mHandlers;
};

TEST(CarbonEvents, ParametersKeepTheirTypeAndBytes)
{
    EventRef event = Make(7);
    EXPECT_EQ(GetEventClass(event), kTestClass);
    EXPECT_EQ(GetEventAttributes(event), UInt32(kEventAttributeUserEvent));
    EXPECT_GT(GetEventTime(event), 0) << "a time of 0 means now";
    SInt32 value = -12;
    ASSERT_EQ(SetEventParameter(event, FourCC("vmiv"), typeSInt32, sizeof value, &value), noErr);
    SInt32 read = 0;
    EventParamType type = 0;
    ByteCount size = 0;
    EXPECT_EQ(GetEventParameter(event, FourCC("vmiv"), typeWildCard, &type, sizeof read, &size, &read), noErr);
    EXPECT_EQ(std::tuple(read, type, size), std::tuple(-12, typeSInt32, sizeof value));
    EXPECT_EQ(GetEventParameter(event, FourCC("vmiv"), typeSInt16, nullptr, sizeof read, nullptr, &read), errAECoercionFail);
    EXPECT_EQ(GetEventParameter(event, FourCC("none"), typeWildCard, nullptr, 0, nullptr, nullptr), eventParameterNotFoundErr);
    EXPECT_EQ(RetainEvent(event), event);
    EXPECT_EQ(GetEventRetainCount(event), 2u);
    ReleaseEvent(event);
    ReleaseEvent(event);
}

TEST(CarbonEvents, TheRunLoopHandsEventsOutByPriorityToTheNewestHandlerThatTakesThem)
{
    Seen seen;
    Handlers handlers(seen, {{Record<'a'>, {kTestClass, 1}}, {Record<'a'>, {kTestClass, 2}},
                             {Record<'b'>, {kTestClass, 1}}, {Record<'a'>, {kTestClass, 3}}});
    seen.answer = eventNotHandledErr;  // 'b' passes kind 1 on to the older 'a'
    EventRef low = Make(3), standard = Make(1), high = Make(2);
    std::thread other([&] { EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), low, kEventPriorityLow), noErr); });
    other.join();
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), standard, kEventPriorityStandard), noErr);
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), high, kEventPriorityHigh), noErr);
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), high, kEventPriorityHigh), eventAlreadyPostedErr);
    EXPECT_EQ(GetNumEventsInQueue(GetMainEventQueue()), 3u);
    EXPECT_TRUE(seen.calls.empty()) << "nothing is handled before the run loop runs";
    for (EventRef event : {low, standard, high})
        ReleaseEvent(event);  // the queue holds its own reference

    ASSERT_TRUE(RunLoopUntil([&] { return seen.calls.size() == 4; }));
    using Calls = std::vector<std::pair<std::string, UInt32>>;
    EXPECT_EQ(seen.calls, (Calls{{"a", 2}, {"b", 1}, {"a", 1}, {"a", 3}}));
    EXPECT_EQ(GetNumEventsInQueue(GetMainEventQueue()), 0u);
}

// A child on a terminal of the test's own, with no display: the bell reaches the terminal.
TEST(SysBeep, RingsTheTerminalWithoutADisplay)
{
    int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(::grantpt(master), 0);
    ASSERT_EQ(::unlockpt(master), 0);
    std::string terminal = ::ptsname(master);
    pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        int slave = ::open(terminal.c_str(), O_RDWR);  // becomes the controlling terminal
        ::unsetenv("DISPLAY");
        SysBeep(30);
        ::_exit(slave >= 0 ? 0 : 1);
    }
    ASSERT_GT(child, 0);
    pollfd ready{master, POLLIN, 0};
    char bell = 0;
    bool read = ::poll(&ready, 1, 5000) == 1 && ::read(master, &bell, 1) == 1;
    int status = -1;
    ::waitpid(child, &status, 0);
    ::close(master);
    EXPECT_EQ(status, 0);
    ASSERT_TRUE(read);
    EXPECT_EQ(bell, '\a');
}

}  // namespace
