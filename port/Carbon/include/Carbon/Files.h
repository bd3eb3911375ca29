// The File Manager: references to files and folders that survive renames and moves, catalog
// information, volumes, iteration over a folder, creating, renaming, moving and deleting
// items, and the data and resource forks of files.
//
// On this system:
// - An FSRef names an item by its device and inode. It keeps naming the item when this or
//   another process renames or moves it, and answers fnfErr once the item is deleted.
// - Volumes are the mounted file systems; each has a small negative reference number, handed
//   out in order of first use, the startup volume ("/") first. Directory and node IDs are
//   handed out per item; a volume's root folder is node 2 and its parent is node 1.
// - Names are Unicode; on disk they are UTF-8, case-sensitive and at most 255 bytes. Bytes of
//   a name on disk that are not UTF-8 read as the UTF-16 units 0xDC80-0xDCFF, and those units
//   write back as the same bytes, so that every existing item can be named.
// - Finder information and resource forks live in an AppleDouble companion file "._name"
//   beside the item, which renaming, moving and deleting the item keep in step. Names that
//   start with "._" are therefore never items: they are neither listed nor accepted.
// - "Locked" is the owner's write permission being clear. Deleting, renaming, moving,
//   writing or resizing a locked item, or changing its catalog information other than the
//   lock itself, answers fLckdErr, whoever asks (the super-user included).
// Calls return a status and never throw; paramErr where a required pointer is NULL.
#pragma once

#include <Carbon/DateTimeUtils.h>
#include <Carbon/Finder.h>
#include <Carbon/TextCommon.h>
#include <MacTypes.h>

struct FSRef {
    UInt8 hidden[80];
};
using FSRefPtr = FSRef*;

struct HFSUniStr255 {
    UInt16 length;  // in UTF-16 units
    UniChar unicode[255];
};
using ConstHFSUniStr255Param = const HFSUniStr255*;

using FSVolumeRefNum = SInt16;
using StrFileName = Str63;

// The classic file specification: a folder by volume and directory ID, and a name as a
// Pascal string in the system encoding.
struct FSSpec {
    SInt16 vRefNum;
    SInt32 parID;
    StrFileName name;
};
using FSSpecPtr = FSSpec*;

enum : FSVolumeRefNum { kFSInvalidVolumeRefNum = 0 };

// Directory IDs with a fixed meaning on every volume.
enum : SInt32 {
    fsRtParID = 1,  // the parent of a volume's root folder
    fsRtDirID = 2,  // a volume's root folder
};

struct FSPermissionInfo {
    UInt32 userID;
    UInt32 groupID;
    UInt8 reserved1;
    UInt8 userAccess;
    UInt16 mode;  // the item's st_mode
    UInt32 reserved2;
};

using FSCatalogInfoBitmap = UInt32;

enum : FSCatalogInfoBitmap {
    kFSCatInfoNone = 0x00000000,
    kFSCatInfoTextEncoding = 0x00000001,
    kFSCatInfoNodeFlags = 0x00000002,
    kFSCatInfoVolume = 0x00000004,
    kFSCatInfoParentDirID = 0x00000008,
    kFSCatInfoNodeID = 0x00000010,
    kFSCatInfoCreateDate = 0x00000020,
    kFSCatInfoContentMod = 0x00000040,
    kFSCatInfoAttrMod = 0x00000080,
    kFSCatInfoAccessDate = 0x00000100,
    kFSCatInfoBackupDate = 0x00000200,
    kFSCatInfoPermissions = 0x00000400,
    kFSCatInfoFinderInfo = 0x00000800,
    kFSCatInfoFinderXInfo = 0x00001000,
    kFSCatInfoValence = 0x00002000,
    kFSCatInfoDataSizes = 0x00004000,
    kFSCatInfoRsrcSizes = 0x00008000,
    kFSCatInfoSharingFlags = 0x00010000,
    kFSCatInfoUserPrivs = 0x00020000,
    kFSCatInfoUserAccess = 0x00080000,
    kFSCatInfoAllDates = 0x000003E0,
    kFSCatInfoGettableInfo = 0x0003FFFF,
    kFSCatInfoSettableInfo = 0x00001FE3,
};

// nodeFlags.
enum : UInt16 {
    kFSNodeLockedMask = 0x0001,
    kFSNodeResOpenMask = 0x0004,  // this process has the resource fork open
    kFSNodeDataOpenMask = 0x0008,
    kFSNodeIsDirectoryMask = 0x0010,
    kFSNodeForkOpenMask = 0x0080,
    kFSNodeHardLinkMask = 0x0100,  // a file with more than one name
};

