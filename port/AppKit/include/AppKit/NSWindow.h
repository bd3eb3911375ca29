// Windows: a top-level Qt widget with one content view, and at most one sheet attached.
#pragma once

#include <AppKit/NSString.h>
#include <AppKit/NSView.h>

class NSAlert;

class NSWindow final : public NSObject {
public:
    explicit NSWindow(NSString* inTitle);

    void setContentView(NSView* inView);  // retained; nil takes the view out
    NSView* contentView() const { return mContentView; }
    void setTitle(NSString* inTitle);
    void makeKeyAndOrderFront(id inSender);
    void orderOut(id inSender);

    // The alert shown as this window's sheet, or nil.
    NSAlert* attachedSheet() const { return mSheet; }
    // Port extension, used by alerts: the window keeps its sheet until the sheet ends.
    void setAttachedSheet(NSAlert* inAlert);

    QWidget* widget() const { return mWidget; }
    const char* className() const override { return "NSWindow"; }

protected:
    void Finalize() noexcept override;

private:
    QWidget* mWidget;
    NSView* mContentView = nullptr;
    NSAlert* mSheet = nullptr;
};
