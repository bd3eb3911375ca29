// Finding items again. Each step reads an entry under the table's lock, releases it, asks
// the disk, and applies what it saw only if the entry did not change meanwhile; when it
// did, the whole look-up starts again from the entry as it is now.
#include "FSItemLocate.h"

#include "FSItemDisk.h"
#include "FSVolumes.h"

#include <Carbon/MacErrors.h>

#include <thread>

namespace carbon {

namespace {

// Not a platform status: the entry changed while the disk was asked; look again.
constexpr OSErr kEntryChanged = 1;
// A rename or move in another thread makes a look-up start again; one that keeps losing
// that race answers as if the item were not there.
constexpr int kMostAttempts = 32;
// An item that still exists but was found nowhere is being renamed or moved while it is
// looked for; it is looked for again a few times before the look-up gives up.
constexpr int kMostMovingAttempts = 8;

struct Found {
    ItemLocation location;
    Sighting sighting;
};

OSErr Commit(const EntryView& inView, std::optional<Found>&& inFound, ItemLocation& outLocation)
{
    switch (LockedItems()->Apply(inView, inFound->sighting)) {
    case Applied::kDone:
        outLocation = std::move(inFound->location);
        return noErr;
    case Applied::kChanged:
        return kEntryChanged;
    case Applied::kGone:
        break;
    }
    return fnfErr;
}

std::optional<Found> RootFound(const EntryView& inView)
{
    SharedFd handle = inView.handle;
    if (!handle) {
        std::optional<VolumeRecord> volume = VolumeOfDevice(inView.key.device);
        std::string path = volume && volume->rootInode == inView.key.inode ? volume->mountPoint : inView.path;
        handle = path.empty() ? nullptr : OpenPath(AT_FDCWD, path.c_str(), O_DIRECTORY);
    }
    struct statx status;
    if (!handle || !StatusAt(handle->Get(), "", status) || !inView.Matches(status) || status.stx_nlink == 0)
        return std::nullopt;
    Found found{{inView.key, handle, ".", handle, inView.key, status, true}, {}};
    found.sighting.isRoot = true;
    found.sighting.handle = handle;
    return found;
}

// The item, if it still has the view's name in inFolder.
std::optional<Found> FoundAt(const EntryView& inView, const SharedFd& inFolder, const ItemKey& inFolderKey,
                             Tracking inTracking)
{
    struct statx status;
    if (!inFolder || !StatusAt(inFolder->Get(), inView.name.c_str(), status) || !inView.Matches(status))
        return std::nullopt;
    SharedFd handle = inView.handle;
    if (!handle && (inTracking == Tracking::kFollowMoves || S_ISDIR(status.stx_mode))) {
        handle = OpenPath(inFolder->Get(), inView.name.c_str(), O_NOFOLLOW);
        struct statx opened;
        if (!handle || !StatusAt(handle->Get(), "", opened) || !inView.Matches(opened))
            return std::nullopt;
    }
    Found found{{inView.key, inFolder, inView.name, handle, inFolderKey, status, false}, {}};
    found.sighting.parent = inFolderKey;
    found.sighting.name = inView.name;
    found.sighting.handle = handle;
    return found;
}

void NoteFolder(Sighting& ioSighting, const SharedFd& inFolder, const struct statx& inStatus, std::string inPath)
{
    ioSighting.folderStatus = inStatus;
    ioSighting.folderIsVolumeRoot = IsVolumeRootFolder(inStatus);
    ioSighting.folder = inFolder;
    ioSighting.folderPath = std::move(inPath);
}

std::optional<Found> FoundByPath(const EntryView& inView, const std::string& inPath, Tracking inTracking)
{
    std::string folderPath = FolderOf(inPath);
    EntryView named = inView;
    named.name = LeafOf(inPath);
    if (folderPath.empty() || named.name.empty())
        return inPath == "/" ? RootFound(inView) : std::nullopt;
    SharedFd folder = OpenPath(AT_FDCWD, folderPath.c_str(), O_DIRECTORY);
    struct statx folderStatus, status;
    if (!folder || !StatusAt(folder->Get(), "", folderStatus) || !StatusAt(folder->Get(), named.name.c_str(), status) ||
        !inView.Matches(status))
        return std::nullopt;
    std::optional<Found> found = inView.isFolder && IsRootPair(inView.key, KeyOf(folderStatus))
                                     ? RootFound(inView)
                                     : FoundAt(named, folder, KeyOf(folderStatus), inTracking);
    if (found) {
        found->sighting.path = inPath;
        if (!found->sighting.isRoot)
            NoteFolder(found->sighting, folder, folderStatus, folderPath);
    }
    return found;
}

// A folder's ".." is its parent wherever it was moved.
std::optional<Found> FoundThroughDotDot(const EntryView& inView)
{
    SharedFd up = OpenPath(inView.handle->Get(), "..", O_DIRECTORY);
    struct statx upStatus;
    if (!up || !StatusAt(up->Get(), "", upStatus))
        return std::nullopt;
    if (IsRootPair(inView.key, KeyOf(upStatus)))
        return RootFound(inView);
    std::optional<Found> found = FoundAt(inView, up, KeyOf(upStatus), Tracking::kFollowMoves);
    if (found)
        NoteFolder(found->sighting, up, upStatus, FolderOf(inView.path));
    return found;
}

std::optional<EntryView> ViewOfKey(const ItemKey& inKey)
{
    LockedItems store;
    Entry* entry = store->Find(inKey);
    return entry ? std::optional(store->ViewOf(*entry)) : std::nullopt;
}

OSErr LocateView(const EntryView& inView, ItemLocation& outLocation, int inDepth, Tracking inTracking);

// The item in its folder, the folder found again first the same way. The table is not
// locked while the search goes up, however far it goes.
OSErr LocateThroughParent(const EntryView& inView, ItemLocation& outLocation, int inDepth, Tracking inTracking)
{
    if (std::optional<EntryView> parent = ViewOfKey(inView.parent)) {
        ItemLocation folder;
        OSErr status = LocateView(*parent, folder, inDepth + 1, Tracking::kFollowMoves);
        if (status == kEntryChanged)
            return status;
        if (status == noErr)
            if (std::optional<Found> found = FoundAt(inView, folder.self, folder.key, inTracking))
                return Commit(inView, std::move(found), outLocation);
    }
    std::optional<Found> found = inView.path.empty() ? std::nullopt : FoundByPath(inView, inView.path, inTracking);
    return found ? Commit(inView, std::move(found), outLocation) : OSErr(fnfErr);
}

// Where the item's own descriptor says it is: gone, or at the kernel's path for it;
// nothing when it is not found there.
std::optional<OSErr> LocateByHandle(const EntryView& inView, ItemLocation& outLocation)
{
    struct statx own;
    if (StatusAt(inView.handle->Get(), "", own) && own.stx_nlink == 0) {
        LockedItems()->Drop(inView, false);
        return fnfErr;
    }
    std::string path = ReadLink(inView.handle->Get());
    if (path.empty())
        return std::nullopt;
    if (std::optional<Found> found = FoundByPath(inView, path, Tracking::kFollowMoves))
        return Commit(inView, std::move(found), outLocation);
    return std::nullopt;
}

// Tries the cheap ways first: the folder it was last seen in, its own ".." for a folder,
// the kernel's path of its descriptor; then its folder found again the same way; last
// the path it had.
OSErr LocateView(const EntryView& inView, ItemLocation& outLocation, int inDepth, Tracking inTracking)
{
    if (inView.isRoot) {
        std::optional<Found> found = RootFound(inView);
        return found ? Commit(inView, std::move(found), outLocation) : OSErr(fnfErr);
    }
    if (std::optional<Found> found = FoundAt(inView, inView.parentHandle, inView.parent, inTracking))
        return Commit(inView, std::move(found), outLocation);
    if (inView.handle && inView.isFolder)
        if (std::optional<Found> found = FoundThroughDotDot(inView))
            return Commit(inView, std::move(found), outLocation);
    if (inView.handle)
        if (std::optional<OSErr> status = LocateByHandle(inView, outLocation))
            return *status;
    if (inView.hasParent && inDepth < kDeepestSearch)
        return LocateThroughParent(inView, outLocation, inDepth, inTracking);
    if (std::optional<Found> found = inView.path.empty() ? std::nullopt : FoundByPath(inView, inView.path, inTracking))
        return Commit(inView, std::move(found), outLocation);
    if (!inView.handle)
        LockedItems()->Drop(inView, true);  // nothing is left to find it by
    return fnfErr;
}

bool StillExists(const SharedFd& inHandle)
{
    struct statx status;
    return inHandle && StatusAt(inHandle->Get(), "", status) && status.stx_nlink > 0;
}

// The status kept by the delete iterator that listed the item a moment ago, if it still
// holds: nothing has used the table since, and the item's folder has a descriptor.
bool LocateAsJustRead(ItemStore& ioStore, const Entry& inEntry, UInt64 inUse, ItemLocation& outLocation)
{
    std::optional<JustRead> justRead = std::exchange(JustRead::OfThisThread(), std::nullopt);
    if (!justRead || justRead->use + 1 != inUse || justRead->ref.key != inEntry.key ||
        justRead->ref.generation != inEntry.generation ||
        std::chrono::steady_clock::now() - justRead->readAt >= JustRead::kLifetime)
        return false;
    Entry* parent = inEntry.hasParent ? ioStore.Find(inEntry.parent) : nullptr;
    if (parent == nullptr || !parent->handle)
        return false;
    outLocation = {inEntry.key, parent->handle, inEntry.name, inEntry.handle, parent->key, justRead->status, false};
    return true;
}

}  // namespace

OSErr LocateRoot(const EntryView& inRoot, ItemLocation& outLocation)
{
    std::optional<Found> found = RootFound(inRoot);
    return found ? Commit(inRoot, std::move(found), outLocation) : OSErr(fnfErr);
}

OSErr LocateIdentity(const RefIdentity& inRef, ItemLocation& outLocation, Tracking inTracking)
{
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        std::optional<EntryView> view;
        {
            LockedItems store;
            UInt64 use = store->Use();
            Entry* entry = store->Find(inRef);
            if (entry == nullptr)
                return fnfErr;
            store->Touch(*entry);
            if (attempt == 0 && inTracking == Tracking::kByName && LocateAsJustRead(*store, *entry, use, outLocation))
                return noErr;
            view = store->ViewOf(*entry);
        }
        OSErr status = LocateView(*view, outLocation, 0, inTracking);
        bool moving = status == fnfErr && attempt + 1 < kMostMovingAttempts && StillExists(view->handle);
        if (status != kEntryChanged && !moving)
            return status;
        std::this_thread::yield();  // let the rename under way finish
    }
    return fnfErr;
}

OSErr LocateKey(const ItemKey& inKey, ItemLocation& outLocation)
{
    std::optional<RefIdentity> identity;
    if (LockedItems store; Entry* entry = store->Find(inKey))
        identity = ItemStore::IdentityOf(*entry);
    return identity ? LocateIdentity(*identity, outLocation, Tracking::kFollowMoves) : OSErr(fnfErr);
}

OSErr LocateItem(const FSRef* inRef, ItemLocation& outLocation, Tracking inTracking)
{
    std::optional<RefIdentity> identity = DecodeRef(*inRef);
    if (!identity) {
        JustRead::OfThisThread().reset();
        return errFSBadFSRef;
    }
    return LocateIdentity(*identity, outLocation, inTracking);
}

}  // namespace carbon
