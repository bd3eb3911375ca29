// Creating, deleting, renaming, moving and exchanging items. Each keeps the item's
// companion in step and tells the item table what changed.
#include "FSCatalog.h"
#include "FSCompanion.h"
#include "FSForkTable.h"
#include "FSItemTable.h"
#include "FSNames.h"

#include <Carbon/FSErrno.h>
#include <Carbon/MacErrors.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

using namespace carbon;

namespace {

OSErr LocateFolder(const FSRef* inRef, ItemLocation& outFolder)
{
    if (OSErr status = LocateItem(inRef, outFolder); status != noErr)
        return status;
    return outFolder.IsDirectory() ? noErr : OSErr(errFSNotAFolder);
}

// What stops an item from being renamed, moved or deleted. A volume's root is a mount
// point, which the kernel keeps where it is.
OSErr CheckChangeable(const ItemLocation& inItem)
{
    if (inItem.isRoot)
        return fBsyErr;
    return inItem.IsLocked() ? OSErr(fLckdErr) : noErr;
}

// The names left in a folder that holds no items, only companions (of items deleted by
// other programs) and leftovers of interrupted writes; nothing when it holds items.
std::optional<std::vector<std::string>> LeftoversOnly(int inFolder)
{
    DIR* listing = ::fdopendir(inFolder);
    if (listing == nullptr) {
        ::close(inFolder);
        return std::nullopt;
    }
    std::vector<std::string> names;
    bool itemsOnly = true;
    while (const dirent* entry = ::readdir(listing)) {
        std::string_view name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        itemsOnly = itemsOnly && IsReservedName(name);
        names.emplace_back(name);
    }
    ::closedir(listing);
    return itemsOnly ? std::optional(std::move(names)) : std::nullopt;
}

// A folder looks empty to the File Manager once its items are gone, so it can be deleted
// then, whatever companions are still in it.
OSErr RemoveFolder(const ItemLocation& inFolder)
{
    if (::unlinkat(inFolder.Folder(), inFolder.name.c_str(), AT_REMOVEDIR) == 0)
        return noErr;
    if (errno != ENOTEMPTY && errno != EEXIST)
        return LastStatus();
    int folder = ::openat(inFolder.Self(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::optional<std::vector<std::string>> leftovers = folder >= 0 ? LeftoversOnly(folder) : std::nullopt;
    if (!leftovers)
        return fBsyErr;
    for (const std::string& name : *leftovers)
        ::unlinkat(inFolder.Self(), name.c_str(), 0);
    return ::unlinkat(inFolder.Folder(), inFolder.name.c_str(), AT_REMOVEDIR) == 0 ? noErr : OSErr(fBsyErr);
}

// renameat2 without replacing; file systems that lack the flag get a check first.
OSErr RenameNoReplace(int inFromFolder, const std::string& inFrom, int inToFolder, const std::string& inTo)
{
    if (::renameat2(inFromFolder, inFrom.c_str(), inToFolder, inTo.c_str(), RENAME_NOREPLACE) == 0)
        return noErr;
    if (errno != EINVAL)
        return LastStatus();
    struct statx existing;
    if (StatusAt(inToFolder, inTo.c_str(), existing))
        return dupFNErr;
    if (::renameat(inFromFolder, inFrom.c_str(), inToFolder, inTo.c_str()) == 0)
        return noErr;
    return errno == EINVAL ? OSErr(badMovErr) : LastStatus();  // a folder into itself
}

OSErr MakeItem(const ItemLocation& inParent, const std::string& inName, bool inFolder)
{
    if (inFolder)
        return ::mkdirat(inParent.Self(), inName.c_str(), 0777) == 0 ? noErr : LastStatus();
    int file = ::openat(inParent.Self(), inName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0)
        return LastStatus();
    ::close(file);
    return noErr;
}

OSErr CreateItem(const FSRef* inParentRef, std::span<const UniChar> inName, FSCatalogInfoBitmap inWhichInfo,
                 const FSCatalogInfo* inCatalogInfo, bool inFolder, FSRef* outNewRef, FSSpec* outNewSpec,
                 UInt32* outNewDirID)
{
    if (inWhichInfo & ~kFSCatInfoSettableInfo)
        return errFSBadInfoBitmap;
    if (inWhichInfo != kFSCatInfoNone && inCatalogInfo == nullptr)
        return paramErr;
    ItemLocation parent, item;
    std::string name;
    if (OSErr status = LocateFolder(inParentRef, parent); status != noErr)
        return status;
    if (OSErr status = DiskNameForNewItem(inName, name); status != noErr)
        return status;
    if (OSErr status = MakeItem(parent, name, inFolder); status != noErr)
        return status;
    // A companion without its item, left by another program, must not dress the new one.
    RemoveCompanion(parent.Self(), name);
    FSRef ref;
    OSErr status = EnterChild(parent, name, &ref, &item);
    if (status == noErr && inWhichInfo != kFSCatInfoNone)
        status = ApplyCatalogInfo(item, inWhichInfo, *inCatalogInfo);
    if (status != noErr) {
        ::unlinkat(parent.Self(), name.c_str(), inFolder ? AT_REMOVEDIR : 0);
        RemoveCompanion(parent.Self(), name);
        return status;
    }
    if (outNewRef)
        *outNewRef = ref;
    if (outNewSpec)
        FillSpec(item, *outNewSpec);
    if (outNewDirID)
        *outNewDirID = NodeIDOf(item);
    return noErr;
}

}  // namespace

OSErr FSCreateFileUnicode(const FSRef* inParentRef, UniCharCount inNameLength, const UniChar* inName,
                          FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo* inCatalogInfo, FSRef* outNewRef,
                          FSSpec* outNewSpec)
{
    if (inParentRef == nullptr || (inName == nullptr && inNameLength > 0))
        return paramErr;
    return CreateItem(inParentRef, {inName, inNameLength}, inWhichInfo, inCatalogInfo, false, outNewRef, outNewSpec,
                      nullptr);
}

OSErr FSCreateDirectoryUnicode(const FSRef* inParentRef, UniCharCount inNameLength, const UniChar* inName,
                               FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo* inCatalogInfo, FSRef* outNewRef,
                               FSSpec* outNewSpec, UInt32* outNewDirID)
{
    if (inParentRef == nullptr || (inName == nullptr && inNameLength > 0))
        return paramErr;
    return CreateItem(inParentRef, {inName, inNameLength}, inWhichInfo, inCatalogInfo, true, outNewRef, outNewSpec,
                      outNewDirID);
}

OSErr FSDeleteObject(const FSRef* inRef)
{
    if (inRef == nullptr)
        return paramErr;
    ItemLocation item;
    if (OSErr status = LocateItem(inRef, item, Tracking::kByName); status != noErr)
        return status;
    if (OSErr status = CheckChangeable(item); status != noErr)
        return status;
    if (OpenForkFlags(item.key) & kFSNodeForkOpenMask)
        return fBsyErr;
    OSErr status = item.IsDirectory()                                     ? RemoveFolder(item)
                   : ::unlinkat(item.Folder(), item.name.c_str(), 0) == 0 ? noErr
                                                                          : LastStatus();
    if (status != noErr)
        return status;
    RemoveCompanionIn(item.Folder(), item.parentKey, item.name);
    ItemDeleted(item.key);
    return noErr;
}

OSErr FSRenameUnicode(const FSRef* inRef, UniCharCount inNameLength, const UniChar* inName, TextEncoding,
                      FSRef* outNewRef)
{
    if (inRef == nullptr || (inName == nullptr && inNameLength > 0))
        return paramErr;
    ItemLocation item;
    std::string name;
    if (OSErr status = LocateItem(inRef, item); status != noErr)
        return status;
    if (OSErr status = CheckChangeable(item); status != noErr)
        return status;
    if (OSErr status = DiskNameForNewItem({inName, inNameLength}, name); status != noErr)
        return status;
    if (name != item.name) {
        CompanionMove companion(item.Folder(), item.name, item.Folder(), name);
        if (OSErr status = RenameNoReplace(item.Folder(), item.name, item.Folder(), name); status != noErr)
            return status;
        companion.Moved();
        ItemMoved(item.key, item.parentKey, name);
    }
    if (outNewRef)
        *outNewRef = *inRef;
    return noErr;
}

OSErr FSMoveObject(const FSRef* inRef, const FSRef* inDestDirectory, FSRef* outNewRef)
{
    if (inRef == nullptr || inDestDirectory == nullptr)
        return paramErr;
    ItemLocation item, destination;
    if (OSErr status = LocateItem(inRef, item); status != noErr)
        return status;
    if (OSErr status = LocateFolder(inDestDirectory, destination); status != noErr)
        return status;
    if (item.key.device != destination.key.device)
        return diffVolErr;
    if (OSErr status = CheckChangeable(item); status != noErr)
        return status;
    if (!(destination.key == item.parentKey)) {
        CompanionMove companion(item.Folder(), item.name, destination.Self(), item.name);
        if (OSErr status = RenameNoReplace(item.Folder(), item.name, destination.Self(), item.name); status != noErr)
            return status;
        companion.Moved();
        ItemMoved(item.key, destination.key, item.name);
    }
    if (outNewRef)
        *outNewRef = *inRef;
    return noErr;
}

OSErr FSExchangeObjects(const FSRef* inRef, const FSRef* inDestRef)
{
    if (inRef == nullptr || inDestRef == nullptr)
        return paramErr;
    ItemLocation first, second;
    if (OSErr status = LocateItem(inRef, first); status != noErr)
        return status;
    if (OSErr status = LocateItem(inDestRef, second); status != noErr)
        return status;
    if (first.IsDirectory() || second.IsDirectory())
        return notAFileErr;
    if (first.key.device != second.key.device)
        return diffVolErr;
    if (first.IsLocked() || second.IsLocked())
        return fLckdErr;
    if (::renameat2(first.Folder(), first.name.c_str(), second.Folder(), second.name.c_str(), RENAME_EXCHANGE) != 0)
        return LastStatus();
    SwapCompanions(first.Folder(), first.name, second.Folder(), second.name);
    ItemMoved(first.key, second.parentKey, second.name);
    ItemMoved(second.key, first.parentKey, first.name);
    return noErr;
}

OSStatus FNNotify(const FSRef* inRef, FNMessage, OptionBits)
{
    return inRef == nullptr ? OSStatus(paramErr) : OSStatus(noErr);
}
