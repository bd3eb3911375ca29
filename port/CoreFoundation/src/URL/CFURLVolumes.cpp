// Volume names from the mount table.
#include <CoreFoundation/CFVolumeNames.h>

#include "String/StringEncoding.h"

#include <CoreFoundation/CFString.h>
#include <PortSupport/MountTable.h>

#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace cf {

namespace {

using MountPointList = std::vector<std::u16string>;

MountPointList Decoded(const port::MountList& inMounts)
{
    MountPointList mountPoints;
    for (const port::Mount& mount : inMounts) {
        std::u16string text;
        std::span<const UInt8> bytes(reinterpret_cast<const UInt8*>(mount.mountPoint.data()), mount.mountPoint.size());
        if (Decode(bytes, kCFStringEncodingUTF8, false, text) && text.starts_with(u'/'))
            mountPoints.push_back(std::move(text));
    }
    return mountPoints;
}

// The mount points as text, decoded again only when the mount table changed.
std::shared_ptr<const MountPointList> MountPoints()
{
    static std::mutex sLock;
    static std::shared_ptr<const port::MountList> sMounts;
    static std::shared_ptr<const MountPointList> sMountPoints;
    std::shared_ptr<const port::MountList> mounts = port::Mounts();
    std::lock_guard guard(sLock);
    if (mounts != sMounts) {
        sMountPoints = std::make_shared<const MountPointList>(Decoded(*mounts));
        sMounts = std::move(mounts);
    }
    return sMountPoints;
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
