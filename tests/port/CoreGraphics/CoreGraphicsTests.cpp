// Drawing objects: their types, bitmap layouts, filling, and images that outlive their context.
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace {

// A context with a colour space it does not share with the test.
CGContextRef MakeContext(void* inData, size_t inWidth, size_t inHeight, CGBitmapInfo inInfo, bool inGray = false)
{
    CGColorSpaceRef space = inGray ? CGColorSpaceCreateDeviceGray() : CGColorSpaceCreateDeviceRGB();
    CGContextRef context = CGBitmapContextCreate(inData, inWidth, inHeight, 8, 0, space, inInfo);
    CGColorSpaceRelease(space);
    return context;
}

// The four bytes of a pixel, addressed as in user space (row 0 at the bottom).
std::array<UInt8, 4> PixelAt(CGContextRef inContext, size_t inX, size_t inY)
{
    auto* data = static_cast<const UInt8*>(CGBitmapContextGetData(inContext));
    size_t row = CGBitmapContextGetHeight(inContext) - 1 - inY;
    const UInt8* pixel = data + row * CGBitmapContextGetBytesPerRow(inContext) + inX * 4;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

constexpr CGBitmapInfo kRGBA = kCGImageAlphaPremultipliedLast | kCGBitmapByteOrder32Big;
constexpr std::array<UInt8, 4> kRed{255, 0, 0, 255}, kBlue{0, 0, 255, 255}, kClear{0, 0, 0, 0};

TEST(DrawingTypes, EachHasItsOwnRegisteredIdentifier)
{
    CFTypeID ids[] = {CGColorSpaceGetTypeID(), CGContextGetTypeID(), CGImageGetTypeID()};
    const char* names[] = {"CGColorSpace", "CGContext", "CGImage"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_GE(ids[i], CFTypeID(cf::kFirstRegisteredTypeID));
        EXPECT_NE(ids[i], ids[(i + 1) % 3]);
        CFStringRef name = CFCopyTypeIDDescription(ids[i]);
        EXPECT_EQ(cf::UTF8(name), names[i]);
        CFRelease(name);
    }
    CGColorSpaceRef rgb = CGColorSpaceCreateDeviceRGB();
    CGColorSpaceRef gray = CGColorSpaceCreateDeviceGray();
    EXPECT_EQ(CFGetTypeID(rgb), CGColorSpaceGetTypeID());
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(rgb), 3u);
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(gray), 1u);
    EXPECT_EQ(CGColorSpaceRetain(rgb), rgb);
    EXPECT_EQ(CFGetRetainCount(rgb), 2);
    CGColorSpaceRelease(rgb);
    CGColorSpaceRelease(rgb);
    CGColorSpaceRelease(gray);
    CGColorSpaceRelease(nullptr);
    EXPECT_EQ(CGContextRetain(nullptr), nullptr);
}

TEST(BitmapContext, UnsupportedLayoutsGiveNull)
{
    CGColorSpaceRef rgb = CGColorSpaceCreateDeviceRGB();
    CGColorSpaceRef gray = CGColorSpaceCreateDeviceGray();
    EXPECT_EQ(CGBitmapContextCreate(nullptr, 4, 4, 16, 0, rgb, kRGBA), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(nullptr, 4, 4, 8, 0, rgb, kCGImageAlphaNone), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(nullptr, 4, 4, 8, 0, rgb, kCGImageAlphaLast), nullptr);  // not premultiplied
    EXPECT_EQ(
        CGBitmapContextCreate(nullptr, 4, 4, 8, 0, rgb, kCGImageAlphaPremultipliedLast | kCGBitmapByteOrder16Little),
        nullptr);
    EXPECT_EQ(CGBitmapContextCreate(nullptr, 4, 4, 8, 15, rgb, kRGBA), nullptr);  // rows shorter than 4 pixels
    EXPECT_EQ(CGBitmapContextCreate(nullptr, 0, 4, 8, 0, rgb, kRGBA), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(nullptr, SIZE_MAX / 2, 4, 8, 0, rgb, kRGBA), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(nullptr, 4, 4, 8, 0, gray, kCGImageAlphaPremultipliedLast), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(nullptr, 4, 4, 8, 0, nullptr, kRGBA), nullptr);
    CGContextRef padded = CGBitmapContextCreate(nullptr, 3, 2, 8, 20, rgb, kRGBA);
    ASSERT_NE(padded, nullptr);
    EXPECT_EQ(CGBitmapContextGetBytesPerRow(padded), 20u);
    EXPECT_EQ(CGBitmapContextGetBitsPerPixel(padded), 32u);
    EXPECT_EQ(CGBitmapContextGetColorSpace(padded), rgb);
    CGContextRelease(padded);
    CGColorSpaceRelease(gray);
    CGColorSpaceRelease(rgb);
}

