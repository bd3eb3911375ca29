// Finding a referenced item on disk again, wherever it went since it was last seen.
#pragma once

#include "FSItemStore.h"

namespace carbon {

// The item that a reference names, found again. errFSBadFSRef for bytes that are not a
// reference, fnfErr for an item that no longer exists.
OSErr LocateItem(const FSRef* inRef, ItemLocation& outLocation, Tracking inTracking = Tracking::kFollowMoves);
// The same for a reference already decoded.
OSErr LocateIdentity(const RefIdentity& inRef, ItemLocation& outLocation, Tracking inTracking);
// The item that the table's entry for inKey is of, whichever generation that is.
OSErr LocateKey(const ItemKey& inKey, ItemLocation& outLocation);
// A volume's root folder, by the descriptor it has or else by its mount point.
OSErr LocateRoot(const EntryView& inRoot, ItemLocation& outLocation);

}  // namespace carbon
