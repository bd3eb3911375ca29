// Alerts as window-modal Qt message boxes.
#include <AppKit/NSAlert.h>

#include "QtStrings.h"

#include <QMessageBox>
#include <QPushButton>

using appkit::ToQString;

namespace {

void Assign(NSString*& ioSlot, NSString* inText)
{
    if (inText)
        CFRetain(inText->CFString());
    if (ioSlot)
        CFRelease(ioSlot->CFString());
    ioSlot = inText;
}

}  // namespace

NSAlert::NSAlert() = default;

void NSAlert::Finalize() noexcept
{
    if (mBox) {
        QObject::disconnect(mBox, nullptr, mBox, nullptr);
        mBox->deleteLater();
    }
    Assign(mMessageText, nullptr);
    Assign(mInformativeText, nullptr);
    for (NSString*& title : mButtons)
        Assign(title, nullptr);
}

void NSAlert::setMessageText(NSString* inText) { Assign(mMessageText, inText); }

void NSAlert::setInformativeText(NSString* inText) { Assign(mInformativeText, inText); }

void NSAlert::addButtonWithTitle(NSString* inTitle)
{
    if (inTitle == nullptr)
        return;
    mButtons.push_back(nullptr);
    Assign(mButtons.back(), inTitle);
}

std::vector<std::string> NSAlert::buttonTitles() const
{
    std::vector<std::string> titles;
    for (NSString* title : mButtons)
        titles.push_back(title->UTF8String());
    if (titles.empty())
        titles.emplace_back("OK");
    return titles;
}

void NSAlert::beginSheetModalForWindow(NSWindow* inWindow, id inDelegate, SEL inDidEndSelector)
{
    mWindow = inWindow;
    mDelegate = inDelegate;
    mDidEnd = inDidEndSelector;
    mBox = new QMessageBox(QMessageBox::Information, ToQString(mMessageText), ToQString(mMessageText),
                           QMessageBox::NoButton, inWindow ? inWindow->widget() : nullptr);
    mBox->setInformativeText(ToQString(mInformativeText));
    mBox->setTextFormat(Qt::PlainText);
    for (const std::string& title : buttonTitles())
        mBox->addButton(QString::fromStdString(title), QMessageBox::AcceptRole);
    mBox->setWindowModality(inWindow ? Qt::WindowModal : Qt::ApplicationModal);
    QObject::connect(mBox, &QMessageBox::finished, mBox, [this] { endSheet(); });
    // The window keeps its sheet; an alert without a window keeps itself until it ends.
    if (inWindow)
        inWindow->setAttachedSheet(this);
    else
        retain();
    mBox->open();
}

void NSAlert::endSheet()
{
    if (mBox == nullptr)
        return;
    retain();  // the window may hold the last reference
    QObject::disconnect(mBox, nullptr, mBox, nullptr);
    mBox->hide();
    std::exchange(mBox, nullptr)->deleteLater();
    if (mDelegate && mDidEnd)
        mDelegate->performSelector(mDidEnd, this);
    if (mWindow && mWindow->attachedSheet() == this)
        mWindow->setAttachedSheet(nullptr);
    else if (mWindow == nullptr)
        release();  // the reference it kept while it showed without a window
    mWindow = nullptr;
    release();
}

void NSBeginInformationalAlertSheet(NSString* inTitle, NSString* inDefaultButton, NSString* inAlternateButton,
                                    NSString* inOtherButton, NSWindow* inDocWindow, id inModalDelegate,
                                    SEL inDidEndSelector, SEL, void*, NSString* inMessageFormat, ...)
{
    NSAlert* alert = NSNew<NSAlert>();
    alert->setMessageText(inTitle);
    if (inMessageFormat) {
        va_list arguments;
        va_start(arguments, inMessageFormat);
        CFStringRef message = CFStringCreateWithFormatAndArguments(nullptr, nullptr, inMessageFormat->CFString(),
                                                                   arguments);
        va_end(arguments);
        alert->setInformativeText(NSString::bridge(message));
        if (message)
            CFRelease(message);
    }
    for (NSString* title : {inDefaultButton, inAlternateButton, inOtherButton})
        alert->addButtonWithTitle(title);
    alert->beginSheetModalForWindow(inDocWindow, inModalDelegate, inDidEndSelector);
    alert->release();
}
