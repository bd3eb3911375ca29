#include <Groundwork/SysWrappers/CoreFoundation/SysCFBundle.h>

namespace Gx {

CFBundle::CFBundle(CFStringRef inBundleID)
    : CFObject(
          CFUtils::CheckCreated(CFBundleGetBundleWithIdentifier(inBundleID), "CFBundleGetBundleWithIdentifier failed"),
          true)
{
}

CFBundle::CFBundle(CFURLRef inBundleURL, CFAllocatorRef inAllocator)
    : CFObject(CFUtils::CheckCreated(CFBundleCreate(inAllocator, inBundleURL), "CFBundleCreate failed"), false)
{
}

CFString CFBundle::GetLocalizedString(CFStringRef inKey, CFStringRef inValue, CFStringRef inTable) const
{
    CFStringRef value = inValue != nullptr ? inValue : inKey;
    return CFString(CFBundleCopyLocalizedString(UseRef(), inKey, value, inTable), false);
}

CFArray<CFStringRef> CFBundle::GetPreferredLocalizations() const
{
    CFArray<CFStringRef> localizations = GetBundleLocalizations();
    if (localizations.IsEmpty())
        return localizations;
    // The platform is given a private copy of the list, never the array the bundle handed out.
    return CFArray<CFStringRef>(CFBundleCopyPreferredLocalizationsFromArray(localizations.UseMutableRef()), false);
}

}  // namespace Gx
