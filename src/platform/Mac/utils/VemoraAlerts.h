// Warnings for the user from the product's parts that have no window: each kind posts one
// note through the Notification Manager, with the system alert sound, and at most one note of
// this family is up at a time, whatever its kind.
#pragma once

#include <Carbon/Notification.h>
#include <CoreFoundation/CFString.h>

namespace vmr {

// The response routine of every note of the family: the note is gone, so the next may come.
// It lowers the count that the record's reference constant points at; the record stays.
void FBAAlertCallback(NMRec* inRecord);

class FBAAlert {
public:
    // A note showing inMessage.
    explicit FBAAlert(CFStringRef inMessage);
    // A note showing the current bundle's text for inKey in its "Localizable" table, or
    // inDefaultText. Throws Gx::RuntimeError 'cfnr' when there is no current bundle.
    FBAAlert(CFStringRef inKey, CFStringRef inDefaultText);
    // Gives back the response routine's descriptor only: the note may outlive the alert, so
    // the record stays, and the Notification Manager has its own copy of the text.
    virtual ~FBAAlert();

    // Posts the note unless one of the family is up already, in which case this one is
    // dropped. 0 then and on success; otherwise NMInstall's error, and the family then stays
    // "up" and posts nothing more until a response routine runs.
    virtual OSErr notifyUser();

protected:
    void initNMRec(CFStringRef inMessage);
    void initNMRec(CFStringRef inKey, CFStringRef inDefaultText, CFStringRef inTable);

    NMRec* _notif = nullptr;  // never freed: the Notification Manager may hold it after we are gone
    Str255 _pascalMsgForUser = {};
    // 1 while a note of the family is up; shared by every kind.
    static int _openedCount;

private:
    FBAAlert(const FBAAlert&);
    FBAAlert& operator=(const FBAAlert&);
};

// The product's plug-in is missing or broken; inPluginPort is kept, not shown.
class NoPluginFBAAlert : public FBAAlert {
public:
    explicit NoPluginFBAAlert(int inPluginPort);

private:
    int _pluginPort;
};

// Features need access for assistive devices to be turned on.
class AccessibilityOffFBAAlert : public FBAAlert {
public:
    AccessibilityOffFBAAlert();
};

// Triggerpoint II was pressed too hard and set off others.
class NavButton2MisusageFBAAlert : public FBAAlert {
public:
    NavButton2MisusageFBAAlert();
};

}  // namespace vmr
