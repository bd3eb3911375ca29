// A platform object held by the Launch Services code for the length of one call.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <memory>
#include <type_traits>

namespace carbon::ls {

struct ReleaseObject {
    void operator()(CFTypeRef inObject) const { CFRelease(inObject); }
};

// Owned<CFURLRef> holds the one reference that a Create or Copy call handed over.
template <class Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, ReleaseObject>;

}  // namespace carbon::ls
