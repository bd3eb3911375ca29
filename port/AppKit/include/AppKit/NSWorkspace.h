// The workspace: opening applications through Launch Services.
#pragma once

#include <AppKit/NSString.h>

class NSWorkspace final : public NSObject {
public:
    explicit NSWorkspace(Lifetime inLifetime = Lifetime::Counted) : NSObject(inLifetime) {}
    static NSWorkspace* sharedWorkspace();

    // Starts the application bundle (or program) at the path, or brings the running one
    // forward; NO when there is nothing there to launch or it cannot be started.
    BOOL launchApplication(NSString* inAppPath);

    const char* className() const override { return "NSWorkspace"; }
};
