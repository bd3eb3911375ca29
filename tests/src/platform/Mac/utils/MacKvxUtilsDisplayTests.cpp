// The overlay window on a private X server: a window the window manager leaves alone, where
// its bounds say.
#include "platform/Mac/utils/MacKvxUtils.h"

#include "XvfbDisplay.h"

#include <gtest/gtest.h>

#include <PortSupport/UniqueHandle.h>

#include <tuple>

namespace {

using namespace spindeck::test;

using OwnedWindow = port::UniqueHandle<OpaqueWindowPtr, DisposeWindow>;

constexpr Rect kBounds{100, 50, 160, 250};  // top, left, bottom, right

TEST(SystemItems, OnADisplayTheOverlayIsAnOverrideRedirectWindowAtItsBounds)
{
    XvfbDisplay server;
    if (std::string why = server.Unavailable(); !why.empty())
        GTEST_SKIP() << why;
    DisplayVariable display(server.Name());
    OwnedWindow window(kvx::CreateOverlayWindow(kWindowNoShadowAttribute, &kBounds, kOverlayWindowClass));
    std::vector<xcb_window_t> windows = server.TopLevelWindows();
    ASSERT_EQ(windows.size(), 1u);

    xcb_connection_t* x = server.Connection();
    XReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(x, xcb_get_window_attributes(x, windows[0]), nullptr));
    XReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(x, xcb_get_geometry(x, windows[0]), nullptr));
    ASSERT_TRUE(attributes && geometry);
    EXPECT_TRUE(attributes->override_redirect);
    EXPECT_EQ(std::tuple(geometry->x, geometry->y, geometry->width, geometry->height),
              std::tuple(kBounds.left, kBounds.top, kBounds.right - kBounds.left, kBounds.bottom - kBounds.top));
}

}  // namespace
