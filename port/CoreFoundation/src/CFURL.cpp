// URLs.
#include <CoreFoundation/CFURL.h>
#include <CoreFoundation/CFRuntime.h>

CFTypeID CFURLGetTypeID() { return cf::kTypeIDURL; }
