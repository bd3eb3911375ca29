// File descriptors on the run loop: one-shot read and write callbacks through a source
// that polls the descriptor.
#include <CoreFoundation/CFFileDescriptor.h>

#include "CFRunLoopObject.h"

#include <sys/epoll.h>

struct __CFFileDescriptor final : cf::Object {
    const int mDescriptor;
    port::UniqueDescriptor mOwned;  // the same descriptor, when closing it is ours to do
    const CFFileDescriptorCallBack mCallout;
    const CFFileDescriptorContext mContext;
    // Guarded by the run loop lock.
    bool mValid = true;
    CFOptionFlags mEnabled = 0;
    // Not retained: the source retains this object, and clears the pointer when it goes.
    __CFRunLoopSource* mSource = nullptr;

    __CFFileDescriptor(int inDescriptor, bool inCloseOnInvalidate, CFFileDescriptorCallBack inCallout,
                       const CFFileDescriptorContext& inContext)
        : Object(CFFileDescriptorGetTypeID()), mDescriptor(inDescriptor),
          mOwned(inCloseOnInvalidate ? inDescriptor : -1), mCallout(inCallout), mContext(inContext)
    {
    }

    void Finalize() noexcept override
    {
        mOwned.Reset();
        if (mContext.release && mContext.info)
            mContext.release(mContext.info);
    }
};

namespace {

constexpr CFOptionFlags kAllCallBacks = kCFFileDescriptorReadCallBack | kCFFileDescriptorWriteCallBack;

// Errors and hang-ups wake both kinds of callback: the read or write that follows reports them.
CFOptionFlags CallBacksFor(std::uint32_t inEvents)
{
    CFOptionFlags types = 0;
    if (inEvents & (EPOLLIN | EPOLLPRI | EPOLLRDHUP | EPOLLHUP | EPOLLERR))
        types |= kCFFileDescriptorReadCallBack;
    if (inEvents & (EPOLLOUT | EPOLLHUP | EPOLLERR))
        types |= kCFFileDescriptorWriteCallBack;
    return types;
}

struct DescriptorSource final : __CFRunLoopSource {
    __CFFileDescriptor& mFile;

    DescriptorSource(CFIndex inOrder, __CFFileDescriptor& inFile) : __CFRunLoopSource(inOrder), mFile(inFile)
    {
        CFRetain(&mFile);
    }

    int Descriptor() const override { return mFile.mDescriptor; }

    std::uint32_t WantedEvents() const override
    {
        if (!mFile.mValid)
            return 0;
        return ((mFile.mEnabled & kCFFileDescriptorReadCallBack) ? EPOLLIN : 0u) |
               ((mFile.mEnabled & kCFFileDescriptorWriteCallBack) ? EPOLLOUT : 0u);
    }

    bool Perform(std::uint32_t inEvents) override
    {
        CFOptionFlags fired;
        {
            std::lock_guard guard(cf::RunLoopLock());
            if (!mValid || !mFile.mValid)
                return false;
            fired = mFile.mEnabled & CallBacksFor(inEvents);
            mFile.mEnabled &= ~fired;
            if (fired)
                cf::ResyncRunLoopsOf(*this);
        }
        if (fired && mFile.mCallout)
            mFile.mCallout(&mFile, fired, mFile.mContext.info);
        return fired != 0;
    }

    CFRunLoopSourceContext Context() const override
    {
        CFRunLoopSourceContext context{};
        context.info = &mFile;
        return context;
    }

    void Finalize() noexcept override
    {
        {
            std::lock_guard guard(cf::RunLoopLock());
            if (mFile.mSource == this)
                mFile.mSource = nullptr;
        }
        CFRelease(&mFile);
    }
};

__CFFileDescriptor& File(CFFileDescriptorRef inDescriptor, const char* inCall)
{
    return cf::CheckedMutable<__CFFileDescriptor>(inDescriptor, CFFileDescriptorGetTypeID(), inCall);
}

void ChangeCallBacks(CFFileDescriptorRef inDescriptor, CFOptionFlags inTypes, bool inEnable, const char* inCall)
{
    __CFFileDescriptor& file = File(inDescriptor, inCall);
    std::lock_guard guard(cf::RunLoopLock());
    if (!file.mValid)
        return;
    file.mEnabled = inEnable ? (file.mEnabled | (inTypes & kAllCallBacks)) : (file.mEnabled & ~inTypes);
    if (file.mSource)
        cf::ResyncRunLoopsOf(*file.mSource);
}

}  // namespace

