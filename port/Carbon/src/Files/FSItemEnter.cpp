// Making references. The disk is read first, with the table unlocked; the table is then
// locked only to record what was read.
#include "FSItemEnter.h"

#include "FSItemDisk.h"
#include "FSItemLocate.h"
#include "FSVolumes.h"

#include <Carbon/FSErrno.h>
#include <Carbon/MacErrors.h>

#include <cstring>

namespace carbon {

namespace {

// Runs inAction on the locked table with the entry for a status. Whether a new folder is a
// volume's root comes from the mount table, which is read before locking and only when
// the entry has to be made.
template <class Action>
auto WithEntry(const struct statx& inStatus, bool inKnownRoot, Action&& inAction)
{
    {
        LockedItems store;
        store->Use();
        if (Entry* entry = store->Existing(inStatus))
            return inAction(*store, *entry);
    }
    bool volumeRoot = inKnownRoot || IsVolumeRootFolder(inStatus);
    LockedItems store;
    store->Use();
    return inAction(*store, store->EntryFor(inStatus, volumeRoot));
}

OSErr EnterRoot(const struct statx& inStatus, FSRef* outRef, ItemLocation* outLocation)
{
    EntryView view = WithEntry(inStatus, true, [&](ItemStore& ioStore, Entry& ioEntry) {
        ioStore.MakeRoot(ioEntry);
        return ioStore.ViewOf(ioEntry);
    });
    ItemLocation scratch;
    if (LocateRoot(view, outLocation ? *outLocation : scratch) != noErr)
        return fnfErr;
    EncodeRef({view.key, view.generation}, outRef);
    return noErr;
}

// Whether a folder found in another is a volume's root: see IsRootPair.
bool IsRootIn(const struct statx& inStatus, const ItemKey& inFolder)
{
    return S_ISDIR(inStatus.stx_mode) && IsRootPair(KeyOf(inStatus), inFolder);
}

// The folder holding an item, given an entry from the item's descriptor of it when the
// table has none.
template <class Action>
auto WithParent(const ItemLocation& inItem, Action&& inAction)
    -> decltype(inAction(std::declval<ItemStore&>(), nullptr))
{
    {
        LockedItems store;
        store->Use();
        if (Entry* parent = store->Find(inItem.parentKey)) {
            store->Touch(*parent);
            return inAction(*store, parent);
        }
    }
    struct statx status;
    if (!StatusAt(inItem.Folder(), "", status)) {
        LockedItems store;
        return inAction(*store, nullptr);
    }
    return WithEntry(status, false, [&](ItemStore& ioStore, Entry& ioParent) {
        ioStore.SetHandle(ioParent, inItem.folder);
        if (Entry* item = ioStore.Find(inItem.key); item && ioParent.path.empty())
            ioParent.path = FolderOf(item->path);
        return inAction(ioStore, &ioParent);
    });
}

}  // namespace

OSErr EnterChild(const ItemLocation& inFolder, std::string_view inName, FSRef* outRef, ItemLocation* outLocation,
                 Tracking inTracking)
{
    FSRef scratchRef;
    outRef = outRef ? outRef : &scratchRef;
    std::string name(inName);
    SharedFd handle;
    struct statx status;
    if (inTracking == Tracking::kByName && !StatusAt(inFolder.Self(), name.c_str(), status))
        return LastStatus();
    if (inTracking == Tracking::kFollowMoves || S_ISDIR(status.stx_mode)) {
        // The status is read through the new descriptor, so both are of the same item
        // even when the name is being reused meanwhile.
        handle = OpenPath(inFolder.Self(), name.c_str(), O_NOFOLLOW);
        if (!handle || !StatusAt(handle->Get(), "", status))
            return LastStatus();
    }
    if (IsRootIn(status, inFolder.key))
        return EnterRoot(status, outRef, outLocation);
    return WithEntry(status, false, [&](ItemStore& ioStore, Entry& ioEntry) {
        ioStore.Relocate(ioEntry, inFolder.key, name);
        if (Entry* folder = ioStore.Find(inFolder.key))
            ioEntry.path = Join(folder->path, name);
        ioStore.SetHandle(ioEntry, ioEntry.handle ? ioEntry.handle : handle);
        if (outLocation)
            *outLocation = {ioEntry.key, inFolder.self, name, ioEntry.handle, inFolder.key, status, false};
        if (inTracking == Tracking::kByName && !handle)
            JustRead::OfThisThread() = JustRead{ItemStore::IdentityOf(ioEntry), ioStore.Use(), status,
                                                std::chrono::steady_clock::now()};
        EncodeRef(ItemStore::IdentityOf(ioEntry), outRef);
        return OSErr(noErr);
    });
}

OSErr EnterPath(const std::string& inPath, bool inFollowLeaf, FSRef* outRef)
{
    SharedFd handle = OpenPath(AT_FDCWD, inPath.c_str(), inFollowLeaf ? 0 : O_NOFOLLOW);
    struct statx status;
    if (!handle || !StatusAt(handle->Get(), "", status))
        return LastStatus();
    std::string path = ReadLink(handle->Get());
    return WithEntry(status, false, [&](ItemStore& ioStore, Entry& ioEntry) {
        if (!ioEntry.handle)
            ioStore.SetHandle(ioEntry, handle);
        if (!path.empty())
            ioEntry.path = path;
        if (ioEntry.path == "/")
            ioStore.MakeRoot(ioEntry);
        EncodeRef(ItemStore::IdentityOf(ioEntry), outRef);
        return OSErr(noErr);
    });
}

OSErr EnterParent(const ItemLocation& inItem, FSRef* outParentRef)
{
    if (inItem.isRoot) {
        std::memset(outParentRef, 0, sizeof *outParentRef);
        return noErr;
    }
    return WithParent(inItem, [&](ItemStore&, Entry* inParent) {
        if (inParent == nullptr)
            return OSErr(fnfErr);
        EncodeRef(ItemStore::IdentityOf(*inParent), outParentRef);
        return OSErr(noErr);
    });
}

void RefOf(const ItemLocation& inItem, FSRef* outRef)
{
    WithEntry(inItem.status, inItem.isRoot, [&](ItemStore& ioStore, Entry& ioEntry) {
        EncodeRef(ItemStore::IdentityOf(ioStore.Adopt(inItem, ioEntry.isRoot)), outRef);
    });
}

UInt32 NodeIDOf(const ItemLocation& inItem)
{
    if (inItem.isRoot)
        return fsRtDirID;
    return WithEntry(inItem.status, false, [&](ItemStore& ioStore, Entry& ioEntry) {
        return ioStore.NodeID(ioStore.Adopt(inItem, ioEntry.isRoot));
    });
}

UInt32 ParentIDOf(const ItemLocation& inItem)
{
    if (inItem.isRoot)
        return fsRtParID;
    return WithParent(inItem, [&](ItemStore& ioStore, Entry* inParent) {
        return inParent == nullptr ? 0 : inParent->isRoot ? UInt32(fsRtDirID) : ioStore.NodeID(*inParent);
    });
}

OSErr RefOfNode(FSVolumeRefNum inVolume, UInt32 inNodeID, FSRef* outRef)
{
    if (inNodeID == UInt32(fsRtDirID)) {
        std::optional<VolumeRecord> volume = VolumeOfRefNum(inVolume);
        if (!volume)
            return nsvErr;
        return volume->mountPoint.empty() ? OSErr(fnfErr) : EnterPath(volume->mountPoint, true, outRef);
    }
    std::optional<RefIdentity> identity;
    if (LockedItems store; Entry* entry = store->OfNode(inNodeID))
        identity = ItemStore::IdentityOf(*entry);
    if (!identity || VolumeRefNumOf(identity->key.device) != inVolume)
        return fnfErr;
    ItemLocation location;
    if (OSErr status = LocateIdentity(*identity, location, Tracking::kFollowMoves); status != noErr)
        return status;
    RefOf(location, outRef);
    return noErr;
}

}  // namespace carbon
