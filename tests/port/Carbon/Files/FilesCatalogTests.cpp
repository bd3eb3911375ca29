// Catalog information, locks, creating and deleting, and the AppleDouble companions that
// carry Finder information: what other programs see of them, and how they follow the item.
#include "FilesTesting.h"

#include <cstdio>
#include <cstring>

namespace {

using namespace spindeck::test;

FinderInfo TypeAndCreator(const char (&inType)[5], const char (&inCreator)[5], UInt16 inFlags)
{
    FinderInfo info{};
    info.fileType = FourCC(inType);
    info.fileCreator = FourCC(inCreator);
    info.finderFlags = inFlags;
    info.location = {10, 20};
    return info;
}

void SetFinderInfo(const FSRef& inRef, const FinderInfo& inInfo)
{
    FSCatalogInfo catalog{};
    std::memcpy(catalog.finderInfo, &inInfo, sizeof inInfo);
    ASSERT_EQ(FSSetCatalogInfo(&inRef, kFSCatInfoFinderInfo, &catalog), noErr);
}

FinderInfo GetFinderInfo(const FSRef& inRef)
{
    FSCatalogInfo catalog{};
    EXPECT_EQ(FSGetCatalogInfo(&inRef, kFSCatInfoFinderInfo, &catalog, nullptr, nullptr, nullptr), noErr);
    FinderInfo info;
    std::memcpy(&info, catalog.finderInfo, sizeof info);
    return info;
}

std::string Output(const std::string& inCommand)
{
    std::string output;
    if (FILE* pipe = ::popen(inCommand.c_str(), "r")) {
        char buffer[256];
        while (std::fgets(buffer, sizeof buffer, pipe))
            output += buffer;
        ::pclose(pipe);
    }
    return output;
}

// An AppleDouble reader that shares no code with the port: the header, the entry table, the
// type and creator of the Finder information, and the resource fork's length.
constexpr const char* kIndependentReader = R"(
import struct, sys
data = open(sys.argv[1], 'rb').read()
magic, version = struct.unpack('>II', data[:8])
count, = struct.unpack('>H', data[24:26])
entries = {}
for i in range(count):
    eid, off, length = struct.unpack('>III', data[26 + 12 * i:38 + 12 * i])
    entries[eid] = data[off:off + length]
print('%08x %08x' % (magic, version))
print(entries[9][0:8].decode('mac_roman'), len(entries[9]), len(entries.get(2, b'')))
)";

TEST(FilesCatalog, InformationRoundTrips)
{
    TemporaryFolder folder;
    FSRef file = CreateFile(RefOf(folder.Path()), "notes");
    FSCatalogInfo set{};
    set.contentModDate = {0, 3000000000u, 0x8000};  // 1999, half a second in
    set.accessDate = {0, 3100000000u, 0};
    set.createDate = {0, 2900000000u, 0};
    set.backupDate = {0, 3050000000u, 0};
    set.permissionInfo.mode = 0640;
    set.permissionInfo.userID = ::getuid();
    set.permissionInfo.groupID = ::getgid();
    FinderInfo finder = TypeAndCreator("TEXT", "ttxt", kHasBundle | kIsInvisible);
    std::memcpy(set.finderInfo, &finder, sizeof finder);
    ExtendedFinderInfo extended{};
    extended.putAwayFolderID = 0x01020304;
    std::memcpy(set.extFinderInfo, &extended, sizeof extended);
    constexpr FSCatalogInfoBitmap kAll = kFSCatInfoAllDates | kFSCatInfoPermissions | kFSCatInfoFinderInfo |
                                         kFSCatInfoFinderXInfo;
    ASSERT_EQ(FSSetCatalogInfo(&file, kAll & ~kFSCatInfoAttrMod, &set), noErr);

    FSCatalogInfo got{};
    ASSERT_EQ(
        FSGetCatalogInfo(&file, kAll | kFSCatInfoNodeFlags | kFSCatInfoDataSizes, &got, nullptr, nullptr, nullptr),
        noErr);
    auto same = [](const UTCDateTime& inA, const UTCDateTime& inB) {
        return inA.highSeconds == inB.highSeconds && inA.lowSeconds == inB.lowSeconds && inA.fraction == inB.fraction;
    };
    for (auto date : {&FSCatalogInfo::contentModDate, &FSCatalogInfo::accessDate, &FSCatalogInfo::createDate,
                      &FSCatalogInfo::backupDate})
        EXPECT_TRUE(same(got.*date, set.*date));
    EXPECT_EQ(got.permissionInfo.mode, S_IFREG | 0640);
    EXPECT_EQ(std::memcmp(got.finderInfo, set.finderInfo, 16), 0);
    EXPECT_EQ(std::memcmp(got.extFinderInfo, set.extFinderInfo, 16), 0);
    EXPECT_EQ(got.nodeFlags & (kFSNodeLockedMask | kFSNodeIsDirectoryMask), 0);
    EXPECT_EQ(got.dataLogicalSize, 0u);

    EXPECT_EQ(FSSetCatalogInfo(&file, kFSCatInfoValence, &set), errFSBadInfoBitmap);

    UTCDateTime now;
    ASSERT_EQ(GetUTCDateTime(&now, kUTCDefaultOptions), noErr);
    CFAbsoluteTime absolute = 0;
    ASSERT_EQ(UCConvertUTCDateTimeToCFAbsoluteTime(&now, &absolute), noErr);
    EXPECT_NEAR(absolute, CFAbsoluteTimeGetCurrent(), 2.0);
    UTCDateTime back;
    ASSERT_EQ(UCConvertCFAbsoluteTimeToUTCDateTime(absolute, &back), noErr);
    EXPECT_TRUE(same(back, now));
    EXPECT_EQ(UCConvertCFAbsoluteTimeToUTCDateTime(-kCFAbsoluteTimeIntervalSince1904 - 1, &back), kUTCUnderflowErr);
}

