#include "PixelFormat.h"

#include <algorithm>
#include <cmath>

namespace cg {

namespace {

UInt8 Quantize(double inValue) { return UInt8(std::lround(std::clamp(inValue, 0.0, 1.0) * 255.0)); }

double Level(UInt8 inByte) { return inByte / 255.0; }

}  // namespace

Color Over(const Color& inSource, const Color& inDestination)
{
    double rest = 1.0 - inSource.alpha;
    return Color{inSource.red + inDestination.red * rest, inSource.green + inDestination.green * rest,
                 inSource.blue + inDestination.blue * rest, inSource.alpha + inDestination.alpha * rest};
}

std::optional<PixelFormat> PixelFormat::Make(size_t inBitsPerComponent, CGColorSpaceModel inModel, CGBitmapInfo inInfo)
{
    CGBitmapInfo alpha = inInfo & kCGBitmapAlphaInfoMask;
    CGBitmapInfo order = inInfo & kCGBitmapByteOrderMask;
    if (inBitsPerComponent != 8 || (inInfo & kCGBitmapFloatComponents))
        return std::nullopt;
    PixelFormat format;
    format.mInfo = inInfo;
    if (inModel == kCGColorSpaceModelMonochrome)
        return alpha == kCGImageAlphaNone && order == kCGBitmapByteOrderDefault ? std::optional(format) : std::nullopt;
    bool alphaFirst = alpha == kCGImageAlphaPremultipliedFirst || alpha == kCGImageAlphaNoneSkipFirst;
    bool alphaLast = alpha == kCGImageAlphaPremultipliedLast || alpha == kCGImageAlphaNoneSkipLast;
    bool wordOrder = order == kCGBitmapByteOrderDefault || order == kCGBitmapByteOrder32Big ||
                     order == kCGBitmapByteOrder32Little;
    if (inModel != kCGColorSpaceModelRGB || !(alphaFirst || alphaLast) || !wordOrder)
        return std::nullopt;
    // Positions in the 32-bit word from its most significant byte; a little-endian word
    // stores them the other way round.
    int first = alphaFirst ? 1 : 0;
    auto place = [order](int inPosition) { return order == kCGBitmapByteOrder32Little ? 3 - inPosition : inPosition; };
    format.mGray = false;
    format.mBytesPerPixel = 4;
    format.mRed = place(first);
    format.mGreen = place(first + 1);
    format.mBlue = place(first + 2);
    bool premultiplied = alpha == kCGImageAlphaPremultipliedFirst || alpha == kCGImageAlphaPremultipliedLast;
    format.mAlpha = premultiplied ? place(alphaFirst ? 0 : 3) : kAbsent;
    return format;
}

Color PixelFormat::Read(const UInt8* inPixel) const
{
    if (mGray) {
        double level = Level(inPixel[mRed]);
        return Color{level, level, level, 1.0};
    }
    return Color{Level(inPixel[mRed]), Level(inPixel[mGreen]), Level(inPixel[mBlue]),
                 mAlpha == kAbsent ? 1.0 : Level(inPixel[mAlpha])};
}

void PixelFormat::Write(UInt8* outPixel, const Color& inColor) const
{
    if (mGray) {
        // The usual luma weights (0.299, 0.587, 0.114), written as offsets from green so that
        // a gray colour keeps its level exactly instead of losing a rounding step.
        double green = inColor.green;
        outPixel[mRed] = Quantize(green + 0.299 * (inColor.red - green) + 0.114 * (inColor.blue - green));
        return;
    }
    outPixel[mRed] = Quantize(inColor.red);
    outPixel[mGreen] = Quantize(inColor.green);
    outPixel[mBlue] = Quantize(inColor.blue);
    if (mAlpha != kAbsent)
        outPixel[mAlpha] = Quantize(inColor.alpha);
}

void PixelFormat::Blend(UInt8* ioPixel, const Color& inColor) const
{
    Write(ioPixel, inColor.alpha >= 1.0 ? inColor : Over(inColor, Read(ioPixel)));
}

}  // namespace cg
