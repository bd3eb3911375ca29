// The system calls the item table finds items with. None of them is made while the table is
// locked: a look-up can go thousands of folders up, and a slow disk would stall every other
// thread's use of the File Manager.
#pragma once

#include "FSItemLocation.h"

#include <string>
#include <string_view>

namespace carbon {

// The status of an item by descriptor and name, without following a symbolic link; an
// empty name means the descriptor's own item.
bool StatusAt(int inFolder, const char* inName, struct statx& outStatus);
ItemKey KeyOf(const struct statx& inStatus);
// Birth times tell an item from a later one that got its inode; 0 where the file system
// does not record them.
UInt64 BirthOf(const struct statx& inStatus);

// An O_PATH descriptor of inName in inFolder (AT_FDCWD for a path); null when it fails,
// with errno saying why.
SharedFd OpenPath(int inFolder, const char* inName, int inFlags);

// The absolute path the kernel has for a descriptor now; empty when it has none.
std::string ReadLink(int inFd);
std::string Join(const std::string& inFolder, std::string_view inName);
// The folder part of an absolute path; empty for "/" or a bare name.
std::string FolderOf(const std::string& inPath);
std::string LeafOf(const std::string& inPath);

// A folder is a volume's root when it is its own parent ("/"), when its parent lies on
// another device (a mount point), or when the mount table says so (a bind mount).
bool IsRootPair(const ItemKey& inItem, const ItemKey& inParent);
// Whether the mount table has a status's item as a mount point (it reads the table).
bool IsVolumeRootFolder(const struct statx& inStatus);

// The item's absolute path as the kernel reports it now; empty when it cannot.
std::string CurrentPath(const ItemLocation& inItem);

}  // namespace carbon
