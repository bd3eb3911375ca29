// A bundle's locations: its folders, executables and resources.
#include "CFBundleFiles.h"
#include "CFBundleLocalizations.h"

#include <set>

namespace {

using namespace cf::bundle;

CFURLRef URLOf(const __CFBundle& inBundle, const std::string& inPath)
{
    return MakeURL(inBundle.Allocator(), inPath, IsFolder(inPath));
}

CFURLRef FolderURL(CFBundleRef inBundle, const char* inCall, std::string_view inName)
{
    const __CFBundle& bundle = Bundle(inBundle, inCall);
    return MakeURL(bundle.Allocator(), Join(bundle.SupportPath(), inName), true);
}

// Executables lie in "Contents/MacOS", or at the top of a bundle without "Contents".
std::string ExecutablesFolder(const __CFBundle& inBundle)
{
    return inBundle.mLayout == __CFBundle::Layout::Contents ? Join(inBundle.SupportPath(), "MacOS") : inBundle.mPath;
}

// Without CFBundleExecutable, the executable is named as the bundle without its extension.
std::string ExecutableName(const __CFBundle& inBundle)
{
    if (CFStringRef name = inBundle.InfoString(ExecutableKey()))
        return Text(name);
    std::string_view folder = LastComponent(inBundle.mPath);
    std::size_t dot = folder.rfind('.');
    return std::string(dot == 0 || dot == std::string_view::npos ? folder : folder.substr(0, dot));
}

CFURLRef ExistingFileURL(const __CFBundle& inBundle, const std::string& inPath)
{
    return Exists(inPath) && !IsFolder(inPath) ? MakeURL(inBundle.Allocator(), inPath, false) : nullptr;
}

std::string FileName(CFStringRef inName, CFStringRef inType)
{
    std::string name = Text(inName);
    std::string type = Text(inType);
    if (type.empty())
        return name;
    return type.starts_with('.') ? name + type : name + '.' + type;
}

bool HasType(std::string_view inEntry, std::string_view inType)
{
    if (inType.starts_with('.'))
        inType.remove_prefix(1);
    if (inType.empty())
        return true;
    std::size_t dot = inEntry.size() - inType.size() - 1;
    return inEntry.size() > inType.size() + 1 && inEntry.ends_with(inType) && inEntry[dot] == '.';
}

CFURLRef FindResource(const __CFBundle& inBundle, std::span<const std::string> inLocalizations, CFStringRef inName,
                      CFStringRef inType, CFStringRef inSubDir)
{
    if (inName == nullptr)
        return nullptr;
    std::vector<std::string> folders = SearchFolders(inBundle, inLocalizations, Text(inSubDir));
    std::optional<std::string> path = Find(folders, FileName(inName, inType));
    return path ? URLOf(inBundle, *path) : nullptr;
}

// One URL per name: a name found in an earlier folder hides the same name further on.
CFArrayRef FindResources(const __CFBundle& inBundle, std::span<const std::string> inLocalizations, CFStringRef inType,
                         CFStringRef inSubDir)
{
    Owned<CFMutableArrayRef> found(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    if (!found)
        return nullptr;
    std::string type = Text(inType);
    std::set<std::string> seen;
    for (const std::string& folder : SearchFolders(inBundle, inLocalizations, Text(inSubDir)))
        for (const std::string& entry : FolderEntries(folder)) {
            if (entry.ends_with(".lproj") || !HasType(entry, type) || !seen.insert(entry).second)
                continue;
            Owned<CFURLRef> url(URLOf(inBundle, Join(folder, entry)));
            if (url)
                CFArrayAppendValue(found.Get(), url.Get());
        }
    return found.Take();
}

}  // namespace

CFURLRef CFBundleCopyBundleURL(CFBundleRef inBundle)
{
    return static_cast<CFURLRef>(CFRetain(Bundle(inBundle, "CFBundleCopyBundleURL").mURL));
}

CFURLRef CFBundleCopyExecutableURL(CFBundleRef inBundle)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleCopyExecutableURL");
    // The main bundle's executable is the running program unless its information names
    // another one: a bare tool's folder is named after nothing in particular.
    bool isMain = !bundle.mProgram.empty();
    if (isMain && bundle.InfoString(ExecutableKey()) == nullptr)
        return MakeURL(bundle.Allocator(), bundle.mProgram, false);
    CFURLRef named = ExistingFileURL(bundle, Join(ExecutablesFolder(bundle), ExecutableName(bundle)));
    return named || !isMain ? named : MakeURL(bundle.Allocator(), bundle.mProgram, false);
}

