// The run loop: timer accuracy and life cycle, stopping and waking, file descriptor and
// signalled sources, common modes, and the wait descriptor another event loop watches.
#include "CFTesting.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <future>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

using cftest::Owned;

CFRunLoopTimerRef MakeTimer(CFAbsoluteTime inFireDate, CFTimeInterval inInterval, CFRunLoopTimerCallBack inCallout,
                            void* inInfo)
{
    CFRunLoopTimerContext context{0, inInfo, nullptr, nullptr, nullptr};
    return CFRunLoopTimerCreate(nullptr, inFireDate, inInterval, 0, 0, inCallout, &context);
}

double Seconds(std::chrono::steady_clock::time_point inSince)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - inSince).count();
}

struct GridLog {
    CFAbsoluteTime firstFire = 0;
    std::vector<CFAbsoluteTime> fired;  // when each callout ran
    std::vector<CFAbsoluteTime> next;   // the next fire date each callout saw
};

double Median(std::vector<double> inValues)
{
    std::nth_element(inValues.begin(), inValues.begin() + inValues.size() / 2, inValues.end());
    return inValues[inValues.size() / 2];
}

// Measures, on a thread of its own, how late this machine wakes a sleeping thread while a
// test runs: the floor under any timer's lateness, which keeps a bound on the run loop's
// own lateness fair when the machine is loaded.
class WakeLatenessProbe {
public:
    WakeLatenessProbe() : mThread([this] { Measure(); }) {}
    ~WakeLatenessProbe() { Stop(); }

    double MedianLateness()
    {
        Stop();
        return Median(mLateness);
    }

private:
    void Stop()
    {
        mDone = true;
        if (mThread.joinable())
            mThread.join();
    }

    void Measure()
    {
        auto due = std::chrono::steady_clock::now();
        while (!mDone) {
            due += 7ms;
            std::this_thread::sleep_until(due);
            mLateness.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - due).count());
        }
    }

    std::atomic<bool> mDone{false};
    std::vector<double> mLateness;
    std::thread mThread;  // declared last, so that it starts when the rest is ready
};

void LogFiring(CFRunLoopTimerRef inTimer, void* inInfo)
{
    auto& log = *static_cast<GridLog*>(inInfo);
    log.fired.push_back(CFAbsoluteTimeGetCurrent());
    log.next.push_back(CFRunLoopTimerGetNextFireDate(inTimer));
}

TEST(RunLoopTimer, RepeatingTimerKeepsToItsGridWithoutDrift)
{
    WakeLatenessProbe probe;
    GridLog log;
    log.firstFire = CFAbsoluteTimeGetCurrent() + 0.05;
    Owned timer(MakeTimer(log.firstFire, 0.05, LogFiring, &log));
    CFRunLoopAddTimer(CFRunLoopGetCurrent(), timer, kCFRunLoopDefaultMode);

    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 2.02, false), kCFRunLoopRunTimedOut);
    CFRunLoopTimerInvalidate(timer);
    double machineLateness = probe.MedianLateness();

    // 40 slots fall in the run; a loaded machine may skip some, but none fires twice.
    ASSERT_GE(log.fired.size(), 30u);
    ASSERT_LE(log.fired.size(), 40u);
    std::vector<double> lateness;
    for (std::size_t i = 0; i < log.fired.size(); ++i) {
        // Each firing was due at the date the previous one announced.
        CFAbsoluteTime scheduled = i == 0 ? log.firstFire : log.next[i - 1];
        lateness.push_back(log.fired[i] - scheduled);
        double offset = log.next[i] - log.firstFire;
        EXPECT_NEAR(offset, std::round(offset / 0.05) * 0.05, 1e-6) << "firing " << i << " moved the grid";
        EXPECT_GT(log.next[i], scheduled);
    }
    EXPECT_GE(*std::min_element(lateness.begin(), lateness.end()), 0.0) << "a timer fired before its date";
    EXPECT_LT(Median(lateness), 0.005 + 2 * machineLateness) << "machine's own wake-up lateness " << machineLateness;
}

