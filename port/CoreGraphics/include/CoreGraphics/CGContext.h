// Drawing destinations. The only kind there is here is the bitmap context.
#pragma once

#include <CoreGraphics/CGGeometry.h>
#include <CoreGraphics/CGImage.h>

using CGContextRef = struct CGContext*;

CFTypeID CGContextGetTypeID();
// Both accept NULL; retaining answers its argument.
CGContextRef CGContextRetain(CGContextRef inContext);
void CGContextRelease(CGContextRef inContext);

// Components from 0 to 1; values outside are clamped.
void CGContextSetRGBFillColor(CGContextRef inContext, CGFloat inRed, CGFloat inGreen, CGFloat inBlue, CGFloat inAlpha);
void CGContextSetGrayFillColor(CGContextRef inContext, CGFloat inGray, CGFloat inAlpha);
// Paints the pixels whose centres lie inside the rectangle with the fill colour, over what
// is there.
void CGContextFillRect(CGContextRef inContext, CGRect inRect);
// Draws the image scaled to the rectangle, over what is there.
void CGContextDrawImage(CGContextRef inContext, CGRect inRect, CGImageRef inImage);
