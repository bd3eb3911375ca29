// Running a run loop: waiting on epoll until the deadline, then firing the timers that are
// due and performing the sources that are ready, pass after pass.
#include "CFRunLoopObject.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <ctime>

namespace {

// CFRunLoopRun's "for ever": long enough, and small enough to add to a clock reading.
constexpr CFTimeInterval kForever = 1e10;

double MonotonicNow()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

int MillisecondsUntil(double inDeadline)
{
    double remaining = std::ceil((inDeadline - MonotonicNow()) * 1000.0);
    return remaining <= 0 ? 0 : int(std::min(remaining, double(INT_MAX)));
}

void Drain(int inDescriptor)
{
    std::uint64_t count = 0;
    [[maybe_unused]] ssize_t got = ::read(inDescriptor, &count, sizeof count);
}

// The first slot of the timer's grid after inNow, so that a late or missed firing neither
// shifts the grid nor fires twice to catch up.
CFAbsoluteTime NextSlot(CFAbsoluteTime inOrigin, CFTimeInterval inInterval, CFAbsoluteTime inNow)
{
    double slot = std::max(0.0, std::floor((inNow - inOrigin) / inInterval)) + 1;
    CFAbsoluteTime next = inOrigin + slot * inInterval;
    return next > inNow ? next : inOrigin + (slot + 1) * inInterval;
}

}  // namespace

SInt32 __CFRunLoop::Run(std::string_view inMode, CFTimeInterval inSeconds, bool inReturnAfterSourceHandled)
{
    const double deadline = MonotonicNow() + (inSeconds > 0 ? std::min(inSeconds, kForever) : 0.0);
    {
        std::lock_guard guard(cf::RunLoopLock());
        if (IsEmpty(inMode)) {
            // Still takes a pending wake-up, or a host watching the wait descriptor would
            // find it readable for ever and spin.
            Drain(mWake.Get());
            return kCFRunLoopRunFinished;
        }
        mRunning.emplace_back(inMode);
        Resync();
    }
    struct Leave {
        __CFRunLoop& loop;
        ~Leave()
        {
            std::lock_guard guard(cf::RunLoopLock());
            loop.mRunning.pop_back();
            loop.Resync();
        }
    } leave{*this};

    for (;;) {
        if (mStopRequested.exchange(false))
            return kCFRunLoopRunStopped;
        bool handled = Pass(inMode, deadline, inReturnAfterSourceHandled);
        if (handled && inReturnAfterSourceHandled)
            return kCFRunLoopRunHandledSource;
        if (mStopRequested.exchange(false))
            return kCFRunLoopRunStopped;
        {
            std::lock_guard guard(cf::RunLoopLock());
            if (IsEmpty(inMode))
                return kCFRunLoopRunFinished;
        }
        if (MonotonicNow() >= deadline)
            return kCFRunLoopRunTimedOut;
    }
}

bool __CFRunLoop::Pass(std::string_view inMode, double inDeadline, bool inOneSource)
{
    ReadyList ready;
    {
        std::lock_guard guard(cf::RunLoopLock());
        ready.assign(mUnpollable.begin(), mUnpollable.end());
    }
    int timeout = ready.empty() ? MillisecondsUntil(inDeadline) : 0;

    std::array<epoll_event, 32> events;
    mWaiting = timeout != 0;
    int count = ::epoll_wait(mEpoll.Get(), events.data(), int(events.size()), timeout);
    mWaiting = false;

    for (int i = 0; i < count; ++i) {
        int descriptor = events[i].data.fd;
        std::uint32_t seen = events[i].events;  // copied out: the kernel's layout is packed
        if (descriptor == mWake.Get() || descriptor == mTimerClock.Get())
            Drain(descriptor);
        else
            ready.emplace_back(descriptor, seen);
    }
    FireDueTimers(inMode);
    return PerformSources(inMode, ready, inOneSource);
}

