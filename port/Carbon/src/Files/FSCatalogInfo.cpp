// Catalog fields from the inode and the companion, and back.
#include "FSCatalog.h"

#include "FSItemCompanion.h"
#include "FSFinderInfo.h"
#include "FSForkTable.h"
#include "FSNames.h"
#include "FSVolumes.h"
#include "UTCDates.h"

#include <Carbon/FSErrno.h>
#include <Carbon/MacErrors.h>

#include <dirent.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>

namespace carbon {

namespace {

constexpr FSCatalogInfoBitmap kCompanionBits = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo | kFSCatInfoRsrcSizes |
                                               kFSCatInfoCreateDate | kFSCatInfoBackupDate;
// What a locked item refuses to change: everything settable but the lock itself, the
// permissions it is made of, and what is ignored anyway.
constexpr FSCatalogInfoBitmap kGuardedBits = kFSCatInfoSettableInfo & ~(kFSCatInfoTextEncoding | kFSCatInfoNodeFlags |
                                                                        kFSCatInfoPermissions | kFSCatInfoAttrMod);

UTCDateTime DateOf(const statx_timestamp& inTime) { return UTCDateTimeOf(inTime.tv_sec, inTime.tv_nsec); }

UInt64 RoundUp(UInt64 inLength, UInt64 inBlock)
{
    return inBlock == 0 ? inLength : (inLength + inBlock - 1) / inBlock * inBlock;
}

UInt64 ResourceLength(const ItemLocation& inItem, const AppleDouble& inCompanion)
{
    if (std::optional<UInt64> open = OpenResourceForkLength(inItem.key))
        return *open;
    const std::vector<UInt8>* fork = inCompanion.Find(AppleDouble::kResourceFork);
    return fork ? fork->size() : 0;
}

void FillDates(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, const AppleDouble& inCompanion,
               FSCatalogInfo& outInfo)
{
    const struct statx& status = inItem.status;
    if (inWhichInfo & kFSCatInfoCreateDate) {
        std::optional<UTCDateTime> stored = GetStoredDate(inCompanion, StoredDate::Creation);
        // Without a birth time the content date is the nearest the file system knows.
        outInfo.createDate = stored                            ? *stored
                             : (status.stx_mask & STATX_BTIME) ? DateOf(status.stx_btime)
                                                               : DateOf(status.stx_mtime);
    }
    if (inWhichInfo & kFSCatInfoContentMod)
        outInfo.contentModDate = DateOf(status.stx_mtime);
    if (inWhichInfo & kFSCatInfoAttrMod)
        outInfo.attributeModDate = DateOf(status.stx_ctime);
    if (inWhichInfo & kFSCatInfoAccessDate)
        outInfo.accessDate = DateOf(status.stx_atime);
    if (inWhichInfo & kFSCatInfoBackupDate)
        outInfo.backupDate = GetStoredDate(inCompanion, StoredDate::Backup).value_or(UTCDateTime{});
}

UInt16 NodeFlagsOf(const ItemLocation& inItem)
{
    UInt16 flags = OpenForkFlags(inItem.key);
    if (inItem.IsLocked())
        flags |= kFSNodeLockedMask;
    if (inItem.IsDirectory())
        flags |= kFSNodeIsDirectoryMask;
    else if (inItem.status.stx_nlink > 1)
        flags |= kFSNodeHardLinkMask;
    return flags;
}

void FillIdentity(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo& outInfo)
{
    if (inWhichInfo & kFSCatInfoTextEncoding)
        outInfo.textEncodingHint = kTextEncodingUnicodeDefault;
    if (inWhichInfo & kFSCatInfoNodeFlags)
        outInfo.nodeFlags = NodeFlagsOf(inItem);
    if (inWhichInfo & kFSCatInfoVolume)
        outInfo.volume = VolumeRefNumOf(inItem.key.device);
    if (inWhichInfo & kFSCatInfoParentDirID)
        outInfo.parentDirID = ParentIDOf(inItem);
    if (inWhichInfo & kFSCatInfoNodeID)
        outInfo.nodeID = NodeIDOf(inItem);
    if (inWhichInfo & kFSCatInfoSharingFlags)
        outInfo.sharingFlags = 0;
    if (inWhichInfo & kFSCatInfoUserPrivs)
        outInfo.userPrivileges = 0;
}

void FillPermissions(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo& outInfo)
{
    if (!(inWhichInfo & (kFSCatInfoPermissions | kFSCatInfoUserAccess)))
        return;
    std::memset(outInfo.permissions, 0, sizeof outInfo.permissions);
    outInfo.permissionInfo.userID = inItem.status.stx_uid;
    outInfo.permissionInfo.groupID = inItem.status.stx_gid;
    outInfo.permissionInfo.mode = UInt16(inItem.status.stx_mode);
}

void FillSizes(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, const AppleDouble& inCompanion,
               FSCatalogInfo& outInfo)
{
    bool file = !inItem.IsDirectory();
    if (inWhichInfo & kFSCatInfoDataSizes) {
        outInfo.dataLogicalSize = file ? inItem.status.stx_size : 0;
        outInfo.dataPhysicalSize = file ? inItem.status.stx_blocks * 512 : 0;
    }
    if (inWhichInfo & kFSCatInfoRsrcSizes) {
        outInfo.rsrcLogicalSize = file ? ResourceLength(inItem, inCompanion) : 0;
        outInfo.rsrcPhysicalSize = RoundUp(outInfo.rsrcLogicalSize, inItem.status.stx_blksize);
    }
    if (inWhichInfo & kFSCatInfoValence)
        outInfo.valence = inItem.IsDirectory() ? CountItems(inItem) : 0;
}

void ShortenedSpecName(std::u16string_view inName, UInt32 inNodeID, StrFileName outName)
{
    char suffix[16];
    int suffixLength = std::snprintf(suffix, sizeof suffix, "#%X", unsigned(inNodeID));
    std::u16string shortened(inName.substr(0, 31 - std::size_t(suffixLength)));
    shortened.append(suffix, suffix + suffixLength);
    while (!PascalName(shortened, outName, sizeof(StrFileName)) && shortened.size() > std::size_t(suffixLength)) {
        shortened.erase(shortened.size() - std::size_t(suffixLength) - 1, 1);
    }
}

// Changes the mode, the owner and the group to what was asked; unchanged values are not
// written, so that asking for the present values needs no privilege.
OSErr ApplyPermissions(const ItemLocation& inItem, mode_t inMode, const FSCatalogInfo* inOwner)
{
    if (!S_ISLNK(inItem.status.stx_mode) && inMode != (inItem.status.stx_mode & 07777) &&
        ::fchmodat(inItem.Folder(), inItem.name.c_str(), inMode, 0) != 0)
        return LastStatus();
    if (inOwner == nullptr)
        return noErr;
    uid_t user = inOwner->permissionInfo.userID;
    gid_t group = inOwner->permissionInfo.groupID;
    if (user == inItem.status.stx_uid && group == inItem.status.stx_gid)
        return noErr;
    return ::fchownat(inItem.Folder(), inItem.name.c_str(), user, group, AT_SYMLINK_NOFOLLOW) == 0 ? noErr
                                                                                                   : LastStatus();
}

OSErr ApplyTimes(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo& inInfo)
{
    if (!(inWhichInfo & (kFSCatInfoContentMod | kFSCatInfoAccessDate)))
        return noErr;
    timespec times[2] = {{0, UTIME_OMIT}, {0, UTIME_OMIT}};
    if (inWhichInfo & kFSCatInfoAccessDate)
        times[0] = TimespecOf(inInfo.accessDate);
    if (inWhichInfo & kFSCatInfoContentMod)
        times[1] = TimespecOf(inInfo.contentModDate);
    return ::utimensat(inItem.Folder(), inItem.name.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0 ? noErr : LastStatus();
}

OSErr ApplyCompanion(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo& inInfo)
{
    constexpr FSCatalogInfoBitmap kBits = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo | kFSCatInfoCreateDate |
                                          kFSCatInfoBackupDate;
    if (!(inWhichInfo & kBits))
        return noErr;
    Companion read = ReadCompanion(inItem.Folder(), inItem.name);
    AppleDouble companion = read.contents;
    if (inWhichInfo & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo))
        SetFinderInfo(companion, inItem.IsDirectory(), inWhichInfo & kFSCatInfoFinderInfo ? inInfo.finderInfo : nullptr,
                      inWhichInfo & kFSCatInfoFinderXInfo ? inInfo.extFinderInfo : nullptr);
    // A creation date equal to the birth time needs no keeping.
    if (inWhichInfo & kFSCatInfoCreateDate) {
        FSCatalogInfo natural{};
        FillDates(inItem, kFSCatInfoCreateDate, AppleDouble{}, natural);
        bool same = natural.createDate.highSeconds == inInfo.createDate.highSeconds &&
                    natural.createDate.lowSeconds == inInfo.createDate.lowSeconds &&
                    natural.createDate.fraction == inInfo.createDate.fraction;
        SetStoredDate(companion, StoredDate::Creation, same ? std::nullopt : std::optional(inInfo.createDate));
    }
    if (inWhichInfo & kFSCatInfoBackupDate) {
        bool never = inInfo.backupDate.highSeconds == 0 && inInfo.backupDate.lowSeconds == 0;
        SetStoredDate(companion, StoredDate::Backup, never ? std::nullopt : std::optional(inInfo.backupDate));
    }
    if (companion == read.contents && read.state != Companion::State::Malformed)
        return noErr;
    return WriteCompanion(inItem.Folder(), inItem.name, companion);
}

}  // namespace

void FillCatalogInfo(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo& outInfo)
{
    AppleDouble companion;
    if (inWhichInfo & kCompanionBits)
        companion = ReadItemCompanion(inItem).contents;
    FillIdentity(inItem, inWhichInfo, outInfo);
    FillDates(inItem, inWhichInfo, companion, outInfo);
    FillPermissions(inItem, inWhichInfo, outInfo);
    if (inWhichInfo & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo))
        GetFinderInfo(companion, inItem.IsDirectory(),
                      inWhichInfo & kFSCatInfoFinderInfo ? outInfo.finderInfo : nullptr,
                      inWhichInfo & kFSCatInfoFinderXInfo ? outInfo.extFinderInfo : nullptr);
    FillSizes(inItem, inWhichInfo, companion, outInfo);
}

