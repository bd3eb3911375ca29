// The bundle object: one folder, its layout and information dictionary, the string tables
// read from it and its loaded code. Shared by the files that implement the bundle calls.
#pragma once

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRuntime.h>

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

struct __CFBundle final : cf::Object {
    // Where the parts of a bundle lie: "Contents/Info.plist" with "Contents/Resources", or
    // Info.plist at the top with a "Resources" folder beside it, or everything at the top.
    enum class Layout { Contents, TopResources, Flat };

    struct Parts {
        std::string path;  // the folder, with links resolved: bundles are unique per path
        Layout layout = Layout::Flat;
        CFURLRef url = nullptr;          // owned
        CFDictionaryRef info = nullptr;  // owned
        // The running program, for the main bundle only: its executable, loaded from the start.
        std::string program;
    };

    __CFBundle(Parts inParts, Lifetime inLifetime);

    // "Contents", or the folder itself for bundles without it.
    std::string SupportPath() const;
    std::string ResourcesPath() const;
    // A string value of the information dictionary, or NULL.
    CFStringRef InfoString(CFStringRef inKey) const;
    // A string table (or InfoPlist.strings) read once per file and kept while the bundle
    // lives, so that the values handed out stay valid; NULL when it cannot be read.
    CFDictionaryRef Table(const std::string& inPath) const;

    bool Equal(const Object& inOther) const override;
    CFHashCode Hash() const override;
    std::string Describe() const override;

    const std::string mPath;
    const Layout mLayout;
    const CFURLRef mURL;
    const CFDictionaryRef mInfo;
    const std::string mProgram;

    // Guards what is learnt after the bundle is made: the localisations it offers (its
    // folders are listed once), the tables and the code handle.
    mutable std::mutex mLock;
    mutable std::optional<std::vector<std::string>> mLocalizations;
    mutable std::map<std::string, CFDictionaryRef> mTables;
    void* mCode = nullptr;

private:
    void Finalize() noexcept override;
};

namespace cf::bundle {

__CFBundle& Bundle(CFBundleRef inBundle, const char* inCall);

// Reads the folder at inPath (resolved) and builds the parts of its bundle.
__CFBundle::Parts Examine(CFAllocatorRef inAllocator, std::string inPath);

// The live bundle of a folder with one more reference, or a new one made from Examine.
CFBundleRef FindOrCreate(CFAllocatorRef inAllocator, const std::string& inPath);
// Records a bundle that lives as long as the process, such as the main bundle.
void AddPermanent(__CFBundle& inBundle);

// The keys of the information dictionary, safe to use while the program is still starting.
inline CFStringRef IdentifierKey() { return CFSTR("CFBundleIdentifier"); }
inline CFStringRef ExecutableKey() { return CFSTR("CFBundleExecutable"); }
inline CFStringRef DevelopmentRegionKey() { return CFSTR("CFBundleDevelopmentRegion"); }
inline CFStringRef LocalizationsKey() { return CFSTR("CFBundleLocalizations"); }

}  // namespace cf::bundle
