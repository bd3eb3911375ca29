// The entries of the item table.
#include "FSItemStore.h"

#include "FSItemDisk.h"

namespace carbon {

namespace {

bool SameItem(const ItemKey& inKey, UInt64 inBirth, const struct statx& inStatus)
{
    UInt64 seen = BirthOf(inStatus);
    return KeyOf(inStatus) == inKey && (inBirth == 0 || seen == 0 || seen == inBirth);
}

}  // namespace

bool EntryView::Matches(const struct statx& inStatus) const { return SameItem(key, birth, inStatus); }

Entry* ItemStore::Find(const ItemKey& inKey)
{
    auto found = mItems.find(inKey);
    return found == mItems.end() ? nullptr : &found->second;
}

Entry* ItemStore::Find(const RefIdentity& inRef)
{
    Entry* entry = Find(inRef.key);
    return entry == nullptr || entry->generation != inRef.generation ? nullptr : entry;
}

EntryView ItemStore::ViewOf(const Entry& inEntry)
{
    EntryView view{inEntry.key,      inEntry.birth,  inEntry.generation, inEntry.version,
                   inEntry.isFolder, inEntry.isRoot, inEntry.hasParent,  inEntry.parent,
                   inEntry.name,     inEntry.path,   inEntry.handle,     nullptr};
    if (Entry* parent = inEntry.hasParent ? Find(inEntry.parent) : nullptr)
        view.parentHandle = parent->handle;
    return view;
}

Entry* ItemStore::Existing(const struct statx& inStatus)
{
    Entry* entry = Find(KeyOf(inStatus));
    if (entry == nullptr || !SameItem(entry->key, entry->birth, inStatus))
        return nullptr;
    Touch(*entry);
    return entry;
}

Entry& ItemStore::EntryFor(const struct statx& inStatus, bool inVolumeRoot)
{
    if (Entry* entry = Existing(inStatus))
        return *entry;
    ItemKey key = KeyOf(inStatus);
    if (Entry* earlier = Find(key))
        Erase(*earlier);
    Entry& entry = mItems[key];
    entry.key = key;
    entry.birth = BirthOf(inStatus);
    entry.generation = mNextGeneration++;
    entry.isFolder = S_ISDIR(inStatus.stx_mode);
    entry.isRoot = entry.isFolder && inVolumeRoot;
    entry.recent = mRecent.Add(key);
    entry.recentHandle = mRecentHandles.None();
    if (mItems.size() > kMostItems) {
        ++mUncertainDrops;
        Erase(mItems.at(mRecent.Oldest()));
    }
    return entry;
}

Entry& ItemStore::Adopt(const ItemLocation& inItem, bool inVolumeRoot)
{
    Entry& entry = EntryFor(inItem.status, inVolumeRoot);
    if (!entry.handle)
        SetHandle(entry, inItem.self);
    if (inItem.isRoot)
        MakeRoot(entry);
    else if (!entry.hasParent && !entry.isRoot)
        Relocate(entry, inItem.parentKey, inItem.name);
    return entry;
}

void ItemStore::Relocate(Entry& ioEntry, const ItemKey& inFolder, const std::string& inName)
{
    if (ioEntry.hasParent && !ioEntry.isRoot && ioEntry.parent == inFolder && ioEntry.name == inName)
        return;
    ioEntry.isRoot = false;
    ioEntry.hasParent = true;
    ioEntry.parent = inFolder;
    ioEntry.name = inName;
    ++ioEntry.version;
}

void ItemStore::MakeRoot(Entry& ioEntry)
{
    if (ioEntry.isRoot && !ioEntry.hasParent)
        return;
    ioEntry.isRoot = true;
    ioEntry.hasParent = false;
    ++ioEntry.version;
}

Applied ItemStore::Apply(const EntryView& inView, const Sighting& inSighting)
{
    Entry* entry = Find(RefIdentity{inView.key, inView.generation});
    if (entry == nullptr)
        return Applied::kGone;
    if (entry->version != inView.version)
        return Applied::kChanged;
    Touch(*entry);
    if (inSighting.isRoot)
        MakeRoot(*entry);
    else
        Relocate(*entry, inSighting.parent, inSighting.name);
    if (inSighting.path)
        entry->path = *inSighting.path;
    SetHandle(*entry, entry->handle ? entry->handle : inSighting.handle);
    if (inSighting.folderStatus)
        NoteFolder(inSighting);
    return Applied::kDone;
}

// The entry was touched just before, so making the folder's entry cannot forget it.
void ItemStore::NoteFolder(const Sighting& inSighting)
{
    Entry& folder = EntryFor(*inSighting.folderStatus, inSighting.folderIsVolumeRoot);
    if (!folder.handle)
        SetHandle(folder, inSighting.folder);
    if (folder.path.empty())
        folder.path = inSighting.folderPath;
}

void ItemStore::Drop(const EntryView& inView, bool inUncertain)
{
    Entry* entry = Find(RefIdentity{inView.key, inView.generation});
    if (entry == nullptr || entry->version != inView.version)
        return;
    mUncertainDrops += inUncertain;
    Erase(*entry);
}

void ItemStore::SetHandle(Entry& ioEntry, SharedFd inHandle)
{
    if (!inHandle)
        return;
    if (ioEntry.handle)
        mRecentHandles.Touch(ioEntry.recentHandle);
    else
        ioEntry.recentHandle = mRecentHandles.Add(ioEntry.key);
    ioEntry.handle = std::move(inHandle);
    while (mRecentHandles.Size() > mMostDescriptors) {
        Entry& oldest = mItems.at(mRecentHandles.Oldest());
        mReleased.push_back(std::move(oldest.handle));
        mRecentHandles.Remove(oldest.recentHandle);
        oldest.recentHandle = mRecentHandles.None();
    }
}

void ItemStore::Erase(Entry& ioEntry)
{
    if (ioEntry.nodeID != 0)
        mNodes.erase(ioEntry.nodeID);
    if (ioEntry.handle) {
        mRecentHandles.Remove(ioEntry.recentHandle);
        mReleased.push_back(std::move(ioEntry.handle));
    }
    mRecent.Remove(ioEntry.recent);
    mItems.erase(ioEntry.key);
}

UInt32 ItemStore::NodeID(Entry& ioEntry)
{
    if (ioEntry.isRoot)
        return fsRtDirID;
    if (ioEntry.nodeID == 0) {
        ioEntry.nodeID = mNextNodeID++;
        mNodes[ioEntry.nodeID] = ioEntry.key;
    }
    return ioEntry.nodeID;
}

Entry* ItemStore::OfNode(UInt32 inNodeID)
{
    auto node = mNodes.find(inNodeID);
    return node == mNodes.end() ? nullptr : Find(node->second);
}

namespace {

Guarded<ItemStore>& Items()
{
    static Guarded<ItemStore> sStore;
    return sStore;
}

}  // namespace

LockedItems::LockedItems() : mLocked(Items().Locked()) {}

LockedItems::~LockedItems() { mReleased = mLocked->TakeReleased(); }

std::optional<JustRead>& JustRead::OfThisThread()
{
    thread_local std::optional<JustRead> tJustRead;
    return tJustRead;
}

}  // namespace carbon
