// The volume table, built from /proc/self/mountinfo.
#include "FSVolumes.h"

#include <CoreFoundation/CFVolumeNames.h>
#include "FSNames.h"
#include "OwnedFd.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <mutex>
#include <string_view>

namespace carbon {

namespace {

// Kernel interfaces and bookkeeping mounts: nobody stores files on them, so they are not
// offered as volumes when volumes are listed. Their items still work by reference.
constexpr std::string_view kPseudoFileSystems[] = {
    "proc",  "sysfs",   "cgroup",    "cgroup2",  "devpts",  "devtmpfs",    "securityfs",
    "debugfs", "tracefs", "pstore",  "bpf",      "mqueue",  "hugetlbfs",   "configfs",
    "fusectl", "binfmt_misc", "autofs", "efivarfs", "nsfs", "rpc_pipefs",
};

struct Mount {
    dev_t device;
    std::string root;  // the part of the file system that is mounted
    std::string mountPoint;
    std::string type;
};

// Fields of the mount table escape space, tab, newline and backslash as a backslash and
// three octal digits.
std::string Unescape(std::string_view inField)
{
    auto octal = [&](std::size_t inAt) { return inAt < inField.size() && inField[inAt] >= '0' && inField[inAt] <= '7'; };
    std::string text;
    for (std::size_t at = 0; at < inField.size(); ++at) {
        if (inField[at] == '\\' && octal(at + 1) && octal(at + 2) && octal(at + 3)) {
            text += char((inField[at + 1] - '0') * 64 + (inField[at + 2] - '0') * 8 + (inField[at + 3] - '0'));
            at += 3;
        } else {
            text += inField[at];
        }
    }
    return text;
}

std::vector<std::string_view> Fields(std::string_view inLine)
{
    std::vector<std::string_view> fields;
    while (!inLine.empty()) {
        std::size_t end = std::min(inLine.find(' '), inLine.size());
        if (end > 0)
            fields.push_back(inLine.substr(0, end));
        inLine.remove_prefix(std::min(end + 1, inLine.size()));
    }
    return fields;
}

// "36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 - ext3 /dev/root rw": the fields after
// the separator "-" start with the file system type.
std::optional<Mount> ParseLine(std::string_view inLine)
{
    std::vector<std::string_view> fields = Fields(inLine);
    auto separator = std::find(fields.begin(), fields.end(), "-");
    if (fields.size() < 5 || separator == fields.end() || separator + 1 == fields.end())
        return std::nullopt;
    unsigned major = 0, minor = 0;
    std::string numbers(fields[2]);
    if (std::sscanf(numbers.c_str(), "%u:%u", &major, &minor) != 2)
        return std::nullopt;
    return Mount{makedev(major, minor), Unescape(fields[3]), Unescape(fields[4]), std::string(separator[1])};
}

bool IsPseudo(const Mount& inMount)
{
    return std::find(std::begin(kPseudoFileSystems), std::end(kPseudoFileSystems), inMount.type) !=
           std::end(kPseudoFileSystems);
}

class VolumeTable {
public:
    VolumeTable() : mMountInfo(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC))
    {
        struct stat root;
        if (::stat("/", &root) == 0)
            RefNumLocked(root.st_dev);
    }

    FSVolumeRefNum RefNum(dev_t inDevice)
    {
        std::lock_guard guard(mLock);
        return RefNumLocked(inDevice);
    }

    std::optional<VolumeRecord> OfRefNum(FSVolumeRefNum inRefNum)
    {
        std::lock_guard guard(mLock);
        for (const auto& [device, refNum] : mRefNums)
            if (refNum == inRefNum)
                return RecordLocked(device);
        return std::nullopt;
    }

    std::optional<VolumeRecord> OfDevice(dev_t inDevice)
    {
        std::lock_guard guard(mLock);
        return RecordLocked(inDevice);
    }

    std::vector<VolumeRecord> Mounted()
    {
        std::lock_guard guard(mLock);
        Refresh();
        // The startup volume comes first, as on the platform; then the others in the order
        // of the mount table, leaving out those that another mount hides.
        std::vector<VolumeRecord> volumes;
        struct stat root;
        if (::stat("/", &root) == 0)
            volumes.push_back(RecordLocked(root.st_dev));
        for (const Mount& mount : mMounts) {
            bool listed = std::any_of(volumes.begin(), volumes.end(),
                                      [&](const VolumeRecord& inVolume) { return inVolume.device == mount.device; });
            if (listed || IsPseudo(mount))
                continue;
            if (VolumeRecord volume = RecordLocked(mount.device); !volume.mountPoint.empty())
                volumes.push_back(std::move(volume));
        }
        return volumes;
    }

