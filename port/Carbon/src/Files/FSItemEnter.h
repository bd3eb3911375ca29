// Making references: for items found by name or path, for the folder that holds an item,
// and for items already located; and the node IDs that stand for items in older calls.
#pragma once

#include "FSItemLocation.h"

#include <string>
#include <string_view>

namespace carbon {

// The reference of the item inName in an already located folder (not following a symbolic
// link); outLocation may be NULL.
OSErr EnterChild(const ItemLocation& inFolder, std::string_view inName, FSRef* outRef, ItemLocation* outLocation,
                 Tracking inTracking = Tracking::kFollowMoves);
// The reference of the item at a path; the last component is followed when inFollowLeaf.
OSErr EnterPath(const std::string& inPath, bool inFollowLeaf, FSRef* outRef);
// The reference of the folder that holds a located item; all zero for a volume's root.
OSErr EnterParent(const ItemLocation& inItem, FSRef* outParentRef);

void RefOf(const ItemLocation& inItem, FSRef* outRef);

// Node IDs: 2 for a volume's root, 1 for the parent of a root, else a number handed out per
// item on first use.
UInt32 NodeIDOf(const ItemLocation& inItem);
UInt32 ParentIDOf(const ItemLocation& inItem);
// The item that holds a node ID on a volume; fnfErr when no item has it.
OSErr RefOfNode(FSVolumeRefNum inVolume, UInt32 inNodeID, FSRef* outRef);

}  // namespace carbon
