#include "platform/Mac/utils/BundleUtils.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFUtils.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>

namespace kvx {

namespace {

// Made on first use rather than as a plain global, so that a static initialiser elsewhere
// that asks for the current bundle finds it already made.
Gx::CFBundle& CurrentBundle()
{
    static Gx::CFBundle sBundle(CFBundleGetMainBundle(), true);
    return sBundle;
}

// The current bundle is set while the code loads, as the product code expects of it.
[[maybe_unused]] const Gx::CFBundle& sBundleAtLoad = CurrentBundle();

CFBundleRef CurrentBundleRef()
{
    CFBundleRef bundle = CurrentBundle().GetRefValue();
    if (bundle == nullptr)
        Gx::CFUtils::ThrowNilReference();
    return bundle;
}

}  // namespace

const CurrentBundleFunction GetCurrentBundle = CurrentBundleRef;

Gx::CFBundle& GetBundle() { return CurrentBundle(); }

void SetBundle(CFStringRef inPath)
{
    // No path makes no URL, which is the nil-reference error rather than a failed creation.
    if (inPath == nullptr)
        Gx::CFUtils::ThrowNilReference();
    Gx::CFURL url(inPath, false, nullptr, kCFURLPOSIXPathStyle, kCFAllocatorDefault);
    // Adopted: the bundle comes from a Create call. A nil one is kept as it is.
    Gx::CFBundle bundle(CFBundleCreate(kCFAllocatorDefault, url), false);
    CurrentBundle() = bundle;
}

}  // namespace kvx