TEST(FilesCatalog, LockedItemsRefuseChanges)
{
    TemporaryFolder folder;
    FSRef parent = RefOf(folder.Path());
    FSRef file = CreateFile(parent, "locked");
    FSRef elsewhere = CreateFolder(parent, "elsewhere");
    SInt16 earlyFork = 0;
    ASSERT_EQ(FSOpenFork(&file, 0, nullptr, fsRdWrPerm, &earlyFork), noErr);
    SetLocked(file, true);

    FSCatalogInfo info{};
    ASSERT_EQ(FSGetCatalogInfo(&file, kFSCatInfoNodeFlags | kFSCatInfoPermissions, &info, nullptr, nullptr, nullptr),
              noErr);
    EXPECT_TRUE(info.nodeFlags & kFSNodeLockedMask);
    EXPECT_EQ(info.permissionInfo.mode & S_IWUSR, 0);

    std::u16string other = u"other";
    EXPECT_EQ(FSRenameUnicode(&file, other.size(), Chars(other), 0, nullptr), fLckdErr);
    EXPECT_EQ(FSMoveObject(&file, &elsewhere, nullptr), fLckdErr);
    EXPECT_EQ(FSWriteFork(earlyFork, fsFromStart, 0, 1, "x", nullptr), fLckdErr);
    EXPECT_EQ(FSSetForkSize(earlyFork, fsFromStart, 10), fLckdErr);
    EXPECT_EQ(FSCloseFork(earlyFork), noErr);
    EXPECT_EQ(FSDeleteObject(&file), fLckdErr);
    SInt16 fork = 0;
    EXPECT_EQ(FSOpenFork(&file, 0, nullptr, fsWrPerm, &fork), permErr);
    ASSERT_EQ(FSOpenFork(&file, 0, nullptr, fsCurPerm, &fork), noErr);  // falls back to reading
    EXPECT_EQ(FSWriteFork(fork, fsFromStart, 0, 1, "x", nullptr), wrPermErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
    FinderInfo finder = TypeAndCreator("TEXT", "ttxt", 0);
    std::memcpy(info.finderInfo, &finder, sizeof finder);
    EXPECT_EQ(FSSetCatalogInfo(&file, kFSCatInfoFinderInfo, &info), fLckdErr);
    EXPECT_TRUE(Exists(folder.Path("locked")));

    // Unlocking in the same call as another change lets the change through.
    info.nodeFlags = 0;
    ASSERT_EQ(FSSetCatalogInfo(&file, kFSCatInfoNodeFlags | kFSCatInfoFinderInfo, &info), noErr);
    EXPECT_EQ(GetFinderInfo(file).fileType, FourCC("TEXT"));
    EXPECT_EQ(FSDeleteObject(&file), noErr);
    EXPECT_FALSE(Exists(folder.Path("locked")));
    EXPECT_FALSE(Exists(folder.Path("._locked")));
}

TEST(FilesCatalog, CreateAndDeleteFollowThePlatformsRules)
{
    TemporaryFolder folder;
    FSRef parent = RefOf(folder.Path());
    FinderInfo finder = TypeAndCreator("APPL", "KSTR", 0);
    FSCatalogInfo info{};
    std::memcpy(info.finderInfo, &finder, sizeof finder);
    FSRef file;
    FSSpec spec;
    std::u16string name = u"made";
    // A companion left without its item must not dress a new item of that name.
    WriteFile(folder.Path("._made"), "stale");
    ASSERT_EQ(FSCreateFileUnicode(&parent, name.size(), Chars(name), kFSCatInfoFinderInfo, &info, &file, &spec), noErr);
    EXPECT_EQ(GetFinderInfo(file).fileCreator, FourCC("KSTR"));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(spec.name + 1), spec.name[0]), "made");
    EXPECT_EQ(FSCreateFileUnicode(&parent, name.size(), Chars(name), kFSCatInfoNone, nullptr, nullptr, nullptr),
              dupFNErr);
    EXPECT_EQ(FSCreateFileUnicode(&file, name.size(), Chars(name), kFSCatInfoNone, nullptr, nullptr, nullptr),
              errFSNotAFolder);

    FSRef box;
    UInt32 dirID = 0;
    std::u16string boxName = u"box";
    ASSERT_EQ(FSCreateDirectoryUnicode(&parent, boxName.size(), Chars(boxName), kFSCatInfoNone, nullptr, &box, nullptr,
                                       &dirID),
              noErr);
    FSCatalogInfo boxInfo{};
    ASSERT_EQ(FSGetCatalogInfo(&box, kFSCatInfoNodeID | kFSCatInfoNodeFlags | kFSCatInfoValence, &boxInfo, nullptr,
                               nullptr, nullptr),
              noErr);
    EXPECT_EQ(boxInfo.nodeID, dirID);
    EXPECT_TRUE(boxInfo.nodeFlags & kFSNodeIsDirectoryMask);
    EXPECT_EQ(boxInfo.valence, 0u);
    ASSERT_EQ(FSMoveObject(&file, &box, nullptr), noErr);
    ASSERT_EQ(FSGetCatalogInfo(&box, kFSCatInfoValence, &boxInfo, nullptr, nullptr, nullptr), noErr);
    EXPECT_EQ(boxInfo.valence, 1u);  // the companion moved along, and is not counted
    EXPECT_TRUE(Exists(folder.Path("box/._made")));
    EXPECT_EQ(FSDeleteObject(&box), fBsyErr);

    SInt16 fork = 0;
    ASSERT_EQ(FSOpenFork(&file, 0, nullptr, fsRdPerm, &fork), noErr);
    EXPECT_EQ(FSDeleteObject(&file), fBsyErr);  // open files stay
    ASSERT_EQ(FSCloseFork(fork), noErr);
    ASSERT_EQ(FSDeleteObject(&file), noErr);
    EXPECT_EQ(FSDeleteObject(&file), fnfErr);
    // Only a leftover companion remains: the folder counts as empty.
    WriteFile(folder.Path("box/._gone"), "orphan");
    EXPECT_EQ(FSDeleteObject(&box), noErr);
    EXPECT_FALSE(Exists(folder.Path("box")));
}

