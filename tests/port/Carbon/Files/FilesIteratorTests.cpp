// Catalog iterators: listing a folder, deleting while iterating, and a tree deeper than the
// port keeps descriptors for, deleted level by level the way a recursive delete does.
#include "FilesTesting.h"

#include <algorithm>
#include <set>

namespace {

using namespace spindeck::test;

std::set<std::u16string> List(const FSRef& inFolder, ItemCount inBatch)
{
    FSIterator iterator = nullptr;
    EXPECT_EQ(FSOpenIterator(&inFolder, kFSIterateFlat, &iterator), noErr);
    std::set<std::u16string> names;
    std::vector<HFSUniStr255> batch(inBatch);
    std::vector<FSCatalogInfo> infos(inBatch);
    ItemCount count = 0;
    OSErr status;
    while ((status = FSGetCatalogInfoBulk(iterator, inBatch, &count, nullptr, kFSCatInfoNodeFlags, infos.data(),
                                          nullptr, nullptr, batch.data())) == noErr) {
        EXPECT_GT(count, 0u);
        for (ItemCount index = 0; index < count; ++index)
            EXPECT_TRUE(names.insert(NameOf(batch[index])).second);
    }
    EXPECT_EQ(status, errFSNoMoreItems);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(FSCloseIterator(iterator), noErr);
    return names;
}

// Deletes everything below inFolder one item at a time, with one iterator per level.
OSErr DeleteContents(const FSRef& inFolder, int& ioDeepest, int inDepth = 0)
{
    ioDeepest = std::max(ioDeepest, inDepth);
    FSIterator iterator = nullptr;
    if (OSErr status = FSOpenIterator(&inFolder, kFSIterateDelete, &iterator); status != noErr)
        return status;
    OSErr status = noErr;
    ItemCount count = 0;
    FSCatalogInfo info;
    FSRef item;
    while (status == noErr && (status = FSGetCatalogInfoBulk(iterator, 1, &count, nullptr, kFSCatInfoNodeFlags, &info,
                                                             &item, nullptr, nullptr)) == noErr) {
        if (info.nodeFlags & kFSNodeIsDirectoryMask)
            status = DeleteContents(item, ioDeepest, inDepth + 1);
        if (status == noErr && (info.nodeFlags & kFSNodeLockedMask)) {
            info.nodeFlags &= ~kFSNodeLockedMask;
            FSSetCatalogInfo(&item, kFSCatInfoNodeFlags, &info);
        }
        if (status == noErr)
            status = FSDeleteObject(&item);
    }
    FSCloseIterator(iterator);
    return status == errFSNoMoreItems ? noErr : status;
}

TEST(FilesIterators, ListAFolderWithoutItsCompanions)
{
    TemporaryFolder folder;
    for (int index = 0; index < 300; ++index)
        WriteFile(folder.Path("item" + std::to_string(index)), "");
    WriteFile(folder.Path("._item0"), "companion");
    FSRef container = RefOf(folder.Path());
    for (ItemCount batch : {ItemCount(1), ItemCount(7), ItemCount(1000)}) {
        std::set<std::u16string> names = List(container, batch);
        EXPECT_EQ(names.size(), 300u);
        EXPECT_TRUE(names.contains(u"item299"));
        EXPECT_FALSE(names.contains(u"._item0"));
    }

    FSIterator iterator = nullptr;
    EXPECT_EQ(FSOpenIterator(&container, kFSIterateSubtree, &iterator), errFSIteratorNotSupported);
    EXPECT_EQ(FSOpenIterator(&container, 8, &iterator), errFSBadIteratorFlags);
    FSRef file = RefOf(folder.Path("item1"));
    EXPECT_EQ(FSOpenIterator(&file, kFSIterateFlat, &iterator), errFSNotAFolder);
    ASSERT_EQ(FSOpenIterator(&container, kFSIterateFlat, &iterator), noErr);
    ItemCount count = 0;
    EXPECT_EQ(FSGetCatalogInfoBulk(iterator, 0, &count, nullptr, 0, nullptr, nullptr, nullptr, nullptr),
              errFSBadItemCount);
    EXPECT_EQ(FSCloseIterator(iterator), noErr);
    EXPECT_EQ(FSCloseIterator(iterator), errFSIteratorNotFound);
}

TEST(FilesIterators, DeleteEveryItemWhileIterating)
{
    TemporaryFolder folder;
    FSRef container = RefOf(folder.Path());
    for (int index = 0; index < 500; ++index)
        WriteFile(folder.Path("f" + std::to_string(index)), "");
    FSRef sub = CreateFolder(container, "sub");
    FSRef locked = CreateFile(sub, "locked");
    SetLocked(locked, true);
    WriteFile(folder.Path("sub/plain"), "");
    WriteFile(folder.Path("._f7"), "companion");

    int deepest = 0;
    ASSERT_EQ(DeleteContents(container, deepest), noErr);
    EXPECT_EQ(List(container, 10).size(), 0u);
    EXPECT_TRUE(Exists(folder.Path()));
    EXPECT_FALSE(Exists(folder.Path("._f7")));
    EXPECT_EQ(deepest, 1);

    // An item the caller keeps is returned once, not again and again.
    WriteFile(folder.Path("kept"), "");
    FSIterator iterator = nullptr;
    ASSERT_EQ(FSOpenIterator(&container, kFSIterateDelete, &iterator), noErr);
    ItemCount count = 0;
    int returned = 0;
    while (FSGetCatalogInfoBulk(iterator, 1, &count, nullptr, 0, nullptr, nullptr, nullptr, nullptr) == noErr &&
           returned < 10)
        returned += int(count);
    EXPECT_EQ(returned, 1);
    EXPECT_EQ(FSCloseIterator(iterator), noErr);
}

// A listing longer than a delete iterator keeps in memory is read in parts, with or without a
// companion among its names.
TEST(FilesIterators, DeleteAFolderWithALongListing)
{
    TemporaryFolder folder(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    const std::string longName(200, 'x');  // 6,000 of these list in well over a megabyte
    for (const char* name : {"plain", "paired"}) {
        ::mkdir(folder.Path(name).c_str(), 0755);
        for (int index = 0; index < 6000; ++index)
            WriteFile(folder.Path(name) + "/" + longName + std::to_string(index), "");
    }
    WriteFile(folder.Path("paired/._" + longName + "5999"), "companion");
    for (const char* name : {"plain", "paired"}) {
        FSRef container = RefOf(folder.Path(name));
        int deepest = 0;
        ASSERT_EQ(DeleteContents(container, deepest), noErr) << name;
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path(name))) << name << ": items and companions are all gone";
    }
}

