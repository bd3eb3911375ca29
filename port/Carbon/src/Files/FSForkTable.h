// The forks this process has open, by their reference numbers: small positive numbers
// handed out lowest first. A data fork holds its file open; a resource fork holds its bytes,
// shared by every opening of the same file's resource fork and written back to the
// companion when flushed or closed.
//
// Locking: the table's lock covers only its map and is never held while a disk is read or
// written. A call takes a shared hold on its fork, so a concurrent close cannot close the
// descriptor under a read or write that is under way (the last hold closes it). A resource
// fork's bytes are reachable only through their own lock.
#pragma once

#include "FSItemTable.h"
#include "Guarded.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace carbon {

struct ResourceForkBytes {
    std::vector<UInt8> bytes;
    // Counts changes; the fork needs writing back while it differs from the count stored.
    UInt64 changes = 0;
    UInt64 stored = 0;

    bool IsDirty() const { return changes != stored; }
};

struct ResourceFork {
    Guarded<ResourceForkBytes> contents;
    // Orders the write-backs of one companion, so that an older copy never lands after a
    // newer one. Held across that write; the other locks may be taken inside it, and it is
    // never taken while one of them is held.
    std::mutex storingLock;
};

// Set up completely before it is added to the table; after that only the mark changes.
struct OpenFork {
    FSRef ref;
    ItemKey key;
    bool isResource = false;
    bool canWrite = false;
    SInt8 permissions = 0;
    std::atomic<SInt64> mark{0};
    port::UniqueDescriptor data;
    std::shared_ptr<ResourceFork> resource;
};

using ForkHold = std::shared_ptr<OpenFork>;

class ForkTable {
public:
    static ForkTable& Shared();

    static constexpr SInt16 kTableFull = 0;
    static constexpr SInt16 kStaleResource = -1;

    // The new fork's number, or kTableFull. A resource fork of a file whose resource fork is
    // open already takes that opening's bytes instead of its own. kStaleResource when it
    // brings bytes read before a write-back that happened since (inStoresBefore is
    // ResourceStores() from before the read): they may be old, and the caller reads again.
    SInt16 Add(const ForkHold& inFork, UInt64 inStoresBefore);
    ForkHold Find(SInt16 inRefNum);
    // False when that number no longer names inFork (another thread closed it first).
    bool Remove(SInt16 inRefNum, const OpenFork& inFork);
    // The first open fork numbered above inRefNum, and its number; null when there is none.
    std::pair<SInt16, ForkHold> Next(SInt16 inRefNum);
    std::shared_ptr<ResourceFork> OpenResource(const ItemKey& inItem);
    UInt16 Flags(const ItemKey& inItem);

    // How many resource forks have been written back so far; see Add.
    UInt64 ResourceStores();
    void NoteResourceStored();

private:
    struct State {
        std::map<SInt16, ForkHold> forks;
        UInt64 resourceStores = 0;
    };
    static std::shared_ptr<ResourceFork> OpenResourceIn(const State& inState, const ItemKey& inItem);

    Guarded<State> mState;
};

// kFSNodeDataOpenMask, kFSNodeResOpenMask and kFSNodeForkOpenMask as they apply to an item.
UInt16 OpenForkFlags(const ItemKey& inItem);
// The length of a resource fork that is open, which may differ from the companion's until
// the fork is flushed.
std::optional<UInt64> OpenResourceForkLength(const ItemKey& inItem);

}  // namespace carbon
