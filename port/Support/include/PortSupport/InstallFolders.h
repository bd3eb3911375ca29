// The installation's folders as the running program finds them. An installed program (one in
// the bin folder of a prefix that holds the project's lib/spindeck) takes them from the prefix
// it runs from, so that an installation can be moved, or unpacked anywhere, as a whole; any
// other program (the build tree's, the tests) uses the folders the build was configured with.
#pragma once

#include <string>
#include <string_view>

namespace port::install {

struct Folders {
    std::string prefix;
    std::string data;           // share
    std::string configuration;  // etc
    std::string state;          // var
};

// The running program's, found once.
const Folders& InstalledFolders();

// A program at inExecutable's: what InstalledFolders answers for it.
Folders FoldersFor(std::string_view inExecutable);

// The configured folders, moved along with the prefix to inPrefix.
Folders MovedTo(std::string_view inPrefix);

}  // namespace port::install
