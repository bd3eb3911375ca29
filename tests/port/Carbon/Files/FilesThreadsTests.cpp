// The File Manager from several threads at once: forks read and written while files are
// renamed, a fork closed under a read in another thread, one file's resource fork written
// through openings in several threads, and items looked up while they and their folder are
// renamed and moved. Run under ThreadSanitizer too (tsan preset).
#include "FilesTesting.h"

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace spindeck::test;

const std::u16string kResource = u"RESOURCE_FORK";
constexpr int kWorkers = 4;

OSErr Rename(const FSRef& inRef, const std::string& inName)
{
    std::u16string name = Units(inName);
    return FSRenameUnicode(&inRef, name.size(), Chars(name), kTextEncodingUnknown, nullptr);
}

// Writes a block that names its round through a fresh opening of a fork, reads it back
// through another, and answers what went wrong, if anything.
std::string Round(const FSRef& inFile, const std::u16string& inFork, int inRound)
{
    std::string block(512, char('a' + inRound % 26));
    SInt16 writer = 0, reader = 0;
    if (OSErr status = FSOpenFork(&inFile, inFork.size(), Chars(inFork), fsRdWrPerm, &writer); status != noErr)
        return "open for writing: " + std::to_string(status);
    OSErr wrote = FSWriteFork(writer, fsFromStart, inRound * 512, block.size(), block.data(), nullptr);
    OSErr flushed = FSFlushFork(writer);
    if (FSOpenFork(&inFile, inFork.size(), Chars(inFork), fsRdPerm, &reader) != noErr)
        return "open for reading";
    std::string back(block.size(), '\0');
    OSErr read = FSReadFork(reader, fsFromStart, inRound * 512, back.size(), back.data(), nullptr);
    if (FSCloseFork(reader) != noErr || FSCloseFork(writer) != noErr)
        return "close";
    if (wrote != noErr || flushed != noErr || read != noErr || back != block)
        return "round " + std::to_string(inRound) + " read back other bytes";
    return {};
}

// The data forks are those of the files being renamed: an opening follows its file by
// identity. A companion is found by its file's name, so a rename in one thread can hide it
// from an opening in another for a moment; the resource forks are those of other files.
TEST(FilesThreads, ForksOfDifferentFilesWhileFilesAreRenamed)
{
    TemporaryFolder folder;
    FSRef parent = RefOf(folder.Path());
    std::vector<FSRef> files, resourceFiles;
    for (int i = 0; i < kWorkers; ++i) {
        files.push_back(CreateFile(parent, "file" + std::to_string(i)));
        resourceFiles.push_back(CreateFile(parent, "resources" + std::to_string(i)));
        ASSERT_EQ(FSCreateFork(&resourceFiles.back(), kResource.size(), Chars(kResource)), noErr);
    }
    constexpr int kRounds = 40;
    std::atomic<bool> done{false};
    std::vector<std::string> failures(kWorkers);
    int renameFailures = 0;
    std::thread renamer([&] {
        for (int turn = 0; !done; ++turn)
            for (int i = 0; i < kWorkers; ++i)
                renameFailures += Rename(files[i], "file" + std::to_string(i) + (turn % 2 ? "-a" : "-b")) != noErr;
    });
    std::vector<std::thread> workers;
    for (int i = 0; i < kWorkers; ++i)
        workers.emplace_back([&, i] {
            for (int round = 0; round < kRounds && failures[i].empty(); ++round) {
                failures[i] = Round(files[i], u"", round);
                if (failures[i].empty())
                    failures[i] = Round(resourceFiles[i], kResource, round);
            }
        });
    for (std::thread& worker : workers)
        worker.join();
    done = true;
    renamer.join();
    EXPECT_EQ(renameFailures, 0);
    for (int i = 0; i < kWorkers; ++i) {
        EXPECT_EQ(failures[i], "") << "file " << i;
        FSCatalogInfo info{}, resourceInfo{};
        ASSERT_EQ(FSGetCatalogInfo(&files[i], kFSCatInfoDataSizes, &info, nullptr, nullptr, nullptr), noErr);
        ASSERT_EQ(FSGetCatalogInfo(&resourceFiles[i], kFSCatInfoRsrcSizes, &resourceInfo, nullptr, nullptr, nullptr),
                  noErr);
        EXPECT_EQ(info.dataLogicalSize, UInt64(kRounds * 512));
        EXPECT_EQ(resourceInfo.rsrcLogicalSize, UInt64(kRounds * 512));
    }
}

// A close in one thread must not close the descriptor under a read in another, where the
// number could be reused for another file and the read would answer that file's bytes.
TEST(FilesThreads, AForkClosedDuringReadsInAnotherThread)
{
    TemporaryFolder folder;
    WriteFile(folder.Path("ones"), std::string(1 << 16, '1'));
    WriteFile(folder.Path("twos"), std::string(1 << 16, '2'));
    FSRef ones = RefOf(folder.Path("ones"));
    for (int attempt = 0; attempt < 20; ++attempt) {
        SInt16 fork = 0;
        ASSERT_EQ(FSOpenFork(&ones, 0, nullptr, fsRdPerm, &fork), noErr);
        std::atomic<int> reads{0};
        std::string wrong;
        std::thread reader([&] {
            std::string buffer(1 << 16, '\0');
            ByteCount actual = 0;
            while (FSReadFork(fork, fsFromStart, 0, buffer.size(), buffer.data(), &actual) == noErr) {
                if (buffer.find_first_not_of('1') != std::string::npos)
                    wrong = "read bytes of another file";
                ++reads;
            }
        });
        while (reads == 0)
            std::this_thread::yield();
        ASSERT_EQ(FSCloseFork(fork), noErr);
        // Likely to be given the closed descriptor's number; opened outside the File Manager,
        // so that the fork's own number is not handed out again while the reader runs.
        std::ifstream other(folder.Path("twos"));
        reader.join();
        EXPECT_EQ(wrong, "");
    }
}

