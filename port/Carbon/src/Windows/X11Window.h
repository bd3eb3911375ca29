// The X11 side of a window: an override-redirect window on the display that $DISPLAY names.
#pragma once

#include <MacTypes.h>

#include <memory>

namespace carbon {

class X11Display;

class X11Window {
public:
    struct Style {
        bool paintsBackground;  // false: the window shows what lies beneath until drawn
        bool ignoresClicks;     // an empty input region: clicks reach the window below
    };

    enum class Outcome { Created, NoDisplay, Refused };

    // The window for a content rectangle in global coordinates, or nothing: NoDisplay when
    // $DISPLAY names no display that accepts a connection, Refused when the display does not
    // make the window.
    static std::unique_ptr<X11Window> Create(const Rect& inBounds, Style inStyle, Outcome& outOutcome);

    ~X11Window();
    X11Window(const X11Window&) = delete;
    X11Window& operator=(const X11Window&) = delete;

    void Map();
    void Unmap();

private:
    X11Window(std::shared_ptr<X11Display> inDisplay, UInt32 inWindow);

    std::shared_ptr<X11Display> mDisplay;
    UInt32 mWindow;
};

}  // namespace carbon
