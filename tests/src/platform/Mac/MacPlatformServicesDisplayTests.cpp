// The platform services on a private X server: the front process is the owner of the
// window the server calls active.
#include "platform/PlatformServices.h"

#include "ChildProcess.h"
#include "PlatformTesting.h"
#include "XvfbDisplay.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace {

using namespace spindeck::test;

class PlatformServicesOnADisplay : public PrivateHome {};

TEST_F(PlatformServicesOnADisplay, TheFrontProcessIsTheActiveWindowsOwner)
{
    XvfbDisplay display;
    if (!display.Unavailable().empty())
        GTEST_SKIP() << display.Unavailable();
    ChildProcess sleeper("/bin/sleep", {"30"});
    xcb_connection_t* x = display.Connection();
    xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    xcb_window_t window = xcb_generate_id(x);
    xcb_create_window(x, XCB_COPY_FROM_PARENT, window, root, 0, 0, 10, 10, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    auto atom = [&](const char* inName) {
        XReply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, UInt16(strlen(inName)), inName), nullptr));
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    };
    UInt32 pid = UInt32(sleeper.PID());
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &pid);
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, root, atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 32, 1, &window);
    std::free(xcb_get_input_focus_reply(x, xcb_get_input_focus(x), nullptr));  // the server has it all
    DisplayVariable variable(display.Name());
    EXPECT_EQ(kvx::Platform::instance().getFrontProcessName(), "sleep");
}

}  // namespace
