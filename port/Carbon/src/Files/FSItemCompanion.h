// An item's companion read by where the item is, not where it was: another thread may
// rename or move the item between finding it and reading the companion beside it.
#pragma once

#include "FSCompanion.h"
#include "FSItemLocation.h"

namespace carbon {

// The companion of a located item, read where the item is when it is read: when the item
// turns out to have been renamed or moved meanwhile, it is found again and read there.
// Renames by other processes are seen only by the item's name; in this process also by
// the moves under way (CompanionMove).
Companion ReadItemCompanion(const ItemLocation& inItem);

}  // namespace carbon
