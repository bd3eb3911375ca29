// The Notification Manager: a note for the user from a program that has no window of its own.
// Each note becomes one desktop notification on the session bus; its response routine runs on
// the main run loop once the notification is closed, for whatever reason.
#pragma once

#include <Carbon/MacErrors.h>
#include <MacTypes.h>

struct NMRec;
using NMRecPtr = NMRec*;
using NMProcPtr = void (*)(NMRecPtr inRecord);
// A routine descriptor is the routine itself here: there is no other calling convention.
using NMUPP = NMProcPtr;

using QElemPtr = struct QElem*;

// The queue type every note must carry.
enum : SInt16 { nmType = 8 };

enum : OSErr {
    qErr = -1,         // NMRemove: the record is not installed
    notOpenErr = -28,  // there is no session bus to post on
    nmTypErr = -299,   // the record's queue type is not nmType
};

struct NMRec {
    QElemPtr qLink;
    SInt16 qType;  // nmType
    SInt16 nmFlags;
    long nmPrivate;
    SInt16 nmReserved;
    SInt16 nmMark;    // not shown: there is no application menu to mark
    Handle nmIcon;    // not shown: the notification carries the application's name instead
    Handle nmSound;   // NULL: silent; anything else asks for the system alert sound
    StringPtr nmStr;  // the message (UTF-8, or Mac Roman when it is not valid UTF-8); NULL: none
    NMUPP nmResp;     // called with the record once the note is closed; NULL: nothing
    long nmRefCon;
};

NMUPP NewNMUPP(NMProcPtr inRoutine);
void DisposeNMUPP(NMUPP inRoutine);
void InvokeNMUPP(NMRecPtr inRecord, NMUPP inRoutine);

// Both are for the main thread, whose run loop runs the response routines.
// Posts the note (its message is copied, so the text may go away once this returns) and keeps
// the record until the notice is closed. notOpenErr without a session bus, ioErr when the
// notification server refuses or there is none; nothing is posted then.
OSErr NMInstall(NMRecPtr inRecord);
// Closes the record's notice; its response routine is not called. qErr when it is not up.
OSErr NMRemove(NMRecPtr inRecord);
