// Volumes, accounts, and the requests that only file servers supported.
#include "ExtFileUtilsTesting.h"

#include <sys/statfs.h>

using namespace spindeck::test;

using ExtFileUtilsVolumes = ExtFileUtilsTest;

namespace {

ConstStr255Param Pascal(const char* inText) { return reinterpret_cast<ConstStr255Param>(inText); }

}  // namespace

TEST_F(ExtFileUtilsVolumes, DescribeTheMountedFileSystems)
{
    FSVolumeRefNum volume = 0;
    ASSERT_EQ(FSGetVRefNum(&mTop, &volume), noErr);
    struct statfs kernel{};
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
}

TEST_F(ExtFileUtilsVolumes, AccountsMapBothWays)
{
    Str31 name{};
    ASSERT_EQ(FSMapID(0, 0, kOwnerID2Name, name), noErr);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(name + 1), name[0]), "root");
    ASSERT_EQ(FSMapID(0, 0, kGroupID2Name, name), noErr);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(name + 1), name[0]), "root");
    SInt32 user = -1, group = -1;
    EXPECT_EQ(FSMapName(0, Pascal("\x04root"), kOwnerName2ID, &user), noErr);
    EXPECT_EQ(FSMapName(0, Pascal("\x04root"), kGroupName2ID, &group), noErr);
    EXPECT_EQ(user, 0);
    EXPECT_EQ(group, 0);

    EXPECT_EQ(FSMapName(0, Pascal("\x0bno-such-one"), kOwnerName2ID, &user), fnfErr);
    EXPECT_EQ(FSMapID(0, 0x7FFFFFF0, kOwnerID2Name, name), fnfErr);
    EXPECT_EQ(FSMapID(0, 0, kOwnerName2ID, name), paramErr) << "a name-to-ID request";
}

TEST_F(ExtFileUtilsVolumes, ServerOnlyRequestsAreRefused)
{
    SInt32 owner, group, rights;
    EXPECT_EQ(FSGetDirAccess(&mTop, &owner, &group, &rights), wrgVolTypErr);
    EXPECT_EQ(FSGetDirAccess(&mTop, nullptr, &group, &rights), paramErr);
    EXPECT_EQ(FSSetDirAccess(&mTop, 0, 0, 0), wrgVolTypErr);
    FSVolumeRefNum volume = 0;
    FSGetVRefNum(&mTop, &volume);
    UInt16 size = 0;
    EXPECT_EQ(FSGetVolMountInfoSize(volume, &size), wrgVolTypErr);
    EXPECT_EQ(FSGetVolMountInfoSize(-32000, &size), nsvErr);
    char record[64];
    EXPECT_EQ(FSGetVolMountInfo(volume, record), wrgVolTypErr);
    EXPECT_EQ(FSVolumeMount(record, &volume), wrgVolTypErr);
}
