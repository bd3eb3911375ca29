// What the run loop, its timers and its sources share inside the library: the lock over
// every schedule, work put off until that lock is let go, and the objects' layouts.
#pragma once

#include <CoreFoundation/CFRunLoop.h>
#include <CoreFoundation/CFRuntime.h>

#include <PortSupport/UniqueDescriptor.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cf {

// One lock guards which run loop holds which timer and source in which mode, every fire
// date and every enabled callback. A process has few run loops and they seldom contend,
// and a single lock leaves no lock order to get wrong. Client code never runs under it.
std::mutex& RunLoopLock();

// Work that has to wait until the lock is let go: client callbacks, and releases (a last
// release runs the client's release callback, which may call back into the run loop).
// Declare it before the lock guard, so that it is destroyed, and does its work, after.
class AfterUnlock {
public:
    AfterUnlock() = default;
    AfterUnlock(const AfterUnlock&) = delete;
    AfterUnlock& operator=(const AfterUnlock&) = delete;
    ~AfterUnlock();

    void Call(std::function<void()> inCall) { mCalls.push_back(std::move(inCall)); }
    void Release(CFTypeRef inObject) { mReleases.push_back(inObject); }

private:
    std::vector<std::function<void()>> mCalls;
    std::vector<CFTypeRef> mReleases;
};

inline constexpr std::string_view kDefaultModeName = "kCFRunLoopDefaultMode";
inline constexpr std::string_view kCommonModesName = "kCFRunLoopCommonModes";

}  // namespace cf

// Something the run loop polls a descriptor for, with work to do when it is ready.
struct __CFRunLoopSource : cf::Object {
    const CFIndex mOrder;
    // Guarded by the run loop lock.
    bool mValid = true;
    std::vector<__CFRunLoop*> mRunLoops;  // each run loop that holds it in some mode, once

    explicit __CFRunLoopSource(CFIndex inOrder) : Object(CFRunLoopSourceGetTypeID()), mOrder(inOrder) {}

    // Under the lock: the descriptor to poll, and the epoll events wanted now (0: none).
    virtual int Descriptor() const = 0;
    virtual std::uint32_t WantedEvents() const = 0;
    // Without the lock: the source's work for the events seen. Answers whether it did any.
    virtual bool Perform(std::uint32_t inEvents) = 0;
    // Without the lock, when the source joins or leaves a mode of a run loop.
    virtual void Scheduled(CFRunLoopRef, std::string_view) {}
    virtual void Cancelled(CFRunLoopRef, std::string_view) {}
    virtual void Signal() {}
    virtual CFRunLoopSourceContext Context() const { return CFRunLoopSourceContext{}; }
};

struct __CFRunLoopTimer final : cf::Object {
    const CFTimeInterval mInterval;
    const CFIndex mOrder;
    const CFRunLoopTimerCallBack mCallout;
    const CFRunLoopTimerContext mContext;
    // Guarded by the run loop lock.
    CFAbsoluteTime mFireDate;
    // Where the repeating grid starts: slots are counted from here, not added up one by
    // one, so that rounding never piles up into drift.
    CFAbsoluteTime mGridOrigin;
    bool mValid = true;
    bool mFiring = false;  // its callout is running
    __CFRunLoop* mRunLoop = nullptr;

    __CFRunLoopTimer(CFAbsoluteTime inFireDate, CFTimeInterval inInterval, CFIndex inOrder,
                     CFRunLoopTimerCallBack inCallout, const CFRunLoopTimerContext& inContext);

    bool Repeats() const { return mInterval > 0; }
    void Finalize() noexcept override;
    std::string Describe() const override;
};

struct __CFRunLoop final : cf::Object {
    // The timers and sources of one mode; each entry holds one reference.
    struct Mode {
        std::vector<__CFRunLoopSource*> sources;
        std::vector<__CFRunLoopTimer*> timers;
    };
    using ReadyList = std::vector<std::pair<int, std::uint32_t>>;

    explicit __CFRunLoop(Lifetime inLifetime = Lifetime::Counted);

    // Under the lock.
    bool IsEmpty(std::string_view inMode) const;
    template <class Item>
    bool Contains(Item* inItem, std::string_view inMode) const;
    template <class Item>
    void Add(Item* inItem, std::string_view inMode, cf::AfterUnlock& ioAfter);
    template <class Item>
    void Remove(Item* inItem, std::string_view inMode, cf::AfterUnlock& ioAfter);
    // Takes the item out of every mode.
    template <class Item>
    void Purge(Item* inItem, cf::AfterUnlock& ioAfter);
    void AddCommonMode(std::string_view inMode, cf::AfterUnlock& ioAfter);
    std::string_view WatchedMode() const;
    // Brings epoll and the timer clock in line with the watched mode.
    void Resync();
    // Empties every mode. inNotify: tell sources they were cancelled (not while dying).
    void TearDown(cf::AfterUnlock& ioAfter, bool inNotify);

    // Without the lock, on the run loop's own thread.
    SInt32 Run(std::string_view inMode, CFTimeInterval inSeconds, bool inReturnAfterSourceHandled);

    void WakeUp() const;
    void Finalize() noexcept override;

    port::UniqueDescriptor mEpoll;
    port::UniqueDescriptor mWake;        // eventfd: written to end a wait
    port::UniqueDescriptor mTimerClock;  // timerfd: armed for the watched mode's next timer
    std::atomic<bool> mStopRequested{false};
    std::atomic<bool> mWaiting{false};

    // Guarded by the run loop lock.
    std::map<std::string, Mode, std::less<>> mModes;
    std::set<std::string, std::less<>> mCommonModes;
    Mode mCommonItems;
    std::vector<std::string> mRunning;         // the modes of the nested runs, innermost last
    std::map<int, std::uint32_t> mWatched;     // what epoll watches
    std::map<int, std::uint32_t> mUnpollable;  // wanted descriptors epoll refuses: always ready

private:
    template <class Item>
    void AddToMode(Item* inItem, std::string_view inMode, cf::AfterUnlock& ioAfter);
    template <class Item>
    bool RemoveFromMode(Item* inItem, std::string_view inMode, cf::AfterUnlock& ioAfter);
    template <class Item>
    bool Holds(Item* inItem) const;
    void Watch(const std::map<int, std::uint32_t>& inWanted);
    void Arm(CFAbsoluteTime inFireDate);

    bool Pass(std::string_view inMode, double inDeadline, bool inOneSource);
    void FireDueTimers(std::string_view inMode);
    bool PerformSources(std::string_view inMode, const ReadyList& inReady, bool inOneSource);
};

namespace cf {

// Under the lock: re-reads what the source wants polled, in every run loop holding it.
void ResyncRunLoopsOf(const __CFRunLoopSource& inSource);
// Under the lock: marks the source invalid and takes it out of every run loop.
void InvalidateSource(__CFRunLoopSource& inSource, AfterUnlock& ioAfter);
// Under the lock: marks the timer invalid and takes it out of its run loop.
void InvalidateTimer(__CFRunLoopTimer& inTimer, AfterUnlock& ioAfter);

// The objects behind references, checked as each call's misuse checks require.
__CFRunLoop& RunLoop(CFRunLoopRef inRunLoop, const char* inCall);
__CFRunLoopSource& Source(CFRunLoopSourceRef inSource, const char* inCall);
__CFRunLoopTimer& Timer(CFRunLoopTimerRef inTimer, const char* inCall);
// The UTF-8 name of a mode, which must be a string.
std::string ModeName(CFStringRef inMode, const char* inCall);

}  // namespace cf
