// The settings application: shows preference panes in a window, or drives one without a
// display (--headless) and prints what it shows.
#include "Options.h"
#include "PaneBrowser.h"
#include "PaneController.h"
#include "PaneReport.h"
#include "RunLoopBridge.h"

#include <AppKit/AppKit.h>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

namespace {

void Print(const QString& inText)
{
    std::fputs(inText.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

void PostBecomingActive()
{
    NSAutoreleasePool pool;
    NSNotificationCenter::defaultCenter()->postNotificationNameObject(NSApplicationWillBecomeActiveNotification,
                                                                      nullptr);
}

void Wait(double inSeconds)
{
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(inSeconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
}

NSButton* ButtonOf(NSView* inView)
{
    for (NSView* subview : inView ? inView->subviews() : std::vector<NSView*>{})
        if (auto* button = dynamic_cast<NSButton*>(subview))
            return button;
    return nullptr;
}

// Does the actions in order and prints what the pane shows; answers the exit status.
int RunHeadless(const HostOptions& inOptions, NSWindow& inWindow, PaneController& inController)
{
    QElapsedTimer clock;
    clock.start();
    int status = 0;
    auto report = [&](std::optional<QString> inNote) {
        NSView* view = inController.Pane() ? inController.Pane()->mainView() : nullptr;
        PaneReport shown = PaneReport::Of(view, inWindow, clock.elapsed() / 1000.0);
        shown.note = std::move(inNote);
        Print(inOptions.json ? shown.Json() + "\n" : shown.Text());
    };
    for (const HostAction& action : inOptions.actions) {
        QCoreApplication::processEvents();
        NSView* view = inController.Pane() ? inController.Pane()->mainView() : nullptr;
        switch (action.kind) {
        case HostAction::Click:
            if (NSButton* button = ButtonOf(view))
                button->performClick(nullptr);
            break;
        case HostAction::Wait:
            Wait(action.seconds);
            break;
        case HostAction::Print:
            report(std::nullopt);
            break;
        case HostAction::Activate:
            PostBecomingActive();
            break;
        case HostAction::Unselect: {
            NSPreferencePaneUnselectReply reply = inController.Unselect();
            const char* words[] = {"NSUnselectCancel", "NSUnselectNow", "NSUnselectLater"};
            report(QStringLiteral("shouldUnselect answered %1").arg(words[reply]));
            break;
        }
        case HostAction::Screenshot:
            if (view == nullptr || view->widget() == nullptr || !view->widget()->grab().save(action.file, "PNG")) {
                std::fprintf(stderr, "panehost: cannot save a screenshot to %s\n", action.file.toUtf8().constData());
                status = 1;
            } else {
                NSSize size = view->frameSize();
                report(QStringLiteral("screenshot of %1x%2 saved to %3")
                           .arg(size.width)
                           .arg(size.height)
                           .arg(QFileInfo(action.file).absoluteFilePath()));
            }
            break;
        }
    }
    QCoreApplication::processEvents();
    report(std::nullopt);
    return status;
}

}  // namespace

int main(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    QString error;
    std::optional<HostOptions> options = HostOptions::Parse(arguments, error);
    if (!options) {
        std::fprintf(stderr, "panehost: %s\nTry \"panehost --help\".\n", error.toUtf8().constData());
        return 2;
    }
    if (options->help) {
        Print(HostOptions::Usage(QFileInfo(arguments[0]).fileName()));
        return 0;
    }
    if (options->version) {
        std::printf("panehost %s\n", SPINDECK_VERSION);
        return 0;
    }
    if (options->headless) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        // The offscreen platform says so each time a window asks for what it cannot do
        // (raise, size hints); that is expected here and only hides the pane's own output.
        qInstallMessageHandler([](QtMsgType inType, const QMessageLogContext&, const QString& inMessage) {
            if (!inMessage.startsWith(QLatin1String("This plugin does not support")))
                std::fprintf(stderr, "%s\n", inMessage.toLocal8Bit().constData());
            if (inType == QtFatalMsg)
                std::abort();
        });
    } else if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        std::fprintf(stderr, "panehost: there is no display to show a window on; use --headless\n");
        return 1;
    }

    QApplication application(argc, argv);
    application.setApplicationName(QStringLiteral("panehost"));
    NSAutoreleasePool pool;
    // What the panes autorelease while handling an event goes when Qt waits for the next one.
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                     [&pool] { pool.drain(); });
    RunLoopBridge runLoop;
    QObject::connect(&application, &QGuiApplication::applicationStateChanged, [](Qt::ApplicationState inState) {
        if (inState == Qt::ApplicationActive)
            PostBecomingActive();
    });

    NSWindow* window = NSNew<NSWindow>(NSSTR("Settings"));
    int status = 0;
    {
        PaneController controller(*window);
        if (options->headless) {
            window->makeKeyAndOrderFront(nullptr);
            if (std::optional<QString> failure = controller.Select(options->panes.last())) {
                std::fprintf(stderr, "panehost: %s\n", failure->toUtf8().constData());
                status = 1;
            } else {
                status = RunHeadless(*options, *window, controller);
            }
        } else {
            PaneBrowser browser(*window, controller, options->panes);
            browser.resize(820, 320);
            browser.show();
            if (!options->panes.isEmpty())
                browser.Choose(options->panes.last());
            status = application.exec();
        }
    }
    window->release();
    pool.drain();
    return status;
}
