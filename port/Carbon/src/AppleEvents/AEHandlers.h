// Handing an event to this process's handler for it, and making the reply it fills.
#pragma once

#include <Carbon/AppleEvents.h>
#include <Carbon/MacErrors.h>

namespace carbon::ae {

// Makes *outReply the empty reply to inEvent: class kCoreEventClass, ID kAEAnswer, with the
// event's return and transaction IDs.
OSErr MakeReply(const AppleEvent& inEvent, AppleEvent* outReply);

// Runs the handler for inEvent with *outReply made by MakeReply. A handler's failure is
// recorded in the reply's keyErrorNumber, and the call still answers noErr: the event was
// handled. With no handler for it, the reply says errAEEventNotHandled and so does the call.
OSErr Dispatch(const AppleEvent& inEvent, AppleEvent* outReply);

}  // namespace carbon::ae
