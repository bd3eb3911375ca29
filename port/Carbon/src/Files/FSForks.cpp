// The fork calls. The data fork is the file itself, read and written with pread and pwrite
// at 64-bit offsets; the resource fork is the companion's resource entry, kept in memory
// while open. No lock is held while a disk is read or written: each call holds its fork,
// which keeps the descriptor open until the call is done.
#include "FSItemCompanion.h"
#include "FSForkTable.h"
#include "FSNames.h"
#include "FSVolumes.h"

#include <Carbon/FSErrno.h>
#include <Carbon/MacErrors.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

using namespace carbon;

namespace {

// The Resource Manager addresses a fork with 24-bit offsets; nothing larger is kept.
constexpr SInt64 kLargestResourceFork = 16 << 20;

enum class ForkKind { Data, Resource, Other };

ForkKind KindOf(UniCharCount inLength, const UniChar* inName)
{
    if (inLength == 0)
        return ForkKind::Data;
    std::u16string_view name(reinterpret_cast<const char16_t*>(inName), inLength);
    return name == kResourceForkName ? ForkKind::Resource : ForkKind::Other;
}

OSErr LocateFile(const FSRef* inRef, ItemLocation& outItem)
{
    if (OSErr status = LocateItem(inRef, outItem); status != noErr)
        return status;
    return outItem.IsDirectory() ? OSErr(notAFileErr) : noErr;
}

// The resource fork as the companion has it; nothing when the file has none.
std::optional<std::vector<UInt8>> StoredResourceFork(const ItemLocation& inItem)
{
    Companion companion = ReadItemCompanion(inItem);
    const std::vector<UInt8>* fork = companion.contents.Find(AppleDouble::kResourceFork);
    return fork ? std::optional(*fork) : std::nullopt;
}

OSErr StoreResourceFork(const ItemLocation& inItem, const std::vector<UInt8>* inBytes)
{
    AppleDouble contents = ReadCompanion(inItem.Folder(), inItem.name).contents;
    if (inBytes)
        contents.Insert(AppleDouble::kResourceFork) = *inBytes;
    else
        contents.Remove(AppleDouble::kResourceFork);
    OSErr status = WriteCompanion(inItem.Folder(), inItem.name, contents);
    ForkTable::Shared().NoteResourceStored();
    return status;
}

// Writes a copy of the bytes, so that the fork stays usable (and changeable) meanwhile; it
// counts as written back only up to the changes that copy holds.
OSErr WriteBack(const OpenFork& inFork)
{
    if (!inFork.isResource)
        return noErr;
    ResourceFork& resource = *inFork.resource;
    std::lock_guard guard(resource.storingLock);
    std::vector<UInt8> bytes;
    UInt64 changes = 0;
    {
        auto contents = resource.contents.Locked();
        if (!contents->IsDirty())
            return noErr;
        bytes = contents->bytes;
        changes = contents->changes;
    }
    ItemLocation item;
    if (OSErr status = LocateFile(&inFork.ref, item); status != noErr)
        return status;
    if (OSErr status = StoreResourceFork(item, &bytes); status != noErr)
        return status;
    resource.contents.Locked()->stored = changes;
    return noErr;
}

SInt64 SizeOf(const OpenFork& inFork)
{
    if (inFork.isResource)
        return SInt64(inFork.resource->contents.Locked()->bytes.size());
    struct stat status;
    return ::fstat(inFork.data.Get(), &status) == 0 ? SInt64(status.st_size) : 0;
}

// Where a position mode and offset point, -1 for nowhere; the caching bits of the mode are
// ignored.
SInt64 PositionOf(const OpenFork& inFork, UInt16 inPositionMode, SInt64 inOffset)
{
    SInt64 base = 0, position = 0;
    switch (inPositionMode & 3) {
    case fsFromStart:
        return inOffset;
    case fsFromLEOF:
        base = SizeOf(inFork);
        break;
    case fsFromMark:
        base = inFork.mark;
        break;
    default:  // fsAtMark
        return inFork.mark;
    }
    return __builtin_add_overflow(base, inOffset, &position) ? -1 : position;
}

// Writing through a fork that was opened before its file was locked is still refused.
OSErr CheckWritable(const OpenFork& inFork)
{
    if (!inFork.canWrite)
        return wrPermErr;
    if (inFork.isResource) {
        ItemLocation item;
        if (OSErr status = LocateFile(&inFork.ref, item); status != noErr)
            return status;
        return item.IsLocked() ? OSErr(fLckdErr) : noErr;
    }
    struct stat status;
    if (::fstat(inFork.data.Get(), &status) != 0)
        return LastStatus();
    return status.st_mode & S_IWUSR ? noErr : OSErr(fLckdErr);
}

ByteCount ReadData(int inFile, SInt64 inStart, ByteCount inCount, UInt8* outBuffer, OSErr& outStatus)
{
    ByteCount done = 0;
    while (done < inCount) {
        ssize_t count = ::pread(inFile, outBuffer + done, inCount - done, off_t(inStart + SInt64(done)));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            outStatus = LastStatus();
        if (count <= 0)
            break;
        done += ByteCount(count);
    }
    return done;
}

ByteCount WriteData(int inFile, SInt64 inStart, ByteCount inCount, const UInt8* inBuffer, OSErr& outStatus)
{
    ByteCount done = 0;
    while (done < inCount) {
        ssize_t count = ::pwrite(inFile, inBuffer + done, inCount - done, off_t(inStart + SInt64(done)));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            outStatus = count < 0 ? LastStatus() : OSErr(ioErr);
            break;
        }
        done += ByteCount(count);
    }
    return done;
}

