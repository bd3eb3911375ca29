// Opening and closing a bundle's resource files through the public bundle calls, so that the
// bundle code needs nothing of the Resource Manager.
#include <Carbon/CFBundleResources.h>
#include <Carbon/CFURLFSRef.h>
#include <Carbon/MacErrors.h>
#include <PortSupport/Owned.h>

#include <memory>
#include <mutex>
#include <type_traits>
#include <unordered_map>

namespace {

// Which localized file was opened together with each file that the map calls answered, so
// that closing the one closes the other.
struct Companions {
    std::mutex lock;
    std::unordered_map<ResFileRefNum, ResFileRefNum> localized;
};

Companions& SharedCompanions()
{
    static Companions* sCompanions = new Companions;
    return *sCompanions;
}

port::Owned<CFURLRef> MainFileURL(CFBundleRef inBundle)
{
    CFTypeRef executable = CFBundleGetValueForInfoDictionaryKey(inBundle, kCFBundleExecutableKey);
    if (executable == nullptr || CFGetTypeID(executable) != CFStringGetTypeID())
        return {};
    port::Owned<CFURLRef> folder(CFBundleCopyResourcesDirectoryURL(inBundle));
    if (!folder)
        return {};
    port::Owned<CFURLRef> file(
        CFURLCreateCopyAppendingPathComponent(nullptr, folder.Get(), static_cast<CFStringRef>(executable), false));
    if (!file)
        return {};
    return port::Owned<CFURLRef>(CFURLCreateCopyAppendingPathExtension(nullptr, file.Get(), CFSTR("rsrc")));
}

port::Owned<CFURLRef> LocalizedFileURL(CFBundleRef inBundle)
{
    return port::Owned<CFURLRef>(CFBundleCopyResourceURL(inBundle, CFSTR("Localized"), CFSTR("rsrc"), nullptr));
}

// fnfErr when there is no such file.
OSErr OpenFile(CFURLRef inURL, ResFileRefNum& outRefNum)
{
    outRefNum = kResFileNotOpened;
    FSRef file;
    if (inURL == nullptr || !CFURLGetFSRef(inURL, &file))
        return fnfErr;
    OSErr status = FSOpenResourceFile(&file, 0, nullptr, fsRdPerm, &outRefNum);
    if (status == noErr)
        return noErr;
    HFSUniStr255 resourceFork;
    FSGetResourceForkName(&resourceFork);
    OSErr forkStatus = FSOpenResourceFile(&file, resourceFork.length, resourceFork.unicode, fsRdPerm, &outRefNum);
    // A data fork that is no resource file says more than a missing resource fork does.
    return forkStatus == eofErr ? status : forkStatus;
}

}  // namespace

SInt32 CFBundleOpenBundleResourceFiles(CFBundleRef inBundle, ResFileRefNum* outRefNum,
                                       ResFileRefNum* outLocalizedRefNum)
{
    if (inBundle == nullptr)
        return paramErr;
    ResFileRefNum main = kResFileNotOpened, localized = kResFileNotOpened;
    OSErr mainStatus = OpenFile(MainFileURL(inBundle).Get(), main);
    OSErr localizedStatus = OpenFile(LocalizedFileURL(inBundle).Get(), localized);
    if (outRefNum)
        *outRefNum = main;
    if (outLocalizedRefNum)
        *outLocalizedRefNum = localized;
    if (mainStatus == noErr || localizedStatus == noErr)
        return noErr;
    return mainStatus != fnfErr ? mainStatus : localizedStatus;
}

ResFileRefNum CFBundleOpenBundleResourceMap(CFBundleRef inBundle)
{
    ResFileRefNum main = kResFileNotOpened, localized = kResFileNotOpened;
    if (CFBundleOpenBundleResourceFiles(inBundle, &main, &localized) != noErr)
        return kResFileNotOpened;
    if (main == kResFileNotOpened)
        return localized;
    if (localized != kResFileNotOpened) {
        Companions& companions = SharedCompanions();
        std::lock_guard guard(companions.lock);
        companions.localized[main] = localized;
    }
    return main;
}

void CFBundleCloseBundleResourceMap(CFBundleRef /*inBundle*/, ResFileRefNum inRefNum)
{
    ResFileRefNum localized = kResFileNotOpened;
    {
        Companions& companions = SharedCompanions();
        std::lock_guard guard(companions.lock);
        if (auto found = companions.localized.find(inRefNum); found != companions.localized.end()) {
            localized = found->second;
            companions.localized.erase(found);
        }
    }
    if (localized != kResFileNotOpened)
        CloseResFile(localized);
    CloseResFile(inRefNum);
}
