// A file descriptor watched by the run loop: it calls back when the descriptor becomes
// readable or writable.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFRunLoop.h>

using CFFileDescriptorRef = struct __CFFileDescriptor*;
using CFFileDescriptorNativeDescriptor = int;

// Callback types. Each fires once: the run loop disables it before calling out, and the
// client enables it again when it wants the next one.
enum : CFOptionFlags {
    kCFFileDescriptorReadCallBack = 1UL << 0,
    kCFFileDescriptorWriteCallBack = 1UL << 1,
};

using CFFileDescriptorCallBack = void (*)(CFFileDescriptorRef inDescriptor, CFOptionFlags inCallBackTypes,
                                          void* inInfo);

struct CFFileDescriptorContext {
    CFIndex version;
    void* info;
    const void* (*retain)(const void* inInfo);
    void (*release)(const void* inInfo);
    CFStringRef (*copyDescription)(const void* inInfo);
};

CFTypeID CFFileDescriptorGetTypeID();
// With inCloseOnInvalidate the object owns inDescriptor and closes it when it is
// invalidated or deallocated. A negative descriptor answers NULL.
CFFileDescriptorRef CFFileDescriptorCreate(CFAllocatorRef inAllocator, CFFileDescriptorNativeDescriptor inDescriptor,
                                           Boolean inCloseOnInvalidate, CFFileDescriptorCallBack inCallout,
                                           const CFFileDescriptorContext* inContext);
CFFileDescriptorNativeDescriptor CFFileDescriptorGetNativeDescriptor(CFFileDescriptorRef inDescriptor);
void CFFileDescriptorGetContext(CFFileDescriptorRef inDescriptor, CFFileDescriptorContext* outContext);
void CFFileDescriptorEnableCallBacks(CFFileDescriptorRef inDescriptor, CFOptionFlags inCallBackTypes);
void CFFileDescriptorDisableCallBacks(CFFileDescriptorRef inDescriptor, CFOptionFlags inCallBackTypes);
// Stops all callbacks, removes the descriptor's run loop source from every run loop and,
// if the object owns the descriptor, closes it.
void CFFileDescriptorInvalidate(CFFileDescriptorRef inDescriptor);
Boolean CFFileDescriptorIsValid(CFFileDescriptorRef inDescriptor);
// The source that puts the descriptor on a run loop. A descriptor has one source at a
// time: asking again while it exists answers it again (with a new reference).
CFRunLoopSourceRef CFFileDescriptorCreateRunLoopSource(CFAllocatorRef inAllocator, CFFileDescriptorRef inDescriptor,
                                                       CFIndex inOrder);
