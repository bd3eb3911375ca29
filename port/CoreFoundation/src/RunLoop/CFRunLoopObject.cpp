// The run loop object: one per thread, and how its epoll instance and timer clock are kept
// in line with the mode being watched.
#include "CFRunLoopObject.h"

#include <CoreFoundation/CFString.h>

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>

const CFStringRef kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");
const CFStringRef kCFRunLoopCommonModes = CFSTR("kCFRunLoopCommonModes");

namespace cf {

std::mutex& RunLoopLock()
{
    static std::mutex sLock;
    return sLock;
}

AfterUnlock::~AfterUnlock()
{
    for (auto& call : mCalls)
        call();
    for (CFTypeRef object : mReleases)
        CFRelease(object);
}

}  // namespace cf

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();

port::UniqueDescriptor Opened(int inDescriptor, const char* inWhat)
{
    if (inDescriptor < 0)
        cf::Fatal("CFRunLoopGetCurrent", "cannot create the run loop's %s: %s", inWhat, std::strerror(errno));
    return port::UniqueDescriptor(inDescriptor);
}

// The kernel's clock counts whole nanoseconds from 1970. Whole and fractional seconds are
// converted apart, and the fraction rounded up, so that the clock never goes off before
// the date: a wake-up a hair early would find the timer not yet due.
timespec RealtimeFor(CFAbsoluteTime inDate)
{
    double date = std::clamp(inDate, -kCFAbsoluteTimeIntervalSince1970, 1e11);
    double whole = std::floor(date);
    auto seconds = time_t(whole) + time_t(kCFAbsoluteTimeIntervalSince1970);
    auto nanoseconds = long(std::ceil((date - whole) * 1e9));
    if (nanoseconds >= 1'000'000'000) {
        seconds += 1;
        nanoseconds -= 1'000'000'000;
    }
    if (seconds == 0 && nanoseconds == 0)
        nanoseconds = 1;  // all zero would disarm the clock
    return timespec{seconds, nanoseconds};
}

__CFRunLoop& MainRunLoop()
{
    // The main thread's run loop serves the whole process and is never deallocated, so it
    // is made as a static object: retains and releases leave it alone, and it is not counted
    // among the live objects that the tests compare before and after.
    static __CFRunLoop* const sMain = new __CFRunLoop(cf::Object::Lifetime::Static);
    return *sMain;
}

// The run loop of the calling thread. A secondary thread's is emptied and released when
// the thread ends, so that the timers and sources it still held are let go too.
class ThreadRunLoop {
public:
    ThreadRunLoop() = default;
    ThreadRunLoop(const ThreadRunLoop&) = delete;
    ThreadRunLoop& operator=(const ThreadRunLoop&) = delete;

    ~ThreadRunLoop()
    {
        if (mLoop == nullptr || mLoop->IsStatic())
            return;
        {
            cf::AfterUnlock after;
            std::lock_guard guard(cf::RunLoopLock());
            mLoop->TearDown(after, true);
        }
        CFRelease(mLoop);
    }

    __CFRunLoop& Get()
    {
        if (mLoop == nullptr)
            mLoop = ::gettid() == ::getpid() ? &MainRunLoop() : cf::Create<__CFRunLoop>(nullptr);
        if (mLoop == nullptr)
            cf::Fatal("CFRunLoopGetCurrent", "out of memory");
        return *mLoop;
    }

private:
    __CFRunLoop* mLoop = nullptr;
};

thread_local ThreadRunLoop tRunLoop;

}  // namespace

namespace cf {

__CFRunLoop& RunLoop(CFRunLoopRef inRunLoop, const char* inCall)
{
    return CheckedMutable<__CFRunLoop>(inRunLoop, CFRunLoopGetTypeID(), inCall);
}

std::string ModeName(CFStringRef inMode, const char* inCall)
{
    Checked<Object>(inMode, kTypeIDString, inCall);
    return UTF8(inMode);
}

}  // namespace cf

__CFRunLoop::__CFRunLoop(Lifetime inLifetime)
    : Object(CFRunLoopGetTypeID(), inLifetime), mEpoll(Opened(::epoll_create1(EPOLL_CLOEXEC), "epoll instance")),
      mWake(Opened(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "wake-up event")),
      mTimerClock(Opened(::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK), "timer clock"))
{
    mCommonModes.emplace(cf::kDefaultModeName);
    for (int descriptor : {mWake.Get(), mTimerClock.Get()}) {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = descriptor;
        if (::epoll_ctl(mEpoll.Get(), EPOLL_CTL_ADD, descriptor, &event) != 0)
            cf::Fatal("CFRunLoopGetCurrent", "cannot watch the run loop's own descriptors: %s", std::strerror(errno));
    }
}

