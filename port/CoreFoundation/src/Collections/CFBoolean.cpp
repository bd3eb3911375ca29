// The two boolean objects. They are built at load time, so that code running in static
// initialisers can already hand them around, and they ignore retain and release.
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRuntime.h>

struct __CFBoolean final : cf::Object {
    bool mValue;

    constexpr explicit __CFBoolean(bool inValue) : Object(cf::kTypeIDBoolean, Lifetime::Static), mValue(inValue) {}

    // There is exactly one object per value, so identity (checked before Equal is called)
    // already decides equality.
    CFHashCode Hash() const override { return mValue ? 1 : 0; }
    std::string Describe() const override { return DescribePrefix() + (mValue ? "{value = true}" : "{value = false}"); }
};

namespace {
constinit __CFBoolean sTrue{true};
constinit __CFBoolean sFalse{false};
}  // namespace

constinit const CFBooleanRef kCFBooleanTrue = &sTrue;
constinit const CFBooleanRef kCFBooleanFalse = &sFalse;

CFTypeID CFBooleanGetTypeID() { return cf::kTypeIDBoolean; }

Boolean CFBooleanGetValue(CFBooleanRef inBoolean)
{
    return cf::Checked<__CFBoolean>(inBoolean, cf::kTypeIDBoolean, "CFBooleanGetValue").mValue;
}
