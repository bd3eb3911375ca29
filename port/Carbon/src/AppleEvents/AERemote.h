// Sending an event to another process that receives events through this system.
#pragma once

#include <Carbon/AppleEvents.h>
#include <Carbon/Processes.h>

namespace carbon::ae {

// procNotFound when the process has ended, connectionInvalid when it runs but does not
// receive events (it installed no handler), errAETimeout when the reply it waits for does
// not come in time. Otherwise the receiver's answer: noErr, or errAEEventNotHandled.
OSErr SendOverSocket(const AppleEvent& inEvent, const ProcessSerialNumber& inPSN, AppleEvent* outReply,
                     bool inWantsReply, long inTimeOutInTicks);

}  // namespace carbon::ae
