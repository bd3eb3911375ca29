// Files, folders and forks on real files in a temporary folder.
#include "FileObjectTesting.h"

#include <Groundwork/Files/GxDataFork.h>
#include <Groundwork/Files/GxFile.h>
#include <Groundwork/Files/GxFolder.h>
#include <Groundwork/Files/GxResourceFork.h>

namespace {

using namespace spindeck::test;
using FileTest = FileObjectTest;
using FolderTest = FileObjectTest;
using ForkTest = FileObjectTest;

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

    // Its own open fork is not closed for it.
    file.OpenDataFork(fsRdPerm);
    ExpectOSError([&] { file.CreateOnDisk(kFSCatInfoNone, nullptr, true); }, fBsyErr, "FSDeleteObject failed");
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
    file = copy;
    EXPECT_FALSE(file.IsDataForkOpen() || file.IsResourceForkOpen());
    EXPECT_FALSE(ForkIsOpen(dataRefNum) || ForkIsOpen(resourceRefNum)) << "assignment closes the forks";

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
    Made("file", "abc");
    file.UpdateLocation();
    EXPECT_EQ(State(file.GetLocation()), 1) << "without a fork the disk is asked again";

    Gx::File open(file);
    open.OpenDataFork(fsRdPerm);
    ::unlink(Path("file").c_str());
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

    ::unlink(Path("file").c_str());
    ExpectOSError([&] { file.GetTotalForkSizes(&logical); }, fnfErr, "FSGetTotalForkSizes failed");
}

TEST_F(FolderTest, AMissingFolderIsMadeAndThenFoundByVolumeAndDirectory)
{
    Gx::Folder folder(Child("new"));
    EXPECT_EQ(folder.GetVolume() | folder.GetDirID(), 0);
    folder.CreateOnDisk();
    FSCatalogInfo info{};
    FSRef made = RefOf(Path("new"));
    ASSERT_EQ(FSGetCatalogInfo(&made, kFSCatInfoVolume | kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr), noErr);
    EXPECT_EQ(folder.GetVolume(), info.volume);
    EXPECT_EQ(folder.GetDirID(), SInt32(info.nodeID));
    EXPECT_TRUE(folder.GetLocation().IsEqualTo(made));

    Shell("mv '" + Path("new") + "' '" + Path("moved") + "'");
    Gx::Folder byID(folder.GetVolume(), folder.GetDirID());
    EXPECT_TRUE(byID.IsEqualTo(folder));
    EXPECT_EQ(Text(byID.GetLocation().GetName()), "moved");
    ExpectOSError([&] { Gx::Folder(info.volume, 0x7FFFFFF0); }, dirNFErr, "PBMakeFSRefSync failed");
}

TEST_F(FolderTest, AnExistingFolderIsRefusedOrReplacedWithItsContents)
{
    Shell("mkdir -p '" + Path("full/sub") + "' && touch '" + Path("full/sub/f") + "'");
    Gx::Folder folder(Child("full"));
    const SInt32 oldDirID = folder.GetDirID();
    ExpectThrows<Gx::LogicError>([&] { folder.CreateOnDisk(); }, FourCC("logc"));
    EXPECT_TRUE(Exists(Path("full/sub/f")));
    folder.CreateOnDisk(kFSCatInfoNone, nullptr, true);
    EXPECT_TRUE(std::filesystem::is_empty(Path("full")));
    EXPECT_NE(folder.GetDirID(), oldDirID);

    Made("full/y");
    folder.DeleteOnDisk();
    EXPECT_FALSE(Exists(Path("full")));
    EXPECT_EQ(folder.GetVolume() | folder.GetDirID(), 0);
}

TEST_F(FolderTest, EachFailureIsRaisedWithItsStatusAndMessage)
{
    Made("file");
    ExpectOSError([&] { Gx::Folder(Child("file")); }, errFSNotAFolder, "File object is not a folder");
    Gx::Folder later(Child("later"));
    Made("later");
    ExpectOSError([&] { later.UpdateLocation(); }, errFSNotAFolder, "File object is not a folder");

    ExpectOSError([&] { Gx::Folder(Child("a/b")).CreateOnDisk(); }, bdNamErr, "FSCreateDirectoryUnicode failed");
    // Unlike a file, a folder asks the disk for its parent and name before anything else.
    ::mkdir(Path("gone").c_str(), 0755);
    Gx::Folder gone(Child("gone"));
    ::rmdir(Path("gone").c_str());
    ExpectOSError([&] { gone.CreateOnDisk(); }, fnfErr, "FSGetParentRef failed");

    Shell("mkdir '" + Path("busy") + "' && touch '" + Path("busy/f") + "'");
    Gx::File open(Gx::FSObject(RefOf(Path("busy")), Str("f")));
    open.OpenDataFork(fsRdPerm);
    ExpectOSError([&] { Gx::Folder(Child("busy")).CreateOnDisk(kFSCatInfoNone, nullptr, true); }, fBsyErr,
                  "FSDeleteContainer failed");
}

std::string Bytes(const Gx::CFData& inData)
{
    return std::string(reinterpret_cast<const char*>(inData.GetBytePtr()), std::size_t(inData.GetLength()));
}

