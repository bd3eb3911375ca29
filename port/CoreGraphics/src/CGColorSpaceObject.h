// The colour-space object, shared by the files that draw and make images.
#pragma once

#include <CoreFoundation/CFRuntime.h>
#include <CoreGraphics/CGColorSpace.h>

struct CGColorSpace final : cf::Object {
    CGColorSpaceModel mModel;

    explicit CGColorSpace(CGColorSpaceModel inModel) : Object(CGColorSpaceGetTypeID()), mModel(inModel) {}

    bool Equal(const Object& inOther) const override
    {
        return mModel == static_cast<const CGColorSpace&>(inOther).mModel;
    }
    CFHashCode Hash() const override { return CFHashCode(mModel) + 1; }
    std::string Describe() const override;
};

namespace cg {

// The colour space behind a reference; NULL stays NULL, anything else but a colour space
// stops the process naming inCall.
const CGColorSpace* ColorSpace(CGColorSpaceRef inSpace, const char* inCall);

}  // namespace cg
