// The mounted file systems, as the kernel lists them in /proc/self/mountinfo. Both the URL
// calls (volume names of colon paths) and the File Manager (volume reference numbers) read
// them here, so that the two never disagree about what is mounted.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace port {

struct Mount {
    dev_t device;
    std::string root;  // the part of the file system that is mounted
    std::string mountPoint;
    std::string type;
};

using MountList = std::vector<Mount>;

// The mounts in the kernel's order. The same list is answered until mounts come or go, so a
// caller may keep what it derived from a list for as long as the pointer stays the same.
std::shared_ptr<const MountList> Mounts();

// The lines of a mountinfo file that could be read; others are skipped.
MountList ParseMountInfo(std::string_view inTable);

}  // namespace port
