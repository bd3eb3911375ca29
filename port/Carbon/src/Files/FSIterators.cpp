// Catalog iterators. An iterator keeps its folder open and a buffer of the listing between
// calls, so that reading one item at a time costs no more than reading them in bulk. A
// recursive delete holds one iterator per level of the tree, though, and thousands of open
// descriptors would run the process out of them: only the most recently used iterators keep
// theirs, and the others reopen the folder and seek back to where they stopped when next
// used.
//
// Deleting entries does not move the positions of the others on the usual file systems,
// but some hand out positions by count; so once a pass over the listing has returned items
// for deletion, a delete iterator makes one more pass from the start, which returns what
// such a file system skipped. Items it returned that the caller left in place are
// remembered, so that they are not returned again.
#include "FSCatalog.h"
#include "FSCompanion.h"
#include "FSItemTable.h"
#include "FSNames.h"

#include <Carbon/FSErrno.h>
#include <Carbon/MacErrors.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

constexpr std::size_t kListingBuffer = 32768;
// A delete iterator reads a listing up to this size whole, once.
constexpr std::size_t kMostListingKept = std::size_t(1) << 20;

// The open state of an iterator that was used recently.
struct Listing {
    carbon::ItemLocation folder;                                   // self is the listing's own descriptor
    std::vector<char> buffer = std::vector<char>(kListingBuffer);  // operator new aligns for dirent64
    ssize_t length = 0;
    ssize_t at = 0;
    bool atEnd = false;  // nothing follows what is in the buffer
};

struct Returned {
    std::string name;
    FSRef ref;
    UInt64 dropsBefore;
};

}  // namespace

struct OpaqueFSIterator {
    FSRef container{};
    bool forDeletion = false;
    off_t position = 0;  // just after the last entry taken from the listing
    bool passReturnedItems = false;
    bool scannedForCompanions = false;
    bool withoutCompanions = false;
    carbon::ItemKey folderKey;                    // once scanned
    std::vector<Returned> lastReturned;           // by the previous call, to delete mode
    std::unordered_set<std::string> leftInPlace;  // returned and not deleted
    std::unique_ptr<Listing> listing;             // while among the recently used
    bool busy = false;
    UInt64 lastUse = 0;
};

using namespace carbon;

namespace {

// Enough for the levels a recursive walk is working on; deeper levels reopen their folder
// once each when the walk comes back to them.
constexpr std::size_t kMostOpenListings = 16;

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
        std::erase(mOpen, inIterator);
        return mLive.erase(inIterator) == 1;
    }

    // Marks the iterator in use, and closes the least recently used listing if this one
    // will need to open its own. False for an iterator that is not open.
    bool Acquire(OpaqueFSIterator* inIterator)
    {
        std::lock_guard guard(mLock);
        if (!mLive.contains(inIterator))
            return false;
        inIterator->busy = true;
        inIterator->lastUse = ++mClock;
        if (inIterator->listing)
            return true;
        while (mOpen.size() >= kMostOpenListings) {
            auto oldest = std::min_element(mOpen.begin(), mOpen.end(), [](auto* inFirst, auto* inSecond) {
                return (inFirst->busy ? ~UInt64(0) : inFirst->lastUse) <
                       (inSecond->busy ? ~UInt64(0) : inSecond->lastUse);
            });
            if ((*oldest)->busy)
                break;  // every one is in use on some thread
            (*oldest)->listing.reset();
            mOpen.erase(oldest);
        }
        return true;
    }
    void Release(OpaqueFSIterator* inIterator)
    {
        std::lock_guard guard(mLock);
        inIterator->busy = false;
        if (inIterator->listing && std::find(mOpen.begin(), mOpen.end(), inIterator) == mOpen.end())
            mOpen.push_back(inIterator);
    }

private:
    std::mutex mLock;
    std::unordered_set<OpaqueFSIterator*> mLive;
    std::vector<OpaqueFSIterator*> mOpen;  // those holding a listing
    UInt64 mClock = 0;
};

IteratorRegistry& Registry()
{
    static IteratorRegistry sRegistry;
    return sRegistry;
}

bool Listed(std::string_view inName) { return inName != "." && inName != ".." && !IsReservedName(inName); }

bool IsCompanion(std::string_view inName)
{
    std::string companion = CompanionName("");
    return inName.size() > companion.size() && inName.starts_with(companion);
}

bool HoldsCompanion(const char* inBuffer, ssize_t inLength)
{
    for (ssize_t at = 0; at < inLength;) {
        const auto* entry = reinterpret_cast<const dirent64*>(inBuffer + at);
        at += entry->d_reclen;
        if (IsCompanion(entry->d_name))
            return true;
    }
    return false;
}

