// Apple events between processes: event classes and IDs, keywords, sending, and the
// handlers that receive events.
#pragma once

#include <Carbon/AEDataModel.h>

using SRefCon = void*;
using AESendMode = SInt32;
using AESendPriority = SInt16;

enum : AEEventClass { kCoreEventClass = FourCC("aevt") };

enum : AEEventID {
    kAEOpenApplication = FourCC("oapp"),
    kAEOpenDocuments = FourCC("odoc"),
    kAEPrintDocuments = FourCC("pdoc"),
    kAEReopenApplication = FourCC("rapp"),
    kAEQuitApplication = FourCC("quit"),
    kAEAnswer = FourCC("ansr"),
};

enum : AEKeyword {
    keyDirectObject = FourCC("----"),
    keyErrorNumber = FourCC("errn"),
    keyErrorString = FourCC("errs"),
    keyProcessSerialNumber = FourCC("psn "),
};

// Attributes.
enum : AEKeyword {
    keyTransactionIDAttr = FourCC("tran"),
    keyReturnIDAttr = FourCC("rtid"),
    keyEventClassAttr = FourCC("evcl"),
    keyEventIDAttr = FourCC("evid"),
    keyAddressAttr = FourCC("addr"),
    keyOptionalKeywordAttr = FourCC("optk"),
    keyTimeoutAttr = FourCC("timo"),
    keyInteractLevelAttr = FourCC("inte"),
    keyEventSourceAttr = FourCC("esrc"),  // typeSInt16, one of AEEventSource
    keyMissedKeywordAttr = FourCC("miss"),
    keyOriginalAddressAttr = FourCC("from"),  // the sender, on events from another process
};

enum AEEventSource : SInt16 {
    kAEUnknownSource = 0,
    kAEDirectCall = 1,
    kAESameProcess = 2,
    kAELocalProcess = 3,
    kAERemoteProcess = 4,
};

// Send modes: one of the reply modes, with any of the flags.
enum : AESendMode {
    kAENoReply = 0x00000001,
    kAEQueueReply = 0x00000002,
    kAEWaitReply = 0x00000003,
    kAEDontReconnect = 0x00000080,
    kAEWantReceipt = 0x00000200,
    kAENeverInteract = 0x00000010,
    kAECanInteract = 0x00000020,
    kAEAlwaysInteract = 0x00000030,
    kAECanSwitchLayer = 0x00000040,
    kAEDontRecord = 0x00001000,
    kAEDontExecute = 0x00002000,
    kAEProcessNonReplyEvents = 0x00008000,
};

enum : AESendPriority {
    kAENormalPriority = 0,
    kAEHighPriority = 1,
};

// Time-outs are in ticks (1/60 s).
enum : long {
    kAEDefaultTimeout = -1,  // about a minute
    kNoTimeOut = -2,
};

// Handlers. A handler fills the reply (when the sender wants one) and answers a status,
// which reaches the sender as the reply's keyErrorNumber.
using AEEventHandlerProcPtr = OSErr (*)(const AppleEvent* inEvent, AppleEvent* ioReply, SRefCon inRefcon);
using AEEventHandlerUPP = AEEventHandlerProcPtr;

inline AEEventHandlerUPP NewAEEventHandlerUPP(AEEventHandlerProcPtr inProc) { return inProc; }
inline void DisposeAEEventHandlerUPP(AEEventHandlerUPP) {}

// One process-wide table. typeWildCard as class or ID matches any; the most specific
// handler wins. The system table is the same table here. While a process has handlers it
// accepts events from other processes of the same user, on its main run loop.
OSErr AEInstallEventHandler(AEEventClass inEventClass, AEEventID inEventID, AEEventHandlerUPP inHandler,
                            SRefCon inRefcon, Boolean inIsSysHandler);
OSErr AERemoveEventHandler(AEEventClass inEventClass, AEEventID inEventID, AEEventHandlerUPP inHandler,
                           Boolean inIsSysHandler);
OSErr AEGetEventHandler(AEEventClass inEventClass, AEEventID inEventID, AEEventHandlerUPP* outHandler,
                        SRefCon* outRefcon, Boolean inIsSysHandler);

// Procedures that AESend calls while it waits for a reply. There is no event record to
// give them on this system, so AESend accepts them and does not call them.
struct EventRecord;
using RgnHandle = struct OpaqueRgnHandle*;
using AEIdleProcPtr = Boolean (*)(EventRecord* ioEvent, long* outSleepTime, RgnHandle* outMouseRgn);
using AEFilterProcPtr = Boolean (*)(EventRecord* inEvent, long inReturnID, long inTransactionID,
                                    const AEAddressDesc* inSender);
using AEIdleUPP = AEIdleProcPtr;
using AEFilterUPP = AEFilterProcPtr;

// Sends an event to the process its keyAddressAttr names (typeProcessSerialNumber or
// typeKernelProcessID). The quit event asks another process to end (SIGTERM, and only to
// the very process the serial number names); other events reach processes that installed
// handlers. Events to the calling process go straight to its handler. With kAEWaitReply,
// *outReply receives the reply event; otherwise it is a null descriptor.
OSErr AESend(const AppleEvent* inEvent, AppleEvent* outReply, AESendMode inSendMode, AESendPriority inSendPriority,
             long inTimeOutInTicks, AEIdleUPP inIdleProc, AEFilterUPP inFilterProc);