TEST(FilesCatalog, ExchangeSwapsContentsUnderTheNames)
{
    TemporaryFolder folder;
    WriteFile(folder.Path("old"), "old contents");
    WriteFile(folder.Path("new"), "new contents");
    FSRef older = RefOf(folder.Path("old")), newer = RefOf(folder.Path("new"));
    SetFinderInfo(newer, TypeAndCreator("TEXT", "ttxt", 0));
    ASSERT_EQ(FSExchangeObjects(&older, &newer), noErr);
    EXPECT_EQ(ReadFile(folder.Path("old")), "new contents");
    EXPECT_EQ(GetFinderInfo(RefOf(folder.Path("old"))).fileType, FourCC("TEXT"));
    EXPECT_FALSE(Exists(folder.Path("._new")));
    HFSUniStr255 name;
    ASSERT_EQ(FSGetCatalogInfo(&newer, kFSCatInfoNone, nullptr, &name, nullptr, nullptr), noErr);
    EXPECT_EQ(NameOf(name), u"old");  // the reference went with its contents
    FSRef container = RefOf(folder.Path());
    EXPECT_EQ(FSExchangeObjects(&older, &container), notAFileErr);
}

TEST(FilesCompanions, FollowTheirItemAndReadAsAppleDouble)
{
    TemporaryFolder folder;
    FSRef parent = RefOf(folder.Path());
    FSRef file = CreateFile(parent, "doc");
    FSRef box = CreateFolder(parent, "box");
    SetFinderInfo(file, TypeAndCreator("TEXT", "ttxt", kIsStationery));
    ASSERT_TRUE(Exists(folder.Path("._doc")));

    std::u16string name = u"renamed";
    ASSERT_EQ(FSRenameUnicode(&file, name.size(), Chars(name), 0, nullptr), noErr);
    EXPECT_FALSE(Exists(folder.Path("._doc")));
    ASSERT_TRUE(Exists(folder.Path("._renamed")));
    ASSERT_EQ(FSMoveObject(&file, &box, nullptr), noErr);
    ASSERT_TRUE(Exists(folder.Path("box/._renamed")));
    EXPECT_EQ(GetFinderInfo(file).finderFlags, kIsStationery);

    // Another program writes a resource fork entry too; both must read back elsewhere.
    SInt16 fork = 0;
    ASSERT_EQ(FSCreateFork(&file, 13, Chars(u"RESOURCE_FORK")), noErr);
    ASSERT_EQ(FSOpenFork(&file, 13, Chars(u"RESOURCE_FORK"), fsRdWrPerm, &fork), noErr);
    ASSERT_EQ(FSWriteFork(fork, fsFromStart, 0, 5, "hello", nullptr), noErr);
    ASSERT_EQ(FSCloseFork(fork), noErr);

    std::string companion = folder.Path("box/._renamed");
    EXPECT_EQ(Output("file -b '" + companion + "'"), "AppleDouble encoded Macintosh file\n");
    std::string script = folder.Path("reader.py");
    WriteFile(script, kIndependentReader);
    EXPECT_EQ(Output("python3 '" + script + "' '" + companion + "'"), "00051607 00020000\nTEXTttxt 32 5\n");

    // Clearing the Finder information keeps the companion for the resource fork; removing
    // the fork too leaves nothing to keep.
    SetFinderInfo(file, FinderInfo{});
    EXPECT_TRUE(Exists(companion));
    ASSERT_EQ(FSDeleteFork(&file, 13, Chars(u"RESOURCE_FORK")), noErr);
    EXPECT_FALSE(Exists(companion));

    SetFinderInfo(file, TypeAndCreator("TEXT", "ttxt", 0));
    ASSERT_EQ(FSDeleteObject(&file), noErr);
    EXPECT_FALSE(Exists(companion));
}

TEST(FilesCompanions, MalformedOnesAreIgnoredAndKeptAside)
{
    TemporaryFolder folder;
    FSRef file = CreateFile(RefOf(folder.Path()), "item");
    WriteFile(folder.Path("._item"), std::string("\x00\x05\x16\x07\x00\x02\x00\x00", 8) + std::string(16, '\0') +
                                         std::string("\x00\x01\x00\x00\x00\x09\x00\x00\x00\x40\x00\x00\x00\x20", 14));
    EXPECT_EQ(GetFinderInfo(file).fileType, 0u);  // the entry points past the end

    SetFinderInfo(file, TypeAndCreator("TEXT", "ttxt", 0));
    EXPECT_EQ(GetFinderInfo(file).fileType, FourCC("TEXT"));
    EXPECT_EQ(ReadFile(folder.Path("._item.corrupt")).size(), 38u);

    WriteFile(folder.Path("._item"), "not AppleDouble at all");
    SetFinderInfo(file, TypeAndCreator("TEXT", "ttxt", 0));
    EXPECT_EQ(ReadFile(folder.Path("._item.corrupt-2")), "not AppleDouble at all");
}

}  // namespace
