// The item table's bookkeeping after this process changed the disk, and what it can tell
// about deleted items without looking.
#pragma once

#include "FSItemLocation.h"

#include <string_view>

namespace carbon {

// The entry's new place; look-ups under way in other threads that saw the old one start
// again rather than write it back.
void ItemMoved(const ItemKey& inItem, const ItemKey& inNewFolder, std::string_view inNewName);
void ItemDeleted(const ItemKey& inKey);

// Whether the table knows, without looking at the disk, that a reference's item is gone:
// its entry was dropped as deleted. inDropsBefore is UncertainDrops() read when the
// reference was made; once entries have been dropped for other reasons since (forgotten to
// save memory, or lost track of), the answer is false and the disk must be asked.
UInt64 UncertainDrops();
bool KnownDeleted(const FSRef& inRef, UInt64 inDropsBefore);

}  // namespace carbon
