// Copying a file: both forks through the File Manager (which keeps the resource fork in the
// file's companion), then the Finder information, dates and lock.
#include "ExtFileUtilsInternal.h"

#include <algorithm>

namespace {

class OpenedFork {
public:
    OpenedFork() = default;
    OpenedFork(const OpenedFork&) = delete;
    OpenedFork& operator=(const OpenedFork&) = delete;
    ~OpenedFork()
    {
        if (mRefNum != 0)
            FSCloseFork(mRefNum);
    }
    SInt16* Out() { return &mRefNum; }
    SInt16 Get() const { return mRefNum; }

private:
    SInt16 mRefNum = 0;
};

class TempBuffer {
public:
    explicit TempBuffer(ByteCount inRequested) : mBlock(GetTempBuffer(inRequested, &mSize)) {}
    TempBuffer(const TempBuffer&) = delete;
    TempBuffer& operator=(const TempBuffer&) = delete;
    ~TempBuffer() { DisposePtr(mBlock); }
    Ptr Get() const { return mBlock; }
    ByteCount Size() const { return mSize; }

private:
    ByteCount mSize = 0;
    Ptr mBlock;
};

// Larger buffers copy no faster, and a large file must not take all free memory.
constexpr ByteCount kLargestCopyBuffer = ByteCount(1) << 20;

// One fork of the source into the same fork of the copy. The data fork always exists; a
// resource fork only when the source has one.
OSErr CopyFork(const FSRef& inSource, const FSRef& inCopy, const HFSUniStr255& inFork, bool inIsResourceFork)
{
    OpenedFork from, to;
    OSErr status = FSOpenFork(&inSource, inFork.length, inFork.unicode, fsRdPerm, from.Out());
    if (status == errFSForkNotFound && inIsResourceFork)
        return noErr;
    if (status == noErr && inIsResourceFork)
        status = FSCreateFork(&inCopy, inFork.length, inFork.unicode);
    if (status == noErr)
        status = FSOpenFork(&inCopy, inFork.length, inFork.unicode, fsWrPerm, to.Out());
    if (status != noErr)
        return status;
    SInt64 size = 0;
    FSGetForkSize(from.Get(), &size);
    TempBuffer buffer{std::min(ByteCount(size), kLargestCopyBuffer)};
    if (buffer.Get() == nullptr)
        return memFullErr;
    return FSCopyFork(from.Get(), to.Get(), buffer.Get(), buffer.Size());
}

OSErr CopyForks(const FSRef& inSource, const FSRef& inCopy)
{
    HFSUniStr255 data, resource;
    FSGetDataForkName(&data);
    FSGetResourceForkName(&resource);
    OSErr status = CopyFork(inSource, inCopy, data, false);
    return status == noErr ? CopyFork(inSource, inCopy, resource, true) : status;
}

OSErr CopyAttributes(const FSRef& inSource, const FSRef& inCopy)
{
    // Not the owner and permissions: a copy belongs to whoever makes it, as cp's do.
    constexpr FSCatalogInfoBitmap kWhich = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo | kFSCatInfoCreateDate |
                                           kFSCatInfoContentMod | kFSCatInfoAccessDate | kFSCatInfoBackupDate |
                                           kFSCatInfoNodeFlags;
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(&inSource, kWhich, &info, nullptr, nullptr, nullptr);
    return status == noErr ? FSSetCatalogInfo(&inCopy, kWhich, &info) : status;
}

}  // namespace

OSErr FSCopyFile(const FSRef* inSourceRef, const FSRef* inDestDirectory, UniCharCount inNameLength,
                 const UniChar* inName, TextEncoding, FSRef* outNewRef)
{
    if (inSourceRef == nullptr || inDestDirectory == nullptr || (inName == nullptr && inNameLength > 0))
        return paramErr;
    FSCatalogInfo info;
    HFSUniStr255 name;
    OSErr status = FSGetCatalogInfo(inSourceRef, kFSCatInfoNodeFlags, &info, &name, nullptr, nullptr);
    if (status != noErr)
        return status;
    if (info.nodeFlags & kFSNodeIsDirectoryMask)
        return notAFileErr;
    FSRef copy;
    status = inNameLength > 0
                 ? FSCreateFileUnicode(inDestDirectory, inNameLength, inName, kFSCatInfoNone, nullptr, &copy, nullptr)
                 : FSCreateFileUnicode(inDestDirectory, name.length, name.unicode, kFSCatInfoNone, nullptr, &copy,
                                       nullptr);
    if (status != noErr)
        return status;
    status = CopyForks(*inSourceRef, copy);
    if (status == noErr)
        status = CopyAttributes(*inSourceRef, copy);
    if (status != noErr) {
        FSDeleteObject(&copy);  // a partial copy is worth nothing
        return status;
    }
    if (outNewRef)
        *outNewRef = copy;
    return noErr;
}
