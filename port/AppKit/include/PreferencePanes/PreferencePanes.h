// Preference panes: the principal class of a pane bundle. The settings application makes the
// pane with initWithBundle, loads its main view from the bundle's NSMainNibFile, and sends
// the selection messages around showing it.
#pragma once

#include <AppKit/AppKit.h>

enum NSPreferencePaneUnselectReply {
    NSUnselectCancel = 0,
    NSUnselectNow = 1,
    NSUnselectLater = 2,
};

class NSPreferencePane : public NSObject {
public:
    virtual NSPreferencePane* initWithBundle(NSBundle* inBundle);

    NSBundle* bundle() const { return mBundle; }
    // Loads the interface named by NSMainNibFile ("<name>.ui" among the bundle's resources),
    // binds the outlets, and sends mainViewDidLoad; nil when it cannot be loaded.
    NSView* loadMainView();
    NSView* mainView() const { return mMainView; }

    virtual void mainViewDidLoad() {}
    virtual void willSelect() {}
    virtual void didSelect() {}
    virtual NSPreferencePaneUnselectReply shouldUnselect() { return NSUnselectNow; }
    virtual void willUnselect() {}
    virtual void didUnselect() {}

    // The outlets the interface binds; a pane without outlets has none.
    virtual const NSOutletTable& outlets() const;
    const char* className() const override { return "NSPreferencePane"; }

protected:
    void Finalize() noexcept override;

private:
    NSBundle* mBundle = nullptr;
    NSView* mMainView = nullptr;
};
