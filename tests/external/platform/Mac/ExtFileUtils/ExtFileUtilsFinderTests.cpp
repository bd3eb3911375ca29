// Finder information, flag changes and the parent folder's date.
#include <ExtFileUtils/ExtFileUtilsFinder.h>
#include "ExtFileUtilsTesting.h"

#include <cstring>
#include <tuple>

using namespace spindeck::test;

using ExtFileUtilsFinder = ExtFileUtilsTest;

namespace {

constexpr UTCDateTime kLongAgo = {0, 3000000000u, 0};  // in 1999

// A clock that reads whatever the test sets.
UTCDateTime sClockReading;
OSStatus FixedClock(UTCDateTime* outDateTime, OptionBits)
{
    *outDateTime = sClockReading;
    return noErr;
}

}  // namespace

TEST_F(ExtFileUtilsFinder, FlagChangesMoveTheParentsDate)
{
    FSRef parent = CreateFolder(mTop, "parent");
    FSRef file = CreateFile(parent, "file");
    FSRef child = CreateFolder(parent, "child");

    ASSERT_EQ(FSChangeFinderFlags(&file, true, kIsInvisible | kHasCustomIcon), noErr);
    ASSERT_EQ(FSClearInvisible(&file), noErr);
    EXPECT_EQ(FinderInfoOf(file).finderFlags, kHasCustomIcon);
    ASSERT_EQ(FSSetNameLocked(&child), noErr);
    EXPECT_EQ(FinderInfoOf(child).finderFlags, kNameLocked);

    // Writing flags the item already has leaves the disk as it was, so only the change of
    // date asked for moves the parent's date. A folder's flags move its parent's date, not
    // its own.
    SetContentModDate(parent, kLongAgo);
    ASSERT_EQ(FSSetHasCustomIcon(&file), noErr);
    EXPECT_GT(Fields(ContentModDate(parent)), Fields(kLongAgo));
    SetContentModDate(parent, kLongAgo);
    SetContentModDate(child, kLongAgo);
    ASSERT_EQ(FSClearIsStationery(&child), noErr);
    EXPECT_GT(Fields(ContentModDate(parent)), Fields(kLongAgo));
    EXPECT_EQ(Fields(ContentModDate(child)), Fields(kLongAgo));

    EXPECT_EQ(FSChangeCreatorType(&file, 0, FourCC("TEXT")), noErr);
    EXPECT_EQ(FSChangeCreatorType(&file, FourCC("ttxt"), 0), noErr);
    FinderInfo info = FinderInfoOf(file);
    EXPECT_EQ(std::tuple(info.fileCreator, info.fileType), std::tuple(FourCC("ttxt"), FourCC("TEXT"))) << "0 keeps";
    EXPECT_EQ(FSChangeCreatorType(&child, FourCC("ttxt"), 0), notAFileErr);
}

TEST_F(ExtFileUtilsFinder, BumpDateMovesPastAClockThatReadsTheStoredDate)
{
    FSRef target = CreateFolder(mTop, "folder");
    struct Case {
        UTCDateTime stored, clock, expected;
    } cases[] = {
        {{0, 3500000000u, 0x8000}, {0, 3500000000u, 0x8000}, {0, 3500000001u, 0x8000}},
        {{0, 0xFFFFFFFFu, 0x0123}, {0, 0xFFFFFFFFu, 0x0123}, {1, 0, 0x0123}},
        // The same second with another fraction is a different reading, taken as it is.
        {{0, 3500000000u, 0x8000}, {0, 3500000000u, 0x8001}, {0, 3500000000u, 0x8001}},
    };
    for (const Case& test : cases) {
        SetContentModDate(target, test.stored);
        sClockReading = test.clock;
        EXPECT_EQ(ExtFileUtils::BumpDateWithClock(&target, FixedClock), noErr);
        EXPECT_EQ(Fields(ContentModDate(target)), Fields(test.expected));
    }
    // A date that cannot be written (the folder is locked) is not a failure.
    SetContentModDate(target, kLongAgo);
    SetLocked(target, true);
    EXPECT_EQ(FSBumpDate(&target), noErr);
    EXPECT_EQ(Fields(ContentModDate(target)), Fields(kLongAgo));
}

TEST_F(ExtFileUtilsFinder, CopyFileMgrAttributesKeepsOrCopiesTheLock)
{
    FSRef source = CreateFile(mTop, "source");
    FSRef dest = CreateFile(mTop, "dest");
    FinderInfo info{FourCC("APPL"), FourCC("abcd"), kHasBundle, {3, 4}, 0};
    ExtendedFinderInfo extended{{}, 0, 0, 77};
    ASSERT_EQ(FSSetFinderInfo(&source, &info, &extended), noErr);
    SetContentModDate(source, kLongAgo);
    SetLocked(source, true);
    ASSERT_EQ(FSCopyFileMgrAttributes(&source, &dest, false), noErr);
    EXPECT_EQ(FSCheckLock(&dest), noErr);
    EXPECT_EQ(Fields(ContentModDate(dest)), Fields(kLongAgo));
    FinderInfo copied{};
    ExtendedFinderInfo copiedExtended{};
    Boolean isDirectory = true;
    ASSERT_EQ(FSGetFinderInfo(&dest, &copied, &copiedExtended, &isDirectory), noErr);
    EXPECT_EQ(std::memcmp(&copied, &info, sizeof info), 0);
    EXPECT_EQ(std::memcmp(&copiedExtended, &extended, sizeof extended), 0);
    EXPECT_FALSE(isDirectory);
    ASSERT_EQ(FSCopyFileMgrAttributes(&source, &dest, true), noErr);
    EXPECT_EQ(FSCheckLock(&dest), fLckdErr);
}
