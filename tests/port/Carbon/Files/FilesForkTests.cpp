// Forks: reading, writing, positions and sizes of the data fork; the resource fork kept in
// the companion; fork iteration; large files; control-block queries.
#include "FilesTesting.h"

#include <cstring>

namespace {

using namespace spindeck::test;

const std::u16string kResource = u"RESOURCE_FORK";

TEST(FilesForks, ReadWritePositionAndSize)
{
    TemporaryFolder folder;
    WriteFile(folder.Path("data"), "0123456789");
    FSRef file = RefOf(folder.Path("data"));
    SInt16 fork = 0;
    ASSERT_EQ(FSOpenFork(&file, 0, nullptr, fsRdWrPerm, &fork), noErr);
    EXPECT_GT(fork, 0);

    char buffer[16] = {};
    ByteCount actual = 99;
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 6, 8, buffer, &actual), eofErr);
    EXPECT_EQ(actual, 4u);
    EXPECT_EQ(std::string(buffer, actual), "6789");
    SInt64 position = 0;
    ASSERT_EQ(FSGetForkPosition(fork, &position), noErr);
    EXPECT_EQ(position, 10);

    EXPECT_EQ(FSReadFork(fork, fsFromLEOF | noCacheMask, -4, 2, buffer, &actual), noErr);
    EXPECT_EQ(std::string(buffer, actual), "67");
    EXPECT_EQ(FSReadFork(fork, fsAtMark, 12345, 2, buffer, &actual), noErr);  // the offset is ignored at the mark
    EXPECT_EQ(std::string(buffer, actual), "89");
    EXPECT_EQ(FSSetForkPosition(fork, fsFromMark, -11), posErr);
    EXPECT_EQ(FSSetForkPosition(fork, fsFromStart, 3), noErr);
    EXPECT_EQ(FSReadFork(fork, fsFromMark, 1, 2, buffer, &actual), noErr);
    EXPECT_EQ(std::string(buffer, actual), "45");
    EXPECT_EQ(FSSetForkPosition(fork, fsFromStart, 20), eofErr);
    ASSERT_EQ(FSGetForkPosition(fork, &position), noErr);
    EXPECT_EQ(position, 10);

    EXPECT_EQ(FSWriteFork(fork, fsFromLEOF, 0, 3, "abc", &actual), noErr);
    EXPECT_EQ(FSSetForkSize(fork, fsFromStart, 4), noErr);
    SInt64 size = 0;
    ASSERT_EQ(FSGetForkSize(fork, &size), noErr);
    EXPECT_EQ(size, 4);
    ASSERT_EQ(FSGetForkPosition(fork, &position), noErr);
    EXPECT_EQ(position, 4);  // the mark follows a shrinking end
    EXPECT_EQ(FSSetForkSize(fork, fsFromStart, -1), posErr);
    EXPECT_EQ(FSFlushFork(fork), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
    EXPECT_EQ(ReadFile(folder.Path("data")), "0123");

    EXPECT_EQ(FSCloseFork(fork), rfNumErr);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 0, 1, buffer, &actual), rfNumErr);
    EXPECT_EQ(FSOpenFork(&file, 3, Chars(u"xyz"), fsRdPerm, &fork), errFSForkNotFound);
    FSRef container = RefOf(folder.Path());
    EXPECT_EQ(FSOpenFork(&container, 0, nullptr, fsRdPerm, &fork), notAFileErr);
    ASSERT_EQ(FSOpenFork(&file, 0, nullptr, fsRdPerm, &fork), noErr);
    EXPECT_EQ(FSWriteFork(fork, fsFromStart, 0, 1, "x", &actual), wrPermErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
}

