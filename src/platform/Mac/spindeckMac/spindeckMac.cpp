#include <platform/Mac/spindeckMac/spindeckMac.h>

#include <platform/Mac/spindeckMac/LoginItems.h>
#include <platform/Mac/utils/BundleUtils.h>
#include <platform/Mac/utils/MacKvxUtils.h>

#include <Groundwork/Files/GxFSObject.h>
#include <Groundwork/SysWrappers/CoreFoundation/CFUtilsString.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFArray.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFBundle.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>
#include <Groundwork/SysWrappers/Events/SysAEDesc.h>
#include <Groundwork/SysWrappers/Events/SysAppleEvent.h>

#include <Carbon/AppleEvents.h>
#include <Carbon/LaunchServices.h>
#include <Carbon/MacErrors.h>

#include <optional>

namespace spindeck {

namespace {

// A helper is started quietly: it is no document the user opened, and it must not take the
// focus from the window the user is working in.
constexpr LSLaunchFlags kHelperLaunchFlags = kLSLaunchDontAddToRecents | kLSLaunchDontSwitch | kLSLaunchNoParams;

const char kITunesHelperRootName[] = "Vemora iTunes Helper";

// What a lookup finds: the helper's executable (empty when there is none), and the names the
// login items know it by.
struct HelperLocation {
    Gx::CFURL executable;
    Gx::CFString rootName;
    Gx::CFURL nestedPackage;
};

// The application bundle at a POSIX folder path, or the current bundle for NULL.
Gx::CFBundle ApplicationBundle(CFStringRef inBundlePath)
{
    if (inBundlePath == nullptr)
        return kvx::GetBundle();
    Gx::CFURL url(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, inBundlePath, kCFURLPOSIXPathStyle, true), false);
    if (!url.IsValid())
        Gx::CFUtils::ThrowNilReference();
    Gx::CFBundle bundle(CFBundleCreate(kCFAllocatorDefault, url), false);
    if (!bundle.IsValid())
        Gx::CFUtils::ThrowNilReference();
    return bundle;
}

Gx::CFString BundleName(const Gx::CFBundle& inBundle)
{
    CFTypeRef name = inBundle.GetValueForInfoDictionaryKey(CFSTR("CFBundleName"));
    if (name == nullptr || CFGetTypeID(name) != CFStringGetTypeID())
        return {};
    return Gx::CFString(static_cast<CFStringRef>(name), true);
}

// The package's file name: an edition word after a single "-" is kept, so that two editions
// of the product each find their own helper; further parts are not part of the name.
Gx::CFString HelperFileName(const Gx::CFString& inRootName, const Gx::CFArray<CFStringRef>& inNameParts)
{
    if (inNameParts.GetCount() != 2)
        return inRootName;
    return Gx::CFString(CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%@-%@"), inRootName.UseRef(),
                                                 inNameParts.GetValueAt(1)),
                        false);
}

// The package beside the application's own executable: under its plain name when something
// is there, else with the extension "app".
Gx::CFURL NestedPackageURL(const Gx::CFBundle& inApplication, CFStringRef inFileName)
{
    Gx::CFURL folder(CFBundleCopyExecutableURL(inApplication.UseRef()), false);
    if (!folder.IsValid())
        Gx::CFUtils::ThrowNilReference();
    folder.DeleteLastPathComponent();
    Gx::CFURL package = folder;
    package.AppendPathComponent(inFileName, false);
    FSRef ref;
    if (!package.GetFSRef(ref))
        package.AppendPathExtension(CFSTR("app"));
    return package;
}

// The helper package's executable, made absolute, when it exists.
Gx::CFURL HelperExecutable(const Gx::CFURL& inPackage)
{
    Gx::CFBundle helper(CFBundleCreate(kCFAllocatorDefault, inPackage), false);
    if (!helper.IsValid())
        Gx::CFUtils::ThrowNilReference();
    Gx::CFURL executable(CFBundleCopyExecutableURL(helper.UseRef()), false);
    if (!executable.IsValid())
        return {};
    Gx::CFURL absolute(CFURLCopyAbsoluteURL(executable), false);
    FSRef ref;
    return absolute.IsValid() && absolute.GetFSRef(ref) ? absolute : Gx::CFURL();
}

// The lookup both helpers share. inFixedRootName replaces the root name taken from the
// bundle name; nothing is found without a "CFBundleName" either way.
std::optional<HelperLocation> FindHelper(CFStringRef inBundlePath, CFStringRef inFixedRootName)
{
    Gx::CFBundle application = ApplicationBundle(inBundlePath);
    Gx::CFString name = BundleName(application);
    if (!name.IsValid())
        return std::nullopt;
    Gx::CFArray<CFStringRef> parts(CFStringCreateArrayBySeparatingStrings(kCFAllocatorDefault, name, CFSTR("-")),
                                   false);
    HelperLocation location;
    location.rootName = inFixedRootName != nullptr
                            ? Gx::CFString(inFixedRootName, true)
                            : Gx::CFString(CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%@ Helper"),
                                                                    parts.GetValueAt(0)),
                                           false);
    location.nestedPackage = NestedPackageURL(application, HelperFileName(location.rootName, parts).UseRef());
    location.executable = HelperExecutable(location.nestedPackage);
    return location;
}

template <class Wrapper, class Ref>
void HandOut(const Wrapper& inValue, Ref* outRef)
{
    if (outRef == nullptr)
        return;
    Ref ref = inValue.GetRefValue();
    if (ref != nullptr)
        CFRetain(ref);
    *outRef = ref;
}

