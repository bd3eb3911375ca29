// The main event queue and the application's handlers. The queue is a source on the main run
// loop while it holds events, and only then, so an idle process holds no run-loop objects.
#include "EventObject.h"

#include <CoreFoundation/CFRunLoop.h>

#include <array>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

struct OpaqueEventQueueRef {};
struct OpaqueEventTargetRef {};

struct OpaqueEventHandlerRef {
    EventHandlerUPP routine;
    std::vector<EventTypeSpec> types;
    void* userData;
    bool removed = false;

    bool Takes(EventRef inEvent) const
    {
        for (const EventTypeSpec& type : types)
            if (type.eventClass == inEvent->eventClass && type.eventKind == inEvent->kind)
                return true;
        return false;
    }
};

using Handler = std::shared_ptr<OpaqueEventHandlerRef>;

// Where a dispatch stands in the handlers that were installed when it began.
struct OpaqueEventHandlerCallRef {
    const std::vector<Handler>& handlers;
    std::size_t next;
};

namespace {

OpaqueEventQueueRef sMainQueue;
OpaqueEventTargetRef sApplication;

class Queue {
public:
    OSStatus Post(EventRef inEvent, EventPriority inPriority)
    {
        std::lock_guard guard(mLock);
        if (inEvent->queued)
            return eventAlreadyPostedErr;
        if (mSource == nullptr && !AttachSource())
            return eventInternalErr;
        inEvent->queued = true;
        mEvents[Level(inPriority)].push_back(RetainEvent(inEvent));
        CFRunLoopSourceSignal(mSource);
        CFRunLoopWakeUp(CFRunLoopGetMain());
        return noErr;
    }

    ItemCount Count()
    {
        std::lock_guard guard(mLock);
        ItemCount count = 0;
        for (const auto& level : mEvents)
            count += level.size();
        return count;
    }

    // Handlers, like the dispatch, belong to the main thread.
    std::vector<Handler> handlers;  // newest first

private:
    static std::size_t Level(EventPriority inPriority)
    {
        return inPriority <= kEventPriorityLow ? 0 : inPriority >= kEventPriorityHigh ? 2 : 1;
    }

    bool AttachSource()
    {
        CFRunLoopSourceContext context{};
        context.info = this;
        context.perform = Perform;
        mSource = CFRunLoopSourceCreate(nullptr, 0, &context);
        if (mSource != nullptr)
            CFRunLoopAddSource(CFRunLoopGetMain(), mSource, kCFRunLoopCommonModes);
        return mSource != nullptr;
    }

    // The next event by priority, or nullptr once the queue is empty; the source is then
    // detached in the same step, so that an event posted meanwhile by another thread makes a
    // new one rather than signalling one about to go.
    EventRef Next(CFRunLoopSourceRef& outDetached)
    {
        std::lock_guard guard(mLock);
        for (std::size_t level = mEvents.size(); level-- > 0;) {
            if (mEvents[level].empty())
                continue;
            EventRef event = mEvents[level].front();
            mEvents[level].pop_front();
            event->queued = false;
            return event;
        }
        outDetached = std::exchange(mSource, nullptr);
        return nullptr;
    }

    static void Perform(void* inInfo)
    {
        auto& queue = *static_cast<Queue*>(inInfo);
        CFRunLoopSourceRef detached = nullptr;
        while (EventRef event = queue.Next(detached)) {
            std::vector<Handler> handlers = queue.handlers;  // a handler may install or remove others
            OpaqueEventHandlerCallRef call{handlers, 0};
            CallNextEventHandler(&call, event);
            ReleaseEvent(event);
        }
        if (detached != nullptr) {
            CFRunLoopSourceInvalidate(detached);
            CFRelease(detached);
        }
    }

    std::mutex mLock;
    std::array<std::deque<EventRef>, 3> mEvents;  // by priority, low to high
    CFRunLoopSourceRef mSource = nullptr;
};

Queue& TheQueue()
{
    static Queue* sQueue = new Queue;  // never destroyed: other threads may post until exit
    return *sQueue;
}

}  // namespace

EventHandlerUPP NewEventHandlerUPP(EventHandlerProcPtr inRoutine) { return inRoutine; }

void DisposeEventHandlerUPP(EventHandlerUPP) {}

EventQueueRef GetMainEventQueue() { return &sMainQueue; }

EventQueueRef GetCurrentEventQueue() { return &sMainQueue; }

EventTargetRef GetApplicationEventTarget() { return &sApplication; }

OSStatus PostEventToQueue(EventQueueRef inQueue, EventRef inEvent, EventPriority inPriority)
{
    if (inQueue != &sMainQueue || inEvent == nullptr)
        return paramErr;
    return TheQueue().Post(inEvent, inPriority);
}

ItemCount GetNumEventsInQueue(EventQueueRef inQueue) { return inQueue == &sMainQueue ? TheQueue().Count() : 0; }

OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler, ItemCount inNumTypes,
                             const EventTypeSpec* inList, void* inUserData, EventHandlerRef* outRef)
{
    if (inTarget != &sApplication || inHandler == nullptr || (inList == nullptr && inNumTypes > 0))
        return paramErr;
    auto handler = std::make_shared<OpaqueEventHandlerRef>(
        OpaqueEventHandlerRef{inHandler, std::vector<EventTypeSpec>(inList, inList + inNumTypes), inUserData});
    auto& handlers = TheQueue().handlers;
    handlers.insert(handlers.begin(), handler);
    if (outRef != nullptr)
        *outRef = handler.get();
    return noErr;
}

OSStatus RemoveEventHandler(EventHandlerRef inHandler)
{
    auto& handlers = TheQueue().handlers;
    for (auto at = handlers.begin(); at != handlers.end(); ++at) {
        if (at->get() != inHandler)
            continue;
        (*at)->removed = true;  // a dispatch under way skips it
        handlers.erase(at);
        return noErr;
    }
    return paramErr;
}

OSStatus CallNextEventHandler(EventHandlerCallRef inCall, EventRef inEvent)
{
    if (inCall == nullptr || inEvent == nullptr)
        return paramErr;
    while (inCall->next < inCall->handlers.size()) {
        const Handler& handler = inCall->handlers[inCall->next++];
        if (handler->removed || !handler->Takes(inEvent))
            continue;
        OSStatus status = handler->routine(inCall, inEvent, handler->userData);
        if (status != eventNotHandledErr)
            return status;
    }
    return eventNotHandledErr;
}
