// The platform services on this platform.
#include "platform/PlatformServices.h"

#include "platform/Mac/utils/BundleUtils.h"
#include "platform/Mac/utils/MacKvxUtils.h"
#include "platform/Mac/utils/VemoraAlerts.h"
#include "utils/BytesBubble.h"

#include <Groundwork/Files/GxFile.h>
#include <Groundwork/Files/GxFolder.h>
#include <Groundwork/Files/GxDataFork.h>
#include <Groundwork/SysWrappers/CoreFoundation/CFUtilsObject.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFUtils.h>

#include <Carbon/CarbonEvents.h>
#include <Carbon/Files.h>
#include <Carbon/Finder.h>
#include <Carbon/Folders.h>
#include <Carbon/Processes.h>
#include <Carbon/Sound.h>
#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CFUUID.h>

#include <cstdio>
#include <cstdlib>

namespace kvx {

namespace {

constexpr UInt32 kAttributeEventClass = FourCC("VmRe");
constexpr UInt32 kAttributeEventKind = 1;
constexpr EventParamName kAttributeValueParam = FourCC("vmiv");

void Log(int inLine, const char* inMessage)
{
    std::fprintf(stderr, "%s: [%d] %s\n", kOurProductName, inLine, inMessage);
}

bool IsProcessMissing(OSErr inStatus) { return inStatus == procNotFound || inStatus == -604; }

// The preference's integer, or inDefault when it is missing, no number or 0.
int IntegerPreference(const char* inKey, int inDefault, const char* inAppID)
{
    Gx::CFString key(inKey, kCFStringEncodingASCII);
    Gx::CFString app(inAppID, kCFStringEncodingASCII);
    CFIndex value = CFPreferencesGetAppIntegerValue(key.UseRef(), app.UseRef(), nullptr);
    return value != 0 ? int(value) : inDefault;
}

}  // namespace

OSStatus Platform::SetInitialAttributeValue(int inValue)
{
    EventRef event = nullptr;
    OSStatus status = CreateEvent(kCFAllocatorDefault, kAttributeEventClass, kAttributeEventKind, 0,
                                  kEventAttributeUserEvent, &event);
    if (status == noErr) {
        SInt32 value = inValue;
        SetEventParameter(event, kAttributeValueParam, typeSInt32, sizeof value, &value);
        PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard);
        ReleaseEvent(event);
    }
    return status;
}

void Platform::CreateFolder(FileObject& ioFolder, bool inInvisible)
{
    Gx::Folder folder(ioFolder);
    folder.CreateOnDisk();
    ioFolder.Update();
    if (inInvisible)
        ioFolder.ChangeFinderFlags(true, kIsInvisible);
}

std::string Platform::getFrontProcessName()
{
    Str255 name = {};
    ProcessInfoRec info{};
    info.processInfoLength = 316;
    info.processName = name;
    info.processAppRef = nullptr;
    ProcessSerialNumber psn{};
    if (IsProcessMissing(GetFrontProcess(&psn)))
        Log(109, "Error while determining front-most app (GetFrontProcess)");
    if (IsProcessMissing(GetProcessInformation(&psn, &info)))
        Log(114, "Error while reading front-most app info (GetProcessInformation)");
    return std::string(reinterpret_cast<const char*>(name + 1), name[0]);
}

int Platform::GetSocketPort(int inDefaultPort, const char* inAppID)
{
    char key[32];
    std::snprintf(key, sizeof key, "Port %d", inDefaultPort);
    return IntegerPreference(key, inDefaultPort, inAppID);
}

int Platform::GetPrefsFileInteger(const char* inKey, int inDefaultValue, const char* inAppID)
{
    return IntegerPreference(inKey, inDefaultValue, inAppID);
}

void Platform::beep(short inDuration) { SysBeep(inDuration); }

OSStatus Platform::launchApp(const char* inPath)
{
    CFStringRef path = CFStringCreateWithCString(kCFAllocatorDefault, inPath, CFStringGetSystemEncoding());
    OSStatus status = LSLaunchItem(path);
    if (path != nullptr)
        CFRelease(path);
    return status;
}

int Platform::openNoPluginFBAAlert(int inPluginPort)
{
    vmr::NoPluginFBAAlert alert(inPluginPort);
    OSErr status = alert.notifyUser();
    if (status != noErr)
        std::fprintf(stderr, "%s: [%d] NMInstall notification error: %d\n", kOurProductName, 192, status);
    return status;
}

FileObject Platform::getActionsPaletteFile(SupportedAppId inApp)
{
    CFBundleRef bundle = GetBundle().GetRefValue();
    if (bundle == nullptr)
        Gx::CFUtils::ThrowNilReference();
    CFStringRef key = nullptr;
    CFStringRef defaultName = nullptr;
    switch (inApp) {
    case kPhotoshopCS2:
        key = CFSTR("PSCS2SettingsFolder");
        defaultName = CFSTR("Adobe Photoshop CS2 Settings");
        break;
    case kIllustratorCS2:
        key = CFSTR("ILCS2SettingsFolder");
        defaultName = CFSTR("Adobe Illustrator CS2 Settings");
        break;
    default:
        return FileObject();
    }
    // The host may be localised, and its settings folder named in the user's language.
    Gx::CFString name(CFBundleCopyLocalizedString(bundle, key, defaultName, CFSTR("Localizable")), false);
    FSRef preferences;
    FSFindFolder(kUserDomain, kPreferencesFolderType, kCreateFolder, &preferences);
    FileObject settings(preferences, name);
    if (!settings.Exists())
        return FileObject();
    return FileObject(settings.UseRef(), Gx::CFString(CFSTR("Actions Palette.psp"), true));
}

int Platform::deleteFile(const std::string& inPath)
{
    std::string command = "rm -f \"" + inPath + "\"";
    return std::system(command.c_str());
}

int Platform::readFile(BytesBubble& outBytes, const FileObject& inFile, long long inOffset, unsigned long inLength)
{
    Gx::File file(inFile);
    bool opened = false;
    if (!file.IsDataForkOpen()) {
        file.OpenDataFork(fsRdPerm);
        opened = true;
    }
    Gx::DataFork* fork = file.GetDataFork();
    if (fork == nullptr)
        return -1;
    if (inLength == 0)
        inLength = static_cast<unsigned long>(fork->GetSize());
    outBytes.reset(inLength, nullptr);
    fork->ReadData(outBytes.ptr(), UInt32(inLength), fsFromStart, inOffset);
    if (opened)
        file.CloseDataFork();
    return 0;
}

unsigned long Platform::fileSize(const FileObject& inFile)
{
    Gx::File file(inFile);
    Gx::DataFork* fork = file.GetDataFork();
    return fork != nullptr ? static_cast<UInt32>(fork->GetSize()) : 0;
}

StringObject Platform::GetUUIDString()
{
    CFUtils::CFObject<CFUUIDRef> uuid(CFUUIDCreate(kCFAllocatorDefault));
    return StringObject(CFUUIDCreateString(kCFAllocatorDefault, uuid), false);
}

}  // namespace kvx
