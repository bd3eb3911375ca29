// Extended file utilities: higher-level file operations built out of the File Manager's
// primitives. Recursive deletion, fork totals, Finder-flag changes that make the parent
// folder's window refresh, lock checks that look at the item and at its volume, and small
// queries (parent, name, volume, node ID), plus the volume, name, copy and default-folder
// helpers of the same family.
//
// Every function returns a File Manager status (0 is success) and never throws; paramErr
// (-50) where a required result pointer is NULL. Optional result pointers are named so in
// each comment. No state is kept between calls.
#pragma once

#include <Carbon/Carbon.h>
#include <Carbon/FilesExtras.h>
#include <Carbon/MacMemory.h>

// ---- Queries about one item ----

OSErr FSGetVRefNum(const FSRef* inRef, FSVolumeRefNum* outVRefNum);
// The folder holding the item; for a volume's root folder, 0 and a reference of 80 zero bytes.
OSErr FSGetParentRef(const FSRef* inRef, FSRef* outParentRef);
OSErr FSGetFileDirName(const FSRef* inRef, HFSUniStr255* outName);
// outNodeID and outIsDirectory are optional.
OSErr FSGetNodeID(const FSRef* inRef, long* outNodeID, Boolean* outIsDirectory);
// Both results optional: the caller's access bits and the item's four permission words.
OSErr FSGetUserPrivilegesPermissions(const FSRef* inRef, UInt8* outUserPrivileges, UInt32 outPermissions[4]);
// True when a catalog call on the reference succeeds.
Boolean FSRefValid(const FSRef* inRef);

// 0 when the item may be changed; fLckdErr (-45) when it is locked, which is looked at
// first; else wPrErr (-44) for a write-protected volume, vLckdErr (-46) for a locked one.
OSErr FSCheckLock(const FSRef* inRef);

// ---- Forks ----

// Logical sizes of the data and resource forks; both optional.
OSErr FSGetForkSizes(const FSRef* inRef, UInt64* outDataLogicalSize, UInt64* outRsrcLogicalSize);
// The sums over every fork the file has, and how many it has; each optional. A failure other
// than running out of forks is returned with the totals counted so far.
OSErr FSGetTotalForkSizes(const FSRef* inRef, UInt64* outTotalLogicalSize, UInt64* outTotalPhysicalSize,
                          ItemCount* outForkCount);
// Copies one open fork into another, inBufferSize bytes at a time through inBuffer, then
// cuts the destination to the source's size.
OSErr FSCopyFork(SInt16 inSourceRefNum, SInt16 inDestRefNum, void* inBuffer, ByteCount inBufferSize);
// The reference of the file an open fork belongs to.
OSErr FileRefNumGetFSRef(SInt16 inRefNum, FSRef* outRef);

// ---- Finder information ----

// Any of the three results may be NULL; the boolean tells whether the item is a folder.
OSErr FSGetFinderInfo(const FSRef* inRef, FinderInfo* outInfo, ExtendedFinderInfo* outExtendedInfo,
                      Boolean* outIsDirectory);
// Writes the records given; with both NULL nothing is written.
OSErr FSSetFinderInfo(const FSRef* inRef, const FinderInfo* inInfo, const ExtendedFinderInfo* inExtendedInfo);
// Sets (inSetBits) or clears the given Finder flags, then moves the parent folder's
// modification date forward so that its observers refresh.
OSErr FSChangeFinderFlags(const FSRef* inRef, Boolean inSetBits, UInt16 inFlagBits);
// A file's creator and type; 0 keeps the old value. notAFileErr (-1302) for a folder.
OSErr FSChangeCreatorType(const FSRef* inRef, OSType inFileCreator, OSType inFileType);
// Makes a folder's content-modification date visibly change: to now, or one second past the
// old date when now reads the same. A failed date write is not reported.
OSErr FSBumpDate(const FSRef* inRef);

OSErr FSSetInvisible(const FSRef* inRef);
OSErr FSClearInvisible(const FSRef* inRef);
OSErr FSSetNameLocked(const FSRef* inRef);
OSErr FSClearNameLocked(const FSRef* inRef);
OSErr FSSetIsStationery(const FSRef* inRef);
OSErr FSClearIsStationery(const FSRef* inRef);
OSErr FSSetHasCustomIcon(const FSRef* inRef);
OSErr FSClearHasCustomIcon(const FSRef* inRef);
OSErr FSClearHasBeenInited(const FSRef* inRef);