// Reads the whole listing once, so that deleting its items need not try to remove
// companions that are not there. A listing that fits kMostListingKept is kept as the
// iterator's batch; a longer one is only looked through, and read again from the start.
void ScanForCompanions(OpaqueFSIterator& ioIterator, Listing& ioListing)
{
    int folder = ioListing.folder.Self();
    std::vector<char>& buffer = ioListing.buffer;
    ssize_t length = 0, read = 0;
    bool companions = false, whole = true;
    while ((read = ::getdents64(folder, buffer.data() + length, buffer.size() - length)) > 0) {
        companions = companions || HoldsCompanion(buffer.data() + length, read);
        length += read;
        if (buffer.size() - std::size_t(length) >= kListingBuffer)
            continue;
        if (buffer.size() < kMostListingKept) {
            buffer.resize(buffer.size() * 2);
            continue;
        }
        whole = false;
        if (companions)
            break;
        length = 0;
    }
    if (read < 0 || !whole) {
        ::lseek(folder, 0, SEEK_SET);
        buffer.resize(kListingBuffer);
    } else {
        ioListing.length = length;
        ioListing.atEnd = true;
    }
    if (read == 0 && !companions) {
        ioIterator.withoutCompanions = true;
        ioIterator.folderKey = ioListing.folder.key;
        NoteFolderWithoutCompanions(ioIterator.folderKey);
    }
}

OSErr OpenListing(OpaqueFSIterator& ioIterator)
{
    if (ioIterator.listing)
        return noErr;
    auto listing = std::make_unique<Listing>();
    if (OSErr status = LocateItem(&ioIterator.container, listing->folder); status != noErr)
        return status;
    int folder = ::openat(listing->folder.Self(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return LastStatus();
    listing->folder.self = std::make_shared<const port::UniqueDescriptor>(folder);
    if (ioIterator.position != 0 && ::lseek(folder, ioIterator.position, SEEK_SET) < 0)
        return LastStatus();
    if (ioIterator.forDeletion && !ioIterator.scannedForCompanions && ioIterator.position == 0) {
        ioIterator.scannedForCompanions = true;
        ScanForCompanions(ioIterator, *listing);
    }
    ioIterator.listing = std::move(listing);
    return noErr;
}

// Up to inCount names from the listing, continuing where the last call stopped.
OSErr ReadNames(OpaqueFSIterator& ioIterator, std::size_t inCount, std::vector<std::string>& outNames)
{
    Listing& listing = *ioIterator.listing;
    while (outNames.size() < inCount) {
        if (listing.at >= listing.length) {
            ssize_t length = listing.atEnd
                                 ? 0
                                 : ::getdents64(listing.folder.Self(), listing.buffer.data(), listing.buffer.size());
            if (length < 0)
                return LastStatus();
            listing.at = 0;
            listing.length = length;
            if (length == 0) {
                // A new pass only starts with an empty batch, so a batch never holds a name twice.
                if (!ioIterator.forDeletion || !ioIterator.passReturnedItems || !outNames.empty())
                    return noErr;
                if (::lseek(listing.folder.Self(), 0, SEEK_SET) < 0)
                    return LastStatus();
                listing.atEnd = false;
                ioIterator.position = 0;
                ioIterator.passReturnedItems = false;
                continue;
            }
        }
        const auto* entry = reinterpret_cast<const dirent64*>(listing.buffer.data() + listing.at);
        listing.at += entry->d_reclen;
        ioIterator.position = entry->d_off;
        if (Listed(entry->d_name) && !ioIterator.leftInPlace.contains(entry->d_name))
            outNames.emplace_back(entry->d_name);
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

OSErr ReadItems(OpaqueFSIterator& ioIterator, ItemCount inMaximumObjects, ItemCount* outActualObjects,
                FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo* outCatalogInfos, FSRef* outRefs, FSSpec* outSpecs,
                HFSUniStr255* outNames)
{
    if (OSErr status = OpenListing(ioIterator); status != noErr)
        return status;
    const ItemLocation& container = ioIterator.listing->folder;
    struct statx status;
    for (const Returned& item : ioIterator.lastReturned)
        if (!KnownDeleted(item.ref, item.dropsBefore) && StatusAt(container.Self(), item.name.c_str(), status))
            ioIterator.leftInPlace.insert(item.name);
    ioIterator.lastReturned.clear();

    std::vector<std::string> names;
    if (OSErr error = ReadNames(ioIterator, inMaximumObjects, names); error != noErr && names.empty())
        return error;
    // What a delete iterator returns is about to be deleted, and need not be followed.
    Tracking tracking = ioIterator.forDeletion ? Tracking::kByName : Tracking::kFollowMoves;
    ItemCount count = 0;
    for (std::string& name : names) {
        ItemLocation item;
        FSRef ref;
        if (EnterChild(container, name, &ref, &item, tracking) != noErr)
            continue;  // gone since it was listed
        if (outRefs)
            outRefs[count] = ref;
        Fill(item, count, inWhichInfo, outCatalogInfos, outSpecs, outNames);
        ++count;
        if (ioIterator.forDeletion)
            ioIterator.lastReturned.push_back({std::move(name), ref, UncertainDrops()});
    }
    ioIterator.passReturnedItems = ioIterator.passReturnedItems || count > 0;
    *outActualObjects = count;
    return count > 0 ? noErr : OSErr(errFSNoMoreItems);
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
    if (inIterator->withoutCompanions)
        ForgetFolderWithoutCompanions(inIterator->folderKey);
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
    if (!Registry().Acquire(inIterator))
        return errFSIteratorNotFound;
    OSErr status = inMaximumObjects == 0 ? OSErr(errFSBadItemCount)
                   : inWhichInfo & ~kGettableBits
                       ? OSErr(errFSBadInfoBitmap)
                       : ReadItems(*inIterator, inMaximumObjects, outActualObjects, inWhichInfo, outCatalogInfos,
                                   outRefs, outSpecs, outNames);
    Registry().Release(inIterator);
    return status;
}
