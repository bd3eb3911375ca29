// Queries about one item: parent, lock, forks, IDs, names and paths; the default folder;
// temporary buffers.
#include <ExtFileUtils/ExtFileUtilsMemory.h>
#include "ExtFileUtilsTesting.h"

#include "ReadOnlyVolumes.h"

#include <cstdio>
#include <cstring>
#include <tuple>

using namespace spindeck::test;

using ExtFileUtilsItems = ExtFileUtilsTest;

namespace {

// In a process of its own: what FSCheckLock says of a locked and a plain file on each kind
// of read-only volume, on standard error ("-" where the volume could not be made).
[[noreturn]] void CheckLockOnReadOnlyVolumes()
{
    std::string report;
    {
        ReadOnlyVolumes volumes;
        auto status = [](const std::string& inPath) {
            FSRef ref = RefOf(inPath);
            return std::to_string(FSCheckLock(&ref));
        };
        for (const std::string* volume : {&volumes.SoftwareLocked(), &volumes.HardwareLocked()})
            report += volume->empty() ? " -" : " " + status(*volume + "/locked") + "/" + status(*volume + "/plain");
    }
    std::fprintf(stderr, "locked/plain:%s\n", report.c_str());
    ::_exit(0);
}

}  // namespace

// A suite of its own: nothing may touch the File Manager before the volumes are mounted.
// The file's own lock comes first; a read-only mount is locked in software, read-only media
// as by hardware. The disk image needs a loop device, which not every machine lends.
TEST(ExtFileUtilsReadOnlyVolume, CheckLockPutsTheItemsLockFirst)
{
    // Both volume locks at once come only from flags: no volume here has both.
    EXPECT_EQ(ExtFileUtils::VolumeLockStatus(0), noErr);
    EXPECT_EQ(ExtFileUtils::VolumeLockStatus(kFSVolFlagSoftwareLockedMask), vLckdErr);
    EXPECT_EQ(ExtFileUtils::VolumeLockStatus(kFSVolFlagHardwareLockedMask), wPrErr);
    EXPECT_EQ(ExtFileUtils::VolumeLockStatus(kFSVolFlagHardwareLockedMask | kFSVolFlagSoftwareLockedMask), wPrErr);
    if (!CanMountPrivately())
        GTEST_SKIP() << "no mount namespace of its own for a read-only volume here";
    EXPECT_EXIT(CheckLockOnReadOnlyVolumes(), testing::ExitedWithCode(0), "locked/plain: -45/-46 (-45/-44|-)\n");
}

// Where an item is: its parent (a volume root's is all zero), its file ID after a move, and
// the default folder. Names and volumes are read through these calls by the file objects.
TEST_F(ExtFileUtilsItems, ParentsFileIDsAndTheDefaultFolder)
{
    FSRef root = RefOf("/"), parent;
    const FSRef zero{};
    std::memset(&parent, 0xAB, sizeof parent);
    ASSERT_EQ(FSGetParentRef(&root, &parent), noErr);
    EXPECT_EQ(std::memcmp(&parent, &zero, sizeof zero), 0) << "the root's parent is all zero";
    EXPECT_EQ(FSGetParentRef(&root, nullptr), paramErr);

    FSRef sub = CreateFolder(mTop, "sub");
    FSRef file = CreateFile(mTop, "file");
    SInt32 id = 0;
    ASSERT_EQ(FSCreateFileIDRef(&file, &id), noErr);
    std::u16string newName = u"renamed";
    ASSERT_EQ(FSMoveRenameObjectUnicode(&file, &sub, newName.size(), Chars(newName), kTextEncodingUnknown, nullptr),
              noErr);
    FSVolumeRefNum volume = 0;
    FSGetVRefNum(&file, &volume);
    FSRef found{};
    ASSERT_EQ(FSResolveFileIDRef(volume, id, &found), noErr);
    EXPECT_EQ(FSCompareFSRefs(&found, &file), noErr);
    EXPECT_EQ(FSCreateFileIDRef(&sub, &id), notAFileErr);
    EXPECT_EQ(FSResolveFileIDRef(volume, 0x7FFFFFF0, &found), fidNotFound);

    FSRef old{};
    EXPECT_EQ(FSSetDefault(&file, &old), dirNFErr);
    ASSERT_EQ(FSSetDefault(&mTop, &old), noErr);
    FSRef current = RefOf(".");
    EXPECT_EQ(FSCompareFSRefs(&current, &mTop), noErr);
    ASSERT_EQ(FSRestoreDefault(&old), noErr);
    current = RefOf(".");
    EXPECT_EQ(FSCompareFSRefs(&current, &old), noErr);
}

// Fork counts and logical totals are read through the same call by the file objects.
TEST_F(ExtFileUtilsItems, ForkSizesAndTheFileOfAnOpenFork)
{
    FSRef file = CreateFile(mTop, "file");
    WriteFork(file, u"", std::string(100, 'd'));
    WriteFork(file, kResourceFork, std::string(10, 'r'));
    UInt64 logical = 1, physical = 1, data = 0, resource = 0;
    ASSERT_EQ(FSGetTotalForkSizes(&file, &logical, &physical, nullptr), noErr);
    EXPECT_EQ(logical, 110u);
    EXPECT_GE(physical, 110u);
    ASSERT_EQ(FSGetForkSizes(&file, &data, &resource), noErr);
    EXPECT_EQ(std::tuple(data, resource), std::tuple(100u, 10u));

    SInt16 fork = 0;
    FSRef owner{};
    ASSERT_EQ(FSOpenFork(&file, 0, nullptr, fsRdPerm, &fork), noErr);
    EXPECT_EQ(FileRefNumGetFSRef(fork, &owner), noErr);
    EXPECT_EQ(FSCompareFSRefs(&owner, &file), noErr);
    FSCloseFork(fork);
}

