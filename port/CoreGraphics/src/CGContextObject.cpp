// The context object as its callers hold it (retained, released), and drawing into a bitmap
// context: filling rectangles and drawing images.
#include "CGContextObject.h"
#include "CGImageObject.h"

#include <algorithm>
#include <cmath>

namespace cg {

CGContext* Context(CGContextRef inContext, const char* inCall)
{
    return inContext ? &cf::CheckedMutable<CGContext>(inContext, CGContextGetTypeID(), inCall) : nullptr;
}

}  // namespace cg

namespace {

// The pixels a rectangle covers along one axis: those whose centres lie inside it, as
// [first, last) indices counted from the origin of user space.
struct Span {
    size_t first = 0;
    size_t last = 0;
};

Span Cover(double inMin, double inMax, size_t inCount)
{
    if (!(inMin < inMax))  // also false for NaN
        return {};
    double first = std::clamp(std::ceil(inMin - 0.5), 0.0, double(inCount));
    double last = std::clamp(std::ceil(inMax - 0.5), 0.0, double(inCount));
    return {size_t(first), size_t(last)};
}

// Calls inPaint(column, row, user x, user y) for every pixel of the rectangle; rows are
// those of memory, whose first row is the top of user space.
template <class Paint>
void ForEachPixel(CGContext& ioContext, CGRect inRect, Paint inPaint)
{
    CGRect rect = CGRectStandardize(inRect);
    Span columns = Cover(rect.origin.x, rect.origin.x + rect.size.width, ioContext.mWidth);
    Span lines = Cover(rect.origin.y, rect.origin.y + rect.size.height, ioContext.mHeight);
    for (size_t y = lines.first; y < lines.last; ++y)
        for (size_t x = columns.first; x < columns.last; ++x)
            inPaint(ioContext.Pixel(x, ioContext.mHeight - 1 - y), x + 0.5, y + 0.5);
}

// The index of the image pixel at a fraction of the image's extent along one axis.
size_t SourceIndex(double inFraction, size_t inCount)
{
    if (!(inFraction > 0))  // also catches NaN from an infinite rectangle
        return 0;
    return size_t(std::min(inFraction * double(inCount), double(inCount - 1)));
}

}  // namespace

CGContextRef CGContextRetain(CGContextRef inContext)
{
    if (cg::Context(inContext, "CGContextRetain"))
        CFRetain(inContext);
    return inContext;
}

void CGContextRelease(CGContextRef inContext)
{
    if (cg::Context(inContext, "CGContextRelease"))
        CFRelease(inContext);
}

void CGContextSetRGBFillColor(CGContextRef inContext, CGFloat inRed, CGFloat inGreen, CGFloat inBlue, CGFloat inAlpha)
{
    CGContext* context = cg::Context(inContext, "CGContextSetRGBFillColor");
    if (context == nullptr)
        return;
    auto unit = [](CGFloat inValue) { return std::isnan(inValue) ? 0.0 : std::clamp(inValue, 0.0, 1.0); };
    double alpha = unit(inAlpha);
    context->mFill = cg::Color{unit(inRed) * alpha, unit(inGreen) * alpha, unit(inBlue) * alpha, alpha};
}

void CGContextSetGrayFillColor(CGContextRef inContext, CGFloat inGray, CGFloat inAlpha)
{
    CGContextSetRGBFillColor(inContext, inGray, inGray, inGray, inAlpha);
}

void CGContextFillRect(CGContextRef inContext, CGRect inRect)
{
    CGContext* context = cg::Context(inContext, "CGContextFillRect");
    if (context == nullptr)
        return;
    const cg::Color fill = context->mFill;
    ForEachPixel(*context, inRect, [&](UInt8* ioPixel, double, double) { context->mFormat.Blend(ioPixel, fill); });
}

// Nearest-neighbour scaling: each pixel takes the image pixel under its centre.
void CGContextDrawImage(CGContextRef inContext, CGRect inRect, CGImageRef inImage)
{
    CGContext* context = cg::Context(inContext, "CGContextDrawImage");
    const CGImage* image = cg::Image(inImage, "CGContextDrawImage");
    if (context == nullptr || image == nullptr)
        return;
    CGRect rect = CGRectStandardize(inRect);
    double top = rect.origin.y + rect.size.height;
    ForEachPixel(*context, rect, [&](UInt8* ioPixel, double inX, double inY) {
        size_t column = SourceIndex((inX - rect.origin.x) / rect.size.width, image->mWidth);
        size_t row = SourceIndex((top - inY) / rect.size.height, image->mHeight);
        context->mFormat.Blend(ioPixel, image->mFormat.Read(image->Pixel(column, row)));
    });
}
