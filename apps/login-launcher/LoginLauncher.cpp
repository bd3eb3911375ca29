// vemora-login-launcher: at log-in, opens every item of the login window's list, in order,
// through Launch Services, as the login window of the original platform does. Run from the
// desktop's XDG autostart entry.
#include <platform/Mac/utils/MacKvxUtils.h>

#include <Groundwork/SysWrappers/CoreFoundation/SysCFArray.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFBundle.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>

#include <Carbon/LaunchServices.h>
#include <Carbon/MacErrors.h>
#include <CoreFoundation/CFPreferences.h>
#include <PortSupport/Owned.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr const char* kUsage =
    "Usage: vemora-login-launcher [--help | --version]\n"
    "Opens every item of the login window's list (the \"loginwindow\" preferences,\n"
    "AutoLaunchedApplicationDictionary) in order, as at log-in. An item that already runs is not\n"
    "started again; an item whose path is gone is skipped with a line on standard error.\n"
    "Exit status: 0 when every item runs, 1 when one was skipped or failed to open.\n";

std::string UTF8(CFStringRef inText)
{
    std::string bytes;
    Gx::CFString text(inText, true);
    if (text.GetLength() > 0)
        text.GetString(bytes, kCFStringEncodingUTF8);
    return bytes;
}

// The file a running copy of the item would run: a bundle's executable, else the item itself.
Gx::CFURL ApplicationFile(const Gx::CFURL& inItem)
{
    Gx::CFBundle bundle(CFBundleCreate(kCFAllocatorDefault, inItem), false);
    if (!bundle.IsValid())
        return inItem;
    Gx::CFURL executable(CFBundleCopyExecutableURL(bundle.UseRef()), false);
    return executable.IsValid() ? executable : inItem;
}

// False when the item could not be opened.
bool Open(CFStringRef inPath)
{
    std::string path = UTF8(inPath);
    Gx::CFURL item(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, inPath, kCFURLPOSIXPathStyle, false), false);
    FSRef ref;
    if (!item.IsValid() || !item.GetFSRef(ref)) {
        std::fprintf(stderr, "vemora-login-launcher: skipped %s: it no longer exists\n", path.c_str());
        return false;
    }
    if (kvx::IsRunning(ApplicationFile(item), nullptr))
        return true;
    OSStatus status = LSOpenCFURLRef(item, nullptr);
    if (status != noErr)
        std::fprintf(stderr, "vemora-login-launcher: could not open %s (status %d)\n", path.c_str(), int(status));
    return status == noErr;
}

CFStringRef PathOf(CFTypeRef inEntry)
{
    if (inEntry == nullptr || CFGetTypeID(inEntry) != CFDictionaryGetTypeID())
        return nullptr;
    CFTypeRef path = CFDictionaryGetValue(static_cast<CFDictionaryRef>(inEntry), CFSTR("Path"));
    return path != nullptr && CFGetTypeID(path) == CFStringGetTypeID() ? static_cast<CFStringRef>(path) : nullptr;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("vemora-login-launcher %s\n", SPINDECK_VERSION);
        return 0;
    }
    if (argc > 1) {
        bool help = std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0;
        std::fputs(kUsage, help ? stdout : stderr);
        return help ? 0 : 2;
    }
    port::Owned<CFPropertyListRef> value(CFPreferencesCopyValue(CFSTR("AutoLaunchedApplicationDictionary"),
                                                                CFSTR("loginwindow"), kCFPreferencesCurrentUser,
                                                                kCFPreferencesAnyHost));
    if (!value)
        return 0;
    if (CFGetTypeID(value.Get()) != CFArrayGetTypeID()) {
        std::fputs("vemora-login-launcher: the login items are not a list; nothing was opened\n", stderr);
        return 1;
    }
    auto items = static_cast<CFArrayRef>(value.Get());
    bool allOpened = true;
    for (CFIndex i = 0; i < CFArrayGetCount(items); ++i) {
        // Entries of other programs' making without a path are none of ours to judge.
        if (CFStringRef path = PathOf(CFArrayGetValueAtIndex(items, i)))
            allOpened = Open(path) && allOpened;
    }
    return allOpened ? 0 : 1;
}
