#include <CoreFoundation/CFUserFolders.h>

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace cf {

std::string HomeFolder()
{
    if (const char* home = std::getenv("HOME"); home && *home)
        return home;
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && found->pw_dir)
        return found->pw_dir;
    return "";
}

std::string XdgFolder(const char* inVariable, std::string_view inDefault)
{
    if (const char* value = std::getenv(inVariable); value && value[0] == '/')
        return value;
    std::string home = HomeFolder();
    return home.empty() ? "" : home + "/" + std::string(inDefault);
}

}  // namespace cf
