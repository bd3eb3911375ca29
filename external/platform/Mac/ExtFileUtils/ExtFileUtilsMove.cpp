// Moving and renaming in one step, unique names, and exchanging two files.
#include "ExtFileUtilsMove.h"

#include <algorithm>
#include <ctime>
#include <string>

namespace {

// Whether a folder holds an item of that name: noErr when it does, fnfErr when it does not.
OSErr Lookup(const FSRef* inFolder, const HFSUniStr255& inName)
{
    FSRef item;
    return FSMakeFSRefUnicode(inFolder, inName.length, inName.unicode, kTextEncodingUnknown, &item);
}

HFSUniStr255 NameOfSeed(long inSeed)
{
    std::string digits = std::to_string(inSeed);
    HFSUniStr255 name{};
    name.length = UInt16(digits.size());
    for (std::size_t i = 0; i < digits.size(); ++i)
        name.unicode[i] = UniChar(digits[i]);
    return name;
}

// The caller has checked that the name fits.
HFSUniStr255 NameOf(UniCharCount inLength, const UniChar* inName)
{
    HFSUniStr255 name{};
    name.length = UInt16(inLength);
    std::copy_n(inName, inLength, name.unicode);
    return name;
}

struct Placement {
    FSRef parent;
    HFSUniStr255 name;
};

OSErr PlacementOf(const FSRef* inRef, Placement& outPlacement)
{
    return FSGetCatalogInfo(inRef, kFSCatInfoNone, nullptr, &outPlacement.name, nullptr, &outPlacement.parent);
}

bool SameItem(const FSRef& inFirst, const FSRef& inSecond) { return FSCompareFSRefs(&inFirst, &inSecond) == noErr; }

// Puts an item back where it was after a later step failed; the failure is what the caller
// reports, so this one's own status is not.
void PutBack(const FSRef* inRef, const Placement& inWhere)
{
    FSMoveRenameObjectUnicode(inRef, &inWhere.parent, inWhere.name.length, inWhere.name.unicode, kTextEncodingUnknown,
                              nullptr);
}

// Moves an item whose name is taken in the destination: renamed first to a name free in
// both folders, so that the move cannot collide.
OSErr MoveUnderFreeName(const FSRef* inRef, const Placement& inFrom, const FSRef* inDestDirectory)
{
    long seed = long(std::time(nullptr));
    HFSUniStr255 temporary;
    if (OSErr status = GenerateUniqueHFSUniStr(&seed, &inFrom.parent, inDestDirectory, &temporary); status != noErr)
        return status;
    if (OSErr status = FSRenameUnicode(inRef, temporary.length, temporary.unicode, kTextEncodingUnknown, nullptr);
        status != noErr)
        return status;
    OSErr status = FSMoveObject(inRef, inDestDirectory, nullptr);
    if (status != noErr)
        FSRenameUnicode(inRef, inFrom.name.length, inFrom.name.unicode, kTextEncodingUnknown, nullptr);
    return status;
}

OSErr MoveThenRename(const FSRef* inRef, const Placement& inFrom, const FSRef* inDestDirectory,
                     const HFSUniStr255& inNewName)
{
    if (OSErr status = Lookup(inDestDirectory, inNewName); status != fnfErr)
        return status == noErr ? OSErr(dupFNErr) : status;
    OSErr clash = Lookup(inDestDirectory, inFrom.name);
    if (clash != noErr && clash != fnfErr)
        return clash;
    OSErr status = clash == noErr ? MoveUnderFreeName(inRef, inFrom, inDestDirectory)
                                  : FSMoveObject(inRef, inDestDirectory, nullptr);
    if (status != noErr)
        return status;
    status = FSRenameUnicode(inRef, inNewName.length, inNewName.unicode, kTextEncodingUnknown, nullptr);
    if (status != noErr)
        PutBack(inRef, inFrom);
    return status;
}

}  // namespace

