// File-system helpers of the bundle calls.
#include "CFBundleFiles.h"

#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFRuntime.h>
#include <PortSupport/UniqueHandle.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

#include <dirent.h>
#include <sys/stat.h>

namespace cf::bundle {

std::string Join(std::string_view inFolder, std::string_view inName)
{
    std::string path(inFolder);
    if (inName.empty())
        return path;
    if (!path.ends_with('/'))
        path.push_back('/');
    path.append(inName);
    return path;
}

std::string_view LastComponent(std::string_view inPath)
{
    std::size_t slash = inPath.rfind('/');
    return slash == std::string_view::npos ? inPath : inPath.substr(slash + 1);
}

std::string_view Parent(std::string_view inPath)
{
    std::size_t slash = inPath.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    return slash == 0 ? inPath.substr(0, 1) : inPath.substr(0, slash);
}

bool Exists(const std::string& inPath)
{
    struct stat status;
    return ::stat(inPath.c_str(), &status) == 0;
}

bool IsFolder(const std::string& inPath)
{
    struct stat status;
    return ::stat(inPath.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<std::string> Resolved(const std::string& inPath)
{
    port::UniqueMemory<char> resolved(::realpath(inPath.c_str(), nullptr));
    if (!resolved)
        return std::nullopt;
    return std::string(resolved.get());
}

std::vector<std::string> FolderEntries(const std::string& inPath)
{
    std::vector<std::string> names;
    port::UniqueHandle<DIR, closedir> folder(::opendir(inPath.c_str()));
    if (!folder)
        return names;
    while (const dirent* entry = ::readdir(folder.get())) {
        std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<std::string> ReadFile(const std::string& inPath)
{
    std::ifstream file(inPath, std::ios::binary);
    if (!file)
        return std::nullopt;
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad())
        return std::nullopt;
    return bytes;
}

CFDictionaryRef ReadDictionary(CFAllocatorRef inAllocator, const std::string& inPath)
{
    std::optional<std::string> bytes = ReadFile(inPath);
    if (!bytes)
        return nullptr;
    const auto* start = reinterpret_cast<const UInt8*>(bytes->data());
    Owned<CFDataRef> data(CFDataCreate(inAllocator, start, CFIndex(bytes->size())));
    if (!data)
        return nullptr;
    Owned<CFPropertyListRef> list(
        CFPropertyListCreateWithData(inAllocator, data.Get(), kCFPropertyListImmutable, nullptr, nullptr));
    if (!list || CFGetTypeID(list.Get()) != CFDictionaryGetTypeID())
        return nullptr;
    return static_cast<CFDictionaryRef>(list.Take());
}

std::optional<std::string> PathOf(CFURLRef inURL)
{
    auto buffer = std::make_unique<UInt8[]>(PATH_MAX);
    if (!CFURLGetFileSystemRepresentation(inURL, true, buffer.get(), PATH_MAX))
        return std::nullopt;
    return std::string(reinterpret_cast<const char*>(buffer.get()));
}

CFURLRef MakeURL(CFAllocatorRef inAllocator, const std::string& inPath, bool inIsFolder)
{
    return CFURLCreateFromFileSystemRepresentation(inAllocator, reinterpret_cast<const UInt8*>(inPath.data()),
                                                   CFIndex(inPath.size()), inIsFolder);
}

std::string Text(CFStringRef inString) { return inString ? cf::UTF8(inString) : std::string(); }

}  // namespace cf::bundle