OSErr SetSize(OpenFork& ioFork, SInt64 inSize)
{
    if (ioFork.isResource) {
        if (inSize > kLargestResourceFork)
            return dskFulErr;
        auto contents = ioFork.resource->contents.Locked();
        contents->bytes.resize(std::size_t(inSize));
        ++contents->changes;
    } else if (::ftruncate(ioFork.data.Get(), off_t(inSize)) != 0) {
        return LastStatus();
    }
    ioFork.mark = std::min(ioFork.mark.load(), inSize);
    return noErr;
}

// The read and write permission a request comes to. Locked files open for reading only;
// opening one for writing answers permErr, the status the File Manager gives for it.
OSErr ResolvePermission(const ItemLocation& inItem, SInt8 inPermissions, bool& outWrite)
{
    switch (inPermissions & 0x0F) {
    case fsCurPerm:
        outWrite = !inItem.IsLocked() && ::faccessat(inItem.Folder(), inItem.name.c_str(), W_OK, 0) == 0;
        return noErr;
    case fsRdPerm:
        outWrite = false;
        return noErr;
    case fsWrPerm:
    case fsRdWrPerm:
    case fsRdWrShPerm:
        outWrite = true;
        return inItem.IsLocked() ? OSErr(permErr) : noErr;
    default:
        return paramErr;
    }
}

// Opened through the item's own descriptor where it has one, so that a rename by another
// thread between finding the file and opening it cannot make the open fail or open another
// file that took the name.
OSErr OpenData(const ItemLocation& inItem, bool inWrite, OpenFork& ioFork)
{
    int flags = (inWrite ? O_RDWR : O_RDONLY) | O_NOFOLLOW | O_CLOEXEC;
    if (inItem.self && !S_ISLNK(inItem.status.stx_mode)) {
        char path[32];
        std::snprintf(path, sizeof path, "/proc/self/fd/%d", inItem.Self());
        ioFork.data.Reset(::open(path, flags & ~O_NOFOLLOW));
    } else {
        ioFork.data.Reset(::openat(inItem.Folder(), inItem.name.c_str(), flags));
    }
    return ioFork.data ? noErr : LastStatus();
}

OSErr OpenResource(const ItemLocation& inItem, OpenFork& ioFork)
{
    ioFork.resource = ForkTable::Shared().OpenResource(inItem.key);
    if (ioFork.resource)
        return noErr;
    std::optional<std::vector<UInt8>> stored = StoredResourceFork(inItem);
    if (!stored)
        return errFSForkNotFound;
    ioFork.resource = std::make_shared<ResourceFork>();
    ioFork.resource->contents.Locked()->bytes = std::move(*stored);
    return noErr;
}

std::optional<SInt64> ResourceLength(const ItemLocation& inItem)
{
    if (std::optional<UInt64> open = OpenResourceForkLength(inItem.key))
        return SInt64(*open);
    std::optional<std::vector<UInt8>> stored = StoredResourceFork(inItem);
    return stored ? std::optional(SInt64(stored->size())) : std::nullopt;
}

UInt64 Physical(SInt64 inLength, const ItemLocation& inItem)
{
    UInt64 block = std::max<UInt64>(inItem.status.stx_blksize, 1);
    return (UInt64(inLength) + block - 1) / block * block;
}

