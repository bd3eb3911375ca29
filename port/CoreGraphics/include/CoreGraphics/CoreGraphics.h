// Everything the drawing library offers, in one include.
#pragma once

#include <CoreGraphics/CGGeometry.h>
#include <CoreGraphics/CGColorSpace.h>
#include <CoreGraphics/CGImage.h>
#include <CoreGraphics/CGContext.h>
#include <CoreGraphics/CGBitmapContext.h>
