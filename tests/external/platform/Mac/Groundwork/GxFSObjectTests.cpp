#include "FileObjectTesting.h"
#include "ReadOnlyVolumes.h"

#include <sys/stat.h>

#include <chrono>
#include <thread>

namespace {

using namespace spindeck::test;
using Gx::FSUtils::CompareFSNames;
using Gx::FSUtils::FSNamesAreEqual;
using Gx::FSUtils::StringToHFSUniStr;
using FSObjectTest = FileObjectTest;

TEST_F(FSObjectTest, EachConstructorTakesTheStateTheDiskDescribes)
{
    FSRef file = Made("file");
    FSRef gone = Made("gone");
    ASSERT_EQ(FSDeleteObject(&gone), noErr);
    // Both checked against the catalog in CatalogFinderAndLockQueries.
    const SInt16 vol = Gx::FSObject(file).GetVolume();
    const SInt32 dir = Gx::FSObject(file).GetParentDirID();
    const SInt32 lost = 0x7FFFFFF0;
    HFSUniStr255 fileName;
    StringToHFSUniStr(Str("file"), fileName);
    FSSpec fileSpec{};
    ASSERT_EQ(FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr, nullptr, &fileSpec, nullptr), noErr);
    // "café" in Mac Roman: the name is decoded in the encoding given.
    const FSSpec missingSpec{vol, dir, {4, 'c', 'a', 'f', 0x8E}};
    const FSSpec lostSpec{vol, lost, {1, 'x'}};
    const auto posix = kCFURLPOSIXPathStyle;
    Gx::CFURL fileURL(file);
    const struct {
        std::function<Gx::FSObject()> make;
        int state;
        const char* name;  // of a missing item
    } cases[] = {
        {[] { return Gx::FSObject(); }, 0, nullptr},
        {[&] { return Gx::FSObject(file); }, 1, nullptr},
        {[&] { return Gx::FSObject(gone); }, 0, nullptr},
        {[&] { return Gx::FSObject(mFolderRef, fileName); }, 1, nullptr},
        {[&] { return Child("new"); }, 2, "new"},
        {[&] { return Gx::FSObject(vol, dir, Str("file")); }, 1, nullptr},
        {[&] { return Gx::FSObject(vol, dir, Str("new")); }, 2, "new"},
        {[&] { return Gx::FSObject(vol, dir, HFSUniStr255{}); }, 0, nullptr},
        {[&] { return Gx::FSObject(vol, lost, Str("new")); }, 0, nullptr},
        {[&] { return Gx::FSObject(fileSpec, kCFStringEncodingMacRoman); }, 1, nullptr},
        {[&] { return Gx::FSObject(missingSpec, kCFStringEncodingMacRoman); }, 2, "café"},
        {[&] { return Gx::FSObject(lostSpec, kCFStringEncodingMacRoman); }, 0, nullptr},
        {[&] { return Gx::FSObject(fileURL.UseRef()); }, 1, nullptr},
        {[] { return Gx::FSObject(CFURLRef(nullptr)); }, 0, nullptr},
        {[&] { return Gx::FSObject(Str(Path("new")), posix); }, 2, "new"},
        {[&] { return Gx::FSObject(Str(Path("no/new")), posix); }, 0, nullptr},
        {[&] { return Gx::FSObject(Str("new"), mFolderRef, posix); }, 2, "new"},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(testing::Message() << "case " << i);
        Gx::FSObject object = cases[i].make();
        ASSERT_EQ(State(object), cases[i].state);
        if (cases[i].state == 1) {
            EXPECT_TRUE(object.UseRef() == file);
        } else if (cases[i].state == 2) {
            EXPECT_EQ(Text(object.GetName()), cases[i].name);
            FSRef parent;
            object.GetParent(parent);
            EXPECT_TRUE(parent == mFolderRef);
            ExpectOSError([&] { object.UseRef(); }, errFSBadFSRef, "File object has no FSRef");
        }
    }
    ExpectThrows<Gx::RuntimeError>([] { Gx::FSObject(Gx::CFString(), kCFURLPOSIXPathStyle); }, FourCC("cfnr"));
    ExpectThrows<Gx::RuntimeError>([&] { Gx::FSObject(Gx::CFString(), mFolderRef, posix); }, FourCC("cfnr"));
}

