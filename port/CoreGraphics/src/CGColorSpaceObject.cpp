// Device colour spaces. Each create call makes a new object, so that every reference the
// caller gets is one the caller releases, as with any other create call.
#include "CGColorSpaceObject.h"

std::string CGColorSpace::Describe() const
{
    return DescribePrefix() +
           (mModel == kCGColorSpaceModelRGB ? "{kCGColorSpaceDeviceRGB}" : "{kCGColorSpaceDeviceGray}");
}

namespace cg {

const CGColorSpace* ColorSpace(CGColorSpaceRef inSpace, const char* inCall)
{
    return inSpace ? &cf::Checked<CGColorSpace>(inSpace, CGColorSpaceGetTypeID(), inCall) : nullptr;
}

}  // namespace cg

CFTypeID CGColorSpaceGetTypeID()
{
    static const CFTypeID sTypeID = cf::RegisterClass("CGColorSpace");
    return sTypeID;
}

CGColorSpaceRef CGColorSpaceCreateDeviceRGB() { return cf::Create<CGColorSpace>(nullptr, kCGColorSpaceModelRGB); }

CGColorSpaceRef CGColorSpaceCreateDeviceGray()
{
    return cf::Create<CGColorSpace>(nullptr, kCGColorSpaceModelMonochrome);
}

CGColorSpaceModel CGColorSpaceGetModel(CGColorSpaceRef inSpace)
{
    const CGColorSpace* space = cg::ColorSpace(inSpace, "CGColorSpaceGetModel");
    return space ? space->mModel : kCGColorSpaceModelUnknown;
}

size_t CGColorSpaceGetNumberOfComponents(CGColorSpaceRef inSpace)
{
    switch (CGColorSpaceGetModel(inSpace)) {
    case kCGColorSpaceModelRGB:
        return 3;
    case kCGColorSpaceModelMonochrome:
        return 1;
    default:
        return 0;
    }
}

CGColorSpaceRef CGColorSpaceRetain(CGColorSpaceRef inSpace)
{
    if (cg::ColorSpace(inSpace, "CGColorSpaceRetain"))
        CFRetain(inSpace);
    return inSpace;
}

void CGColorSpaceRelease(CGColorSpaceRef inSpace)
{
    if (cg::ColorSpace(inSpace, "CGColorSpaceRelease"))
        CFRelease(inSpace);
}
