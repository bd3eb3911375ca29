#include "Options.h"

std::optional<HostOptions> HostOptions::Parse(const QStringList& inArguments, QString& outError)
{
    HostOptions options;
    for (qsizetype i = 1; i < inArguments.size(); ++i) {
        const QString& argument = inArguments[i];
        auto value = [&]() -> std::optional<QString> {
            if (i + 1 >= inArguments.size()) {
                outError = QStringLiteral("%1 needs a value").arg(argument);
                return std::nullopt;
            }
            return inArguments[++i];
        };
        if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (argument == "--version") {
            options.version = true;
        } else if (argument == "--headless") {
            options.headless = true;
        } else if (argument == "--json") {
            options.json = true;
        } else if (argument == "--pane") {
            std::optional<QString> path = value();
            if (!path)
                return std::nullopt;
            options.panes << *path;
        } else if (argument == "--click") {
            options.actions.push_back({HostAction::Click});
        } else if (argument == "--print") {
            options.actions.push_back({HostAction::Print});
        } else if (argument == "--unselect") {
            options.actions.push_back({HostAction::Unselect});
        } else if (argument == "--activate") {
            options.actions.push_back({HostAction::Activate});
        } else if (argument == "--wait") {
            std::optional<QString> text = value();
            bool ok = false;
            double seconds = text ? text->toDouble(&ok) : 0;
            if (!ok || seconds < 0) {
                outError = QStringLiteral("--wait needs a number of seconds, not \"%1\"").arg(text.value_or(""));
                return std::nullopt;
            }
            options.actions.push_back({HostAction::Wait, seconds});
        } else if (argument == "--screenshot") {
            std::optional<QString> file = value();
            if (!file)
                return std::nullopt;
            options.actions.push_back({HostAction::Screenshot, 0, *file});
        } else {
            outError = QStringLiteral("unknown option \"%1\"").arg(argument);
            return std::nullopt;
        }
    }
    if (!options.actions.empty() && !options.headless) {
        outError = QStringLiteral("--click, --wait, --print, --unselect, --activate and --screenshot need --headless");
        return std::nullopt;
    }
    if (options.headless && options.panes.isEmpty()) {
        outError = QStringLiteral("--headless needs --pane PATH");
        return std::nullopt;
    }
    return options;
}

QString HostOptions::Usage(const QString& inProgram)
{
    return QStringLiteral("Usage: %1 [--pane PATH]...\n"
                          "       %1 --headless --pane PATH [--json] [ACTION]...\n"
                          "       %1 --help | --version\n"
                          "\n"
                          "Shows the installed preference panes (from the preference-pane folders of the user,\n"
                          "the installation and the system) and the one chosen; --pane adds a pane bundle and\n"
                          "shows it.\n"
                          "\n"
                          "--headless needs no display: it selects the pane, does the actions in the order\n"
                          "given, and prints what the pane shows (button, status line, sheet) at the end.\n"
                          "  --click              press the pane's button (nothing happens while it is disabled)\n"
                          "  --wait SECONDS       let the pane run (its timers fire) for that long\n"
                          "  --print              print what the pane shows now\n"
                          "  --activate           tell the pane the application became active\n"
                          "  --unselect           leave the pane, and print its answer to shouldUnselect\n"
                          "  --screenshot FILE    save a PNG of the pane's view\n"
                          "  --json               print one JSON object per line instead of text\n"
                          "\n"
                          "Exit status: 0 done, 1 the pane could not be shown or a screenshot not saved,\n"
                          "2 wrong options.\n")
        .arg(inProgram);
}