TEST_F(FSObjectTest, AReferenceFollowsItsItemWhenAnotherProgramMovesIt)
{
    Made("before");
    Gx::FSObject object = Child("before");
    Shell("mkdir '" + Path("sub") + "' && mv '" + Path("before") + "' '" + Path("sub/after") + "'");
    EXPECT_EQ(Text(object.GetName()), "after");
    Gx::FSObject parent;
    object.GetParent(parent);
    EXPECT_EQ(Text(parent.GetName()), "sub");
    EXPECT_EQ(Text(object.GetPath()), Path("sub/after"));
}

TEST_F(FSObjectTest, NamesHoldAtMost255Units)
{
    const std::string longest(255, 'n');
    Gx::FSObject object = Child(longest);
    HFSUniStr255 name;
    object.GetName(name);
    ASSERT_EQ(FSCreateFileUnicode(&mFolderRef, name.length, name.unicode, kFSCatInfoNone, nullptr, nullptr, nullptr),
              noErr);
    object.Update();
    EXPECT_EQ(State(object), 1);
    EXPECT_EQ(Text(object.GetName()), longest);

    HFSUniStr255 record{};
    ExpectThrows<Gx::RuntimeError>([&] { StringToHFSUniStr(Str(longest + "n"), record); }, FourCC("cfsc"));
    EXPECT_EQ(record.length, 256) << "the length is written before the limit is checked";
    ExpectThrows<Gx::RuntimeError>([&] { Child(longest + "n"); }, FourCC("cfsc"));
}

TEST_F(FSObjectTest, ComparesItemsByIdentityAndMissingOnesByName)
{
    Made("exists");
    Gx::FSObject missing = Child("Missing.txt");
    Gx::FSObject exists = Child("exists");
    EXPECT_EQ(missing.CompareTo(Child("missing.TXT")), noErr);
    EXPECT_EQ(missing.CompareTo(Child("other")), errFSRefsDifferent);
    EXPECT_EQ(missing.CompareTo(exists), errFSRefsDifferent);
    EXPECT_EQ(exists.CompareTo(missing), errFSRefsDifferent);
    EXPECT_EQ(Gx::FSObject().CompareTo(Gx::FSObject()), noErr);
    EXPECT_TRUE(exists.IsEqualTo(Gx::FSObject(RefOf(Path("exists")))));
    EXPECT_EQ(exists.CompareTo(mFolderRef), errFSRefsDifferent);
    EXPECT_EQ(missing.CompareTo(RefOf(Path("exists"))), errFSRefsDifferent);

    // Width, case and composition do not count; diacritics and punctuation do; digits by value.
    EXPECT_TRUE(FSNamesAreEqual(Str("\uFF32\u00E9port"), Str("re\u0301port")));
    EXPECT_FALSE(FSNamesAreEqual(Str("r\u00E9port"), Str("report")));
    EXPECT_FALSE(FSNamesAreEqual(Str("a-b"), Str("ab")));
    EXPECT_LT(CompareFSNames(Str("file9"), Str("file10")), 0);
}

