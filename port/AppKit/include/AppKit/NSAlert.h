// Alerts shown as sheets: window-modal dialogs with a message, an informative text and, when
// no button titles are given, one default button "OK".
#pragma once

#include <AppKit/NSWindow.h>

#include <vector>

class QMessageBox;

class NSAlert final : public NSObject {
public:
    NSAlert();

    NSString* messageText() const { return mMessageText; }
    void setMessageText(NSString* inText);
    NSString* informativeText() const { return mInformativeText; }
    void setInformativeText(NSString* inText);
    void addButtonWithTitle(NSString* inTitle);
    std::vector<std::string> buttonTitles() const;

    // Shows the alert as a sheet of inWindow (a window of its own when inWindow is nil).
    // The delegate's didEnd selector, when given, gets the alert when a button ends it.
    void beginSheetModalForWindow(NSWindow* inWindow, id inDelegate, SEL inDidEndSelector);
    // Ends the sheet as its default button does.
    void endSheet();

    const char* className() const override { return "NSAlert"; }

protected:
    void Finalize() noexcept override;

private:
    NSString* mMessageText = nullptr;
    NSString* mInformativeText = nullptr;
    std::vector<NSString*> mButtons;
    NSWindow* mWindow = nullptr;
    id mDelegate = nullptr;
    SEL mDidEnd;
    QMessageBox* mBox = nullptr;
};

// An informational sheet on inDocWindow. Nil button titles give the single default button.
// The message is a format whose arguments follow it.
void NSBeginInformationalAlertSheet(NSString* inTitle, NSString* inDefaultButton, NSString* inAlternateButton,
                                    NSString* inOtherButton, NSWindow* inDocWindow, id inModalDelegate,
                                    SEL inDidEndSelector, SEL inDidDismissSelector, void* inContextInfo,
                                    NSString* inMessageFormat, ...);
