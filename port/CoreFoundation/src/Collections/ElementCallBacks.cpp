// The shared members of the standard collection callbacks, and value descriptions.
#include "ElementCallBacks.h"

#include <cstdio>

namespace cf {

std::string ElementCallBacks::Describe(const void* inValue) const
{
    if (copyDescription) {
        if (CFStringRef text = copyDescription(inValue)) {
            std::string result = UTF8(text);
            CFRelease(text);
            return result;
        }
    }
    char text[32];
    std::snprintf(text, sizeof text, "<%p>", inValue);
    return text;
}

const void* RetainObject(CFAllocatorRef, const void* inValue) { return CFRetain(inValue); }

void ReleaseObject(CFAllocatorRef, const void* inValue) { CFRelease(inValue); }

const void* CopyStringValue(CFAllocatorRef inAllocator, const void* inValue)
{
    return CFStringCreateCopy(inAllocator, static_cast<CFStringRef>(inValue));
}

}  // namespace cf
