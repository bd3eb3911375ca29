// Backend services that fail on demand, for the pane's failure paths: the real services throw
// only when the file system fails under them, which a test cannot arrange reliably. The
// environment variable KESTREL_BACKEND_FAULT chooses the failure:
//   runtime  the running check finds the backend, then throws Gx::RuntimeError
//   os       the running check finds the backend, then throws Gx::OSError
//   toggle   the backend is found and runs, and toggling it throws Gx::OSError
#include "platform/Mac/spindeckMac/spindeckMac.h"

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>

#include <cstdlib>
#include <string_view>

namespace {

std::string_view Fault()
{
    const char* fault = std::getenv("KESTREL_BACKEND_FAULT");
    return fault ? fault : "";
}

}  // namespace

namespace spindeck {

bool IsBackendRunning(CFStringRef, bool* isAvailable)
{
    if (isAvailable)
        *isAvailable = true;
    if (Fault() == "runtime")
        Gx::RuntimeError::Throw(Gx::exceptionID_NilReference, "Nil CF reference", Gx::sourceLocation_Nothing);
    if (Fault() == "os")
        Gx::OSError::Throw(-43, "FSGetCatalogInfo failed", Gx::sourceLocation_Nothing);
    return true;
}

bool ToggleBackendState(CFStringRef, bool*, bool)
{
    Gx::OSError::Throw(-600, "AESend failed", Gx::sourceLocation_Nothing);
}

}  // namespace spindeck
