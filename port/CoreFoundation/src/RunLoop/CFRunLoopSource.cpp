// Run loop sources made by clients (version 0): signalled by hand, performed by the run loop.
#include "CFRunLoopObject.h"

#include <CoreFoundation/CFString.h>

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

// A signal is a flag plus a count on an eventfd: the eventfd makes the signal visible to
// epoll (and so to a host watching the wait descriptor) without a separate wake-up.
struct SignalledSource final : __CFRunLoopSource {
    const CFRunLoopSourceContext mContext;
    port::UniqueDescriptor mSignal;
    std::atomic<bool> mSignalled{false};

    SignalledSource(CFIndex inOrder, const CFRunLoopSourceContext& inContext, port::UniqueDescriptor inSignal)
        : __CFRunLoopSource(inOrder), mContext(inContext), mSignal(std::move(inSignal))
    {
    }

    int Descriptor() const override { return mSignal.Get(); }
    std::uint32_t WantedEvents() const override { return EPOLLIN; }

    bool Perform(std::uint32_t) override
    {
        // Drained before the flag is taken: a signal that comes in between leaves both set,
        // and is performed on the next pass instead of being lost.
        std::uint64_t count = 0;
        [[maybe_unused]] ssize_t got = ::read(mSignal.Get(), &count, sizeof count);
        if (!mSignalled.exchange(false))
            return false;
        {
            std::lock_guard guard(cf::RunLoopLock());
            if (!mValid)
                return false;
        }
        if (mContext.perform)
            mContext.perform(mContext.info);
        return true;
    }

    void Signal() override
    {
        mSignalled = true;
        std::uint64_t one = 1;
        [[maybe_unused]] ssize_t written = ::write(mSignal.Get(), &one, sizeof one);
    }

    void Scheduled(CFRunLoopRef inLoop, std::string_view inMode) override { Tell(mContext.schedule, inLoop, inMode); }
    void Cancelled(CFRunLoopRef inLoop, std::string_view inMode) override { Tell(mContext.cancel, inLoop, inMode); }

    CFRunLoopSourceContext Context() const override { return mContext; }

    void Finalize() noexcept override
    {
        mSignal.Reset();
        if (mContext.release && mContext.info)
            mContext.release(mContext.info);
    }

    void Tell(void (*inCallback)(void*, CFRunLoopRef, CFStringRef), CFRunLoopRef inLoop, std::string_view inMode) const
    {
        if (inCallback == nullptr)
            return;
        CFStringRef mode = cf::MakeString(inMode);
        inCallback(mContext.info, inLoop, mode);
        CFRelease(mode);
    }
};

}  // namespace

namespace cf {

__CFRunLoopSource& Source(CFRunLoopSourceRef inSource, const char* inCall)
{
    return CheckedMutable<__CFRunLoopSource>(inSource, CFRunLoopSourceGetTypeID(), inCall);
}

}  // namespace cf

CFTypeID CFRunLoopSourceGetTypeID()
{
    static const CFTypeID sTypeID = cf::RegisterClass("CFRunLoopSource");
    return sTypeID;
}

CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef inAllocator, CFIndex inOrder, CFRunLoopSourceContext* inContext)
{
    if (inContext == nullptr || inContext->version != 0)
        return nullptr;
    port::UniqueDescriptor signal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!signal)
        return nullptr;
    CFRunLoopSourceContext context = *inContext;
    if (context.retain && context.info)
        context.info = const_cast<void*>(context.retain(context.info));
    SignalledSource* source = cf::Create<SignalledSource>(inAllocator, inOrder, context, std::move(signal));
    if (source == nullptr && context.release && context.info)
        context.release(context.info);
    return source;
}

CFIndex CFRunLoopSourceGetOrder(CFRunLoopSourceRef inSource)
{
    return cf::Source(inSource, "CFRunLoopSourceGetOrder").mOrder;
}

void CFRunLoopSourceGetContext(CFRunLoopSourceRef inSource, CFRunLoopSourceContext* outContext)
{
    const __CFRunLoopSource& source = cf::Source(inSource, "CFRunLoopSourceGetContext");
    if (outContext)
        *outContext = source.Context();
}

void CFRunLoopSourceInvalidate(CFRunLoopSourceRef inSource)
{
    __CFRunLoopSource& source = cf::Source(inSource, "CFRunLoopSourceInvalidate");
    cf::AfterUnlock after;
    std::lock_guard guard(cf::RunLoopLock());
    cf::InvalidateSource(source, after);
}

Boolean CFRunLoopSourceIsValid(CFRunLoopSourceRef inSource)
{
    __CFRunLoopSource& source = cf::Source(inSource, "CFRunLoopSourceIsValid");
    std::lock_guard guard(cf::RunLoopLock());
    return source.mValid;
}

void CFRunLoopSourceSignal(CFRunLoopSourceRef inSource) { cf::Source(inSource, "CFRunLoopSourceSignal").Signal(); }
