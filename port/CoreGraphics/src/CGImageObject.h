// The image object: a private copy of pixels with their layout.
#pragma once

#include "PixelFormat.h"

#include <CoreFoundation/CFRuntime.h>
#include <CoreGraphics/CGImage.h>
#include <PortSupport/Owned.h>

#include <vector>

struct CGImage final : cf::Object {
    size_t mWidth;
    size_t mHeight;
    size_t mBytesPerRow;
    cg::PixelFormat mFormat;
    port::Owned<CGColorSpaceRef> mSpace;  // given back in Finalize, when the last reference goes
    std::vector<UInt8> mPixels;

    CGImage(size_t inWidth, size_t inHeight, size_t inBytesPerRow, const cg::PixelFormat& inFormat,
            CGColorSpaceRef inSpace, std::vector<UInt8> inPixels)
        : Object(CGImageGetTypeID()), mWidth(inWidth), mHeight(inHeight), mBytesPerRow(inBytesPerRow),
          mFormat(inFormat), mSpace(port::Owned<CGColorSpaceRef>::Retained(inSpace)), mPixels(std::move(inPixels))
    {
    }

    const UInt8* Pixel(size_t inColumn, size_t inRow) const
    {
        return mPixels.data() + inRow * mBytesPerRow + inColumn * mFormat.BytesPerPixel();
    }

    std::string Describe() const override;

private:
    void Finalize() noexcept override
    {
        mSpace.Reset();
        std::vector<UInt8>().swap(mPixels);
    }
};

namespace cg {

// The image behind a reference; NULL stays NULL, anything else but an image stops the
// process naming inCall.
const CGImage* Image(CGImageRef inImage, const char* inCall);

}  // namespace cg
