// The owning wrapper of a bundle: its information dictionary, folders, resources,
// localisations and resource map.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFArray.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFDictionary.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFObject.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>

#include <Carbon/CFBundleResources.h>
#include <CoreFoundation/CFBundle.h>

namespace Gx {

// Each query is one platform call. Results the platform hands over (its Copy calls) are
// adopted, results it keeps (its Get calls) are retained; NULL becomes an empty wrapper.
class CFBundle : public CFObject<CFBundleRef> {
public:
    using InfoDictionary = CFDictionary<CFStringRef, const void*>;

    CFBundle() = default;
    CFBundle(CFBundleRef inRef, bool inRetain) : CFObject(inRef, inRetain) {}
    CFBundle(const CFBundle&) = default;
    CFBundle& operator=(const CFBundle&) = default;
    ~CFBundle() override = default;

    // A bundle already alive in this process; RuntimeError 'cfcr' when there is none.
    explicit CFBundle(CFStringRef inBundleID);
    // The bundle of a folder; 'cfcr' when the URL names none.
    explicit CFBundle(CFURLRef inBundleURL, CFAllocatorRef inAllocator = kCFAllocatorDefault);

    CFURL GetBundleURL() const { return CFURL(CFBundleCopyBundleURL(UseRef()), false); }
    // Owned by the bundle.
    CFTypeRef GetValueForInfoDictionaryKey(CFStringRef inKey) const
    {
        return CFBundleGetValueForInfoDictionaryKey(UseRef(), inKey);
    }
    InfoDictionary GetGlobalInfoDictionary() const { return InfoDictionary(CFBundleGetInfoDictionary(UseRef()), true); }
    InfoDictionary GetLocalInfoDictionary() const
    {
        return InfoDictionary(CFBundleGetLocalInfoDictionary(UseRef()), true);
    }
    void GetPackageInfo(UInt32& outType, UInt32& outCreator) const
    {
        CFBundleGetPackageInfo(UseRef(), &outType, &outCreator);
    }
    CFString GetIdentifier() const { return CFString(CFBundleGetIdentifier(UseRef()), true); }
    UInt32 GetVersionNumber() const { return CFBundleGetVersionNumber(UseRef()); }
    CFString GetDevelopmentRegion() const { return CFString(CFBundleGetDevelopmentRegion(UseRef()), true); }

    CFURL GetSupportFilesDirectoryURL() const { return CFURL(CFBundleCopySupportFilesDirectoryURL(UseRef()), false); }
    CFURL GetResourcesDirectoryURL() const { return CFURL(CFBundleCopyResourcesDirectoryURL(UseRef()), false); }
    CFURL GetPrivateFrameworksURL() const { return CFURL(CFBundleCopyPrivateFrameworksURL(UseRef()), false); }
    CFURL GetSharedFrameworksURL() const { return CFURL(CFBundleCopySharedFrameworksURL(UseRef()), false); }
    CFURL GetSharedSupportURL() const { return CFURL(CFBundleCopySharedSupportURL(UseRef()), false); }
    CFURL GetBuiltInPlugInsURL() const { return CFURL(CFBundleCopyBuiltInPlugInsURL(UseRef()), false); }

    // Empty when there is no such resource.
    CFURL GetResourceURL(CFStringRef inName, CFStringRef inType, CFStringRef inSubDirectory) const
    {
        return CFURL(CFBundleCopyResourceURL(UseRef(), inName, inType, inSubDirectory), false);
    }
    CFArray<CFURLRef> GetResourceURLsOfType(CFStringRef inType, CFStringRef inSubDirectory) const
    {
        return CFArray<CFURLRef>(CFBundleCopyResourceURLsOfType(UseRef(), inType, inSubDirectory), false);
    }
    // Without a value, a key no table has comes back as itself.
    CFString GetLocalizedString(CFStringRef inKey, CFStringRef inValue, CFStringRef inTable) const;
    CFArray<CFStringRef> GetBundleLocalizations() const
    {
        return CFArray<CFStringRef>(CFBundleCopyBundleLocalizations(UseRef()), false);
    }
    // Those of the bundle's localisations that the user prefers; an empty array when the
    // bundle has none.
    CFArray<CFStringRef> GetPreferredLocalizations() const;

    // The number of the bundle's resource file, kResFileNotOpened when it has none.
    SInt16 OpenResourceMap() const { return CFBundleOpenBundleResourceMap(UseRef()); }
    void CloseResourceMap(SInt16 inRefNum) const { CFBundleCloseBundleResourceMap(UseRef(), inRefNum); }
};

}  // namespace Gx