void FillForkInfo(const OpenFork& inFork, FSForkInfo& outInfo)
{
    std::memset(&outInfo, 0, sizeof outInfo);
    outInfo.permissions = inFork.permissions;
    outInfo.volume = VolumeRefNumOf(inFork.key.device);
    outInfo.forkID = inFork.isResource ? 1 : 0;
    outInfo.currentPosition = UInt64(inFork.mark);
    outInfo.logicalEOF = UInt64(SizeOf(inFork));
    ItemLocation item;
    if (LocateItem(&inFork.ref, item) == noErr) {
        outInfo.nodeID = NodeIDOf(item);
        outInfo.physicalEOF = Physical(SInt64(outInfo.logicalEOF), item);
    }
}

// Runs inWork on the open fork with that number, holding the fork (not the table) for the
// call; rfNumErr when no fork of that number is open. Every call on an open fork goes
// through here.
template <class Work>
OSErr WithOpenFork(SInt16 inForkRefNum, Work&& inWork)
{
    ForkHold fork = ForkTable::Shared().Find(inForkRefNum);
    return fork ? inWork(*fork) : OSErr(rfNumErr);
}

// The open fork after *ioIterator on a volume (any volume for kFSInvalidVolumeRefNum); its
// number goes to *ioIterator.
std::pair<SInt16, ForkHold> NextOnVolume(SInt16& ioIterator, FSVolumeRefNum inVolume)
{
    auto next = ForkTable::Shared().Next(ioIterator);
    while (next.second && inVolume != kFSInvalidVolumeRefNum && VolumeRefNumOf(next.second->key.device) != inVolume)
        next = ForkTable::Shared().Next(next.first);
    if (next.second)
        ioIterator = next.first;
    return next;
}

ByteCount ReadResource(ResourceFork& inResource, SInt64 inStart, ByteCount inCount, UInt8* outBuffer)
{
    auto contents = inResource.contents.Locked();
    const std::vector<UInt8>& bytes = contents->bytes;
    SInt64 available = std::max<SInt64>(0, SInt64(bytes.size()) - inStart);
    ByteCount done = ByteCount(std::min<SInt64>(available, SInt64(inCount)));
    std::copy_n(bytes.begin() + std::ptrdiff_t(std::min<SInt64>(inStart, SInt64(bytes.size()))), done, outBuffer);
    return done;
}

OSErr WriteResource(ResourceFork& ioResource, SInt64 inStart, ByteCount inCount, const UInt8* inBuffer)
{
    if (inCount > ByteCount(kLargestResourceFork) || inStart > kLargestResourceFork - SInt64(inCount))
        return dskFulErr;
    auto contents = ioResource.contents.Locked();
    std::vector<UInt8>& bytes = contents->bytes;
    bytes.resize(std::max(bytes.size(), std::size_t(inStart) + inCount));
    std::copy_n(inBuffer, inCount, bytes.begin() + std::ptrdiff_t(inStart));
    ++contents->changes;
    return noErr;
}

}  // namespace

OSErr FSCreateFork(const FSRef* inRef, UniCharCount inForkNameLength, const UniChar* inForkName)
{
    if (inRef == nullptr || (inForkName == nullptr && inForkNameLength > 0))
        return paramErr;
    ItemLocation item;
    if (OSErr status = LocateFile(inRef, item); status != noErr)
        return status;
    ForkKind kind = KindOf(inForkNameLength, inForkName);
    if (kind != ForkKind::Resource)
        return kind == ForkKind::Data ? OSErr(errFSForkExists) : OSErr(errFSBadForkName);
    if (ResourceLength(item))
        return errFSForkExists;
    if (item.IsLocked())
        return fLckdErr;
    std::vector<UInt8> empty;
    return StoreResourceFork(item, &empty);
}

OSErr FSDeleteFork(const FSRef* inRef, UniCharCount inForkNameLength, const UniChar* inForkName)
{
    if (inRef == nullptr || (inForkName == nullptr && inForkNameLength > 0))
        return paramErr;
    ItemLocation item;
    if (OSErr status = LocateFile(inRef, item); status != noErr)
        return status;
    // The data fork is the file itself and cannot go while the file stays.
    if (KindOf(inForkNameLength, inForkName) != ForkKind::Resource)
        return errFSBadForkName;
    if (ForkTable::Shared().OpenResource(item.key))
        return fBsyErr;
    if (!ResourceLength(item))
        return errFSForkNotFound;
    if (item.IsLocked())
        return fLckdErr;
    return StoreResourceFork(item, nullptr);
}

