#include <Groundwork/Files/GxFile.h>

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>
#include <Groundwork/Files/GxFSUtils.h>

#include <ExtFileUtils/ExtFileUtils.h>

#include <cstring>

namespace Gx {

File& File::operator=(const File& inOther)
{
    CloseForks();
    mLocation = inOther.mLocation;
    return *this;
}

void File::CreateOnDisk(FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo* inInfo, bool inReplace)
{
    if (mLocation.Exists()) {
        if (!inReplace)
            LogicError::Throw(exceptionID_Logic, "File exists and inReplace is false", sourceLocation_Nothing);
        mLocation.Delete();
    }
    FSRef parent;
    HFSUniStr255 name;
    mLocation.GetParent(parent);
    mLocation.GetName(name);
    FSRef created;
    FSUtils::ThrowIfFailed(
        FSCreateFileUnicode(&parent, name.length, name.unicode, inWhichInfo, inInfo, &created, nullptr),
        "FSCreateFileUnicode failed");
    mLocation = created;
}

void File::CreateOnDisk(OSType inFileType, OSType inCreator, bool inReplace)
{
    FileInfo finderInfo{};
    finderInfo.fileType = inFileType;
    finderInfo.fileCreator = inCreator;
    FSCatalogInfo info{};
    std::memcpy(info.finderInfo, &finderInfo, sizeof info.finderInfo);
    CreateOnDisk(kFSCatInfoFinderInfo, &info, inReplace);
}

void File::DeleteOnDisk()
{
    CloseForks();
    mLocation.Delete();
}

void File::Invalidate()
{
    CloseForks();
    mLocation.Invalidate();
}

void File::UpdateLocation()
{
    if (mDataFork)
        mDataFork->GetFSObject(mLocation);
    else if (mResourceFork)
        mResourceFork->GetFSObject(mLocation);
    else if (mLocation.IsValid())
        mLocation.Update();
}

void File::GetTotalForkSizes(UInt64* outLogicalSize, UInt64* outPhysicalSize, ItemCount* outForkCount) const
{
    FSUtils::ThrowIfFailed(FSGetTotalForkSizes(&mLocation.UseRef(), outLogicalSize, outPhysicalSize, outForkCount),
                           "FSGetTotalForkSizes failed");
}

DataFork& File::OpenDataFork(SInt8 inPermission)
{
    if (!mDataFork)
        mDataFork = std::make_unique<DataFork>(mLocation.UseRef(), inPermission);
    return *mDataFork;
}

ResourceFork& File::OpenResourceFork(SInt8 inPermission)
{
    if (!mResourceFork)
        mResourceFork = std::make_unique<ResourceFork>(mLocation.UseRef(), inPermission);
    return *mResourceFork;
}

void File::CloseForks()
{
    mDataFork.reset();
    mResourceFork.reset();
}

}  // namespace Gx
