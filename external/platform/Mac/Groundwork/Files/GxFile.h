// A file at a location that may not exist yet: creating and deleting it, its fork sizes, and
// the forks it holds open.
#pragma once

#include <Groundwork/Files/GxDataFork.h>
#include <Groundwork/Files/GxFSObject.h>
#include <Groundwork/Files/GxResourceFork.h>

#include <memory>

namespace Gx {

// A File owns the forks it opens and closes them when it lets go of them (closing, deleting,
// invalidating, assigning, destruction). A copy starts with no fork open: forks are never
// shared.
class File {
public:
    File() = default;
    explicit File(const FSObject& inLocation) : mLocation(inLocation) {}
    File(const File& inOther) : mLocation(inOther.mLocation) {}
    File& operator=(const File& inOther);
    ~File() = default;

    bool IsEqualTo(const File& inOther) const { return mLocation.CompareTo(inOther.mLocation) == noErr; }
    const FSObject& GetLocation() const { return mLocation; }

    // An existing file throws LogicError 'logc' unless inReplace is set; then it is deleted
    // first. Forks this File holds open are not closed for that, so replacing a file that is
    // open here fails as the platform refuses it ("FSDeleteObject failed"). inInfo may be
    // NULL when inWhichInfo is kFSCatInfoNone.
    void CreateOnDisk(FSCatalogInfoBitmap inWhichInfo = kFSCatInfoNone, const FSCatalogInfo* inInfo = nullptr,
                      bool inReplace = false);
    // The same with Finder information holding only the type and creator.
    void CreateOnDisk(OSType inFileType, OSType inCreator, bool inReplace = false);
    // Closes the forks; afterwards the location names the vanished file by folder and name.
    void DeleteOnDisk();
    void Invalidate();
    // Follows the file through renames and moves: an open fork knows where its file is now.
    void UpdateLocation();

    // Any pointer may be NULL.
    void GetTotalForkSizes(UInt64* outLogicalSize, UInt64* outPhysicalSize = nullptr,
                           ItemCount* outForkCount = nullptr) const;

    // An open fork is returned as it is, whatever permission is asked for now.
    DataFork& OpenDataFork(SInt8 inPermission);
    void CloseDataFork() { mDataFork.reset(); }
    ResourceFork& OpenResourceFork(SInt8 inPermission);
    void CloseResourceFork() { mResourceFork.reset(); }

    DataFork* GetDataFork() const { return mDataFork.get(); }
    bool IsDataForkOpen() const { return mDataFork != nullptr; }
    ResourceFork* GetResourceFork() const { return mResourceFork.get(); }
    bool IsResourceForkOpen() const { return mResourceFork != nullptr; }

private:
    void CloseForks();

    FSObject mLocation;
    std::unique_ptr<DataFork> mDataFork;
    std::unique_ptr<ResourceFork> mResourceFork;
};

}  // namespace Gx