    bool IsRoot(dev_t inDevice, ino_t inInode)
    {
        std::lock_guard guard(mLock);
        Refresh();
        auto root = mRoots.find(inDevice);
        if (root == mRoots.end())
            root = mRoots.emplace(inDevice, FindRoot(inDevice)).first;
        return root->second.inode == inInode;
    }

private:
    struct Root {
        std::string mountPoint;
        ino_t inode = 0;
    };

    FSVolumeRefNum RefNumLocked(dev_t inDevice)
    {
        auto found = mRefNums.find(inDevice);
        if (found != mRefNums.end())
            return found->second;
        return mRefNums[inDevice] = mNextRefNum--;
    }

    VolumeRecord RecordLocked(dev_t inDevice)
    {
        Refresh();
        auto root = mRoots.find(inDevice);
        if (root == mRoots.end())
            root = mRoots.emplace(inDevice, FindRoot(inDevice)).first;
        return {RefNumLocked(inDevice), inDevice, root->second.mountPoint, root->second.inode};
    }

    // The mount of the whole file system if there is one, else the shortest mount point.
    Root FindRoot(dev_t inDevice) const
    {
        const Mount* best = nullptr;
        for (const Mount& mount : mMounts) {
            if (mount.device != inDevice)
                continue;
            auto rank = [](const Mount& inMount) { return std::pair(inMount.root != "/", inMount.mountPoint.size()); };
            if (best == nullptr || rank(mount) < rank(*best))
                best = &mount;
        }
        struct stat status;
        if (best == nullptr || ::stat(best->mountPoint.c_str(), &status) != 0 || status.st_dev != inDevice)
            return {};
        return {best->mountPoint, status.st_ino};
    }

    // The kernel marks the mount table with POLLPRI when mounts come or go; only then is it
    // read again.
    void Refresh()
    {
        pollfd watch{mMountInfo.Get(), POLLPRI, 0};
        bool changed = mMountInfo && ::poll(&watch, 1, 0) > 0 && (watch.revents & (POLLPRI | POLLERR));
        if (mLoaded && !changed)
            return;
        mLoaded = true;
        mMounts.clear();
        mRoots.clear();
        std::string table;
        char buffer[4096];
        ssize_t count = 0;
        if (mMountInfo && ::lseek(mMountInfo.Get(), 0, SEEK_SET) == 0)
            while ((count = ::read(mMountInfo.Get(), buffer, sizeof buffer)) > 0)
                table.append(buffer, std::size_t(count));
        std::string_view rest = table;
        while (!rest.empty()) {
            std::size_t end = std::min(rest.find('\n'), rest.size());
            if (std::optional<Mount> mount = ParseLine(rest.substr(0, end)))
                mMounts.push_back(std::move(*mount));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }

    std::mutex mLock;
    OwnedFd mMountInfo;
    bool mLoaded = false;
    std::vector<Mount> mMounts;
    std::map<dev_t, Root> mRoots;
    std::map<dev_t, FSVolumeRefNum> mRefNums;
    FSVolumeRefNum mNextRefNum = -100;
};

VolumeTable& Table()
{
    static VolumeTable table;
    return table;
}

}  // namespace

FSVolumeRefNum VolumeRefNumOf(dev_t inDevice) { return Table().RefNum(inDevice); }
std::optional<VolumeRecord> VolumeOfRefNum(FSVolumeRefNum inRefNum) { return Table().OfRefNum(inRefNum); }
std::optional<VolumeRecord> VolumeOfDevice(dev_t inDevice) { return Table().OfDevice(inDevice); }
std::vector<VolumeRecord> MountedVolumes() { return Table().Mounted(); }
bool IsVolumeRoot(dev_t inDevice, ino_t inInode) { return Table().IsRoot(inDevice, inInode); }

std::u16string VolumeName(const VolumeRecord& inVolume)
{
    if (inVolume.mountPoint.empty())
        return u"Untitled";
    return cf::VolumeContaining(UnicodeName(inVolume.mountPoint)).name;
}

}  // namespace carbon
