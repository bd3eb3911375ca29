// Making references: from a folder and a name, from volume and directory IDs, from a file
// specification, from a path; comparing them; and the path of one.
#include "FSCatalog.h"
#include "FSItemTable.h"
#include "FSNames.h"
#include "FSVolumes.h"

#include <Carbon/MacErrors.h>

#include <sys/stat.h>

#include <cstring>

using namespace carbon;

namespace {

FSVolumeRefNum StartupVolume()
{
    struct stat root;
    return ::stat("/", &root) == 0 ? VolumeRefNumOf(root.st_dev) : FSVolumeRefNum(-100);
}

// A child by the Pascal name of a file specification, which may be the shortened form that
// FillSpec gives an item whose name does not fit.
OSErr ChildByPascalName(const ItemLocation& inFolder, ConstStringPtr inName, FSRef* outRef)
{
    std::u16string text;
    if (!UnicodeOfPascalName(inName, text))
        return bdNamErr;
    std::string diskName;
    OSErr status = DiskNameForLookup({reinterpret_cast<const UniChar*>(text.data()), text.size()}, diskName);
    if (status == noErr)
        status = EnterChild(inFolder, diskName, outRef, nullptr);
    std::optional<UInt32> nodeID = NodeIDOfShortenedName(text);
    if (status != fnfErr || !nodeID)
        return status;
    FSRef candidate;
    ItemLocation item;
    if (RefOfNode(VolumeRefNumOf(inFolder.key.device), *nodeID, &candidate) != noErr ||
        LocateItem(&candidate, item) != noErr || !(item.parentKey == inFolder.key) || item.isRoot)
        return fnfErr;
    FSSpec spec;
    FillSpec(item, spec);
    if (std::memcmp(spec.name, inName, std::size_t(inName[0]) + 1) != 0)
        return fnfErr;
    *outRef = candidate;
    return noErr;
}

OSErr RootByName(FSVolumeRefNum inVolume, ConstStringPtr inName, FSRef* outRef)
{
    FSRef root;
    ItemLocation location;
    FSSpec spec;
    if (RefOfNode(inVolume, fsRtDirID, &root) != noErr || LocateItem(&root, location) != noErr)
        return fnfErr;
    FillSpec(location, spec);
    if (std::memcmp(spec.name, inName, std::size_t(inName[0]) + 1) != 0)
        return fnfErr;
    *outRef = root;
    return noErr;
}

// The folder given by volume and directory ID, or the item of that name in it.
OSErr MakeFromIDs(FSVolumeRefNum inVolume, SInt32 inDirID, ConstStringPtr inName, FSRef* outRef)
{
    FSVolumeRefNum volume = inVolume == kFSInvalidVolumeRefNum ? StartupVolume() : inVolume;
    if (!VolumeOfRefNum(volume))
        return nsvErr;
    bool named = inName != nullptr && inName[0] > 0;
    if (inDirID == fsRtParID)
        return named ? RootByName(volume, inName, outRef) : OSErr(dirNFErr);
    FSRef folder;
    ItemLocation location;
    UInt32 nodeID = inDirID == 0 ? UInt32(fsRtDirID) : UInt32(inDirID);
    if (RefOfNode(volume, nodeID, &folder) != noErr || LocateItem(&folder, location) != noErr ||
        !location.IsDirectory())
        return dirNFErr;
    if (!named) {
        *outRef = folder;
        return noErr;
    }
    return ChildByPascalName(location, inName, outRef);
}

}  // namespace

OSErr FSMakeFSRefUnicode(const FSRef* inParentRef, UniCharCount inNameLength, const UniChar* inName, TextEncoding,
                         FSRef* outNewRef)
{
    if (inParentRef == nullptr || outNewRef == nullptr || (inName == nullptr && inNameLength > 0))
        return paramErr;
    ItemLocation parent;
    if (OSErr status = LocateItem(inParentRef, parent); status != noErr)
        return status;
    if (!parent.IsDirectory())
        return errFSNotAFolder;
    std::string diskName;
    if (OSErr status = DiskNameForLookup({inName, inNameLength}, diskName); status != noErr)
        return status;
    return EnterChild(parent, diskName, outNewRef, nullptr);
}

OSErr PBMakeFSRefSync(FSRefParam* ioParamBlock)
{
    if (ioParamBlock == nullptr)
        return paramErr;
    OSErr status = ioParamBlock->newRef == nullptr ? OSErr(paramErr)
                                                   : MakeFromIDs(ioParamBlock->ioVRefNum, ioParamBlock->ioDirID,
                                                                 ioParamBlock->ioNamePtr, ioParamBlock->newRef);
    ioParamBlock->ioResult = status;
    return status;
}

OSErr FSpMakeFSRef(const FSSpec* inSource, FSRef* outNewRef)
{
    if (inSource == nullptr || outNewRef == nullptr)
        return paramErr;
    return MakeFromIDs(inSource->vRefNum, inSource->parID, inSource->name, outNewRef);
}

OSErr FSCompareFSRefs(const FSRef* inRef1, const FSRef* inRef2)
{
    if (inRef1 == nullptr || inRef2 == nullptr)
        return paramErr;
    return CompareRefs(*inRef1, *inRef2);
}

OSStatus FSPathMakeRef(const UInt8* inPath, FSRef* outRef, Boolean* outIsDirectory)
{
    if (inPath == nullptr || outRef == nullptr)
        return paramErr;
    FSRef ref;
    ItemLocation location;
    std::string path(reinterpret_cast<const char*>(inPath));
    if (path.empty())
        return fnfErr;
    if (OSErr status = EnterPath(path, true, &ref); status != noErr)
        return status;
    if (OSErr status = LocateItem(&ref, location); status != noErr)
        return status;
    if (outIsDirectory)
        *outIsDirectory = location.IsDirectory();
    *outRef = ref;
    return noErr;
}

OSStatus FSRefMakePath(const FSRef* inRef, UInt8* outPath, UInt32 inMaxPathSize)
{
    if (inRef == nullptr || outPath == nullptr)
        return paramErr;
    ItemLocation location;
    if (OSErr status = LocateItem(inRef, location); status != noErr)
        return status;
    std::string path = CurrentPath(location);
    if (path.empty())
        return fnfErr;
    if (path.size() + 1 > inMaxPathSize)
        return errFSNameTooLong;
    std::memcpy(outPath, path.c_str(), path.size() + 1);
    return noErr;
}