// Deleting through an iterator skips companions only where the listing showed none; one
// this process writes after the iterator opened still goes with its item.
TEST(FilesIterators, DeletingItemsTakesTheirCompanionsAlong)
{
    TemporaryFolder folder;
    FSRef container = RefOf(folder.Path());
    FSRef first = CreateFile(container, "first"), second = CreateFile(container, "second");
    FSIterator iterator = nullptr;
    ASSERT_EQ(FSOpenIterator(&container, kFSIterateDelete, &iterator), noErr);
    ItemCount count = 0;
    FSRef item;
    ASSERT_EQ(FSGetCatalogInfoBulk(iterator, 1, &count, nullptr, kFSCatInfoNone, nullptr, &item, nullptr, nullptr),
              noErr);
    bool firstWent = FSCompareFSRefs(&item, &first) == noErr;
    ASSERT_EQ(FSDeleteObject(&item), noErr);
    FSRef later = firstWent ? second : first;
    std::string laterName = firstWent ? "second" : "first";
    FSCatalogInfo info{};
    reinterpret_cast<FileInfo*>(info.finderInfo)->fileType = FourCC("TEXT");
    ASSERT_EQ(FSSetCatalogInfo(&later, kFSCatInfoFinderInfo, &info), noErr);
    ASSERT_TRUE(Exists(folder.Path("._" + laterName)));
    while (FSGetCatalogInfoBulk(iterator, 1, &count, nullptr, kFSCatInfoNone, nullptr, &item, nullptr, nullptr) ==
           noErr)
        ASSERT_EQ(FSDeleteObject(&item), noErr);
    EXPECT_EQ(FSCloseIterator(iterator), noErr);
    EXPECT_FALSE(Exists(folder.Path("._" + laterName)));
    EXPECT_FALSE(Exists(folder.Path(laterName)));
}

