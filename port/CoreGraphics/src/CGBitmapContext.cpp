// Creating bitmap contexts, asking them about their bitmap, and taking images of it.
#include "CGColorSpaceObject.h"
#include "CGContextObject.h"
#include "CGImageObject.h"

#include <CoreGraphics/CGBitmapContext.h>

#include <cstdio>
#include <limits>

std::string CGContext::Describe() const
{
    char text[64];
    std::snprintf(text, sizeof text, "{bitmap %zu x %zu, %zu bytes per row}", mWidth, mHeight, mBytesPerRow);
    return DescribePrefix() + text;
}

namespace {

// The row length for the arguments, or 0 when they describe no bitmap that fits in memory.
size_t RowBytes(size_t inWidth, size_t inHeight, size_t inBytesPerRow, const cg::PixelFormat& inFormat)
{
    size_t minimum = 0, total = 0;
    if (inWidth == 0 || inHeight == 0 || __builtin_mul_overflow(inWidth, inFormat.BytesPerPixel(), &minimum))
        return 0;
    size_t row = inBytesPerRow ? inBytesPerRow : minimum;
    if (row < minimum || __builtin_mul_overflow(row, inHeight, &total) ||
        total > size_t(std::numeric_limits<std::ptrdiff_t>::max()))
        return 0;
    return row;
}

}  // namespace

CFTypeID CGContextGetTypeID()
{
    static const CFTypeID sTypeID = cf::RegisterClass("CGContext");
    return sTypeID;
}

CGContextRef CGBitmapContextCreate(void* inData, size_t inWidth, size_t inHeight, size_t inBitsPerComponent,
                                   size_t inBytesPerRow, CGColorSpaceRef inSpace, CGBitmapInfo inBitmapInfo)
{
    const CGColorSpace* space = cg::ColorSpace(inSpace, "CGBitmapContextCreate");
    if (space == nullptr)
        return nullptr;
    std::optional<cg::PixelFormat> format = cg::PixelFormat::Make(inBitsPerComponent, space->mModel, inBitmapInfo);
    if (!format)
        return nullptr;
    size_t row = RowBytes(inWidth, inHeight, inBytesPerRow, *format);
    if (row == 0)
        return nullptr;
    return cf::Create<CGContext>(nullptr, inWidth, inHeight, row, *format, inSpace, inData);
}

void* CGBitmapContextGetData(CGContextRef inContext)
{
    CGContext* context = cg::Context(inContext, "CGBitmapContextGetData");
    return context ? context->mData : nullptr;
}

size_t CGBitmapContextGetWidth(CGContextRef inContext)
{
    CGContext* context = cg::Context(inContext, "CGBitmapContextGetWidth");
    return context ? context->mWidth : 0;
}

size_t CGBitmapContextGetHeight(CGContextRef inContext)
{
    CGContext* context = cg::Context(inContext, "CGBitmapContextGetHeight");
    return context ? context->mHeight : 0;
}

size_t CGBitmapContextGetBitsPerComponent(CGContextRef inContext)
{
    return cg::Context(inContext, "CGBitmapContextGetBitsPerComponent") ? 8 : 0;
}

size_t CGBitmapContextGetBitsPerPixel(CGContextRef inContext)
{
    CGContext* context = cg::Context(inContext, "CGBitmapContextGetBitsPerPixel");
    return context ? context->mFormat.BytesPerPixel() * 8 : 0;
}

size_t CGBitmapContextGetBytesPerRow(CGContextRef inContext)
{
    CGContext* context = cg::Context(inContext, "CGBitmapContextGetBytesPerRow");
    return context ? context->mBytesPerRow : 0;
}

CGImageAlphaInfo CGBitmapContextGetAlphaInfo(CGContextRef inContext)
{
    return CGImageAlphaInfo(CGBitmapContextGetBitmapInfo(inContext) & kCGBitmapAlphaInfoMask);
}

CGBitmapInfo CGBitmapContextGetBitmapInfo(CGContextRef inContext)
{
    CGContext* context = cg::Context(inContext, "CGBitmapContextGetBitmapInfo");
    return context ? context->mFormat.Info() : 0;
}

CGColorSpaceRef CGBitmapContextGetColorSpace(CGContextRef inContext)
{
    CGContext* context = cg::Context(inContext, "CGBitmapContextGetColorSpace");
    return context ? context->mSpace.Get() : nullptr;
}

CGImageRef CGBitmapContextCreateImage(CGContextRef inContext)
{
    CGContext* context = cg::Context(inContext, "CGBitmapContextCreateImage");
    if (context == nullptr)
        return nullptr;
    try {
        std::vector<UInt8> pixels(context->mData, context->mData + context->ByteCount());
        return cf::Create<CGImage>(nullptr, context->mWidth, context->mHeight, context->mBytesPerRow, context->mFormat,
                                   context->mSpace.Get(), std::move(pixels));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
