// The workspace over Launch Services.
#include <AppKit/NSWorkspace.h>

#include <Carbon/LaunchServices.h>

NSWorkspace* NSWorkspace::sharedWorkspace()
{
    static NSWorkspace* sWorkspace = new NSWorkspace(Lifetime::Static);
    return sWorkspace;
}

BOOL NSWorkspace::launchApplication(NSString* inAppPath)
{
    if (inAppPath == nullptr || inAppPath->length() == 0)
        return NO;
    CFURLRef url = CFURLCreateWithFileSystemPath(nullptr, inAppPath->CFString(), kCFURLPOSIXPathStyle, false);
    if (url == nullptr)
        return NO;
    OSStatus status = LSOpenCFURLRef(url, nullptr);
    CFRelease(url);
    return status == noErr ? YES : NO;
}
