// The settings window: the installed panes (from the preference-pane folders of the user,
// local and system domains, and any named on the command line) with their icons and names on
// the left, the chosen pane on the right.
#pragma once

#include "PaneController.h"

#include <QListWidget>
#include <QStringList>
#include <QWidget>

class PaneBrowser final : public QWidget {
public:
    PaneBrowser(NSWindow& inPaneWindow, PaneController& inController, const QStringList& inExtraPanes);

    // Selects the pane at inPath in the list (and so shows it).
    void Choose(const QString& inPath);

    static QStringList InstalledPanes();

private:
    void Add(const QString& inPath);
    void Show(QListWidgetItem* inItem);

    PaneController& mController;
    QListWidget mList;
};