struct Counted {
    int fired = 0;
    int retained = 0;
    int released = 0;
};

TEST(RunLoopTimer, OneShotRunsOutTheModeARepeatingCalloutInvalidatesItselfAndStopsTheRun)
{
    Counted counted;
    CFRunLoopTimerContext context{
        0, &counted,
        [](const void* inInfo) {
            ++static_cast<Counted*>(const_cast<void*>(inInfo))->retained;
            return inInfo;
        },
        [](const void* inInfo) { ++static_cast<Counted*>(const_cast<void*>(inInfo))->released; }, nullptr};
    auto fire = [](CFRunLoopTimerRef, void* inInfo) { ++static_cast<Counted*>(inInfo)->fired; };
    CFRunLoopRef loop = CFRunLoopGetCurrent();
    {
        Owned timer(CFRunLoopTimerCreate(nullptr, CFAbsoluteTimeGetCurrent() + 0.01, 0, 0, 0, fire, &context));
        EXPECT_FALSE(CFRunLoopTimerDoesRepeat(timer));
        CFRunLoopAddTimer(loop, timer, kCFRunLoopDefaultMode);
        EXPECT_TRUE(CFRunLoopContainsTimer(loop, timer, kCFRunLoopDefaultMode));

        EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 5, false), kCFRunLoopRunFinished);
        EXPECT_EQ(counted.fired, 1);
        EXPECT_FALSE(CFRunLoopTimerIsValid(timer));
        EXPECT_FALSE(CFRunLoopContainsTimer(loop, timer, kCFRunLoopDefaultMode));
        EXPECT_EQ(counted.released, 0);
    }
    EXPECT_EQ(counted.retained, 1);
    EXPECT_EQ(counted.released, 1);

    counted.fired = 0;
    auto fireThrice = [](CFRunLoopTimerRef inTimer, void* inInfo) {
        if (++static_cast<Counted*>(inInfo)->fired == 3) {
            CFRunLoopTimerInvalidate(inTimer);
            CFRunLoopStop(CFRunLoopGetCurrent());
        }
    };
    Owned timer(MakeTimer(CFAbsoluteTimeGetCurrent(), 0.01, fireThrice, &counted));
    CFRunLoopAddTimer(loop, timer, kCFRunLoopCommonModes);
    auto start = std::chrono::steady_clock::now();
    CFRunLoopRun();
    EXPECT_LT(Seconds(start), 10.0);
    EXPECT_EQ(counted.fired, 3);
    EXPECT_FALSE(CFRunLoopTimerIsValid(timer));
    EXPECT_FALSE(CFRunLoopContainsTimer(loop, timer, kCFRunLoopCommonModes));
}

TEST(RunLoopWakeUp, EndsTheWaitOfAnotherThreadsRunLoop)
{
    Owned timer(MakeTimer(CFAbsoluteTimeGetCurrent() + 1000, 0, nullptr, nullptr));
    CFRunLoopSourceContext context{};
    Owned leftBehind(CFRunLoopSourceCreate(nullptr, 0, &context));
    std::promise<CFRunLoopRef> started;
    SInt32 result = 0;
    double waited = 0;

    std::thread runner([&] {
        CFRunLoopRef loop = CFRunLoopGetCurrent();
        EXPECT_NE(loop, CFRunLoopGetMain());
        CFRunLoopAddTimer(loop, timer, kCFRunLoopDefaultMode);
        // Still there when the thread ends: the thread's run loop must let it go.
        CFRunLoopAddSource(loop, leftBehind, CFSTR("Elsewhere"));
        started.set_value(loop);
        auto start = std::chrono::steady_clock::now();
        result = CFRunLoopRunInMode(kCFRunLoopDefaultMode, 30, false);
        waited = Seconds(start);
    });
    CFRunLoopRef loop = started.get_future().get();
    auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!CFRunLoopIsWaiting(loop) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(1ms);
    EXPECT_TRUE(CFRunLoopIsWaiting(loop));

    // Taking the timer away does not end the wait by itself; the wake-up lets the run
    // loop see that its mode is now empty.
    CFRunLoopRemoveTimer(loop, timer, kCFRunLoopDefaultMode);
    CFRunLoopWakeUp(loop);
    runner.join();

    EXPECT_EQ(result, kCFRunLoopRunFinished);
    EXPECT_LT(waited, 10.0);
    EXPECT_EQ(CFGetRetainCount(leftBehind), 1);
}

