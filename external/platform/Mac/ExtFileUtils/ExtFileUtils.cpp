// Queries about one item, lock checks, and forks.
#include "ExtFileUtilsInternal.h"

#include <cstring>

using namespace ExtFileUtils;

OSErr FSGetVRefNum(const FSRef* inRef, FSVolumeRefNum* outVRefNum)
{
    if (outVRefNum == nullptr)
        return paramErr;
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoVolume, &info, nullptr, nullptr, nullptr);
    if (status == noErr)
        *outVRefNum = info.volume;
    return status;
}

OSErr FSGetParentRef(const FSRef* inRef, FSRef* outParentRef)
{
    if (outParentRef == nullptr)
        return paramErr;
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoNodeID, &info, nullptr, nullptr, outParentRef);
    // A volume's root folder has no parent; callers test for the all-zero reference.
    if (status == noErr && info.nodeID == UInt32(fsRtDirID))
        std::memset(outParentRef, 0, sizeof *outParentRef);
    return status;
}

OSErr FSGetFileDirName(const FSRef* inRef, HFSUniStr255* outName)
{
    if (outName == nullptr)
        return paramErr;
    return FSGetCatalogInfo(inRef, kFSCatInfoNone, nullptr, outName, nullptr, nullptr);
}

OSErr FSGetNodeID(const FSRef* inRef, long* outNodeID, Boolean* outIsDirectory)
{
    FSCatalogInfoBitmap which = InfoIf(outNodeID, kFSCatInfoNodeID) | InfoIf(outIsDirectory, kFSCatInfoNodeFlags);
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(inRef, which, &info, nullptr, nullptr, nullptr);
    if (status != noErr)
        return status;
    if (outNodeID)
        *outNodeID = long(info.nodeID);
    if (outIsDirectory)
        *outIsDirectory = (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
    return noErr;
}

OSErr FSGetUserPrivilegesPermissions(const FSRef* inRef, UInt8* outUserPrivileges, UInt32 outPermissions[4])
{
    FSCatalogInfoBitmap which = InfoIf(outUserPrivileges, kFSCatInfoUserPrivs) |
                                InfoIf(outPermissions, kFSCatInfoPermissions);
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(inRef, which, &info, nullptr, nullptr, nullptr);
    if (status != noErr)
        return status;
    if (outUserPrivileges)
        *outUserPrivileges = info.userPrivileges;
    if (outPermissions)
        std::memcpy(outPermissions, info.permissions, sizeof info.permissions);
    return noErr;
}

Boolean FSRefValid(const FSRef* inRef)
{
    return FSGetCatalogInfo(inRef, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr) == noErr;
}

OSErr FSCheckLock(const FSRef* inRef)
{
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoNodeFlags | kFSCatInfoVolume, &info, nullptr, nullptr, nullptr);
    if (status != noErr)
        return status;
    if (info.nodeFlags & kFSNodeLockedMask)
        return fLckdErr;
    FSVolumeInfo volume;
    status = FSGetVolumeInfo(info.volume, 0, nullptr, kFSVolInfoFlags, &volume, nullptr, nullptr);
    return status != noErr ? status : VolumeLockStatus(volume.flags);
}

OSErr FSGetForkSizes(const FSRef* inRef, UInt64* outDataLogicalSize, UInt64* outRsrcLogicalSize)
{
    FSCatalogInfoBitmap which = InfoIf(outDataLogicalSize, kFSCatInfoDataSizes) |
                                InfoIf(outRsrcLogicalSize, kFSCatInfoRsrcSizes);
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(inRef, which, &info, nullptr, nullptr, nullptr);
    if (status != noErr)
        return status;
    if (outDataLogicalSize)
        *outDataLogicalSize = info.dataLogicalSize;
    if (outRsrcLogicalSize)
        *outRsrcLogicalSize = info.rsrcLogicalSize;
    return noErr;
}

OSErr FSGetTotalForkSizes(const FSRef* inRef, UInt64* outTotalLogicalSize, UInt64* outTotalPhysicalSize,
                          ItemCount* outForkCount)
{
    if (outTotalLogicalSize)
        *outTotalLogicalSize = 0;
    if (outTotalPhysicalSize)
        *outTotalPhysicalSize = 0;
    if (outForkCount)
        *outForkCount = 0;
    CatPositionRec forkIterator{};
    OSErr status;
    for (;;) {
        SInt64 logical = 0;
        UInt64 physical = 0;
        status = FSIterateForks(inRef, &forkIterator, nullptr, outTotalLogicalSize ? &logical : nullptr,
                                outTotalPhysicalSize ? &physical : nullptr);
        if (status != noErr)
            break;
        if (outTotalLogicalSize)
            *outTotalLogicalSize += UInt64(logical);
        if (outTotalPhysicalSize)
            *outTotalPhysicalSize += physical;
        if (outForkCount)
            ++*outForkCount;
    }
    return status == errFSNoMoreItems ? OSErr(noErr) : status;
}

OSErr FSCopyFork(SInt16 inSourceRefNum, SInt16 inDestRefNum, void* inBuffer, ByteCount inBufferSize)
{
    if (inBuffer == nullptr || inBufferSize == 0)
        return paramErr;
    SInt64 size;
    if (OSErr status = FSGetForkSize(inSourceRefNum, &size); status != noErr)
        return status;
    for (SInt64 offset = 0; offset < size;) {
        ByteCount read = 0, written = 0;
        OSErr status = FSReadFork(inSourceRefNum, fsFromStart, offset, inBufferSize, inBuffer, &read);
        if (read == 0)
            return status != noErr ? status : OSErr(eofErr);  // the source shrank meanwhile
        status = FSWriteFork(inDestRefNum, fsFromStart, offset, read, inBuffer, &written);
        if (status != noErr)
            return status;
        offset += SInt64(read);
    }
    return FSSetForkSize(inDestRefNum, fsFromStart, size);
}

OSErr FileRefNumGetFSRef(SInt16 inRefNum, FSRef* outRef)
{
    if (outRef == nullptr)
        return paramErr;
    return FSGetForkCBInfo(inRefNum, kFSInvalidVolumeRefNum, nullptr, nullptr, nullptr, outRef, nullptr);
}
