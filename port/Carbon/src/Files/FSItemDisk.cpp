// Finding items on disk.
#include "FSItemDisk.h"

#include "FSVolumes.h"

#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdio>

namespace carbon {

bool StatusAt(int inFolder, const char* inName, struct statx& outStatus)
{
    int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | (inName[0] == '\0' ? AT_EMPTY_PATH : 0);
    return ::statx(inFolder, inName, flags, STATX_BASIC_STATS | STATX_BTIME, &outStatus) == 0;
}

ItemKey KeyOf(const struct statx& inStatus)
{
    return {makedev(inStatus.stx_dev_major, inStatus.stx_dev_minor), ino_t(inStatus.stx_ino)};
}

UInt64 BirthOf(const struct statx& inStatus)
{
    if (!(inStatus.stx_mask & STATX_BTIME))
        return 0;
    return UInt64(inStatus.stx_btime.tv_sec) * 1000000000u + inStatus.stx_btime.tv_nsec + 1;
}

SharedFd OpenPath(int inFolder, const char* inName, int inFlags)
{
    int fd = ::openat(inFolder, inName, O_PATH | O_CLOEXEC | inFlags);
    return fd >= 0 ? std::make_shared<const port::UniqueDescriptor>(fd) : nullptr;
}

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

std::string LeafOf(const std::string& inPath)
{
    std::size_t slash = inPath.rfind('/');
    return slash == std::string::npos ? inPath : inPath.substr(slash + 1);
}

bool IsRootPair(const ItemKey& inItem, const ItemKey& inParent)
{
    return inParent == inItem || inParent.device != inItem.device || IsVolumeRoot(inItem.device, inItem.inode);
}

bool IsVolumeRootFolder(const struct statx& inStatus)
{
    ItemKey key = KeyOf(inStatus);
    return S_ISDIR(inStatus.stx_mode) && IsVolumeRoot(key.device, key.inode);
}

std::string CurrentPath(const ItemLocation& inItem) { return ReadLink(inItem.Self()); }

}  // namespace carbon