TEST_F(FSObjectTest, DeletingLeavesADescriptionThatRenamesAndUpdatesMove)
{
    Made("doomed", "x");
    Gx::FSObject object = Child("doomed");
    object.Delete();
    EXPECT_EQ(State(object), 2);
    EXPECT_EQ(Text(object.GetName()), "doomed");
    EXPECT_FALSE(Exists(Path("doomed")));
    object.Rename(Str("renamed"));
    EXPECT_EQ(Text(object.GetName()), "renamed");
    EXPECT_FALSE(Exists(Path("renamed"))) << "a missing item is renamed only in the object";

    Made("renamed");
    object.Update();
    ASSERT_EQ(State(object), 1);
    object.Rename(Str("final"));
    EXPECT_TRUE(Exists(Path("final")));
    ::unlink(Path("final").c_str());
    object.Update();
    EXPECT_EQ(State(object), 0);

    Shell("mkdir -p '" + Path("tree/a") + "' && touch '" + Path("tree/a/f") + "'");
    Gx::FSObject inTree(RefOf(Path("tree/a")), Str("x"));
    Gx::FSObject tree = Child("tree");
    tree.DeleteContainerContents();
    EXPECT_TRUE(Exists(Path("tree")) && std::filesystem::is_empty(Path("tree")));
    inTree.Update();
    EXPECT_EQ(State(inTree), 0) << "the folder of a missing item has gone";
    tree.DeleteContainer();
    EXPECT_EQ(Text(tree.GetName()), "tree");
}

TEST_F(FSObjectTest, AMissingItemsURLIsItsEscapedNameInItsFolder)
{
    Gx::FSObject missing = Child("a b%\u00E9");
    Gx::CFURL url = missing.GetURL();
    EXPECT_EQ(Text(url.GetString()), "a%20b%25%C3%A9");
    EXPECT_EQ(Text(url.GetBaseURL().GetString()), "file://" + mFolder.Path() + "/");
    EXPECT_EQ(Text(missing.GetPath()), Path("a b%\u00E9"));
    // '#' would start the URL's fragment and cut the name short.
    EXPECT_EQ(Text(Child("x#y.txt").GetPath()), Path("x#y.txt"));

    Gx::FSObject invalid(Str(Path("no/such")), kCFURLPOSIXPathStyle);
    EXPECT_FALSE(invalid.GetURL().IsValid());
    ExpectThrows<Gx::RuntimeError>([&] { invalid.GetPath(); }, FourCC("cfnr"));
    ExpectOSError([&] { invalid.GetName(); }, errFSBadFSRef, "File object has an invalid FSRef");
    HFSUniStr255 name;
    FSRef parent;
    FSSpec spec;
    // Each has a branch of its own for an object without a reference; the others ask UseRef.
    const Call needingRef[] = {
        [&] { invalid.GetName(name); },
        [&] { invalid.GetParent(parent); },
        [&] { invalid.GetFSSpec(spec); },
        [&] { invalid.Rename(Str("x")); },
    };
    for (const Call& call : needingRef)
        ExpectOSError(call, errFSBadFSRef, "File object has no FSRef");
}

TEST_F(FSObjectTest, CatalogFinderAndLockQueries)
{
    Made("file");
    ::mkdir(Path("folder").c_str(), 0755);
    Gx::FSObject file = Child("file");
    bool isDirectory = false;
    Child("folder").GetFinderInfo(nullptr, nullptr, &isDirectory);
    EXPECT_TRUE(isDirectory && Child("folder").IsFolder() && file.IsFile());
    file.ChangeFinderFlags(true, kIsInvisible | kHasBundle);
    file.ChangeFinderFlags(false, kHasBundle);
    EXPECT_EQ(file.GetFinderFlags(), kIsInvisible);

    FSCatalogInfo parent{};
    Gx::FSObject(mFolderRef).GetCatalogInfo(kFSCatInfoVolume | kFSCatInfoNodeID, parent);
    EXPECT_EQ(file.GetParentDirID(), SInt32(parent.nodeID));
    EXPECT_EQ(file.GetVolume(), parent.volume);
    FSSpec spec{};
    Child("new").GetFSSpec(spec, kCFStringEncodingMacRoman);
    EXPECT_EQ(spec.parID, SInt32(parent.nodeID));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(spec.name), 4), "\x03new");

    EXPECT_EQ(file.CheckLock(), noErr);
    file.SetIsLocked(true);
    EXPECT_EQ(file.CheckLock(), fLckdErr);
    auto changed = [&] {
        struct stat status {};
        ::stat(Path("file").c_str(), &status);
        return std::chrono::seconds(status.st_ctim.tv_sec) + std::chrono::nanoseconds(status.st_ctim.tv_nsec);
    };
    const auto before = changed();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    file.SetIsLocked(true);
    EXPECT_EQ(changed(), before) << "locking a locked item changes nothing on disk";
    file.SetIsLocked(false);
    EXPECT_NE(changed(), before) << "unlocking does, so the check above can see a change";
}

