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

    // File Manager
    dirFulErr = -33,
    dskFulErr = -34,  // no room left on the volume
    nsvErr = -35,     // no such volume
    ioErr = -36,
    bdNamErr = -37,  // a name the file system cannot hold
    fnOpnErr = -38,
    eofErr = -39,  // read past the end of a fork
    posErr = -40,  // a position before the start of a fork
    mFulErr = -41,
    tmfoErr = -42,   // too many files open
    fnfErr = -43,    // file not found
    wPrErr = -44,    // the volume is write-protected
    fLckdErr = -45,  // the file or folder is locked
    vLckdErr = -46,  // the volume is locked
    fBsyErr = -47,   // the file is open, or the folder is not empty
    dupFNErr = -48,  // an item of that name exists
    opWrErr = -49,
    rfNumErr = -51,  // no open fork has that reference number
    permErr = -54,   // the access asked for is not allowed
    wrPermErr = -61,
    dirNFErr = -120,   // directory not found
    badMovErr = -122,  // a folder cannot be moved into itself
    notAFileErr = -1302,
    diffVolErr = -1303,  // the items are on different volumes
    fsDataTooBigErr = -1310,
    errFSUnknownCall = -1400,
    errFSBadFSRef = -1401,
    errFSBadForkName = -1402,
    errFSBadBuffer = -1403,
    errFSBadForkRef = -1404,
    errFSBadInfoBitmap = -1405,
    errFSMissingCatInfo = -1406,
    errFSNotAFolder = -1407,
    errFSForkNotFound = -1409,
    errFSNameTooLong = -1410,
    errFSMissingName = -1411,
    errFSBadPosMode = -1412,
    errFSBadAllocFlags = -1413,
    errFSNoMoreItems = -1417,
    errFSBadItemCount = -1418,
    errFSBadSearchParams = -1419,
    errFSRefsDifferent = -1420,  // both references are valid and name different items
    errFSForkExists = -1421,
    errFSBadIteratorFlags = -1422,
    errFSIteratorNotFound = -1423,
    errFSIteratorNotSupported = -1424,
    errFSQuotaExceeded = -1425,
    afpAccessDenied = -5000,  // the user may not do this to the item

    // Date and time utilities
    kUTCUnderflowErr = -8850,  // before the first moment a UTCDateTime can hold
    kUTCOverflowErr = -8851,

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

    // Resource Manager
    resNotFound = -192,   // no such resource in the files searched
    resFNotFound = -193,  // no open resource file has that reference number
    mapReadErr = -199,    // the file's resource map is damaged

    // Text Encoding Converter
    kTextUnsupportedEncodingErr = -8738,  // no such encoding, or none for the script information given
    kTextMalformedInputErr = -8739,
    kTextUndefinedElementErr = -8740,

    // Launch Services
    kLSAppInTrashErr = -10660,
    kLSUnknownErr = -10810,
    kLSNotAnApplicationErr = -10811,
    kLSNotInitializedErr = -10812,
    kLSDataUnavailableErr = -10813,
    kLSApplicationNotFoundErr = -10814,  // nothing is installed that opens the item
    kLSUnknownTypeErr = -10815,
    kLSDataTooOldErr = -10816,
    kLSDataErr = -10817,
    kLSLaunchInProgressErr = -10818,
    kLSNotRegisteredErr = -10819,
    kLSAppDoesNotClaimTypeErr = -10820,
    kLSAppDoesNotSupportSchemeWarning = -10821,
    kLSServerCommunicationErr = -10822,
    kLSCannotSetInfoErr = -10823,
    kLSNoRegistrationInfoErr = -10824,
    kLSIncompatibleSystemVersionErr = -10825,
    kLSNoLaunchPermissionErr = -10826,
    kLSNoExecutableErr = -10827,  // the program cannot be executed, or the bundle has none
    kLSNoClassicEnvironmentErr = -10828,
    kLSMultipleSessionsNotSupportedErr = -10829,
};
