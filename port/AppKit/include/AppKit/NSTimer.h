// Timers on the main run loop that send a selector to a target. A scheduled timer keeps
// itself and its target alive until it is invalidated; a timer that does not repeat
// invalidates itself after it fired.
#pragma once

#include <AppKit/NSObject.h>
#include <CoreFoundation/CFRunLoop.h>

class NSTimer final : public NSObject {
public:
    NSTimer(NSTimeInterval inInterval, id inTarget, SEL inSelector, id inUserInfo, BOOL inRepeats);

    // An autoreleased timer, already scheduled in the main run loop's common modes.
    static NSTimer* scheduledTimerWithTimeIntervalTargetSelectorUserInfoRepeats(NSTimeInterval inInterval, id inTarget,
                                                                                SEL inSelector, id inUserInfo,
                                                                                BOOL inRepeats);

    void fire();
    void invalidate();
    BOOL isValid() const;
    NSTimeInterval timeInterval() const { return mInterval; }
    id userInfo() const { return mUserInfo; }

    const char* className() const override { return "NSTimer"; }

protected:
    void Finalize() noexcept override;

private:
    static void Fired(CFRunLoopTimerRef inTimer, void* inInfo);

    NSTimeInterval mInterval;
    id mTarget;
    SEL mSelector;
    id mUserInfo;
    BOOL mRepeats;
    CFRunLoopTimerRef mTimer = nullptr;
};