OSErr FSIterateForks(const FSRef* inRef, CatPositionRec* ioForkIterator, HFSUniStr255* outForkName, SInt64* outForkSize,
                     UInt64* outForkPhysicalSize)
{
    if (inRef == nullptr || ioForkIterator == nullptr)
        return paramErr;
    ItemLocation item;
    if (OSErr status = LocateItem(inRef, item); status != noErr)
        return status;
    SInt16 index = ioForkIterator->initialize == 0 ? 0 : ioForkIterator->priv[0];
    if (item.IsDirectory() || index > 1)
        return errFSNoMoreItems;
    std::optional<SInt64> length = index == 0 ? std::optional(SInt64(item.status.stx_size)) : ResourceLength(item);
    if (!length)
        return errFSNoMoreItems;
    ioForkIterator->initialize = 1;
    ioForkIterator->priv[0] = SInt16(index + 1);
    if (outForkName)
        SetHFSName(index == 0 ? std::u16string_view() : kResourceForkName, *outForkName);
    if (outForkSize)
        *outForkSize = *length;
    if (outForkPhysicalSize)
        *outForkPhysicalSize = index == 0 ? UInt64(item.status.stx_blocks) * 512 : Physical(*length, item);
    return noErr;
}

OSErr FSOpenFork(const FSRef* inRef, UniCharCount inForkNameLength, const UniChar* inForkName, SInt8 inPermissions,
                 SInt16* outForkRefNum)
{
    if (inRef == nullptr || outForkRefNum == nullptr || (inForkName == nullptr && inForkNameLength > 0))
        return paramErr;
    ItemLocation item;
    if (OSErr status = LocateFile(inRef, item); status != noErr)
        return status;
    ForkKind kind = KindOf(inForkNameLength, inForkName);
    if (kind == ForkKind::Other)
        return errFSForkNotFound;
    auto fork = std::make_shared<OpenFork>();
    if (OSErr status = ResolvePermission(item, inPermissions, fork->canWrite); status != noErr)
        return status;
    fork->ref = *inRef;
    fork->key = item.key;
    fork->isResource = kind == ForkKind::Resource;
    fork->permissions = fork->canWrite ? fsRdWrPerm : fsRdPerm;
    ForkTable& table = ForkTable::Shared();
    SInt16 refNum = ForkTable::kStaleResource;
    while (refNum == ForkTable::kStaleResource) {
        UInt64 stores = table.ResourceStores();
        OSErr status = fork->isResource ? OpenResource(item, *fork) : OpenData(item, fork->canWrite, *fork);
        if (status != noErr)
            return status;
        refNum = table.Add(fork, stores);
    }
    if (refNum == ForkTable::kTableFull)
        return tmfoErr;
    *outForkRefNum = refNum;
    return noErr;
}

// The fork leaves the table only once it is written back: until then another opening of the
// same resource fork shares these bytes rather than reading the companion before they land.
OSErr FSCloseFork(SInt16 inForkRefNum)
{
    return WithOpenFork(inForkRefNum, [&](OpenFork& fork) {
        OSErr status = WriteBack(fork);
        return ForkTable::Shared().Remove(inForkRefNum, fork) ? status : OSErr(rfNumErr);
    });
}

OSErr FSReadFork(SInt16 inForkRefNum, UInt16 inPositionMode, SInt64 inPositionOffset, ByteCount inRequestCount,
                 void* outBuffer, ByteCount* outActualCount)
{
    if (outActualCount)
        *outActualCount = 0;
    return WithOpenFork(inForkRefNum, [&](OpenFork& fork) {
        if (outBuffer == nullptr && inRequestCount > 0)
            return OSErr(paramErr);
        SInt64 start = PositionOf(fork, inPositionMode, inPositionOffset);
        if (start < 0)
            return OSErr(posErr);
        OSErr status = noErr;
        auto* buffer = static_cast<UInt8*>(outBuffer);
        ByteCount done = fork.isResource ? ReadResource(*fork.resource, start, inRequestCount, buffer)
                                         : ReadData(fork.data.Get(), start, inRequestCount, buffer, status);
        fork.mark = start + SInt64(done);
        if (outActualCount)
            *outActualCount = done;
        return status != noErr ? status : done < inRequestCount ? OSErr(eofErr) : OSErr(noErr);
    });
}

