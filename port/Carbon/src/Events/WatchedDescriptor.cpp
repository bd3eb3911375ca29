#include "WatchedDescriptor.h"

#include <unistd.h>

namespace carbon {

WatchedDescriptor::WatchedDescriptor(int inFd, Closing inClosing, CFFileDescriptorCallBack inCallout, void* inInfo)
{
    bool closes = inClosing == Closing::kClosesDescriptor;
    CFFileDescriptorContext context{0, inInfo, nullptr, nullptr, nullptr};
    mDescriptor.Reset(CFFileDescriptorCreate(nullptr, inFd, closes, inCallout, &context));
    if (!mDescriptor) {
        if (closes)
            ::close(inFd);
        return;
    }
    mSource.Reset(CFFileDescriptorCreateRunLoopSource(nullptr, mDescriptor.Get(), 0));
    if (!mSource)
        return;
    CFRunLoopAddSource(CFRunLoopGetMain(), mSource.Get(), kCFRunLoopCommonModes);
    Watch();
}

WatchedDescriptor::~WatchedDescriptor()
{
    // Invalidating takes the source off the run loop (and closes a descriptor it was given),
    // so no callout can come once this is gone.
    if (mDescriptor)
        CFFileDescriptorInvalidate(mDescriptor.Get());
}

}  // namespace carbon
