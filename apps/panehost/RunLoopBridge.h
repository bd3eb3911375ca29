// Lets Qt's event loop drive the main CFRunLoop: whenever the run loop has work (a timer due,
// a source signalled) its descriptor becomes readable and the work is done at once.
#pragma once

#include <QObject>
#include <QSocketNotifier>

class RunLoopBridge final : public QObject {
public:
    RunLoopBridge();

private:
    void RunDueWork();

    QSocketNotifier mNotifier;
};
