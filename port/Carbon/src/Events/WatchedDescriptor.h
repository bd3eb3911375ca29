// A descriptor that the main run loop watches for reading, so that what arrives on it is
// handled on the main thread between other events. The callout runs once per arrival; Watch
// asks for the next. The watch ends, and the run loop lets go of it, when this object goes.
#pragma once

#include <CoreFoundation/CFFileDescriptor.h>
#include <CoreFoundation/CFRunLoop.h>
#include <PortSupport/Owned.h>

namespace carbon {

class WatchedDescriptor {
public:
    // Whether the descriptor is closed when the watch ends: so for one this object was given,
    // not for one that another owner (a bus connection) keeps. One that was given is closed
    // at once when the watch cannot be set up.
    enum class Closing { kClosesDescriptor, kLeavesDescriptor };

    WatchedDescriptor(int inFd, Closing inClosing, CFFileDescriptorCallBack inCallout, void* inInfo);
    WatchedDescriptor(const WatchedDescriptor&) = delete;
    WatchedDescriptor& operator=(const WatchedDescriptor&) = delete;
    ~WatchedDescriptor();

    // False when the run loop could not be given the watch (out of memory).
    bool Valid() const { return static_cast<bool>(mSource); }
    int Fd() const { return CFFileDescriptorGetNativeDescriptor(mDescriptor.Get()); }
    void Watch() { CFFileDescriptorEnableCallBacks(mDescriptor.Get(), kCFFileDescriptorReadCallBack); }

private:
    port::Owned<CFFileDescriptorRef> mDescriptor;
    port::Owned<CFRunLoopSourceRef> mSource;
};

}  // namespace carbon