struct FSCatalogInfo {
    UInt16 nodeFlags;
    FSVolumeRefNum volume;
    UInt32 parentDirID;
    UInt32 nodeID;
    UInt8 sharingFlags;
    UInt8 userPrivileges;
    UInt8 reserved1;
    UInt8 reserved2;
    // The creation date is the file system's birth time unless one was set; the attribute
    // date is the inode's change time and cannot be set; the backup date is 0 until set.
    UTCDateTime createDate;
    UTCDateTime contentModDate;
    UTCDateTime attributeModDate;
    UTCDateTime accessDate;
    UTCDateTime backupDate;
    union {
        UInt32 permissions[4];
        FSPermissionInfo permissionInfo;
    };
    UInt8 finderInfo[16];     // a FileInfo, or a FolderInfo for a folder
    UInt8 extFinderInfo[16];  // an ExtendedFileInfo or ExtendedFolderInfo
    UInt64 dataLogicalSize;
    UInt64 dataPhysicalSize;
    UInt64 rsrcLogicalSize;
    UInt64 rsrcPhysicalSize;
    UInt32 valence;  // the number of items in a folder
    TextEncoding textEncodingHint;
};
using FSCatalogInfoPtr = FSCatalogInfo*;

// The parameter block of PBMakeFSRefSync: only the fields named here are read or written.
struct FSRefParam {
    void* qLink;
    SInt16 qType;
    SInt16 ioTrap;
    Ptr ioCmdAddr;
    void* ioCompletion;
    OSErr ioResult;
    ConstStringPtr ioNamePtr;  // in: a Pascal name, empty or NULL for the folder itself
    SInt16 ioVRefNum;          // in
    SInt16 reserved1;
    UInt8 reserved2;
    UInt8 reserved3;
    const FSRef* ref;
    FSCatalogInfoBitmap whichInfo;
    FSCatalogInfo* catInfo;
    UniCharCount nameLength;
    const UniChar* name;
    SInt32 ioDirID;  // in
    FSSpec* spec;
    FSRef* parentRef;
    FSRef* newRef;  // out
    TextEncoding textEncodingHint;
    HFSUniStr255* outName;
};
using FSRefParamPtr = FSRefParam*;

// References.
OSErr FSMakeFSRefUnicode(const FSRef* inParentRef, UniCharCount inNameLength, const UniChar* inName,
                         TextEncoding inTextEncodingHint, FSRef* outNewRef);
OSErr PBMakeFSRefSync(FSRefParam* ioParamBlock);
OSErr FSpMakeFSRef(const FSSpec* inSource, FSRef* outNewRef);
// 0 when both name the same item; errFSRefsDifferent for two items of one volume, diffVolErr
// for items of different volumes.
OSErr FSCompareFSRefs(const FSRef* inRef1, const FSRef* inRef2);
// A POSIX path, relative ones to the current directory; the last component is followed when
// it is a symbolic link. outIsDirectory may be NULL.
OSStatus FSPathMakeRef(const UInt8* inPath, FSRef* outRef, Boolean* outIsDirectory);
// The item's absolute POSIX path, NUL-terminated; errFSNameTooLong (no room) when it does not
// fit in inMaxPathSize bytes.
OSStatus FSRefMakePath(const FSRef* inRef, UInt8* outPath, UInt32 inMaxPathSize);

// Catalog information. Any of the result pointers may be NULL. outParentRef is all zero for
// a volume's root folder. FSSetCatalogInfo accepts only kFSCatInfoSettableInfo bits; it
// ignores the text encoding and the attribute-modification date, which this system keeps
// itself.
OSErr FSGetCatalogInfo(const FSRef* inRef, FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo* outCatalogInfo,
                       HFSUniStr255* outName, FSSpec* outFSSpec, FSRef* outParentRef);
OSErr FSSetCatalogInfo(const FSRef* inRef, FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo* inCatalogInfo);

// Volumes.
using FSVolumeInfoBitmap = UInt32;

enum : FSVolumeInfoBitmap {
    kFSVolInfoNone = 0x0000,
    kFSVolInfoCreateDate = 0x0001,
    kFSVolInfoModDate = 0x0002,
    kFSVolInfoBackupDate = 0x0004,
    kFSVolInfoCheckedDate = 0x0008,
    kFSVolInfoFileCount = 0x0010,
    kFSVolInfoDirCount = 0x0020,
    kFSVolInfoSizes = 0x0040,
    kFSVolInfoBlocks = 0x0080,
    kFSVolInfoNextAlloc = 0x0100,
    kFSVolInfoRsrcClump = 0x0200,
    kFSVolInfoDataClump = 0x0400,
    kFSVolInfoNextID = 0x0800,
    kFSVolInfoFinderInfo = 0x1000,
    kFSVolInfoFlags = 0x2000,
    kFSVolInfoFSInfo = 0x4000,
    kFSVolInfoDriveInfo = 0x8000,
    kFSVolInfoGettableInfo = 0xFFFF,
};

