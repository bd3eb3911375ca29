// The Carbon Event Manager, as far as programs without windows use it: events of a class and
// kind carrying typed parameters, posted to the main event queue and handed, on the main run
// loop, to the handlers installed on the application.
#pragma once

#include <Carbon/AEDataModel.h>
#include <Carbon/MacErrors.h>
#include <CoreFoundation/CFBase.h>

using EventRef = struct OpaqueEventRef*;
using EventQueueRef = struct OpaqueEventQueueRef*;
using EventTargetRef = struct OpaqueEventTargetRef*;
using EventHandlerRef = struct OpaqueEventHandlerRef*;
using EventHandlerCallRef = struct OpaqueEventHandlerCallRef*;

using EventTime = double;  // seconds since the system started
using EventAttributes = UInt32;
using EventPriority = SInt16;
using EventParamName = OSType;
using EventParamType = OSType;

enum : EventAttributes {
    kEventAttributeNone = 0,
    kEventAttributeUserEvent = 1 << 0,
};

// Higher priorities leave the queue first; events of one priority leave in the order posted.
enum : EventPriority {
    kEventPriorityLow = 0,
    kEventPriorityStandard = 1,
    kEventPriorityHigh = 2,
};

enum : OSStatus {
    eventAlreadyPostedErr = -9860,
    eventClassInvalidErr = -9862,
    eventParameterNotFoundErr = -9870,
    eventNotHandledErr = -9874,  // a handler's answer: let the next handler have it
    eventInternalErr = -9868,
};

struct EventTypeSpec {
    UInt32 eventClass;
    UInt32 eventKind;
};

using EventHandlerProcPtr = OSStatus (*)(EventHandlerCallRef inCall, EventRef inEvent, void* inUserData);
// A routine descriptor is the routine itself here: there is no other calling convention.
using EventHandlerUPP = EventHandlerProcPtr;

EventHandlerUPP NewEventHandlerUPP(EventHandlerProcPtr inRoutine);
void DisposeEventHandlerUPP(EventHandlerUPP inRoutine);

// An event with a count of one. inAllocator is accepted and not used.
OSStatus CreateEvent(CFAllocatorRef inAllocator, UInt32 inClassID, UInt32 inKind, EventTime inWhen,
                     EventAttributes inFlags, EventRef* outEvent);
EventRef RetainEvent(EventRef inEvent);
void ReleaseEvent(EventRef inEvent);
ItemCount GetEventRetainCount(EventRef inEvent);

UInt32 GetEventClass(EventRef inEvent);
UInt32 GetEventKind(EventRef inEvent);
EventTime GetEventTime(EventRef inEvent);
EventAttributes GetEventAttributes(EventRef inEvent);

// Stores a copy of the bytes, replacing any parameter of that name.
OSStatus SetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inType, ByteCount inSize,
                           const void* inData);
// Copies at most inBufferSize bytes of the parameter; outActualSize receives its whole size.
// A parameter of another type than inDesiredType (unless typeWildCard, which takes any)
// answers errAECoercionFail.
OSStatus GetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inDesiredType,
                           EventParamType* outActualType, ByteCount inBufferSize, ByteCount* outActualSize,
                           void* outData);

// The queue the main run loop empties; the one queue there is.
EventQueueRef GetMainEventQueue();
EventQueueRef GetCurrentEventQueue();
// Queues the event (retaining it) from any thread; the main run loop hands it to the
// application's handlers. eventAlreadyPostedErr when it is queued already.
OSStatus PostEventToQueue(EventQueueRef inQueue, EventRef inEvent, EventPriority inPriority);
ItemCount GetNumEventsInQueue(EventQueueRef inQueue);

EventTargetRef GetApplicationEventTarget();
// Handlers are asked newest first; one that answers eventNotHandledErr passes the event on.
OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler, ItemCount inNumTypes,
                             const EventTypeSpec* inList, void* inUserData, EventHandlerRef* outRef);
OSStatus RemoveEventHandler(EventHandlerRef inHandler);
// From inside a handler: asks the handlers below it, answering eventNotHandledErr when none takes it.
OSStatus CallNextEventHandler(EventHandlerCallRef inCall, EventRef inEvent);
