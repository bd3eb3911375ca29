// The Window Manager, as far as windows without a frame go: made from a window definition
// given by procedure identifier, shown, hidden, measured and disposed of.
//
// Where an X display is present ($DISPLAY names one that accepts a connection), a window is
// an X11 window on its default screen, override-redirect so that the window manager neither
// frames nor moves it: such a window is placed by its owner alone, as a frameless window is on
// the original platform. Without a display a window is a record only, and every call below
// works on it all the same, so code that makes windows runs headless too.
//
// An overlay window (kOverlayWindowClass) has no background: what lies beneath shows until its
// owner draws. kWindowIgnoreClicksAttribute gives the X11 window an empty input region, so
// clicks fall through to whatever is below it. kWindowNoShadowAttribute needs nothing here:
// X11 windows have no shadow of their own.
#pragma once

#include <MacTypes.h>

struct OpaqueWindowPtr;
using WindowRef = OpaqueWindowPtr*;
using WindowPtr = WindowRef;

using WindowClass = UInt32;
enum : WindowClass {
    kAlertWindowClass = 1,
    kMovableAlertWindowClass = 2,
    kModalWindowClass = 3,
    kMovableModalWindowClass = 4,
    kFloatingWindowClass = 5,
    kDocumentWindowClass = 6,
    kUtilityWindowClass = 8,
    kHelpWindowClass = 10,
    kSheetWindowClass = 11,
    kToolbarWindowClass = 12,
    kPlainWindowClass = 13,
    kOverlayWindowClass = 14,
    kSheetAlertWindowClass = 15,
    kAltPlainWindowClass = 16,
    kDrawerWindowClass = 20,
};

using WindowAttributes = OptionBits;
enum : WindowAttributes {
    kWindowNoAttributes = 0,
    kWindowCloseBoxAttribute = 1u << 0,
    kWindowHorizontalZoomAttribute = 1u << 1,
    kWindowVerticalZoomAttribute = 1u << 2,
    kWindowFullZoomAttribute = kWindowHorizontalZoomAttribute | kWindowVerticalZoomAttribute,
    kWindowCollapseBoxAttribute = 1u << 3,
    kWindowResizableAttribute = 1u << 4,
    kWindowSideTitlebarAttribute = 1u << 5,
    kWindowToolbarButtonAttribute = 1u << 6,
    kWindowMetalAttribute = 1u << 8,
    kWindowNoUpdatesAttribute = 1u << 16,
    kWindowNoActivatesAttribute = 1u << 17,
    kWindowOpaqueForEventsAttribute = 1u << 18,
    kWindowCompositingAttribute = 1u << 19,
    kWindowNoShadowAttribute = 1u << 21,
    kWindowHideOnSuspendAttribute = 1u << 24,
    kWindowStandardHandlerAttribute = 1u << 25,
    kWindowHideOnFullScreenAttribute = 1u << 26,
    kWindowInWindowMenuAttribute = 1u << 27,
    kWindowLiveResizeAttribute = 1u << 28,
    kWindowIgnoreClicksAttribute = 1u << 29,
    kWindowNoConstrainAttribute = 1u << 31,
    kWindowStandardDocumentAttributes = kWindowCloseBoxAttribute | kWindowFullZoomAttribute |
                                        kWindowCollapseBoxAttribute | kWindowResizableAttribute,
    kWindowStandardFloatingAttributes = kWindowCloseBoxAttribute | kWindowCollapseBoxAttribute,
};

using WindowDefType = UInt32;
enum : WindowDefType {
    kWindowDefProcPtr = 0,
    kWindowDefObjectClass = 1,
    kWindowDefProcID = 2,
    kWindowDefHIView = 3,
};

// Window definition procedures, by resource identifier. The simple one draws no frame; it is
// the only definition this system can honour, since no definition code runs here.
enum : SInt16 {
    kWindowSimpleProc = 1136,
};

struct WindowDefSpec {
    WindowDefType defType;
    union {
        void* defProc;
        void* classRef;
        SInt16 procID;
        void* rootView;
    } u;
};

using WindowRegionCode = UInt16;
enum : WindowRegionCode {
    kWindowStructureRgn = 32,   // the whole window, frame included
    kWindowContentRgn = 33,     // what the owner draws in
    kWindowGlobalPortRgn = 40,  // the drawing port, in global coordinates
};

// The Window Manager's statuses.
enum : OSStatus {
    errInvalidWindowPtr = -5600,
    errUnrecognizedWindowClass = -5604,
    errCorruptWindowDescription = -5605,
    windowManagerInternalErr = -5613,
    errWindowRegionCodeInvalid = -30593,
};

// inBounds is the content rectangle in global coordinates; the window starts hidden.
// paramErr for a NULL argument or a rectangle whose right or bottom edge lies before its left
// or top; errCorruptWindowDescription for a definition other than kWindowDefProcID with
// kWindowSimpleProc; errUnrecognizedWindowClass for a class not listed above;
// windowManagerInternalErr when the display refuses the window. *outWindow is NULL on failure.
OSStatus CreateCustomWindow(const WindowDefSpec* inDef, WindowClass inClass, WindowAttributes inAttributes,
                            const Rect* inBounds, WindowRef* outWindow);
// NULL, or a window already disposed of, is ignored.
void DisposeWindow(WindowRef inWindow);
void ShowWindow(WindowRef inWindow);
void HideWindow(WindowRef inWindow);
// False for anything that is not a live window.
Boolean IsWindowVisible(WindowRef inWindow);
// A frameless window's structure, content and port are one rectangle.
OSStatus GetWindowBounds(WindowRef inWindow, WindowRegionCode inRegion, Rect* outBounds);
OSStatus GetWindowClass(WindowRef inWindow, WindowClass* outClass);
OSStatus GetWindowAttributes(WindowRef inWindow, WindowAttributes* outAttributes);
