// Windows over top-level Qt widgets.
#include <AppKit/NSAlert.h>
#include <AppKit/NSWindow.h>

#include "QtStrings.h"

#include <QVBoxLayout>
#include <QWidget>

NSWindow::NSWindow(NSString* inTitle) : mWidget(new QWidget)
{
    auto* layout = new QVBoxLayout(mWidget);
    layout->setContentsMargins(0, 0, 0, 0);
    mWidget->setWindowTitle(appkit::ToQString(inTitle));
}

void NSWindow::Finalize() noexcept
{
    if (mSheet)
        std::exchange(mSheet, nullptr)->release();
    setContentView(nullptr);
    delete mWidget;
}

void NSWindow::setContentView(NSView* inView)
{
    if (inView == mContentView)
        return;
    if (NSView* old = std::exchange(mContentView, nullptr)) {
        if (old->widget()) {
            old->widget()->hide();
            mWidget->layout()->removeWidget(old->widget());
            old->widget()->setParent(nullptr);
        }
        old->setWindow(nullptr);
        old->release();
    }
    if (inView == nullptr)
        return;
    mContentView = static_cast<NSView*>(inView->retain());
    if (inView->widget()) {
        mWidget->layout()->addWidget(inView->widget());
        inView->widget()->show();
    }
    inView->setWindow(this);
}

void NSWindow::setTitle(NSString* inTitle) { mWidget->setWindowTitle(appkit::ToQString(inTitle)); }

void NSWindow::makeKeyAndOrderFront(id)
{
    mWidget->show();
    mWidget->raise();
    mWidget->activateWindow();
}

void NSWindow::orderOut(id) { mWidget->hide(); }

void NSWindow::setAttachedSheet(NSAlert* inAlert)
{
    if (inAlert)
        inAlert->retain();
    if (NSAlert* old = std::exchange(mSheet, inAlert))
        old->release();
}
