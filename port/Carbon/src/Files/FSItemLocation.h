// What the File Manager knows of a referenced item once it has been found on disk: its
// identity, the folder that holds it and its name there, and its status as just read.
#pragma once

#include <PortSupport/UniqueDescriptor.h>

#include <Carbon/Files.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <functional>
#include <memory>
#include <string>

namespace carbon {

struct ItemKey {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const ItemKey&) const = default;
};

struct ItemKeyHash {
    std::size_t operator()(const ItemKey& inKey) const
    {
        return std::hash<UInt64>()(UInt64(inKey.inode) * 0x9E3779B97F4A7C15ull ^ UInt64(inKey.device));
    }
};

// Shared, so that a descriptor copied out of the item table stays open while it is used
// even if the table gives its own copy up meanwhile.
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
    SharedFd self;      // O_PATH; null for an item other than a folder found Tracking::kByName
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

}  // namespace carbon
