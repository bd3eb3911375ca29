// The table of open forks.
#include "FSForkTable.h"

#include <limits>

namespace carbon {

ForkTable& ForkTable::Shared()
{
    static ForkTable sTable;
    return sTable;
}

std::shared_ptr<ResourceFork> ForkTable::OpenResourceIn(const State& inState, const ItemKey& inItem)
{
    for (const auto& [refNum, fork] : inState.forks)
        if (fork->isResource && fork->key == inItem)
            return fork->resource;
    return nullptr;
}

SInt16 ForkTable::Add(const ForkHold& inFork, UInt64 inStoresBefore)
{
    auto state = mState.Locked();
    if (inFork->isResource) {
        if (std::shared_ptr<ResourceFork> open = OpenResourceIn(*state, inFork->key))
            inFork->resource = std::move(open);
        else if (state->resourceStores != inStoresBefore)
            return kStaleResource;
    }
    SInt16 refNum = 1;
    for (const auto& [taken, fork] : state->forks) {
        if (taken != refNum)
            break;
        if (refNum == std::numeric_limits<SInt16>::max())
            return kTableFull;
        ++refNum;
    }
    state->forks.emplace(refNum, inFork);
    return refNum;
}

ForkHold ForkTable::Find(SInt16 inRefNum)
{
    auto state = mState.Locked();
    auto found = state->forks.find(inRefNum);
    return found == state->forks.end() ? nullptr : found->second;
}

bool ForkTable::Remove(SInt16 inRefNum, const OpenFork& inFork)
{
    ForkHold removed;  // released after the lock, since it may close a descriptor
    auto state = mState.Locked();
    auto found = state->forks.find(inRefNum);
    if (found == state->forks.end() || found->second.get() != &inFork)
        return false;
    removed = std::move(found->second);
    state->forks.erase(found);
    return true;
}

std::pair<SInt16, ForkHold> ForkTable::Next(SInt16 inRefNum)
{
    auto state = mState.Locked();
    auto next = state->forks.upper_bound(inRefNum);
    if (next == state->forks.end())
        return {0, nullptr};
    return {next->first, next->second};
}

std::shared_ptr<ResourceFork> ForkTable::OpenResource(const ItemKey& inItem)
{
    return OpenResourceIn(*mState.Locked(), inItem);
}

UInt16 ForkTable::Flags(const ItemKey& inItem)
{
    auto state = mState.Locked();
    UInt16 flags = 0;
    for (const auto& [refNum, fork] : state->forks)
        if (fork->key == inItem)
            flags |= kFSNodeForkOpenMask | (fork->isResource ? kFSNodeResOpenMask : kFSNodeDataOpenMask);
    return flags;
}

UInt64 ForkTable::ResourceStores() { return mState.Locked()->resourceStores; }

void ForkTable::NoteResourceStored() { ++mState.Locked()->resourceStores; }

UInt16 OpenForkFlags(const ItemKey& inItem) { return ForkTable::Shared().Flags(inItem); }

std::optional<UInt64> OpenResourceForkLength(const ItemKey& inItem)
{
    std::shared_ptr<ResourceFork> resource = ForkTable::Shared().OpenResource(inItem);
    return resource ? std::optional<UInt64>(resource->contents.Locked()->bytes.size()) : std::nullopt;
}

}  // namespace carbon
