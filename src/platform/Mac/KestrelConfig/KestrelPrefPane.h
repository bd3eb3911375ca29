// The spindeck's preference pane: shows whether the background helper runs, starts and
// stops it with one button, and opens the configuration application when it is selected.
#pragma once

#include <PreferencePanes/PreferencePanes.h>

class KestrelPrefPane final : public NSPreferencePane {
public:
    KestrelPrefPane* initWithBundle(NSBundle* inBundle) override;

    void didSelect() override;
    void didUnselect() override;
    void willUnselect() override;
    NSPreferencePaneUnselectReply shouldUnselect() override;

    void toggleFBAHelper(id inSender);
    void launchConfigTool(id inSender);
    // Refreshes the button and the status line; answers whether the helper runs.
    BOOL updateStartStopButton(id inIgnored);
    NSString* configAppPath();
    void checkForFBAQuit(id inTimer);
    void openConsoleNotFoundErrSheet();

    const NSSelectorTable& selectors() const override;
    const NSOutletTable& outlets() const override;
    const char* className() const override { return "KestrelPrefPane"; }

private:
    CFStringRef appID = nullptr;
    NSButton* _toggleFBABtn = nullptr;
    NSTextField* _statusText = nullptr;
};
