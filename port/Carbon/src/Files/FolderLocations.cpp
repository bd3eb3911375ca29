// The folder types on the XDG base directories (the user's) and on the installation's folders.
#include "FolderLocations.h"

#include <Carbon/Folders.h>
#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CFUserFolders.h>
#include <PortSupport/InstallFolders.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string_view>

namespace carbon {

namespace {

constexpr mode_t kPrivate = 0700;
constexpr mode_t kShared = 0755;
// The installation keeps its own kinds of folders under this name.
constexpr std::string_view kProjectFolder = "spindeck";

std::string Environment(const char* inName)
{
    const char* value = std::getenv(inName);
    return value ? value : "";
}

std::optional<FolderLocation> Inside(std::string inBase, mode_t inBaseMode, std::string_view inTail, mode_t inMode)
{
    if (inBase.empty())
        return std::nullopt;
    std::string path = inTail.empty() ? inBase : inBase + "/" + std::string(inTail);
    return FolderLocation{std::move(inBase), inBaseMode, std::move(path), inMode};
}

std::string Parent(const std::string& inPath) { return inPath.substr(0, inPath.rfind('/')); }

// The folder where CFPreferences keeps the files of the current user (or of every user), so
// that the two never disagree: the folder of the global domain's file.
std::optional<FolderLocation> PreferencesFolder(CFStringRef inUser, mode_t inMode)
{
    CFStringRef global = _CFPreferencesCopyDomainPath(kCFPreferencesAnyApplication, inUser, kCFPreferencesAnyHost);
    if (global == nullptr)
        return std::nullopt;
    std::string folder = Parent(cf::UTF8(global));
    CFRelease(global);
    return FolderLocation{Parent(folder), inMode, folder, inMode};
}

// A value of user-dirs.dirs: "$HOME/name" or "/absolute/path", in double quotes, with
// backslashes escaping the character after them.
std::optional<std::string> RecordedValue(std::string_view inText, const std::string& inHome)
{
    if (inText.empty() || inText.front() != '"')
        return std::nullopt;
    std::string value;
    for (std::size_t i = 1; i < inText.size(); ++i) {
        if (inText[i] == '"') {
            if (value == "$HOME" || value.starts_with("$HOME/"))
                return inHome + value.substr(5);
            return value.starts_with('/') ? std::optional(value) : std::nullopt;
        }
        if (inText[i] == '\\' && i + 1 < inText.size())
            ++i;
        value += inText[i];
    }
    return std::nullopt;
}

// The folder that xdg-user-dirs recorded for a key such as XDG_DESKTOP_DIR, else the
// conventional one in the home folder.
std::string UserFolder(std::string_view inKey, std::string_view inDefault, const std::string& inHome)
{
    std::ifstream file(cf::XdgFolder("XDG_CONFIG_HOME", ".config") + "/user-dirs.dirs");
    std::optional<std::string> recorded;
    for (std::string line; std::getline(file, line);) {
        std::string_view text(line);
        text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
        if (text.starts_with(inKey) && text.substr(inKey.size()).starts_with('='))
            if (auto value = RecordedValue(text.substr(inKey.size() + 1), inHome))
                recorded = value;  // as in the shell that reads the file, the last one counts
    }
    return recorded ? *recorded : inHome + "/" + std::string(inDefault);
}

std::optional<FolderLocation> PersonalFolder(const std::string& inHome, std::string_view inKey,
                                             std::string_view inDefault)
{
    if (inHome.empty())
        return std::nullopt;
    return FolderLocation{inHome, kPrivate, UserFolder(inKey, inDefault, inHome), kShared};
}

std::string TemporaryFolder()
{
    std::string folder = Environment("TMPDIR");
    return !folder.empty() && folder.front() == '/' ? folder : "/tmp";
}

std::optional<FolderLocation> UserDomainFolder(OSType inType)
{
    const std::string home = cf::HomeFolder();
    switch (inType) {
    case kApplicationSupportFolderType:
        return Inside(cf::XdgFolder("XDG_DATA_HOME", ".local/share"), kPrivate, "", kPrivate);
    case kPreferencesFolderType:
        return PreferencesFolder(kCFPreferencesCurrentUser, kPrivate);
    case kPreferencePanesFolderType:
        return Inside(cf::XdgFolder("XDG_DATA_HOME", ".local/share"), kPrivate, "preference-panes", kShared);
    case kApplicationsFolderType:
        return Inside(cf::XdgFolder("XDG_DATA_HOME", ".local/share"), kPrivate, "application-bundles", kShared);
    case kFontsFolderType:
        return Inside(cf::XdgFolder("XDG_DATA_HOME", ".local/share"), kPrivate, "fonts", kShared);
    case kCachedDataFolderType:
        return Inside(cf::XdgFolder("XDG_CACHE_HOME", ".cache"), kPrivate, "", kPrivate);
    case kLogsFolderType:
        return Inside(cf::XdgFolder("XDG_STATE_HOME", ".local/state"), kPrivate, "log", kPrivate);
    case kTemporaryFolderType:
        return Inside(TemporaryFolder(), kPrivate, "", kPrivate);
    case kDesktopFolderType:
        return PersonalFolder(home, "XDG_DESKTOP_DIR", "Desktop");
    case kDocumentsFolderType:
        return PersonalFolder(home, "XDG_DOCUMENTS_DIR", "Documents");
    case kCurrentUserFolderType:
        return Inside(home, kPrivate, "", kPrivate);
    default:
        return std::nullopt;
    }
}

std::optional<FolderLocation> InstallationFolder(OSType inType)
{
    const port::install::Folders& installed = port::install::InstalledFolders();
    const std::string lib = installed.prefix + "/lib/" + std::string(kProjectFolder);
    const std::string& data = installed.data;
    const std::string& state = installed.state;
    switch (inType) {
    case kApplicationSupportFolderType:
        return Inside(data, kShared, "", kShared);
    case kPreferencesFolderType:
        return PreferencesFolder(kCFPreferencesAnyUser, kShared);
    case kPreferencePanesFolderType:
        return Inside(lib, kShared, "preference-panes", kShared);
    case kApplicationsFolderType:
        return Inside(lib, kShared, "application-bundles", kShared);
    case kFontsFolderType:
        return Inside(data, kShared, "fonts", kShared);
    case kCachedDataFolderType:
        return Inside(state, kShared, "cache/" + std::string(kProjectFolder), kShared);
    case kLogsFolderType:
        return Inside(state, kShared, "log/" + std::string(kProjectFolder), kShared);
    case kTemporaryFolderType:
        return Inside(TemporaryFolder(), kPrivate, "", kPrivate);
    default:
        return std::nullopt;
    }
}

}  // namespace

std::optional<FolderLocation> LocateFolder(FolderDomain inDomain, OSType inType)
{
    return inDomain == FolderDomain::User ? UserDomainFolder(inType) : InstallationFolder(inType);
}

}  // namespace carbon