TEST_F(ExtFileUtilsItems, SpecificationsPathsAndNames)
{
    CreateFile(mTop, "file");
    FSSpec spec{};
    Boolean isDirectory = true;
    std::string path = mFolder.Path("file");
    ASSERT_EQ(FSPathMakeFSSpec(reinterpret_cast<const UInt8*>(path.c_str()), &spec, &isDirectory), noErr);
    EXPECT_FALSE(isDirectory);
    UInt8 made[1024];
    ASSERT_EQ(FSMakePath(spec.vRefNum, spec.parID, spec.name, made, sizeof made), noErr);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(made)), path);
    EXPECT_EQ(FSMakePath(spec.vRefNum, spec.parID, spec.name, made, 4), errFSNameTooLong);

    // A reference and a specification lead to each other and agree on the node.
    FSRef file = RefOf(path), again{};
    FSSpec fromRef{};
    ASSERT_EQ(FSRefMakeFSSpec(&file, &fromRef), noErr);
    EXPECT_EQ(std::tuple(fromRef.vRefNum, fromRef.parID, PascalText(fromRef.name)),
              std::tuple(spec.vRefNum, spec.parID, std::string("file")));
    ASSERT_EQ(FSMakeFSRef(spec.vRefNum, spec.parID, spec.name, &again), noErr);
    EXPECT_EQ(FSCompareFSRefs(&again, &file), noErr);
    long nodeID = 0, folderID = 0;
    Boolean fileIsFolder = true, folderIsFolder = false;
    ASSERT_EQ(FSGetNodeID(&file, &nodeID, &fileIsFolder), noErr);
    ASSERT_EQ(FSGetNodeID(&mTop, &folderID, &folderIsFolder), noErr);
    EXPECT_EQ(std::tuple(folderID, bool(fileIsFolder), bool(folderIsFolder)),
              std::tuple(long(spec.parID), false, true));
    EXPECT_NE(nodeID, folderID);
    ::chmod(path.c_str(), 0640);
    UInt32 permissions[4] = {};
    UInt8 privileges = 0xFF;
    ASSERT_EQ(FSGetUserPrivilegesPermissions(&file, &privileges, permissions), noErr);
    FSPermissionInfo info;
    std::memcpy(&info, permissions, sizeof info);
    EXPECT_EQ(std::tuple(info.userID, info.mode & 0777u), std::tuple(UInt32(::getuid()), 0640u));
    EXPECT_EQ(std::tuple(FSRefMakeFSSpec(&file, nullptr), FSMakeFSRef(spec.vRefNum, spec.parID, spec.name, nullptr)),
              std::tuple(paramErr, paramErr));
    EXPECT_TRUE(FSRefValid(&file));
    ::unlink(path.c_str());
    EXPECT_FALSE(FSRefValid(&file));

    Str31 hfs;
    HFSUniStr255 back;
    std::u16string text = u"caf\u00e9", long28(28, u'v'), han = u"\u6f22";
    ASSERT_EQ(UnicodeNameGetHFSName(text.size(), Chars(text), kTextEncodingMacRoman, false, hfs), noErr);
    EXPECT_EQ(PascalText(hfs), "caf\x8e");
    ASSERT_EQ(HFSNameGetUnicodeName(hfs, kTextEncodingMacRoman, &back), noErr);
    EXPECT_EQ(NameOf(back), text);
    EXPECT_EQ(UnicodeNameGetHFSName(28, Chars(long28), kTextEncodingMacRoman, false, hfs), noErr);
    EXPECT_EQ(UnicodeNameGetHFSName(28, Chars(long28), kTextEncodingMacRoman, true, hfs), errFSNameTooLong);
    EXPECT_EQ(UnicodeNameGetHFSName(1, Chars(han), kTextEncodingMacRoman, false, hfs), kTextUndefinedElementErr);
}

TEST_F(ExtFileUtilsItems, TempBufferSizes)
{
    using ExtFileUtils::FallbackTempBufferSize;
    using ExtFileUtils::RoundedTempBufferSize;
    EXPECT_EQ(RoundedTempBufferSize(0), 4096u);
    EXPECT_EQ(RoundedTempBufferSize(8192), 8192u);
    constexpr UInt64 kNoLimit = ~UInt64(0);
    EXPECT_EQ(FallbackTempBufferSize(1 << 20, kNoLimit), (1u << 20) - 32768);
    EXPECT_EQ(FallbackTempBufferSize(100000, kNoLimit), 65536u);  // 67,232 rounded down
    EXPECT_EQ(FallbackTempBufferSize(1 << 30, 50000), 49152u);
    EXPECT_EQ(FallbackTempBufferSize(20000, kNoLimit), 4096u);

    ByteCount size = 1;
    Ptr buffer = GetTempBuffer(10000, &size);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(size, 8192u);
    EXPECT_EQ(GetPtrSize(buffer), 8192);
    DisposePtr(buffer);
    EXPECT_EQ(GetTempBuffer(10000, nullptr), nullptr);
    // More than the machine has: whatever free memory allows, in whole steps. Freeing a block
    // that size would have the sanitizer mark gigabytes.
    if (kAddressSanitizer)
        return;
    buffer = GetTempBuffer(ByteCount(1) << 60, &size);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(size % 4096, 0u);
    EXPECT_LT(size, ByteCount(1) << 60);
    DisposePtr(buffer);
}
