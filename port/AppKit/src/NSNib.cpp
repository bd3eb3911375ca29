// Interfaces from Qt Designer files.
#include <AppKit/NSLog.h>
#include <AppKit/NSNib.h>

#include "QtStrings.h"

#include <QAbstractButton>
#include <QFile>
#include <QLabel>
#include <QDir>
#include <QFileInfo>
#include <QUiLoader>
#include <QWidget>

#include <set>
#include <string>

const NSOutletTable::Setter* NSOutletTable::Find(std::string_view inName) const
{
    for (const auto& [name, setter] : mOutlets)
        if (name == inName)
            return &setter;
    return nullptr;
}

namespace {

// The framework object for a widget of the interface, owned by the caller; nil for widgets
// the framework has no class for.
NSView* ViewFor(QWidget* inWidget)
{
    if (qobject_cast<QAbstractButton*>(inWidget))
        return NSNew<NSButton>(inWidget);
    if (qobject_cast<QLabel*>(inWidget))
        return NSNew<NSTextField>(inWidget);
    return nullptr;
}

// Binds one widget to the owner. False, with the reason logged, when the interface asks for
// something the owner cannot do.
bool Bind(NSView& ioTop, QWidget* inWidget, NSObject& inOwner, const NSOutletTable& inOutlets)
{
    std::string name = inWidget->objectName().toStdString();
    QByteArray action = inWidget->property("action").toByteArray();
    const NSOutletTable::Setter* outlet = inOutlets.Find(name);
    if (outlet == nullptr && action.isEmpty())
        return true;
    NSView* view = ViewFor(inWidget);
    if (view == nullptr) {
        NSLog(NSSTR("Interface: the widget %s is of a kind no outlet or action can use"), name.c_str());
        return false;
    }
    ioTop.addSubview(view);
    view->release();
    if (outlet && !(*outlet)(inOwner, view)) {
        NSLog(NSSTR("Interface: the outlet %s of %s cannot hold a %s"), name.c_str(), inOwner.className(),
              view->className());
        return false;
    }
    if (!action.isEmpty()) {
        auto* control = dynamic_cast<NSControl*>(view);
        // A selector holds its name without owning it: names read from files are kept for the
        // life of the program, once each.
        static std::set<std::string> sNames;
        SEL selector(sNames.insert(action.toStdString()).first->c_str());
        if (!inOwner.respondsToSelector(selector)) {
            NSLog(NSSTR("Interface: %s does not answer the action %s of %s"), inOwner.className(), action.constData(),
                  name.c_str());
            return false;
        }
        control->setTarget(&inOwner);
        control->setAction(selector);
    }
    return true;
}

}  // namespace

NSView* NSLoadInterface(NSString* inPath, NSObject& inOwner, const NSOutletTable& inOutlets)
{
    QFile file(appkit::ToQString(inPath));
    if (inPath == nullptr || !file.open(QIODevice::ReadOnly)) {
        NSLog(NSSTR("Interface: cannot read %@"), inPath);
        return nullptr;
    }
    QUiLoader loader;
    // Images an interface names (an icon beside a heading) are files next to it.
    loader.setWorkingDirectory(QFileInfo(file).absoluteDir());
    QWidget* top = loader.load(&file);
    if (top == nullptr) {
        NSLog(NSSTR("Interface: %@ is not a readable interface: %s"), inPath,
              loader.errorString().toUtf8().constData());
        return nullptr;
    }
    NSView* view = NSNew<NSView>(top, true);
    for (QWidget* widget : top->findChildren<QWidget*>()) {
        if (!Bind(*view, widget, inOwner, inOutlets)) {
            view->release();
            return nullptr;
        }
    }
    return view;
}
