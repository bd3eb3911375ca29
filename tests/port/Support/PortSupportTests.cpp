// The port's shared pieces: reference and descriptor owners, and the mount table parser.
#include <PortSupport/InstallFolders.h>
#include <PortSupport/InstallLocations.h>
#include <PortSupport/MountTable.h>
#include <PortSupport/Owned.h>
#include <PortSupport/UniqueDescriptor.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

TEST(Owned, GivesBackWhatItHeldWhenReplacedOrMovedOver)
{
    CFStringRef kept = CFStringCreateWithCString(nullptr, "kept", kCFStringEncodingUTF8);
    CFRetain(kept);  // our own, to watch the count
    {
        port::Owned<CFStringRef> first(kept);
        port::Owned<CFStringRef> second(CFStringCreateWithCString(nullptr, "other", kCFStringEncodingUTF8));
        first = std::move(second);
        EXPECT_EQ(CFGetRetainCount(kept), 1) << "move assignment releases the reference it replaces";
        EXPECT_FALSE(second);

        port::Owned<CFStringRef> retained = port::Owned<CFStringRef>::Retained(kept);
        EXPECT_EQ(CFGetRetainCount(kept), 2);
        CFStringRef taken = retained.Take();
        EXPECT_FALSE(retained);
        EXPECT_EQ(CFGetRetainCount(kept), 2) << "taking hands the reference over without releasing it";
        CFRelease(taken);
    }
    CFRelease(kept);
}

TEST(UniqueDescriptor, ClosesOnceAndOnlyWhatItOwns)
{
    int raw = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(raw, 0);
    {
        port::UniqueDescriptor owner(raw);
        port::UniqueDescriptor moved(std::move(owner));
        EXPECT_FALSE(owner);
        moved.Reset(raw);  // the same descriptor again: still open afterwards
        EXPECT_EQ(::fcntl(raw, F_GETFD), FD_CLOEXEC);
    }
    EXPECT_EQ(::fcntl(raw, F_GETFD), -1) << "closed when its owner went";
}

TEST(MountTable, ReadsDevicesEscapedPathsAndTypesAfterOptionalFields)
{
    const char* table = "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                        "30 22 0:45 /sub /media/My\\040Disk rw master:3 propagate_from:2 - vfat /dev/sdb1 rw\n"
                        "not a mount line\n"
                        "31 22 x:1 / /bad rw - tmpfs tmpfs rw\n"
                        "32 22 0:50 / /no/type rw -\n"
                        "33 22 259:7 / /back\\134slash rw - btrfs /dev/nvme0n1p7 rw";
    port::MountList mounts = port::ParseMountInfo(table);
    ASSERT_EQ(mounts.size(), 3u);
    EXPECT_EQ(mounts[0].device, makedev(8, 1));
    EXPECT_EQ(mounts[0].mountPoint, "/");
    EXPECT_EQ(mounts[0].type, "ext4");
    EXPECT_EQ(mounts[1].root, "/sub");
    EXPECT_EQ(mounts[1].mountPoint, "/media/My Disk");
    EXPECT_EQ(mounts[1].type, "vfat");
    EXPECT_EQ(mounts[2].device, makedev(259, 7));
    EXPECT_EQ(mounts[2].mountPoint, "/back\\slash");
}

TEST(MountTable, TheLiveTableHasTheRootAndIsKeptUntilMountsChange)
{
    std::shared_ptr<const port::MountList> first = port::Mounts();
    EXPECT_EQ(port::Mounts(), first) << "read again although nothing was mounted";
    bool hasRoot = false;
    for (const port::Mount& mount : *first)
        hasRoot = hasRoot || mount.mountPoint == "/";
    EXPECT_TRUE(hasRoot);
}

}  // namespace

namespace {

std::string Relative(const std::string& inFolder)
{
    return std::filesystem::path(inFolder).lexically_relative(port::install::kPrefix).string();
}

TEST(InstallFolders, AnInstalledProgramTakesThemFromThePrefixItRunsFrom)
{
    namespace fs = std::filesystem;
    const fs::path root = fs::temp_directory_path() / ("install-folders-" + std::to_string(::getpid()));
    fs::create_directories(root / "moved/bin");
    fs::create_directories(root / "moved/lib/spindeck");
    fs::create_directories(root / "stranger/bin");

    port::install::Folders moved = port::install::FoldersFor((root / "moved/bin/panehost").string());
    EXPECT_EQ(moved.prefix, (root / "moved").string());
    // Folders the build put under its prefix move with it; /etc and /var of a /usr build stay.
    for (auto [found, configured] : {std::pair{moved.data, port::install::kDataFolder},
                                     std::pair{moved.configuration, port::install::kConfigurationFolder}}) {
        std::string relative = Relative(configured);
        bool underPrefix = !relative.starts_with("..");
        EXPECT_EQ(found, underPrefix ? (root / "moved" / relative).string() : std::string(configured));
    }

    // Not installed: a bin folder of a prefix without the project, or any other folder.
    for (const char* program : {"stranger/bin/panehost", "moved/lib/spindeck/panehost"})
        EXPECT_EQ(port::install::FoldersFor((root / program).string()).prefix, port::install::kPrefix) << program;
    EXPECT_EQ(port::install::InstalledFolders().prefix, port::install::kPrefix) << "a test program is not installed";
    fs::remove_all(root);
}

TEST(InstallFolders, UsrKeepsItsConfigurationAndStateAtTheRoot)
{
    using namespace std::string_literals;
    const std::string prefix = port::install::kPrefix;
    bool conventional = port::install::kConfigurationFolder == prefix + "/etc" ||
                        (prefix == "/usr" && port::install::kConfigurationFolder == "/etc"s);
    if (!conventional)
        GTEST_SKIP() << "this build has a configuration folder of its own: " << port::install::kConfigurationFolder;
    port::install::Folders usr = port::install::MovedTo("/usr"), opt = port::install::MovedTo("/opt/vemora");
    EXPECT_EQ(usr.configuration, "/etc");
    EXPECT_EQ(usr.state, "/var");
    EXPECT_EQ(usr.data, "/usr/share");
    EXPECT_EQ(opt.configuration, "/opt/vemora/etc");
    EXPECT_EQ(opt.state, "/opt/vemora/var");
}

}  // namespace
