#include <PortSupport/InstallFolders.h>
#include <PortSupport/InstallLocations.h>

#include <filesystem>
#include <system_error>

namespace port::install {

namespace {

bool Within(std::string_view inFolder, std::string_view inPrefix)
{
    return inFolder.starts_with(inPrefix) && (inFolder.size() == inPrefix.size() || inFolder[inPrefix.size()] == '/');
}

// A configured folder moved along with the prefix. Under /usr the configuration and state
// folders are /etc and /var rather than /usr/etc and /usr/var, in either direction.
std::string Relocated(std::string_view inFolder, std::string_view inFrom, std::string_view inTo)
{
    std::string_view tail;
    if (Within(inFolder, inFrom) && inFrom != "/")
        tail = inFolder.substr(inFrom.size());
    else if (inFrom == "/usr" && (inFolder == "/etc" || inFolder == "/var"))
        tail = inFolder;
    else
        return std::string(inFolder);
    if (inTo == "/usr" && (tail == "/etc" || tail == "/var"))
        return std::string(tail);
    return std::string(inTo) + std::string(tail);
}

Folders Configured() { return {kPrefix, kDataFolder, kConfigurationFolder, kStateFolder}; }

}  // namespace

Folders FoldersFor(std::string_view inExecutable)
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(inExecutable).parent_path();
    const fs::path prefix = folder.parent_path();
    std::error_code failed;
    if (folder.filename() != "bin" || prefix.empty() || !fs::is_directory(prefix / "lib/spindeck", failed))
        return Configured();
    return MovedTo(prefix.string());
}

Folders MovedTo(std::string_view inPrefix)
{
    return {std::string(inPrefix), Relocated(kDataFolder, kPrefix, inPrefix),
            Relocated(kConfigurationFolder, kPrefix, inPrefix), Relocated(kStateFolder, kPrefix, inPrefix)};
}

const Folders& InstalledFolders()
{
    static const Folders folders = [] {
        std::error_code failed;
        std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", failed);
        return failed ? Configured() : FoldersFor(executable.string());
    }();
    return folders;
}

}  // namespace port::install