void __CFRunLoop::FireDueTimers(std::string_view inMode)
{
    struct Due {
        __CFRunLoopTimer* timer;
        CFAbsoluteTime scheduled;
    };
    std::vector<Due> due;
    {
        std::lock_guard guard(cf::RunLoopLock());
        auto mode = mModes.find(inMode);
        if (mode == mModes.end())
            return;
        CFAbsoluteTime now = CFAbsoluteTimeGetCurrent();
        for (__CFRunLoopTimer* timer : mode->second.timers) {
            if (!timer->mValid || timer->mFiring || timer->mFireDate > now)
                continue;
            CFRetain(timer);
            due.push_back({timer, timer->mFireDate});
            timer->mFiring = true;
            // Moved on before the callout, so that the callout may set a date of its own.
            if (timer->Repeats())
                timer->mFireDate = NextSlot(timer->mGridOrigin, timer->mInterval, now);
        }
        Resync();
    }
    std::stable_sort(due.begin(), due.end(), [](const Due& inA, const Due& inB) {
        return inA.scheduled < inB.scheduled ||
               (inA.scheduled == inB.scheduled && inA.timer->mOrder < inB.timer->mOrder);
    });

    for (Due& entry : due) {
        __CFRunLoopTimer& timer = *entry.timer;
        bool valid;
        {
            std::lock_guard guard(cf::RunLoopLock());
            valid = timer.mValid;
        }
        if (valid && timer.mCallout)
            timer.mCallout(&timer, timer.mContext.info);
        {
            cf::AfterUnlock after;
            std::lock_guard guard(cf::RunLoopLock());
            timer.mFiring = false;
            // A one-shot timer is spent, unless its callout gave it a new date.
            if (!timer.Repeats() && timer.mFireDate == entry.scheduled)
                cf::InvalidateTimer(timer, after);
            else if (timer.mRunLoop)
                timer.mRunLoop->Resync();
        }
        CFRelease(&timer);
    }
}

bool __CFRunLoop::PerformSources(std::string_view inMode, const ReadyList& inReady, bool inOneSource)
{
    if (inReady.empty())
        return false;
    std::vector<std::pair<__CFRunLoopSource*, std::uint32_t>> ready;
    {
        std::lock_guard guard(cf::RunLoopLock());
        auto mode = mModes.find(inMode);
        if (mode == mModes.end())
            return false;
        for (auto [descriptor, events] : inReady)
            for (__CFRunLoopSource* source : mode->second.sources)
                if (source->mValid && source->Descriptor() == descriptor) {
                    CFRetain(source);
                    ready.emplace_back(source, events);
                }
    }
    std::stable_sort(ready.begin(), ready.end(),
                     [](const auto& inA, const auto& inB) { return inA.first->mOrder < inB.first->mOrder; });

    bool handled = false;
    for (auto [source, events] : ready) {
        // The others stay ready and are seen again on the next pass.
        if (!(handled && inOneSource))
            handled = source->Perform(events) || handled;
        CFRelease(source);
    }
    return handled;
}

void CFRunLoopRun()
{
    SInt32 result;
    do
        result = CFRunLoopRunInMode(kCFRunLoopDefaultMode, kForever, false);
    while (result != kCFRunLoopRunStopped && result != kCFRunLoopRunFinished);
}

SInt32 CFRunLoopRunInMode(CFStringRef inMode, CFTimeInterval inSeconds, Boolean inReturnAfterSourceHandled)
{
    std::string mode = cf::ModeName(inMode, "CFRunLoopRunInMode");
    return CFRunLoopGetCurrent()->Run(mode, inSeconds, inReturnAfterSourceHandled);
}

void CFRunLoopStop(CFRunLoopRef inRunLoop)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopStop");
    loop.mStopRequested = true;
    loop.WakeUp();
}

void CFRunLoopWakeUp(CFRunLoopRef inRunLoop) { cf::RunLoop(inRunLoop, "CFRunLoopWakeUp").WakeUp(); }

Boolean CFRunLoopIsWaiting(CFRunLoopRef inRunLoop)
{
    return cf::RunLoop(inRunLoop, "CFRunLoopIsWaiting").mWaiting.load();
}
