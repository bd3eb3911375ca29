// The demo configuration application: a window that shows whether the backend runs and
// starts or stops it through the same product services the settings pane uses.
#include <platform/Mac/spindeckMac/spindeckMac.h>

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFBundle.h>
#include <platform/Mac/utils/BundleUtils.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include <cstdio>
#include <cstring>

namespace {

constexpr int kRefreshMilliseconds = 1000;

Gx::CFString Localized(const char* inKey)
{
    Gx::CFString key(inKey, kCFStringEncodingUTF8);
    return kvx::GetBundle().GetLocalizedString(key, CFSTR(""), nullptr);
}

QString ToQString(const Gx::CFString& inText)
{
    std::string bytes;
    if (inText.IsValid() && inText.GetLength() > 0)
        inText.GetString(bytes, kCFStringEncodingUTF8);
    return QString::fromStdString(bytes);
}

// The pane's own wording: the button names the verb, the line the state and what the
// button would do.
void ShowState(QLabel& ioStatus, QPushButton& ioButton)
{
    bool available = false;
    bool running = spindeck::IsBackendRunning(nullptr, &available);
    Gx::CFString title(CFStringCreateWithFormat(nullptr, nullptr, Localized("Start/StopBtn"),
                                                Localized(running ? "Stop" : "Start").UseRef()),
                       false);
    Gx::CFString line(CFStringCreateWithFormat(nullptr, nullptr, Localized("Start/StopText"),
                                               Localized(running ? "enabled" : "disabled").UseRef(),
                                               Localized(running ? "disable" : "enable").UseRef()),
                      false);
    ioButton.setText(ToQString(title));
    ioStatus.setText(ToQString(line));
    ioButton.setEnabled(available);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && std::strcmp(argv[1], "--help") == 0) {
        std::printf("Usage: %s [--help | --version | Qt options]\n"
                    "The Vemora spindeck demo configuration application: shows whether the background helper\n"
                    "runs, and starts or stops it.\n",
                    argv[0]);
        return 0;
    }
    if (argc > 1 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("Vemora spindeck %s\n", SPINDECK_VERSION);
        return 0;
    }
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle("Vemora spindeck");
    auto* layout = new QVBoxLayout(&window);
    auto* status = new QLabel(&window);
    status->setObjectName("statusText");
    auto* button = new QPushButton(&window);
    button->setObjectName("toggleButton");
    layout->addWidget(status);
    layout->addWidget(button);

    auto refresh = [status, button] {
        try {
            ShowState(*status, *button);
        } catch (const Gx::Exception&) {
            status->setText("The background helper cannot be found in this application.");
            button->setEnabled(false);
        }
    };
    QObject::connect(button, &QPushButton::clicked, [refresh] {
        try {
            bool launched = false;
            spindeck::ToggleBackendState(nullptr, &launched, false);
        } catch (const Gx::Exception&) {
            std::fprintf(stderr, "Vemora spindeck: the background helper could not be started or stopped\n");
        }
        refresh();
    });
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, refresh);
    timer.start(kRefreshMilliseconds);
    refresh();
    window.show();
    return application.exec();
}
