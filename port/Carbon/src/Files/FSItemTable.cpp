// The item table: FSRef bytes, finding items again after they moved, node IDs, and the
// limits that keep a long-running process from collecting descriptors without end.
#include "FSItemTable.h"

#include "FSVolumes.h"

#include <Carbon/FSErrno.h>
#include <Carbon/MacErrors.h>

#include <sys/resource.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <list>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace carbon {

namespace {

constexpr UInt32 kRefMagic = 0x46535266;  // "FSRf"
constexpr UInt32 kFirstNodeID = 16;        // below are the platform's reserved IDs
// Entries without a descriptor cost a path and a name; past this many, the least recently
// used are forgotten and their references answer fnfErr.
constexpr std::size_t kMostItems = 1 << 16;
// Finding a folder again through its parents stops this far up.
constexpr int kDeepestSearch = 4096;

struct RefBits {
    UInt32 magic;
    UInt32 generation;
    UInt64 device;
    UInt64 inode;
};
static_assert(sizeof(RefBits) <= sizeof(FSRef));

struct KeyHash {
    std::size_t operator()(const ItemKey& inKey) const
    {
        return std::hash<UInt64>()(UInt64(inKey.inode) * 0x9E3779B97F4A7C15ull ^ UInt64(inKey.device));
    }
};

// O_PATH descriptors count against the process's limit on open files, so the table keeps
// only a share of it and closes the least recently used beyond that; those items are then
// found through their folder or their last known path.
std::size_t MostDescriptors()
{
    rlimit limit{};
    std::size_t allowed = ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? std::size_t(limit.rlim_cur) / 4 : 256;
    return std::clamp<std::size_t>(allowed, 64, 1024);
}

// Birth times tell an item from a later one that got its inode; 0 where the file system
// does not record them.
UInt64 BirthOf(const struct statx& inStatus)
{
    if (!(inStatus.stx_mask & STATX_BTIME))
        return 0;
    return UInt64(inStatus.stx_btime.tv_sec) * 1000000000u + inStatus.stx_btime.tv_nsec + 1;
}

SharedFd Share(int inFd) { return inFd >= 0 ? std::make_shared<const port::UniqueDescriptor>(inFd) : nullptr; }

std::string ReadLink(int inFd)
{
    char link[32];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", inFd);
    std::string path(4096, '\0');
    ssize_t length = ::readlink(link, path.data(), path.size());
    if (length <= 0 || std::size_t(length) >= path.size() || path[0] != '/')
        return {};
    path.resize(std::size_t(length));
    return path;
}

std::string Join(const std::string& inFolder, std::string_view inName)
{
    if (inFolder.empty())
        return {};
    return (inFolder == "/" ? inFolder : inFolder + "/") + std::string(inName);
}

std::string FolderOf(const std::string& inPath)
{
    std::size_t slash = inPath.rfind('/');
    return slash == std::string::npos || inPath == "/" ? std::string() : slash == 0 ? "/" : inPath.substr(0, slash);
}

// A folder is a volume's root when it is its own parent ("/"), when its parent lies on
// another device (a mount point), or when the mount table says so (a bind mount).
bool IsRootPair(const ItemKey& inItem, const ItemKey& inParent)
{
    return inParent == inItem || inParent.device != inItem.device || IsVolumeRoot(inItem.device, inItem.inode);
}

struct Entry {
    ItemKey key;
    UInt64 birth = 0;
    UInt32 generation = 0;
    UInt32 nodeID = 0;
    bool isFolder = false;
    bool isRoot = false;
    bool hasParent = false;
    ItemKey parent;
    std::string name;
    std::string path;  // last known, possibly stale
    SharedFd handle;
    std::list<ItemKey>::iterator recent;
    std::list<ItemKey>::iterator recentHandle;
};

class Table {
public:
    OSErr Locate(const FSRef* inRef, ItemLocation& outLocation, Tracking inTracking)
    {
        RefBits bits;
        std::memcpy(&bits, inRef->hidden, sizeof bits);
        if (bits.magic != kRefMagic)
            return errFSBadFSRef;
        std::lock_guard guard(mLock);
        std::optional<JustRead> justRead = std::exchange(mJustRead, std::nullopt);
        Entry* entry = Find({dev_t(bits.device), ino_t(bits.inode)});
        if (entry == nullptr || entry->generation != bits.generation)
            return fnfErr;
        Touch(*entry);
        if (inTracking == Tracking::kByName && justRead && justRead->key == entry->key &&
            justRead->generation == entry->generation &&
            std::chrono::steady_clock::now() - justRead->readAt < kJustReadLifetime &&
            LocateAsJustRead(*entry, justRead->status, outLocation))
            return noErr;
        return LocateEntry(*entry, outLocation, 0, inTracking);
    }

