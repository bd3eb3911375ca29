// The forks this process has open, by their reference numbers: small positive numbers
// handed out lowest first. A data fork holds its file open; a resource fork holds its bytes,
// shared by every opening of the same file's resource fork and written back to the
// companion when flushed or closed.
#pragma once

#include "FSItemTable.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace carbon {

struct ResourceForkBytes {
    std::vector<UInt8> bytes;
    bool dirty = false;
};

struct OpenFork {
    FSRef ref;
    ItemKey key;
    bool isResource = false;
    bool canWrite = false;
    SInt8 permissions = 0;
    SInt64 mark = 0;
    OwnedFd data;
    std::shared_ptr<ResourceForkBytes> resource;
};

class ForkTable {
public:
    static ForkTable& Shared();

    // Held by every fork call for its whole length, so that no call sees another half done.
    std::unique_lock<std::recursive_mutex> Lock() { return std::unique_lock(mLock); }

    // 0 when every number is taken.
    SInt16 Add(OpenFork&& inFork);
    OpenFork* Find(SInt16 inRefNum);
    void Remove(SInt16 inRefNum);
    // The next open fork after inRefNum, 0 when there is none.
    SInt16 Next(SInt16 inRefNum) const;
    std::shared_ptr<ResourceForkBytes> OpenResource(const ItemKey& inItem) const;
    UInt16 Flags(const ItemKey& inItem) const;

private:
    std::recursive_mutex mLock;
    std::map<SInt16, OpenFork> mForks;
};

// kFSNodeDataOpenMask, kFSNodeResOpenMask and kFSNodeForkOpenMask as they apply to an item.
UInt16 OpenForkFlags(const ItemKey& inItem);
// The length of a resource fork that is open, which may differ from the companion's until
// the fork is flushed.
std::optional<UInt64> OpenResourceForkLength(const ItemKey& inItem);

}  // namespace carbon
