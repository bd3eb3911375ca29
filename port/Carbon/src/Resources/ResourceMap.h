// The map of a resource file, read from the file's bytes: its types, the resources of each,
// and where each resource's name and data lie. Every offset and length in the file has been
// checked against the bytes once the map is read, so the accessors never reach outside them.
#pragma once

#include <Carbon/Resources.h>

#include <cstddef>
#include <span>
#include <vector>

namespace carbon {

struct ResourceEntry {
    static constexpr UInt32 kNoName = 0xFFFFFFFF;

    ResID id = 0;
    UInt8 attributes = 0;
    UInt32 nameOffset = kNoName;  // of the Pascal name, from the start of the file
    UInt32 dataOffset = 0;        // of the data itself (past its length word), from the start of the file
    UInt32 dataLength = 0;
};

struct ResourceTypeEntry {
    ResType type = 0;
    std::vector<ResourceEntry> resources;
};

class ResourceMap {
public:
    // noErr; eofErr for an empty file (one that holds no resources at all); mapReadErr for
    // bytes that are not a sound resource file.
    static OSErr Read(std::vector<UInt8> inBytes, ResourceMap& outMap);

    std::span<const ResourceTypeEntry> Types() const { return mTypes; }
    // The first entry of that type, or nullptr. A damaged file may list a type twice; the
    // later lists are then never searched, as a linear search through the map would not.
    const ResourceTypeEntry* FindType(ResType inType) const;

    std::span<const UInt8> Data(const ResourceEntry& inEntry) const;
    // The name's characters, without its length byte; empty when the resource has none.
    std::span<const UInt8> Name(const ResourceEntry& inEntry) const;

private:
    std::vector<UInt8> mBytes;
    std::vector<ResourceTypeEntry> mTypes;
};

}  // namespace carbon
