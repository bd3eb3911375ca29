#include "PaneReport.h"

#include "QtBridge.h"

#include <CoreFoundation/CFRunLoop.h>

#include <QJsonDocument>
#include <QJsonObject>

namespace {

template <class T>
T* FirstSubview(NSView* inView)
{
    if (inView == nullptr)
        return nullptr;
    for (NSView* subview : inView->subviews())
        if (auto* found = dynamic_cast<T*>(subview))
            return found;
    return nullptr;
}

QString Quoted(const std::optional<QString>& inText)
{
    return inText ? QStringLiteral("\"%1\"").arg(*inText) : QStringLiteral("(none)");
}

}  // namespace

PaneReport PaneReport::Of(NSView* inView, NSWindow& inWindow, double inSeconds)
{
    NSAutoreleasePool pool;
    PaneReport report;
    report.seconds = inSeconds;
    if (NSButton* button = FirstSubview<NSButton>(inView)) {
        report.buttonTitle = ToQString(button->title());
        report.buttonEnabled = button->isEnabled() != NO;
    }
    if (NSTextField* field = FirstSubview<NSTextField>(inView))
        report.status = ToQString(field->stringValue());
    CFAbsoluteTime next = CFRunLoopGetNextTimerFireDate(CFRunLoopGetMain(), kCFRunLoopDefaultMode);
    if (next != 0)
        report.nextTimer = next - CFAbsoluteTimeGetCurrent();
    if (NSAlert* sheet = inWindow.attachedSheet()) {
        report.sheetTitle = ToQString(sheet->messageText());
        report.sheetMessage = ToQString(sheet->informativeText());
    }
    return report;
}

QString PaneReport::Text() const
{
    QString text = QStringLiteral("at %1 s").arg(seconds, 0, 'f', 1);
    if (note)
        text += QStringLiteral(", %1").arg(*note);
    text += QStringLiteral(":\n  button: %1 (%2)\n  status: %3\n")
                .arg(Quoted(buttonTitle), buttonEnabled ? QStringLiteral("enabled") : QStringLiteral("disabled"),
                     Quoted(status));
    if (nextTimer)
        text += QStringLiteral("  timer:  fires in %1 s\n").arg(*nextTimer, 0, 'f', 1);
    if (sheetTitle)
        text += QStringLiteral("  sheet:  %1\n          %2\n").arg(Quoted(sheetTitle), Quoted(sheetMessage));
    return text;
}

QString PaneReport::Json() const
{
    QJsonObject object{{"seconds", seconds}, {"buttonEnabled", buttonEnabled}};
    auto put = [&object](const char* inKey, const std::optional<QString>& inValue) {
        object.insert(QLatin1String(inKey), inValue ? QJsonValue(*inValue) : QJsonValue());
    };
    put("button", buttonTitle);
    put("status", status);
    put("sheetTitle", sheetTitle);
    put("sheetMessage", sheetMessage);
    if (note)
        put("note", note);
    object.insert(QLatin1String("nextTimer"), nextTimer ? QJsonValue(*nextTimer) : QJsonValue());
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}
