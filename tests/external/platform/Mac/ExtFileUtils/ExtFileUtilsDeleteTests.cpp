// Deleting folder trees, walking them, and listing a folder.
#include "ExtFileUtilsTesting.h"

#include <pthread.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

using namespace spindeck::test;

using ExtFileUtilsDelete = ExtFileUtilsTest;

namespace {

// A level's frame holds the folder's reference and its iterator; the sanitizer's guard zones
// make it several times larger.
constexpr std::size_t kStackPerLevel = kAddressSanitizer ? 1024 : 192;

// A chain of inLevels folders "d" inside each other, each also holding one file; made with
// the *at calls, as the chain's path is longer than the kernel accepts.
void MakeChain(const std::string& inTop, int inLevels)
{
    int folder = ::open(inTop.c_str(), O_RDONLY | O_DIRECTORY);
    for (int level = 0; level < inLevels && folder >= 0; ++level) {
        ::close(::openat(folder, "f", O_CREAT | O_WRONLY, 0644));
        ASSERT_EQ(::mkdirat(folder, "d", 0755), 0);
        int next = ::openat(folder, "d", O_RDONLY | O_DIRECTORY);
        ::close(folder);
        folder = next;
    }
    ::close(folder);
}

// Runs inWork on a thread whose stack is inStackBytes.
template <typename Work>
void RunOnStack(std::size_t inStackBytes, Work inWork)
{
    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, inStackBytes), 0);
    auto run = [](void* ioWork) -> void* {
        (*static_cast<Work*>(ioWork))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &inWork), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

// The names of a folder's items in the order an iterator returns them.
std::vector<std::string> ListingOrder(const FSRef& inFolder)
{
    std::vector<std::string> names;
    FSIterator iterator;
    EXPECT_EQ(FSOpenIterator(&inFolder, kFSIterateFlat, &iterator), noErr);
    ItemCount count = 0;
    HFSUniStr255 name;
    while (FSGetCatalogInfoBulk(iterator, 1, &count, nullptr, kFSCatInfoNone, nullptr, nullptr, nullptr, &name) ==
           noErr)
        names.emplace_back(name.unicode, name.unicode + name.length);
    FSCloseIterator(iterator);
    return names;
}

}  // namespace

// A chain thousands of folders deep must fit a small stack; 50 branches of 1,000 files each
// are deleted while their folders are being read. Making that many files on a disk-backed
// volume would take most of the test's time, so a memory-backed one is used where there is one.
TEST_F(ExtFileUtilsDelete, DeepAndWideTreesGoEntirelyOnASmallStack)
{
    constexpr int kLevels = 2000;
    TemporaryFolder folder(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    std::string make = "cd '" + folder.Path() + "' && mkdir -p tree/deep && for b in $(seq 50); do " +
                       "mkdir -p tree/$b/n/n/n/n/n && (cd tree/$b/n/n/n/n/n && seq 1000 | xargs touch) || exit 1; done";
    ASSERT_EQ(std::system(make.c_str()), 0);
    MakeChain(folder.Path("tree/deep"), kLevels);
    FSRef tree = RefOf(folder.Path("tree"));
    OSErr status = 1;
    // What the File Manager's own calls need at the bottom of the tree comes on top.
    RunOnStack((kLevels + 2) * kStackPerLevel + 64 * 1024, [&] { status = FSDeleteContainer(&tree); });
    EXPECT_EQ(status, noErr);
    EXPECT_FALSE(Exists(folder.Path("tree")));
}

// Also lists the folder first, in more than one of FSGetDirectoryItems' batches.
TEST_F(ExtFileUtilsDelete, StopsAtTheFirstItemThatCannotGo)
{
    FSRef tree = CreateFolder(mTop, "tree");
    for (int i = 0; i < 150; ++i)
        CreateFile(tree, std::to_string(i));
    EXPECT_EQ(CountItems(tree), 150u);
    std::vector<std::string> order = ListingOrder(tree);
    ASSERT_EQ(order.size(), 150u);
    // A file with an open fork is busy and refuses deletion, whoever asks.
    FSRef busy = RefOf(mFolder.Path("tree/" + order[4]));
    SInt16 fork = 0;
    ASSERT_EQ(FSOpenFork(&busy, 0, nullptr, fsRdPerm, &fork), noErr);
    EXPECT_EQ(FSDeleteContainer(&tree), fBsyErr);
    FSCloseFork(fork);
    for (std::size_t i = 0; i < order.size(); ++i)
        EXPECT_EQ(Exists(mFolder.Path("tree/" + order[i])), i >= 4) << order[i];
    EXPECT_TRUE(Exists(mFolder.Path("tree")));
}

TEST_F(ExtFileUtilsDelete, FilesEmptyFoldersAndLocks)
{
    FSRef file = CreateFile(mTop, "file");
    EXPECT_EQ(FSDeleteContainer(&file), dirNFErr);
    EXPECT_TRUE(Exists(mFolder.Path("file")));

    FSRef empty = CreateFolder(mTop, "empty");
    EXPECT_EQ(FSDeleteContainerContents(&empty), noErr);
    EXPECT_TRUE(Exists(mFolder.Path("empty")));

    FSRef tree = CreateFolder(mTop, "tree");
    SetLocked(CreateFile(tree, "locked"), true);
    SetLocked(CreateFolder(tree, "locked folder"), true);
    SetLocked(tree, true);
    EXPECT_EQ(FSDeleteContainer(&tree), noErr);
    EXPECT_FALSE(Exists(mFolder.Path("tree")));

    EXPECT_EQ(FSDeleteContainer(nullptr), paramErr);
}

TEST_F(ExtFileUtilsDelete, IterateContainerVisitsLevelsAndStops)
{
    FSRef a = CreateFolder(mTop, "a");
    FSRef b = CreateFolder(a, "b");
    CreateFile(b, "c");
    // Each visit is recorded as level, initial and "/" for a folder.
    struct Walk {
        std::size_t visitsWanted;
        std::string seen;
    };
    auto filter = [](Boolean, ItemCount inLevel, const FSCatalogInfo* inInfo, const FSRef*, const FSSpec*,
                     const HFSUniStr255* inName, void* ioWalk) -> Boolean {
        auto& walk = *static_cast<Walk*>(ioWalk);
        bool folder = inInfo->nodeFlags & kFSNodeIsDirectoryMask;
        walk.seen += std::to_string(inLevel) + char(inName->unicode[0]) + (folder ? "/" : " ");
        return --walk.visitsWanted == 0;
    };
    Walk all{9, ""}, twoLevels{9, ""}, stopped{1, ""};
    EXPECT_EQ(FSIterateContainer(&mTop, 0, kFSCatInfoNone, false, true, filter, &all), noErr);
    EXPECT_EQ(all.seen, "1a/2b/3c ");
    EXPECT_EQ(FSIterateContainer(&mTop, 2, kFSCatInfoNone, false, true, filter, &twoLevels), noErr);
    EXPECT_EQ(twoLevels.seen, "1a/2b/");
    EXPECT_EQ(FSIterateContainer(&mTop, 0, kFSCatInfoNone, false, true, filter, &stopped), noErr);
    EXPECT_EQ(stopped.seen, "1a/");
    EXPECT_EQ(FSIterateContainer(&mTop, 0, kFSCatInfoNone, false, false, nullptr, nullptr), paramErr);
}
