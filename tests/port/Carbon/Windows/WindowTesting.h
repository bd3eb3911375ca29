// A window made for a test and disposed of when the test ends, whatever it checked.
#pragma once

#include <Carbon/MacErrors.h>
#include <Carbon/MacWindows.h>

namespace spindeck::test {

constexpr Rect kBounds{40, 30, 140, 230};  // top, left, bottom, right
constexpr WindowDefSpec kSimple{kWindowDefProcID, {.procID = kWindowSimpleProc}};

struct Window {
    Window(WindowClass inClass, WindowAttributes inAttributes)
        : status(CreateCustomWindow(&kSimple, inClass, inAttributes, &kBounds, &ref))
    {
    }
    ~Window() { DisposeWindow(ref); }
    WindowRef ref = nullptr;
    OSStatus status;
};

}  // namespace spindeck::test
