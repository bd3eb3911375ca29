// A folder at a location that may not exist yet, with the volume and directory ID it has once
// it exists: creating it, emptying it and deleting it with everything in it.
#pragma once

#include <Groundwork/Files/GxFSObject.h>

namespace Gx {

// Volume and directory ID are 0 while the folder is not known to exist. A location that names
// an existing file is refused with OSError errFSNotAFolder "File object is not a folder".
class Folder {
public:
    Folder() = default;
    explicit Folder(const FSObject& inLocation);
    Folder(FSVolumeRefNum inVolume, SInt32 inDirID);
    Folder(const Folder&) = default;
    Folder& operator=(const Folder&) = default;
    ~Folder() = default;

    bool IsEqualTo(const Folder& inOther) const { return mLocation.CompareTo(inOther.mLocation) == noErr; }
    const FSObject& GetLocation() const { return mLocation; }
    FSVolumeRefNum GetVolume() const { return mVolume; }
    SInt32 GetDirID() const { return mDirID; }

    void SetVolAndDirIDFromLocation();
    // From the volume and directory ID when both are known (they survive renames and moves),
    // else from the location.
    void UpdateLocation();

    // An existing folder throws LogicError 'logc' unless inReplace is set; then it is deleted
    // with everything in it first. inInfo may be NULL when inWhichInfo is kFSCatInfoNone.
    void CreateOnDisk(FSCatalogInfoBitmap inWhichInfo = kFSCatInfoNone, const FSCatalogInfo* inInfo = nullptr,
                      bool inReplace = false);
    // The folder and everything in it.
    void DeleteOnDisk();
    // Everything in the folder; the folder stays.
    void DeleteContents();
    void Invalidate();

private:
    FSVolumeRefNum mVolume = 0;
    SInt32 mDirID = 0;
    FSObject mLocation;
};

}  // namespace Gx
