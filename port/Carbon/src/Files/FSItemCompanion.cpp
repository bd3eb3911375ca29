// Companions of items that may be moving.
#include "FSItemCompanion.h"

#include "FSItemDisk.h"
#include "FSItemLocate.h"

#include <Carbon/MacErrors.h>

namespace carbon {

namespace {

// An item renamed this often while its companion is read is read where it was last found.
constexpr int kMostRereads = 8;

bool StillNamed(const ItemLocation& inItem)
{
    struct statx status;
    return inItem.isRoot || (StatusAt(inItem.Folder(), inItem.name.c_str(), status) && KeyOf(status) == inItem.key);
}

}  // namespace

Companion ReadItemCompanion(const ItemLocation& inItem)
{
    Companion companion = ReadCompanion(inItem.Folder(), inItem.name);
    if (StillNamed(inItem))
        return companion;
    ItemLocation moved;
    for (int reread = 0; reread < kMostRereads && LocateKey(inItem.key, moved) == noErr; ++reread) {
        companion = ReadCompanion(moved.Folder(), moved.name);
        if (StillNamed(moved))
            break;
    }
    return companion;
}

}  // namespace carbon
