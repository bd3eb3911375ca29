// The volume table: reference numbers handed out per device, roots found in the mount table.
#include "FSVolumes.h"

#include "FSNames.h"

#include <CoreFoundation/CFVolumeNames.h>
#include <PortSupport/MountTable.h>

#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>
#include <string_view>

namespace carbon {

namespace {

// Kernel interfaces and bookkeeping mounts: nobody stores files on them, so they are not
// offered as volumes when volumes are listed. Their items still work by reference.
constexpr std::string_view kPseudoFileSystems[] = {
    "proc",    "sysfs",       "cgroup", "cgroup2",  "devpts", "devtmpfs",   "securityfs",
    "debugfs", "tracefs",     "pstore", "bpf",      "mqueue", "hugetlbfs",  "configfs",
    "fusectl", "binfmt_misc", "autofs", "efivarfs", "nsfs",   "rpc_pipefs",
};

bool IsPseudo(const port::Mount& inMount)
{
    return std::find(std::begin(kPseudoFileSystems), std::end(kPseudoFileSystems), inMount.type) !=
           std::end(kPseudoFileSystems);
}

class VolumeTable {
public:
    VolumeTable()
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
        for (const port::Mount& mount : *mMounts) {
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
        const port::Mount* best = nullptr;
        for (const port::Mount& mount : *mMounts) {
            if (mount.device != inDevice)
                continue;
            auto rank = [](const port::Mount& inMount) {
                return std::pair(inMount.root != "/", inMount.mountPoint.size());
            };
            if (best == nullptr || rank(mount) < rank(*best))
                best = &mount;
        }
        struct stat status;
        if (best == nullptr || ::stat(best->mountPoint.c_str(), &status) != 0 || status.st_dev != inDevice)
            return {};
        return {best->mountPoint, status.st_ino};
    }

    // The roots found so far hold only as long as the mounts they were found in.
    void Refresh()
    {
        std::shared_ptr<const port::MountList> mounts = port::Mounts();
        if (mounts == mMounts)
            return;
        mMounts = std::move(mounts);
        mRoots.clear();
    }

    std::mutex mLock;
    std::shared_ptr<const port::MountList> mMounts;
    std::map<dev_t, Root> mRoots;
    std::map<dev_t, FSVolumeRefNum> mRefNums;
    FSVolumeRefNum mNextRefNum = -100;
};

VolumeTable& Table()
{
    static VolumeTable sTable;
    return sTable;
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
