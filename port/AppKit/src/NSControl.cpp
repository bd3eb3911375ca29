// Controls over Qt's buttons and labels.
#include <AppKit/NSControl.h>

#include "QtStrings.h"

#include <QAbstractButton>
#include <QLabel>
#include <QVariant>

#include <algorithm>

using appkit::FromQString;
using appkit::ToQString;

BOOL NSControl::sendAction()
{
    if (!mAction || mTarget == nullptr)
        return NO;
    mTarget->performSelector(mAction, this);
    return YES;
}

BOOL NSControl::isEnabled() const { return widget() && widget()->isEnabled() ? YES : NO; }

void NSControl::setEnabled(BOOL inEnabled)
{
    if (widget())
        widget()->setEnabled(inEnabled != NO);
}

NSButton::NSButton(QWidget* inButton) : NSControl(inButton, false)
{
    if (auto* button = qobject_cast<QAbstractButton*>(inButton))
        QObject::connect(button, &QAbstractButton::clicked, button, [this] { sendAction(); });
}

namespace {
// A title longer than the width the interface file gave the button would otherwise run into
// its edges, and some styles pad a push button's text very little; a button keeps its
// interface width as a floor and grows to its size hint plus an em on each side.
void FitToTitle(QAbstractButton& ioButton)
{
    static constexpr const char* kDesignedWidth = "appkitDesignedWidth";
    QVariant designed = ioButton.property(kDesignedWidth);
    if (!designed.isValid()) {
        designed = ioButton.minimumWidth();
        ioButton.setProperty(kDesignedWidth, designed);
    }
    const int em = ioButton.fontMetrics().horizontalAdvance(QLatin1Char('M'));
    ioButton.setMinimumWidth(std::max(designed.toInt(), ioButton.sizeHint().width() + 2 * em));
    ioButton.updateGeometry();
}
}  // namespace

NSString* NSButton::title() const
{
    auto* button = qobject_cast<QAbstractButton*>(widget());
    return button ? FromQString(button->text().replace(QLatin1String("&&"), QLatin1String("&"))) : nullptr;
}

void NSButton::setTitle(NSString* inTitle)
{
    if (auto* button = qobject_cast<QAbstractButton*>(widget())) {
        // Qt reads '&' as a shortcut mark; a button title shows it as it is.
        button->setText(ToQString(inTitle).replace(QLatin1Char('&'), QLatin1String("&&")));
        FitToTitle(*button);
    }
}

void NSButton::performClick(id)
{
    if (isEnabled())
        sendAction();
}

NSTextField::NSTextField(QWidget* inLabel) : NSControl(inLabel, false)
{
    if (auto* label = qobject_cast<QLabel*>(inLabel))
        label->setTextFormat(Qt::PlainText);
}

NSString* NSTextField::stringValue() const
{
    auto* label = qobject_cast<QLabel*>(widget());
    return label ? FromQString(label->text()) : nullptr;
}

void NSTextField::setStringValue(NSString* inText)
{
    if (auto* label = qobject_cast<QLabel*>(widget()))
        label->setText(ToQString(inText));
}

void NSTextField::setTitleWithMnemonic(NSString* inText)
{
    QString text = ToQString(inText);
    QString shown;
    bool markTaken = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('&') && i + 1 < text.size() && text[i + 1] == QLatin1Char('&')) {
            shown += QLatin1Char('&');
            ++i;
        } else if (text[i] == QLatin1Char('&') && !markTaken) {
            markTaken = true;
        } else {
            shown += text[i];
        }
    }
    if (auto* label = qobject_cast<QLabel*>(widget()))
        label->setText(shown);
}
