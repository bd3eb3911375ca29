// Companions of items that may be moving.
#include "FSItemCompanion.h"

#include "FSItemDisk.h"
#include "FSItemLocate.h"

#include <Carbon/MacErrors.h>

#include <thread>

namespace carbon {

namespace {

// An item renamed this often while its companion is read is read where it was last found.
constexpr int kMostRereads = 100;

bool StillNamed(const ItemLocation& inItem)
{
    struct statx status;
    return inItem.isRoot || (StatusAt(inItem.Folder(), inItem.name.c_str(), status) && KeyOf(status) == inItem.key);
}

}  // namespace

// A companion found under the item's name is the item's while the name is: a move links it
// under the new name before the item leaves the old. One not found proves less, since the
// item may have left and come back meanwhile; that answer is trusted only when no move in
// this process was under way while it was read.
Companion ReadItemCompanion(const ItemLocation& inItem)
{
    const ItemLocation* where = &inItem;
    ItemLocation moved;
    Companion companion;
    for (int attempt = 0; attempt < kMostRereads; ++attempt) {
        CompanionMove::Count before = CompanionMove::SoFar();
        companion = ReadCompanion(where->Folder(), where->name);
        bool quiet = before.Quiet() && CompanionMove::SoFar().begun == before.begun;
        bool named = StillNamed(*where);
        if (named && (quiet || companion.state == Companion::State::Valid))
            break;
        if (!named) {
            if (LocateKey(inItem.key, moved) != noErr)
                break;
            where = &moved;
        }
        std::this_thread::yield();  // let the rename under way finish
    }
    return companion;
}

}  // namespace carbon
