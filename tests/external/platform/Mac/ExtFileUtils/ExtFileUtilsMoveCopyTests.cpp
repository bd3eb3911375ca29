// Moving with renaming, unique names, exchanging and copying files.
#include <ExtFileUtils/ExtFileUtilsMove.h>
#include "ExtFileUtilsTesting.h"

#include <tuple>

using namespace spindeck::test;

using ExtFileUtilsMoveCopy = ExtFileUtilsTest;

TEST_F(ExtFileUtilsMoveCopy, NamesTakenInTheDestination)
{
    FSRef dest = CreateFolder(mTop, "dest");
    FSRef item = CreateFile(mTop, "item");
    WriteFile(mFolder.Path("item"), "mine");
    CreateFile(dest, "item");  // the old name is taken where it goes
    CreateFile(dest, "taken");
    CreateFile(mTop, "7");
    CreateFile(dest, "8");
    long seed = 7;
    HFSUniStr255 name;
    ASSERT_EQ(GenerateUniqueHFSUniStr(&seed, &mTop, &dest, &name), noErr);
    EXPECT_EQ(NameOf(name), u"9") << "in neither folder";
    EXPECT_EQ(seed, 10);
    EXPECT_EQ(GenerateUniqueHFSUniStr(&seed, &mTop, nullptr, nullptr), paramErr);

    std::u16string taken = u"taken", fresh = u"fresh";
    EXPECT_EQ(FSMoveRenameObjectUnicode(&item, &dest, taken.size(), Chars(taken), kTextEncodingUnknown, nullptr),
              dupFNErr);
    EXPECT_EQ(ReadFile(mFolder.Path("item")), "mine") << "nothing moved";
    FSRef moved{};
    ASSERT_EQ(FSMoveRenameObjectUnicode(&item, &dest, fresh.size(), Chars(fresh), kTextEncodingUnknown, &moved), noErr);
    EXPECT_EQ(ReadFile(mFolder.Path("dest/fresh")), "mine");
    EXPECT_EQ(ReadFile(mFolder.Path("dest/item")), "");
    EXPECT_EQ(FSCompareFSRefs(&moved, &item), noErr);
    EXPECT_EQ(CountItems(dest), 4u) << "no temporary name left behind";

    // In one request the name must be free; the item's own folder keeps it where it is.
    EXPECT_EQ(FSMoveRename(&item, &dest, taken.size(), Chars(taken), kTextEncodingUnknown, nullptr), dupFNErr);
    std::u16string back = u"back";
    ASSERT_EQ(FSMoveRename(&item, &mTop, back.size(), Chars(back), kTextEncodingUnknown, nullptr), noErr);
    EXPECT_EQ(ReadFile(mFolder.Path("back")), "mine");
}

TEST_F(ExtFileUtilsMoveCopy, ExchangeSwapsWhatTheNamesHold)
{
    FSRef other = CreateFolder(mTop, "other");
    FSRef a = CreateFile(mTop, "a"), b = CreateFile(other, "b");
    WriteFile(mFolder.Path("a"), "first");
    WriteFile(mFolder.Path("other/b"), "second");
    FSRef newSource{}, newDest{};
    ASSERT_EQ(FSExchangeObjectsCompat(&a, &b, &newSource, &newDest), noErr);
    FSRef atSource = RefOf(mFolder.Path("a"));
    EXPECT_EQ(FSCompareFSRefs(&newSource, &atSource), noErr);
    FSRef atDest = RefOf(mFolder.Path("other/b"));
    EXPECT_EQ(FSCompareFSRefs(&newDest, &atDest), noErr);

    // The same by moves and renames, for volumes that cannot swap names in one step: the
    // contents are back where they started only if both swaps happened.
    ASSERT_EQ(ExtFileUtils::ExchangeByRenames(&a, &b), noErr);
    EXPECT_EQ(ReadFile(mFolder.Path("a")), "first");
    EXPECT_EQ(ReadFile(mFolder.Path("other/b")), "second");
    EXPECT_EQ(CountItems(other), 1u) << "no temporary name left behind";
    EXPECT_EQ(ExtFileUtils::ExchangeByRenames(&a, &other), notAFileErr);
}

TEST_F(ExtFileUtilsMoveCopy, CopyFileTakesBothForksAndTheFinderInformation)
{
    FSRef dest = CreateFolder(mTop, "dest");
    FSRef source = CreateFile(mTop, "source");
    std::string data(200000, 'd');
    data[123456] = 'x';
    WriteFork(source, u"", data);
    WriteFork(source, kResourceFork, "resources");
    FinderInfo info{FourCC("TEXT"), FourCC("ttxt"), kIsStationery, {0, 0}, 0};
    FSSetFinderInfo(&source, &info, nullptr);
    SetLocked(source, true);

    FSRef copy{};
    ASSERT_EQ(FSCopyFile(&source, &dest, 0, nullptr, kTextEncodingUnknown, &copy), noErr);
    EXPECT_EQ(ReadFile(mFolder.Path("dest/source")), data);
    EXPECT_EQ(ReadFork(copy, kResourceFork), "resources");
    FinderInfo copied = FinderInfoOf(copy);
    EXPECT_EQ(std::tuple(copied.fileType, copied.finderFlags), std::tuple(FourCC("TEXT"), kIsStationery));
    EXPECT_EQ(FSCheckLock(&copy), fLckdErr);
    EXPECT_EQ(FSCopyFile(&source, &dest, 0, nullptr, kTextEncodingUnknown, nullptr), dupFNErr);

    std::u16string plainName = u"plain";
    FSRef plain = CreateFile(mTop, "data only");
    WriteFile(mFolder.Path("data only"), "just data");
    ASSERT_EQ(FSCopyFile(&plain, &dest, plainName.size(), Chars(plainName), kTextEncodingUnknown, &copy), noErr);
    EXPECT_EQ(ReadFile(mFolder.Path("dest/plain")), "just data");
    EXPECT_EQ(ReadFork(copy, kResourceFork), "<no fork>");
    EXPECT_EQ(FSCopyFile(&dest, &mTop, 0, nullptr, kTextEncodingUnknown, nullptr), notAFileErr);
}
