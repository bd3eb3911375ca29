// System items: the Universal Access pane and overlay windows.
#include "platform/Mac/utils/MacKvxUtils.h"

#include <Carbon/Folders.h>

namespace kvx {

Gx::FSObject UnivAccessPrefPane()
{
    // Without the folder the reference stays empty, and the object names nothing.
    FSRef panes{};
    FSFindFolder(kSystemDomain, kPreferencePanesFolderType, kCreateFolder, &panes);
    return Gx::FSObject(panes, Gx::CFString(CFSTR("UniversalAccessPref.prefPane"), true));
}

WindowRef CreateOverlayWindow(WindowAttributes inAttributes, const Rect* inBounds, WindowClass inWindowClass)
{
    WindowDefSpec definition{};
    definition.defType = kWindowDefProcID;
    definition.u.procID = kWindowSimpleProc;
    WindowRef window = nullptr;
    CreateCustomWindow(&definition, inWindowClass, inAttributes, inBounds, &window);
    return window;
}

}  // namespace kvx
