// The owner of the active window, asked of the X display's window manager.
#include "ActiveWindow.h"

#include <MacTypes.h>
#include <PortSupport/UniqueHandle.h>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace carbon {

namespace {

template <class T>
using Reply = port::UniqueMemory<T>;
using Connection = port::UniqueHandle<xcb_connection_t, xcb_disconnect>;

xcb_atom_t ExistingAtom(xcb_connection_t* inConnection, const char* inName)
{
    auto cookie = xcb_intern_atom(inConnection, 1, UInt16(std::strlen(inName)), inName);
    Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(inConnection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

// The first 32-bit value of a window property of the given type.
std::optional<UInt32> PropertyValue(xcb_connection_t* inConnection, xcb_window_t inWindow, xcb_atom_t inProperty,
                                    xcb_atom_t inType)
{
    auto cookie = xcb_get_property(inConnection, 0, inWindow, inProperty, inType, 0, 1);
    Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(inConnection, cookie, nullptr));
    if (!reply || reply->type != inType || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
        return std::nullopt;
    UInt32 value;
    std::memcpy(&value, xcb_get_property_value(reply.get()), sizeof value);
    return value;
}

xcb_window_t RootWindow(xcb_connection_t* inConnection, int inScreen)
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(inConnection));
    for (; screens.rem > 0; xcb_screen_next(&screens), --inScreen)
        if (inScreen == 0)
            return screens.data->root;
    return XCB_WINDOW_NONE;
}

}  // namespace

std::optional<pid_t> ActiveWindowOwner()
{
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0')
        return std::nullopt;
    int screen = 0;
    Connection connection(xcb_connect(display, &screen));
    if (xcb_connection_has_error(connection.get()))
        return std::nullopt;
    xcb_window_t root = RootWindow(connection.get(), screen);
    xcb_atom_t activeWindow = ExistingAtom(connection.get(), "_NET_ACTIVE_WINDOW");
    xcb_atom_t windowPID = ExistingAtom(connection.get(), "_NET_WM_PID");
    if (root == XCB_WINDOW_NONE || activeWindow == XCB_ATOM_NONE || windowPID == XCB_ATOM_NONE)
        return std::nullopt;
    std::optional<UInt32> window = PropertyValue(connection.get(), root, activeWindow, XCB_ATOM_WINDOW);
    if (!window || *window == XCB_WINDOW_NONE)
        return std::nullopt;
    std::optional<UInt32> pid = PropertyValue(connection.get(), *window, windowPID, XCB_ATOM_CARDINAL);
    if (!pid || *pid == 0)
        return std::nullopt;
    return pid_t(*pid);
}

}  // namespace carbon
