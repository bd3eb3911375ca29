// Volumes, accounts, and the requests that only file servers supported.
#include "ExtFileUtilsTesting.h"

#include <sys/statfs.h>

using namespace spindeck::test;

using ExtFileUtilsVolumes = ExtFileUtilsTest;

TEST_F(ExtFileUtilsVolumes, DescribeTheMountedFileSystemsAndRefuseServerRequests)
{
    FSVolumeRefNum volume = 0;
    ASSERT_EQ(FSGetVRefNum(&mTop, &volume), noErr);
    struct statfs kernel {};
    ASSERT_EQ(::statfs(mFolder.Path().c_str(), &kernel), 0);

    UInt16 id = 0, signature = 0;
    ASSERT_EQ(FSGetVolFileSystemID(volume, &id, &signature), noErr);
    EXPECT_EQ(UInt32(signature) << 16 | id, UInt32(kernel.f_type));
    UInt64 free = 0, total = 0;
    ASSERT_EQ(FSGetVInfo(volume, nullptr, &free, &total), noErr);
    EXPECT_GT(total, 0u);
    EXPECT_LE(free, total);

    GetVolParmsInfoBuffer parms{};
    UInt32 size = 0;
    ASSERT_EQ(FSGetVolParms(volume, sizeof parms, &parms, &size), noErr);
    EXPECT_EQ(size, sizeof parms);
    EXPECT_EQ(parms.vMMaxNameLength, UniCharCount(kernel.f_namelen));
    ASSERT_EQ(FSGetVolParms(volume, 2, &parms, &size), noErr);
    EXPECT_EQ(size, 2u) << "no more than the caller's buffer";
    EXPECT_EQ(FSGetVolParms(-32000, sizeof parms, &parms, &size), nsvErr);

    FSRef** roots = nullptr;
    ItemCount count = 0;
    ASSERT_EQ(FSGetMountedVolumes(&roots, &count), noErr);
    FSRef root = RefOf("/");
    ItemCount startup = 0;
    for (ItemCount i = 0; i < count; ++i)
        startup += FSCompareFSRefs(&(*roots)[i], &root) == noErr;
    EXPECT_EQ(startup, 1u);
    DisposeHandle(reinterpret_cast<Handle>(roots));

    // Shared-folder privileges and remount records have no meaning here.
    SInt32 owner, group, rights;
    EXPECT_EQ(FSGetDirAccess(&mTop, &owner, &group, &rights), wrgVolTypErr);
    EXPECT_EQ(FSGetDirAccess(&mTop, nullptr, &group, &rights), paramErr);
    EXPECT_EQ(FSSetDirAccess(&mTop, 0, 0, 0), wrgVolTypErr);
    UInt16 recordSize = 0;
    EXPECT_EQ(FSGetVolMountInfoSize(volume, &recordSize), wrgVolTypErr);
    EXPECT_EQ(FSGetVolMountInfoSize(-32000, &recordSize), nsvErr);
    char record[64];
    EXPECT_EQ(FSGetVolMountInfo(volume, record), wrgVolTypErr);
    EXPECT_EQ(FSVolumeMount(record, &volume), wrgVolTypErr);
}

TEST_F(ExtFileUtilsVolumes, AccountsMapBothWays)
{
    Str31 name{};
    SInt32 id = -1;
    for (auto [toName, toID] : {std::pair(kOwnerID2Name, kOwnerName2ID), std::pair(kGroupID2Name, kGroupName2ID)}) {
        ASSERT_EQ(FSMapID(0, 0, toName, name), noErr);
        EXPECT_EQ(PascalText(name), "root");
        EXPECT_EQ(FSMapName(0, name, toID, &id), noErr);
        EXPECT_EQ(id, 0);
    }
    EXPECT_EQ(FSMapName(0, reinterpret_cast<ConstStr255Param>("\x0bno-such-one"), kOwnerName2ID, &id), fnfErr);
    EXPECT_EQ(FSMapID(0, 0x7FFFFFF0, kOwnerID2Name, name), fnfErr);
    EXPECT_EQ(FSMapID(0, 0, kOwnerName2ID, name), paramErr) << "a name-to-ID request";
}
