// The image object and its queries. Images are made by bitmap contexts, which copy their
// pixels into them.
#include "CGImageObject.h"

#include <cstdio>

std::string CGImage::Describe() const
{
    char text[64];
    std::snprintf(text, sizeof text, "{%zu x %zu, %zu bits per pixel}", mWidth, mHeight, mFormat.BytesPerPixel() * 8);
    return DescribePrefix() + text;
}

namespace cg {

const CGImage* Image(CGImageRef inImage, const char* inCall)
{
    return inImage ? &cf::Checked<CGImage>(inImage, CGImageGetTypeID(), inCall) : nullptr;
}

}  // namespace cg

CFTypeID CGImageGetTypeID()
{
    static const CFTypeID sTypeID = cf::RegisterClass("CGImage");
    return sTypeID;
}

size_t CGImageGetWidth(CGImageRef inImage)
{
    const CGImage* image = cg::Image(inImage, "CGImageGetWidth");
    return image ? image->mWidth : 0;
}

size_t CGImageGetHeight(CGImageRef inImage)
{
    const CGImage* image = cg::Image(inImage, "CGImageGetHeight");
    return image ? image->mHeight : 0;
}

size_t CGImageGetBitsPerComponent(CGImageRef inImage)
{
    return cg::Image(inImage, "CGImageGetBitsPerComponent") ? 8 : 0;
}

size_t CGImageGetBitsPerPixel(CGImageRef inImage)
{
    const CGImage* image = cg::Image(inImage, "CGImageGetBitsPerPixel");
    return image ? image->mFormat.BytesPerPixel() * 8 : 0;
}

size_t CGImageGetBytesPerRow(CGImageRef inImage)
{
    const CGImage* image = cg::Image(inImage, "CGImageGetBytesPerRow");
    return image ? image->mBytesPerRow : 0;
}

CGImageAlphaInfo CGImageGetAlphaInfo(CGImageRef inImage)
{
    return CGImageAlphaInfo(CGImageGetBitmapInfo(inImage) & kCGBitmapAlphaInfoMask);
}

CGBitmapInfo CGImageGetBitmapInfo(CGImageRef inImage)
{
    const CGImage* image = cg::Image(inImage, "CGImageGetBitmapInfo");
    return image ? image->mFormat.Info() : 0;
}

CGColorSpaceRef CGImageGetColorSpace(CGImageRef inImage)
{
    const CGImage* image = cg::Image(inImage, "CGImageGetColorSpace");
    return image ? image->mSpace.Get() : nullptr;
}

CGImageRef CGImageRetain(CGImageRef inImage)
{
    if (cg::Image(inImage, "CGImageRetain"))
        CFRetain(inImage);
    return inImage;
}

void CGImageRelease(CGImageRef inImage)
{
    if (cg::Image(inImage, "CGImageRelease"))
        CFRelease(inImage);
}
