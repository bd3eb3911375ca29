// Views over Qt widgets.
#include <AppKit/NSView.h>

#include <QWidget>

NSView::NSView(QWidget* inWidget, bool inOwnsWidget) : mWidget(inWidget), mOwnsWidget(inOwnsWidget)
{
    // Qt deletes a widget with its parent; the view must then stop using it.
    if (mWidget)
        QObject::connect(mWidget, &QObject::destroyed, mWidget, [this] { mWidget = nullptr; });
}

void NSView::Finalize() noexcept
{
    for (NSView* subview : mSubviews)
        subview->release();
    mSubviews.clear();
    if (mWidget) {
        // The view's own connections (this one, a button's click) use the widget as their
        // context; none may call into the view once it is gone.
        QObject::disconnect(mWidget, nullptr, mWidget, nullptr);
        if (mOwnsWidget)
            delete mWidget;
    }
}

NSSize NSView::frameSize() const
{
    if (mWidget == nullptr)
        return {};
    return {static_cast<double>(mWidget->width()), static_cast<double>(mWidget->height())};
}

void NSView::addSubview(NSView* inView)
{
    if (inView == nullptr)
        return;
    inView->retain();
    mSubviews.push_back(inView);
    if (mWidget && inView->mWidget && inView->mWidget->parentWidget() != mWidget)
        inView->mWidget->setParent(mWidget);
    inView->setWindow(mWindow);
}

void NSView::setWindow(NSWindow* inWindow)
{
    mWindow = inWindow;
    for (NSView* subview : mSubviews)
        subview->setWindow(inWindow);
}
