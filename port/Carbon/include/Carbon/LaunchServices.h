// Launch Services: opening applications, programs, documents and URLs.
//
// What a URL opens:
// - an application bundle (a folder with Contents/Info.plist whose package type, if it
//   declares one, is 'APPL'): its CFBundleExecutable in Contents/MacOS runs, with the items
//   as arguments. When that executable already runs, nothing new starts unless
//   kLSLaunchNewInstance is set, and the call still succeeds;
// - a program file that the caller may execute: it runs (a new process each time, unless it
//   lies in a bundle's Contents/MacOS, where it counts as that application);
// - anything else, including URLs that are not file URLs: the desktop's opener (xdg-open on
//   PATH) is given it, and kLSApplicationNotFoundErr answers when there is none.
//
// Started programs are detached: a session of their own, standard input from /dev/null,
// standard output and error to the user's journal under the program's file name (to
// /dev/null without one), no descriptor of the caller, the working folder "/", and they
// outlive the caller. The call returns once the program is running, so a program that
// cannot be executed is a status, never a silent failure later.
#pragma once

#include <Carbon/AEDataModel.h>
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <MacTypes.h>

using LSLaunchFlags = UInt32;

// Every flag is accepted. What they mean here:
enum : LSLaunchFlags {
    kLSLaunchDefaults = 0x00000001,  // no effect: the defaults are what a launch does
    kLSLaunchAndPrint = 0x00000002,  // no effect: the opener has no printing request
    kLSLaunchReserved2 = 0x00000004,
    kLSLaunchReserved3 = 0x00000008,
    kLSLaunchReserved4 = 0x00000010,
    kLSLaunchReserved5 = 0x00000020,
    kLSLaunchAndDisplayErrors = 0x00000040,  // no effect: failures are only returned
    kLSLaunchInhibitBGOnly = 0x00000080,     // a bundle with LSBackgroundOnly is refused
    kLSLaunchDontAddToRecents = 0x00000100,  // no effect: launches are never recorded
    kLSLaunchDontSwitch = 0x00000200,        // no effect: the window manager decides focus
    kLSLaunchNoParams = 0x00000800,          // no effect: no open event is sent at launch
    kLSLaunchAsync = 0x00010000,             // no effect: a launch never waits for more than exec
    kLSLaunchStartClassic = 0x00020000,      // no effect: there are no Classic applications
    kLSLaunchInClassic = 0x00040000,         // refused with kLSNoClassicEnvironmentErr
    kLSLaunchNewInstance = 0x00080000,       // start another copy of a running application
    kLSLaunchAndHide = 0x00100000,           // no effect: the window manager decides
    kLSLaunchAndHideOthers = 0x00200000,     // no effect: the window manager decides
};

struct LSLaunchURLSpec {
    CFURLRef appURL;               // NULL: each item opens as LSOpenCFURLRef opens it
    CFArrayRef itemURLs;           // CFURLRefs, or NULL
    const AEDesc* passThruParams;  // accepted and not used: no open event carries them
    LSLaunchFlags launchFlags;
    void* asyncRefCon;  // accepted and not used
};

// paramErr for NULL; fnfErr for a file URL to nothing; kLSNoExecutableErr when the program
// cannot be executed or a bundle has no executable; kLSApplicationNotFoundErr when no opener
// is installed. *outLaunchedURL (when given) receives the URL of the application that
// opened the item: the bundle, the program or the opener; the caller releases it.
OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef* outLaunchedURL);

// With an application URL the application runs with the items' paths (or, for URLs that are
// not file URLs, their text) as arguments; an application that already runs is not given
// them. The application URL must name a bundle or a program: a folder that is neither
// answers kLSNotAnApplicationErr, and so does a bundle with LSBackgroundOnly under
// kLSLaunchInhibitBGOnly. Without one, every item is opened in turn, and the first failure
// is answered after all were tried.
OSStatus LSOpenFromURLSpec(const LSLaunchURLSpec* inLaunchSpec, CFURLRef* outLaunchedURL);

// A bundle's CFBundleName (localised where it has InfoPlist.strings); else the item's name,
// without its extension for a bundle. kLSDataUnavailableErr for URLs that are not file URLs.
OSStatus LSCopyDisplayNameForURL(CFURLRef inURL, CFStringRef* outDisplayName);