struct PipeEnds {
    int read = -1;
    int write = -1;
    PipeEnds()
    {
        int ends[2];
        if (::pipe(ends) == 0) {
            read = ends[0];
            write = ends[1];
        }
    }
    ~PipeEnds()
    {
        if (write >= 0)
            ::close(write);
    }
};

TEST(RunLoopFileDescriptor, CallBacksFireOncePerEnableAndOnlyOwnedDescriptorsClose)
{
    PipeEnds pipe;
    ASSERT_GE(pipe.read, 0);
    std::vector<CFOptionFlags> fired;
    CFFileDescriptorContext context{0, &fired, nullptr, nullptr, nullptr};
    auto callout = [](CFFileDescriptorRef, CFOptionFlags inTypes, void* inInfo) {
        static_cast<std::vector<CFOptionFlags>*>(inInfo)->push_back(inTypes);
    };
    Owned file(CFFileDescriptorCreate(nullptr, pipe.read, true, callout, &context));
    Owned writer(CFFileDescriptorCreate(nullptr, pipe.write, false, callout, &context));
    Owned source(CFFileDescriptorCreateRunLoopSource(nullptr, file, 0));
    Owned writeSource(CFFileDescriptorCreateRunLoopSource(nullptr, writer, 0));
    Owned again(CFFileDescriptorCreateRunLoopSource(nullptr, writer, 0));
    EXPECT_EQ(writeSource.get(), again.get());
    CFRunLoopRef loop = CFRunLoopGetCurrent();
    CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
    CFRunLoopAddSource(loop, writeSource, kCFRunLoopDefaultMode);

    // An empty pipe has room to write at once.
    CFFileDescriptorEnableCallBacks(writer, kCFFileDescriptorWriteCallBack);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 5, true), kCFRunLoopRunHandledSource);
    EXPECT_EQ(fired, std::vector<CFOptionFlags>{kCFFileDescriptorWriteCallBack});
    CFFileDescriptorInvalidate(writer);
    EXPECT_EQ(::fcntl(pipe.write, F_GETFD), 0) << "a descriptor it does not own was closed";
    fired.clear();

    CFFileDescriptorEnableCallBacks(file, kCFFileDescriptorReadCallBack);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, true), kCFRunLoopRunTimedOut);
    EXPECT_TRUE(fired.empty());

    ASSERT_EQ(::write(pipe.write, "x", 1), 1);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 5, true), kCFRunLoopRunHandledSource);
    EXPECT_EQ(fired, std::vector<CFOptionFlags>{kCFFileDescriptorReadCallBack});

    // The byte is still unread, but the callback has to be enabled again first.
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, true), kCFRunLoopRunTimedOut);
    CFFileDescriptorEnableCallBacks(file, kCFFileDescriptorReadCallBack);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 5, true), kCFRunLoopRunHandledSource);
    EXPECT_EQ(fired.size(), 2u);

    CFFileDescriptorInvalidate(file);
    EXPECT_FALSE(CFRunLoopSourceIsValid(source));
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, kCFRunLoopDefaultMode));
    EXPECT_EQ(::fcntl(pipe.read, F_GETFD), -1) << "the descriptor was not closed on invalidation";
}

struct SourceLog {
    int performed = 0;
    std::vector<std::string> scheduled;
    std::vector<std::string> cancelled;
};