    OSErr EnterChild(const ItemLocation& inFolder, std::string_view inName, FSRef* outRef, ItemLocation* outLocation,
                     Tracking inTracking)
    {
        std::string name(inName);
        SharedFd handle;
        struct statx status;
        if (inTracking == Tracking::kByName && !StatusAt(inFolder.Self(), name.c_str(), status))
            return LastStatus();
        if (inTracking == Tracking::kFollowMoves || S_ISDIR(status.stx_mode)) {
            // The status is read through the new descriptor, so both are of the same item
            // even when the name is being reused meanwhile.
            handle = Share(::openat(inFolder.Self(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
            if (!handle || !StatusAt(handle->Get(), "", status))
                return LastStatus();
        }
        auto guard = Lock();
        Entry& entry = EntryFor(status);
        ItemKey key = KeyOf(status);
        entry.isRoot = S_ISDIR(status.stx_mode) && IsRootPair(key, inFolder.key);
        entry.hasParent = !entry.isRoot;
        entry.parent = inFolder.key;
        entry.name = name;
        if (Entry* folder = Find(inFolder.key))
            entry.path = Join(folder->path, name);
        ItemLocation scratch;
        ItemLocation& location = outLocation ? *outLocation : scratch;
        if (entry.isRoot) {
            if (LocateRoot(entry, location) != noErr)
                return fnfErr;
        } else {
            SetHandle(entry, entry.handle ? entry.handle : handle);
            location = {key, inFolder.self, name, entry.handle, inFolder.key, status, false};
            if (inTracking == Tracking::kByName && !handle)
                mJustRead = JustRead{key, entry.generation, status, std::chrono::steady_clock::now()};
        }
        Encode(entry, outRef);
        return noErr;
    }

    bool KnownDeleted(const FSRef& inRef, UInt64 inDropsBefore)
    {
        RefBits bits;
        std::memcpy(&bits, inRef.hidden, sizeof bits);
        std::lock_guard guard(mLock);
        if (bits.magic != kRefMagic || mUncertainDrops != inDropsBefore)
            return false;
        Entry* entry = Find({dev_t(bits.device), ino_t(bits.inode)});
        return entry == nullptr || entry->generation != bits.generation;
    }

    UInt64 UncertainDrops()
    {
        std::lock_guard guard(mLock);
        return mUncertainDrops;
    }

    OSErr EnterPath(const std::string& inPath, bool inFollowLeaf, FSRef* outRef)
    {
        SharedFd handle = Share(::open(inPath.c_str(), O_PATH | O_CLOEXEC | (inFollowLeaf ? 0 : O_NOFOLLOW)));
        struct statx status;
        if (!handle || !StatusAt(handle->Get(), "", status))
            return LastStatus();
        auto guard = Lock();
        Entry& entry = EntryFor(status);
        if (!entry.handle)
            SetHandle(entry, handle);
        if (std::string path = ReadLink(handle->Get()); !path.empty())
            entry.path = std::move(path);
        entry.isRoot = entry.isRoot || entry.path == "/";
        Encode(entry, outRef);
        return noErr;
    }

    OSErr EnterParent(const ItemLocation& inItem, FSRef* outParentRef)
    {
        if (inItem.isRoot) {
            std::memset(outParentRef, 0, sizeof *outParentRef);
            return noErr;
        }
        auto guard = Lock();
        Entry* parent = ParentEntry(inItem);
        if (parent == nullptr)
            return fnfErr;
        Encode(*parent, outParentRef);
        return noErr;
    }

    void Ref(const ItemLocation& inItem, FSRef* outRef)
    {
        auto guard = Lock();
        Encode(Adopt(inItem), outRef);
    }

    UInt32 NodeID(const ItemLocation& inItem)
    {
        if (inItem.isRoot)
            return fsRtDirID;
        auto guard = Lock();
        return NodeIDLocked(Adopt(inItem));
    }

    UInt32 ParentID(const ItemLocation& inItem)
    {
        if (inItem.isRoot)
            return fsRtParID;
        auto guard = Lock();
        Entry* parent = ParentEntry(inItem);
        return parent == nullptr ? 0 : parent->isRoot ? UInt32(fsRtDirID) : NodeIDLocked(*parent);
    }

    OSErr RefOfNode(FSVolumeRefNum inVolume, UInt32 inNodeID, FSRef* outRef)
    {
        if (inNodeID == UInt32(fsRtDirID)) {
            std::optional<VolumeRecord> volume = VolumeOfRefNum(inVolume);
            if (!volume)
                return nsvErr;
            return volume->mountPoint.empty() ? OSErr(fnfErr) : EnterPath(volume->mountPoint, true, outRef);
        }
        auto guard = Lock();
        auto node = mNodes.find(inNodeID);
        Entry* entry = node == mNodes.end() ? nullptr : Find(node->second);
        if (entry == nullptr || VolumeRefNumOf(entry->key.device) != inVolume)
            return fnfErr;
        ItemLocation location;
        if (OSErr status = LocateEntry(*entry, location, 0, Tracking::kFollowMoves); status != noErr)
            return status;
        Encode(Adopt(location), outRef);
        return noErr;
    }

    void Moved(const ItemKey& inItem, const ItemKey& inNewFolder, std::string_view inNewName)
    {
        auto guard = Lock();
        Entry* entry = Find(inItem);
        if (entry == nullptr)
            return;
        Entry* folder = Find(inNewFolder);
        entry->hasParent = true;
        entry->parent = inNewFolder;
        entry->name = inNewName;
        entry->path = folder ? Join(folder->path, inNewName) : std::string();
    }

    void Deleted(const ItemKey& inKey)
    {
        auto guard = Lock();
        if (Entry* entry = Find(inKey))
            Erase(*entry);
    }

private:
    // The status read for the item a delete iterator returned last. The usual delete loop
    // deletes each item right after reading it, and looking the name up a second time
    // would add a third to the cost of a recursive delete; like rm, the deletion trusts
    // the listing it was just given. Any other use of the table drops it, since that may
    // have changed the item (its lock, its name), and so does a pause longer than a
    // moment; another process can change an item between any look at it and the deletion
    // that follows, kept status or not.
    struct JustRead {
        ItemKey key;
        UInt32 generation;
        struct statx status;
        std::chrono::steady_clock::time_point readAt;
    };
    static constexpr std::chrono::milliseconds kJustReadLifetime{10};

    std::unique_lock<std::mutex> Lock()
    {
        std::unique_lock guard(mLock);
        mJustRead.reset();
        return guard;
    }

    bool LocateAsJustRead(const Entry& inEntry, const struct statx& inStatus, ItemLocation& outLocation)
    {
        Entry* parent = inEntry.hasParent ? Find(inEntry.parent) : nullptr;
        if (parent == nullptr || !parent->handle)
            return false;
        outLocation = {inEntry.key, parent->handle, inEntry.name, inEntry.handle, parent->key, inStatus, false};
        return true;
    }

    Entry* Find(const ItemKey& inKey)
    {
        auto found = mItems.find(inKey);
        return found == mItems.end() ? nullptr : &found->second;
    }

    static bool Matches(const Entry& inEntry, const struct statx& inStatus)
    {
        UInt64 birth = BirthOf(inStatus);
        return KeyOf(inStatus) == inEntry.key && (inEntry.birth == 0 || birth == 0 || birth == inEntry.birth);
    }

    // The entry for the item a status describes, made afresh when the one in the table
    // belongs to an earlier item with the same inode.
    Entry& EntryFor(const struct statx& inStatus)
    {
        ItemKey key = KeyOf(inStatus);
        Entry* entry = Find(key);
        if (entry != nullptr && !Matches(*entry, inStatus)) {
            Erase(*entry);
            entry = nullptr;
        }
        if (entry == nullptr) {
            entry = &mItems[key];
            entry->key = key;
            entry->birth = BirthOf(inStatus);
            entry->generation = mNextGeneration++;
            entry->isFolder = S_ISDIR(inStatus.stx_mode);
            entry->isRoot = entry->isFolder && IsVolumeRoot(key.device, key.inode);
            mRecent.push_front(key);
            entry->recent = mRecent.begin();
            entry->recentHandle = mRecentHandles.end();
            if (mItems.size() > kMostItems) {
                ++mUncertainDrops;
                Erase(mItems.at(mRecent.back()));
            }
        }
        Touch(*entry);
        return *entry;
    }

    // The entry of an item located earlier, made again if it was forgotten since.
    Entry& Adopt(const ItemLocation& inItem)
    {
        Entry& entry = EntryFor(inItem.status);
        if (!entry.handle)
            SetHandle(entry, inItem.self);
        if (!entry.hasParent && !entry.isRoot && !inItem.isRoot) {
            entry.hasParent = true;
            entry.parent = inItem.parentKey;
            entry.name = inItem.name;
        }
        entry.isRoot = entry.isRoot || inItem.isRoot;
        return entry;
    }

    Entry* ParentEntry(const ItemLocation& inItem)
    {
        if (Entry* parent = Find(inItem.parentKey)) {
            Touch(*parent);
            return parent;
        }
        struct statx status;
        if (!StatusAt(inItem.Folder(), "", status))
            return nullptr;
        Entry& parent = EntryFor(status);
        SetHandle(parent, inItem.folder);
        if (Entry* item = Find(inItem.key); item && parent.path.empty())
            parent.path = FolderOf(item->path);
        return &parent;
    }

    UInt32 NodeIDLocked(Entry& ioEntry)
    {
        if (ioEntry.isRoot)
            return fsRtDirID;
        if (ioEntry.nodeID == 0) {
            ioEntry.nodeID = mNextNodeID++;
            mNodes[ioEntry.nodeID] = ioEntry.key;
        }
        return ioEntry.nodeID;
    }

    void Encode(const Entry& inEntry, FSRef* outRef) const
    {
        std::memset(outRef, 0, sizeof *outRef);
        RefBits bits{kRefMagic, inEntry.generation, UInt64(inEntry.key.device), UInt64(inEntry.key.inode)};
        std::memcpy(outRef->hidden, &bits, sizeof bits);
    }

    void Touch(Entry& ioEntry) { mRecent.splice(mRecent.begin(), mRecent, ioEntry.recent); }

    void SetHandle(Entry& ioEntry, SharedFd inHandle)
    {
        if (!inHandle)
            return;
        if (ioEntry.handle)
            mRecentHandles.splice(mRecentHandles.begin(), mRecentHandles, ioEntry.recentHandle);
        else
            ioEntry.recentHandle = mRecentHandles.insert(mRecentHandles.begin(), ioEntry.key);
        ioEntry.handle = std::move(inHandle);
        while (mRecentHandles.size() > mMostDescriptors) {
            Entry& oldest = mItems.at(mRecentHandles.back());
            oldest.handle.reset();
            oldest.recentHandle = mRecentHandles.end();
            mRecentHandles.pop_back();
        }
    }

    void Erase(Entry& ioEntry)
    {
        if (ioEntry.nodeID != 0)
            mNodes.erase(ioEntry.nodeID);
        if (ioEntry.handle)
            mRecentHandles.erase(ioEntry.recentHandle);
        mRecent.erase(ioEntry.recent);
        mItems.erase(ioEntry.key);
    }

    // The item, if it still has the entry's name in inFolder. The folder's descriptor is
    // taken by value: making room for the item's own may close the table's copy of it.
    bool TryAt(Entry& ioEntry, SharedFd inFolder, const ItemKey& inFolderKey, ItemLocation& outLocation,
               Tracking inTracking = Tracking::kFollowMoves)
    {
        struct statx status;
        if (!inFolder || !StatusAt(inFolder->Get(), ioEntry.name.c_str(), status) || !Matches(ioEntry, status))
            return false;
        if (ioEntry.handle) {
            SetHandle(ioEntry, ioEntry.handle);
        } else if (inTracking == Tracking::kFollowMoves || S_ISDIR(status.stx_mode)) {
            SharedFd handle = Share(::openat(inFolder->Get(), ioEntry.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
            struct statx opened;
            if (!handle || !StatusAt(handle->Get(), "", opened) || !Matches(ioEntry, opened))
                return false;
            SetHandle(ioEntry, handle);
        }
        outLocation = {ioEntry.key, inFolder, ioEntry.name, ioEntry.handle, inFolderKey, status, false};
        return true;
    }

    OSErr LocateRoot(Entry& ioEntry, ItemLocation& outLocation)
    {
        ioEntry.isRoot = true;
        ioEntry.hasParent = false;
        if (!ioEntry.handle) {
            std::optional<VolumeRecord> volume = VolumeOfDevice(ioEntry.key.device);
            std::string path = volume && volume->rootInode == ioEntry.key.inode ? volume->mountPoint : ioEntry.path;
            SetHandle(ioEntry, Share(path.empty() ? -1 : ::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)));
        }
        struct statx status;
        if (!ioEntry.handle || !StatusAt(ioEntry.handle->Get(), "", status) || !Matches(ioEntry, status) ||
            status.stx_nlink == 0)
            return fnfErr;
        outLocation = {ioEntry.key, ioEntry.handle, ".", ioEntry.handle, ioEntry.key, status, true};
        return noErr;
    }

    // Records where an item was just found, and makes sure its folder has an entry.
    void NoteParent(Entry& ioEntry, SharedFd inFolder, const struct statx& inFolderStatus)
    {
        ioEntry.hasParent = true;
        ioEntry.parent = KeyOf(inFolderStatus);
        ItemKey key = ioEntry.key;
        std::string folderPath = FolderOf(ioEntry.path);
        Entry& folder = EntryFor(inFolderStatus);
        if (!folder.handle)
            SetHandle(folder, inFolder);
        if (folder.path.empty())
            folder.path = folderPath;
        if (Entry* item = Find(key))
            Touch(*item);
    }

    bool LocateByPath(Entry& ioEntry, const std::string& inPath, ItemLocation& outLocation,
                      Tracking inTracking = Tracking::kFollowMoves)
    {
        std::string folderPath = FolderOf(inPath);
        std::string name = inPath.substr(std::min(inPath.size(), inPath.rfind('/') + 1));
        if (folderPath.empty() || name.empty())
            return inPath == "/" && LocateRoot(ioEntry, outLocation) == noErr;
        SharedFd folder = Share(::open(folderPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct statx folderStatus, status;
        if (!folder || !StatusAt(folder->Get(), "", folderStatus) || !StatusAt(folder->Get(), name.c_str(), status) ||
            !Matches(ioEntry, status))
            return false;
        ioEntry.path = inPath;
        if (ioEntry.isFolder && IsRootPair(ioEntry.key, KeyOf(folderStatus)))
            return LocateRoot(ioEntry, outLocation) == noErr;
        ioEntry.name = name;
        NoteParent(ioEntry, folder, folderStatus);
        return TryAt(ioEntry, folder, KeyOf(folderStatus), outLocation, inTracking);
    }

    // A folder's ".." is its parent wherever it was moved.
    bool LocateThroughDotDot(Entry& ioEntry, ItemLocation& outLocation, OSErr& outStatus)
    {
        SharedFd up = Share(::openat(ioEntry.handle->Get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct statx upStatus;
        if (!up || !StatusAt(up->Get(), "", upStatus))
            return false;
        if (IsRootPair(ioEntry.key, KeyOf(upStatus))) {
            outStatus = LocateRoot(ioEntry, outLocation);
            return outStatus == noErr;
        }
        if (!TryAt(ioEntry, up, KeyOf(upStatus), outLocation))
            return false;
        NoteParent(ioEntry, up, upStatus);
        outStatus = noErr;
        return true;
    }

    // Tries the cheap ways first: the folder it was last seen in, its own ".." for a folder,
    // the kernel's path of its descriptor; then its folder found again the same way; last
    // the path it had.
    OSErr LocateEntry(Entry& ioEntry, ItemLocation& outLocation, int inDepth, Tracking inTracking)
    {
        if (ioEntry.isRoot)
            return LocateRoot(ioEntry, outLocation);
        Entry* parent = ioEntry.hasParent ? Find(ioEntry.parent) : nullptr;
        if (parent && parent->handle && TryAt(ioEntry, parent->handle, parent->key, outLocation, inTracking))
            return noErr;
        OSErr status = fnfErr;
        if (ioEntry.handle && ioEntry.isFolder && LocateThroughDotDot(ioEntry, outLocation, status))
            return status;
        if (ioEntry.handle) {
            struct statx own;
            if (StatusAt(ioEntry.handle->Get(), "", own) && own.stx_nlink == 0) {
                Erase(ioEntry);
                return fnfErr;
            }
            if (std::string path = ReadLink(ioEntry.handle->Get());
                !path.empty() && LocateByPath(ioEntry, path, outLocation))
                return noErr;
        }
        parent = ioEntry.hasParent ? Find(ioEntry.parent) : nullptr;
        if (parent && inDepth < kDeepestSearch) {
            ItemKey key = ioEntry.key;
            ItemLocation folder;
            if (LocateEntry(*parent, folder, inDepth + 1, Tracking::kFollowMoves) == noErr) {
                Entry* entry = Find(key);
                if (entry == nullptr)
                    return fnfErr;
                if (TryAt(*entry, folder.self, folder.key, outLocation, inTracking))
                    return noErr;
            }
            Entry* entry = Find(key);
            if (entry == nullptr)
                return fnfErr;
            return entry->path.empty() || !LocateByPath(*entry, entry->path, outLocation, inTracking) ? OSErr(fnfErr)
                                                                                                         : noErr;
        }
        if (!ioEntry.path.empty() && LocateByPath(ioEntry, ioEntry.path, outLocation, inTracking))
            return noErr;
        if (!ioEntry.handle) {
            ++mUncertainDrops;
            Erase(ioEntry);  // nothing is left to find it by
        }
        return fnfErr;
    }

    std::mutex mLock;
    std::optional<JustRead> mJustRead;
    std::unordered_map<ItemKey, Entry, KeyHash> mItems;
    std::unordered_map<UInt32, ItemKey> mNodes;
    std::list<ItemKey> mRecent;         // most recently used first
    std::list<ItemKey> mRecentHandles;  // of the entries that hold a descriptor
    std::size_t mMostDescriptors = MostDescriptors();
    UInt32 mNextGeneration = 1;
    // Entries dropped while their items may still exist: forgotten, or lost track of.
    UInt64 mUncertainDrops = 0;
    UInt32 mNextNodeID = kFirstNodeID;
};

Table& Items()
{
    static Table table;
    return table;
}

}  // namespace

bool StatusAt(int inFolder, const char* inName, struct statx& outStatus)
{
    int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | (inName[0] == '\0' ? AT_EMPTY_PATH : 0);
    return ::statx(inFolder, inName, flags, STATX_BASIC_STATS | STATX_BTIME, &outStatus) == 0;
}

ItemKey KeyOf(const struct statx& inStatus)
{
    return {makedev(inStatus.stx_dev_major, inStatus.stx_dev_minor), ino_t(inStatus.stx_ino)};
}

OSErr LocateItem(const FSRef* inRef, ItemLocation& outLocation, Tracking inTracking)
{
    return Items().Locate(inRef, outLocation, inTracking);
}

OSErr EnterChild(const ItemLocation& inFolder, std::string_view inName, FSRef* outRef, ItemLocation* outLocation,
                 Tracking inTracking)
{
    FSRef scratch;
    return Items().EnterChild(inFolder, inName, outRef ? outRef : &scratch, outLocation, inTracking);
}

OSErr EnterPath(const std::string& inPath, bool inFollowLeaf, FSRef* outRef)
{
    return Items().EnterPath(inPath, inFollowLeaf, outRef);
}

OSErr EnterParent(const ItemLocation& inItem, FSRef* outParentRef) { return Items().EnterParent(inItem, outParentRef); }
void RefOf(const ItemLocation& inItem, FSRef* outRef) { Items().Ref(inItem, outRef); }
UInt32 NodeIDOf(const ItemLocation& inItem) { return Items().NodeID(inItem); }

OSErr CompareRefs(const FSRef& inRef1, const FSRef& inRef2)
{
    RefBits first, second;
    std::memcpy(&first, inRef1.hidden, sizeof first);
    std::memcpy(&second, inRef2.hidden, sizeof second);
    if (first.magic != kRefMagic || second.magic != kRefMagic)
        return errFSBadFSRef;
    if (first.device != second.device)
        return diffVolErr;
    return first.inode == second.inode && first.generation == second.generation ? noErr : errFSRefsDifferent;
}
UInt32 ParentIDOf(const ItemLocation& inItem) { return Items().ParentID(inItem); }

OSErr RefOfNode(FSVolumeRefNum inVolume, UInt32 inNodeID, FSRef* outRef)
{
    return Items().RefOfNode(inVolume, inNodeID, outRef);
}

void ItemMoved(const ItemKey& inItem, const ItemKey& inNewFolder, std::string_view inNewName)
{
    Items().Moved(inItem, inNewFolder, inNewName);
}

void ItemDeleted(const ItemKey& inKey) { Items().Deleted(inKey); }

UInt64 UncertainDrops() { return Items().UncertainDrops(); }
bool KnownDeleted(const FSRef& inRef, UInt64 inDropsBefore) { return Items().KnownDeleted(inRef, inDropsBefore); }

std::string CurrentPath(const ItemLocation& inItem) { return ReadLink(inItem.Self()); }

}  // namespace carbon