// An item a delete iterator returns is found by name, and what was read for it stands only
// for a deletion that follows at once. A change made by another call in between, or by
// another program meanwhile, is seen. (Renames through libc here stand for another program:
// the File Manager cannot tell them apart.)
TEST(FilesIterators, WhatADeleteIteratorReadIsCheckedAgainAfterAnythingElse)
{
    TemporaryFolder folder;
    FSRef container = RefOf(folder.Path());
    for (const char* name : {"a", "b", "c", "d"})
        WriteFile(folder.Path(name), name);
    FSIterator iterator = nullptr;
    ASSERT_EQ(FSOpenIterator(&container, kFSIterateDelete, &iterator), noErr);
    auto next = [&](std::string& outName) {
        ItemCount count = 0;
        FSRef item{};
        HFSUniStr255 name;
        EXPECT_EQ(FSGetCatalogInfoBulk(iterator, 1, &count, nullptr, kFSCatInfoNone, nullptr, &item, nullptr, &name),
                  noErr);
        std::u16string units = NameOf(name);
        outName.assign(units.begin(), units.end());
        return item;
    };
    std::string name;
    FSRef locked = next(name);
    SetLocked(locked, true);
    EXPECT_EQ(FSDeleteObject(&locked), fLckdErr);
    EXPECT_TRUE(Exists(folder.Path(name)));

    FSRef renamed = next(name);
    std::u16string newName = u"renamed";
    ASSERT_EQ(FSRenameUnicode(&renamed, newName.size(), Chars(newName), kTextEncodingUnknown, nullptr), noErr);
    EXPECT_EQ(FSDeleteObject(&renamed), noErr);
    EXPECT_FALSE(Exists(folder.Path("renamed")));

    FSRef movedAway = next(name);
    ASSERT_EQ(::rename(folder.Path(name).c_str(), folder.Path("elsewhere").c_str()), 0);
    EXPECT_EQ(FSDeleteObject(&movedAway), fnfErr);
    EXPECT_TRUE(Exists(folder.Path("elsewhere")));

    FSRef replaced = next(name);
    ::usleep(50000);
    ASSERT_EQ(::rename(folder.Path(name).c_str(), folder.Path("original").c_str()), 0);
    WriteFile(folder.Path(name), "a newcomer under the same name");
    EXPECT_EQ(FSDeleteObject(&replaced), fnfErr);
    EXPECT_EQ(ReadFile(folder.Path(name)), "a newcomer under the same name");
    EXPECT_EQ(FSCloseIterator(iterator), noErr);
    SetLocked(locked, false);
}

TEST(FilesIterators, DeleteATwoThousandLevelTree)
{
    constexpr int kDepth = 2000;
    // In memory where there is a tmpfs: on a disk, freeing the inodes alone takes seconds.
    TemporaryFolder folder(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    int level = ::open(folder.Path().c_str(), O_RDONLY | O_DIRECTORY);
    for (int depth = 0; depth < kDepth && level >= 0; ++depth) {
        ASSERT_EQ(::mkdirat(level, "d", 0755), 0);
        int next = ::openat(level, "d", O_RDONLY | O_DIRECTORY);
        ::close(level);
        level = next;
    }
    ::close(level);

    FSRef top = RefOf(folder.Path("d"));
    int deepest = 0;
    ASSERT_EQ(DeleteContents(top, deepest), noErr);
    EXPECT_EQ(deepest, kDepth - 1);
    EXPECT_EQ(List(top, 10).size(), 0u);
    EXPECT_EQ(FSDeleteObject(&top), noErr);
    EXPECT_FALSE(Exists(folder.Path("d")));
}

}  // namespace
