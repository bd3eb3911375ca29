// Views: rectangles of the window's content, each one a Qt widget. A view owns the widget it
// made; a view over a widget that another view made (an outlet found in a loaded interface)
// only refers to it, and forgets it when Qt deletes it.
#pragma once

#include <AppKit/NSObject.h>

#include <vector>

class QWidget;
class NSWindow;

struct NSSize {
    double width = 0;
    double height = 0;
};

class NSView : public NSObject {
public:
    explicit NSView(QWidget* inWidget, bool inOwnsWidget);

    NSWindow* window() const { return mWindow; }
    NSSize frameSize() const;
    // Subviews are retained by their superview.
    void addSubview(NSView* inView);
    const std::vector<NSView*>& subviews() const { return mSubviews; }

    QWidget* widget() const { return mWidget; }
    // Port extension: the window the view is shown in, set by the window.
    void setWindow(NSWindow* inWindow);

    const char* className() const override { return "NSView"; }

protected:
    void Finalize() noexcept override;

private:
    QWidget* mWidget;
    bool mOwnsWidget;
    NSWindow* mWindow = nullptr;
    std::vector<NSView*> mSubviews;
};
