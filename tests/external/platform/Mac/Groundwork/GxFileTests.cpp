#include "FileObjectTesting.h"

#include <Groundwork/Files/GxFile.h>

namespace {

using namespace spindeck::test;
using FileTest = FileObjectTest;

TEST_F(FileTest, CreateOnDiskRefusesOrReplacesAnExistingFile)
{
    Gx::File file(Child("new"));
    file.CreateOnDisk(FourCC("TEXT"), FourCC("ttxt"));
    FinderInfo info{};
    file.GetLocation().GetFinderInfo(&info);
    EXPECT_EQ(info.fileType, FourCC("TEXT"));
    EXPECT_EQ(info.fileCreator, FourCC("ttxt"));

    WriteFile(Path("new"), "old");
    ExpectThrows<Gx::LogicError>([&] { file.CreateOnDisk(); }, FourCC("logc"));
    EXPECT_EQ(ReadFile(Path("new")), "old");
    file.CreateOnDisk(kFSCatInfoNone, nullptr, true);
    EXPECT_EQ(Text(file.GetLocation().GetName()), "new");
    EXPECT_EQ(ReadFile(Path("new")), "");

    file.OpenDataFork(fsRdPerm);
    ExpectOSError([&] { file.CreateOnDisk(kFSCatInfoNone, nullptr, true); }, fBsyErr, "FSDeleteObject failed");
    ExpectOSError([] { Gx::File().CreateOnDisk(); }, errFSBadFSRef, "File object has no FSRef");
    ExpectOSError([&] { Gx::File(Child("a/b")).CreateOnDisk(); }, bdNamErr, "FSCreateFileUnicode failed");
    // Whether the file is there is settled before anything is asked of the disk.
    Gx::File stale(Child("stale"));
    stale.CreateOnDisk();
    ::unlink(Path("stale").c_str());
    ExpectThrows<Gx::LogicError>([&] { stale.CreateOnDisk(); }, FourCC("logc"));
}

TEST_F(FileTest, OwnsItsForksAndNeverSharesThem)
{
    Made("file", "contents");
    Gx::File file(Child("file"));
    Gx::DataFork& fork = file.OpenDataFork(fsRdPerm);
    EXPECT_EQ(&file.OpenDataFork(fsRdWrPerm), &fork);
    FSForkInfo info;
    fork.GetForkInfo(info);
    EXPECT_EQ(info.permissions, fsRdPerm) << "the second permission is ignored";
    const SInt16 dataRefNum = fork.UseRefNum();
    const SInt16 resourceRefNum = file.OpenResourceFork(fsRdPerm).UseRefNum();

    Gx::File copy(file);
    EXPECT_FALSE(copy.IsDataForkOpen() || copy.IsResourceForkOpen());
    EXPECT_TRUE(copy.IsEqualTo(file));
    file = copy;
    EXPECT_FALSE(file.IsDataForkOpen() || file.IsResourceForkOpen());
    EXPECT_FALSE(ForkIsOpen(dataRefNum) || ForkIsOpen(resourceRefNum)) << "assignment closes the forks";

    file.OpenDataFork(fsRdPerm);
    file.CloseDataFork();
    EXPECT_FALSE(file.IsDataForkOpen());
    file.OpenDataFork(fsRdWrPerm);
    file.DeleteOnDisk();
    EXPECT_FALSE(file.IsDataForkOpen() || Exists(Path("file")));
    EXPECT_EQ(State(file.GetLocation()), 2);
    file.CreateOnDisk();
    file.OpenDataFork(fsRdPerm);
    file.Invalidate();
    EXPECT_FALSE(file.IsDataForkOpen());
    EXPECT_EQ(State(file.GetLocation()), 0);

    Gx::File folder{Gx::FSObject(mFolderRef)};
    ExpectOSError([&] { folder.OpenDataFork(fsRdPerm); }, notAFileErr, "FSCreateFork failed");
    EXPECT_FALSE(folder.IsDataForkOpen()) << "a fork that failed to open is not kept";
}

TEST_F(FileTest, UpdateLocationPrefersWhatAnOpenForkKnows)
{
    Gx::File file(Child("file"));
    file.UpdateLocation();
    EXPECT_EQ(State(file.GetLocation()), 2);
    Made("file", "abc");
    file.UpdateLocation();
    EXPECT_EQ(State(file.GetLocation()), 1);

    Gx::File open(file);
    open.OpenDataFork(fsRdPerm);
    ::unlink(Path("file").c_str());
    file.UpdateLocation();
    EXPECT_EQ(State(file.GetLocation()), 0);
    open.UpdateLocation();
    EXPECT_EQ(State(open.GetLocation()), 1) << "the open fork still names the file";
}

TEST_F(FileTest, TotalForkSizesCountBothForks)
{
    Made("file", "12345");
    Gx::File file(Child("file"));
    UInt64 logical = 0;
    ItemCount forks = 0;
    file.GetTotalForkSizes(&logical, nullptr, &forks);
    EXPECT_EQ(std::make_pair(logical, forks), std::make_pair(UInt64(5), ItemCount(1)));
    ASSERT_EQ(FSWriteFork(file.OpenResourceFork(fsRdWrPerm).UseRefNum(), fsFromStart, 0, 3, "abc", nullptr), noErr);
    file.CloseResourceFork();
    file.GetTotalForkSizes(&logical, nullptr, &forks);
    EXPECT_EQ(std::make_pair(logical, forks), std::make_pair(UInt64(8), ItemCount(2)));

    ExpectOSError([&] { Gx::File(Child("missing")).GetTotalForkSizes(&logical); }, errFSBadFSRef,
                  "File object has no FSRef");
    ::unlink(Path("file").c_str());
    ExpectOSError([&] { file.GetTotalForkSizes(&logical); }, fnfErr, "FSGetTotalForkSizes failed");
}

}  // namespace
