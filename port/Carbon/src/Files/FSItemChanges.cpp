// Changes this process made.
#include "FSItemChanges.h"

#include "FSItemDisk.h"
#include "FSItemStore.h"

namespace carbon {

void ItemMoved(const ItemKey& inItem, const ItemKey& inNewFolder, std::string_view inNewName)
{
    LockedItems store;
    store->Use();
    Entry* entry = store->Find(inItem);
    if (entry == nullptr)
        return;
    Entry* folder = store->Find(inNewFolder);
    store->Relocate(*entry, inNewFolder, std::string(inNewName));
    entry->path = folder ? Join(folder->path, inNewName) : std::string();
}

void ItemDeleted(const ItemKey& inKey)
{
    LockedItems store;
    store->Use();
    if (Entry* entry = store->Find(inKey))
        store->Erase(*entry);
}

UInt64 UncertainDrops() { return LockedItems()->UncertainDrops(); }

bool KnownDeleted(const FSRef& inRef, UInt64 inDropsBefore)
{
    std::optional<RefIdentity> identity = DecodeRef(inRef);
    LockedItems store;
    if (!identity || store->UncertainDrops() != inDropsBefore)
        return false;
    return store->Find(*identity) == nullptr;
}

}  // namespace carbon
