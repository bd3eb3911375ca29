// Windows on the X display, over xcb.
#include "X11Window.h"

#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <string>

namespace carbon {

// One connection serves every window made while $DISPLAY names the same display; it closes
// with the last of them. A changed $DISPLAY gets a connection of its own for the windows made
// after the change, and the earlier windows keep theirs.
class X11Display {
public:
    static std::shared_ptr<X11Display> Current();

    ~X11Display() { xcb_disconnect(mConnection); }
    X11Display(const X11Display&) = delete;
    X11Display& operator=(const X11Display&) = delete;

    xcb_connection_t* Connection() const { return mConnection; }
    const xcb_screen_t& Screen() const { return *mScreen; }
    bool HasShape() const { return mHasShape; }

private:
    X11Display(std::string inName, xcb_connection_t* inConnection, const xcb_screen_t* inScreen)
        : mName(std::move(inName)), mConnection(inConnection), mScreen(inScreen)
    {
        const xcb_query_extension_reply_t* shape = xcb_get_extension_data(mConnection, &xcb_shape_id);
        mHasShape = shape != nullptr && shape->present;
    }

    static std::shared_ptr<X11Display> Open(const std::string& inName);

    std::string mName;
    xcb_connection_t* mConnection;
    const xcb_screen_t* mScreen;  // lives as long as the connection's setup
    bool mHasShape = false;
};

std::shared_ptr<X11Display> X11Display::Open(const std::string& inName)
{
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(inName.c_str(), &screenNumber);
    if (xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);  // the error object xcb hands back must be freed as well
        return nullptr;
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && screenNumber > 0; --screenNumber)
        xcb_screen_next(&screens);
    if (screens.rem == 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::shared_ptr<X11Display>(new X11Display(inName, connection, screens.data));
}

std::shared_ptr<X11Display> X11Display::Current()
{
    const char* name = std::getenv("DISPLAY");
    if (name == nullptr || *name == '\0')
        return nullptr;
    static std::mutex sLock;
    static std::weak_ptr<X11Display> sShared;
    std::lock_guard guard(sLock);
    std::shared_ptr<X11Display> display = sShared.lock();
    // A connection the server has dropped is of no use to a new window.
    if (display && display->mName == name && !xcb_connection_has_error(display->mConnection))
        return display;
    display = Open(name);
    sShared = display;
    return display;
}

std::unique_ptr<X11Window> X11Window::Create(const Rect& inBounds, Style inStyle, Outcome& outOutcome)
{
    std::shared_ptr<X11Display> display = X11Display::Current();
    if (!display) {
        outOutcome = Outcome::NoDisplay;
        return nullptr;
    }
    xcb_connection_t* connection = display->Connection();
    const xcb_screen_t& screen = display->Screen();
    xcb_window_t window = xcb_generate_id(connection);

    // Values go in the order of their mask bits: background, then override-redirect.
    UInt32 mask = XCB_CW_OVERRIDE_REDIRECT;
    UInt32 values[2];
    int count = 0;
    if (inStyle.paintsBackground) {
        mask |= XCB_CW_BACK_PIXEL;
        values[count++] = screen.white_pixel;
    } else {
        mask |= XCB_CW_BACK_PIXMAP;
        values[count++] = XCB_BACK_PIXMAP_NONE;
    }
    values[count++] = 1;

    // X has no empty windows; an empty rectangle still keeps its record's bounds.
    UInt16 width = UInt16(std::max(inBounds.right - inBounds.left, 1));
    UInt16 height = UInt16(std::max(inBounds.bottom - inBounds.top, 1));
    xcb_void_cookie_t made = xcb_create_window_checked(connection, XCB_COPY_FROM_PARENT, window, screen.root,
                                                       inBounds.left, inBounds.top, width, height, 0,
                                                       XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, mask, values);
    if (xcb_generic_error_t* error = xcb_request_check(connection, made)) {
        std::free(error);
        outOutcome = Outcome::Refused;
        return nullptr;
    }
    if (inStyle.ignoresClicks && display->HasShape())
        xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, window, 0, 0,
                             0, nullptr);
    xcb_flush(connection);
    outOutcome = Outcome::Created;
    return std::unique_ptr<X11Window>(new X11Window(std::move(display), window));
}

X11Window::X11Window(std::shared_ptr<X11Display> inDisplay, UInt32 inWindow)
    : mDisplay(std::move(inDisplay)), mWindow(inWindow)
{
}

X11Window::~X11Window()
{
    xcb_destroy_window(mDisplay->Connection(), mWindow);
    xcb_flush(mDisplay->Connection());
}

void X11Window::Map()
{
    xcb_map_window(mDisplay->Connection(), mWindow);
    xcb_flush(mDisplay->Connection());
}

void X11Window::Unmap()
{
    xcb_unmap_window(mDisplay->Connection(), mWindow);
    xcb_flush(mDisplay->Connection());
}

}  // namespace carbon
