// Finding a process's application: its executable, the bundle around it, the name it goes by.
#include "ProcessApplication.h"

#include <PortSupport/UniqueDescriptor.h>

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFString.h>
#include <PortSupport/Owned.h>

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

namespace carbon {

namespace {

constexpr std::string_view kDeletedSuffix = " (deleted)";
constexpr std::string_view kExecutableFolder = "/Contents/MacOS/";

std::string_view LastComponent(std::string_view inPath)
{
    std::size_t slash = inPath.rfind('/');
    return slash == std::string_view::npos ? inPath : inPath.substr(slash + 1);
}

// An information dictionary is a few kilobytes; anything far larger is not one.
constexpr std::size_t kLargestInfoFile = 1 << 20;

std::optional<std::vector<UInt8>> ReadSmallFile(const std::string& inPath)
{
    port::UniqueDescriptor file(::open(inPath.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        return std::nullopt;
    std::vector<UInt8> bytes(kLargestInfoFile + 1);
    std::size_t filled = 0;
    ssize_t length;
    while (filled < bytes.size() && (length = ::read(file.Get(), bytes.data() + filled, bytes.size() - filled)) > 0)
        filled += std::size_t(length);
    if (filled > kLargestInfoFile)
        return std::nullopt;
    bytes.resize(filled);
    return bytes;
}

// A four-character code written as a string of four characters.
std::optional<OSType> CodeOf(CFTypeRef inValue)
{
    if (inValue == nullptr || CFGetTypeID(inValue) != CFStringGetTypeID())
        return std::nullopt;
    char text[8];
    if (!CFStringGetCString(static_cast<CFStringRef>(inValue), text, sizeof text, kCFStringEncodingMacRoman) ||
        std::strlen(text) != 4)
        return std::nullopt;
    return FourCharCode(UInt8(text[0])) << 24 | FourCharCode(UInt8(text[1])) << 16 | FourCharCode(UInt8(text[2])) << 8 |
           FourCharCode(UInt8(text[3]));
}

}  // namespace

std::optional<std::string> ProcessApplicationPath(pid_t inPID)
{
    char link[32];
    std::snprintf(link, sizeof link, "/proc/%d/exe", int(inPID));
    char target[PATH_MAX];
    ssize_t length = ::readlink(link, target, sizeof target);
    if (length <= 0 || std::size_t(length) == sizeof target)
        return std::nullopt;
    std::string path(target, std::size_t(length));
    // An executable replaced or removed while it runs still names the file it was.
    if (path.ends_with(kDeletedSuffix))
        path.resize(path.size() - kDeletedSuffix.size());
    return path;
}

std::optional<std::string_view> EnclosingBundlePath(std::string_view inExecutablePath)
{
    std::size_t slash = inExecutablePath.rfind('/');
    if (slash == std::string_view::npos || slash + 1 < kExecutableFolder.size())
        return std::nullopt;
    std::string_view folder = inExecutablePath.substr(0, slash + 1);
    if (!folder.ends_with(kExecutableFolder))
        return std::nullopt;
    std::string_view bundle = folder.substr(0, folder.size() - kExecutableFolder.size());
    if (LastComponent(bundle).empty())
        return std::nullopt;
    return bundle;
}

std::string ApplicationName(std::string_view inExecutablePath)
{
    std::optional<std::string_view> bundle = EnclosingBundlePath(inExecutablePath);
    if (!bundle)
        return std::string(LastComponent(inExecutablePath));
    std::string_view name = LastComponent(*bundle);
    std::size_t dot = name.rfind('.');
    return std::string(dot == 0 || dot == std::string_view::npos ? name : name.substr(0, dot));
}

BundleCodes ReadBundleCodes(std::string_view inBundlePath)
{
    BundleCodes codes{FourCC("APPL"), FourCC("????")};
    std::optional<std::vector<UInt8>> bytes = ReadSmallFile(std::string(inBundlePath) + "/Contents/Info.plist");
    if (!bytes)
        return codes;
    port::Owned<CFDataRef> data(CFDataCreate(nullptr, bytes->data(), CFIndex(bytes->size())));
    port::Owned<CFPropertyListRef> plist(
        data ? CFPropertyListCreateWithData(nullptr, data.Get(), kCFPropertyListImmutable, nullptr, nullptr) : nullptr);
    if (!plist || CFGetTypeID(plist.Get()) != CFDictionaryGetTypeID())
        return codes;
    auto info = static_cast<CFDictionaryRef>(plist.Get());
    codes.type = CodeOf(CFDictionaryGetValue(info, CFSTR("CFBundlePackageType"))).value_or(codes.type);
    codes.signature = CodeOf(CFDictionaryGetValue(info, CFSTR("CFBundleSignature"))).value_or(codes.signature);
    return codes;
}

}  // namespace carbon
