// Launch Services: opening URLs and launching applications with their items.
#include <Carbon/LaunchServices.h>

#include "LaunchServicesBundle.h"
#include "LaunchServicesPlan.h"
#include "LaunchServicesSpawn.h"

#include <Carbon/MacErrors.h>
#include <CoreFoundation/CFRuntime.h>

#include <sys/stat.h>

using namespace carbon::ls;

namespace {

CFURLRef CreateURL(const std::string& inPath, bool inIsFolder)
{
    return CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(inPath.data()),
                                                   CFIndex(inPath.size()), inIsFolder);
}

// An application that already runs is not started again, as the platform would only bring
// it to the front; the launch still counts as done.
OSStatus Run(const LaunchPlan& inPlan, LSLaunchFlags inFlags, CFURLRef* outLaunchedURL)
{
    bool reuse = inPlan.singleInstance && !(inFlags & kLSLaunchNewInstance) && IsAlreadyRunning(inPlan.program);
    if (!reuse)
        if (OSStatus status = SpawnDetached(inPlan.program, inPlan.arguments); status != noErr)
            return status;
    if (outLaunchedURL)
        *outLaunchedURL = CreateURL(inPlan.application, inPlan.applicationIsFolder);
    return noErr;
}

OSStatus Open(const Item& inItem, LSLaunchFlags inFlags, CFURLRef* outLaunchedURL)
{
    LaunchPlan plan;
    if (OSStatus status = PlanOpening(inItem, inFlags, plan); status != noErr)
        return status;
    return Run(plan, inFlags, outLaunchedURL);
}

OSStatus ItemsOf(CFArrayRef inURLs, std::vector<Item>& outItems)
{
    CFIndex count = inURLs ? CFArrayGetCount(inURLs) : 0;
    outItems.resize(std::size_t(count));
    for (CFIndex index = 0; index < count; ++index) {
        auto url = static_cast<CFURLRef>(CFArrayGetValueAtIndex(inURLs, index));
        if (url == nullptr || CFGetTypeID(url) != CFURLGetTypeID())
            return paramErr;
        if (OSStatus status = ItemOf(url, outItems[std::size_t(index)]); status != noErr)
            return status;
    }
    return noErr;
}

OSStatus LaunchApplication(CFURLRef inAppURL, const std::vector<Item>& inItems, LSLaunchFlags inFlags,
                           CFURLRef* outLaunchedURL)
{
    Item application;
    if (OSStatus status = ItemOf(inAppURL, application); status != noErr)
        return status;
    if (!application.isFile)
        return kLSNotAnApplicationErr;
    LaunchPlan plan;
    if (OSStatus status = PlanApplication(application.text, inFlags, plan); status != noErr)
        return status;
    for (const Item& item : inItems)
        plan.arguments.push_back(item.text);
    return Run(plan, inFlags, outLaunchedURL);
}

// Every item is tried; the launched URL is that of the first one opened.
OSStatus OpenEach(const std::vector<Item>& inItems, LSLaunchFlags inFlags, CFURLRef* outLaunchedURL)
{
    if (inItems.empty())
        return paramErr;
    OSStatus firstFailure = noErr;
    for (const Item& item : inItems) {
        bool wantsURL = outLaunchedURL && *outLaunchedURL == nullptr;
        OSStatus status = Open(item, inFlags, wantsURL ? outLaunchedURL : nullptr);
        if (firstFailure == noErr)
            firstFailure = status;
    }
    return firstFailure;
}

std::string LastComponent(std::string inPath)
{
    while (inPath.size() > 1 && inPath.back() == '/')
        inPath.pop_back();
    std::size_t slash = inPath.rfind('/');
    return slash == std::string::npos || inPath.size() == 1 ? inPath : inPath.substr(slash + 1);
}

std::string WithoutExtension(const std::string& inName)
{
    std::size_t dot = inName.rfind('.');
    return dot == 0 || dot == std::string::npos ? inName : inName.substr(0, dot);
}

std::string DisplayName(const std::string& inPath, bool inIsFolder)
{
    if (!inIsFolder || !IsBundleFolder(inPath))
        return LastComponent(inPath);
    std::optional<BundleFacts> facts = ReadBundle(inPath);
    return facts && !facts->name.empty() ? facts->name : WithoutExtension(LastComponent(inPath));
}

}  // namespace

OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef* outLaunchedURL)
{
    if (outLaunchedURL)
        *outLaunchedURL = nullptr;
    Item item;
    if (OSStatus status = ItemOf(inURL, item); status != noErr)
        return status;
    return Open(item, kLSLaunchDefaults, outLaunchedURL);
}

OSStatus LSOpenFromURLSpec(const LSLaunchURLSpec* inLaunchSpec, CFURLRef* outLaunchedURL)
{
    if (outLaunchedURL)
        *outLaunchedURL = nullptr;
    if (inLaunchSpec == nullptr)
        return paramErr;
    LSLaunchFlags flags = inLaunchSpec->launchFlags;
    if (flags & kLSLaunchInClassic)
        return kLSNoClassicEnvironmentErr;
    std::vector<Item> items;
    if (OSStatus status = ItemsOf(inLaunchSpec->itemURLs, items); status != noErr)
        return status;
    if (inLaunchSpec->appURL)
        return LaunchApplication(inLaunchSpec->appURL, items, flags, outLaunchedURL);
    return OpenEach(items, flags, outLaunchedURL);
}

OSStatus LSCopyDisplayNameForURL(CFURLRef inURL, CFStringRef* outDisplayName)
{
    if (outDisplayName == nullptr)
        return paramErr;
    *outDisplayName = nullptr;
    Item item;
    if (OSStatus status = ItemOf(inURL, item); status != noErr)
        return status;
    if (!item.isFile)
        return kLSDataUnavailableErr;
    struct stat info;
    if (::stat(item.text.c_str(), &info) != 0)
        return fnfErr;
    *outDisplayName = cf::MakeString(DisplayName(item.text, S_ISDIR(info.st_mode)));
    return *outDisplayName ? noErr : OSStatus(memFullErr);
}
