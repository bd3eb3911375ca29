// The Memory Manager: nonrelocatable blocks (Ptr) and relocatable blocks reached through a
// master pointer (Handle). Every call records its status for MemError.
#pragma once

#include <MacTypes.h>

Ptr NewPtr(Size inByteCount);
Ptr NewPtrClear(Size inByteCount);
void DisposePtr(Ptr inPtr);
Size GetPtrSize(Ptr inPtr);

Handle NewHandle(Size inByteCount);
Handle NewHandleClear(Size inByteCount);
void DisposeHandle(Handle inHandle);
Size GetHandleSize(Handle inHandle);
// Keeps the contents up to the smaller of the two sizes. A handle that cannot be resized is
// left exactly as it was and MemError answers memFullErr.
void SetHandleSize(Handle inHandle, Size inNewSize);

// A locked handle's block never moves, so *handle stays valid while it is locked; growing it
// beyond the room its block has fails instead of moving it.
void HLock(Handle inHandle);
void HUnlock(Handle inHandle);

// The handle's flags: locked, purgeable, resource (as the platform defines the bits).
enum : SInt8 {
    kHandleIsResourceBit = 5,
    kHandlePurgeableBit = 6,
    kHandleLockedBit = 7,
    kHandleIsResourceMask = 0x20,
    kHandlePurgeableMask = 0x40,
    kHandleLockedMask = SInt8(0x80),
};
SInt8 HGetState(Handle inHandle);
void HSetState(Handle inHandle, SInt8 inFlags);

// Temporary memory is the system's: what the kernel could give without taking it from other
// processes (the page cache it can drop counts), and the largest block this process may still
// map under its address-space limit (the largest Size when it has none). *outGrow, when
// asked, is 0: the system's memory does not grow on request.
Size TempFreeMem();
Size TempMaxMem(Size* outGrow);

// The status of the calling thread's last Memory Manager call.
OSErr MemError();
