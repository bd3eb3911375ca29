// Walking and deleting folder trees, and listing one folder.
//
// Both walks recurse once per level of the tree and keep everything that does not have to
// survive the recursion in one record shared by all levels, so that a level's stack frame
// holds little more than its iterator: a tree thousands of levels deep fits a small stack.
#include "ExtFileUtilsInternal.h"

#include <cstring>

namespace {

struct DeleteState {
    OSErr result;
    ItemCount actualObjects;
    FSCatalogInfo catalogInfo;  // the node flags of the item just read
    FSRef itemRef;              // the item just read
};

__attribute__((noinline)) bool ReadItemToDelete(FSIterator inIterator, DeleteState& ioState)
{
    ioState.result = FSGetCatalogInfoBulk(inIterator, 1, &ioState.actualObjects, nullptr, kFSCatInfoNodeFlags,
                                          &ioState.catalogInfo, &ioState.itemRef, nullptr, nullptr);
    return ioState.result == noErr && ioState.actualObjects == 1;
}

// A locked item refuses deletion. Whether the unlock worked shows in the deletion's status.
void Unlock(const FSRef* inRef, UInt16 inNodeFlags, DeleteState& ioState)
{
    ioState.catalogInfo.nodeFlags = UInt16(inNodeFlags & ~kFSNodeLockedMask);
    FSSetCatalogInfo(inRef, kFSCatInfoNodeFlags, &ioState.catalogInfo);
}

// Deletes everything in inContainer, stopping at the first failure, which stays in
// ioState.result. The folder being entered is copied into the frame: the levels below
// overwrite the shared record before it is deleted.
__attribute__((noinline)) void DeleteLevel(const FSRef* inContainer, DeleteState& ioState)
{
    FSIterator iterator;
    if (ioState.result = FSOpenIterator(inContainer, kFSIterateDelete, &iterator); ioState.result != noErr)
        return;
    FSRef folder;
    while (ReadItemToDelete(iterator, ioState)) {
        UInt16 nodeFlags = ioState.catalogInfo.nodeFlags;
        const FSRef* item = &ioState.itemRef;
        if (nodeFlags & kFSNodeIsDirectoryMask) {
            folder = ioState.itemRef;
            item = &folder;
            DeleteLevel(item, ioState);
            if (ioState.result != noErr)
                break;
        }
        if (nodeFlags & kFSNodeLockedMask)
            Unlock(item, nodeFlags, ioState);
        if (ioState.result = FSDeleteObject(item); ioState.result != noErr)
            break;
    }
    if (ioState.result == errFSNoMoreItems)
        ioState.result = noErr;
    FSCloseIterator(iterator);
}

struct IterateState {
    // What the caller asked for.
    ItemCount maxLevels;
    FSCatalogInfoBitmap whichInfo;
    bool wantSpec;
    bool wantName;
    IterateContainerFilterProcPtr filter;
    void* data;
    // Where the walk is.
    ItemCount currentLevel;
    bool quit;
    OSErr result;
    ItemCount actualObjects;
    Boolean containerChanged;
    FSCatalogInfo catalogInfo;
    FSRef ref;
    FSSpec spec;
    HFSUniStr255 name;
};

bool ReadItemToVisit(FSIterator inIterator, IterateState& ioState)
{
    ioState.result = FSGetCatalogInfoBulk(
        inIterator, 1, &ioState.actualObjects, &ioState.containerChanged, ioState.whichInfo, &ioState.catalogInfo,
        &ioState.ref, ioState.wantSpec ? &ioState.spec : nullptr, ioState.wantName ? &ioState.name : nullptr);
    return ioState.result == noErr && ioState.actualObjects == 1;
}

// The folder's reference is only needed to open the iterator, so the level below may take
// it straight from the shared record.
__attribute__((noinline)) void IterateLevel(const FSRef* inContainer, IterateState& ioState)
{
    FSIterator iterator;
    if (ioState.result = FSOpenIterator(inContainer, kFSIterateFlat, &iterator); ioState.result != noErr)
        return;
    ++ioState.currentLevel;
    while (!ioState.quit && ReadItemToVisit(iterator, ioState)) {
        ioState.quit = ioState.filter(ioState.containerChanged, ioState.currentLevel, &ioState.catalogInfo,
                                      &ioState.ref, ioState.wantSpec ? &ioState.spec : nullptr,
                                      ioState.wantName ? &ioState.name : nullptr, ioState.data);
        bool deeper = ioState.maxLevels == 0 || ioState.currentLevel < ioState.maxLevels;
        if (!ioState.quit && deeper && (ioState.catalogInfo.nodeFlags & kFSNodeIsDirectoryMask)) {
            IterateLevel(&ioState.ref, ioState);
            if (ioState.result != noErr)
                break;
        }
    }
    if (ioState.result == errFSNoMoreItems)
        ioState.result = noErr;
    --ioState.currentLevel;
    FSCloseIterator(iterator);
}

}  // namespace

