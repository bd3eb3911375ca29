// References: identity through renames and moves by other processes, comparison, volumes
// and node IDs, names, and the URL bridge.
#include "FilesTesting.h"

#include <Carbon/CFURLFSRef.h>

#include <cstring>

namespace {

using namespace spindeck::test;

std::string Quoted(const std::string& inPath) { return "'" + inPath + "'"; }

// The name and parent folder the File Manager reports for a reference.
struct Placement {
    std::u16string name;
    FSRef parent;
    FSCatalogInfo info;
};

Placement PlacementOf(const FSRef& inRef)
{
    Placement placement{};
    HFSUniStr255 name;
    EXPECT_EQ(FSGetCatalogInfo(&inRef, kFSCatInfoParentDirID | kFSCatInfoNodeID | kFSCatInfoVolume, &placement.info,
                               &name, nullptr, &placement.parent),
              noErr);
    placement.name = NameOf(name);
    return placement;
}

TEST(FilesReferences, FollowItemsThatAnotherProcessRenamesOrMovesAndCompareByIdentity)
{
    TemporaryFolder folder;
    ::mkdir(folder.Path("a").c_str(), 0755);
    ::mkdir(folder.Path("b").c_str(), 0755);
    WriteFile(folder.Path("a/file"), "x");
    FSRef file = RefOf(folder.Path("a/file"));
    FSRef subfolder = RefOf(folder.Path("a"));
    FSRef other = RefOf(folder.Path("b"));

    ASSERT_EQ(std::system(("mv " + Quoted(folder.Path("a/file")) + " " + Quoted(folder.Path("b/moved"))).c_str()), 0);
    Placement moved = PlacementOf(file);
    EXPECT_EQ(moved.name, u"moved");
    EXPECT_EQ(FSCompareFSRefs(&moved.parent, &other), noErr);

    // A folder renamed away carries the reference of everything in it along.
    FSRef inner = RefOf(folder.Path("b/moved"));
    ASSERT_EQ(std::system(("mv " + Quoted(folder.Path("b")) + " " + Quoted(folder.Path("a/renamed"))).c_str()), 0);
    EXPECT_EQ(PlacementOf(other).name, u"renamed");
    FSRef otherParent = PlacementOf(other).parent;
    EXPECT_EQ(FSCompareFSRefs(&otherParent, &subfolder), noErr);
    UInt8 path[4096];
    ASSERT_EQ(FSRefMakePath(&inner, path, sizeof path), noErr);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(path)), folder.Path("a/renamed/moved"));
    EXPECT_EQ(FSRefMakePath(&inner, path, 4), errFSNameTooLong);

    // Deleted behind the port's back, then a new file under the same name.
    ASSERT_EQ(::unlink(folder.Path("a/renamed/moved").c_str()), 0);
    WriteFile(folder.Path("a/renamed/moved"), "y");
    FSCatalogInfo info;
    EXPECT_EQ(FSGetCatalogInfo(&file, kFSCatInfoNone, &info, nullptr, nullptr, nullptr), fnfErr);
    FSRef fresh = RefOf(folder.Path("a/renamed/moved")), again = RefOf(folder.Path("a/./renamed/moved"));
    EXPECT_EQ(FSCompareFSRefs(&file, &fresh), errFSRefsDifferent);
    EXPECT_EQ(FSCompareFSRefs(&again, &fresh), noErr);

    FSRef garbage;
    std::memset(&garbage, 0x5A, sizeof garbage);
    EXPECT_EQ(FSCompareFSRefs(&fresh, &garbage), errFSBadFSRef);
    EXPECT_EQ(FSGetCatalogInfo(&garbage, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), errFSBadFSRef);
    EXPECT_EQ(FSCompareFSRefs(&fresh, nullptr), paramErr);

    struct stat tmp, shm;
    if (::stat("/dev/shm", &shm) != 0 || ::stat(folder.Path().c_str(), &tmp) != 0 || shm.st_dev == tmp.st_dev)
        GTEST_SKIP() << "no second volume to compare with";
    FSRef elsewhere = RefOf("/dev/shm");
    EXPECT_EQ(FSCompareFSRefs(&fresh, &elsewhere), diffVolErr);
    EXPECT_EQ(FSMoveObject(&fresh, &elsewhere, nullptr), diffVolErr);
}

int OpenDescriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