namespace ExtFileUtils {

OSErr ExchangeByRenames(const FSRef* inSourceRef, const FSRef* inDestRef)
{
    Placement source, dest;
    FSCatalogInfo sourceInfo, destInfo;
    OSErr status = FSGetCatalogInfo(inSourceRef, kFSCatInfoNodeFlags, &sourceInfo, &source.name, nullptr,
                                    &source.parent);
    if (status == noErr)
        status = FSGetCatalogInfo(inDestRef, kFSCatInfoNodeFlags, &destInfo, &dest.name, nullptr, &dest.parent);
    if (status != noErr)
        return status;
    if ((sourceInfo.nodeFlags | destInfo.nodeFlags) & kFSNodeIsDirectoryMask)
        return notAFileErr;
    long seed = long(std::time(nullptr));
    HFSUniStr255 temporary;
    if (status = GenerateUniqueHFSUniStr(&seed, &source.parent, &dest.parent, &temporary); status != noErr)
        return status;
    // The source steps aside under the temporary name, the destination takes the source's
    // place, and the source takes the destination's; each step undoes the ones before it
    // when it fails.
    status = FSMoveRenameObjectUnicode(inSourceRef, &dest.parent, temporary.length, temporary.unicode,
                                       kTextEncodingUnknown, nullptr);
    if (status != noErr)
        return status;
    status = FSMoveRenameObjectUnicode(inDestRef, &source.parent, source.name.length, source.name.unicode,
                                       kTextEncodingUnknown, nullptr);
    if (status != noErr) {
        PutBack(inSourceRef, source);
        return status;
    }
    status = FSRenameUnicode(inSourceRef, dest.name.length, dest.name.unicode, kTextEncodingUnknown, nullptr);
    if (status != noErr) {
        PutBack(inDestRef, dest);
        PutBack(inSourceRef, source);
    }
    return status;
}

}  // namespace ExtFileUtils

OSErr GenerateUniqueHFSUniStr(long* ioStartSeed, const FSRef* inDir1, const FSRef* inDir2, HFSUniStr255* outUniqueName)
{
    if (ioStartSeed == nullptr || inDir1 == nullptr || outUniqueName == nullptr)
        return paramErr;
    for (;;) {
        HFSUniStr255 name = NameOfSeed((*ioStartSeed)++);
        OSErr status = Lookup(inDir1, name);
        if (status == fnfErr && inDir2 != nullptr)
            status = Lookup(inDir2, name);
        if (status == fnfErr) {
            *outUniqueName = name;
            return noErr;
        }
        if (status != noErr)
            return status;
    }
}

OSErr FSMoveRenameObjectUnicode(const FSRef* inRef, const FSRef* inDestDirectory, UniCharCount inNameLength,
                                const UniChar* inName, TextEncoding inTextEncodingHint, FSRef* outNewRef)
{
    if (inRef == nullptr || inDestDirectory == nullptr || (inName == nullptr && inNameLength > 0))
        return paramErr;
    if (inNameLength > 255)
        return errFSNameTooLong;
    Placement from;
    if (OSErr status = PlacementOf(inRef, from); status != noErr)
        return status;
    bool rename = inNameLength > 0;
    OSErr status;
    if (SameItem(from.parent, *inDestDirectory))
        status = rename ? FSRenameUnicode(inRef, inNameLength, inName, inTextEncodingHint, nullptr) : OSErr(noErr);
    else if (!rename)
        status = FSMoveObject(inRef, inDestDirectory, nullptr);
    else
        status = MoveThenRename(inRef, from, inDestDirectory, NameOf(inNameLength, inName));
    // References name items, not places, so the item keeps its reference.
    if (status == noErr && outNewRef)
        *outNewRef = *inRef;
    return status;
}

OSErr FSMoveRename(const FSRef* inSourceRef, const FSRef* inDestDirectory, UniCharCount inNameLength,
                   const UniChar* inName, TextEncoding inTextEncodingHint, FSRef* outNewRef)
{
    if (inSourceRef == nullptr || inDestDirectory == nullptr || (inName == nullptr && inNameLength > 0))
        return paramErr;
    if (inNameLength > 255)
        return errFSNameTooLong;
    Placement from;
    if (OSErr status = PlacementOf(inSourceRef, from); status != noErr)
        return status;
    HFSUniStr255 name = inNameLength > 0 ? NameOf(inNameLength, inName) : from.name;
    if (SameItem(from.parent, *inDestDirectory) && inNameLength == 0)
        return dupFNErr;  // the item itself holds the name
    if (OSErr status = Lookup(inDestDirectory, name); status != fnfErr)
        return status == noErr ? OSErr(dupFNErr) : status;
    return FSMoveRenameObjectUnicode(inSourceRef, inDestDirectory, name.length, name.unicode, inTextEncodingHint,
                                     outNewRef);
}

OSErr FSExchangeObjectsCompat(const FSRef* inSourceRef, const FSRef* inDestRef, FSRef* outNewSourceRef,
                              FSRef* outNewDestRef)
{
    if (inSourceRef == nullptr || inDestRef == nullptr)
        return paramErr;
    FSRef source = *inSourceRef, dest = *inDestRef;
    OSErr status = FSExchangeObjects(&source, &dest);
    // The kernel answers EINVAL, which reads as paramErr, for a file system that cannot
    // exchange two names in one step.
    if (status == paramErr)
        status = ExtFileUtils::ExchangeByRenames(&source, &dest);
    if (status != noErr)
        return status;
    if (outNewSourceRef)
        *outNewSourceRef = dest;
    if (outNewDestRef)
        *outNewDestRef = source;
    return noErr;
}
