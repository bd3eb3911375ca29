// Domain names and file paths. The environment is read on every call, so that a program
// (or a test) that changes $XDG_CONFIG_HOME or $HOME sees the change at once.
#include "CFPreferencesLocations.h"

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CFUserFolders.h>
#include <PortSupport/InstallFolders.h>

#include <unistd.h>

#include <array>
#include <cerrno>

namespace cf::prefs {

namespace {

// The domain of kCFPreferencesAnyApplication, under the name the platform gives it.
constexpr const char* kGlobalDomain = ".GlobalPreferences";

std::string UserFolder()
{
    std::string config = cf::XdgFolder("XDG_CONFIG_HOME", ".config");
    return config.empty() ? "" : config + "/preferences";
}

// Preferences for every user are read from the installation's etc folder.
std::string SystemFolder() { return port::install::InstalledFolders().configuration + "/preferences"; }

std::string HostName()
{
    std::array<char, 256> name{};
    if (gethostname(name.data(), name.size() - 1) != 0)
        return "localhost";
    std::string host = name.data();
    return host.substr(0, host.find('.'));
}

bool Is(CFStringRef inString, CFStringRef inConstant) { return CFEqual(inString, inConstant); }

// A domain name becomes a file name in a known folder, so it must not name another folder.
bool IsUsableDomainName(const std::string& inName)
{
    return !inName.empty() && inName != "." && inName != ".." && inName.find('/') == std::string::npos &&
           inName.find('\0') == std::string::npos;
}

std::string DomainName(CFStringRef inApplicationID)
{
    if (Is(inApplicationID, kCFPreferencesAnyApplication))
        return kGlobalDomain;
    if (Is(inApplicationID, kCFPreferencesCurrentApplication))
        return CurrentApplicationID();
    return UTF8(inApplicationID);
}

}  // namespace

// The main bundle's identifier names the application; a bare tool without one is named by
// its executable's file name.
std::string CurrentApplicationID()
{
    if (CFStringRef identifier = CFBundleGetIdentifier(CFBundleGetMainBundle()))
        return UTF8(identifier);
    std::array<char, 4096> path{};
    ssize_t length = readlink("/proc/self/exe", path.data(), path.size() - 1);
    std::string executable = length > 0 ? std::string(path.data(), std::size_t(length)) : program_invocation_name;
    return executable.substr(executable.rfind('/') + 1);
}

std::optional<DomainLocation> Locate(CFStringRef inApplicationID, CFStringRef inUserName, CFStringRef inHostName,
                                     const char* inCall)
{
    for (CFStringRef argument : {inApplicationID, inUserName, inHostName})
        Checked<Object>(argument, kTypeIDString, inCall);
    std::string domain = DomainName(inApplicationID);
    if (!IsUsableDomainName(domain))
        return std::nullopt;

    DomainLocation location;
    if (Is(inUserName, kCFPreferencesCurrentUser)) {
        location = {UserFolder(), true};
    } else if (Is(inUserName, kCFPreferencesAnyUser)) {
        location = {SystemFolder(), false};
    } else if (UTF8(inUserName) == cf::LoginName()) {
        location = {UserFolder(), true};
    } else {
        return std::nullopt;
    }
    if (location.path.empty())
        return std::nullopt;

    if (Is(inHostName, kCFPreferencesAnyHost))
        location.path += "/" + domain + ".plist";
    else if (Is(inHostName, kCFPreferencesCurrentHost) || UTF8(inHostName) == HostName())
        location.path += "/ByHost/" + domain + "." + HostName() + ".plist";
    else
        return std::nullopt;
    return location;
}

}  // namespace cf::prefs
