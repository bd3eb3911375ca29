// Framework bundles over the runtime's bundles.
#include <AppKit/NSBundle.h>

namespace {

// Takes over a string the runtime created and hands it out autoreleased.
NSString* Autoreleased(CFStringRef inString)
{
    if (inString == nullptr)
        return nullptr;
    NSAutoreleasePool::addObject(inString);
    return NSString::bridge(inString);
}

NSString* PathOf(CFURLRef inURL)
{
    if (inURL == nullptr)
        return nullptr;
    CFStringRef path = CFURLCopyFileSystemPath(inURL, kCFURLPOSIXPathStyle);
    CFRelease(inURL);
    return Autoreleased(path);
}

}  // namespace

NSBundle::NSBundle(CFBundleRef inBundle, Lifetime inLifetime) : NSObject(inLifetime), mBundle(inBundle) {}

void NSBundle::Finalize() noexcept { CFRelease(mBundle); }

NSBundle* NSBundle::bundleWithPath(NSString* inPath)
{
    if (inPath == nullptr)
        return nullptr;
    CFURLRef url = CFURLCreateWithFileSystemPath(nullptr, inPath->CFString(), kCFURLPOSIXPathStyle, true);
    CFBundleRef bundle = url ? CFBundleCreate(nullptr, url) : nullptr;
    if (url)
        CFRelease(url);
    if (bundle == nullptr)
        return nullptr;
    NSBundle* result = NSNew<NSBundle>(bundle);
    if (result == nullptr) {
        CFRelease(bundle);
        return nullptr;
    }
    result->autorelease();
    return result;
}

NSBundle* NSBundle::mainBundle()
{
    // The main bundle lives as long as the process, and so does its framework object.
    static NSBundle* sMain = [] {
        CFBundleRef main = CFBundleGetMainBundle();
        return main ? new NSBundle(main, Lifetime::Static) : nullptr;
    }();
    return sMain;
}

CFTypeRef NSBundle::objectForInfoDictionaryKey(NSString* inKey) const
{
    return inKey ? CFBundleGetValueForInfoDictionaryKey(mBundle, inKey->CFString()) : nullptr;
}

NSString* NSBundle::bundleIdentifier() const { return NSString::bridge(CFBundleGetIdentifier(mBundle)); }

NSString* NSBundle::bundlePath() const { return PathOf(CFBundleCopyBundleURL(mBundle)); }

NSString* NSBundle::executablePath() const { return PathOf(CFBundleCopyExecutableURL(mBundle)); }

NSString* NSBundle::pathForAuxiliaryExecutable(NSString* inName) const
{
    return inName ? PathOf(CFBundleCopyAuxiliaryExecutableURL(mBundle, inName->CFString())) : nullptr;
}

NSString* NSBundle::pathForResource(NSString* inName, NSString* inType) const
{
    if (inName == nullptr)
        return nullptr;
    return PathOf(CFBundleCopyResourceURL(mBundle, inName->CFString(), inType ? inType->CFString() : nullptr, nullptr));
}

NSString* NSBundle::localizedStringForKey(NSString* inKey, NSString* inValue, NSString* inTable) const
{
    if (inKey == nullptr)
        return inValue;
    return Autoreleased(CFBundleCopyLocalizedString(mBundle, inKey->CFString(), inValue ? inValue->CFString() : nullptr,
                                                    inTable ? inTable->CFString() : nullptr));
}

BOOL NSBundle::load() { return CFBundleLoadExecutable(mBundle) ? YES : NO; }
