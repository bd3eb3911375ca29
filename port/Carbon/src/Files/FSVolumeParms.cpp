// FSGetVolumeParms: what a volume can do, from the kind of file system it is.
#include "FSVolumes.h"

#include <Carbon/FSErrno.h>
#include <Carbon/FilesExtras.h>
#include <Carbon/MacErrors.h>

#include <sys/statfs.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <span>

using namespace carbon;

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
    parms.vMAttrib = Bits({bHasExtFSVol, bNoBootBlks, bHasFileIDs, bHasCopyFile, bHasMoveRename, bHasFolderLock});
    parms.vMExtendedAttributes = Bits({bSupportsHFSPlusAPIs, bSupportsLongNames, bSupportsMultiScriptNames,
                                       bSupports2TBFiles, bSupportsSymbolicLinks, bIsCasePreserving}) |
                                 (foldsCase ? 0 : Bits({bIsCaseSensitive})) |
                                 (exchanges ? Bits({bSupportsFSExchangeObjects}) : 0);
    parms.vMMaxNameLength = UniCharCount(inStatus.f_namelen);
    return parms;
}

}  // namespace

OSStatus FSGetVolumeParms(FSVolumeRefNum inVolume, GetVolParmsInfoBuffer* outInfo, ByteCount inBufferSize)
{
    if (outInfo == nullptr)
        return paramErr;
    std::optional<VolumeRecord> volume = VolumeOfRefNum(inVolume);
    if (!volume || volume->mountPoint.empty())
        return nsvErr;
    struct statfs status;
    if (::statfs(volume->mountPoint.c_str(), &status) != 0)
        return StatusOfErrno(errno);
    GetVolParmsInfoBuffer parms = ParmsOf(status);
    std::memcpy(outInfo, &parms, std::min<ByteCount>(inBufferSize, sizeof parms));
    return noErr;
}
