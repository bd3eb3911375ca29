#include "DisplayBell.h"

#include <xcb/xcb.h>

#include <cstdlib>

namespace carbon {

bool RingDisplayBell()
{
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0')
        return false;
    xcb_connection_t* connection = xcb_connect(display, nullptr);
    bool rung = xcb_connection_has_error(connection) == 0;
    if (rung) {
        xcb_bell(connection, 0);  // the server's own volume
        // A round trip, so that the bell has reached the server before the connection goes.
        free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    }
    xcb_disconnect(connection);
    return rung;
}

}  // namespace carbon
