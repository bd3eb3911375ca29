// Two read-only volumes in a mount namespace of the test process's own: a tmpfs mounted
// read-only (writable media, locked in software) and an ext4 disk image attached read-only
// (media that cannot be written, locked as by hardware). Each holds "plain" and "locked"
// (no write permission). Mounting needs the right to make a mount namespace, and the disk
// image a loop device and mkfs.ext4; either volume's path is empty where it could not be
// made. Use it in a process of its own, before the File Manager is first used there: the
// volume table keeps to the mount table of the namespace it started in.
#pragma once

#include "FilesTesting.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

namespace spindeck::test {

// Whether this process may make a mount namespace of its own.
inline bool CanMountPrivately()
{
    pid_t child = ::fork();
    if (child == 0)
        ::_exit(::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 ? 0
                                                                                                                 : 1);
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class ReadOnlyVolumes {
public:
    // Call in a child process only: it leaves the parent's mount namespace for good.
    ReadOnlyVolumes()
    {
        if (mTop.Path().empty() || ::unshare(CLONE_NEWNS) != 0 ||
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            return;
        std::string contents = mTop.Path("contents");
        ::mkdir(contents.c_str(), 0755);
        WriteFile(contents + "/plain", "x");
        WriteFile(contents + "/locked", "x");
        ::chmod((contents + "/locked").c_str(), 0444);
        MountTmpfs(contents);
        MountImage(contents);
    }
    ReadOnlyVolumes(const ReadOnlyVolumes&) = delete;
    ReadOnlyVolumes& operator=(const ReadOnlyVolumes&) = delete;
    ~ReadOnlyVolumes()
    {
        for (const std::string* volume : {&mSoftwareLocked, &mHardwareLocked})
            if (!volume->empty())
                ::umount2(volume->c_str(), MNT_DETACH);
    }

    const std::string& SoftwareLocked() const { return mSoftwareLocked; }
    const std::string& HardwareLocked() const { return mHardwareLocked; }

private:
    void MountTmpfs(const std::string& inContents)
    {
        std::string volume = mTop.Path("tmpfs");
        ::mkdir(volume.c_str(), 0755);
        if (::mount("tmpfs", volume.c_str(), "tmpfs", 0, "size=1m") != 0)
            return;
        std::string copy = "cp -a " + inContents + "/. " + volume;
        if (std::system(copy.c_str()) == 0 &&
            ::mount(nullptr, volume.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0)
            mSoftwareLocked = volume;
        else
            ::umount2(volume.c_str(), MNT_DETACH);
    }

    void MountImage(const std::string& inContents)
    {
        std::string volume = mTop.Path("image"), image = mTop.Path("image.ext4");
        ::mkdir(volume.c_str(), 0755);
        std::string make = "mkfs.ext4 -q -d " + inContents + " " + image + " 4M >/dev/null 2>&1";
        std::string attach = "mount -o loop,ro " + image + " " + volume + " >/dev/null 2>&1";
        if (std::system(make.c_str()) == 0 && std::system(attach.c_str()) == 0)
            mHardwareLocked = volume;
    }

    TemporaryFolder mTop;
    std::string mSoftwareLocked, mHardwareLocked;
};

}  // namespace spindeck::test
