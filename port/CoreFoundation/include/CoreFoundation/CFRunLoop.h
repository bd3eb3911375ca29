// The run loop: one per thread, waiting for timers and sources in a named mode and calling
// out to them when they are due or ready.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDate.h>

using CFRunLoopRef = struct __CFRunLoop*;
using CFRunLoopSourceRef = struct __CFRunLoopSource*;
using CFRunLoopTimerRef = struct __CFRunLoopTimer*;

// Why CFRunLoopRunInMode returned.
enum : SInt32 {
    kCFRunLoopRunFinished = 1,       // the mode had no timers or sources (left)
    kCFRunLoopRunStopped = 2,        // CFRunLoopStop
    kCFRunLoopRunTimedOut = 3,       // the time given ran out
    kCFRunLoopRunHandledSource = 4,  // a source was handled and the caller asked to return then
};

// The mode a run loop usually runs in, and the pseudo-mode that stands for every mode
// marked common (the default mode is one from the start).
extern const CFStringRef kCFRunLoopDefaultMode;
extern const CFStringRef kCFRunLoopCommonModes;

CFTypeID CFRunLoopGetTypeID();

// The calling thread's run loop, made on first use and released when the thread ends.
CFRunLoopRef CFRunLoopGetCurrent();
// The main thread's run loop, from any thread; it lives as long as the process.
CFRunLoopRef CFRunLoopGetMain();

// Runs the current thread's run loop in the default mode until it is stopped or the mode
// runs out of timers and sources.
void CFRunLoopRun();
SInt32 CFRunLoopRunInMode(CFStringRef inMode, CFTimeInterval inSeconds, Boolean inReturnAfterSourceHandled);
// Makes the innermost run of inRunLoop return kCFRunLoopRunStopped; a stop asked for while
// it is not running ends its next run at once.
void CFRunLoopStop(CFRunLoopRef inRunLoop);
// Ends the current wait of inRunLoop early; safe from any thread.
void CFRunLoopWakeUp(CFRunLoopRef inRunLoop);
Boolean CFRunLoopIsWaiting(CFRunLoopRef inRunLoop);

// The mode of the innermost run, or NULL when the run loop is not running.
CFStringRef CFRunLoopCopyCurrentMode(CFRunLoopRef inRunLoop);
void CFRunLoopAddCommonMode(CFRunLoopRef inRunLoop, CFStringRef inMode);
// The earliest fire date of the mode's valid timers; 0 when it has none.
CFAbsoluteTime CFRunLoopGetNextTimerFireDate(CFRunLoopRef inRunLoop, CFStringRef inMode);

Boolean CFRunLoopContainsSource(CFRunLoopRef inRunLoop, CFRunLoopSourceRef inSource, CFStringRef inMode);
void CFRunLoopAddSource(CFRunLoopRef inRunLoop, CFRunLoopSourceRef inSource, CFStringRef inMode);
void CFRunLoopRemoveSource(CFRunLoopRef inRunLoop, CFRunLoopSourceRef inSource, CFStringRef inMode);

// A timer belongs to at most one run loop, in any number of its modes.
Boolean CFRunLoopContainsTimer(CFRunLoopRef inRunLoop, CFRunLoopTimerRef inTimer, CFStringRef inMode);
void CFRunLoopAddTimer(CFRunLoopRef inRunLoop, CFRunLoopTimerRef inTimer, CFStringRef inMode);
void CFRunLoopRemoveTimer(CFRunLoopRef inRunLoop, CFRunLoopTimerRef inTimer, CFStringRef inMode);

// Sources made by the client (version 0): the client signals them, and the run loop calls
// perform once for each signal it sees, in a mode the source was added to.
struct CFRunLoopSourceContext {
    CFIndex version;
    void* info;
    const void* (*retain)(const void* inInfo);
    void (*release)(const void* inInfo);
    CFStringRef (*copyDescription)(const void* inInfo);
    Boolean (*equal)(const void* inInfo1, const void* inInfo2);
    CFHashCode (*hash)(const void* inInfo);
    void (*schedule)(void* inInfo, CFRunLoopRef inRunLoop, CFStringRef inMode);
    void (*cancel)(void* inInfo, CFRunLoopRef inRunLoop, CFStringRef inMode);
    void (*perform)(void* inInfo);
};

CFTypeID CFRunLoopSourceGetTypeID();
// Only version 0 is supported; any other version answers NULL.
CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef inAllocator, CFIndex inOrder,
                                         CFRunLoopSourceContext* inContext);
CFIndex CFRunLoopSourceGetOrder(CFRunLoopSourceRef inSource);
void CFRunLoopSourceGetContext(CFRunLoopSourceRef inSource, CFRunLoopSourceContext* outContext);
// Removes the source from every run loop; it never fires again.
void CFRunLoopSourceInvalidate(CFRunLoopSourceRef inSource);
Boolean CFRunLoopSourceIsValid(CFRunLoopSourceRef inSource);
void CFRunLoopSourceSignal(CFRunLoopSourceRef inSource);

// Timers.
using CFRunLoopTimerCallBack = void (*)(CFRunLoopTimerRef inTimer, void* inInfo);

struct CFRunLoopTimerContext {
    CFIndex version;
    void* info;
    const void* (*retain)(const void* inInfo);
    void (*release)(const void* inInfo);
    CFStringRef (*copyDescription)(const void* inInfo);
};

CFTypeID CFRunLoopTimerGetTypeID();
// A timer with an interval of 0 or less fires once and is then invalidated. A repeating
// timer keeps to the grid of its first fire date: after a late or missed firing the next
// one is the first slot of that grid still in the future.
CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef inAllocator, CFAbsoluteTime inFireDate, CFTimeInterval inInterval,
                                       CFOptionFlags inFlags, CFIndex inOrder, CFRunLoopTimerCallBack inCallout,
                                       CFRunLoopTimerContext* inContext);
CFAbsoluteTime CFRunLoopTimerGetNextFireDate(CFRunLoopTimerRef inTimer);
void CFRunLoopTimerSetNextFireDate(CFRunLoopTimerRef inTimer, CFAbsoluteTime inFireDate);
CFTimeInterval CFRunLoopTimerGetInterval(CFRunLoopTimerRef inTimer);
Boolean CFRunLoopTimerDoesRepeat(CFRunLoopTimerRef inTimer);
CFIndex CFRunLoopTimerGetOrder(CFRunLoopTimerRef inTimer);
void CFRunLoopTimerGetContext(CFRunLoopTimerRef inTimer, CFRunLoopTimerContext* outContext);
// Removes the timer from its run loop; it never fires again.
void CFRunLoopTimerInvalidate(CFRunLoopTimerRef inTimer);
Boolean CFRunLoopTimerIsValid(CFRunLoopTimerRef inTimer);

// Port extension for hosts with an event loop of their own: a descriptor that is readable
// whenever the run loop has work in its default mode (a timer due, a source ready, a
// wake-up). The host watches it and then calls CFRunLoopRunInMode(kCFRunLoopDefaultMode,
// 0, true) on the run loop's thread, which does the work without blocking. The descriptor
// belongs to the run loop; do not close it.
int _CFRunLoopGetWaitDescriptor(CFRunLoopRef inRunLoop);