// In a process of its own: what CheckLock says of a locked and a plain file on each kind of
// read-only volume, on standard error ("-" where the volume could not be made).
[[noreturn]] void CheckLockOnReadOnlyVolumes()
{
    std::string report;
    {
        ReadOnlyVolumes volumes;
        for (const std::string* volume : {&volumes.SoftwareLocked(), &volumes.HardwareLocked()}) {
            auto check = [&](const char* inName) {
                return std::to_string(Gx::FSObject(RefOf(*volume + "/" + inName)).CheckLock());
            };
            report += volume->empty() ? " -" : " " + check("locked") + "/" + check("plain");
        }
    }
    std::fprintf(stderr, "locked/plain:%s\n", report.c_str());
    ::_exit(0);
}

// A suite of its own: nothing may touch the File Manager before the volumes are mounted.
// The volume locks are results, not failures. The disk image needs a loop device, which
// not every machine lends.
TEST(FSObjectReadOnlyVolume, CheckLockReturnsTheVolumesLock)
{
    if (!CanMountPrivately())
        GTEST_SKIP() << "no mount namespace of its own for a read-only volume here";
    EXPECT_EXIT(CheckLockOnReadOnlyVolumes(), testing::ExitedWithCode(0), "locked/plain: -45/-46 (-45/-44|-)\n");
}

TEST_F(FSObjectTest, EachPlatformFailureIsRaisedWithItsStatusAndCall)
{
    Made("stale");
    Gx::FSObject stale = Child("stale");
    ::unlink(Path("stale").c_str());
    HFSUniStr255 name;
    FSRef ref;
    FSCatalogInfo info{};
    FinderInfo finder{};
    const std::pair<Call, const char*> staleCalls[] = {
        {[&] { stale.GetName(); }, "FSGetFileDirName failed"},
        {[&] { stale.GetName(name); }, "FSGetFileDirName failed"},
        {[&] { stale.GetVolume(); }, "FSGetVRefNum failed"},
        {[&] { stale.GetParent(ref); }, "FSGetParentRef failed"},
        {[&] { stale.IsFile(); }, "FSGetCatalogInfo failed"},
        {[&] { stale.Delete(); }, "FSGetCatalogInfo failed"},
        {[&] { stale.SetCatalogInfo(kFSCatInfoNodeFlags, info); }, "FSSetCatalogInfo failed"},
        {[&] { stale.CheckLock(); }, "FSCheckLock failed"},
        {[&] { stale.GetFinderFlags(); }, "FSGetFinderInfo failed"},
        {[&] { stale.SetFinderInfo(&finder); }, "FSSetFinderInfo failed"},
        {[&] { stale.ChangeFinderFlags(true, kIsInvisible); }, "FSChangeFinderFlags failed"},
        {[&] { stale.Rename(Str("x")); }, "FSRenameUnicode failed"},
        {[&] { stale.DeleteContainerContents(); }, "FSDeleteContainerContents failed"},
    };
    for (const auto& [call, message] : staleCalls)
        ExpectOSError(call, fnfErr, message);

    Shell("mkdir '" + Path("full") + "' && touch '" + Path("full/f") + "' '" + Path("file") + "'");
    ExpectOSError([&] { Child("full").Delete(); }, fBsyErr, "FSDeleteObject failed");
    ExpectOSError([&] { Child("file").DeleteContainer(); }, dirNFErr, "FSDeleteContainer failed");
    EXPECT_TRUE(Exists(Path("full/f")) && Exists(Path("file")));
}

}  // namespace