// Dates, Finder information and permissions of one item onto another; the lock only when
// inCopyLockBit.
OSErr FSCopyFileMgrAttributes(const FSRef* inSourceRef, const FSRef* inDestRef, Boolean inCopyLockBit);

// ---- Folders ----

// Everything inside a folder; the folder stays. Stops at the first item that cannot be
// deleted, leaving it and what was not yet reached in place.
OSErr FSDeleteContainerContents(const FSRef* inContainer);
// A folder and everything inside it; dirNFErr (-120) for a file, which is left alone.
OSErr FSDeleteContainer(const FSRef* inContainer);

// Called for every item under a folder, down to inMaxLevels levels (0: no limit). Returning
// true stops the iteration. inCatalogInfo always holds the node flags.
using IterateContainerFilterProcPtr = Boolean (*)(Boolean inContainerChanged, ItemCount inCurrentLevel,
                                                  const FSCatalogInfo* inCatalogInfo, const FSRef* inRef,
                                                  const FSSpec* inSpec, const HFSUniStr255* inName, void* ioData);
// paramErr without a filter function. inWantSpec and inWantName decide whether the filter
// gets a specification and a name (else NULL).
OSErr FSIterateContainer(const FSRef* inContainer, ItemCount inMaxLevels, FSCatalogInfoBitmap inWhichInfo,
                         Boolean inWantSpec, Boolean inWantName, IterateContainerFilterProcPtr inFilter, void* ioData);
// A new handle holding the references of a folder's items (the caller disposes of it), their
// count, and whether the folder changed while it was read (optional).
OSErr FSGetDirectoryItems(const FSRef* inContainer, FSRef*** outRefsHandle, ItemCount* outRefCount,
                          Boolean* outContainerChanged);

// A name "<seed in decimal>" that neither folder holds, trying seeds from *ioStartSeed on;
// *ioStartSeed is left one past the seed used. inDir2 may be NULL.
OSErr GenerateUniqueHFSUniStr(long* ioStartSeed, const FSRef* inDir1, const FSRef* inDir2, HFSUniStr255* outUniqueName);

// ---- Moving, renaming, copying, exchanging ----

// Moves an item into another folder of the same volume and gives it a new name there (NULL
// or empty: keeps its name), through a unique temporary name when the old name is taken in
// the destination. outNewRef is optional.
OSErr FSMoveRenameObjectUnicode(const FSRef* inRef, const FSRef* inDestDirectory, UniCharCount inNameLength,
                                const UniChar* inName, TextEncoding inTextEncodingHint, FSRef* outNewRef);
// The same move and rename in one request; dupFNErr when the new name is taken.
OSErr FSMoveRename(const FSRef* inSourceRef, const FSRef* inDestDirectory, UniCharCount inNameLength,
                   const UniChar* inName, TextEncoding inTextEncodingHint, FSRef* outNewRef);
// A copy of a file (data fork, resource fork, Finder information, dates and lock) in a folder
// under the given name (NULL or empty: the source's name); the data is copied inside the
// kernel where it can be. The copy belongs to the caller, as cp's copies do. outNewRef is
// optional.
OSErr FSCopyFile(const FSRef* inSourceRef, const FSRef* inDestDirectory, UniCharCount inNameLength,
                 const UniChar* inName, TextEncoding inTextEncodingHint, FSRef* outNewRef);
// Exchanges two files so that each name holds what the other held. outNewSourceRef receives
// the file now standing under the source's name and place, outNewDestRef the one under the
// destination's; both optional.
OSErr FSExchangeObjectsCompat(const FSRef* inSourceRef, const FSRef* inDestRef, FSRef* outNewSourceRef,
                              FSRef* outNewDestRef);

// ---- File IDs ----

// A file's ID is its node ID on its volume, which stays with it through renames and moves.
OSErr FSCreateFileIDRef(const FSRef* inRef, SInt32* outFileID);
OSErr FSResolveFileIDRef(FSVolumeRefNum inVolume, SInt32 inFileID, FSRef* outRef);

// ---- Volumes ----