TEST(FilesReferences, ManyItemsDoNotExhaustDescriptors)
{
    TemporaryFolder folder(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    constexpr int kItems = 3000;
    std::vector<FSRef> refs;
    int before = OpenDescriptors();
    for (int index = 0; index < kItems; ++index) {
        WriteFile(folder.Path(std::to_string(index)), "");
        refs.push_back(RefOf(folder.Path(std::to_string(index))));
    }
    EXPECT_LT(OpenDescriptors() - before, 1100);
    // The least recently used were given up, and are found again through their folder.
    HFSUniStr255 name;
    for (int index = 0; index < kItems; index += 97) {
        ASSERT_EQ(FSGetCatalogInfo(&refs[index], kFSCatInfoNone, nullptr, &name, nullptr, nullptr), noErr);
        EXPECT_EQ(NameOf(name), Units(std::to_string(index)));
    }
}

TEST(FilesVolumes, RootIsNodeTwoWithAnEmptyParent)
{
    TemporaryFolder folder;
    FSCatalogInfo info;
    FSRef container = RefOf(folder.Path());
    ASSERT_EQ(FSGetCatalogInfo(&container, kFSCatInfoVolume, &info, nullptr, nullptr, nullptr), noErr);
    FSVolumeRefNum volume = info.volume;
    EXPECT_LE(volume, -100);

    FSRef root;
    HFSUniStr255 volumeName;
    FSVolumeInfo volumeInfo;
    ASSERT_EQ(FSGetVolumeInfo(volume, 0, nullptr, kFSVolInfoSizes | kFSVolInfoBlocks | kFSVolInfoFlags, &volumeInfo,
                              &volumeName, &root),
              noErr);
    EXPECT_GT(volumeInfo.totalBytes, 0u);
    EXPECT_GE(volumeInfo.totalBytes, volumeInfo.freeBytes);
    EXPECT_GT(volumeInfo.blockSize, 0u);
    EXPECT_EQ(volumeInfo.flags & kFSVolFlagSoftwareLockedMask, 0);

    FSRef parent;
    std::memset(&parent, 0xFF, sizeof parent);
    HFSUniStr255 rootName;
    ASSERT_EQ(FSGetCatalogInfo(&root, kFSCatInfoNodeID | kFSCatInfoParentDirID | kFSCatInfoNodeFlags, &info, &rootName,
                               nullptr, &parent),
              noErr);
    EXPECT_EQ(info.nodeID, 2u);
    EXPECT_EQ(info.parentDirID, 1u);
    EXPECT_TRUE(info.nodeFlags & kFSNodeIsDirectoryMask);
    EXPECT_EQ(NameOf(rootName), NameOf(volumeName));
    const FSRef zero{};
    EXPECT_EQ(std::memcmp(&parent, &zero, sizeof parent), 0);
    EXPECT_EQ(FSDeleteObject(&root), fBsyErr);

    // The startup volume carries the name HFS-style paths use, and listing ends with nsvErr.
    FSVolumeRefNum first = 0;
    ASSERT_EQ(FSGetVolumeInfo(kFSInvalidVolumeRefNum, 1, &first, kFSVolInfoNone, nullptr, &volumeName, nullptr), noErr);
    EXPECT_EQ(first, -100);
    EXPECT_EQ(NameOf(volumeName), u"Macintosh HD");
    ItemCount index = 1;
    while (FSGetVolumeInfo(kFSInvalidVolumeRefNum, index, nullptr, kFSVolInfoNone, nullptr, nullptr, nullptr) == noErr)
        ++index;
    EXPECT_EQ(FSGetVolumeInfo(kFSInvalidVolumeRefNum, index, nullptr, kFSVolInfoNone, nullptr, nullptr, nullptr),
              nsvErr);
    EXPECT_EQ(FSGetVolumeInfo(12345, 0, nullptr, kFSVolInfoNone, nullptr, nullptr, nullptr), nsvErr);
}

TEST(FilesVolumes, DirectoryIDsSpecsAndURLsLeadBackToTheItems)
{
    TemporaryFolder folder;
    WriteFile(folder.Path("leaf.txt"), "");
    FSRef container = RefOf(folder.Path()), leaf = RefOf(folder.Path("leaf.txt"));
    FSCatalogInfo info;
    ASSERT_EQ(FSGetCatalogInfo(&container, kFSCatInfoVolume | kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr),
              noErr);

    FSRefParam block{};
    FSRef made;
    block.ioVRefNum = info.volume;
    block.ioDirID = SInt32(info.nodeID);
    block.newRef = &made;
    ASSERT_EQ(PBMakeFSRefSync(&block), noErr);  // no name: the folder itself
    EXPECT_EQ(FSCompareFSRefs(&made, &container), noErr);
    const unsigned char leafName[] = "\x08leaf.txt";
    block.ioNamePtr = leafName;
    ASSERT_EQ(PBMakeFSRefSync(&block), noErr);
    EXPECT_EQ(FSCompareFSRefs(&made, &leaf), noErr);
    const unsigned char missing[] = "\x04none";
    block.ioNamePtr = missing;
    EXPECT_EQ(PBMakeFSRefSync(&block), fnfErr);
    EXPECT_EQ(block.ioResult, fnfErr);
    block.ioDirID = 0x7FFFFFF0;
    EXPECT_EQ(PBMakeFSRefSync(&block), dirNFErr);

    FSSpec spec;
    ASSERT_EQ(FSGetCatalogInfo(&leaf, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr), noErr);
    EXPECT_EQ(spec.vRefNum, info.volume);
    EXPECT_EQ(spec.parID, SInt32(info.nodeID));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(spec.name + 1), spec.name[0]), "leaf.txt");
    ASSERT_EQ(FSpMakeFSRef(&spec, &made), noErr);
    EXPECT_EQ(FSCompareFSRefs(&made, &leaf), noErr);

    // A name too long for a specification is shortened with the node ID, and still found.
    std::string longName(80, 'n');
    WriteFile(folder.Path(longName), "");
    FSRef longRef = RefOf(folder.Path(longName));
    ASSERT_EQ(FSGetCatalogInfo(&longRef, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr), noErr);
    EXPECT_LE(spec.name[0], 31);
    EXPECT_NE(std::string(reinterpret_cast<char*>(spec.name + 1), spec.name[0]).find('#'), std::string::npos);
    ASSERT_EQ(FSpMakeFSRef(&spec, &made), noErr);
    EXPECT_EQ(FSCompareFSRefs(&made, &longRef), noErr);

    // A folder's URL has the directory flag; a URL of nothing makes no reference.
    FSRef spaced = CreateFolder(container, "sub folder");
    CFURLRef url = CFURLCreateFromFSRef(nullptr, &spaced);
    ASSERT_NE(url, nullptr);
    EXPECT_TRUE(CFURLHasDirectoryPath(url));
    ASSERT_TRUE(CFURLGetFSRef(url, &made));
    EXPECT_EQ(FSCompareFSRefs(&made, &spaced), noErr);
    CFRelease(url);
    const std::string nothing = folder.Path("nothing");
    url = CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(nothing.c_str()),
                                                  CFIndex(nothing.size()), false);
    EXPECT_FALSE(CFURLGetFSRef(url, &made));
    CFRelease(url);
}

