// The alert sound: the X server's bell, or the terminal's.
#include <Carbon/Sound.h>

#include <xcb/xcb.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace {

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

void RingTerminalBell()
{
    int terminal = ::open("/dev/tty", O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0)
        return;  // no terminal either: there is nothing to ring
    (void)!::write(terminal, "\a", 1);
    ::close(terminal);
}

}  // namespace

void SysBeep(SInt16)
{
    if (!RingDisplayBell())
        RingTerminalBell();
}
