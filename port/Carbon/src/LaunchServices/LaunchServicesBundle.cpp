// Reading a bundle's information dictionary for Launch Services.
#include "LaunchServicesBundle.h"

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRuntime.h>
#include <PortSupport/Owned.h>

#include <sys/stat.h>

namespace carbon::ls {

namespace {

constexpr std::string_view kInfoFile = "/Contents/Info.plist";
constexpr std::string_view kExecutableFolder = "/Contents/MacOS/";

std::string StringValue(CFBundleRef inBundle, CFStringRef inKey)
{
    CFTypeRef value = CFBundleGetValueForInfoDictionaryKey(inBundle, inKey);
    if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID())
        return {};
    return cf::UTF8(static_cast<CFStringRef>(value));
}

// Written as a boolean by tools, and as "1" or "YES" by hand.
bool FlagValue(CFBundleRef inBundle, CFStringRef inKey)
{
    CFTypeRef value = CFBundleGetValueForInfoDictionaryKey(inBundle, inKey);
    if (value != nullptr && CFGetTypeID(value) == CFBooleanGetTypeID())
        return CFBooleanGetValue(static_cast<CFBooleanRef>(value));
    std::string text = StringValue(inBundle, inKey);
    return text == "1" || text == "YES" || text == "true";
}

port::Owned<CFBundleRef> OpenBundle(const std::string& inPath)
{
    port::Owned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(inPath.data()), CFIndex(inPath.size()), true));
    return port::Owned<CFBundleRef>(url ? CFBundleCreate(nullptr, url.Get()) : nullptr);
}

}  // namespace

bool IsBundleFolder(const std::string& inPath)
{
    struct stat info;
    return ::stat((inPath + std::string(kInfoFile)).c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::optional<BundleFacts> ReadBundle(const std::string& inPath)
{
    port::Owned<CFBundleRef> bundle = OpenBundle(inPath);
    if (!bundle)
        return std::nullopt;
    BundleFacts facts;
    UInt32 type = 0;
    CFBundleGetPackageInfo(bundle.Get(), &type, nullptr);
    facts.isApplication = type == FourCC("APPL") || type == FourCC("????");
    facts.backgroundOnly = FlagValue(bundle.Get(), CFSTR("LSBackgroundOnly"));
    std::string executable = StringValue(bundle.Get(), kCFBundleExecutableKey);
    // A name with a slash would reach outside Contents/MacOS.
    if (!executable.empty() && executable.find('/') == std::string::npos)
        facts.executable = inPath + std::string(kExecutableFolder) + executable;
    facts.name = StringValue(bundle.Get(), kCFBundleNameKey);
    return facts;
}

}  // namespace carbon::ls
