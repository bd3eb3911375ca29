#include "platform/Mac/utils/VemoraAlerts.h"

#include "platform/Mac/utils/BundleUtils.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFUtils.h>

#include <Carbon/MacMemory.h>
#include <CoreFoundation/CFBundle.h>

#include <vector>

namespace vmr {

namespace {

// Records are never freed, since a note may still be up when its alert is gone; they are
// listed here so that they stay accounted for rather than lost.
std::vector<NMRec*>& MadeRecords()
{
    static auto* sRecords = new std::vector<NMRec*>;
    return *sRecords;
}

}  // namespace

int FBAAlert::_openedCount = 0;

void FBAAlertCallback(NMRec* inRecord) { --*reinterpret_cast<int*>(inRecord->nmRefCon); }

// Each kind first builds a note with no text, then the one with its own; the first record is
// left behind. That order is the family's construction contract.
FBAAlert::FBAAlert(CFStringRef inMessage) { initNMRec(inMessage); }

FBAAlert::FBAAlert(CFStringRef inKey, CFStringRef inDefaultText)
{
    initNMRec(inKey, inDefaultText, CFSTR("Localizable"));
}

FBAAlert::~FBAAlert() { DisposeNMUPP(_notif->nmResp); }

void FBAAlert::initNMRec(CFStringRef inMessage)
{
    // Text too long for the note keeps what fits, whole characters only.
    CFStringGetPascalString(inMessage, _pascalMsgForUser, sizeof _pascalMsgForUser, kCFStringEncodingUTF8);
    _notif = reinterpret_cast<NMRec*>(NewPtr(sizeof(NMRec)));
    MadeRecords().push_back(_notif);
    _notif->qType = nmType;
    _notif->nmMark = 0;
    _notif->nmIcon = nullptr;
    _notif->nmSound = reinterpret_cast<Handle>(-1);  // the system alert sound
    _notif->nmStr = _pascalMsgForUser;
    _notif->nmResp = NewNMUPP(FBAAlertCallback);
    _notif->nmRefCon = reinterpret_cast<long>(&_openedCount);
}

void FBAAlert::initNMRec(CFStringRef inKey, CFStringRef inDefaultText, CFStringRef inTable)
{
    CFBundleRef bundle = kvx::GetBundle().GetRefValue();
    if (bundle == nullptr)
        Gx::CFUtils::ThrowNilReference();
    CFStringRef message = CFBundleCopyLocalizedString(bundle, inKey, inDefaultText, inTable);
    initNMRec(message);
    CFRelease(message);
}

OSErr FBAAlert::notifyUser()
{
    if (_openedCount != 0)
        return 0;
    _openedCount = 1;
    return NMInstall(_notif);
}

NoPluginFBAAlert::NoPluginFBAAlert(int inPluginPort) : FBAAlert(CFSTR("")), _pluginPort(inPluginPort)
{
    initNMRec(CFSTR("NoPluginWarning"), CFSTR("The Vemora plugin is not properly installed."), CFSTR("Localizable"));
}

AccessibilityOffFBAAlert::AccessibilityOffFBAAlert() : FBAAlert(CFSTR(""))
{
    initNMRec(CFSTR("AXOffWarning"),
              CFSTR("Certain Vemora features require you to enable access for assistive devices. You can do this in "
                    "the \"Universal Access\" pane in System Preferences by making sure the checkbox labelled "
                    "\"Enable access for assistive devices\" is checked."),
              CFSTR("Localizable"));
}

NavButton2MisusageFBAAlert::NavButton2MisusageFBAAlert() : FBAAlert(CFSTR(""))
{
    initNMRec(CFSTR("NavButton2Warning"),
              CFSTR("Multiple triggerpoints were accidentally activated.\n\nYou only need to lightly tap on "
                    "triggerpoint II to activate it.  Pushing down on it will cause multiple triggerpoints to "
                    "activate."),
              CFSTR("Localizable"));
}

}  // namespace vmr