TEST(FilesForks, ResourceForkLivesInTheCompanion)
{
    TemporaryFolder folder;
    FSRef file = CreateFile(RefOf(folder.Path()), "res");
    SInt16 fork = 0;
    EXPECT_EQ(FSOpenFork(&file, kResource.size(), Chars(kResource), fsRdPerm, &fork), errFSForkNotFound);
    EXPECT_EQ(FSCreateFork(&file, 0, nullptr), errFSForkExists);
    EXPECT_EQ(FSCreateFork(&file, 3, Chars(u"xyz")), errFSBadForkName);
    ASSERT_EQ(FSCreateFork(&file, kResource.size(), Chars(kResource)), noErr);
    EXPECT_EQ(FSCreateFork(&file, kResource.size(), Chars(kResource)), errFSForkExists);

    ASSERT_EQ(FSOpenFork(&file, kResource.size(), Chars(kResource), fsRdWrPerm, &fork), noErr);
    SInt16 reader = 0;  // a second opening shares what the first wrote
    ASSERT_EQ(FSOpenFork(&file, kResource.size(), Chars(kResource), fsRdPerm, &reader), noErr);
    EXPECT_NE(reader, fork);
    std::string payload(1000, 'r');
    ASSERT_EQ(FSWriteFork(fork, fsFromStart, 0, payload.size(), payload.data(), nullptr), noErr);
    ASSERT_EQ(FSWriteFork(fork, fsFromStart, 2000, 2, "zz", nullptr), noErr);
    char buffer[4] = {};
    ByteCount actual = 0;
    EXPECT_EQ(FSReadFork(reader, fsFromStart, 1999, 4, buffer, &actual), eofErr);
    EXPECT_EQ(std::string(buffer, actual), std::string("\0zz", 3));

    FSCatalogInfo info{};
    ASSERT_EQ(FSGetCatalogInfo(&file, kFSCatInfoRsrcSizes | kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr),
              noErr);
    EXPECT_EQ(info.rsrcLogicalSize, 2002u);
    EXPECT_EQ(info.nodeFlags & (kFSNodeResOpenMask | kFSNodeDataOpenMask), kFSNodeResOpenMask);

    FSRef forkFile;
    HFSUniStr255 forkName;
    FSForkInfo forkInfo;
    SInt16 actualRefNum = 0;
    ASSERT_EQ(FSGetForkCBInfo(fork, 0, nullptr, &actualRefNum, &forkInfo, &forkFile, &forkName), noErr);
    EXPECT_EQ(actualRefNum, fork);
    EXPECT_EQ(NameOf(forkName), kResource);
    EXPECT_EQ(forkInfo.logicalEOF, 2002u);
    EXPECT_EQ(forkInfo.currentPosition, 2002u);
    EXPECT_EQ(FSCompareFSRefs(&forkFile, &file), noErr);
    SInt16 iterator = 0;
    int open = 0;
    while (FSGetForkCBInfo(0, kFSInvalidVolumeRefNum, &iterator, &actualRefNum, nullptr, nullptr, nullptr) == noErr)
        ++open;
    EXPECT_EQ(open, 2);

    ASSERT_EQ(FSCloseFork(fork), noErr);
    ASSERT_EQ(FSCloseFork(reader), noErr);
    ASSERT_EQ(FSOpenFork(&file, kResource.size(), Chars(kResource), fsRdPerm, &fork), noErr);
    SInt64 size = 0;
    ASSERT_EQ(FSGetForkSize(fork, &size), noErr);
    EXPECT_EQ(size, 2002);
    EXPECT_EQ(FSDeleteFork(&file, kResource.size(), Chars(kResource)), fBsyErr);
    ASSERT_EQ(FSCloseFork(fork), noErr);
}

TEST(FilesForks, IterationCountsTheForksAFileHas)
{
    TemporaryFolder folder;
    WriteFile(folder.Path("plain"), "12345");
    FSRef file = RefOf(folder.Path("plain"));
    auto forks = [&](SInt64& outTotal) {
        CatPositionRec iterator{};
        HFSUniStr255 name;
        SInt64 size = 0;
        int count = 0;
        outTotal = 0;
        while (FSIterateForks(&file, &iterator, &name, &size, nullptr) == noErr) {
            outTotal += size;
            ++count;
        }
        EXPECT_EQ(FSIterateForks(&file, &iterator, &name, &size, nullptr), errFSNoMoreItems);
        return count;
    };
    SInt64 total = 0;
    EXPECT_EQ(forks(total), 1);
    EXPECT_EQ(total, 5);
    ASSERT_EQ(FSCreateFork(&file, kResource.size(), Chars(kResource)), noErr);
    EXPECT_EQ(forks(total), 2);
    CatPositionRec iterator{};
    FSRef container = RefOf(folder.Path());
    EXPECT_EQ(FSIterateForks(&container, &iterator, nullptr, nullptr, nullptr), errFSNoMoreItems);
}

TEST(FilesForks, FilesBeyondTwoGigabytes)
{
    TemporaryFolder folder;
    constexpr SInt64 kSize = (SInt64(2) << 30) + 1;
    std::string path = folder.Path("sparse");
    int file = ::open(path.c_str(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(file, 0);
    ASSERT_EQ(::ftruncate(file, kSize), 0);
    ::close(file);
    FSRef ref = RefOf(path);
    FSCatalogInfo info{};
    ASSERT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoDataSizes, &info, nullptr, nullptr, nullptr), noErr);
    EXPECT_EQ(info.dataLogicalSize, UInt64(kSize));

    SInt16 fork = 0;
    ASSERT_EQ(FSOpenFork(&ref, 0, nullptr, fsRdWrPerm, &fork), noErr);
    SInt64 size = 0;
    ASSERT_EQ(FSGetForkSize(fork, &size), noErr);
    EXPECT_EQ(size, kSize);
    ASSERT_EQ(FSWriteFork(fork, fsFromLEOF, -1, 1, "!", nullptr), noErr);
    char last[2] = {};
    ByteCount actual = 0;
    EXPECT_EQ(FSReadFork(fork, fsFromStart, kSize - 1, 2, last, &actual), eofErr);
    EXPECT_EQ(actual, 1u);
    EXPECT_EQ(last[0], '!');
    ASSERT_EQ(FSSetForkSize(fork, fsFromStart, kSize + 4096), noErr);
    ASSERT_EQ(FSGetForkSize(fork, &size), noErr);
    EXPECT_EQ(size, kSize + 4096);
    EXPECT_EQ(FSCloseFork(fork), noErr);
}

}  // namespace
