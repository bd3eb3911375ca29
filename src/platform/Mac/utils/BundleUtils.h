// The current bundle: the bundle whose resources the product code uses. Until a host names
// another with SetBundle it is the main bundle of the process the code runs in, which for a
// preference pane is the settings application's, not the pane's own.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFBundle.h>

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFString.h>

namespace kvx {

// The current bundle's reference; Gx::RuntimeError 'cfnr' "Nil CF reference" when there is
// none (after a SetBundle whose bundle could not be made).
using CurrentBundleFunction = CFBundleRef (*)();
extern const CurrentBundleFunction GetCurrentBundle;

// The current bundle itself, not a copy: assigning to it changes the current bundle.
Gx::CFBundle& GetBundle();

// Makes the bundle at a POSIX path the current one, releasing the previous one. Meant to be
// called once by a host, before any lookup. A path that makes no URL throws 'cfnr'; a folder
// that holds no bundle is not checked here and leaves the current bundle nil.
void SetBundle(CFStringRef inPath);

}  // namespace kvx
