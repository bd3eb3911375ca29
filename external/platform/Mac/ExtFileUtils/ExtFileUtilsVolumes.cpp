// Volumes, and the accounts that own items on them.
#include "ExtFileUtilsInternal.h"

#include <grp.h>
#include <pwd.h>
#include <sys/statfs.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace {

// Kernel magic numbers (statfs f_type). File systems that compare names without case:
constexpr long kCaseFoldingMagics[] = {
    0x4d44,      // FAT
    0x2011BAB0,  // exFAT
    0x5346544e,  // NTFS
    0x482b,      // HFS+
};
// Those the kernel can exchange two names on in one step (renameat2 RENAME_EXCHANGE).
constexpr long kExchangingMagics[] = {
    0xEF53,      // ext2, ext3, ext4
    0x58465342,  // xfs
    0x9123683E,  // btrfs
    0x01021994,  // tmpfs
    0xF2F52010,  // f2fs
    0xCA451A4E,  // bcachefs
    0x794c7630,  // overlayfs
};

OSErr StatusOfVolume(FSVolumeRefNum inVolume, struct statfs& outStatus)
{
    FSRef root;
    OSErr status = FSGetVolumeInfo(inVolume, 0, nullptr, kFSVolInfoNone, nullptr, nullptr, &root);
    if (status != noErr)
        return status;
    std::string path = ExtFileUtils::PathOf(root);
    if (path.empty())
        return nsvErr;
    return ::statfs(path.c_str(), &outStatus) == 0 ? noErr : carbon::StatusOfErrno(errno);
}

bool OneOf(long inMagic, std::span<const long> inMagics)
{
    return std::find(inMagics.begin(), inMagics.end(), inMagic) != inMagics.end();
}

SInt32 Bits(std::initializer_list<SInt32> inBits)
{
    UInt32 bits = 0;
    for (SInt32 bit : inBits)
        bits |= UInt32(1) << bit;
    return SInt32(bits);
}

GetVolParmsInfoBuffer ParmsOf(const struct statfs& inStatus)
{
    long magic = long(inStatus.f_type);
    bool foldsCase = OneOf(magic, kCaseFoldingMagics);
    bool exchanges = OneOf(magic, kExchangingMagics);
    GetVolParmsInfoBuffer parms{};
    parms.vMVersion = 3;
    // File IDs, copying and moving with renaming are the utilities' own, on every volume.
    parms.vMAttrib = Bits({bHasExtFSVol, bNoBootBlks, bHasFileIDs, bHasCopyFile, bHasMoveRename, bHasFolderLock});
    parms.vMExtendedAttributes =
        Bits({bSupportsHFSPlusAPIs, bSupportsLongNames, bSupportsMultiScriptNames, bSupports2TBFiles,
              bSupportsSymbolicLinks, bIsCasePreserving}) |
        (foldsCase ? 0 : Bits({bIsCaseSensitive})) | (exchanges ? Bits({bSupportsFSExchangeObjects}) : 0);
    parms.vMMaxNameLength = UniCharCount(inStatus.f_namelen);
    return parms;
}

// The account databases want room for the strings they return; the suggested size is not
// always enough, so the buffer grows until the answer fits. inLookup is one of the *_r calls
// with its key bound.
template <typename Record, typename Lookup>
OSErr FindAccount(Lookup inLookup, Record& outRecord, std::vector<char>& outBuffer)
{
    outBuffer.resize(1024);
    for (;;) {
        Record* found = nullptr;
        int error = inLookup(&outRecord, outBuffer.data(), outBuffer.size(), &found);
        if (error == ERANGE && outBuffer.size() < (std::size_t(1) << 20)) {
            outBuffer.resize(outBuffer.size() * 2);
            continue;
        }
        if (error != 0)
            return carbon::StatusOfErrno(error);
        return found ? noErr : OSErr(fnfErr);
    }
}

OSErr UserByID(uid_t inID, passwd& outUser, std::vector<char>& outBuffer)
{
    return FindAccount([inID](auto... ioArgs) { return ::getpwuid_r(inID, ioArgs...); }, outUser, outBuffer);
}

OSErr UserByName(const char* inName, passwd& outUser, std::vector<char>& outBuffer)
{
    return FindAccount([inName](auto... ioArgs) { return ::getpwnam_r(inName, ioArgs...); }, outUser, outBuffer);
}

OSErr GroupByID(gid_t inID, group& outGroup, std::vector<char>& outBuffer)
{
    return FindAccount([inID](auto... ioArgs) { return ::getgrgid_r(inID, ioArgs...); }, outGroup, outBuffer);
}

OSErr GroupByName(const char* inName, group& outGroup, std::vector<char>& outBuffer)
{
    return FindAccount([inName](auto... ioArgs) { return ::getgrnam_r(inName, ioArgs...); }, outGroup, outBuffer);
}

OSErr SetPascal(std::string_view inText, Str31 outName)
{
    if (inText.size() > 31)
        return errFSNameTooLong;
    outName[0] = UInt8(inText.size());
    std::memcpy(outName + 1, inText.data(), inText.size());
    return noErr;
}

OSErr CheckVolume(FSVolumeRefNum inVolume)
{
    return FSGetVolumeInfo(inVolume, 0, nullptr, kFSVolInfoNone, nullptr, nullptr, nullptr);
}

}  // namespace

