// Points, sizes and rectangles in user space (origin at the lower left, y growing upwards).
#pragma once

using CGFloat = double;

struct CGPoint {
    CGFloat x;
    CGFloat y;
};

struct CGSize {
    CGFloat width;
    CGFloat height;
};

struct CGRect {
    CGPoint origin;
    CGSize size;
};

constexpr CGPoint CGPointMake(CGFloat inX, CGFloat inY) { return CGPoint{inX, inY}; }
constexpr CGSize CGSizeMake(CGFloat inWidth, CGFloat inHeight) { return CGSize{inWidth, inHeight}; }
constexpr CGRect CGRectMake(CGFloat inX, CGFloat inY, CGFloat inWidth, CGFloat inHeight)
{
    return CGRect{{inX, inY}, {inWidth, inHeight}};
}

// The same rectangle with a width and height that are not negative.
constexpr CGRect CGRectStandardize(CGRect inRect)
{
    if (inRect.size.width < 0) {
        inRect.origin.x += inRect.size.width;
        inRect.size.width = -inRect.size.width;
    }
    if (inRect.size.height < 0) {
        inRect.origin.y += inRect.size.height;
        inRect.size.height = -inRect.size.height;
    }
    return inRect;
}
