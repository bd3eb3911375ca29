// Bundles of the framework over the runtime's CFBundle: information, auxiliary executables,
// resources and localised strings.
#pragma once

#include <AppKit/NSString.h>
#include <CoreFoundation/CFBundle.h>

class NSBundle final : public NSObject {
public:
    // Takes over one reference.
    explicit NSBundle(CFBundleRef inBundle, Lifetime inLifetime = Lifetime::Counted);

    // An autoreleased bundle for the folder at inPath, or nil when there is no folder.
    static NSBundle* bundleWithPath(NSString* inPath);
    static NSBundle* mainBundle();

    // A value of the information dictionary (localised where the bundle localises it), or
    // NULL. Strings bridge to NSString through NSString::cast.
    CFTypeRef objectForInfoDictionaryKey(NSString* inKey) const;
    NSString* bundleIdentifier() const;
    NSString* bundlePath() const;
    NSString* executablePath() const;
    // The path of the executable of that name in Contents/MacOS, or nil when it does not exist.
    NSString* pathForAuxiliaryExecutable(NSString* inName) const;
    NSString* pathForResource(NSString* inName, NSString* inType) const;
    // The text for inKey in inTable ("Localizable" for nil) of the user's localisation; a key
    // the table lacks gives inValue when it is not empty, else the key itself.
    NSString* localizedStringForKey(NSString* inKey, NSString* inValue, NSString* inTable) const;
    BOOL load();

    CFBundleRef CFBundle() const { return mBundle; }
    const char* className() const override { return "NSBundle"; }

protected:
    void Finalize() noexcept override;

private:
    CFBundleRef mBundle;
};
