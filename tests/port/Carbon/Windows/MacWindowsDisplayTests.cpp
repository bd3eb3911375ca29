// Windows on a private X server: each window record has an X window that follows it.
#include "WindowTesting.h"
#include "XvfbDisplay.h"

#include <gtest/gtest.h>
#include <xcb/shape.h>

namespace {

using namespace spindeck::test;

TEST(MacWindows, OnADisplayEachWindowIsAnXWindowThatFollowsItsRecord)
{
    XvfbDisplay server;
    if (std::string why = server.Unavailable(); !why.empty())
        GTEST_SKIP() << why;
    DisplayVariable display(server.Name());
    xcb_connection_t* x = server.Connection();
    auto mapState = [x](xcb_window_t inWindow) {
        XReply<xcb_get_window_attributes_reply_t> reply(
            xcb_get_window_attributes_reply(x, xcb_get_window_attributes(x, inWindow), nullptr));
        return reply ? reply->map_state : 0xFF;
    };
    auto inputRectangles = [x](xcb_window_t inWindow) {
        XReply<xcb_shape_get_rectangles_reply_t> reply(
            xcb_shape_get_rectangles_reply(x, xcb_shape_get_rectangles(x, inWindow, XCB_SHAPE_SK_INPUT), nullptr));
        return reply ? int(reply->rectangles_len) : -1;
    };
    {
        Window clickable(kDocumentWindowClass, kWindowNoAttributes);
        Window ignoring(kOverlayWindowClass, kWindowIgnoreClicksAttribute);
        std::vector<xcb_window_t> windows = server.TopLevelWindows();  // in stacking order
        ASSERT_EQ(windows.size(), 2u);
        EXPECT_EQ(mapState(windows[0]), XCB_MAP_STATE_UNMAPPED);
        ShowWindow(clickable.ref);
        EXPECT_TRUE(XvfbDisplay::Eventually([&] { return mapState(windows[0]) == XCB_MAP_STATE_VIEWABLE; }));
        HideWindow(clickable.ref);
        EXPECT_TRUE(XvfbDisplay::Eventually([&] { return mapState(windows[0]) == XCB_MAP_STATE_UNMAPPED; }));

        EXPECT_EQ(inputRectangles(windows[0]), 1);
        EXPECT_TRUE(XvfbDisplay::Eventually([&] { return inputRectangles(windows[1]) == 0; }));
    }
    EXPECT_TRUE(XvfbDisplay::Eventually([&] { return server.TopLevelWindows().empty(); }));
}

}  // namespace