enum : UInt16 {
    kFSVolFlagDefaultVolumeMask = 0x0020,
    kFSVolFlagFilesOpenMask = 0x0040,
    kFSVolFlagHardwareLockedMask = 0x0080,
    kFSVolFlagSoftwareLockedMask = 0x8000,
};

struct FSVolumeInfo {
    UTCDateTime createDate;  // the root folder's
    UTCDateTime modifyDate;
    UTCDateTime backupDate;
    UTCDateTime checkedDate;
    UInt32 fileCount;    // not counted here: 0
    UInt32 folderCount;  // not counted here: 0
    UInt64 totalBytes;
    UInt64 freeBytes;  // what an ordinary user may still write
    UInt32 blockSize;
    UInt32 totalBlocks;
    UInt32 freeBlocks;
    UInt32 nextAllocation;
    UInt32 rsrcClumpSize;
    UInt32 dataClumpSize;
    UInt32 nextCatalogID;
    UInt8 finderInfo[32];
    UInt16 flags;
    UInt16 filesystemID;
    UInt16 signature;
    UInt16 driveNumber;
    SInt16 driverRefNum;
};
using FSVolumeInfoPtr = FSVolumeInfo*;

// inVolume, or with kFSInvalidVolumeRefNum the inVolumeIndex-th (from 1) mounted volume;
// nsvErr past the last. Pseudo file systems (proc, sysfs, cgroup...) are not volumes.
// The startup volume is named as in HFS-style paths.
OSErr FSGetVolumeInfo(FSVolumeRefNum inVolume, ItemCount inVolumeIndex, FSVolumeRefNum* outActualVolume,
                      FSVolumeInfoBitmap inWhichInfo, FSVolumeInfo* outInfo, HFSUniStr255* outVolumeName,
                      FSRef* outRootDirectory);

// Iterating over a folder's items, one level deep. With kFSIterateDelete the caller may
// delete each item it is given before asking for more; an iterator holds no descriptor
// between calls and only a few bytes besides. errFSNoMoreItems once every item was returned.
using FSIterator = struct OpaqueFSIterator*;
using FSIteratorFlags = OptionBits;

enum : FSIteratorFlags {
    kFSIterateFlat = 0,
    kFSIterateSubtree = 1,  // for catalog searches, which this system does not offer
    kFSIterateDelete = 2,
};

OSErr FSOpenIterator(const FSRef* inContainer, FSIteratorFlags inIteratorFlags, FSIterator* outIterator);
OSErr FSCloseIterator(FSIterator inIterator);
// Any of containerChanged, catalogInfos, refs, specs and names may be NULL; the arrays hold
// inMaximumObjects elements.
OSErr FSGetCatalogInfoBulk(FSIterator inIterator, ItemCount inMaximumObjects, ItemCount* outActualObjects,
                           Boolean* outContainerChanged, FSCatalogInfoBitmap inWhichInfo,
                           FSCatalogInfo* outCatalogInfos, FSRef* outRefs, FSSpec* outSpecs, HFSUniStr255* outNames);

// Creating, deleting, renaming, moving. Names must be 1 to 255 UTF-16 units (errFSMissingName,
// errFSNameTooLong) whose UTF-8 form fits in 255 bytes, without '/' or NUL, not "." or ".." and
// not starting with "._" (bdNamErr). Any result pointer may be NULL.
OSErr FSCreateFileUnicode(const FSRef* inParentRef, UniCharCount inNameLength, const UniChar* inName,
                          FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo* inCatalogInfo, FSRef* outNewRef,
                          FSSpec* outNewSpec);
OSErr FSCreateDirectoryUnicode(const FSRef* inParentRef, UniCharCount inNameLength, const UniChar* inName,
                               FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo* inCatalogInfo, FSRef* outNewRef,
                               FSSpec* outNewSpec, UInt32* outNewDirID);
// A folder that still holds items answers fBsyErr, and so does a file with a fork open.
OSErr FSDeleteObject(const FSRef* inRef);
OSErr FSRenameUnicode(const FSRef* inRef, UniCharCount inNameLength, const UniChar* inName,
                      TextEncoding inTextEncodingHint, FSRef* outNewRef);