// Every opening of one file's resource fork shares its bytes, even when they are opened,
// written and closed in different threads at once, so no thread's bytes are lost.
TEST(FilesThreads, OneResourceForkOpenedInSeveralThreads)
{
    TemporaryFolder folder;
    FSRef file = CreateFile(RefOf(folder.Path()), "shared");
    ASSERT_EQ(FSCreateFork(&file, kResource.size(), Chars(kResource)), noErr);
    std::vector<std::thread> writers;
    for (int i = 0; i < kWorkers; ++i)
        writers.emplace_back([&, i] {
            for (int round = 0; round < 20; ++round) {
                SInt16 fork = 0;
                if (FSOpenFork(&file, kResource.size(), Chars(kResource), fsRdWrPerm, &fork) != noErr)
                    continue;
                char mark = char('A' + i);
                FSWriteFork(fork, fsFromStart, i * 20 + round, 1, &mark, nullptr);
                FSCloseFork(fork);
            }
        });
    for (std::thread& writer : writers)
        writer.join();
    SInt16 fork = 0;
    ASSERT_EQ(FSOpenFork(&file, kResource.size(), Chars(kResource), fsRdPerm, &fork), noErr);
    std::string bytes(kWorkers * 20, '\0');
    ByteCount actual = 0;
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 0, bytes.size(), bytes.data(), &actual), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
    std::string expected;
    for (int i = 0; i < kWorkers; ++i)
        expected += std::string(20, char('A' + i));
    EXPECT_EQ(bytes, expected);
}

// What a look-up of one item found wrong, if anything. The item and its folder are being
// renamed and moved meanwhile, so a look-up by name may miss it (fnfErr); whatever is found
// must be this item, in this folder, under one of its own names.
std::string LookUp(const FSRef& inItem, const FSRef& inFolder, const std::string& inPrefix, int& ioFound)
{
    FSCatalogInfo info{};
    HFSUniStr255 name{};
    FSRef parent{}, byName{};
    OSErr status = FSGetCatalogInfo(&inItem, kFSCatInfoParentDirID, &info, &name, nullptr, &parent);
    if (status == fnfErr)
        return {};
    if (status != noErr)
        return "catalog information: " + std::to_string(status);
    if (FSCompareFSRefs(&parent, &inFolder) != noErr)
        return "another parent";
    std::u16string found = NameOf(name);
    if (found.rfind(Units(inPrefix), 0) != 0)
        return "another name";
    status = FSMakeFSRefUnicode(&inFolder, found.size(), Chars(found), kTextEncodingUnknown, &byName);
    if (status == noErr && FSCompareFSRefs(&byName, &inItem) != noErr)
        return "its name led to another item";
    if (status != noErr && status != fnfErr)
        return "look-up by name: " + std::to_string(status);
    ++ioFound;
    return {};
}

// References follow their items through renames and moves made while other threads look
// them up, and the table ends up knowing each item where it is.
TEST(FilesThreads, ItemsLookedUpWhileTheyAndTheirFolderAreRenamedAndMoved)
{
    TemporaryFolder folder;
    FSRef sides[2] = {CreateFolder(RefOf(folder.Path()), "left"), CreateFolder(RefOf(folder.Path()), "right")};
    FSRef box = CreateFolder(sides[0], "box");
    std::vector<FSRef> items;
    for (int i = 0; i < kWorkers; ++i)
        items.push_back(CreateFile(box, "item" + std::to_string(i)));
    std::atomic<bool> done{false};
    int changeFailures = 0, turns = 0;
    std::thread changer([&] {
        for (; !done || turns < 2; ++turns) {
            changeFailures += FSMoveObject(&box, &sides[(turns + 1) % 2], nullptr) != noErr;
            changeFailures += Rename(box, "box" + std::to_string(turns % 3)) != noErr;
            std::string suffix = "-" + std::to_string(turns % 3);
            for (int i = 0; i < kWorkers; ++i)
                changeFailures += Rename(items[i], "item" + std::to_string(i) + suffix) != noErr;
        }
    });
    std::vector<std::string> failures(kWorkers);
    std::vector<int> found(kWorkers);
    std::vector<std::thread> lookers;
    for (int i = 0; i < kWorkers; ++i)
        lookers.emplace_back([&, i] {
            for (int round = 0; round < 200 && failures[i].empty(); ++round)
                failures[i] = LookUp(items[i], box, "item" + std::to_string(i), found[i]);
        });
    for (std::thread& looker : lookers)
        looker.join();
    done = true;
    changer.join();
    EXPECT_EQ(changeFailures, 0);
    std::string last = "-" + std::to_string((turns - 1) % 3);
    std::string boxPath = folder.Path(std::string(turns % 2 ? "right" : "left") + "/box" + last.substr(1));
    for (int i = 0; i < kWorkers; ++i) {
        EXPECT_EQ(failures[i], "") << "item " << i;
        EXPECT_GT(found[i], 0) << "item " << i << " was never found";
        UInt8 path[1024];
        ASSERT_EQ(FSRefMakePath(&items[i], path, sizeof path), noErr);
        EXPECT_EQ(reinterpret_cast<const char*>(path), boxPath + "/item" + std::to_string(i) + last);
    }
}

}  // namespace
