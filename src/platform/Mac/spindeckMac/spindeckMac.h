// The product's helpers, which live as packages inside the configuration application:
// finding them, telling whether they run, starting and stopping them. The background helper
// (the backend) is also kept in the login window's list so that the user's choice survives
// the next log-in; the media-player helper never is.
#pragma once

#include <MacTypes.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

namespace spindeck {

// The backend's executable inside the configuration application whose bundle is at the POSIX
// path inBundlePath (NULL: the current bundle), or NULL when the application has no
// "CFBundleName" or the helper package has no executable. The helper is looked for beside the
// application's executable, under the first "-"-separated part of the bundle name followed by
// " Helper" (and "-" and the second part when the name has exactly two), then with the
// extension "app". outRootName receives that first part plus " Helper" and
// outNestedPackageURL the package searched; both are the caller's to release, and both are
// written whenever a "CFBundleName" was found. Gx::RuntimeError 'cfnr' when the application
// or the helper package makes no bundle.
CFURLRef CopyBackendURL(CFStringRef inBundlePath, CFStringRef* outRootName, CFURLRef* outNestedPackageURL);

// Whether the backend runs; *isAvailable (when given) says whether it was found at all.
bool IsBackendRunning(CFStringRef bundlePath, bool* isAvailable);

// Stops a running backend (asks it to quit, without waiting, and takes it out of the login
// items) or starts a stopped one (puts it into the login items, then launches it). With
// reconcileWithLoginItems the backend is never stopped, and started only when it is a login
// item. False when there is no backend; *outWasLaunched says whether a launch succeeded.
bool ToggleBackendState(CFStringRef bundlePath, bool* outWasLaunched, bool reconcileWithLoginItems);

// The media-player helper, found as the backend is but always under the root name
// "Vemora iTunes Helper".
CFURLRef CopyITunesHelperURL(CFStringRef inBundlePath, CFStringRef* outRootName, CFURLRef* outNestedPackageURL);
bool IsITunesHelperRunning(CFStringRef bundlePath, bool* isAvailable);

// 0 when it already runs; kLSApplicationNotFoundErr when there is no helper; else the
// launch's own status.
OSStatus LaunchITunesHelper(CFStringRef bundlePath);

// Codes of QuitITunesHelper beside noErr (the quit request was sent).
inline constexpr OSStatus kHelperNotRunning = -1;
inline constexpr OSStatus kHelperNotFound = -2;
OSStatus QuitITunesHelper(CFStringRef bundlePath);

}  // namespace spindeck