TEST(RunLoopSource, SignalledSourceRunsInEveryCommonMode)
{
    SourceLog log;
    CFRunLoopSourceContext context{};
    context.info = &log;
    context.perform = [](void* inInfo) { ++static_cast<SourceLog*>(inInfo)->performed; };
    context.schedule = [](void* inInfo, CFRunLoopRef, CFStringRef inMode) {
        static_cast<SourceLog*>(inInfo)->scheduled.push_back(cf::UTF8(inMode));
    };
    context.cancel = [](void* inInfo, CFRunLoopRef, CFStringRef inMode) {
        static_cast<SourceLog*>(inInfo)->cancelled.push_back(cf::UTF8(inMode));
    };
    Owned source(CFRunLoopSourceCreate(nullptr, 0, &context));
    CFRunLoopRef loop = CFRunLoopGetCurrent();
    CFStringRef panel = CFSTR("SpindeckPanelMode");
    CFRunLoopAddCommonMode(loop, panel);
    CFRunLoopAddSource(loop, source, kCFRunLoopCommonModes);

    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, kCFRunLoopDefaultMode));
    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, panel));
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, CFSTR("SpindeckOtherMode")));
    EXPECT_EQ(CFRunLoopRunInMode(CFSTR("SpindeckOtherMode"), 0.05, true), kCFRunLoopRunFinished);

    EXPECT_EQ(CFRunLoopRunInMode(panel, 0.05, true), kCFRunLoopRunTimedOut);
    CFRunLoopSourceSignal(source);
    EXPECT_EQ(CFRunLoopRunInMode(panel, 5, true), kCFRunLoopRunHandledSource);
    CFRunLoopSourceSignal(source);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 5, true), kCFRunLoopRunHandledSource);
    EXPECT_EQ(log.performed, 2);

    CFRunLoopRemoveSource(loop, source, kCFRunLoopCommonModes);
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, kCFRunLoopDefaultMode));
    std::sort(log.scheduled.begin(), log.scheduled.end());
    std::sort(log.cancelled.begin(), log.cancelled.end());
    EXPECT_EQ(log.scheduled, (std::vector<std::string>{"SpindeckPanelMode", "kCFRunLoopDefaultMode"}));
    EXPECT_EQ(log.cancelled, log.scheduled);
}

bool Readable(int inDescriptor, int inTimeoutMilliseconds)
{
    pollfd watch{inDescriptor, POLLIN, 0};
    return ::poll(&watch, 1, inTimeoutMilliseconds) == 1 && (watch.revents & POLLIN);
}

TEST(RunLoopWaitDescriptor, BecomesReadableWhenATimerIsDue)
{
    CFRunLoopRef loop = CFRunLoopGetCurrent();
    int fired = 0;
    CFAbsoluteTime due = CFAbsoluteTimeGetCurrent() + 0.1;
    Owned timer(MakeTimer(
        due, 0, [](CFRunLoopTimerRef, void* inInfo) { ++*static_cast<int*>(inInfo); }, &fired));
    CFRunLoopAddTimer(loop, timer, kCFRunLoopDefaultMode);
    int descriptor = _CFRunLoopGetWaitDescriptor(loop);

    // Settle whatever an earlier wake-up left behind, as a host's first turn would.
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, true), kCFRunLoopRunTimedOut);
    EXPECT_FALSE(Readable(descriptor, 0));

    ASSERT_TRUE(Readable(descriptor, 5000));
    EXPECT_GE(CFAbsoluteTimeGetCurrent(), due);
    EXPECT_EQ(fired, 0);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, true), kCFRunLoopRunFinished);
    EXPECT_EQ(fired, 1);
    EXPECT_FALSE(Readable(descriptor, 0)) << "the host would spin";

    // A wake-up with nothing to run is taken too.
    CFRunLoopWakeUp(loop);
    EXPECT_TRUE(Readable(descriptor, 0));
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, true), kCFRunLoopRunFinished);
    EXPECT_FALSE(Readable(descriptor, 0)) << "the host would spin";
}

TEST(RunLoopMisuse, WrongObjectsStopTheProcess)
{
    EXPECT_DEATH(CFRunLoopTimerInvalidate(nullptr), "CFRunLoopTimerInvalidate");
    EXPECT_DEATH(CFRunLoopAddTimer(CFRunLoopGetCurrent(), (CFRunLoopTimerRef)CFSTR("x"), kCFRunLoopDefaultMode),
                 "CFRunLoopAddTimer");
}

}  // namespace
