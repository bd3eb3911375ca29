// The bitmap context object, shared by the files that create it and draw with it.
#pragma once

#include "PixelFormat.h"

#include <CoreFoundation/CFRuntime.h>
#include <CoreGraphics/CGContext.h>
#include <PortSupport/Owned.h>

#include <vector>

struct CGContext final : cf::Object {
    size_t mWidth;
    size_t mHeight;
    size_t mBytesPerRow;
    cg::PixelFormat mFormat;
    port::Owned<CGColorSpaceRef> mSpace;  // given back in Finalize, when the last reference goes
    std::vector<UInt8> mOwned;            // the bitmap, when the caller did not give one
    UInt8* mData;
    cg::Color mFill;  // black, until the caller sets another

    CGContext(size_t inWidth, size_t inHeight, size_t inBytesPerRow, const cg::PixelFormat& inFormat,
              CGColorSpaceRef inSpace, void* inData)
        : Object(CGContextGetTypeID()), mWidth(inWidth), mHeight(inHeight), mBytesPerRow(inBytesPerRow),
          mFormat(inFormat), mSpace(port::Owned<CGColorSpaceRef>::Retained(inSpace)),
          mOwned(inData ? 0 : inBytesPerRow * inHeight), mData(inData ? static_cast<UInt8*>(inData) : mOwned.data())
    {
    }

    size_t ByteCount() const { return mBytesPerRow * mHeight; }

    // Pixels are addressed as stored: row 0 is the top of the picture.
    UInt8* Pixel(size_t inColumn, size_t inRow)
    {
        return mData + inRow * mBytesPerRow + inColumn * mFormat.BytesPerPixel();
    }

    std::string Describe() const override;

private:
    void Finalize() noexcept override
    {
        mSpace.Reset();
        std::vector<UInt8>().swap(mOwned);
        mData = nullptr;
    }
};

namespace cg {

// The context behind a reference; NULL stays NULL, anything else but a context stops the
// process naming inCall.
CGContext* Context(CGContextRef inContext, const char* inCall);

}  // namespace cg
