// The process-wide table behind FSRef: every item a reference was made for, known by device
// and inode, with an O_PATH descriptor that follows the item through renames and moves (by
// this or any other process), the folder and name it was last found under, and the last
// known path for when the descriptor had to be given up.
//
// An FSRef holds a magic number, the device, the inode and the generation of the table
// entry. An entry is dropped when its item is found deleted, so a reference to a deleted
// item, or to a new item that reuses the inode, no longer matches and answers fnfErr.
#pragma once

#include <PortSupport/UniqueDescriptor.h>

#include <Carbon/Files.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <string_view>

namespace carbon {

struct ItemKey {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const ItemKey&) const = default;
};

using SharedFd = std::shared_ptr<const port::UniqueDescriptor>;

// Whether finding an item gives it a descriptor of its own. The descriptor is what lets a
// reference follow its item through renames and moves by other processes. An item that is
// about to be deleted does not need one, and opening and closing one would be a large
// share of a recursive delete's cost; such an item is found by its folder and name, and a
// reference to it answers fnfErr if another process moves it away before it is used.
// Folders always get a descriptor: listing and deleting them goes through it.
enum class Tracking { kFollowMoves, kByName };

// Where a referenced item is now: the folder holding it and its name there, so that every
// operation can use the *at() calls without building a path (the path of an item deep in a
// tree can be longer than the kernel accepts). For a volume's root folder, folder is the
// item itself and name is ".".
struct ItemLocation {
    ItemKey key;
    SharedFd folder;  // O_PATH
    std::string name;
    SharedFd self;  // O_PATH; null for an item other than a folder found Tracking::kByName
    ItemKey parentKey;  // of the folder the item is in; its own key for a volume's root
    struct statx status;
    bool isRoot = false;

    int Folder() const { return folder->Get(); }
    int Self() const { return self->Get(); }
    bool IsDirectory() const { return S_ISDIR(status.stx_mode); }
    // The owner's write permission is what "locked" means; symbolic links have no
    // permissions of their own and are never locked.
    bool IsLocked() const { return !S_ISLNK(status.stx_mode) && !(status.stx_mode & S_IWUSR); }
};

// The item that a reference names, found again. errFSBadFSRef for bytes that are not a
// reference, fnfErr for an item that no longer exists.
OSErr LocateItem(const FSRef* inRef, ItemLocation& outLocation, Tracking inTracking = Tracking::kFollowMoves);

// The reference of the item inName in an already located folder (not following a symbolic
// link); outLocation may be NULL.
OSErr EnterChild(const ItemLocation& inFolder, std::string_view inName, FSRef* outRef, ItemLocation* outLocation,
                 Tracking inTracking = Tracking::kFollowMoves);
// The reference of the item at a path; the last component is followed when inFollowLeaf.
OSErr EnterPath(const std::string& inPath, bool inFollowLeaf, FSRef* outRef);
// The reference of the folder that holds a located item; all zero for a volume's root.
OSErr EnterParent(const ItemLocation& inItem, FSRef* outParentRef);

void RefOf(const ItemLocation& inItem, FSRef* outRef);

// By identity, without looking at the disk: 0, errFSRefsDifferent, diffVolErr, or
// errFSBadFSRef when either is not a reference.
OSErr CompareRefs(const FSRef& inRef1, const FSRef& inRef2);

// Node IDs: 2 for a volume's root, 1 for the parent of a root, else a number handed out per
// item on first use.
UInt32 NodeIDOf(const ItemLocation& inItem);
UInt32 ParentIDOf(const ItemLocation& inItem);
// The item that holds a node ID on a volume; fnfErr when no item has it.
OSErr RefOfNode(FSVolumeRefNum inVolume, UInt32 inNodeID, FSRef* outRef);

// Bookkeeping after this process changed the disk.
void ItemMoved(const ItemKey& inItem, const ItemKey& inNewFolder, std::string_view inNewName);
void ItemDeleted(const ItemKey& inKey);

// Whether the table knows, without looking at the disk, that a reference's item is gone:
// its entry was dropped as deleted. inDropsBefore is UncertainDrops() read when the
// reference was made; once entries have been dropped for other reasons since (forgotten to
// save memory, or lost track of), the answer is false and the disk must be asked.
UInt64 UncertainDrops();
bool KnownDeleted(const FSRef& inRef, UInt64 inDropsBefore);

// The item's absolute path as the kernel reports it now; empty when it cannot.
std::string CurrentPath(const ItemLocation& inItem);

// The status of an item by descriptor and name, without following a symbolic link.
bool StatusAt(int inFolder, const char* inName, struct statx& outStatus);
ItemKey KeyOf(const struct statx& inStatus);

}  // namespace carbon
