// Volume names from the mount table.
#include <CoreFoundation/CFVolumeNames.h>

#include "String/StringEncoding.h"

#include <CoreFoundation/CFString.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace cf {

namespace {

using MountPointList = std::vector<std::u16string>;

class FileDescriptor {
public:
    explicit FileDescriptor(int inDescriptor = -1) : mDescriptor(inDescriptor) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor()
    {
        if (mDescriptor >= 0)
            close(mDescriptor);
    }
    int Get() const { return mDescriptor; }

private:
    int mDescriptor;
};

// The mount directory field of a line of the mount table, where the kernel writes space,
// tab, newline and backslash as octal escapes ("\040").
std::string MountDirectory(std::string_view inLine)
{
    std::size_t start = inLine.find(' ');
    std::size_t end = inLine.find(' ', start == std::string_view::npos ? start : start + 1);
    if (start == std::string_view::npos || end == std::string_view::npos)
        return {};
    std::string_view field = inLine.substr(start + 1, end - start - 1);
    auto octal = [&](std::size_t inAt) { return inAt < field.size() && field[inAt] >= '0' && field[inAt] <= '7'; };
    std::string directory;
    for (std::size_t at = 0; at < field.size(); ++at) {
        if (field[at] == '\\' && octal(at + 1) && octal(at + 2) && octal(at + 3)) {
            directory.push_back(char((field[at + 1] - '0') * 64 + (field[at + 2] - '0') * 8 + (field[at + 3] - '0')));
            at += 3;
        } else {
            directory.push_back(field[at]);
        }
    }
    return directory;
}

MountPointList Parse(std::string_view inTable)
{
    MountPointList mountPoints;
    while (!inTable.empty()) {
        std::size_t end = std::min(inTable.find('\n'), inTable.size());
        std::string directory = MountDirectory(inTable.substr(0, end));
        inTable.remove_prefix(std::min(end + 1, inTable.size()));
        std::u16string text;
        std::span<const UInt8> bytes(reinterpret_cast<const UInt8*>(directory.data()), directory.size());
        if (Decode(bytes, kCFStringEncodingUTF8, false, text) && text.starts_with(u'/'))
            mountPoints.push_back(std::move(text));
    }
    return mountPoints;
}

// Reading the mount table costs the kernel far more than a path conversion, so the table is
// kept, with its file open: the kernel flags that file with POLLPRI once mounts have come or
// gone, and only then is it read again.
class MountTable {
public:
    MountTable() : mFile(open("/proc/self/mounts", O_RDONLY | O_CLOEXEC)) {}

    std::shared_ptr<const MountPointList> Snapshot()
    {
        std::lock_guard guard(mLock);
        if (!mMountPoints || Changed())
            Reload();
        return mMountPoints;
    }

private:
    bool Changed() const
    {
        pollfd watch{mFile.Get(), POLLPRI, 0};
        return mFile.Get() < 0 || (poll(&watch, 1, 0) > 0 && (watch.revents & (POLLPRI | POLLERR)));
    }

    void Reload()
    {
        std::string table;
        char buffer[4096];
        ssize_t count = 0;
        if (mFile.Get() >= 0 && lseek(mFile.Get(), 0, SEEK_SET) == 0)
            while ((count = read(mFile.Get(), buffer, sizeof buffer)) > 0)
                table.append(buffer, std::size_t(count));
        mMountPoints = std::make_shared<const MountPointList>(Parse(table));
    }

    std::mutex mLock;
    FileDescriptor mFile;
    std::shared_ptr<const MountPointList> mMountPoints;
};

std::shared_ptr<const MountPointList> MountPoints()
{
    static MountTable table;
    return table.Snapshot();
}

std::u16string_view LastComponent(std::u16string_view inPath) { return inPath.substr(inPath.rfind(u'/') + 1); }

// inPath is inMountPoint itself or lies beneath it.
bool IsWithin(std::u16string_view inPath, std::u16string_view inMountPoint)
{
    return inPath.starts_with(inMountPoint) &&
           (inPath.size() == inMountPoint.size() || inPath[inMountPoint.size()] == u'/');
}

// The mount point that a volume name stands for among inMountPoints.
const std::u16string* FindByName(const MountPointList& inMountPoints, std::u16string_view inName)
{
    for (const std::u16string& mountPoint : inMountPoints)
        if (mountPoint != u"/" && LastComponent(mountPoint) == inName)
            return &mountPoint;
    return nullptr;
}

}  // namespace

// The name the platform gives a freshly installed startup disk, so that colon paths written
// for the platform keep their usual look.
std::u16string_view StartupVolumeName() { return u"Macintosh HD"; }

std::optional<std::u16string> VolumeMountPoint(std::u16string_view inName)
{
    if (inName == StartupVolumeName())
        return u"/";
    std::shared_ptr<const MountPointList> mountPoints = MountPoints();
    const std::u16string* found = FindByName(*mountPoints, inName);
    return found ? std::optional(*found) : std::nullopt;
}

VolumeOfPath VolumeContaining(std::u16string_view inPath)
{
    VolumeOfPath volume{std::u16string(StartupVolumeName()), 1};
    std::shared_ptr<const MountPointList> mountPoints = MountPoints();
    for (const std::u16string& mountPoint : *mountPoints) {
        std::u16string_view name = LastComponent(mountPoint);
        if (mountPoint == u"/" || mountPoint.size() < volume.mountPointLength || !IsWithin(inPath, mountPoint))
            continue;
        // A mount point whose name is taken (by the startup volume or an earlier mount)
        // could not be found again from that name, so its files stay with the volume above.
        if (name == StartupVolumeName() || FindByName(*mountPoints, name) != &mountPoint)
            continue;
        volume = {std::u16string(name), mountPoint.size()};
    }
    return volume;
}

}  // namespace cf