CFTypeID CFFileDescriptorGetTypeID()
{
    static const CFTypeID sTypeID = cf::RegisterClass("CFFileDescriptor");
    return sTypeID;
}

CFFileDescriptorRef CFFileDescriptorCreate(CFAllocatorRef inAllocator, CFFileDescriptorNativeDescriptor inDescriptor,
                                           Boolean inCloseOnInvalidate, CFFileDescriptorCallBack inCallout,
                                           const CFFileDescriptorContext* inContext)
{
    if (inDescriptor < 0)
        return nullptr;
    CFFileDescriptorContext context{};
    if (inContext) {
        context = *inContext;
        if (context.retain && context.info)
            context.info = const_cast<void*>(context.retain(context.info));
    }
    __CFFileDescriptor* file = cf::Create<__CFFileDescriptor>(inAllocator, inDescriptor, bool(inCloseOnInvalidate),
                                                              inCallout, context);
    if (file == nullptr && context.release && context.info)
        context.release(context.info);
    return file;
}

CFFileDescriptorNativeDescriptor CFFileDescriptorGetNativeDescriptor(CFFileDescriptorRef inDescriptor)
{
    return File(inDescriptor, "CFFileDescriptorGetNativeDescriptor").mDescriptor;
}

void CFFileDescriptorGetContext(CFFileDescriptorRef inDescriptor, CFFileDescriptorContext* outContext)
{
    const __CFFileDescriptor& file = File(inDescriptor, "CFFileDescriptorGetContext");
    if (outContext)
        *outContext = file.mContext;
}

void CFFileDescriptorEnableCallBacks(CFFileDescriptorRef inDescriptor, CFOptionFlags inCallBackTypes)
{
    ChangeCallBacks(inDescriptor, inCallBackTypes, true, "CFFileDescriptorEnableCallBacks");
}

void CFFileDescriptorDisableCallBacks(CFFileDescriptorRef inDescriptor, CFOptionFlags inCallBackTypes)
{
    ChangeCallBacks(inDescriptor, inCallBackTypes, false, "CFFileDescriptorDisableCallBacks");
}

void CFFileDescriptorInvalidate(CFFileDescriptorRef inDescriptor)
{
    __CFFileDescriptor& file = File(inDescriptor, "CFFileDescriptorInvalidate");
    {
        cf::AfterUnlock after;
        std::lock_guard guard(cf::RunLoopLock());
        if (!file.mValid)
            return;
        file.mValid = false;
        file.mEnabled = 0;
        if (file.mSource)
            cf::InvalidateSource(*file.mSource, after);
    }
    // Only now that no epoll instance watches it any more.
    file.mOwned.Reset();
}

Boolean CFFileDescriptorIsValid(CFFileDescriptorRef inDescriptor)
{
    __CFFileDescriptor& file = File(inDescriptor, "CFFileDescriptorIsValid");
    std::lock_guard guard(cf::RunLoopLock());
    return file.mValid;
}

CFRunLoopSourceRef CFFileDescriptorCreateRunLoopSource(CFAllocatorRef inAllocator, CFFileDescriptorRef inDescriptor,
                                                       CFIndex inOrder)
{
    __CFFileDescriptor& file = File(inDescriptor, "CFFileDescriptorCreateRunLoopSource");
    std::lock_guard guard(cf::RunLoopLock());
    if (!file.mValid)
        return nullptr;
    if (file.mSource && file.mSource->mValid && cf::RetainIfAlive(file.mSource))
        return file.mSource;
    file.mSource = cf::Create<DescriptorSource>(inAllocator, inOrder, file);
    return file.mSource;
}
