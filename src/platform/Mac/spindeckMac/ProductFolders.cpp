#include "platform/Mac/spindeckMac/ProductFolders.h"

#include "platform/Mac/utils/BundleUtils.h"
#include "platform/PlatformServices.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFUtils.h>

#include <Carbon/Folders.h>
#include <Carbon/LaunchServices.h>

const CFStringRef kPluginsInstName = CFSTR("Install Vemora plug-ins.pkg");
const CFStringRef kAppSupportFolderName = CFSTR("Vemoraspindeck");
const CFStringRef kPrefFile = CFSTR("Vemora spindeck Preferences");

namespace spindeck {

const CFStringRef kDefaults = CFSTR("menus");
const CFStringRef kSkinsFolder = CFSTR("skins");

namespace {

// The look-up's status is not looked at: an object built on a folder that could not be
// found reports that when it is used.
FSRef FindFolder(int inDomain, OSType inType)
{
    FSRef folder{};
    FSFindFolder(FSVolumeRefNum(inDomain), inType, kCreateFolder, &folder);
    return folder;
}

Gx::CFURL BundleResource(CFStringRef inName) { return kvx::GetBundle().GetResourceURL(inName, nullptr, nullptr); }

// A resource the code bundle must hold: its absence is the nil-reference error.
Gx::CFURL RequiredResource(CFStringRef inName)
{
    Gx::CFURL url = BundleResource(inName);
    if (!url.IsValid())
        Gx::CFUtils::ThrowNilReference();
    return url;
}

bool IsNamed(const CFStringRef& inName) { return inName != nullptr && CFStringGetLength(inName) > 0; }

}  // namespace

Gx::FSObject AppSupportFolder(int inDomain, bool inCreateIfAbsent)
{
    Gx::FSObject folder(FindFolder(inDomain, kApplicationSupportFolderType), Gx::CFString(kAppSupportFolderName, true));
    if (!folder.Exists() && inCreateIfAbsent)
        kvx::Platform::instance().CreateFolder(folder, false);
    return folder;
}

Gx::FSObject UserPreferences()
{
    return Gx::FSObject(FindFolder(kUserDomain, kPreferencesFolderType), Gx::CFString(kPrefFile, true));
}

Gx::FSObject DefaultsFolder(const CFStringRef& inAppName)
{
    Gx::FSObject defaults(RequiredResource(kDefaults).UseRef());
    if (!IsNamed(inAppName))
        return defaults;
    return Gx::FSObject(defaults.UseRef(), Gx::CFString(inAppName, true));
}

Gx::FSObject SkinsFolder(const CFStringRef& inSkinName)
{
    Gx::CFURL skins = BundleResource(kSkinsFolder);
    if (skins.IsValid() && IsNamed(inSkinName))
        skins.AppendPathComponent(inSkinName, true);
    if (!skins.IsValid())
        Gx::CFUtils::ThrowNilReference();
    return Gx::FSObject(skins.UseRef());
}

Gx::FSObject SettingsFile() { return Gx::FSObject(RequiredResource(CFSTR("~settings")).UseRef()); }

OSStatus ReinstallPluginsCmd() { return LSOpenCFURLRef(RequiredResource(kPluginsInstName).UseRef(), nullptr); }

}  // namespace spindeck

StringObject CreateUniqueName(const SetObject<CFStringRef>& inRegistery)
{
    StringObject base = kvx::GetBundle().GetLocalizedString(CFSTR("Untitled"), nullptr, nullptr);
    for (int n = 0;; ++n) {
        StringObject candidate = base;
        if (n > 0)
            candidate = StringObject(
                CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%@%d"), base.UseRef(), n), false);
        if (!inRegistery.ContainsValue(candidate.UseRef()))
            return candidate;
    }
}