CFURLRef CFBundleCopyAuxiliaryExecutableURL(CFBundleRef inBundle, CFStringRef inExecutableName)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleCopyAuxiliaryExecutableURL");
    if (inExecutableName == nullptr)
        return nullptr;
    std::string path = Join(ExecutablesFolder(bundle), Text(inExecutableName));
    return Exists(path) ? URLOf(bundle, path) : nullptr;
}

CFURLRef CFBundleCopySupportFilesDirectoryURL(CFBundleRef inBundle)
{
    return FolderURL(inBundle, "CFBundleCopySupportFilesDirectoryURL", {});
}

CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef inBundle)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleCopyResourcesDirectoryURL");
    return MakeURL(bundle.Allocator(), bundle.ResourcesPath(), true);
}

CFURLRef CFBundleCopyPrivateFrameworksURL(CFBundleRef inBundle)
{
    return FolderURL(inBundle, "CFBundleCopyPrivateFrameworksURL", "Frameworks");
}

CFURLRef CFBundleCopySharedFrameworksURL(CFBundleRef inBundle)
{
    return FolderURL(inBundle, "CFBundleCopySharedFrameworksURL", "SharedFrameworks");
}

CFURLRef CFBundleCopySharedSupportURL(CFBundleRef inBundle)
{
    return FolderURL(inBundle, "CFBundleCopySharedSupportURL", "SharedSupport");
}

CFURLRef CFBundleCopyBuiltInPlugInsURL(CFBundleRef inBundle)
{
    return FolderURL(inBundle, "CFBundleCopyBuiltInPlugInsURL", "PlugIns");
}

CFURLRef CFBundleCopyResourceURL(CFBundleRef inBundle, CFStringRef inResourceName, CFStringRef inResourceType,
                                 CFStringRef inSubDirName)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleCopyResourceURL");
    return FindResource(bundle, SearchLocalizations(bundle), inResourceName, inResourceType, inSubDirName);
}

CFArrayRef CFBundleCopyResourceURLsOfType(CFBundleRef inBundle, CFStringRef inResourceType, CFStringRef inSubDirName)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleCopyResourceURLsOfType");
    return FindResources(bundle, SearchLocalizations(bundle), inResourceType, inSubDirName);
}

CFURLRef CFBundleCopyResourceURLForLocalization(CFBundleRef inBundle, CFStringRef inResourceName,
                                                CFStringRef inResourceType, CFStringRef inSubDirName,
                                                CFStringRef inLocalizationName)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleCopyResourceURLForLocalization");
    if (inLocalizationName == nullptr)
        return nullptr;
    return FindResource(bundle, SearchLocalization(bundle, Text(inLocalizationName)), inResourceName, inResourceType,
                        inSubDirName);
}

CFArrayRef CFBundleCopyResourceURLsOfTypeForLocalization(CFBundleRef inBundle, CFStringRef inResourceType,
                                                         CFStringRef inSubDirName, CFStringRef inLocalizationName)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleCopyResourceURLsOfTypeForLocalization");
    if (inLocalizationName == nullptr)
        return nullptr;
    return FindResources(bundle, SearchLocalization(bundle, Text(inLocalizationName)), inResourceType, inSubDirName);
}
