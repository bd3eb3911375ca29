#include "FileObjectTesting.h"

#include <Groundwork/Files/GxFile.h>
#include <Groundwork/Files/GxFolder.h>

namespace {

using namespace spindeck::test;
using FolderTest = FileObjectTest;

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
    EXPECT_EQ(State(Gx::Folder().GetLocation()), 0);
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

    Made("full/x");
    folder.DeleteContents();
    EXPECT_TRUE(std::filesystem::is_empty(Path("full")));
    Made("full/y");
    folder.DeleteOnDisk();
    EXPECT_FALSE(Exists(Path("full")));
    EXPECT_EQ(folder.GetVolume() | folder.GetDirID(), 0);
    folder.CreateOnDisk();
    EXPECT_TRUE(Exists(Path("full")));
    folder.Invalidate();
    EXPECT_EQ(folder.GetVolume() | folder.GetDirID(), 0);
    EXPECT_EQ(State(folder.GetLocation()), 0);
}

TEST_F(FolderTest, EachFailureIsRaisedWithItsStatusAndMessage)
{
    Made("file");
    ExpectOSError([&] { Gx::Folder(Child("file")); }, errFSNotAFolder, "File object is not a folder");
    Gx::Folder later(Child("later"));
    Made("later");
    ExpectOSError([&] { later.UpdateLocation(); }, errFSNotAFolder, "File object is not a folder");

    ExpectOSError([] { Gx::Folder().CreateOnDisk(); }, errFSBadFSRef, "File object has no FSRef");
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

}  // namespace
