// The table of open forks.
#include "FSForkTable.h"

#include <limits>

namespace carbon {

ForkTable& ForkTable::Shared()
{
    static ForkTable table;
    return table;
}

SInt16 ForkTable::Add(OpenFork&& inFork)
{
    std::lock_guard guard(mLock);
    SInt16 refNum = 1;
    for (const auto& [taken, fork] : mForks) {
        if (taken != refNum)
            break;
        if (refNum == std::numeric_limits<SInt16>::max())
            return 0;
        ++refNum;
    }
    mForks.emplace(refNum, std::move(inFork));
    return refNum;
}

OpenFork* ForkTable::Find(SInt16 inRefNum)
{
    std::lock_guard guard(mLock);
    auto found = mForks.find(inRefNum);
    return found == mForks.end() ? nullptr : &found->second;
}

void ForkTable::Remove(SInt16 inRefNum)
{
    std::lock_guard guard(mLock);
    mForks.erase(inRefNum);
}

SInt16 ForkTable::Next(SInt16 inRefNum) const
{
    auto next = mForks.upper_bound(inRefNum);
    return next == mForks.end() ? 0 : next->first;
}

std::shared_ptr<ResourceForkBytes> ForkTable::OpenResource(const ItemKey& inItem) const
{
    for (const auto& [refNum, fork] : mForks)
        if (fork.isResource && fork.key == inItem)
            return fork.resource;
    return nullptr;
}

UInt16 ForkTable::Flags(const ItemKey& inItem) const
{
    UInt16 flags = 0;
    for (const auto& [refNum, fork] : mForks)
        if (fork.key == inItem)
            flags |= kFSNodeForkOpenMask | (fork.isResource ? kFSNodeResOpenMask : kFSNodeDataOpenMask);
    return flags;
}

UInt16 OpenForkFlags(const ItemKey& inItem)
{
    ForkTable& table = ForkTable::Shared();
    auto guard = table.Lock();
    return table.Flags(inItem);
}

std::optional<UInt64> OpenResourceForkLength(const ItemKey& inItem)
{
    ForkTable& table = ForkTable::Shared();
    auto guard = table.Lock();
    std::shared_ptr<ResourceForkBytes> resource = table.OpenResource(inItem);
    return resource ? std::optional<UInt64>(resource->bytes.size()) : std::nullopt;
}

}  // namespace carbon