CFURLRef CopyHelperURL(CFStringRef inBundlePath, CFStringRef inFixedRootName, CFStringRef* outRootName,
                       CFURLRef* outNestedPackageURL)
{
    std::optional<HelperLocation> location = FindHelper(inBundlePath, inFixedRootName);
    if (!location)
        return nullptr;
    HandOut(location->rootName, outRootName);
    HandOut(location->nestedPackage, outNestedPackageURL);
    CFURLRef executable = location->executable.GetRefValue();
    if (executable != nullptr)
        CFRetain(executable);
    return executable;
}

Gx::CFString ITunesHelperRootName() { return Gx::CFString(kITunesHelperRootName, Gx::encoding_System); }

bool IsHelperRunning(const Gx::CFURL& inExecutable, bool* outIsAvailable, ProcessSerialNumber* outPSN)
{
    if (outIsAvailable != nullptr)
        *outIsAvailable = inExecutable.IsValid();
    return kvx::IsRunning(inExecutable.GetRefValue(), outPSN);
}

// The quit request a helper answers by finishing its work and exiting; no reply is awaited.
void SendQuit(const ProcessSerialNumber& inPSN)
{
    Gx::AutoAEDesc hlpTarget(typeProcessSerialNumber, &inPSN, sizeof inPSN);
    Gx::SysAppleEvent quitEvent(kCoreEventClass, kAEQuitApplication, hlpTarget.GetRef(), kAutoGenerateReturnID,
                                kAnyTransactionID);
    quitEvent.Send(nullptr, kAEQueueReply, kAENormalPriority, kAEDefaultTimeout);
}

OSStatus Launch(const Gx::CFURL& inExecutable)
{
    LSLaunchURLSpec launchPB{};
    launchPB.appURL = inExecutable.UseRef();
    launchPB.itemURLs = nullptr;
    launchPB.passThruParams = nullptr;
    launchPB.launchFlags = kHelperLaunchFlags;
    launchPB.asyncRefCon = nullptr;
    return LSOpenFromURLSpec(&launchPB, nullptr);
}

// The login item goes in first and stays whatever the launch does: the user asked for the
// backend, and the next log-in tries again.
bool StartBackend(const HelperLocation& inBackend, bool* outWasLaunched)
{
    Gx::FSObject fbaRef(inBackend.executable.UseRef());
    UpdateLoginItems(inBackend.nestedPackage.UseRef(), inBackend.rootName.UseRef(), kAddIfNotFound);
    OSStatus status = Launch(inBackend.executable);
    if (outWasLaunched != nullptr)
        *outWasLaunched = status == noErr;
    return true;
}

}  // namespace

CFURLRef CopyBackendURL(CFStringRef inBundlePath, CFStringRef* outRootName, CFURLRef* outNestedPackageURL)
{
    return CopyHelperURL(inBundlePath, nullptr, outRootName, outNestedPackageURL);
}

bool IsBackendRunning(CFStringRef bundlePath, bool* isAvailable)
{
    std::optional<HelperLocation> backend = FindHelper(bundlePath, nullptr);
    return IsHelperRunning(backend ? backend->executable : Gx::CFURL(), isAvailable, nullptr);
}

bool ToggleBackendState(CFStringRef bundlePath, bool* outWasLaunched, bool reconcileWithLoginItems)
{
    if (outWasLaunched != nullptr)
        *outWasLaunched = false;
    std::optional<HelperLocation> backend = FindHelper(bundlePath, nullptr);
    if (!backend || !backend->executable.IsValid())
        return false;
    ProcessSerialNumber psn{};
    bool running = kvx::IsRunning(backend->executable, &psn);
    if (reconcileWithLoginItems) {
        if (running ||
            !UpdateLoginItems(backend->nestedPackage.UseRef(), backend->rootName.UseRef(), kJustSeeIfItsThere))
            return true;
        return StartBackend(*backend, outWasLaunched);
    }
    if (!running)
        return StartBackend(*backend, outWasLaunched);
    // Taken out of the login items only once the request went out: a helper that could not be
    // asked to quit keeps running, and should keep starting at log-in too.
    SendQuit(psn);
    UpdateLoginItems(backend->nestedPackage.UseRef(), backend->rootName.UseRef(), kRemoveIfFound);
    return true;
}

CFURLRef CopyITunesHelperURL(CFStringRef inBundlePath, CFStringRef* outRootName, CFURLRef* outNestedPackageURL)
{
    return CopyHelperURL(inBundlePath, ITunesHelperRootName(), outRootName, outNestedPackageURL);
}

bool IsITunesHelperRunning(CFStringRef bundlePath, bool* isAvailable)
{
    std::optional<HelperLocation> helper = FindHelper(bundlePath, ITunesHelperRootName());
    return IsHelperRunning(helper ? helper->executable : Gx::CFURL(), isAvailable, nullptr);
}

OSStatus LaunchITunesHelper(CFStringRef bundlePath)
{
    std::optional<HelperLocation> helper = FindHelper(bundlePath, ITunesHelperRootName());
    if (!helper || !helper->executable.IsValid())
        return kLSApplicationNotFoundErr;
    ProcessSerialNumber psn{};
    if (kvx::IsRunning(helper->executable, &psn))
        return noErr;
    Gx::FSObject helperRef(helper->executable.UseRef());
    return Launch(helper->executable);
}

OSStatus QuitITunesHelper(CFStringRef bundlePath)
{
    std::optional<HelperLocation> helper = FindHelper(bundlePath, ITunesHelperRootName());
    if (!helper || !helper->executable.IsValid())
        return kHelperNotFound;
    ProcessSerialNumber psn{};
    if (!kvx::IsRunning(helper->executable, &psn))
        return kHelperNotRunning;
    SendQuit(psn);
    return noErr;
}

}  // namespace spindeck