OSErr FSMoveObject(const FSRef* inRef, const FSRef* inDestDirectory, FSRef* outNewRef);
// Swaps the two files' names, so that each reference keeps naming its own contents, which
// now stand under the other name; their companions are swapped with them.
OSErr FSExchangeObjects(const FSRef* inRef, const FSRef* inDestRef);

// Forks. The data fork is the file's contents and always exists; the resource fork is kept
// in the companion file and exists once created. Sizes and offsets are 64-bit.
enum : SInt8 {
    fsCurPerm = 0,  // read and write where allowed, else read only
    fsRdPerm = 1,
    fsWrPerm = 2,
    fsRdWrPerm = 3,
    fsRdWrShPerm = 4,
    fsRdDenyPerm = 0x10,  // deny modes are accepted and not enforced
    fsWrDenyPerm = 0x20,
};

enum : UInt16 {
    fsAtMark = 0,
    fsFromStart = 1,
    fsFromLEOF = 2,
    fsFromMark = 3,
    pleaseCacheMask = 0x0004,  // caching hints, ignored
    noCacheMask = 0x0020,
};

struct CatPositionRec {
    SInt32 initialize;  // 0 before the first call
    SInt16 priv[6];
};

struct FSForkInfo {
    SInt8 flags;
    SInt8 permissions;
    FSVolumeRefNum volume;
    UInt32 reserved2;
    UInt32 nodeID;
    UInt32 forkID;  // 0 for the data fork, 1 for the resource fork
    UInt64 currentPosition;
    UInt64 logicalEOF;
    UInt64 physicalEOF;
    UInt64 process;
};

OSErr FSGetDataForkName(HFSUniStr255* outDataForkName);          // the empty name
OSErr FSGetResourceForkName(HFSUniStr255* outResourceForkName);  // "RESOURCE_FORK"

// errFSForkExists when the fork is there already; errFSBadForkName for a name other than
// the data and resource forks'; notAFileErr for a folder.
OSErr FSCreateFork(const FSRef* inRef, UniCharCount inForkNameLength, const UniChar* inForkName);
OSErr FSDeleteFork(const FSRef* inRef, UniCharCount inForkNameLength, const UniChar* inForkName);
// The data fork, then the resource fork when the file has one; errFSNoMoreItems after them.
OSErr FSIterateForks(const FSRef* inRef, CatPositionRec* ioForkIterator, HFSUniStr255* outForkName, SInt64* outForkSize,
                     UInt64* outForkPhysicalSize);
// outForkRefNum is a small positive number. errFSForkNotFound for a resource fork the file
// does not have.
OSErr FSOpenFork(const FSRef* inRef, UniCharCount inForkNameLength, const UniChar* inForkName, SInt8 inPermissions,
                 SInt16* outForkRefNum);
OSErr FSCloseFork(SInt16 inForkRefNum);
// eofErr, with the bytes that were there, when the request reaches past the end.
OSErr FSReadFork(SInt16 inForkRefNum, UInt16 inPositionMode, SInt64 inPositionOffset, ByteCount inRequestCount,
                 void* outBuffer, ByteCount* outActualCount);
OSErr FSWriteFork(SInt16 inForkRefNum, UInt16 inPositionMode, SInt64 inPositionOffset, ByteCount inRequestCount,
                  const void* inBuffer, ByteCount* outActualCount);
OSErr FSGetForkPosition(SInt16 inForkRefNum, SInt64* outPosition);
OSErr FSSetForkPosition(SInt16 inForkRefNum, UInt16 inPositionMode, SInt64 inPositionOffset);
OSErr FSGetForkSize(SInt16 inForkRefNum, SInt64* outForkSize);
OSErr FSSetForkSize(SInt16 inForkRefNum, UInt16 inPositionMode, SInt64 inPositionOffset);
OSErr FSFlushFork(SInt16 inForkRefNum);
// One open fork by number, or with inDesiredRefNum 0 the next open fork after *ioIterator
// (start at 0), limited to inVolume unless it is kFSInvalidVolumeRefNum.
OSErr FSGetForkCBInfo(SInt16 inDesiredRefNum, FSVolumeRefNum inVolume, SInt16* ioIterator, SInt16* outActualRefNum,
                      FSForkInfo* outForkInfo, FSRef* outRef, HFSUniStr255* outForkName);

// Change notification. Nothing on this system listens for File Manager notices (other
// programs watch the file system itself), so this only checks its arguments.
using FNMessage = UInt32;
enum : FNMessage { kFNDirectoryModifiedMessage = 1 };
OSStatus FNNotify(const FSRef* inRef, FNMessage inMessage, OptionBits inFlags);
