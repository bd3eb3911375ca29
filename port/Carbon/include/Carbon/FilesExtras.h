// File Manager records and constants of the classic parameter-block calls: volume
// attributes, user and group mapping, file IDs, and the status of a request a volume of this
// kind cannot carry out.
#pragma once

#include <Carbon/Files.h>
#include <MacTypes.h>

// A volume's attributes as the volume-parameters request reports them. Version 3 of the
// record; vMExtendedAttributes and the fields after it only from version 3 on.
struct GetVolParmsInfoBuffer {
    SInt16 vMVersion;
    SInt32 vMAttrib;     // the bits below
    Handle vMLocalHand;  // always NULL here
    SInt32 vMServerAdr;  // 0 for a volume that is not on a file server
    SInt32 vMVolumeGrade;
    SInt16 vMForeignPrivID;
    SInt32 vMExtendedAttributes;
    void* vMDeviceID;
    UniCharCount vMMaxNameLength;
};

// vMAttrib bits.
enum : SInt32 {
    bLimitFCBs = 31,
    bLocalWList = 30,
    bNoMiniFndr = 29,
    bNoVNEdit = 28,
    bNoLclSync = 27,
    bTrshOffLine = 26,
    bNoSwitchTo = 25,
    bNoDeskItems = 20,
    bNoBootBlks = 19,
    bAccessCntl = 18,
    bNoSysDir = 17,
    bHasExtFSVol = 16,
    bHasOpenDeny = 15,
    bHasCopyFile = 14,
    bHasMoveRename = 13,
    bHasDesktopMgr = 12,
    bHasShortName = 11,
    bHasFolderLock = 10,
    bHasPersonalAccessPrivileges = 9,
    bHasUserGroupList = 8,
    bHasCatSearch = 7,
    bHasFileIDs = 6,
    bHasBTreeMgr = 5,
    bHasBlankAccessPrivileges = 4,
    bSupportsAsyncRequests = 3,
    bSupportsTrashVolumeCache = 2,
};

// vMExtendedAttributes bits.
enum : SInt32 {
    bIsEjectable = 0,
    bSupportsHFSPlusAPIs = 1,
    bSupportsFSCatalogSearch = 2,
    bSupportsFSExchangeObjects = 3,
    bSupports2TBFiles = 4,
    bSupportsLongNames = 5,
    bSupportsMultiScriptNames = 6,
    bSupportsNamedForks = 7,
    bSupportsSubtreeIterators = 8,
    bL2PCanMapFileBlocks = 9,
    bParentModDateChanges = 10,
    bAncestorModDateChanges = 11,
    bSupportsSymbolicLinks = 13,
    bIsAutoMounted = 14,
    bAllowCDiDataHandler = 17,
    bSupportsExclusiveLocks = 18,
    bSupportsJournaling = 19,
    bNoVolumeSizes = 20,
    bIsOnInternalBus = 21,
    bIsCaseSensitive = 22,
    bIsCasePreserving = 23,
    bDoNotDisplay = 24,
    bIsRemovable = 25,
    bNoRootTimes = 26,
    bIsOnExternalBus = 27,
    bSupportsExtendedFileSecurity = 28,
};

// A volume's attributes, copied into outInfo up to inBufferSize bytes. File IDs, copying and
// moving with renaming are the File Manager's own, so every volume has them; case
// sensitivity and exchanging two items follow the file system.
OSStatus FSGetVolumeParms(FSVolumeRefNum inVolume, GetVolParmsInfoBuffer* outInfo, ByteCount inBufferSize);

// Makes the folder inDirID of inVolume the default folder, the one that relative paths start
// from: the process's working folder. inVolName is not used and may be NULL.
OSErr HSetVol(ConstStringPtr inVolName, FSVolumeRefNum inVolume, SInt32 inDirID);

// What a user or group mapping request asks for.
enum : SInt16 {
    kOwnerID2Name = 1,
    kGroupID2Name = 2,
    kOwnerName2ID = 3,
    kGroupName2ID = 4,
};

enum : OSStatus {
    fidNotFound = -1300,  // no file has that ID
    // The request is one this kind of volume does not support (shared-folder access
    // privileges, remounting by a record), as classic volumes answered server-only calls.
    wrgVolTypErr = -123,
    afpObjectTypeErr = -5025,  // the request needs a folder and was given a file
};

// The fields every parameter block starts with.
struct ParamBlockHeader {
    void* qLink;
    SInt16 qType;
    SInt16 ioTrap;
    Ptr ioCmdAddr;
    void* ioCompletion;
    OSErr ioResult;
    StringPtr ioNamePtr;
    SInt16 ioVRefNum;
};

// The file-ID requests' parameter block: only the fields named here are read or written.
// ioVRefNum is read; ioNamePtr, when not NULL, receives the file's name (room for a Str63).
struct FIDParam : ParamBlockHeader {
    SInt32 filler14;
    StringPtr ioDestNamePtr;
    SInt32 filler15;
    SInt32 ioDestDirID;
    SInt32 filler16;
    SInt32 filler17;
    SInt32 ioSrcDirID;  // out: the folder holding the file
    SInt16 filler18;
    SInt32 ioFileID;  // in
};

// The user and group mapping requests' parameter block: only the fields named here are read
// or written.
struct ObjParam : ParamBlockHeader {
    SInt16 filler7;
    SInt16 ioObjType;        // in: one of the mapping requests above
    StringPtr ioObjNamePtr;  // the account's name: out (room for a Str31) or in
    SInt32 ioObjID;          // the user or group ID: in or out
};

union HParamBlockRec {
    FIDParam fidParam;
    ObjParam objParam;
};
using HParmBlkPtr = HParamBlockRec*;

// The name of a user or group ID (kOwnerID2Name, kGroupID2Name), and the ID of a name
// (kOwnerName2ID, kGroupName2ID), from the system's account databases; every volume shares
// them. fnfErr for an account that does not exist, errFSNameTooLong for a name longer than a
// Str31 holds. The status is also left in ioResult.
OSErr PBHMapIDSync(HParmBlkPtr ioParamBlock);
OSErr PBHMapNameSync(HParmBlkPtr ioParamBlock);

// The file that a file ID names on a volume: its name, as a file specification gives it, and
// its folder's directory ID. A file's ID is its node ID, which stays with it through renames
// and moves; IDs are handed out as this process meets items, so an ID is good for the life of
// the process. fidNotFound for an ID no item has, notAFileErr for a folder's.
OSErr PBResolveFileIDRefSync(HParmBlkPtr ioParamBlock);
