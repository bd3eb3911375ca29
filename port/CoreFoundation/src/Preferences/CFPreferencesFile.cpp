// Domain files on disk: reading with a damaged file kept aside, and atomic replacement.
#include "CFPreferencesFile.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFRuntime.h>
#include <PortSupport/UniqueDescriptor.h>
#include <PortSupport/UniqueHandle.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <string_view>
#include <utility>

namespace cf::prefs {

namespace {

std::string FolderOf(const std::string& inPath) { return inPath.substr(0, inPath.rfind('/')); }
std::string LeafOf(const std::string& inPath) { return inPath.substr(inPath.rfind('/') + 1); }

std::string Reason(const char* inWhat, int inError) { return std::string(inWhat) + ": " + std::strerror(inError); }

// Like mkdir -p; the folders are private to their owner, as the files are.
bool MakeFolders(const std::string& inFolder)
{
    for (std::size_t slash = inFolder.find('/', 1);; slash = inFolder.find('/', slash + 1)) {
        std::string part = inFolder.substr(0, slash);
        if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST)
            return false;
        if (slash == std::string::npos)
            return true;
    }
}

// Reads straight into the string, sized for the whole file up front: growing it by doubling
// would touch about three times the file's size in fresh memory, which for a large list costs
// more than the parse. The file may still grow while it is read.
bool ReadAll(int inDescriptor, off_t inExpectedSize, std::string& outBytes)
{
    constexpr std::size_t kChunk = 65536;
    std::size_t used = 0;
    outBytes.resize(std::size_t(std::max<off_t>(inExpectedSize, 0)) + kChunk);
    for (;;) {
        if (outBytes.size() - used < kChunk)
            outBytes.resize(outBytes.size() * 2);
        ssize_t count = read(inDescriptor, outBytes.data() + used, outBytes.size() - used);
        if (count == 0) {
            outBytes.resize(used);
            return true;
        }
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            used += std::size_t(count);
    }
}

bool WriteAll(int inDescriptor, std::string_view inBytes)
{
    while (!inBytes.empty()) {
        ssize_t count = write(inDescriptor, inBytes.data(), inBytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            inBytes.remove_prefix(std::size_t(count));
    }
    return true;
}

plist::OwnedValue EmptyDictionary()
{
    return plist::OwnedValue(plist::MakeDictionary(nullptr, {}, {}, kCFPropertyListImmutable));
}

// The dictionary the bytes hold, or nullptr and why not. Every form a property list can
// take is accepted, not only the XML that this store writes.
plist::OwnedValue ParseDictionary(std::string_view inBytes, std::string& outReason)
{
    plist::Owned<CFDataRef> data(CFDataCreateWithBytesNoCopy(nullptr, reinterpret_cast<const UInt8*>(inBytes.data()),
                                                             CFIndex(inBytes.size()), kCFAllocatorNull));
    CFStringRef error = nullptr;
    plist::OwnedValue value(
        CFPropertyListCreateWithData(nullptr, data.Get(), kCFPropertyListImmutable, nullptr, &error));
    plist::Owned<CFStringRef> errorOwner(error);
    if (!value) {
        outReason = error ? UTF8(error) : "it is not a property list";
        return value;
    }
    if (CFGetTypeID(value.Get()) != CFDictionaryGetTypeID()) {
        outReason = "it holds a property list that is not a dictionary";
        return plist::OwnedValue();
    }
    return value;
}

std::string UTCTimestamp()
{
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    char text[32] = "unknown-time";
    if (gmtime_r(&now, &parts))
        std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &parts);
    return text;
}

// Renames inPath to inTarget unless inTarget exists: a file kept aside earlier must never
// be overwritten by a later one.
int RenameWithoutReplacing(const std::string& inPath, const std::string& inTarget)
{
    if (renameat2(AT_FDCWD, inPath.c_str(), AT_FDCWD, inTarget.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system without no-replace renames: a hard link fails the same way on a taken name.
    if (link(inPath.c_str(), inTarget.c_str()) != 0)
        return errno;
    unlink(inPath.c_str());
    return 0;
}

// The name the file was kept under, or empty with the reason in outError.
std::string MoveAside(const std::string& inPath, std::string& outError)
{
    std::string base = inPath + ".corrupt-" + UTCTimestamp();
    for (int number = 1; number < 10000; ++number) {
        std::string target = number == 1 ? base : base + "-" + std::to_string(number);
        int error = RenameWithoutReplacing(inPath, target);
        if (error == 0)
            return target;
        if (error != EEXIST) {
            outError = std::strerror(error);
            return "";
        }
    }
    outError = "too many damaged copies are kept already";
    return "";
}

void Report(const std::string& inPath, const std::string& inReason, const std::string& inConsequence)
{
    std::fprintf(stderr, "Preferences: \"%s\" could not be read (%s). %s\n", inPath.c_str(), inReason.c_str(),
                 inConsequence.c_str());
}

// A file that was read but is not a usable dictionary.
DomainFile Unusable(const std::string& inPath, const FileIdentity& inIdentity, const std::string& inReason,
                    bool inWritable)
{
    if (!inWritable) {
        Report(inPath, inReason, "The settings in it are not used.");
        return {inIdentity, EmptyDictionary(), false};
    }
    std::string error;
    std::string aside = MoveAside(inPath, error);
    if (aside.empty()) {
        Report(inPath, inReason,
               "It could not be moved aside (" + error +
                   "), so it is left as it is and changed settings are not saved until it is repaired or removed.");
        return {inIdentity, EmptyDictionary(), false};
    }
    Report(inPath, inReason,
           "It was kept as \"" + aside + "\"; the settings it held are not used and new settings start from empty.");
    return {FileIdentity(), EmptyDictionary(), true};
}

}  // namespace

FileIdentity FileIdentity::Of(const struct stat& inStatus)
{
    return {true, inStatus.st_dev, inStatus.st_ino, inStatus.st_size, inStatus.st_mtim, inStatus.st_ctim};
}

FileIdentity FileIdentity::Of(const std::string& inPath)
{
    struct stat status {};
    return stat(inPath.c_str(), &status) == 0 ? Of(status) : FileIdentity();
}

bool FileIdentity::operator==(const FileIdentity& inOther) const
{
    if (!exists || !inOther.exists)
        return exists == inOther.exists;
    return device == inOther.device && inode == inOther.inode && size == inOther.size &&
           modified.tv_sec == inOther.modified.tv_sec && modified.tv_nsec == inOther.modified.tv_nsec &&
           changed.tv_sec == inOther.changed.tv_sec && changed.tv_nsec == inOther.changed.tv_nsec;
}

DomainFile ReadDomainFile(const std::string& inPath, bool inWritable)
{
    // Another process may replace the file while it is read; the new one is read then.
    for (int attempt = 0; attempt < 3; ++attempt) {
        port::UniqueDescriptor file(open(inPath.c_str(), O_RDONLY | O_CLOEXEC));
        if (!file && errno == ENOENT)
            return {FileIdentity(), EmptyDictionary(), true};
        struct stat status {};
        std::string bytes;
        if (!file || fstat(file.Get(), &status) != 0 || !ReadAll(file.Get(), status.st_size, bytes)) {
            int error = errno;
            Report(inPath, Reason("reading failed", error), "The settings in it are not used.");
            return {FileIdentity::Of(inPath), EmptyDictionary(), false};
        }
        FileIdentity identity = FileIdentity::Of(status);
        std::string reason;
        if (plist::OwnedValue values = ParseDictionary(bytes, reason))
            return {identity, std::move(values), true};
        if (!(FileIdentity::Of(inPath) == identity))
            continue;
        return Unusable(inPath, identity, reason, inWritable);
    }
    return {FileIdentity::Of(inPath), EmptyDictionary(), false};
}

bool ReplaceDomainFile(const std::string& inPath, std::string_view inBytes, FileIdentity& outIdentity,
                       std::string& outError)
{
    std::string folder = FolderOf(inPath);
    if (!MakeFolders(folder)) {
        outError = Reason("creating the folder failed", errno);
        return false;
    }
    port::UniqueDescriptor folderDescriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::string temporary = folder + "/." + LeafOf(inPath) + ".XXXXXX";
    port::UniqueDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (!file) {
        outError = Reason("creating a temporary file failed", errno);
        return false;
    }
    if (fchmod(file.Get(), 0600) != 0 || !WriteAll(file.Get(), inBytes) || fsync(file.Get()) != 0 ||
        rename(temporary.c_str(), inPath.c_str()) != 0) {
        outError = Reason("writing the file failed", errno);
        unlink(temporary.c_str());
        return false;
    }
    // The rename is durable only once the folder is flushed too.
    if (folderDescriptor)
        fsync(folderDescriptor.Get());
    // Its status after the rename (which changes it), so that the file is known as ours.
    struct stat status {};
    outIdentity = fstat(file.Get(), &status) == 0 ? FileIdentity::Of(status) : FileIdentity::Of(inPath);
    return true;
}

void RemoveAbandonedTemporaries(const std::string& inPath)
{
    std::string folder = FolderOf(inPath);
    std::string prefix = "." + LeafOf(inPath) + ".";
    port::UniqueHandle<DIR, closedir> listing(opendir(folder.c_str()));
    if (!listing)
        return;
    while (dirent* entry = readdir(listing.get())) {
        std::string_view name = entry->d_name;
        if (name.size() == prefix.size() + 6 && name.starts_with(prefix))  // mkostemp's six characters
            unlinkat(dirfd(listing.get()), entry->d_name, 0);
    }
}

FolderLock::FolderLock(const std::string& inFilePath)
{
    std::string folder = FolderOf(inFilePath);
    if (!MakeFolders(folder))
        return;
    mFolder.Reset(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!mFolder)
        return;
    int result;
    do
        result = flock(mFolder.Get(), LOCK_EX);
    while (result != 0 && errno == EINTR);
    mLocked = result == 0;
}

}  // namespace cf::prefs
