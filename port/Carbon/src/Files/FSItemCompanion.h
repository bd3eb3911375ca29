// An item's companion read by where the item is, not where it was: another thread may
// rename or move the item between finding it and reading the companion beside it.
#pragma once

#include "FSCompanion.h"
#include "FSItemLocation.h"

namespace carbon {

// The companion of a located item. Read, then checked that the item still has the name it
// was read under; if not, the item is found again and its companion read there.
Companion ReadItemCompanion(const ItemLocation& inItem);

}  // namespace carbon
