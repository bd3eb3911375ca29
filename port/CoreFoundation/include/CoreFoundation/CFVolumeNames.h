// Volume names for colon-separated (HFS style) paths. A port extension: the File Manager
// names volumes the same way.
//
// Such a path starts with the name of a volume. Linux has mount points rather than volume
// names, so the port names them itself: the file system mounted at "/" is the startup volume
// and always answers to StartupVolumeName(); every other mounted file system is named by the
// last component of its mount point ("/media/usb" is "usb", "/proc" is "proc"). Should two
// mount points end in the same name, the one listed first in the mount table wins.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace cf {

std::u16string_view StartupVolumeName();

// The mount point of the volume with that name: "/" for the startup volume.
std::optional<std::u16string> VolumeMountPoint(std::u16string_view inName);

struct VolumeOfPath {
    std::u16string name;
    std::size_t mountPointLength;  // the part of the path that names the volume's root
};

// The volume whose mount point is the longest leading part of the absolute path inPath.
VolumeOfPath VolumeContaining(std::u16string_view inPath);

}  // namespace cf
