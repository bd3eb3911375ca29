#include <Groundwork/Files/GxFolder.h>

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>
#include <Groundwork/Files/GxFSUtils.h>

#include <ExtFileUtils/ExtFileUtils.h>

#include <Carbon/MacErrors.h>

namespace Gx {

using FSUtils::ThrowIfFailed;

Folder::Folder(const FSObject& inLocation) : mLocation(inLocation) { SetVolAndDirIDFromLocation(); }

Folder::Folder(FSVolumeRefNum inVolume, SInt32 inDirID) : mVolume(inVolume), mDirID(inDirID) { UpdateLocation(); }

void Folder::SetVolAndDirIDFromLocation()
{
    if (!mLocation.Exists()) {
        mVolume = 0;
        mDirID = 0;
        return;
    }
    FSCatalogInfo info;
    mLocation.GetCatalogInfo(kFSCatInfoNodeFlags | kFSCatInfoVolume | kFSCatInfoNodeID, info);
    if ((info.nodeFlags & kFSNodeIsDirectoryMask) == 0)
        OSError::Throw(errFSNotAFolder, "File object is not a folder", sourceLocation_Nothing);
    mVolume = info.volume;
    mDirID = SInt32(info.nodeID);
}

void Folder::UpdateLocation()
{
    if (mVolume != 0 && mDirID != 0) {
        FSRef folder;
        ThrowIfFailed(FSUtils::MakeFolderRef(mVolume, mDirID, folder), "PBMakeFSRefSync failed");
        mLocation = folder;
        return;
    }
    mLocation.Update();
    SetVolAndDirIDFromLocation();
}

void Folder::CreateOnDisk(FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo* inInfo, bool inReplace)
{
    // Parent and name come first: for an existing folder they are read from the disk before
    // it is deleted.
    FSRef parent;
    HFSUniStr255 name;
    mLocation.GetParent(parent);
    mLocation.GetName(name);
    if (mLocation.Exists()) {
        if (!inReplace)
            LogicError::Throw(exceptionID_Logic, "Folder exists and inReplace is false", sourceLocation_Nothing);
        ThrowIfFailed(FSDeleteContainer(&mLocation.UseRef()), "FSDeleteContainer failed");
    }
    FSRef created;
    UInt32 dirID = 0;
    ThrowIfFailed(
        FSCreateDirectoryUnicode(&parent, name.length, name.unicode, inWhichInfo, inInfo, &created, nullptr, &dirID),
        "FSCreateDirectoryUnicode failed");
    mDirID = SInt32(dirID);
    mLocation = created;
    mVolume = mLocation.GetVolume();
}

void Folder::DeleteOnDisk()
{
    mLocation.DeleteContainer();
    mVolume = 0;
    mDirID = 0;
}

void Folder::DeleteContents() { mLocation.DeleteContainerContents(); }

void Folder::Invalidate()
{
    mVolume = 0;
    mDirID = 0;
    mLocation.Invalidate();
}

}  // namespace Gx
