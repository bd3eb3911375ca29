// Framework timers over the run loop's timers.
#include <AppKit/NSTimer.h>

NSTimer::NSTimer(NSTimeInterval inInterval, id inTarget, SEL inSelector, id inUserInfo, BOOL inRepeats)
    : mInterval(inInterval > 0 ? inInterval : 0.0001), mTarget(inTarget), mSelector(inSelector), mUserInfo(inUserInfo),
      mRepeats(inRepeats)
{
    if (mTarget)
        mTarget->retain();
    if (mUserInfo)
        mUserInfo->retain();
}

NSTimer* NSTimer::scheduledTimerWithTimeIntervalTargetSelectorUserInfoRepeats(NSTimeInterval inInterval, id inTarget,
                                                                              SEL inSelector, id inUserInfo,
                                                                              BOOL inRepeats)
{
    NSTimer* timer = NSNew<NSTimer>(inInterval, inTarget, inSelector, inUserInfo, inRepeats);
    if (timer == nullptr)
        return nullptr;
    // The run loop's timer does not own this object: the scheduled timer holds one reference
    // to itself instead, given back by invalidate, so that the two never keep each other alive.
    CFRunLoopTimerContext context{0, timer, nullptr, nullptr, nullptr};
    timer->mTimer = CFRunLoopTimerCreate(nullptr, CFAbsoluteTimeGetCurrent() + timer->mInterval,
                                         inRepeats ? timer->mInterval : 0, 0, 0, &Fired, &context);
    if (timer->mTimer == nullptr) {
        timer->release();
        return nullptr;
    }
    CFRunLoopAddTimer(CFRunLoopGetMain(), timer->mTimer, kCFRunLoopCommonModes);
    // The reference from creation is the one the schedule holds; the caller's is autoreleased.
    timer->retain();
    return static_cast<NSTimer*>(timer->autorelease());
}

void NSTimer::Fired(CFRunLoopTimerRef, void* inInfo) { static_cast<NSTimer*>(inInfo)->fire(); }

void NSTimer::fire()
{
    if (!isValid())
        return;
    retain();  // the target may invalidate the timer while it is being called
    if (mTarget)
        mTarget->performSelector(mSelector, this);
    if (!mRepeats)
        invalidate();
    release();
}

void NSTimer::invalidate()
{
    if (!isValid())
        return;
    CFRunLoopTimerInvalidate(mTimer);
    if (id target = std::exchange(mTarget, nullptr))
        target->release();
    release();  // the reference the schedule held
}

BOOL NSTimer::isValid() const { return mTimer != nullptr && CFRunLoopTimerIsValid(mTimer) ? YES : NO; }

void NSTimer::Finalize() noexcept
{
    if (mTimer)
        CFRelease(mTimer);
    if (mTarget)
        mTarget->release();
    if (mUserInfo)
        mUserInfo->release();
}
