// Prints the identifier, folder and executable of the main bundle, so that the bundle tests can run it
// from inside a bundle and see which bundle it takes for its own.
#include <CoreFoundation/CoreFoundation.h>
#include <CoreFoundation/CFRuntime.h>

#include <cstdio>

int main()
{
    CFBundleRef main = CFBundleGetMainBundle();
    if (main == nullptr)
        return 1;
    CFStringRef identifier = CFBundleGetIdentifier(main);
    std::printf("%s\n", identifier ? cf::UTF8(identifier).c_str() : "(none)");
    for (CFURLRef url : {CFBundleCopyBundleURL(main), CFBundleCopyExecutableURL(main)}) {
        CFStringRef path = CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle);
        std::printf("%s\n", cf::UTF8(path).c_str());
        CFRelease(path);
        CFRelease(url);
    }
    return 0;
}
