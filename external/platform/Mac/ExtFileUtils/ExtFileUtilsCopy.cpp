// Copying a file: the data inside the kernel, the resource fork through the File Manager
// (which keeps it in the file's companion), then the Finder information, dates and lock.
#include "ExtFileUtilsInternal.h"

#include <PortSupport/UniqueDescriptor.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

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

// For descriptors copy_file_range cannot join (different file system types, special files).
OSErr CopyByReading(int inFrom, int inTo)
{
    char buffer[65536];
    for (;;) {
        ssize_t got = ::read(inFrom, buffer, sizeof buffer);
        if (got == 0)
            return noErr;
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return carbon::StatusOfErrno(errno);
        for (ssize_t at = 0; at < got;) {
            ssize_t put = ::write(inTo, buffer + at, std::size_t(got - at));
            if (put < 0 && errno != EINTR)
                return carbon::StatusOfErrno(errno);
            at += put > 0 ? put : 0;
        }
    }
}

OSErr CopyData(const FSRef& inSource, const FSRef& inCopy)
{
    port::UniqueDescriptor from(::open(ExtFileUtils::PathOf(inSource).c_str(), O_RDONLY | O_CLOEXEC));
    port::UniqueDescriptor to(::open(ExtFileUtils::PathOf(inCopy).c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
    if (from.Get() < 0 || to.Get() < 0)
        return carbon::StatusOfErrno(errno);
    constexpr std::size_t kChunk = std::size_t(1) << 30;
    for (;;) {
        ssize_t copied = ::copy_file_range(from.Get(), nullptr, to.Get(), nullptr, kChunk, 0);
        if (copied == 0)
            return noErr;
        if (copied > 0 || errno == EINTR)
            continue;
        // The offsets have moved past what was copied, so reading carries on from there.
        if (errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP)
            return CopyByReading(from.Get(), to.Get());
        return carbon::StatusOfErrno(errno);
    }
}

OSErr CopyResourceFork(const FSRef& inSource, const FSRef& inCopy)
{
    HFSUniStr255 fork;
    FSGetResourceForkName(&fork);
    OpenedFork from, to;
    OSErr status = FSOpenFork(&inSource, fork.length, fork.unicode, fsRdPerm, from.Out());
    if (status == errFSForkNotFound)
        return noErr;
    if (status == noErr)
        status = FSCreateFork(&inCopy, fork.length, fork.unicode);
    if (status == noErr)
        status = FSOpenFork(&inCopy, fork.length, fork.unicode, fsWrPerm, to.Out());
    if (status != noErr)
        return status;
    SInt64 size = 0;
    FSGetForkSize(from.Get(), &size);
    TempBuffer buffer{ByteCount(size)};
    if (buffer.Get() == nullptr)
        return memFullErr;
    return FSCopyFork(from.Get(), to.Get(), buffer.Get(), buffer.Size());
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
    status = CopyData(*inSourceRef, copy);
    if (status == noErr)
        status = CopyResourceFork(*inSourceRef, copy);
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
