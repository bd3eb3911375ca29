// What a pane shows at one moment: its button, its status line and a sheet, as the settings
// host prints it for a person (text) or a program (one JSON object per line).
#pragma once

#include <AppKit/AppKit.h>

#include <QString>

#include <optional>

struct PaneReport {
    double seconds = 0;  // since the pane was selected
    std::optional<QString> buttonTitle;
    bool buttonEnabled = false;
    std::optional<QString> status;
    std::optional<QString> sheetTitle;
    std::optional<QString> sheetMessage;
    std::optional<QString> note;  // what the host just did, when it did something
    // Seconds until the main run loop's next timer fires; nothing when none is scheduled.
    std::optional<double> nextTimer;

    static PaneReport Of(NSView* inView, NSWindow& inWindow, double inSeconds);
    QString Text() const;
    QString Json() const;
};
