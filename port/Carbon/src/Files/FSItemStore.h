// The entries of the item table, reachable only under its lock. Nothing here touches the
// disk: a look-up copies an entry (EntryView), asks the disk with the lock released, and
// hands back what it saw (Sighting), which is applied only if the entry's version is still
// the one copied. A version changes whenever the entry's folder, name or volume-root state
// changes, so a look-up that raced a rename or move in another thread never writes back
// the place the item had before.
#pragma once

#include "FSItemLimits.h"
#include "FSRefBits.h"
#include "Guarded.h"

#include <chrono>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace carbon {

struct Entry {
    ItemKey key;
    UInt64 birth = 0;
    UInt32 generation = 0;
    UInt64 version = 0;
    UInt32 nodeID = 0;
    bool isFolder = false;
    bool isRoot = false;
    bool hasParent = false;
    ItemKey parent;
    std::string name;
    std::string path;  // last known, possibly stale
    SharedFd handle;
    RecentKeys::Position recent;
    RecentKeys::Position recentHandle;
};

// An entry as copied under the lock, with its folder's descriptor if the table has one.
struct EntryView {
    ItemKey key;
    UInt64 birth = 0;
    UInt32 generation = 0;
    UInt64 version = 0;
    bool isFolder = false;
    bool isRoot = false;
    bool hasParent = false;
    ItemKey parent;
    std::string name;
    std::string path;
    SharedFd handle;
    SharedFd parentHandle;

    // Whether a status is of this item rather than of a later one with its inode.
    bool Matches(const struct statx& inStatus) const;
};

// Where a look-up found an entry's item.
struct Sighting {
    bool isRoot = false;
    ItemKey parent;  // unless isRoot
    std::string name;
    std::optional<std::string> path;
    SharedFd handle;
    // The folder it was found in, given an entry of its own when it has none.
    std::optional<struct statx> folderStatus;
    bool folderIsVolumeRoot = false;
    SharedFd folder;
    std::string folderPath;
};

enum class Applied { kDone, kChanged, kGone };

class ItemStore {
public:
    Entry* Find(const ItemKey& inKey);
    // The entry of a reference's item; null when the reference is stale.
    Entry* Find(const RefIdentity& inRef);
    EntryView ViewOf(const Entry& inEntry);
    // The entry for the item a status describes, if the table has one for that very item.
    Entry* Existing(const struct statx& inStatus);
    // Made afresh when the one in the table belongs to an earlier item with the same inode.
    Entry& EntryFor(const struct statx& inStatus, bool inVolumeRoot);
    // The entry of an item located earlier, made again if it was forgotten since.
    Entry& Adopt(const ItemLocation& inItem, bool inVolumeRoot);

    void Relocate(Entry& ioEntry, const ItemKey& inFolder, const std::string& inName);
    void MakeRoot(Entry& ioEntry);
    Applied Apply(const EntryView& inView, const Sighting& inSighting);
    // Drops the entry unless it changed since the view; inUncertain when its item may
    // still exist.
    void Drop(const EntryView& inView, bool inUncertain);
    void Erase(Entry& ioEntry);

    void Touch(Entry& ioEntry) { mRecent.Touch(ioEntry.recent); }
    void SetHandle(Entry& ioEntry, SharedFd inHandle);
    UInt32 NodeID(Entry& ioEntry);
    Entry* OfNode(UInt32 inNodeID);
    static RefIdentity IdentityOf(const Entry& inEntry) { return {inEntry.key, inEntry.generation}; }

    UInt64 UncertainDrops() const { return mUncertainDrops; }
    // Counts the uses of the table; see JustRead.
    UInt64 Use() { return ++mUses; }
    // The descriptors given up since the last call, for closing once the lock is released.
    std::vector<SharedFd> TakeReleased() { return std::exchange(mReleased, {}); }

private:
    void NoteFolder(const Sighting& inSighting);

    std::unordered_map<ItemKey, Entry, ItemKeyHash> mItems;
    std::unordered_map<UInt32, ItemKey> mNodes;
    RecentKeys mRecent;
    RecentKeys mRecentHandles;  // of the entries that hold a descriptor
    std::size_t mMostDescriptors = MostDescriptors();
    UInt32 mNextGeneration = 1;
    // Entries dropped while their items may still exist: forgotten, or lost track of.
    UInt64 mUncertainDrops = 0;
    UInt32 mNextNodeID = 16;  // below are the platform's reserved IDs
    UInt64 mUses = 0;
    std::vector<SharedFd> mReleased;
};

// The table, locked for as long as this lives. Descriptors the table gave up meanwhile are
// closed after the lock is released, since closing is a system call too.
class LockedItems {
public:
    LockedItems();
    LockedItems(const LockedItems&) = delete;
    LockedItems& operator=(const LockedItems&) = delete;
    ~LockedItems();

    ItemStore* operator->() const { return mLocked.operator->(); }
    ItemStore& operator*() const { return *mLocked; }

private:
    std::vector<SharedFd> mReleased;  // declared first, so destroyed after the lock is released
    Guarded<ItemStore>::Access mLocked;
};

// The status read for the item a delete iterator returned last, kept by the thread that read
// it. The usual delete loop deletes each item right after reading it, and looking the name
// up a second time would add a third to the cost of a recursive delete; like rm, the
// deletion trusts the listing it was just given. Any other use of the table, by any thread,
// drops it, since that may have changed the item (its lock, its name), and so does a pause
// longer than a moment; another process can change an item between any look at it and the
// deletion that follows, kept status or not.
struct JustRead {
    RefIdentity ref;
    UInt64 use = 0;  // ItemStore::Use() when it was read
    struct statx status;
    std::chrono::steady_clock::time_point readAt;

    static constexpr std::chrono::milliseconds kLifetime{10};
    static std::optional<JustRead>& OfThisThread();
};

}  // namespace carbon
