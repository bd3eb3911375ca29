// A bundle's localisations, the user's preferred ones, and the order of resource lookups.
#include "CFBundleFiles.h"
#include "CFBundleLanguages.h"
#include "CFBundleLocalizations.h"

#include <algorithm>

namespace {

using namespace cf::bundle;

constexpr std::string_view kLocalizedFolderExtension = ".lproj";

// The strings of an array beside their text, so that chosen positions map back to them.
struct Names {
    std::vector<CFStringRef> strings;
    std::vector<std::string> texts;
};

Names NamesOf(CFArrayRef inArray)
{
    Names names;
    CFIndex count = inArray ? CFArrayGetCount(inArray) : 0;
    for (CFIndex index = 0; index < count; ++index) {
        CFTypeRef value = CFArrayGetValueAtIndex(inArray, index);
        if (value && CFGetTypeID(value) == CFStringGetTypeID()) {
            names.strings.push_back(static_cast<CFStringRef>(value));
            names.texts.push_back(Text(static_cast<CFStringRef>(value)));
        }
    }
    return names;
}

CFArrayRef ArrayOf(std::span<const CFStringRef> inStrings)
{
    std::vector<const void*> values(inStrings.begin(), inStrings.end());
    return CFArrayCreate(nullptr, values.data(), CFIndex(values.size()), &kCFTypeArrayCallBacks);
}

CFArrayRef ArrayOfTexts(std::span<const std::string> inTexts)
{
    std::vector<Owned<CFStringRef>> owned;
    std::vector<CFStringRef> strings;
    for (const std::string& text : inTexts) {
        owned.emplace_back(cf::MakeString(text));
        if (!owned.back())
            return nullptr;
        strings.push_back(owned.back().Get());
    }
    return ArrayOf(strings);
}

CFArrayRef Choose(CFArrayRef inAvailable, std::span<const std::string> inLanguages,
                  std::string_view inDevelopmentRegion)
{
    Names available = NamesOf(inAvailable);
    std::vector<CFStringRef> chosen;
    for (std::size_t index : Preferred(available.texts, inLanguages, inDevelopmentRegion))
        chosen.push_back(available.strings[index]);
    return ArrayOf(chosen);
}

bool HasLanguage(std::span<const std::string> inNames, std::string_view inName)
{
    std::string wanted = CanonicalLanguage(inName);
    return std::any_of(inNames.begin(), inNames.end(),
                       [&](const std::string& inOther) { return CanonicalLanguage(inOther) == wanted; });
}

// The bundle's own spelling of a language ("English" for "en"), else the name as given.
std::string FolderNameFor(std::span<const std::string> inNames, std::string_view inName)
{
    std::string wanted = CanonicalLanguage(inName);
    for (const std::string& name : inNames)
        if (CanonicalLanguage(name) == wanted)
            return name;
    return std::string(inName);
}

std::vector<std::string> ListLocalizations(const __CFBundle& inBundle)
{
    std::vector<std::string> names;
    std::string resources = inBundle.ResourcesPath();
    for (const std::string& entry : FolderEntries(resources))
        if (entry.size() > kLocalizedFolderExtension.size() && entry.ends_with(kLocalizedFolderExtension) &&
            IsFolder(Join(resources, entry)))
            names.push_back(entry.substr(0, entry.size() - kLocalizedFolderExtension.size()));
    CFTypeRef declared = CFDictionaryGetValue(inBundle.mInfo, LocalizationsKey());
    if (declared && CFGetTypeID(declared) == CFArrayGetTypeID())
        for (const std::string& name : NamesOf(static_cast<CFArrayRef>(declared)).texts)
            if (!name.empty() && !HasLanguage(names, name))
                names.push_back(name);
    return names;
}

}  // namespace

namespace cf::bundle {

std::vector<std::string> Localizations(const __CFBundle& inBundle)
{
    std::lock_guard guard(inBundle.mLock);
    if (!inBundle.mLocalizations)
        inBundle.mLocalizations = ListLocalizations(inBundle);
    return *inBundle.mLocalizations;
}

std::vector<std::string> SearchLocalizations(const __CFBundle& inBundle)
{
    std::vector<std::string> available = Localizations(inBundle);
    std::string development = Text(inBundle.InfoString(DevelopmentRegionKey()));
    std::vector<std::string> order;
    for (std::size_t index : Preferred(available, UserLanguages(), development))
        order.push_back(available[index]);
    if (!development.empty()) {
        std::string folder = FolderNameFor(available, development);
        if (std::find(order.begin(), order.end(), folder) == order.end())
            order.push_back(std::move(folder));
    }
    return order;
}

std::vector<std::string> SearchLocalization(const __CFBundle& inBundle, std::string_view inLocalization)
{
    return {FolderNameFor(Localizations(inBundle), inLocalization)};
}

std::vector<std::string> SearchFolders(const __CFBundle& inBundle, std::span<const std::string> inLocalizations,
                                       std::string_view inSubDir)
{
    std::string resources = inBundle.ResourcesPath();
    std::vector<std::string> folders{Join(resources, inSubDir)};
    for (const std::string& localization : inLocalizations)
        folders.push_back(Join(Join(resources, localization + std::string(kLocalizedFolderExtension)), inSubDir));
    return folders;
}

std::optional<std::string> Find(std::span<const std::string> inFolders, std::string_view inFileName)
{
    for (const std::string& folder : inFolders)
        if (std::string path = Join(folder, inFileName); Exists(path))
            return path;
    return std::nullopt;
}

}  // namespace cf::bundle

CFArrayRef CFBundleCopyBundleLocalizations(CFBundleRef inBundle)
{
    return ArrayOfTexts(Localizations(Bundle(inBundle, "CFBundleCopyBundleLocalizations")));
}

CFArrayRef CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef inLocArray)
{
    if (inLocArray)
        cf::Checked<cf::Object>(inLocArray, CFArrayGetTypeID(), "CFBundleCopyPreferredLocalizationsFromArray");
    CFBundleRef main = CFBundleGetMainBundle();
    std::string development = main ? Text(CFBundleGetDevelopmentRegion(main)) : std::string();
    return Choose(inLocArray, UserLanguages(), development);
}

CFArrayRef CFBundleCopyLocalizationsForPreferences(CFArrayRef inLocArray, CFArrayRef inPrefArray)
{
    if (inLocArray)
        cf::Checked<cf::Object>(inLocArray, CFArrayGetTypeID(), "CFBundleCopyLocalizationsForPreferences");
    if (inPrefArray == nullptr)
        return Choose(inLocArray, UserLanguages(), {});
    cf::Checked<cf::Object>(inPrefArray, CFArrayGetTypeID(), "CFBundleCopyLocalizationsForPreferences");
    return Choose(inLocArray, NamesOf(inPrefArray).texts, {});
}
