// The platform's status codes that the system-service calls answer. Zero (noErr) is success.
#pragma once

#include <MacTypes.h>

enum : OSStatus {
    paramErr = -50,  // an argument is out of range or missing
    memFullErr = -108,
    nilHandleErr = -109,
    memWZErr = -111,  // the memory was already given back
    procNotFound = -600,
    connectionInvalid = -609,

    // Apple Event Manager
    errAECoercionFail = -1700,
    errAEDescNotFound = -1701,
    errAECorruptData = -1702,
    errAEWrongDataType = -1703,
    errAENotAEDesc = -1704,
    errAEBadListItem = -1705,
    errAENewerVersion = -1706,
    errAENotAppleEvent = -1707,
    errAEEventNotHandled = -1708,
    errAEReplyNotValid = -1709,
    errAEUnknownSendMode = -1710,
    errAEWaitCanceled = -1711,
    errAETimeout = -1712,
    errAENoUserInteraction = -1713,
    errAENotASpecialFunction = -1714,
    errAEParamMissed = -1715,
    errAEUnknownAddressType = -1716,
    errAEHandlerNotFound = -1717,
    errAEReplyNotArrived = -1718,
    errAEIllegalIndex = -1719,
    errAEImpossibleRange = -1720,
    errAEWrongNumberArgs = -1721,
    errAEBufferTooSmall = -1741,
    errAEEventNotPermitted = -1743,
    errAEEventFailed = -10000,
    errAEPrivilegeError = -10004,  // the sender may not send the event to that process

    // Text Encoding Converter
    kTextUnsupportedEncodingErr = -8738,  // no such encoding, or none for the script information given
    kTextMalformedInputErr = -8739,
    kTextUndefinedElementErr = -8740,
};