TEST(FilesNames, LengthsCharactersAndReservedNames)
{
    TemporaryFolder folder;
    FSRef parent = RefOf(folder.Path());
    auto create = [&](const std::u16string& inName) {
        return FSCreateFileUnicode(&parent, inName.size(), Chars(inName), kFSCatInfoNone, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(create(std::u16string(255, u'a')), noErr);
    EXPECT_EQ(create(std::u16string(256, u'b')), errFSNameTooLong);
    // 255 units that need 510 bytes cannot be stored whole, and are not cut to fit.
    EXPECT_EQ(create(std::u16string(255, u'\u00E9')), bdNamErr);
    EXPECT_EQ(create(std::u16string(127, u'\u00E9')), noErr);
    EXPECT_EQ(create(u""), errFSMissingName);
    EXPECT_EQ(create(u"a/b"), bdNamErr);
    EXPECT_EQ(create(std::u16string(u"a\0b", 3)), bdNamErr);
    EXPECT_EQ(create(u".."), bdNamErr);
    EXPECT_EQ(create(u"._hidden"), bdNamErr);
    EXPECT_EQ(create(std::u16string(1, char16_t(0xD800))), bdNamErr);
    EXPECT_EQ(create(std::u16string(255, u'a')), dupFNErr);

    // A name on disk that is not UTF-8 still names its item, through escapes.
    WriteFile(folder.Path("caf\xE9"), "latin1");
    FSRef odd = RefOf(folder.Path("caf\xE9"));
    HFSUniStr255 name;
    ASSERT_EQ(FSGetCatalogInfo(&odd, kFSCatInfoNone, nullptr, &name, nullptr, nullptr), noErr);
    EXPECT_EQ(NameOf(name), std::u16string(u"caf") + char16_t(0xDCE9));
    FSRef again;
    ASSERT_EQ(FSMakeFSRefUnicode(&parent, name.length, name.unicode, kTextEncodingUnicodeDefault, &again), noErr);
    EXPECT_EQ(FSCompareFSRefs(&again, &odd), noErr);
    // An encoded surrogate and an overlong form are escaped byte by byte; a valid character
    // beside them is read as itself.
    WriteFile(folder.Path("\xED\xA0\x80\xC0\xAF\xF0\x9F\x98\x80"), "mixed");
    FSRef mixed = RefOf(folder.Path("\xED\xA0\x80\xC0\xAF\xF0\x9F\x98\x80"));
    ASSERT_EQ(FSGetCatalogInfo(&mixed, kFSCatInfoNone, nullptr, &name, nullptr, nullptr), noErr);
    EXPECT_EQ(NameOf(name), (std::u16string{0xDCED, 0xDCA0, 0xDC80, 0xDCC0, 0xDCAF, 0xD83D, 0xDE00}));
    ASSERT_EQ(FSMakeFSRefUnicode(&parent, name.length, name.unicode, kTextEncodingUnicodeDefault, &again), noErr);
    EXPECT_EQ(FSCompareFSRefs(&again, &mixed), noErr);
    std::u16string absent = u"absent";
    EXPECT_EQ(FSMakeFSRefUnicode(&parent, absent.size(), Chars(absent), 0, &again), fnfErr);
    EXPECT_EQ(FSMakeFSRefUnicode(&odd, absent.size(), Chars(absent), 0, &again), errFSNotAFolder);
}

}  // namespace
