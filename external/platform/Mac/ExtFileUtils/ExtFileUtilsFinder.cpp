// Finder information: reading and writing it, changing flags, creator and type, and moving
// the parent folder's date so that a window showing the folder notices the change.
#include "ExtFileUtilsFinder.h"

#include <cstring>

namespace ExtFileUtils {

namespace {

bool SameDate(const UTCDateTime& inFirst, const UTCDateTime& inSecond)
{
    return inFirst.highSeconds == inSecond.highSeconds && inFirst.lowSeconds == inSecond.lowSeconds &&
           inFirst.fraction == inSecond.fraction;
}

// Observers compare dates, so a change within the clock's resolution must still move the
// date: one second past the old one, carrying into the high seconds.
void MoveForward(UTCDateTime& ioDate)
{
    if (ioDate.lowSeconds == 0xFFFFFFFF)
        ++ioDate.highSeconds;
    ++ioDate.lowSeconds;
}

// The catalog record keeps Finder information as bytes; these give it its shape.
FinderInfo FinderInfoOf(const FSCatalogInfo& inInfo)
{
    FinderInfo finderInfo;
    std::memcpy(&finderInfo, inInfo.finderInfo, sizeof finderInfo);
    return finderInfo;
}

void SetFinderInfoOf(FSCatalogInfo& ioInfo, const FinderInfo& inFinderInfo)
{
    std::memcpy(ioInfo.finderInfo, &inFinderInfo, sizeof ioInfo.finderInfo);
}

}  // namespace

OSErr BumpDateWithClock(const FSRef* inRef, Clock inClock)
{
    FSCatalogInfo info;
    FSRef parent;
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoNodeFlags | kFSCatInfoContentMod, &info, nullptr, nullptr,
                                    &parent);
    if (status != noErr)
        return status;
    UTCDateTime old = info.contentModDate;
    if (OSStatus clock = inClock(&info.contentModDate, kUTCDefaultOptions); clock != noErr)
        return OSErr(clock);
    if (SameDate(info.contentModDate, old))
        MoveForward(info.contentModDate);
    // The date is only a hint to observers; an item whose date cannot be set is still fine.
    if (FSSetCatalogInfo(inRef, kFSCatInfoContentMod, &info) != noErr)
        return noErr;
    bool folder = info.nodeFlags & kFSNodeIsDirectoryMask;
    FNNotify(folder ? inRef : &parent, kFNDirectoryModifiedMessage, 0);
    return noErr;
}

}  // namespace ExtFileUtils

using namespace ExtFileUtils;

OSErr FSBumpDate(const FSRef* inRef) { return BumpDateWithClock(inRef, GetUTCDateTime); }

OSErr FSGetFinderInfo(const FSRef* inRef, FinderInfo* outInfo, ExtendedFinderInfo* outExtendedInfo,
                      Boolean* outIsDirectory)
{
    FSCatalogInfoBitmap which = InfoIf(outInfo, kFSCatInfoFinderInfo) | InfoIf(outExtendedInfo, kFSCatInfoFinderXInfo) |
                                InfoIf(outIsDirectory, kFSCatInfoNodeFlags);
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(inRef, which, &info, nullptr, nullptr, nullptr);
    if (status != noErr)
        return status;
    if (outInfo)
        std::memcpy(outInfo, info.finderInfo, sizeof *outInfo);
    if (outExtendedInfo)
        std::memcpy(outExtendedInfo, info.extFinderInfo, sizeof *outExtendedInfo);
    if (outIsDirectory)
        *outIsDirectory = (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
    return noErr;
}

OSErr FSSetFinderInfo(const FSRef* inRef, const FinderInfo* inInfo, const ExtendedFinderInfo* inExtendedInfo)
{
    FSCatalogInfo info{};
    if (inInfo)
        std::memcpy(info.finderInfo, inInfo, sizeof info.finderInfo);
    if (inExtendedInfo)
        std::memcpy(info.extFinderInfo, inExtendedInfo, sizeof info.extFinderInfo);
    FSCatalogInfoBitmap which = InfoIf(inInfo, kFSCatInfoFinderInfo) | InfoIf(inExtendedInfo, kFSCatInfoFinderXInfo);
    return FSSetCatalogInfo(inRef, which, &info);
}

OSErr FSChangeFinderFlags(const FSRef* inRef, Boolean inSetBits, UInt16 inFlagBits)
{
    FSCatalogInfo info;
    FSRef parent;
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoFinderInfo, &info, nullptr, nullptr, &parent);
    if (status != noErr)
        return status;
    FinderInfo finderInfo = FinderInfoOf(info);
    UInt16 flags = finderInfo.finderFlags;
    finderInfo.finderFlags = inSetBits ? UInt16(flags | inFlagBits) : UInt16(flags & ~inFlagBits);
    SetFinderInfoOf(info, finderInfo);
    if (status = FSSetCatalogInfo(inRef, kFSCatInfoFinderInfo, &info); status != noErr)
        return status;
    FSBumpDate(&parent);
    return noErr;
}

