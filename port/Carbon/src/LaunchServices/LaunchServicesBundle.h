// What Launch Services needs to know of a bundle folder.
#pragma once

#include <optional>
#include <string>

namespace carbon::ls {

struct BundleFacts {
    bool isApplication = true;    // it declares no package type, or 'APPL'
    bool backgroundOnly = false;  // LSBackgroundOnly: it has no user interface
    std::string executable;       // Contents/MacOS/<CFBundleExecutable>; empty when undeclared
    std::string name;             // CFBundleName, localised; empty when undeclared
};

// Whether a folder is a bundle that Launch Services opens as one: it has Contents/Info.plist.
bool IsBundleFolder(const std::string& inPath);

// Nothing when the folder cannot be read as a bundle.
std::optional<BundleFacts> ReadBundle(const std::string& inPath);

}  // namespace carbon::ls