void FillName(const ItemLocation& inItem, HFSUniStr255& outName)
{
    if (inItem.isRoot) {
        std::optional<VolumeRecord> volume = VolumeOfDevice(inItem.key.device);
        SetHFSName(volume ? VolumeName(*volume) : u"Untitled", outName);
    } else {
        SetHFSName(UnicodeName(inItem.name), outName);
    }
}

void FillSpec(const ItemLocation& inItem, FSSpec& outSpec)
{
    std::memset(&outSpec, 0, sizeof outSpec);
    outSpec.vRefNum = VolumeRefNumOf(inItem.key.device);
    outSpec.parID = SInt32(ParentIDOf(inItem));
    HFSUniStr255 name;
    FillName(inItem, name);
    std::u16string_view text(reinterpret_cast<const char16_t*>(name.unicode), name.length);
    if (!PascalName(text, outSpec.name, sizeof outSpec.name))
        ShortenedSpecName(text, NodeIDOf(inItem), outSpec.name);
}

std::optional<UInt32> NodeIDOfShortenedName(std::u16string_view inName)
{
    std::size_t hash = inName.rfind(u'#');
    if (hash == std::u16string_view::npos || hash + 1 == inName.size() || inName.size() - hash > 9)
        return std::nullopt;
    UInt32 nodeID = 0;
    for (char16_t digit : inName.substr(hash + 1)) {
        int value = digit >= u'0' && digit <= u'9'   ? digit - u'0'
                    : digit >= u'A' && digit <= u'F' ? digit - u'A' + 10
                                                     : -1;
        if (value < 0)
            return std::nullopt;
        nodeID = nodeID << 4 | UInt32(value);
    }
    return nodeID;
}

