// Volumes: the mounted file systems, each known by a small negative reference number that is
// handed out on first use, the startup volume ("/") first as -100.
#pragma once

#include <Carbon/Files.h>

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace carbon {

struct VolumeRecord {
    FSVolumeRefNum refNum;
    dev_t device;
    std::string mountPoint;  // empty when the mount table does not list the device
    ino_t rootInode;         // of the mount point, 0 when it is unknown
};

FSVolumeRefNum VolumeRefNumOf(dev_t inDevice);
std::optional<VolumeRecord> VolumeOfRefNum(FSVolumeRefNum inRefNum);
std::optional<VolumeRecord> VolumeOfDevice(dev_t inDevice);
// One per device, in the order of the mount table; pseudo file systems are left out.
std::vector<VolumeRecord> MountedVolumes();
// The name a volume goes by, the same that HFS-style paths give it.
std::u16string VolumeName(const VolumeRecord& inVolume);
// The item is the folder a volume is mounted on.
bool IsVolumeRoot(dev_t inDevice, ino_t inInode);

}  // namespace carbon