TEST(BitmapContext, FillRectPaintsThePixelsItCovers)
{
    CGContextRef context = MakeContext(nullptr, 4, 4, kRGBA);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(CGBitmapContextGetBytesPerRow(context), 16u);
    CGContextSetRGBFillColor(context, 1, 0, 0, 1);
    CGContextFillRect(context, CGRectMake(0, 0, 2, 1));
    CGContextSetRGBFillColor(context, 0, 0, 1, 1);
    CGContextFillRect(context, CGRectMake(4, 4, -1.4, -1.6));  // negative sizes; x from 2.6, y from 2.4
    for (size_t y = 0; y < 4; ++y)
        for (size_t x = 0; x < 4; ++x) {
            auto expected = y == 0 && x < 2 ? kRed : (y >= 2 && x == 3 ? kBlue : kClear);
            EXPECT_EQ(PixelAt(context, x, y), expected) << x << "," << y;
        }
    CGContextSetRGBFillColor(context, 0, 0, 0, 0.5);  // half-transparent black over red
    CGContextFillRect(context, CGRectMake(0, 0, 1, 1));
    EXPECT_EQ(PixelAt(context, 0, 0), (std::array<UInt8, 4>{128, 0, 0, 255}));
    CGContextRelease(context);
}

TEST(BitmapContext, LittleEndianWordsAndGrayStoreTheirOwnLayouts)
{
    std::vector<UInt8> bytes(2 * 2 * 4, 0xEE);
    CGContextRef bgra = MakeContext(bytes.data(), 2, 2, kCGImageAlphaPremultipliedFirst | kCGBitmapByteOrder32Little);
    ASSERT_NE(bgra, nullptr);
    EXPECT_EQ(CGBitmapContextGetData(bgra), bytes.data());
    CGContextSetRGBFillColor(bgra, 1, 0.5, 0, 1);
    CGContextFillRect(bgra, CGRectMake(0, 1, 1, 1));  // the top left pixel, first in memory
    EXPECT_EQ(std::vector<UInt8>(bytes.begin(), bytes.begin() + 8),
              (std::vector<UInt8>{0, 128, 255, 255, 0xEE, 0xEE, 0xEE, 0xEE}));
    CGContextRelease(bgra);

    CGContextRef gray = MakeContext(nullptr, 2, 1, kCGImageAlphaNone, true);
    ASSERT_NE(gray, nullptr);
    CGContextSetGrayFillColor(gray, 0.5, 1);
    CGContextFillRect(gray, CGRectMake(1, 0, 1, 1));
    auto* level = static_cast<const UInt8*>(CGBitmapContextGetData(gray));
    EXPECT_EQ(level[0], 0);
    EXPECT_EQ(level[1], 128);
    CGContextRelease(gray);
}

TEST(BitmapImage, KeepsItsPixelsAfterTheContextChangesAndGoes)
{
    CGContextRef source = MakeContext(nullptr, 2, 2, kRGBA);
    CGContextSetRGBFillColor(source, 1, 0, 0, 1);
    CGContextFillRect(source, CGRectMake(0, 0, 1, 1));  // red at the bottom left
    CGImageRef image = CGBitmapContextCreateImage(source);
    ASSERT_NE(image, nullptr);
    CGContextSetRGBFillColor(source, 0, 0, 1, 1);
    CGContextFillRect(source, CGRectMake(0, 0, 2, 2));
    CGContextRelease(source);

    EXPECT_EQ(CGImageGetWidth(image), 2u);
    EXPECT_EQ(CGImageGetHeight(image), 2u);
    EXPECT_EQ(CGImageGetBitsPerComponent(image), 8u);
    EXPECT_EQ(CGImageGetBitsPerPixel(image), 32u);
    EXPECT_EQ(CGImageGetBytesPerRow(image), 8u);
    EXPECT_EQ(CGImageGetAlphaInfo(image), kCGImageAlphaPremultipliedLast);
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(CGImageGetColorSpace(image)), 3u);  // kept by the image

    // Drawn twice the size, the red quarter covers the bottom-left 2 x 2 pixels.
    CGContextRef target = MakeContext(nullptr, 4, 4, kRGBA);
    CGContextDrawImage(target, CGRectMake(0, 0, 4, 4), image);
    for (size_t y = 0; y < 4; ++y)
        for (size_t x = 0; x < 4; ++x)
            EXPECT_EQ(PixelAt(target, x, y), x < 2 && y < 2 ? kRed : kClear) << x << "," << y;
    CGContextRelease(target);
    CGImageRelease(image);
}

TEST(DrawingMisuse, AnotherObjectWhereAContextBelongsStopsTheProcess)
{
    CGColorSpaceRef space = CGColorSpaceCreateDeviceRGB();
    EXPECT_DEATH(CGContextFillRect(reinterpret_cast<CGContextRef>(space), CGRectMake(0, 0, 1, 1)),
                 "CGContextFillRect: expected a CGContext, got a CGColorSpace");
    CGColorSpaceRelease(space);
}

}  // namespace
