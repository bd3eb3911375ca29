// The Finder's information about a file or folder: type and creator codes, flags, window
// placement. Each record is 16 bytes; FSCatalogInfo carries them as finderInfo and
// extFinderInfo, in the byte order of the machine.
#pragma once

#include <MacTypes.h>

struct FileInfo {
    OSType fileType;
    OSType fileCreator;
    UInt16 finderFlags;
    Point location;  // of the icon in its folder's window
    UInt16 reservedField;
};

struct FolderInfo {
    Rect windowBounds;
    UInt16 finderFlags;
    Point location;
    UInt16 reservedField;
};

struct ExtendedFileInfo {
    SInt16 reserved1[4];
    UInt16 extendedFinderFlags;
    SInt16 reserved2;
    SInt32 putAwayFolderID;
};

struct ExtendedFolderInfo {
    Point scrollPosition;
    SInt32 reserved1;
    UInt16 extendedFinderFlags;
    SInt16 reserved2;
    SInt32 putAwayFolderID;
};

// The file view, which is what most code reads: the Finder flags sit at the same offset in
// the folder view, so finderFlags serves both.
using FinderInfo = FileInfo;
using ExtendedFinderInfo = ExtendedFileInfo;

static_assert(sizeof(FileInfo) == 16 && sizeof(FolderInfo) == 16);
static_assert(sizeof(ExtendedFileInfo) == 16 && sizeof(ExtendedFolderInfo) == 16);

// finderFlags.
enum : UInt16 {
    kIsOnDesk = 0x0001,
    kColor = 0x000E,  // the label, three bits
    kIsShared = 0x0040,
    kHasNoINITs = 0x0080,
    kHasBeenInited = 0x0100,
    kHasCustomIcon = 0x0400,
    kIsStationery = 0x0800,
    kNameLocked = 0x1000,
    kHasBundle = 0x2000,
    kIsInvisible = 0x4000,
    kIsAlias = 0x8000,
};

// extendedFinderFlags.
enum : UInt16 {
    kExtendedFlagsAreInvalid = 0x8000,
    kExtendedFlagHasCustomBadge = 0x0100,
    kExtendedFlagObjectIsBusy = 0x0080,
    kExtendedFlagHasRoutingInfo = 0x0004,
};
