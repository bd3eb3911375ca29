// Running applications and launching items.
#include "platform/Mac/utils/MacKvxUtils.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>

#include <Carbon/CFURLFSRef.h>
#include <Carbon/LaunchServices.h>
#include <Carbon/MacErrors.h>

#include <cstdio>

namespace kvx {

namespace {

// The size of the record as callers on the original 32-bit platform give it; the fields up
// to the application file are all this walk needs.
constexpr UInt32 kProcessInfoLength = 60;

// The application file of a process, wrapped as a file object; an invalid object when the
// process's file cannot be told (a process of another user, or one whose file is gone).
Gx::FSObject ApplicationOf(const ProcessSerialNumber& inPSN)
{
    FSRef application{};
    ProcessInfoRec info{};
    info.processInfoLength = kProcessInfoLength;
    info.processName = nullptr;
    info.processAppRef = &application;
    GetProcessInformation(&inPSN, &info);
    return Gx::FSObject(application);
}

}  // namespace

bool IsRunning(CFURLRef inAppURL, ProcessSerialNumber* outPSN)
{
    FSRef appRef;
    if (!CFURLGetFSRef(inAppURL, &appRef))
        return false;
    ProcessSerialNumber psn{0, kNoProcess};
    while (GetNextProcess(&psn) != procNotFound) {
        // Compared as files, not by name: a copy of the application elsewhere is not it.
        if (ApplicationOf(psn).IsEqualTo(appRef)) {
            if (outPSN != nullptr)
                *outPSN = psn;
            return true;
        }
    }
    return false;
}

OSStatus LSLaunchItem(CFStringRef inPath)
{
    // Adopted, so that it is released on every way out. A path that makes no URL still goes
    // to Launch Services, which answers for it.
    Gx::CFURL url(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, inPath, kCFURLPOSIXPathStyle, false), false);
    OSStatus status = LSOpenCFURLRef(url, nullptr);
    if (status != noErr)
        std::fprintf(stderr, "LSOpenCFURLRef error: %ld\n", static_cast<long>(status));
    return status;
}

}  // namespace kvx