OSErr FSDeleteContainerContents(const FSRef* inContainer)
{
    DeleteState state{};
    DeleteLevel(inContainer, state);
    return state.result;
}

OSErr FSDeleteContainer(const FSRef* inContainer)
{
    DeleteState state{};
    state.result = FSGetCatalogInfo(inContainer, kFSCatInfoNodeFlags, &state.catalogInfo, nullptr, nullptr, nullptr);
    if (state.result != noErr)
        return state.result;
    UInt16 nodeFlags = state.catalogInfo.nodeFlags;
    if (!(nodeFlags & kFSNodeIsDirectoryMask))
        return dirNFErr;
    DeleteLevel(inContainer, state);
    if (state.result != noErr)
        return state.result;
    if (nodeFlags & kFSNodeLockedMask)
        Unlock(inContainer, nodeFlags, state);
    return FSDeleteObject(inContainer);
}

OSErr FSIterateContainer(const FSRef* inContainer, ItemCount inMaxLevels, FSCatalogInfoBitmap inWhichInfo,
                         Boolean inWantSpec, Boolean inWantName, IterateContainerFilterProcPtr inFilter, void* ioData)
{
    if (inFilter == nullptr)
        return paramErr;
    IterateState state{};
    state.maxLevels = inMaxLevels;
    state.whichInfo = inWhichInfo | kFSCatInfoNodeFlags;  // the walk needs to know the folders
    state.wantSpec = inWantSpec;
    state.wantName = inWantName;
    state.filter = inFilter;
    state.data = ioData;
    IterateLevel(inContainer, state);
    return state.result;
}

OSErr FSGetDirectoryItems(const FSRef* inContainer, FSRef*** outRefsHandle, ItemCount* outRefCount,
                          Boolean* outContainerChanged)
{
    if (outRefsHandle == nullptr || outRefCount == nullptr)
        return paramErr;
    *outRefsHandle = nullptr;
    *outRefCount = 0;
    if (outContainerChanged)
        *outContainerChanged = false;
    FSIterator iterator;
    if (OSErr status = FSOpenIterator(inContainer, kFSIterateFlat, &iterator); status != noErr)
        return status;
    Handle refs = NewHandle(0);
    if (refs == nullptr) {
        FSCloseIterator(iterator);
        return memFullErr;
    }
    constexpr ItemCount kBatch = 64;
    FSRef batch[kBatch];
    ItemCount count = 0, actual = 0;
    Boolean changed = false;
    OSErr status;
    while ((status = FSGetCatalogInfoBulk(iterator, kBatch, &actual, &changed, kFSCatInfoNone, nullptr, batch, nullptr,
                                          nullptr)) == noErr) {
        if (outContainerChanged)
            *outContainerChanged = *outContainerChanged || changed;
        SetHandleSize(refs, Size((count + actual) * sizeof(FSRef)));
        if (status = MemError(); status != noErr)
            break;
        std::memcpy(*refs + count * sizeof(FSRef), batch, actual * sizeof(FSRef));
        count += actual;
    }
    FSCloseIterator(iterator);
    if (status != errFSNoMoreItems) {
        DisposeHandle(refs);
        return status;
    }
    *outRefsHandle = reinterpret_cast<FSRef**>(refs);
    *outRefCount = count;
    return noErr;
}
