#include <Carbon/MacErrors.h>
#include <Carbon/MacWindows.h>

#include "XvfbDisplay.h"

#include <xcb/shape.h>

#include <tuple>

namespace {

using spindeck::test::DisplayVariable;
using spindeck::test::XReply;
using spindeck::test::XvfbDisplay;

constexpr Rect kBounds{40, 30, 140, 230};  // top, left, bottom, right
constexpr WindowDefSpec kSimple{kWindowDefProcID, {.procID = kWindowSimpleProc}};

auto Edges(const Rect& inRect) { return std::tuple(inRect.top, inRect.left, inRect.bottom, inRect.right); }

// Disposed of when the test ends, whatever it checked.
struct Window {
    Window(WindowClass inClass, WindowAttributes inAttributes)
        : status(CreateCustomWindow(&kSimple, inClass, inAttributes, &kBounds, &ref))
    {
    }
    ~Window() { DisposeWindow(ref); }
    WindowRef ref = nullptr;
    OSStatus status;
};

TEST(MacWindows, WithoutADisplayAWindowIsARecordThatAnswersEveryCall)
{
    DisplayVariable noDisplay("");
    Window window(kUtilityWindowClass, kWindowNoShadowAttribute);
    ASSERT_EQ(window.status, noErr);
    Rect bounds{};
    for (WindowRegionCode region : {kWindowStructureRgn, kWindowContentRgn, kWindowGlobalPortRgn}) {
        EXPECT_EQ(GetWindowBounds(window.ref, region, &bounds), noErr);
        EXPECT_EQ(Edges(bounds), Edges(kBounds));
    }
    EXPECT_EQ(GetWindowBounds(window.ref, 0, &bounds), errWindowRegionCodeInvalid);
    WindowClass windowClass = 0;
    WindowAttributes attributes = 0;
    EXPECT_EQ(GetWindowClass(window.ref, &windowClass), noErr);
    EXPECT_EQ(GetWindowAttributes(window.ref, &attributes), noErr);
    EXPECT_EQ(std::tuple(windowClass, attributes), std::tuple(kUtilityWindowClass, kWindowNoShadowAttribute));

    ShowWindow(window.ref);
    EXPECT_TRUE(IsWindowVisible(window.ref));
    HideWindow(window.ref);
    EXPECT_FALSE(IsWindowVisible(window.ref));
}

TEST(MacWindows, RefusedRequestsLeaveNoWindowAndUnknownWindowsAreNotFollowed)
{
    DisplayVariable noDisplay("");
    WindowDefSpec document{kWindowDefProcID, {.procID = 1024}};
    WindowDefSpec byPointer{kWindowDefProcPtr, {.defProc = nullptr}};
    const Rect inverted{50, 50, 10, 100};
    struct Case {
        const WindowDefSpec* definition;
        WindowClass windowClass;
        const Rect* bounds;
        OSStatus expected;
    } cases[] = {
        {nullptr, kOverlayWindowClass, &kBounds, paramErr},
        {&kSimple, kOverlayWindowClass, nullptr, paramErr},
        {&kSimple, kOverlayWindowClass, &inverted, paramErr},
        {&document, kOverlayWindowClass, &kBounds, errCorruptWindowDescription},
        {&byPointer, kOverlayWindowClass, &kBounds, errCorruptWindowDescription},
        {&kSimple, 7, &kBounds, errUnrecognizedWindowClass},
    };
    for (const Case& c : cases) {
        WindowRef window = reinterpret_cast<WindowRef>(&document);  // must be cleared
        EXPECT_EQ(CreateCustomWindow(c.definition, c.windowClass, 0, c.bounds, &window), c.expected);
        EXPECT_EQ(window, nullptr);
    }

    WindowRef disposed = nullptr;
    ASSERT_EQ(CreateCustomWindow(&kSimple, kPlainWindowClass, 0, &kBounds, &disposed), noErr);
    DisposeWindow(disposed);
    int notAWindow = 0;
    for (WindowRef window : {disposed, reinterpret_cast<WindowRef>(&notAWindow), WindowRef(nullptr)}) {
        Rect bounds;
        EXPECT_EQ(GetWindowBounds(window, kWindowContentRgn, &bounds), errInvalidWindowPtr);
        ShowWindow(window);
        EXPECT_FALSE(IsWindowVisible(window));
        DisposeWindow(window);  // must not free anything a second time
    }
}

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
        XReply<xcb_shape_get_rectangles_reply_t> reply(xcb_shape_get_rectangles_reply(
            x, xcb_shape_get_rectangles(x, inWindow, XCB_SHAPE_SK_INPUT), nullptr));
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
