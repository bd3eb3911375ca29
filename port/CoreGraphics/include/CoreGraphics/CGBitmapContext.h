// Contexts that draw into a bitmap in memory, and images made from what they hold.
#pragma once

#include <CoreGraphics/CGContext.h>

// Pixels of 8-bit components: RGB with premultiplied or skipped alpha first or last (32 bits,
// big- or little-endian words), or gray without alpha. With inData NULL the context owns a
// zeroed bitmap; inBytesPerRow 0 means as small as the width allows. NULL for anything else.
CGContextRef CGBitmapContextCreate(void* inData, size_t inWidth, size_t inHeight, size_t inBitsPerComponent,
                                   size_t inBytesPerRow, CGColorSpaceRef inSpace, CGBitmapInfo inBitmapInfo);
void* CGBitmapContextGetData(CGContextRef inContext);
size_t CGBitmapContextGetWidth(CGContextRef inContext);
size_t CGBitmapContextGetHeight(CGContextRef inContext);
size_t CGBitmapContextGetBitsPerComponent(CGContextRef inContext);
size_t CGBitmapContextGetBitsPerPixel(CGContextRef inContext);
size_t CGBitmapContextGetBytesPerRow(CGContextRef inContext);
CGImageAlphaInfo CGBitmapContextGetAlphaInfo(CGContextRef inContext);
CGBitmapInfo CGBitmapContextGetBitmapInfo(CGContextRef inContext);
// Not retained for the caller.
CGColorSpaceRef CGBitmapContextGetColorSpace(CGContextRef inContext);
// A copy of the context's pixels as they are now; later drawing does not change the image.
CGImageRef CGBitmapContextCreateImage(CGContextRef inContext);