OSErr ApplyCatalogInfo(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo& inInfo)
{
    if (inWhichInfo & ~kFSCatInfoSettableInfo)
        return errFSBadInfoBitmap;
    mode_t current = inItem.status.stx_mode & 07777;
    mode_t mode = inWhichInfo & kFSCatInfoPermissions ? mode_t(inInfo.permissionInfo.mode & 07777) : current;
    if (inWhichInfo & kFSCatInfoNodeFlags)
        mode = inInfo.nodeFlags & kFSNodeLockedMask ? mode & ~S_IWUSR : mode | S_IWUSR;
    bool lockedAfter = !S_ISLNK(inItem.status.stx_mode) && !(mode & S_IWUSR);
    if (inItem.IsLocked() && lockedAfter && (inWhichInfo & kGuardedBits))
        return fLckdErr;
    const FSCatalogInfo* owner = inWhichInfo & kFSCatInfoPermissions ? &inInfo : nullptr;
    // Unlocking comes first and locking last, so that the other changes fall between.
    if (!lockedAfter)
        if (OSErr status = ApplyPermissions(inItem, mode, owner); status != noErr)
            return status;
    if (OSErr status = ApplyCompanion(inItem, inWhichInfo, inInfo); status != noErr)
        return status;
    if (OSErr status = ApplyTimes(inItem, inWhichInfo, inInfo); status != noErr)
        return status;
    return lockedAfter ? ApplyPermissions(inItem, mode, owner) : noErr;
}

UInt32 CountItems(const ItemLocation& inFolder)
{
    int folder = ::openat(inFolder.Self(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* listing = folder >= 0 ? ::fdopendir(folder) : nullptr;
    if (listing == nullptr) {
        if (folder >= 0)
            ::close(folder);
        return 0;
    }
    UInt32 count = 0;
    while (const dirent* entry = ::readdir(listing)) {
        std::string_view name = entry->d_name;
        count += name != "." && name != ".." && !IsReservedName(name);
    }
    ::closedir(listing);
    return count;
}

}  // namespace carbon
