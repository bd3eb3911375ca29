#include <CoreFoundation/CFUserFolders.h>

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace cf {

namespace {

// A field of this user's password database entry; empty when there is none.
std::string AccountField(char* passwd::*inField)
{
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return "";
    const char* value = found->*inField;
    return value ? value : "";
}

}  // namespace

std::string LoginName() { return AccountField(&passwd::pw_name); }

std::string HomeFolder()
{
    if (const char* home = std::getenv("HOME"); home && *home)
        return home;
    return AccountField(&passwd::pw_dir);
}

std::string XdgFolder(const char* inVariable, std::string_view inDefault)
{
    if (const char* value = std::getenv(inVariable); value && value[0] == '/')
        return value;
    std::string home = HomeFolder();
    return home.empty() ? "" : home + "/" + std::string(inDefault);
}

}  // namespace cf
