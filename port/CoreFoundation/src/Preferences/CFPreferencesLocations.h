// Where each preferences domain lives: one property-list file per application, user and
// host. The current user's files are under $XDG_CONFIG_HOME/preferences (ByHost/ for this
// host only); the files for every user are read-only ones under the installation's etc folder.
#pragma once

#include <CoreFoundation/CFString.h>

#include <optional>
#include <string>

namespace cf::prefs {

struct DomainLocation {
    std::string path;
    bool writable = false;
};

// The domain's file, or nothing when the arguments name a domain that is not kept here
// (another user, another host, an application name that is not a file name). The
// arguments must be strings; inCall names the caller when they are not.
std::optional<DomainLocation> Locate(CFStringRef inApplicationID, CFStringRef inUserName, CFStringRef inHostName,
                                     const char* inCall);

// The identifier that kCFPreferencesCurrentApplication stands for.
std::string CurrentApplicationID();

}  // namespace cf::prefs
