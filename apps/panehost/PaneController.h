// One pane in the settings window: loads its bundle, makes its principal class and sends
// it the life-cycle messages in the order the settings application sends them.
#pragma once

#include <PreferencePanes/PreferencePanes.h>

#include <QString>

#include <optional>

class PaneController final {
public:
    explicit PaneController(NSWindow& inWindow);
    ~PaneController();
    PaneController(const PaneController&) = delete;
    PaneController& operator=(const PaneController&) = delete;

    // Loads the pane at inPath and selects it: initWithBundle, the main view loaded,
    // willSelect, the view shown, didSelect. Answers an error message, or nothing.
    std::optional<QString> Select(const QString& inPath);
    // Asks the shown pane whether it may go and, unless it declines, takes it away:
    // willUnselect, the view removed, didUnselect. Answers the pane's reply.
    NSPreferencePaneUnselectReply Unselect();

    NSPreferencePane* Pane() const { return mPane; }

private:
    NSWindow& mWindow;
    NSPreferencePane* mPane = nullptr;
};
