// Colour spaces: how many components a colour has and what they mean.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstddef>

using CGColorSpaceRef = struct CGColorSpace*;

enum CGColorSpaceModel : int {
    kCGColorSpaceModelUnknown = -1,
    kCGColorSpaceModelMonochrome = 0,
    kCGColorSpaceModelRGB = 1,
};

CFTypeID CGColorSpaceGetTypeID();
CGColorSpaceRef CGColorSpaceCreateDeviceRGB();
CGColorSpaceRef CGColorSpaceCreateDeviceGray();
CGColorSpaceModel CGColorSpaceGetModel(CGColorSpaceRef inSpace);
size_t CGColorSpaceGetNumberOfComponents(CGColorSpaceRef inSpace);
// Both accept NULL; retaining answers its argument.
CGColorSpaceRef CGColorSpaceRetain(CGColorSpaceRef inSpace);
void CGColorSpaceRelease(CGColorSpaceRef inSpace);
