// Controls: views that send an action selector to a target when the user works them.
#pragma once

#include <AppKit/NSString.h>
#include <AppKit/NSView.h>

class NSControl : public NSView {
public:
    using NSView::NSView;

    void setTarget(id inTarget) { mTarget = inTarget; }  // not retained
    id target() const { return mTarget; }
    void setAction(SEL inAction) { mAction = inAction; }
    SEL action() const { return mAction; }
    // Sends the action to the target, as a click does.
    BOOL sendAction();

    BOOL isEnabled() const;
    void setEnabled(BOOL inEnabled);

    const char* className() const override { return "NSControl"; }

private:
    id mTarget = nullptr;
    SEL mAction;
};

class NSButton final : public NSControl {
public:
    explicit NSButton(QWidget* inButton);  // a QAbstractButton of a loaded interface

    NSString* title() const;  // autoreleased
    void setTitle(NSString* inTitle);
    // Presses the button: its action is sent when it is enabled.
    void performClick(id inSender);

    const char* className() const override { return "NSButton"; }
};

class NSTextField final : public NSControl {
public:
    explicit NSTextField(QWidget* inLabel);  // a QLabel of a loaded interface

    NSString* stringValue() const;  // autoreleased
    void setStringValue(NSString* inText);
    // Sets the text with its first single '&' (the mnemonic mark) taken out and "&&" read as '&'.
    void setTitleWithMnemonic(NSString* inText);

    const char* className() const override { return "NSTextField"; }
};
