// The Resource Manager: typed, numbered pieces of data ('STR#' 128, 'MENU' 1000, ...) kept
// in resource files, found through the chain of open resource files.
//
// On this system:
// - Resource files are only read. Opening one reads its whole map and data at once and keeps
//   the fork open (read-only, whatever permission is asked for) until the file is closed; its
//   reference number is that of the open fork. No call here writes a resource file.
// - A file that is opened again answers the reference number it already has and does not
//   become the current file; one CloseResFile closes it.
// - The most recently opened file becomes the current resource file. GetResource and its
//   kin search the current file, then each file opened before it, down to the oldest;
//   Get1Resource and its kin search the current file only. There is no System file: with no
//   file open, CurResFile answers kResFileNotOpened.
// - Closing the current file makes the most recently opened of the remaining files current.
// - A resource comes back as a Memory Manager handle with its resource flag set. The Resource
//   Manager owns it: asking again answers the same handle, and ReleaseResource or closing the
//   file disposes of it. DetachResource hands it to the caller, who then disposes of it.
//   Disposing of a resource handle with DisposeHandle is an error, as on the platform.
// - Resource names compare without regard to the case of the letters A to Z.
// - Every call records its status for ResError, per thread: resNotFound, resFNotFound,
//   mapReadErr for a damaged file, eofErr for an empty fork, or the File Manager's status.
// - The chain is shared by every thread of the process and guarded, so calls from several
//   threads are safe, although switching the current file from one thread changes it for all.
#pragma once

#include <Carbon/Files.h>
#include <Carbon/MacMemory.h>
#include <MacTypes.h>

using ResID = SInt16;
using ResAttributes = SInt16;
using ResFileRefNum = SInt16;
using ResourceCount = SInt16;
using ResourceIndex = SInt16;

enum : ResFileRefNum { kResFileNotOpened = -1 };

// The attribute bits of a resource, as stored in its file.
enum : ResAttributes {
    resSysHeap = 64,
    resPurgeable = 32,
    resLocked = 16,
    resProtected = 8,
    resPreload = 4,
    resChanged = 2,
};

// Opens the file's resource fork; kResFileNotOpened on failure (ResError says why: eofErr for
// a file without resources, mapReadErr for a damaged fork, or the File Manager's status).
ResFileRefNum FSOpenResFile(const FSRef* inRef, SInt8 inPermission);
// The same for any fork, so that a data fork can hold a resource file (the data fork's name
// is the empty one, see FSGetDataForkName).
OSErr FSOpenResourceFile(const FSRef* inRef, UniCharCount inForkNameLength, const UniChar* inForkName,
                         SInt8 inPermissions, ResFileRefNum* outRefNum);
// Disposes of the file's resources that were not detached, then closes its fork.
void CloseResFile(ResFileRefNum inRefNum);
ResFileRefNum CurResFile();
void UseResFile(ResFileRefNum inRefNum);
OSErr ResError();

// Counts and look-ups. An index counts from 1, in the order of the file's map.
ResourceCount CountResources(ResType inType);
ResourceCount Count1Resources(ResType inType);
Handle GetResource(ResType inType, ResID inID);
Handle Get1Resource(ResType inType, ResID inID);
Handle Get1IndResource(ResType inType, ResourceIndex inIndex);
Handle GetNamedResource(ResType inType, ConstStr255Param inName);
Handle Get1NamedResource(ResType inType, ConstStr255Param inName);

// About a resource handle. Any of GetResInfo's results may be NULL; the name is an empty
// Pascal string for a resource without one. A handle that is not a resource answers
// resNotFound (and -1 for the size).
void GetResInfo(Handle inResource, ResID* outID, ResType* outType, StringPtr outName);
ResAttributes GetResAttrs(Handle inResource);
long GetResourceSizeOnDisk(Handle inResource);

void ReleaseResource(Handle inResource);
void DetachResource(Handle inResource);
