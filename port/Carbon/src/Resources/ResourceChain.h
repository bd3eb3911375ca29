// The process's chain of open resource files and the resource handles loaded from them.
// Every member takes the chain's lock, so the calls may come from any thread.
#pragma once

#include "ResourceMap.h"

#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace carbon {

// What GetResInfo and its kin tell about a loaded resource.
struct ResourceFacts {
    ResType type = 0;
    ResID id = 0;
    UInt8 attributes = 0;
    UInt32 size = 0;
    std::vector<UInt8> name;
};

class ResourceChain {
public:
    enum class Depth { CurrentFile, WholeChain };

    static ResourceChain& Shared();

    OSErr Open(const FSRef& inRef, std::span<const UniChar> inForkName, ResFileRefNum& outRefNum);
    OSErr Close(ResFileRefNum inRefNum);
    OSErr Use(ResFileRefNum inRefNum);
    ResFileRefNum Current();

    ResourceCount Count(ResType inType, Depth inDepth);
    // Each answers the handle, or nullptr with the status in outStatus.
    Handle Get(ResType inType, ResID inID, Depth inDepth, OSErr& outStatus);
    Handle GetIndexed(ResType inType, ResourceIndex inIndex, OSErr& outStatus);
    Handle GetNamed(ResType inType, std::span<const UInt8> inName, Depth inDepth, OSErr& outStatus);

    // Nothing for a handle that is not a loaded resource.
    std::optional<ResourceFacts> Facts(Handle inResource);
    OSErr Release(Handle inResource);
    OSErr Detach(Handle inResource);

private:
    struct File {
        ResFileRefNum refNum = kResFileNotOpened;
        FSRef ref{};
        std::u16string forkName;
        ResourceMap map;
        std::unordered_map<const ResourceEntry*, Handle> loaded;
    };
    struct Owner {
        File* file = nullptr;
        ResType type = 0;
        const ResourceEntry* entry = nullptr;
    };

    File* FindOpen(const FSRef& inRef, std::span<const UniChar> inForkName);
    std::optional<std::size_t> IndexOf(ResFileRefNum inRefNum) const;
    // The files to search, newest first: the current one, and with the whole chain every one
    // opened before it.
    std::vector<File*> SearchPath(Depth inDepth) const;
    Handle Load(File& ioFile, ResType inType, const ResourceEntry& inEntry, OSErr& outStatus);
    void Forget(Handle inResource, const Owner& inOwner);

    std::mutex mLock;
    std::vector<std::unique_ptr<File>> mFiles;  // oldest first
    ResFileRefNum mCurrent = kResFileNotOpened;
    std::unordered_map<Handle, Owner> mOwners;
};

}  // namespace carbon
