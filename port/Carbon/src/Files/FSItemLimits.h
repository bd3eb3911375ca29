// What keeps the item table of a long-running process from growing without end: how many
// entries and descriptors it keeps, and the order in which it gives the oldest up.
#pragma once

#include "FSItemLocation.h"

#include <cstddef>
#include <list>

namespace carbon {

// Entries without a descriptor cost a path and a name; past this many, the least recently
// used are forgotten and their references answer fnfErr.
constexpr std::size_t kMostItems = 1 << 16;
// Finding a folder again through its parents stops this far up.
constexpr int kDeepestSearch = 4096;

// O_PATH descriptors count against the process's limit on open files, so the table keeps
// only a share of it and closes the least recently used beyond that; those items are then
// found through their folder or their last known path.
std::size_t MostDescriptors();

// Keys, most recently used first. A position stays valid until its key is removed.
class RecentKeys {
public:
    using Position = std::list<ItemKey>::iterator;

    Position Add(const ItemKey& inKey);
    void Touch(Position inPosition);
    void Remove(Position inPosition);
    Position None() { return mKeys.end(); }
    std::size_t Size() const { return mKeys.size(); }
    const ItemKey& Oldest() const { return mKeys.back(); }

private:
    std::list<ItemKey> mKeys;
};

}  // namespace carbon
