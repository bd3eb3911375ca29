// The user's login name, home folder and XDG base directories. A port extension:
// preferences and the Folder Manager find the user's folders the same way. The environment is read on every
// call, so that a program (or a test) that changes $HOME or an XDG variable sees it at once.
#pragma once

#include <string>
#include <string_view>

namespace cf {

// The name in the password database of the user this process runs as; empty when it has
// no entry.
std::string LoginName();

// $HOME, else the password database's entry; empty when neither knows.
std::string HomeFolder();

// An XDG base directory: the variable when it holds an absolute path, as the XDG rules say,
// else inDefault below home; empty when there is no home.
std::string XdgFolder(const char* inVariable, std::string_view inDefault);

}  // namespace cf
