// Where the folder of each type lies in each domain, worked out from the environment and the
// build's installation folders at every call.
#pragma once

#include <MacTypes.h>

#include <sys/types.h>

#include <optional>
#include <string>

namespace carbon {

enum class FolderDomain { User, Installation };

struct FolderLocation {
    // The folder that holds it, which creating it makes first with its own mode: an XDG base
    // folder, the home folder, an installation folder. It may be the folder itself.
    std::string base;
    mode_t baseMode = 0700;
    std::string path;
    mode_t mode = 0755;
};

// Nothing when the domain has no folder of that type, or the user's folders cannot be told
// (no home folder).
std::optional<FolderLocation> LocateFolder(FolderDomain inDomain, OSType inType);

}  // namespace carbon
