// Bitmap images: pixels that no longer change, with the layout that describes them.
#pragma once

#include <CoreGraphics/CGColorSpace.h>

#include <cstdint>

using CGImageRef = struct CGImage*;

enum CGImageAlphaInfo : uint32_t {
    kCGImageAlphaNone = 0,
    kCGImageAlphaPremultipliedLast = 1,
    kCGImageAlphaPremultipliedFirst = 2,
    kCGImageAlphaLast = 3,
    kCGImageAlphaFirst = 4,
    kCGImageAlphaNoneSkipLast = 5,
    kCGImageAlphaNoneSkipFirst = 6,
    kCGImageAlphaOnly = 7,
};

// The alpha information in the low bits, the byte order of multi-byte pixels above it.
// Plain constants rather than enumerators, so that combining them with an alpha value is
// ordinary integer arithmetic.
using CGBitmapInfo = uint32_t;

inline constexpr CGBitmapInfo kCGBitmapAlphaInfoMask = 0x1F;
inline constexpr CGBitmapInfo kCGBitmapFloatComponents = 1u << 8;
inline constexpr CGBitmapInfo kCGBitmapByteOrderMask = 0x7000;
inline constexpr CGBitmapInfo kCGBitmapByteOrderDefault = 0u << 12;
inline constexpr CGBitmapInfo kCGBitmapByteOrder16Little = 1u << 12;
inline constexpr CGBitmapInfo kCGBitmapByteOrder32Little = 2u << 12;
inline constexpr CGBitmapInfo kCGBitmapByteOrder16Big = 3u << 12;
inline constexpr CGBitmapInfo kCGBitmapByteOrder32Big = 4u << 12;

CFTypeID CGImageGetTypeID();
size_t CGImageGetWidth(CGImageRef inImage);
size_t CGImageGetHeight(CGImageRef inImage);
size_t CGImageGetBitsPerComponent(CGImageRef inImage);
size_t CGImageGetBitsPerPixel(CGImageRef inImage);
size_t CGImageGetBytesPerRow(CGImageRef inImage);
CGImageAlphaInfo CGImageGetAlphaInfo(CGImageRef inImage);
CGBitmapInfo CGImageGetBitmapInfo(CGImageRef inImage);
// Not retained for the caller.
CGColorSpaceRef CGImageGetColorSpace(CGImageRef inImage);
// Both accept NULL; retaining answers its argument.
CGImageRef CGImageRetain(CGImageRef inImage);
void CGImageRelease(CGImageRef inImage);