void __CFRunLoop::Finalize() noexcept
{
    {
        cf::AfterUnlock after;
        std::lock_guard guard(cf::RunLoopLock());
        TearDown(after, false);
    }
    mTimerClock.Reset();
    mWake.Reset();
    mEpoll.Reset();
}

void __CFRunLoop::WakeUp() const
{
    std::uint64_t one = 1;
    // A full counter (EAGAIN) already means "awake", which is all a wake-up asks for.
    [[maybe_unused]] ssize_t written = ::write(mWake.Get(), &one, sizeof one);
}

std::string_view __CFRunLoop::WatchedMode() const
{
    return mRunning.empty() ? cf::kDefaultModeName : std::string_view(mRunning.back());
}

void __CFRunLoop::Resync()
{
    std::map<int, std::uint32_t> wanted;
    CFAbsoluteTime next = kNever;
    if (auto mode = mModes.find(WatchedMode()); mode != mModes.end()) {
        for (const __CFRunLoopSource* source : mode->second.sources)
            if (std::uint32_t events = source->mValid ? source->WantedEvents() : 0)
                wanted[source->Descriptor()] |= events;
        for (const __CFRunLoopTimer* timer : mode->second.timers)
            if (timer->mValid && !timer->mFiring)
                next = std::min(next, timer->mFireDate);
    }
    Watch(wanted);
    Arm(next);
}

void __CFRunLoop::Watch(const std::map<int, std::uint32_t>& inWanted)
{
    for (auto [descriptor, events] : mWatched)
        if (!inWanted.contains(descriptor))
            ::epoll_ctl(mEpoll.Get(), EPOLL_CTL_DEL, descriptor, nullptr);

    std::map<int, std::uint32_t> watched;
    mUnpollable.clear();
    for (auto [descriptor, events] : inWanted) {
        auto known = mWatched.find(descriptor);
        if (known != mWatched.end() && known->second == events) {
            watched.emplace(descriptor, events);
            continue;
        }
        epoll_event event{};
        event.events = events;
        event.data.fd = descriptor;
        // The first choice can be wrong when a client closed and reopened a descriptor
        // number behind our back, so the other one is tried too.
        int first = known == mWatched.end() ? EPOLL_CTL_ADD : EPOLL_CTL_MOD;
        int result = ::epoll_ctl(mEpoll.Get(), first, descriptor, &event);
        if (result != 0 && (errno == EEXIST || errno == ENOENT))
            result = ::epoll_ctl(mEpoll.Get(), first == EPOLL_CTL_ADD ? EPOLL_CTL_MOD : EPOLL_CTL_ADD, descriptor,
                                 &event);
        if (result == 0)
            watched.emplace(descriptor, events);
        else if (errno == EPERM)  // regular files and directories: always ready
            mUnpollable.emplace(descriptor, events);
    }
    mWatched = std::move(watched);
    // Hosts watching the wait descriptor learn of always-ready descriptors this way.
    if (!mUnpollable.empty())
        WakeUp();
}

void __CFRunLoop::Arm(CFAbsoluteTime inFireDate)
{
    itimerspec when{};
    if (std::isfinite(inFireDate))
        when.it_value = RealtimeFor(inFireDate);
    // Setting the clock also forgets an expiry not yet read, so it always matches the date.
    ::timerfd_settime(mTimerClock.Get(), TFD_TIMER_ABSTIME, &when, nullptr);
}

CFTypeID CFRunLoopGetTypeID()
{
    static const CFTypeID sTypeID = cf::RegisterClass("CFRunLoop");
    return sTypeID;
}

CFRunLoopRef CFRunLoopGetCurrent() { return &tRunLoop.Get(); }

CFRunLoopRef CFRunLoopGetMain() { return &MainRunLoop(); }

CFStringRef CFRunLoopCopyCurrentMode(CFRunLoopRef inRunLoop)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopCopyCurrentMode");
    std::string mode;
    {
        std::lock_guard guard(cf::RunLoopLock());
        if (loop.mRunning.empty())
            return nullptr;
        mode = loop.mRunning.back();
    }
    return cf::MakeString(mode);
}

int _CFRunLoopGetWaitDescriptor(CFRunLoopRef inRunLoop)
{
    return cf::RunLoop(inRunLoop, "_CFRunLoopGetWaitDescriptor").mEpoll.Get();
}
