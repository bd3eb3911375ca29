#include "RunLoopBridge.h"

#include <CoreFoundation/CFRunLoop.h>

RunLoopBridge::RunLoopBridge() : mNotifier(_CFRunLoopGetWaitDescriptor(CFRunLoopGetMain()), QSocketNotifier::Read)
{
    connect(&mNotifier, &QSocketNotifier::activated, this, &RunLoopBridge::RunDueWork);
}

void RunLoopBridge::RunDueWork()
{
    // Each run handles what is due without waiting; repeat while it keeps finding sources,
    // so that several signalled at once are all handled before Qt waits again.
    while (CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, true) == kCFRunLoopRunHandledSource) {
    }
}
