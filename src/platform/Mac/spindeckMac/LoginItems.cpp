#include <platform/Mac/spindeckMac/LoginItems.h>

#include <Groundwork/SysWrappers/CoreFoundation/CFUtilsString.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFArray.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFDictionary.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>

#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFPreferences.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace {

using ItemList = Gx::CFArray<CFDictionaryRef>;
using Item = Gx::CFDictionary<CFStringRef, const void*>;

// The login window's own names, which it reads the list by.
CFStringRef LoginWindowDomain() { return CFSTR("loginwindow"); }
CFStringRef ItemListKey() { return CFSTR("AutoLaunchedApplicationDictionary"); }
CFStringRef PathKey() { return CFSTR("Path"); }
CFStringRef HideKey() { return CFSTR("Hide"); }

// A helper's copies are recognised by name whatever the letter case or the user's language.
constexpr CFStringCompareFlags kNameFlags = kCFCompareCaseInsensitive | kCFCompareNonliteral | kCFCompareLocalized;

struct Outcome {
    bool found = false;
    bool changed = false;
};

// The stored list, held as it was read (the first edit copies it), or an empty wrapper when
// there is none. A value that is not a list counts as none: the login window ignores it too.
ItemList CopyStoredItems()
{
    CFPropertyListRef value = CFPreferencesCopyValue(ItemListKey(), LoginWindowDomain(), kCFPreferencesCurrentUser,
                                                     kCFPreferencesAnyHost);
    if (value != nullptr && CFGetTypeID(value) != CFArrayGetTypeID()) {
        CFRelease(value);
        value = nullptr;
    }
    return ItemList(static_cast<CFArrayRef>(value), false);
}

void StoreItems(const ItemList& inItems)
{
    CFPreferencesSetValue(ItemListKey(), inItems.UseRef(), LoginWindowDomain(), kCFPreferencesCurrentUser,
                          kCFPreferencesAnyHost);
    CFPreferencesSynchronize(LoginWindowDomain(), kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
}

char FoldASCII(char16_t inUnit) { return char(inUnit >= 'A' && inUnit <= 'Z' ? inUnit + ('a' - 'A') : inUnit); }

// The helper's name prepared for ruling entries out before their URL is made, which costs
// far more than the rest of the walk: in ASCII lower case, or none when it is not ASCII.
struct NameFilter {
    std::optional<std::string> folded;

    explicit NameFilter(CFStringRef inName)
    {
        if (inName == nullptr)
            return;
        std::string name(std::size_t(CFStringGetLength(inName)), '\0');
        for (std::size_t i = 0; i < name.size(); ++i) {
            UniChar unit = CFStringGetCharacterAtIndex(inName, CFIndex(i));
            if (unit >= 0x80)
                return;
            name[i] = FoldASCII(unit);
        }
        folded = std::move(name);
    }

    // Whether the entry's stored path cannot name the helper. A URL made from an absolute
    // path takes its last component from that path, so a path without the name anywhere has
    // none in its last component either. Between ASCII texts the named comparison matches
    // only what ASCII case folding matches (other languages' rules only tell more letters
    // apart), so the test is exact for them; other texts are left to the full comparison.
    bool RulesOut(CFStringRef inPath) const
    {
        const UniChar* units = folded ? CFStringGetCharactersPtr(inPath) : nullptr;
        if (units == nullptr)
            return false;
        std::u16string_view path(reinterpret_cast<const char16_t*>(units), std::size_t(CFStringGetLength(inPath)));
        if (!path.starts_with(u'/') ||
            std::any_of(path.begin(), path.end(), [](char16_t inUnit) { return inUnit >= 0x80; }))
            return false;
        auto same = [](char16_t inUnit, char inFolded) { return FoldASCII(inUnit) == inFolded; };
        return std::search(path.begin(), path.end(), folded->begin(), folded->end(), same) == path.end();
    }
};

// The file an entry names, or an empty wrapper for one that names none (no "Path", or a
// path no URL can be made of), or whose name inFilter rules out; such entries are never
// matched and never removed.
Gx::CFURL EntryURL(CFDictionaryRef inEntry, const NameFilter& inFilter)
{
    if (CFGetTypeID(inEntry) != CFDictionaryGetTypeID())
        return {};
    CFTypeRef path = CFDictionaryGetValue(inEntry, PathKey());
    if (path == nullptr || CFGetTypeID(path) != CFStringGetTypeID() ||
        inFilter.RulesOut(static_cast<CFStringRef>(path)))
        return {};
    return Gx::CFURL(
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, static_cast<CFStringRef>(path), kCFURLPOSIXPathStyle, false),
        false);
}

