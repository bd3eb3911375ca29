// Windows without a display, as in a build without X: records that answer every call.
#include "DisplayVariable.h"
#include "WindowTesting.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

using namespace spindeck::test;

auto Edges(const Rect& inRect) { return std::tuple(inRect.top, inRect.left, inRect.bottom, inRect.right); }

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

}  // namespace