TEST_F(ForkTest, OnlyAnOwnedForkIsClosed)
{
    FSRef file = Made("file", "data");
    SInt16 refNum = 0;
    {
        Gx::DataFork fork(file, fsRdPerm);
        refNum = fork.UseRefNum();
        ExpectThrows<Gx::LogicError>([&] { fork.Open(file, fsRdPerm, Gx::DataFork::GetForkName()); }, FourCC("logc"));
        {
            Gx::FileFork borrowed(refNum, false);
            borrowed.Close();
            EXPECT_TRUE(borrowed.IsOpen());
        }
        EXPECT_TRUE(ForkIsOpen(refNum)) << "neither closing nor destroying a borrowed fork closes it";
    }
    EXPECT_FALSE(ForkIsOpen(refNum));
    ASSERT_EQ(FSOpenFork(&file, 0, nullptr, fsRdPerm, &refNum), noErr);
    Gx::DataFork(refNum, true);
    EXPECT_FALSE(ForkIsOpen(refNum)) << "an adopted fork that is owned is closed";
}

TEST_F(ForkTest, DataIsReadAndWrittenWholeOrInSlices)
{
    FSRef file = Made("file", std::string(100, 'x'));
    Gx::DataFork fork(file, fsRdWrPerm);
    fork.WriteContents("0123456789", 10);
    EXPECT_EQ(ReadFile(Path("file")), "0123456789") << "a longer old content is cut";
    char slice[4] = {};
    fork.ReadData(slice, 3, fsFromStart, 7);
    EXPECT_STREQ(slice, "789");
    ExpectOSError([&] { fork.ReadData(slice, 3, fsFromStart, 8); }, eofErr, "FSReadFork failed");
    fork.SetSize(fsFromStart, 6);
    EXPECT_EQ(Bytes(fork.ReadContents()), "012345");
    fork.WriteContents(Gx::CFData(reinterpret_cast<const UInt8*>("ab"), 2));
    EXPECT_EQ(ReadFile(Path("file")), "ab");

    HFSUniStr255 name;
    fork.GetForkName(name);
    EXPECT_EQ(name.length, 0) << "the data fork's name is empty";
    Shell("mv '" + Path("file") + "' '" + Path("moved") + "'");
    Gx::FSObject object;
    fork.GetFSObject(object);
    EXPECT_EQ(Text(object.GetName()), "moved");
}

TEST_F(ForkTest, ReadContentsTakesAnythingBelow2GiB)
{
    const SInt64 limit = 0x80000000;
    Made("big");
    ASSERT_EQ(::truncate(Path("big").c_str(), limit), 0);
    Gx::DataFork big(RefOf(Path("big")), fsRdWrPerm);
    ExpectThrows<Gx::RuntimeError>([&] { big.ReadContents(); }, FourCC("runt"));
    big.SetSize(fsFromStart, limit - 1);
    big.WriteData("z", 1, fsFromStart, limit - 2);
    Gx::CFData contents = big.ReadContents();
    ASSERT_EQ(contents.GetLength(), limit - 1);
    EXPECT_EQ(contents.GetBytePtr()[limit - 2], 'z');
}

TEST_F(ForkTest, OpeningAMissingResourceForkCreatesAnEmptyOne)
{
    FSRef file = Made("file", "abc");
    const HFSUniStr255& resourceName = Gx::ResourceFork::GetForkName();
    ASSERT_GT(resourceName.length, 0);
    Gx::ResourceFork fork(file, fsRdPerm);
    EXPECT_EQ(fork.GetSize(), 0);
    CatPositionRec position{};
    HFSUniStr255 second;
    ASSERT_EQ(FSIterateForks(&file, &position, nullptr, nullptr, nullptr), noErr);
    ASSERT_EQ(FSIterateForks(&file, &position, &second, nullptr, nullptr), noErr);
    EXPECT_EQ(NameOf(second), NameOf(resourceName));
}

TEST_F(ForkTest, EachPlatformFailureIsRaisedWithItsStatusAndCall)
{
    FSRef file = Made("file", "abc");
    FSRef locked = Made("locked");
    SetLocked(locked, true);
    ExpectOSError([&] { Gx::DataFork(mFolderRef, fsRdPerm); }, notAFileErr, "FSCreateFork failed");
    ExpectOSError([&] { Gx::ResourceFork(locked, fsRdPerm); }, fLckdErr, "FSCreateFork failed");
    ExpectOSError([&] { Gx::DataFork(locked, fsRdWrPerm); }, permErr, "FSOpenFork failed");
    Gx::DataFork readOnly(file, fsRdPerm);
    ExpectOSError([&] { readOnly.WriteData("x", 1, fsFromStart, 0); }, wrPermErr, "FSWriteFork failed");
    ExpectOSError([&] { readOnly.WriteContents("x", 1); }, wrPermErr, "FSSetForkSize failed");
    ExpectOSError([&] { readOnly.SetPosition(fsFromStart, -1); }, posErr, "FSSetForkPosition failed");

    Gx::DataFork closed(Gx::FileFork::refNum_Closed, false);
    FSRef ref;
    HFSUniStr255 name;
    FSForkInfo info;
    const std::pair<Call, const char*> closedCalls[] = {
        {[&] { closed.GetSize(); }, "FSGetForkSize failed"},
        {[&] { closed.GetPosition(); }, "FSGetForkPosition failed"},
        {[&] { closed.GetFSRef(ref); }, "FSGetForkCBInfo failed"},
        {[&] { closed.GetForkName(name); }, "FSGetForkCBInfo failed"},
        {[&] { closed.GetForkInfo(info); }, "FSGetForkCBInfo failed"},
    };
    for (const auto& [call, message] : closedCalls)
        ExpectOSError(call, rfNumErr, message);
    EXPECT_EQ(closed.Flush(), rfNumErr) << "a flush reports its status instead of raising it";
}

}  // namespace