bool NameContains(const Gx::CFURL& inURL, CFStringRef inName)
{
    return CFUtils::CFStringContains(inURL.GetLastPathComponent().GetRefValue(), inName, kNameFlags);
}

// Paths are compared exactly: the file system may tell letter case apart, so "Helper.app"
// and "helper.app" can be two different items.
bool SamePath(const Gx::CFURL& inURL, CFStringRef inPath)
{
    Gx::CFString path = inURL.GetFileSystemPath(kCFURLPOSIXPathStyle);
    return path.IsValid() && path.CompareTo(inPath) == kCFCompareEqualTo;
}

// An entry of the item itself. For the moving actions "found" means "found last": an earlier
// copy clears it again, so that a fresh entry is appended after the one already last.
void EditOwnEntry(ItemList& ioItems, CFIndex inIndex, UpdateLoginItemsAction inAction, Outcome& ioOutcome)
{
    switch (inAction) {
    case kRemoveIfFound:
        ioOutcome.found = true;
        ioItems.RemoveValueAt(inIndex);
        ioOutcome.changed = true;
        break;
    case kAddToEndIfNotFoundButMoveToEndIfPresent:
    case kMoveToEndIfPresent:
        if (inIndex == ioItems.GetCount() - 1) {
            ioOutcome.found = true;
        } else {
            ioOutcome.found = false;
            ioItems.RemoveValueAt(inIndex);
            ioOutcome.changed = true;
        }
        break;
    default:
        ioOutcome.found = true;
        break;
    }
}

// From the last entry to the first, so that a removal never shifts an entry still to be seen.
Outcome EditEntries(ItemList& ioItems, CFStringRef inOwnPath, CFStringRef inOldVariation,
                    UpdateLoginItemsAction inAction)
{
    Outcome outcome;
    const NameFilter filter(inOldVariation);
    for (CFIndex index = ioItems.GetCount() - 1; index >= 0; --index) {
        Gx::CFURL url = EntryURL(ioItems.GetValueAt(index), filter);
        if (!url.IsValid() || (inOldVariation != nullptr && !NameContains(url, inOldVariation)))
            continue;
        if (SamePath(url, inOwnPath)) {
            EditOwnEntry(ioItems, index, inAction, outcome);
        } else if (inOldVariation != nullptr) {
            // Another copy of the same helper (an older version, a moved installation).
            ioItems.RemoveValueAt(index);
            outcome.changed = true;
        }
    }
    return outcome;
}

// Exactly the two keys the login window writes itself.
void AppendEntry(ItemList& ioItems, CFStringRef inOwnPath)
{
    Item item(2, &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    item.SetValue(PathKey(), inOwnPath);
    item.SetValue(HideKey(), kCFBooleanFalse);
    ioItems.AppendValue(item.GetRefValue());
}

bool Appends(UpdateLoginItemsAction inAction)
{
    return inAction == kAddIfNotFound || inAction == kAddToEndIfNotFoundButMoveToEndIfPresent ||
           inAction == kMoveToEndIfPresent;
}

}  // namespace

bool UpdateLoginItems(CFURLRef inFile, CFStringRef inOldVariation, UpdateLoginItemsAction action)
{
    Gx::CFURL url(CFURLCopyAbsoluteURL(inFile), false);
    Gx::CFString ownPath = url.GetFileSystemPath(kCFURLPOSIXPathStyle);

    Outcome outcome;
    ItemList items = CopyStoredItems();
    if (items.IsValid())
        outcome = EditEntries(items, ownPath.UseRef(), inOldVariation, action);
    else
        items = ItemList(1, &kCFTypeArrayCallBacks);

    if (!outcome.found && Appends(action)) {
        AppendEntry(items, ownPath.UseRef());
        outcome.found = true;
        outcome.changed = true;
    }
    if (outcome.changed)
        StoreItems(items);
    return action == kJustSeeIfItsThere ? outcome.found : outcome.changed;
}
