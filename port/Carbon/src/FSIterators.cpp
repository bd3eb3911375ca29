// Catalog iterators. An iterator keeps its folder's reference and the kernel's position in
// the listing, and opens the folder afresh for each call: a recursive delete holds one
// iterator per level of the tree, and thousands of open descriptors would run the process
// out of them.
//
// Deleting entries does not move the positions of the others on the usual file systems,
// but some hand out positions by count; so once a pass over the listing has returned items
// for deletion, a delete iterator makes one more pass from the start, which returns what
// such a file system skipped. Items it returned that the caller left in place are
// remembered, so that they are not returned again.
#include "FSCatalog.h"
#include "FSErrno.h"
#include "FSItemTable.h"
#include "FSNames.h"

#include <Carbon/MacErrors.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

struct OpaqueFSIterator {
    FSRef container{};
    bool forDeletion = false;
    off_t position = 0;
    bool passReturnedItems = false;
    std::vector<std::string> lastReturned;        // by the previous call, to delete mode
    std::unordered_set<std::string> leftInPlace;  // returned and not deleted
};

using namespace carbon;

namespace {

constexpr std::size_t kListingBuffer = 8192;

class IteratorRegistry {
public:
    void Add(OpaqueFSIterator* inIterator)
    {
        std::lock_guard guard(mLock);
        mLive.insert(inIterator);
    }
    bool Remove(OpaqueFSIterator* inIterator)
    {
        std::lock_guard guard(mLock);
        return mLive.erase(inIterator) == 1;
    }
    bool Contains(OpaqueFSIterator* inIterator)
    {
        std::lock_guard guard(mLock);
        return mLive.count(inIterator) == 1;
    }

private:
    std::mutex mLock;
    std::unordered_set<OpaqueFSIterator*> mLive;
};

IteratorRegistry& Registry()
{
    static IteratorRegistry registry;
    return registry;
}

bool Listed(std::string_view inName) { return inName != "." && inName != ".." && !IsReservedName(inName); }

// Up to inCount names from the listing, continuing where the last call stopped.
OSErr ReadNames(OpaqueFSIterator& ioIterator, int inFolder, std::size_t inCount, std::vector<std::string>& outNames)
{
    alignas(dirent64) char buffer[kListingBuffer];
    while (outNames.size() < inCount) {
        if (::lseek(inFolder, ioIterator.position, SEEK_SET) < 0)
            return LastStatus();
        ssize_t length = ::getdents64(inFolder, buffer, sizeof buffer);
        if (length < 0)
            return LastStatus();
        if (length == 0) {
            // A new pass only starts with an empty batch, so a batch never holds a name twice.
            if (!ioIterator.forDeletion || !ioIterator.passReturnedItems || !outNames.empty())
                return noErr;
            ioIterator.position = 0;
            ioIterator.passReturnedItems = false;
            continue;
        }
        for (ssize_t at = 0; at < length && outNames.size() < inCount;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + at);
            at += entry->d_reclen;
            ioIterator.position = entry->d_off;
            if (Listed(entry->d_name) && !ioIterator.leftInPlace.contains(entry->d_name))
                outNames.emplace_back(entry->d_name);
        }
    }
    return noErr;
}

void Fill(const ItemLocation& inItem, std::size_t inIndex, FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo* outInfos,
          FSSpec* outSpecs, HFSUniStr255* outNames)
{
    if (outInfos)
        FillCatalogInfo(inItem, inWhichInfo, outInfos[inIndex]);
    if (outSpecs)
        FillSpec(inItem, outSpecs[inIndex]);
    if (outNames)
        FillName(inItem, outNames[inIndex]);
}

}  // namespace

OSErr FSOpenIterator(const FSRef* inContainer, FSIteratorFlags inIteratorFlags, FSIterator* outIterator)
{
    if (inContainer == nullptr || outIterator == nullptr)
        return paramErr;
    if (inIteratorFlags & ~FSIteratorFlags(kFSIterateSubtree | kFSIterateDelete))
        return errFSBadIteratorFlags;
    if (inIteratorFlags & kFSIterateSubtree)
        return errFSIteratorNotSupported;
    ItemLocation container;
    if (OSErr status = LocateItem(inContainer, container); status != noErr)
        return status;
    if (!container.IsDirectory())
        return errFSNotAFolder;
    auto* iterator = new (std::nothrow) OpaqueFSIterator;
    if (iterator == nullptr)
        return memFullErr;
    iterator->container = *inContainer;
    iterator->forDeletion = (inIteratorFlags & kFSIterateDelete) != 0;
    Registry().Add(iterator);
    *outIterator = iterator;
    return noErr;
}

OSErr FSCloseIterator(FSIterator inIterator)
{
    if (inIterator == nullptr)
        return paramErr;
    if (!Registry().Remove(inIterator))
        return errFSIteratorNotFound;
    delete inIterator;
    return noErr;
}

OSErr FSGetCatalogInfoBulk(FSIterator inIterator, ItemCount inMaximumObjects, ItemCount* outActualObjects,
                           Boolean* outContainerChanged, FSCatalogInfoBitmap inWhichInfo,
                           FSCatalogInfo* outCatalogInfos, FSRef* outRefs, FSSpec* outSpecs, HFSUniStr255* outNames)
{
    if (inIterator == nullptr || outActualObjects == nullptr ||
        (inWhichInfo != kFSCatInfoNone && outCatalogInfos == nullptr))
        return paramErr;
    *outActualObjects = 0;
    if (outContainerChanged)
        *outContainerChanged = false;
    if (!Registry().Contains(inIterator))
        return errFSIteratorNotFound;
    if (inMaximumObjects == 0)
        return errFSBadItemCount;
    if (inWhichInfo & ~kGettableBits)
        return errFSBadInfoBitmap;
    OpaqueFSIterator& iterator = *inIterator;
    ItemLocation container;
    if (OSErr status = LocateItem(&iterator.container, container); status != noErr)
        return status;
    OwnedFd folder(::openat(container.Self(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return LastStatus();
    struct statx status;
    for (const std::string& name : iterator.lastReturned)
        if (StatusAt(folder.Get(), name.c_str(), status))
            iterator.leftInPlace.insert(name);
    iterator.lastReturned.clear();

    std::vector<std::string> names;
    if (OSErr error = ReadNames(iterator, folder.Get(), inMaximumObjects, names); error != noErr && names.empty())
        return error;
    ItemCount count = 0;
    for (const std::string& name : names) {
        ItemLocation item;
        if (EnterChild(container, name, outRefs ? &outRefs[count] : nullptr, &item) != noErr)
            continue;  // gone since it was listed
        Fill(item, count, inWhichInfo, outCatalogInfos, outSpecs, outNames);
        ++count;
        if (iterator.forDeletion)
            iterator.lastReturned.push_back(name);
    }
    iterator.passReturnedItems = iterator.passReturnedItems || count > 0;
    *outActualObjects = count;
    return count > 0 ? noErr : OSErr(errFSNoMoreItems);
}