OSErr FSChangeCreatorType(const FSRef* inRef, OSType inFileCreator, OSType inFileType)
{
    FSCatalogInfo info;
    FSRef parent;
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoNodeFlags | kFSCatInfoFinderInfo, &info, nullptr, nullptr,
                                    &parent);
    if (status != noErr)
        return status;
    if (info.nodeFlags & kFSNodeIsDirectoryMask)
        return notAFileErr;
    FinderInfo finderInfo = FinderInfoOf(info);
    if (inFileCreator != 0)
        finderInfo.fileCreator = inFileCreator;
    if (inFileType != 0)
        finderInfo.fileType = inFileType;
    SetFinderInfoOf(info, finderInfo);
    if (status = FSSetCatalogInfo(inRef, kFSCatInfoFinderInfo, &info); status != noErr)
        return status;
    FSBumpDate(&parent);
    return noErr;
}

OSErr FSSetInvisible(const FSRef* inRef) { return FSChangeFinderFlags(inRef, true, kIsInvisible); }
OSErr FSClearInvisible(const FSRef* inRef) { return FSChangeFinderFlags(inRef, false, kIsInvisible); }
OSErr FSSetNameLocked(const FSRef* inRef) { return FSChangeFinderFlags(inRef, true, kNameLocked); }
OSErr FSClearNameLocked(const FSRef* inRef) { return FSChangeFinderFlags(inRef, false, kNameLocked); }
OSErr FSSetIsStationery(const FSRef* inRef) { return FSChangeFinderFlags(inRef, true, kIsStationery); }
OSErr FSClearIsStationery(const FSRef* inRef) { return FSChangeFinderFlags(inRef, false, kIsStationery); }
OSErr FSSetHasCustomIcon(const FSRef* inRef) { return FSChangeFinderFlags(inRef, true, kHasCustomIcon); }
OSErr FSClearHasCustomIcon(const FSRef* inRef) { return FSChangeFinderFlags(inRef, false, kHasCustomIcon); }
OSErr FSClearHasBeenInited(const FSRef* inRef) { return FSChangeFinderFlags(inRef, false, kHasBeenInited); }

OSErr FSCopyFileMgrAttributes(const FSRef* inSourceRef, const FSRef* inDestRef, Boolean inCopyLockBit)
{
    constexpr FSCatalogInfoBitmap kWhich = kFSCatInfoSettableInfo & ~kFSCatInfoTextEncoding;
    FSCatalogInfo info, dest;
    OSErr status = FSGetCatalogInfo(inSourceRef, kWhich, &info, nullptr, nullptr, nullptr);
    if (status == noErr && !inCopyLockBit)
        status = FSGetCatalogInfo(inDestRef, kFSCatInfoNodeFlags, &dest, nullptr, nullptr, nullptr);
    if (status != noErr)
        return status;
    // The lock is the owner's write permission, so the permissions carry it too; keep the
    // destination's unless the lock is to be copied.
    if (!inCopyLockBit) {
        bool locked = dest.nodeFlags & kFSNodeLockedMask;
        info.nodeFlags = UInt16((info.nodeFlags & ~kFSNodeLockedMask) | (locked ? kFSNodeLockedMask : 0));
        info.permissionInfo.mode = UInt16(locked ? info.permissionInfo.mode & ~0200 : info.permissionInfo.mode | 0200);
    }
    return FSSetCatalogInfo(inDestRef, kWhich, &info);
}
