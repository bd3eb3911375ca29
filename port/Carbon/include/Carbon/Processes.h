// The Process Manager: serial numbers of running processes, the process list, the front
// process and what is known about each process.
#pragma once

#include <CoreFoundation/CFString.h>
#include <MacTypes.h>

#include <sys/types.h>

struct FSRef;

// Names one run of one process. On this system the high word is the process id and the low
// word the low 32 bits of the process's start time (clock ticks since boot), so that a
// serial number stops matching when its process ends, even after the id is reused. No real
// process has id 0, so the constants below never name one by accident.
struct ProcessSerialNumber {
    UInt32 highLongOfPSN;
    UInt32 lowLongOfPSN;
};
using ProcessSerialNumberPtr = ProcessSerialNumber*;

// Values of lowLongOfPSN with a high word of zero.
enum : UInt32 {
    kNoProcess = 0,       // the start of the process list
    kSystemProcess = 1,   // the first process of the system (process id 1)
    kCurrentProcess = 2,  // the calling process
};

// processMode flags.
enum : UInt32 {
    modeReserved = 0x01000000,
    modeControlPanel = 0x00080000,
    modeLaunchDontSwitch = 0x00040000,
    modeDeskAccessory = 0x00020000,
    modeMultiLaunch = 0x00010000,
    modeNeedSuspendResume = 0x00004000,
    modeCanBackground = 0x00001000,
    modeDoesActivateOnFGSwitch = 0x00000800,
    modeOnlyBackground = 0x00000400,
    modeGetFrontClicks = 0x00000200,
    modeGetAppDiedMsg = 0x00000100,
    mode32BitCompatible = 0x00000080,
    modeHighLevelEventAware = 0x00000040,
    modeLocalAndRemoteHLEvents = 0x00000020,
    modeStationeryAware = 0x00000010,
    modeUseTextEditServices = 0x00000008,
    modeDisplayManagerAware = 0x00000004,
};

struct ProcessInfoRec {
    UInt32 processInfoLength;  // set by the caller; at least 60
    StringPtr processName;     // NULL, or room for a Str31
    ProcessSerialNumber processNumber;
    UInt32 processType;       // 'APPL' unless the application's bundle says otherwise
    OSType processSignature;  // '????' unless the application's bundle says otherwise
    UInt32 processMode;
    Ptr processLocation;                  // always NULL: processes have no partition here
    UInt32 processSize;                   // resident size in bytes, at most 0xFFFFFFFF
    UInt32 processFreeMem;                // always 0, for the same reason
    ProcessSerialNumber processLauncher;  // the parent process, or kNoProcess
    UInt32 processLaunchDate;             // ticks (1/60 s) since boot when it started
    UInt32 processActiveTime;             // processor time used, in ticks
    FSRef* processAppRef;                 // NULL, or where to put the application file
};
using ProcessInfoRecPtr = ProcessInfoRec*;

OSErr GetCurrentProcess(ProcessSerialNumber* outPSN);
// The process whose window is active on the X display when there is one, else the
// foreground process group of the controlling terminal; procNotFound when neither answers.
OSErr GetFrontProcess(ProcessSerialNumber* outPSN);
// Replaces *ioPSN by the next process in process-id order, starting from kNoProcess;
// procNotFound after the last one. A serial number whose process has ended still finds the
// processes after it, so a walk survives processes that end during it.
OSErr GetNextProcess(ProcessSerialNumber* ioPSN);
OSErr GetProcessInformation(const ProcessSerialNumber* inPSN, ProcessInfoRec* ioInfo);
OSErr SameProcess(const ProcessSerialNumber* inPSN1, const ProcessSerialNumber* inPSN2, Boolean* outResult);

// The bundle that holds the process's executable (<bundle>/Contents/MacOS/<program>), or the
// executable itself for a program that lives in no bundle; procNotFound for a process that
// has ended, fnfErr when its executable cannot be told (another user's process, or a file
// that is gone).
OSStatus GetProcessBundleLocation(const ProcessSerialNumber* inPSN, FSRef* outLocation);

OSStatus GetProcessPID(const ProcessSerialNumber* inPSN, pid_t* outPID);
OSStatus GetProcessForPID(pid_t inPID, ProcessSerialNumber* outPSN);
// The whole process name, which processName cuts to 31 bytes.
OSStatus CopyProcessName(const ProcessSerialNumber* inPSN, CFStringRef* outName);
