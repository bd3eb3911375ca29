// Run loop timers: a fire date, an optional interval, and a callout.
#include "CFRunLoopObject.h"

#include <cstdio>

namespace {

CFRunLoopTimerContext Retained(const CFRunLoopTimerContext* inContext)
{
    CFRunLoopTimerContext context{};
    if (inContext == nullptr)
        return context;
    context = *inContext;
    if (context.retain && context.info)
        context.info = const_cast<void*>(context.retain(context.info));
    return context;
}

}  // namespace

__CFRunLoopTimer::__CFRunLoopTimer(CFAbsoluteTime inFireDate, CFTimeInterval inInterval, CFIndex inOrder,
                                   CFRunLoopTimerCallBack inCallout, const CFRunLoopTimerContext& inContext)
    : Object(CFRunLoopTimerGetTypeID()), mInterval(inInterval > 0 ? inInterval : 0), mOrder(inOrder),
      mCallout(inCallout), mContext(inContext), mFireDate(inFireDate), mGridOrigin(inFireDate)
{
}

void __CFRunLoopTimer::Finalize() noexcept
{
    if (mContext.release && mContext.info)
        mContext.release(mContext.info);
}

std::string __CFRunLoopTimer::Describe() const
{
    std::lock_guard guard(cf::RunLoopLock());
    char text[128];
    std::snprintf(text, sizeof text, "{valid = %s, interval = %g, next fire date = %.3f, order = %ld}",
                  mValid ? "Yes" : "No", mInterval, mFireDate, mOrder);
    return DescribePrefix() + text;
}

namespace cf {

__CFRunLoopTimer& Timer(CFRunLoopTimerRef inTimer, const char* inCall)
{
    return CheckedMutable<__CFRunLoopTimer>(inTimer, CFRunLoopTimerGetTypeID(), inCall);
}

}  // namespace cf

CFTypeID CFRunLoopTimerGetTypeID()
{
    static const CFTypeID sTypeID = cf::RegisterClass("CFRunLoopTimer");
    return sTypeID;
}

CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef inAllocator, CFAbsoluteTime inFireDate, CFTimeInterval inInterval,
                                       CFOptionFlags, CFIndex inOrder, CFRunLoopTimerCallBack inCallout,
                                       CFRunLoopTimerContext* inContext)
{
    CFRunLoopTimerContext context = Retained(inContext);
    CFRunLoopTimerRef timer = cf::Create<__CFRunLoopTimer>(inAllocator, inFireDate, inInterval, inOrder, inCallout,
                                                           context);
    if (timer == nullptr && context.release && context.info)
        context.release(context.info);
    return timer;
}

CFAbsoluteTime CFRunLoopTimerGetNextFireDate(CFRunLoopTimerRef inTimer)
{
    __CFRunLoopTimer& timer = cf::Timer(inTimer, "CFRunLoopTimerGetNextFireDate");
    std::lock_guard guard(cf::RunLoopLock());
    return timer.mFireDate;
}

void CFRunLoopTimerSetNextFireDate(CFRunLoopTimerRef inTimer, CFAbsoluteTime inFireDate)
{
    __CFRunLoopTimer& timer = cf::Timer(inTimer, "CFRunLoopTimerSetNextFireDate");
    std::lock_guard guard(cf::RunLoopLock());
    timer.mFireDate = inFireDate;
    timer.mGridOrigin = inFireDate;
    if (timer.mRunLoop)
        timer.mRunLoop->Resync();
}

CFTimeInterval CFRunLoopTimerGetInterval(CFRunLoopTimerRef inTimer)
{
    return cf::Timer(inTimer, "CFRunLoopTimerGetInterval").mInterval;
}

Boolean CFRunLoopTimerDoesRepeat(CFRunLoopTimerRef inTimer)
{
    return cf::Timer(inTimer, "CFRunLoopTimerDoesRepeat").Repeats();
}

CFIndex CFRunLoopTimerGetOrder(CFRunLoopTimerRef inTimer)
{
    return cf::Timer(inTimer, "CFRunLoopTimerGetOrder").mOrder;
}

void CFRunLoopTimerGetContext(CFRunLoopTimerRef inTimer, CFRunLoopTimerContext* outContext)
{
    const __CFRunLoopTimer& timer = cf::Timer(inTimer, "CFRunLoopTimerGetContext");
    if (outContext)
        *outContext = timer.mContext;
}

void CFRunLoopTimerInvalidate(CFRunLoopTimerRef inTimer)
{
    __CFRunLoopTimer& timer = cf::Timer(inTimer, "CFRunLoopTimerInvalidate");
    cf::AfterUnlock after;
    std::lock_guard guard(cf::RunLoopLock());
    cf::InvalidateTimer(timer, after);
}

Boolean CFRunLoopTimerIsValid(CFRunLoopTimerRef inTimer)
{
    __CFRunLoopTimer& timer = cf::Timer(inTimer, "CFRunLoopTimerIsValid");
    std::lock_guard guard(cf::RunLoopLock());
    return timer.mValid;
}
