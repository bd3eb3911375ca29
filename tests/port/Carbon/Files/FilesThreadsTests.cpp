// The File Manager from several threads at once: forks read and written while files are
// renamed, a fork closed under a read in another thread, one file's resource fork written
// through openings in several threads, items looked up while they and their folder are
// renamed and moved, items made, renamed and deleted by several threads in shared and own
// folders, and a resource fork looked at while its file is renamed. Run under
// ThreadSanitizer too (tsan preset).
#include "FilesTesting.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <set>
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

// One worker's items: made, renamed and looked up, every third one deleted again.
struct Worker {
    FSRef shared, own;
    std::string prefix;
    std::vector<std::pair<FSRef, std::string>> kept;  // the item and its last name, in own or shared
    std::vector<bool> keptInOwn;
    std::vector<FSRef> deleted;
    std::string failure;

    void Run(int inRounds)
    {
        for (int round = 0; round < inRounds && failure.empty(); ++round)
            failure = Step(round);
    }

    std::string Step(int inRound)
    {
        bool inOwn = inRound % 2;
        std::string name = prefix + std::to_string(inRound), renamed = name + "-renamed";
        std::u16string units = Units(name);
        FSRef item{}, found{};
        if (FSCreateFileUnicode(inOwn ? &own : &shared, units.size(), Chars(units), kFSCatInfoNone, nullptr, &item,
                                nullptr) != noErr)
            return "create " + name;
        if (Rename(item, renamed) != noErr)
            return "rename " + name;
        std::u16string byName = Units(renamed);
        if (FSMakeFSRefUnicode(inOwn ? &own : &shared, byName.size(), Chars(byName), kTextEncodingUnknown, &found) !=
                noErr ||
            FSCompareFSRefs(&found, &item) != noErr)
            return "look up " + renamed;
        if (inRound % 3 == 0) {
            if (FSDeleteObject(&item) != noErr)
                return "delete " + renamed;
            deleted.push_back(item);
        } else {
            kept.emplace_back(item, renamed);
            keptInOwn.push_back(inOwn);
        }
        return {};
    }
};

std::set<std::string> Listing(const std::string& inFolder)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(inFolder))
        names.insert(entry.path().filename().string());
    return names;
}

// Several threads make, rename, look up and delete items in one shared folder and in one
// of their own each, while another thread renames their own folders. At the end every
// reference leads to the path its item has, every deleted one answers fnfErr, and the
// folders hold exactly the items kept: none lost, none left over.
TEST(FilesThreads, ItemsMadeRenamedAndDeletedInSharedAndOwnFolders)
{
    TemporaryFolder folder;
    FSRef top = RefOf(folder.Path());
    FSRef shared = CreateFolder(top, "shared");
    std::vector<Worker> workers(kWorkers);
    for (int i = 0; i < kWorkers; ++i) {
        workers[i].shared = shared;
        workers[i].own = CreateFolder(top, "own" + std::to_string(i));
        workers[i].prefix = "w" + std::to_string(i) + "-";
    }
    std::atomic<bool> done{false};
    int folderRenameFailures = 0, turns = 0;
    std::thread renamer([&] {
        for (; !done || turns < 1; ++turns)
            for (int i = 0; i < kWorkers; ++i) {
                std::string name = "own" + std::to_string(i) + "-" + std::to_string(turns % 2);
                folderRenameFailures += Rename(workers[i].own, name) != noErr;
            }
    });
    std::vector<std::thread> threads;
    for (Worker& worker : workers)
        threads.emplace_back([&worker] { worker.Run(60); });
    for (std::thread& thread : threads)
        thread.join();
    done = true;
    renamer.join();
    EXPECT_EQ(folderRenameFailures, 0);
    std::set<std::string> sharedNames;
    for (int i = 0; i < kWorkers; ++i) {
        const Worker& worker = workers[i];
        EXPECT_EQ(worker.failure, "") << "worker " << i;
        std::string ownPath = folder.Path("own" + std::to_string(i) + "-" + std::to_string((turns - 1) % 2));
        std::set<std::string> ownNames;
        for (std::size_t k = 0; k < worker.kept.size(); ++k) {
            const auto& [ref, name] = worker.kept[k];
            UInt8 path[1024];
            ASSERT_EQ(FSRefMakePath(&ref, path, sizeof path), noErr) << name;
            std::string expected = (worker.keptInOwn[k] ? ownPath : folder.Path("shared")) + "/" + name;
            EXPECT_EQ(reinterpret_cast<const char*>(path), expected);
            (worker.keptInOwn[k] ? ownNames : sharedNames).insert(name);
        }
        for (const FSRef& gone : worker.deleted)
            EXPECT_EQ(FSGetCatalogInfo(&gone, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), fnfErr);
        EXPECT_EQ(Listing(ownPath), ownNames) << "worker " << i;
    }
    EXPECT_EQ(Listing(folder.Path("shared")), sharedNames);
}

// The companion that holds a resource fork is moved with its file, and a thread looking at
// the fork while another renames the file must never find the file without it.
TEST(FilesThreads, AResourceForkIsNeverHiddenByARename)
{
    TemporaryFolder folder;
    FSRef file = CreateFile(RefOf(folder.Path()), "forked");
    const std::string bytes(300, 'r');
    SInt16 fork = 0;
    ASSERT_EQ(FSCreateFork(&file, kResource.size(), Chars(kResource)), noErr);
    ASSERT_EQ(FSOpenFork(&file, kResource.size(), Chars(kResource), fsRdWrPerm, &fork), noErr);
    ASSERT_EQ(FSWriteFork(fork, fsFromStart, 0, bytes.size(), bytes.data(), nullptr), noErr);
    ASSERT_EQ(FSCloseFork(fork), noErr);
    std::atomic<bool> done{false};
    std::atomic<int> looking{0};
    int renameFailures = 0;
    std::thread renamer([&] {
        // Renaming starts once every looker has seen the fork, so that the looks overlap the
        // renames even where threads are slow to start.
        while (looking < kWorkers - 1)
            std::this_thread::yield();
        for (int turn = 0; turn < 400; ++turn)
            renameFailures += Rename(file, "forked-" + std::to_string(turn % 2)) != noErr;
        done = true;
    });
    std::vector<int> hidden(kWorkers - 1), seen(kWorkers - 1);
    std::vector<std::thread> lookers;
    for (int i = 0; i < kWorkers - 1; ++i)
        lookers.emplace_back([&, i] {
            while (!done) {
                FSCatalogInfo info{};
                if (FSGetCatalogInfo(&file, kFSCatInfoRsrcSizes, &info, nullptr, nullptr, nullptr) != noErr)
                    continue;
                if (++seen[i] == 1)
                    ++looking;
                hidden[i] += info.rsrcLogicalSize != bytes.size();
            }
        });
    for (std::thread& looker : lookers)
        looker.join();
    renamer.join();
    EXPECT_EQ(renameFailures, 0);
    for (int i = 0; i < kWorkers - 1; ++i) {
        EXPECT_EQ(hidden[i], 0) << "looker " << i << " of " << seen[i] << " looks";
    }
    EXPECT_TRUE(Exists(folder.Path("._forked-1")));
    EXPECT_FALSE(Exists(folder.Path("._forked-0")));
}

}  // namespace
