// Localised strings: the string tables of a bundle's preferred localisation.
#include "CFBundleFiles.h"
#include "CFBundleLocalizations.h"

namespace {

using namespace cf::bundle;

// The table's file in the order of every resource lookup, read once per bundle.
CFDictionaryRef TableOf(const __CFBundle& inBundle, CFStringRef inTableName)
{
    std::string name = inTableName && CFStringGetLength(inTableName) > 0 ? Text(inTableName) : "Localizable";
    std::vector<std::string> folders = SearchFolders(inBundle, SearchLocalizations(inBundle), {});
    std::optional<std::string> path = Find(folders, name + ".strings");
    return path ? inBundle.Table(*path) : nullptr;
}

CFStringRef Retained(CFStringRef inString) { return static_cast<CFStringRef>(CFRetain(inString)); }

}  // namespace

CFStringRef CFBundleCopyLocalizedString(CFBundleRef inBundle, CFStringRef inKey, CFStringRef inValue,
                                        CFStringRef inTableName)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleCopyLocalizedString");
    if (inKey == nullptr)
        return inValue ? Retained(inValue) : CFSTR("");
    if (CFDictionaryRef table = TableOf(bundle, inTableName)) {
        CFTypeRef text = CFDictionaryGetValue(table, inKey);
        if (text && CFGetTypeID(text) == CFStringGetTypeID())
            return Retained(static_cast<CFStringRef>(text));
    }
    return Retained(inValue && CFStringGetLength(inValue) > 0 ? inValue : inKey);
}
