// FSGetVolumeInfo: a mounted file system described as a volume.
#include "FSItemTable.h"
#include "FSNames.h"
#include "FSVolumes.h"
#include <PortSupport/UniqueDescriptor.h>
#include "UTCDates.h"

#include <Carbon/MacErrors.h>

#include <fcntl.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

using namespace carbon;

namespace {

UInt32 Clamp32(UInt64 inValue) { return UInt32(std::min<UInt64>(inValue, std::numeric_limits<UInt32>::max())); }

void FillDates(const VolumeRecord& inVolume, FSVolumeInfoBitmap inWhichInfo, FSVolumeInfo& outInfo)
{
    struct statx root {};
    bool known = !inVolume.mountPoint.empty() && StatusAt(AT_FDCWD, inVolume.mountPoint.c_str(), root);
    auto date = [&](const statx_timestamp& inTime) {
        return known ? UTCDateTimeOf(inTime.tv_sec, inTime.tv_nsec) : UTCDateTime{};
    };
    if (inWhichInfo & kFSVolInfoCreateDate)
        outInfo.createDate = date(root.stx_mask & STATX_BTIME ? root.stx_btime : root.stx_mtime);
    if (inWhichInfo & kFSVolInfoModDate)
        outInfo.modifyDate = date(root.stx_mtime);
    if (inWhichInfo & kFSVolInfoBackupDate)
        outInfo.backupDate = {};
    if (inWhichInfo & kFSVolInfoCheckedDate)
        outInfo.checkedDate = {};
}

// Whether the block device under a volume refuses writes: write-protected media, or a disk
// image attached read-only. Volumes without one (tmpfs, network shares) are not.
bool MediaIsReadOnly(dev_t inDevice)
{
    std::string path = "/sys/dev/block/" + std::to_string(major(inDevice)) + ":" + std::to_string(minor(inDevice)) +
                       "/ro";
    char flag = '0';
    port::UniqueDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file && ::read(file.Get(), &flag, 1) == 1 && flag == '1';
}

// The lock of a volume mounted read-only. Media that cannot be written are what the
// platform calls locked by hardware; a read-only mount of media that could be written is a
// lock set in software, the platform's software lock.
UInt16 LockOf(dev_t inDevice)
{
    return MediaIsReadOnly(inDevice) ? kFSVolFlagHardwareLockedMask : kFSVolFlagSoftwareLockedMask;
}

void FillSpace(const VolumeRecord& inVolume, FSVolumeInfoBitmap inWhichInfo, FSVolumeInfo& outInfo)
{
    struct statvfs space {};
    if (!inVolume.mountPoint.empty())
        ::statvfs(inVolume.mountPoint.c_str(), &space);
    UInt64 block = space.f_frsize ? space.f_frsize : space.f_bsize;
    if (inWhichInfo & kFSVolInfoSizes) {
        outInfo.totalBytes = UInt64(space.f_blocks) * block;
        outInfo.freeBytes = UInt64(space.f_bavail) * block;
    }
    if (inWhichInfo & kFSVolInfoBlocks) {
        outInfo.blockSize = Clamp32(block);
        outInfo.totalBlocks = Clamp32(space.f_blocks);
        outInfo.freeBlocks = Clamp32(space.f_bavail);
    }
    if (inWhichInfo & kFSVolInfoFlags)
        outInfo.flags = (space.f_flag & ST_RDONLY) ? LockOf(inVolume.device) : 0;
}

// The file system's type (the kernel's magic number) in two halves: the low half as the
// file-system ID, the high half as the signature.
void FillFileSystem(const VolumeRecord& inVolume, FSVolumeInfo& outInfo)
{
    struct statfs status {};
    if (!inVolume.mountPoint.empty())
        ::statfs(inVolume.mountPoint.c_str(), &status);
    auto magic = UInt32(status.f_type);
    outInfo.filesystemID = UInt16(magic & 0xFFFF);
    outInfo.signature = UInt16(magic >> 16);
}

void FillInfo(const VolumeRecord& inVolume, FSVolumeInfoBitmap inWhichInfo, FSVolumeInfo& outInfo)
{
    FillDates(inVolume, inWhichInfo, outInfo);
    FillSpace(inVolume, inWhichInfo, outInfo);
    if (inWhichInfo & kFSVolInfoFileCount)
        outInfo.fileCount = 0;
    if (inWhichInfo & kFSVolInfoDirCount)
        outInfo.folderCount = 0;
    if (inWhichInfo & kFSVolInfoNextAlloc)
        outInfo.nextAllocation = 0;
    if (inWhichInfo & kFSVolInfoRsrcClump)
        outInfo.rsrcClumpSize = outInfo.blockSize;
    if (inWhichInfo & kFSVolInfoDataClump)
        outInfo.dataClumpSize = outInfo.blockSize;
    if (inWhichInfo & kFSVolInfoNextID)
        outInfo.nextCatalogID = 0;
    if (inWhichInfo & kFSVolInfoFinderInfo)
        std::memset(outInfo.finderInfo, 0, sizeof outInfo.finderInfo);
    if (inWhichInfo & kFSVolInfoFSInfo)
        FillFileSystem(inVolume, outInfo);
    if (inWhichInfo & kFSVolInfoDriveInfo) {
        outInfo.driveNumber = 0;
        outInfo.driverRefNum = 0;
    }
}

}  // namespace

OSErr FSGetVolumeInfo(FSVolumeRefNum inVolume, ItemCount inVolumeIndex, FSVolumeRefNum* outActualVolume,
                      FSVolumeInfoBitmap inWhichInfo, FSVolumeInfo* outInfo, HFSUniStr255* outVolumeName,
                      FSRef* outRootDirectory)
{
    if (inWhichInfo != kFSVolInfoNone && outInfo == nullptr)
        return paramErr;
    std::optional<VolumeRecord> volume;
    if (inVolumeIndex > 0) {
        std::vector<VolumeRecord> mounted = MountedVolumes();
        if (inVolumeIndex <= mounted.size())
            volume = mounted[inVolumeIndex - 1];
    } else if (inVolume != kFSInvalidVolumeRefNum) {
        volume = VolumeOfRefNum(inVolume);
    }
    if (!volume)
        return nsvErr;
    if (outActualVolume)
        *outActualVolume = volume->refNum;
    if (outInfo)
        FillInfo(*volume, inWhichInfo, *outInfo);
    if (outVolumeName)
        SetHFSName(VolumeName(*volume), *outVolumeName);
    return outRootDirectory ? RefOfNode(volume->refNum, fsRtDirID, outRootDirectory) : noErr;
}