OSErr FSGetVolParms(FSVolumeRefNum inVolume, UInt32 inBufferSize, GetVolParmsInfoBuffer* outInfo,
                    UInt32* outActualInfoSize)
{
    if (outInfo == nullptr || outActualInfoSize == nullptr)
        return paramErr;
    struct statfs status;
    if (OSErr error = StatusOfVolume(inVolume, status); error != noErr)
        return error;
    GetVolParmsInfoBuffer parms = ParmsOf(status);
    UInt32 size = std::min<UInt32>(inBufferSize, sizeof parms);
    std::memcpy(outInfo, &parms, size);
    *outActualInfoSize = size;
    return noErr;
}

OSErr FSGetVInfo(FSVolumeRefNum inVolume, HFSUniStr255* outVolumeName, UInt64* outFreeBytes, UInt64* outTotalBytes)
{
    FSVolumeInfo info;
    OSErr status = FSGetVolumeInfo(inVolume, 0, nullptr, kFSVolInfoSizes, &info, outVolumeName, nullptr);
    if (status != noErr)
        return status;
    if (outFreeBytes)
        *outFreeBytes = info.freeBytes;
    if (outTotalBytes)
        *outTotalBytes = info.totalBytes;
    return noErr;
}

OSErr FSGetVolFileSystemID(FSVolumeRefNum inVolume, UInt16* outFileSystemID, UInt16* outSignature)
{
    struct statfs status;
    if (OSErr error = StatusOfVolume(inVolume, status); error != noErr)
        return error;
    auto magic = UInt32(status.f_type);
    if (outFileSystemID)
        *outFileSystemID = UInt16(magic & 0xFFFF);
    if (outSignature)
        *outSignature = UInt16(magic >> 16);
    return noErr;
}

OSErr FSGetMountedVolumes(FSRef*** outVolumeRefsHandle, ItemCount* outVolumeCount)
{
    if (outVolumeRefsHandle == nullptr || outVolumeCount == nullptr)
        return paramErr;
    *outVolumeRefsHandle = nullptr;
    *outVolumeCount = 0;
    std::vector<FSRef> roots;
    FSRef root;
    OSErr status;
    while ((status = FSGetVolumeInfo(kFSInvalidVolumeRefNum, roots.size() + 1, nullptr, kFSVolInfoNone, nullptr,
                                     nullptr, &root)) == noErr)
        roots.push_back(root);
    if (status != nsvErr)
        return status;
    Handle refs = NewHandle(Size(roots.size() * sizeof(FSRef)));
    if (refs == nullptr)
        return memFullErr;
    std::memcpy(*refs, roots.data(), roots.size() * sizeof(FSRef));
    *outVolumeRefsHandle = reinterpret_cast<FSRef**>(refs);
    *outVolumeCount = roots.size();
    return noErr;
}

// Linux volumes know owners and permissions, not the access privileges of shared folders,
// and there is no record from which a volume could be mounted again: these answer that the
// volume is not of a kind that supports the request, once the arguments have been checked.

OSErr FSGetDirAccess(const FSRef* inRef, SInt32* outOwnerID, SInt32* outGroupID, SInt32* outAccessRights)
{
    if (outOwnerID == nullptr || outGroupID == nullptr || outAccessRights == nullptr)
        return paramErr;
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr);
    return status != noErr ? status : OSErr(wrgVolTypErr);
}

OSErr FSSetDirAccess(const FSRef* inRef, SInt32, SInt32, SInt32)
{
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr);
    return status != noErr ? status : OSErr(wrgVolTypErr);
}

OSErr FSGetVolMountInfoSize(FSVolumeRefNum inVolume, UInt16* outSize)
{
    if (outSize == nullptr)
        return paramErr;
    OSErr status = CheckVolume(inVolume);
    return status != noErr ? status : OSErr(wrgVolTypErr);
}

OSErr FSGetVolMountInfo(FSVolumeRefNum inVolume, void* outVolMountInfo)
{
    if (outVolMountInfo == nullptr)
        return paramErr;
    OSErr status = CheckVolume(inVolume);
    return status != noErr ? status : OSErr(wrgVolTypErr);
}

OSErr FSVolumeMount(const void* inVolMountInfo, FSVolumeRefNum* outVolume)
{
    if (inVolMountInfo == nullptr || outVolume == nullptr)
        return paramErr;
    return wrgVolTypErr;
}

OSErr FSMapID(FSVolumeRefNum, SInt32 inID, SInt16 inObjType, Str31 outName)
{
    if (outName == nullptr || (inObjType != kOwnerID2Name && inObjType != kGroupID2Name))
        return paramErr;
    std::vector<char> buffer;
    passwd user;
    group found;
    OSErr status = inObjType == kOwnerID2Name ? UserByID(uid_t(inID), user, buffer)
                                              : GroupByID(gid_t(inID), found, buffer);
    if (status != noErr)
        return status;
    return SetPascal(inObjType == kOwnerID2Name ? user.pw_name : found.gr_name, outName);
}

OSErr FSMapName(FSVolumeRefNum, ConstStr255Param inName, SInt16 inObjType, SInt32* outID)
{
    if (inName == nullptr || outID == nullptr || (inObjType != kOwnerName2ID && inObjType != kGroupName2ID))
        return paramErr;
    std::string name(reinterpret_cast<const char*>(inName + 1), inName[0]);
    std::vector<char> buffer;
    passwd user;
    group found;
    OSErr status = inObjType == kOwnerName2ID ? UserByName(name.c_str(), user, buffer)
                                              : GroupByName(name.c_str(), found, buffer);
    if (status == noErr)
        *outID = SInt32(inObjType == kOwnerName2ID ? user.pw_uid : found.gr_gid);
    return status;
}
