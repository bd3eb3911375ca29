// The chain of open resource files: opening (the fork is read whole and stays open),
// searching from the current file down, and the handles lent out for resources.
#include "ResourceChain.h"

#include <Carbon/MacErrors.h>

#include <algorithm>
#include <new>

namespace carbon {

namespace {

// Larger than any resource file in use; a fork beyond it is refused rather than read whole.
constexpr SInt64 kLargestFile = SInt64(256) << 20;

// Reads the whole fork and leaves it open: its reference number names the resource file.
OSErr ReadFork(const FSRef& inRef, std::span<const UniChar> inForkName, SInt16& outForkRefNum,
               std::vector<UInt8>& outBytes)
{
    SInt16 fork = 0;
    OSErr status = FSOpenFork(&inRef, inForkName.size(), inForkName.data(), fsRdPerm, &fork);
    // A file without a resource fork holds no resources, just like one with an empty fork.
    if (status == errFSForkNotFound)
        return eofErr;
    if (status != noErr)
        return status;
    SInt64 size = 0;
    status = FSGetForkSize(fork, &size);
    if (status == noErr && size > kLargestFile)
        status = mapReadErr;
    ByteCount count = 0;
    try {
        if (status == noErr)
            outBytes.resize(std::size_t(size));
        if (status == noErr && size > 0)
            status = FSReadFork(fork, fsFromStart, 0, ByteCount(size), outBytes.data(), &count);
    } catch (const std::bad_alloc&) {
        status = memFullErr;
    }
    // Another process may have shortened the fork meanwhile: what was read is judged as it is.
    if (status == eofErr) {
        outBytes.resize(count);
        status = noErr;
    }
    if (status != noErr) {
        FSCloseFork(fork);
        return status;
    }
    outForkRefNum = fork;
    return noErr;
}

bool SameName(std::span<const UInt8> inLeft, std::span<const UInt8> inRight)
{
    auto folded = [](UInt8 inByte) { return inByte >= 'A' && inByte <= 'Z' ? UInt8(inByte + ('a' - 'A')) : inByte; };
    return std::equal(inLeft.begin(), inLeft.end(), inRight.begin(), inRight.end(),
                      [&](UInt8 inA, UInt8 inB) { return folded(inA) == folded(inB); });
}

}  // namespace

ResourceChain& ResourceChain::Shared()
{
    // Never destroyed: handles may still be released while the process exits.
    static ResourceChain* sChain = new ResourceChain;
    return *sChain;
}

OSErr ResourceChain::Open(const FSRef& inRef, std::span<const UniChar> inForkName, ResFileRefNum& outRefNum)
{
    std::lock_guard guard(mLock);
    if (File* open = FindOpen(inRef, inForkName)) {
        outRefNum = open->refNum;
        return noErr;
    }
    try {
        auto file = std::make_unique<File>();
        std::vector<UInt8> bytes;
        OSErr status = ReadFork(inRef, inForkName, file->refNum, bytes);
        if (status != noErr)
            return status;
        status = ResourceMap::Read(std::move(bytes), file->map);
        if (status != noErr) {
            FSCloseFork(file->refNum);
            return status;
        }
        file->ref = inRef;
        file->forkName.assign(inForkName.begin(), inForkName.end());
        outRefNum = mCurrent = file->refNum;
        mFiles.push_back(std::move(file));
        return noErr;
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

OSErr ResourceChain::Close(ResFileRefNum inRefNum)
{
    std::lock_guard guard(mLock);
    std::optional<std::size_t> index = IndexOf(inRefNum);
    if (!index)
        return resFNotFound;
    File& file = *mFiles[*index];
    for (const auto& [entry, handle] : file.loaded) {
        mOwners.erase(handle);
        DisposeHandle(handle);
    }
    FSCloseFork(file.refNum);
    mFiles.erase(mFiles.begin() + std::ptrdiff_t(*index));
    if (mCurrent == inRefNum)
        mCurrent = mFiles.empty() ? ResFileRefNum(kResFileNotOpened) : mFiles.back()->refNum;
    return noErr;
}

OSErr ResourceChain::Use(ResFileRefNum inRefNum)
{
    std::lock_guard guard(mLock);
    if (!IndexOf(inRefNum))
        return resFNotFound;
    mCurrent = inRefNum;
    return noErr;
}

ResFileRefNum ResourceChain::Current()
{
    std::lock_guard guard(mLock);
    return mCurrent;
}

ResourceCount ResourceChain::Count(ResType inType, Depth inDepth)
{
    std::lock_guard guard(mLock);
    std::size_t count = 0;
    for (File* file : SearchPath(inDepth))
        if (const ResourceTypeEntry* type = file->map.FindType(inType))
            count += type->resources.size();
    return ResourceCount(std::min<std::size_t>(count, 0x7FFF));
}

Handle ResourceChain::Get(ResType inType, ResID inID, Depth inDepth, OSErr& outStatus)
{
    std::lock_guard guard(mLock);
    for (File* file : SearchPath(inDepth)) {
        const ResourceTypeEntry* type = file->map.FindType(inType);
        if (type == nullptr)
            continue;
        for (const ResourceEntry& entry : type->resources)
            if (entry.id == inID)
                return Load(*file, inType, entry, outStatus);
    }
    outStatus = resNotFound;
    return nullptr;
}

Handle ResourceChain::GetIndexed(ResType inType, ResourceIndex inIndex, OSErr& outStatus)
{
    std::lock_guard guard(mLock);
    for (File* file : SearchPath(Depth::CurrentFile)) {
        const ResourceTypeEntry* type = file->map.FindType(inType);
        if (type != nullptr && inIndex >= 1 && std::size_t(inIndex) <= type->resources.size())
            return Load(*file, inType, type->resources[std::size_t(inIndex) - 1], outStatus);
    }
    outStatus = resNotFound;
    return nullptr;
}

Handle ResourceChain::GetNamed(ResType inType, std::span<const UInt8> inName, Depth inDepth, OSErr& outStatus)
{
    std::lock_guard guard(mLock);
    for (File* file : SearchPath(inDepth)) {
        const ResourceTypeEntry* type = file->map.FindType(inType);
        if (type == nullptr)
            continue;
        for (const ResourceEntry& entry : type->resources)
            if (entry.nameOffset != ResourceEntry::kNoName && SameName(file->map.Name(entry), inName))
                return Load(*file, inType, entry, outStatus);
    }
    outStatus = resNotFound;
    return nullptr;
}

std::optional<ResourceFacts> ResourceChain::Facts(Handle inResource)
{
    std::lock_guard guard(mLock);
    auto found = mOwners.find(inResource);
    if (found == mOwners.end())
        return std::nullopt;
    const Owner& owner = found->second;
    std::span<const UInt8> name = owner.file->map.Name(*owner.entry);
    return ResourceFacts{owner.type, owner.entry->id, owner.entry->attributes, owner.entry->dataLength,
                         std::vector<UInt8>(name.begin(), name.end())};
}

OSErr ResourceChain::Release(Handle inResource)
{
    std::lock_guard guard(mLock);
    auto found = mOwners.find(inResource);
    if (found == mOwners.end())
        return resNotFound;
    Forget(inResource, found->second);
    DisposeHandle(inResource);
    return noErr;
}

OSErr ResourceChain::Detach(Handle inResource)
{
    std::lock_guard guard(mLock);
    auto found = mOwners.find(inResource);
    if (found == mOwners.end())
        return resNotFound;
    Forget(inResource, found->second);
    HSetState(inResource, SInt8(HGetState(inResource) & ~kHandleIsResourceMask));
    return noErr;
}

ResourceChain::File* ResourceChain::FindOpen(const FSRef& inRef, std::span<const UniChar> inForkName)
{
    for (const auto& file : mFiles)
        if (std::equal(inForkName.begin(), inForkName.end(), file->forkName.begin(), file->forkName.end()) &&
            FSCompareFSRefs(&file->ref, &inRef) == noErr)
            return file.get();
    return nullptr;
}

std::optional<std::size_t> ResourceChain::IndexOf(ResFileRefNum inRefNum) const
{
    auto found = std::find_if(mFiles.begin(), mFiles.end(), [&](const auto& file) { return file->refNum == inRefNum; });
    if (found == mFiles.end())
        return std::nullopt;
    return std::size_t(found - mFiles.begin());
}

std::vector<ResourceChain::File*> ResourceChain::SearchPath(Depth inDepth) const
{
    std::vector<File*> path;
    std::optional<std::size_t> current = IndexOf(mCurrent);
    if (!current)
        return path;
    std::size_t last = inDepth == Depth::CurrentFile ? *current : 0;
    for (std::size_t i = *current + 1; i-- > last;)
        path.push_back(mFiles[i].get());
    return path;
}

Handle ResourceChain::Load(File& ioFile, ResType inType, const ResourceEntry& inEntry, OSErr& outStatus)
{
    outStatus = noErr;
    if (auto loaded = ioFile.loaded.find(&inEntry); loaded != ioFile.loaded.end())
        return loaded->second;
    std::span<const UInt8> data = ioFile.map.Data(inEntry);
    Handle handle = NewHandle(Size(data.size()));
    if (handle == nullptr) {
        outStatus = memFullErr;
        return nullptr;
    }
    std::copy(data.begin(), data.end(), *handle);
    HSetState(handle, SInt8(HGetState(handle) | kHandleIsResourceMask));
    ioFile.loaded.emplace(&inEntry, handle);
    mOwners.emplace(handle, Owner{&ioFile, inType, &inEntry});
    return handle;
}

void ResourceChain::Forget(Handle inResource, const Owner& inOwner)
{
    inOwner.file->loaded.erase(inOwner.entry);
    mOwners.erase(inResource);
}

}  // namespace carbon
