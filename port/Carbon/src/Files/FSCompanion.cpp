// Companion files on disk.
#include "FSCompanion.h"

#include "FSNames.h"
#include <PortSupport/UniqueDescriptor.h>

#include <Carbon/FSErrno.h>
#include <Carbon/MacErrors.h>

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <unordered_map>

namespace carbon {

namespace {

// Larger than any resource fork the system writes (they stop at 16 MiB); a bigger file is
// not one of ours, and is kept rather than read into memory.
constexpr off_t kLargestCompanion = 32 << 20;
constexpr int kMostCorruptCopies = 100;

bool ReadAll(int inFile, std::vector<UInt8>& outBytes)
{
    struct stat status;
    if (::fstat(inFile, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > kLargestCompanion)
        return false;
    outBytes.resize(std::size_t(status.st_size));
    std::size_t filled = 0;
    while (filled < outBytes.size()) {
        ssize_t count = ::read(inFile, outBytes.data() + filled, outBytes.size() - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        filled += std::size_t(count);
    }
    return true;
}

bool WriteAll(int inFile, std::span<const UInt8> inBytes)
{
    while (!inBytes.empty()) {
        ssize_t count = ::write(inFile, inBytes.data(), inBytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        inBytes = inBytes.subspan(std::size_t(count));
    }
    return true;
}

bool SaysNothing(const AppleDouble& inContents)
{
    for (const AppleDouble::Entry& entry : inContents.entries) {
        bool zero = std::all_of(entry.bytes.begin(), entry.bytes.end(), [](UInt8 inByte) { return inByte == 0; });
        if (entry.id != AppleDouble::kFinderInfo || !zero)
            return false;
    }
    return true;
}

OSErr SetAside(int inFolder, const std::string& inName)
{
    for (int copy = 1; copy <= kMostCorruptCopies; ++copy) {
        std::string aside = inName + ".corrupt" + (copy == 1 ? std::string() : "-" + std::to_string(copy));
        if (::renameat2(inFolder, inName.c_str(), inFolder, aside.c_str(), RENAME_NOREPLACE) == 0 || errno == ENOENT)
            return noErr;
        if (errno != EEXIST)
            return LastStatus();
    }
    return dupFNErr;
}

// A name that cannot be any item's companion clash: the '#' and random digits after the
// prefix make it one only of an item nobody would name so.
port::UniqueDescriptor CreateTemporary(int inFolder, std::string& outName)
{
    for (int attempt = 0; attempt < 16; ++attempt) {
        UInt64 random = 0;
        if (::getrandom(&random, sizeof random, 0) != sizeof random)
            random = UInt64(::getpid()) << 32 ^ UInt64(attempt);
        char name[32];
        std::snprintf(name, sizeof name, "._#%012llx", (unsigned long long)(random & 0xFFFFFFFFFFFFull));
        port::UniqueDescriptor file(::openat(inFolder, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (file || errno != EEXIST) {
            outName = name;
            return file;
        }
    }
    return port::UniqueDescriptor();
}

}  // namespace

namespace {

// Counted, since two iterators may list the same folder.
class FoldersWithoutCompanions {
public:
    void Note(const ItemKey& inFolder)
    {
        std::lock_guard guard(mLock);
        ++mFolders[inFolder];
    }
    void Forget(const ItemKey& inFolder)
    {
        std::lock_guard guard(mLock);
        if (auto found = mFolders.find(inFolder); found != mFolders.end() && --found->second == 0)
            mFolders.erase(found);
    }
    void ForgetAll()
    {
        std::lock_guard guard(mLock);
        mFolders.clear();
    }
    bool Contains(const ItemKey& inFolder)
    {
        std::lock_guard guard(mLock);
        return mFolders.contains(inFolder);
    }

private:
    std::mutex mLock;
    std::unordered_map<ItemKey, int, ItemKeyHash> mFolders;
};

FoldersWithoutCompanions& Uncompanioned()
{
    static FoldersWithoutCompanions sFolders;
    return sFolders;
}

}  // namespace

void NoteFolderWithoutCompanions(const ItemKey& inFolder) { Uncompanioned().Note(inFolder); }
void ForgetFolderWithoutCompanions(const ItemKey& inFolder) { Uncompanioned().Forget(inFolder); }

void RemoveCompanionIn(int inFolder, const ItemKey& inFolderKey, std::string_view inItemName)
{
    if (!Uncompanioned().Contains(inFolderKey))
        RemoveCompanion(inFolder, inItemName);
}

std::string CompanionName(std::string_view inItemName)
{
    return std::string(kCompanionPrefix) + std::string(inItemName);
}

Companion ReadCompanion(int inFolder, std::string_view inItemName)
{
    std::string name = CompanionName(inItemName);
    if (name.size() > NAME_MAX)
        return {};
    port::UniqueDescriptor file(::openat(inFolder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file)
        return {errno == ENOENT ? Companion::State::Absent : Companion::State::Malformed, {}};
    std::vector<UInt8> bytes;
    std::optional<AppleDouble> contents = ReadAll(file.Get(), bytes) ? ParseAppleDouble(bytes) : std::nullopt;
    if (!contents)
        return {Companion::State::Malformed, {}};
    return {Companion::State::Valid, std::move(*contents)};
}

OSErr WriteCompanion(int inFolder, std::string_view inItemName, const AppleDouble& inContents)
{
    std::string name = CompanionName(inItemName);
    if (name.size() > NAME_MAX)
        return SaysNothing(inContents) ? OSErr(noErr) : OSErr(errFSNameTooLong);
    if (ReadCompanion(inFolder, inItemName).state == Companion::State::Malformed)
        if (OSErr status = SetAside(inFolder, name); status != noErr)
            return status;
    if (SaysNothing(inContents)) {
        RemoveCompanion(inFolder, inItemName);
        return noErr;
    }
    std::string temporary;
    port::UniqueDescriptor file = CreateTemporary(inFolder, temporary);
    if (!file)
        return LastStatus();
    std::vector<UInt8> bytes = SerializeAppleDouble(inContents);
    bool written = WriteAll(file.Get(), bytes) && ::fsync(file.Get()) == 0;
    OSErr status = written ? noErr : LastStatus();
    file.Reset();
    if (status == noErr && ::renameat(inFolder, temporary.c_str(), inFolder, name.c_str()) != 0)
        status = LastStatus();
    if (status != noErr)
        ::unlinkat(inFolder, temporary.c_str(), 0);
    else
        Uncompanioned().ForgetAll();
    return status;
}

namespace {

std::atomic<UInt64> sMovesBegun{0}, sMovesEnded{0};

}  // namespace

CompanionMove::Count CompanionMove::SoFar()
{
    UInt64 ended = sMovesEnded.load();
    return {sMovesBegun.load(), ended};
}

CompanionMove::CompanionMove(int inFromFolder, std::string_view inFromName, int inToFolder, std::string_view inToName)
    : mFromFolder(inFromFolder), mToFolder(inToFolder), mFrom(CompanionName(inFromName)), mTo(CompanionName(inToName))
{
    ++sMovesBegun;
    // An item already at the destination makes the move fail; its companion is not touched.
    struct stat taken;
    if (::fstatat(inToFolder, std::string(inToName).c_str(), &taken, AT_SYMLINK_NOFOLLOW) == 0)
        return;
    mLinked = ::linkat(inFromFolder, mFrom.c_str(), inToFolder, mTo.c_str(), 0) == 0;
    if (mLinked)
        Uncompanioned().ForgetAll();
}

void CompanionMove::Moved()
{
    mMoved = true;
    if (mLinked) {
        ::unlinkat(mFromFolder, mFrom.c_str(), 0);
        return;
    }
    // Not linked: the item has no companion, or a stray one was in the way.
    if (::renameat(mFromFolder, mFrom.c_str(), mToFolder, mTo.c_str()) != 0)
        ::unlinkat(mToFolder, mTo.c_str(), 0);
    else
        Uncompanioned().ForgetAll();
}

CompanionMove::~CompanionMove()
{
    if (mLinked && !mMoved)
        ::unlinkat(mToFolder, mTo.c_str(), 0);
    ++sMovesEnded;
}

void SwapCompanions(int inFolder1, std::string_view inName1, int inFolder2, std::string_view inName2)
{
    std::string first = CompanionName(inName1), second = CompanionName(inName2);
    Uncompanioned().ForgetAll();  // either folder may gain one below
    if (::renameat2(inFolder1, first.c_str(), inFolder2, second.c_str(), RENAME_EXCHANGE) == 0)
        return;
    // Only one of them has a companion (or neither): it moves over.
    if (::renameat(inFolder1, first.c_str(), inFolder2, second.c_str()) != 0)
        ::renameat(inFolder2, second.c_str(), inFolder1, first.c_str());
}

void RemoveCompanion(int inFolder, std::string_view inItemName)
{
    std::string name = CompanionName(inItemName);
    ::unlinkat(inFolder, name.c_str(), 0);
}

}  // namespace carbon