OSErr FSGetVolParms(FSVolumeRefNum inVolume, UInt32 inBufferSize, GetVolParmsInfoBuffer* outInfo,
                    UInt32* outActualInfoSize);
// Any of the three results may be NULL.
OSErr FSGetVInfo(FSVolumeRefNum inVolume, HFSUniStr255* outVolumeName, UInt64* outFreeBytes, UInt64* outTotalBytes);
// The file system's type (the kernel's magic number) split in two halves: the low half as
// the file-system ID and the high half as the signature. Both optional.
OSErr FSGetVolFileSystemID(FSVolumeRefNum inVolume, UInt16* outFileSystemID, UInt16* outSignature);
// A new handle holding the root-folder references of all mounted volumes, and their count.
OSErr FSGetMountedVolumes(FSRef*** outVolumeRefsHandle, ItemCount* outVolumeCount);

// Shared-folder access privileges and remount records belong to file servers; every volume
// here answers wrgVolTypErr.
OSErr FSGetDirAccess(const FSRef* inRef, SInt32* outOwnerID, SInt32* outGroupID, SInt32* outAccessRights);
OSErr FSSetDirAccess(const FSRef* inRef, SInt32 inOwnerID, SInt32 inGroupID, SInt32 inAccessRights);
OSErr FSGetVolMountInfoSize(FSVolumeRefNum inVolume, UInt16* outSize);
OSErr FSGetVolMountInfo(FSVolumeRefNum inVolume, void* outVolMountInfo);
OSErr FSVolumeMount(const void* inVolMountInfo, FSVolumeRefNum* outVolume);

// User and group names and IDs of the system's accounts: inObjType kOwnerID2Name or
// kGroupID2Name for FSMapID, kOwnerName2ID or kGroupName2ID for FSMapName. The volume is
// not consulted. fnfErr for an unknown ID or name.
OSErr FSMapID(FSVolumeRefNum inVolume, SInt32 inID, SInt16 inObjType, Str31 outName);
OSErr FSMapName(FSVolumeRefNum inVolume, ConstStr255Param inName, SInt16 inObjType, SInt32* outID);

// ---- Specifications, names and paths ----

OSErr FSRefMakeFSSpec(const FSRef* inRef, FSSpec* outSpec);
// The item inName (a Pascal string; NULL or empty for the folder itself) in the folder of
// the given volume and directory ID.
OSErr FSMakeFSRef(FSVolumeRefNum inVolume, SInt32 inDirID, ConstStr255Param inName, FSRef* outRef);
// The POSIX path of the same item, NUL-terminated in at most inMaxPathSize bytes.
OSStatus FSMakePath(SInt16 inVolume, SInt32 inDirID, ConstStr255Param inName, UInt8* outPath, UInt32 inMaxPathSize);
// The specification of the item at a POSIX path; outIsDirectory is optional.
OSStatus FSPathMakeFSSpec(const UInt8* inPath, FSSpec* outSpec, Boolean* outIsDirectory);
// Between Unicode names and HFS Pascal names (at most 31 bytes, 27 for a volume) in the
// given encoding, or the system's when the hint is kTextEncodingUnknown. errFSNameTooLong
// when the name does not fit, kTextUndefinedElementErr when the encoding cannot hold it.
OSErr UnicodeNameGetHFSName(UniCharCount inNameLength, const UniChar* inName, TextEncoding inTextEncodingHint,
                            Boolean inIsVolumeName, Str31 outHFSName);
OSErr HFSNameGetUnicodeName(ConstStr255Param inHFSName, TextEncoding inTextEncodingHint, HFSUniStr255* outName);

// ---- The default folder ----

// Makes a folder the process's current directory; outOldDefault (optional) receives the
// one it replaced, for FSRestoreDefault.
OSErr FSSetDefault(const FSRef* inNewDefault, FSRef* outOldDefault);
OSErr FSRestoreDefault(const FSRef* inOldDefault);

// ---- Memory ----

// A buffer of the requested size rounded down to a multiple of 4,096 (at least 4,096). When
// that cannot be had and more than 4,096 bytes were asked for, as much as free memory allows
// (less 32,768 bytes to spare), rounded the same way. *outActualSize is the size obtained, or
// 0 with a NULL result. The buffer is given back with DisposePtr.
Ptr GetTempBuffer(ByteCount inRequestedSize, ByteCount* outActualSize);
