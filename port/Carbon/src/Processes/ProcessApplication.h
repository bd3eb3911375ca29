// The application file of a process: its executable, and the bundle that holds it.
#pragma once

#include <MacTypes.h>

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace carbon {

// The path of the executable a process runs (/proc/<pid>/exe), which the file layer turns
// into the FSRef of processAppRef. Nothing when it cannot be read, for instance for another
// user's process.
std::optional<std::string> ProcessApplicationPath(pid_t inPID);

// The bundle folder of an executable that lives in <bundle>/Contents/MacOS/.
std::optional<std::string_view> EnclosingBundlePath(std::string_view inExecutablePath);

// The name a process goes by: its bundle's name without the extension when its executable
// lives in a bundle, else the executable's file name.
std::string ApplicationName(std::string_view inExecutablePath);

// The package type and signature a bundle's Info.plist declares; 'APPL' and '????' where
// it declares none.
struct BundleCodes {
    OSType type;
    OSType signature;
};
BundleCodes ReadBundleCodes(std::string_view inBundlePath);

}  // namespace carbon
