// How the colour of one pixel is laid out in memory, for the layouts bitmaps support here.
#pragma once

#include <CoreGraphics/CGImage.h>

#include <optional>

namespace cg {

// A colour as drawing works with it: components from 0 to 1, premultiplied by alpha.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
};

// The colour that painting inSource over inDestination leaves.
Color Over(const Color& inSource, const Color& inDestination);

class PixelFormat {
public:
    // The layout for 8-bit components in the given space, or nothing when unsupported.
    static std::optional<PixelFormat> Make(size_t inBitsPerComponent, CGColorSpaceModel inModel, CGBitmapInfo inInfo);

    size_t BytesPerPixel() const { return mBytesPerPixel; }
    CGBitmapInfo Info() const { return mInfo; }

    Color Read(const UInt8* inPixel) const;
    void Write(UInt8* outPixel, const Color& inColor) const;
    void Blend(UInt8* ioPixel, const Color& inColor) const;

private:
    PixelFormat() = default;

    static constexpr int kAbsent = -1;

    CGBitmapInfo mInfo = 0;
    size_t mBytesPerPixel = 1;
    bool mGray = true;
    // Byte offsets within the pixel; gray keeps its one component at mRed.
    int mRed = 0;
    int mGreen = kAbsent;
    int mBlue = kAbsent;
    int mAlpha = kAbsent;
};

}  // namespace cg
