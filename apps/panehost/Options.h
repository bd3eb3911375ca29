// The settings host's command line.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

struct HostAction {
    enum Kind { Click, Wait, Print, Screenshot, Unselect, Activate } kind = Print;
    double seconds{};  // Wait
    QString file{};    // Screenshot
};

struct HostOptions {
    QStringList panes;  // --pane, in order; the last one is shown
    bool headless = false;
    bool json = false;
    bool help = false;
    bool version = false;
    std::vector<HostAction> actions;  // in the order given

    // The options, or a message saying what is wrong with them.
    static std::optional<HostOptions> Parse(const QStringList& inArguments, QString& outError);
    static QString Usage(const QString& inProgram);
};
