// The Window Manager: window records, and their X11 windows where there is a display.
#include <Carbon/MacErrors.h>
#include <Carbon/MacWindows.h>

#include "X11Window.h"

#include <memory>
#include <mutex>
#include <unordered_set>

struct OpaqueWindowPtr {
    WindowClass windowClass;
    WindowAttributes attributes;
    Rect bounds;
    bool visible = false;
    std::unique_ptr<carbon::X11Window> x11;  // none without a display
};

namespace {

// Every live window, so that a disposed or made-up WindowRef is answered with a status
// instead of being followed into freed memory.
class LiveWindows {
public:
    void Add(WindowRef inWindow)
    {
        std::lock_guard guard(mLock);
        mWindows.insert(inWindow);
    }
    bool Remove(WindowRef inWindow)
    {
        std::lock_guard guard(mLock);
        return mWindows.erase(inWindow) == 1;
    }
    bool Contains(WindowRef inWindow) const
    {
        std::lock_guard guard(mLock);
        return mWindows.contains(inWindow);
    }

private:
    mutable std::mutex mLock;
    std::unordered_set<WindowRef> mWindows;
};

LiveWindows& Windows()
{
    static LiveWindows sWindows;
    return sWindows;
}

// The window behind a reference, or NULL when it names none.
OpaqueWindowPtr* Live(WindowRef inWindow)
{
    return inWindow != nullptr && Windows().Contains(inWindow) ? inWindow : nullptr;
}

bool IsKnownClass(WindowClass inClass)
{
    switch (inClass) {
    case kAlertWindowClass:
    case kMovableAlertWindowClass:
    case kModalWindowClass:
    case kMovableModalWindowClass:
    case kFloatingWindowClass:
    case kDocumentWindowClass:
    case kUtilityWindowClass:
    case kHelpWindowClass:
    case kSheetWindowClass:
    case kToolbarWindowClass:
    case kPlainWindowClass:
    case kOverlayWindowClass:
    case kSheetAlertWindowClass:
    case kAltPlainWindowClass:
    case kDrawerWindowClass:
        return true;
    default:
        return false;
    }
}

OSStatus CheckRequest(const WindowDefSpec* inDef, WindowClass inClass, const Rect* inBounds, WindowRef* outWindow)
{
    if (inDef == nullptr || inBounds == nullptr || outWindow == nullptr)
        return paramErr;
    if (inBounds->right < inBounds->left || inBounds->bottom < inBounds->top)
        return paramErr;
    if (inDef->defType != kWindowDefProcID || inDef->u.procID != kWindowSimpleProc)
        return errCorruptWindowDescription;
    return IsKnownClass(inClass) ? noErr : errUnrecognizedWindowClass;
}

}  // namespace

OSStatus CreateCustomWindow(const WindowDefSpec* inDef, WindowClass inClass, WindowAttributes inAttributes,
                            const Rect* inBounds, WindowRef* outWindow)
{
    if (outWindow != nullptr)
        *outWindow = nullptr;
    if (OSStatus status = CheckRequest(inDef, inClass, inBounds, outWindow); status != noErr)
        return status;

    auto window = std::make_unique<OpaqueWindowPtr>(OpaqueWindowPtr{inClass, inAttributes, *inBounds, false, nullptr});
    carbon::X11Window::Style style{
        .paintsBackground = inClass != kOverlayWindowClass,
        .ignoresClicks = (inAttributes & kWindowIgnoreClicksAttribute) != 0,
    };
    carbon::X11Window::Outcome outcome;
    window->x11 = carbon::X11Window::Create(*inBounds, style, outcome);
    if (outcome == carbon::X11Window::Outcome::Refused)
        return windowManagerInternalErr;

    Windows().Add(window.get());
    *outWindow = window.release();
    return noErr;
}

void DisposeWindow(WindowRef inWindow)
{
    if (inWindow != nullptr && Windows().Remove(inWindow))
        delete inWindow;
}

void ShowWindow(WindowRef inWindow)
{
    OpaqueWindowPtr* window = Live(inWindow);
    if (window == nullptr || window->visible)
        return;
    if (window->x11)
        window->x11->Map();
    window->visible = true;
}

void HideWindow(WindowRef inWindow)
{
    OpaqueWindowPtr* window = Live(inWindow);
    if (window == nullptr || !window->visible)
        return;
    if (window->x11)
        window->x11->Unmap();
    window->visible = false;
}

Boolean IsWindowVisible(WindowRef inWindow)
{
    OpaqueWindowPtr* window = Live(inWindow);
    return window != nullptr && window->visible;
}

OSStatus GetWindowBounds(WindowRef inWindow, WindowRegionCode inRegion, Rect* outBounds)
{
    OpaqueWindowPtr* window = Live(inWindow);
    if (window == nullptr)
        return errInvalidWindowPtr;
    if (outBounds == nullptr)
        return paramErr;
    if (inRegion != kWindowStructureRgn && inRegion != kWindowContentRgn && inRegion != kWindowGlobalPortRgn)
        return errWindowRegionCodeInvalid;
    *outBounds = window->bounds;
    return noErr;
}

OSStatus GetWindowClass(WindowRef inWindow, WindowClass* outClass)
{
    OpaqueWindowPtr* window = Live(inWindow);
    if (window == nullptr)
        return errInvalidWindowPtr;
    if (outClass == nullptr)
        return paramErr;
    *outClass = window->windowClass;
    return noErr;
}

OSStatus GetWindowAttributes(WindowRef inWindow, WindowAttributes* outAttributes)
{
    OpaqueWindowPtr* window = Live(inWindow);
    if (window == nullptr)
        return errInvalidWindowPtr;
    if (outAttributes == nullptr)
        return paramErr;
    *outAttributes = window->attributes;
    return noErr;
}