OSErr FSWriteFork(SInt16 inForkRefNum, UInt16 inPositionMode, SInt64 inPositionOffset, ByteCount inRequestCount,
                  const void* inBuffer, ByteCount* outActualCount)
{
    if (outActualCount)
        *outActualCount = 0;
    return WithOpenFork(inForkRefNum, [&](OpenFork& fork) {
        if (inBuffer == nullptr && inRequestCount > 0)
            return OSErr(paramErr);
        if (OSErr status = CheckWritable(fork); status != noErr)
            return status;
        SInt64 start = PositionOf(fork, inPositionMode, inPositionOffset);
        if (start < 0)
            return OSErr(posErr);
        OSErr status = noErr;
        const auto* buffer = static_cast<const UInt8*>(inBuffer);
        ByteCount done = 0;
        if (fork.isResource) {
            if (OSErr refused = WriteResource(*fork.resource, start, inRequestCount, buffer); refused != noErr)
                return refused;
            done = inRequestCount;
        } else {
            done = WriteData(fork.data.Get(), start, inRequestCount, buffer, status);
        }
        fork.mark = start + SInt64(done);
        if (outActualCount)
            *outActualCount = done;
        return status;
    });
}

OSErr FSGetForkPosition(SInt16 inForkRefNum, SInt64* outPosition)
{
    return WithOpenFork(inForkRefNum, [&](OpenFork& fork) {
        if (outPosition == nullptr)
            return OSErr(paramErr);
        *outPosition = fork.mark;
        return OSErr(noErr);
    });
}

OSErr FSSetForkPosition(SInt16 inForkRefNum, UInt16 inPositionMode, SInt64 inPositionOffset)
{
    return WithOpenFork(inForkRefNum, [&](OpenFork& fork) {
        SInt64 position = PositionOf(fork, inPositionMode, inPositionOffset);
        if (position < 0)
            return OSErr(posErr);
        SInt64 size = SizeOf(fork);
        fork.mark = std::min(position, size);
        return position > size ? OSErr(eofErr) : OSErr(noErr);
    });
}

OSErr FSGetForkSize(SInt16 inForkRefNum, SInt64* outForkSize)
{
    return WithOpenFork(inForkRefNum, [&](OpenFork& fork) {
        if (outForkSize == nullptr)
            return OSErr(paramErr);
        *outForkSize = SizeOf(fork);
        return OSErr(noErr);
    });
}

OSErr FSSetForkSize(SInt16 inForkRefNum, UInt16 inPositionMode, SInt64 inPositionOffset)
{
    return WithOpenFork(inForkRefNum, [&](OpenFork& fork) {
        if (OSErr status = CheckWritable(fork); status != noErr)
            return status;
        SInt64 size = PositionOf(fork, inPositionMode, inPositionOffset);
        return size < 0 ? OSErr(posErr) : SetSize(fork, size);
    });
}

OSErr FSFlushFork(SInt16 inForkRefNum)
{
    return WithOpenFork(inForkRefNum, [](OpenFork& fork) {
        if (fork.isResource)
            return WriteBack(fork);
        return ::fsync(fork.data.Get()) == 0 || errno == EINVAL ? OSErr(noErr) : LastStatus();
    });
}

OSErr FSGetForkCBInfo(SInt16 inDesiredRefNum, FSVolumeRefNum inVolume, SInt16* ioIterator, SInt16* outActualRefNum,
                      FSForkInfo* outForkInfo, FSRef* outRef, HFSUniStr255* outForkName)
{
    if (inDesiredRefNum == 0 && ioIterator == nullptr)
        return paramErr;
    auto [refNum, fork] = inDesiredRefNum != 0 ? std::pair(inDesiredRefNum, ForkTable::Shared().Find(inDesiredRefNum))
                                               : NextOnVolume(*ioIterator, inVolume);
    if (fork == nullptr)
        return inDesiredRefNum != 0 ? OSErr(rfNumErr) : OSErr(errFSNoMoreItems);
    if (outActualRefNum)
        *outActualRefNum = refNum;
    if (outForkInfo)
        FillForkInfo(*fork, *outForkInfo);
    if (outRef)
        *outRef = fork->ref;
    if (outForkName)
        SetHFSName(fork->isResource ? kResourceForkName : std::u16string_view(), *outForkName);
    return noErr;
}
