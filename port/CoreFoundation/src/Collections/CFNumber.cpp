// Boxed numbers. Every integer kind is kept as a 64-bit integer and every floating kind as a
// double, so comparison, equality and hashing work the same whatever type a number was made
// with; the creation type survives only as the canonical sized type that CFNumberGetType answers.
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRuntime.h>

#include <bit>
#include <cfloat>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>
#include <variant>

namespace {

using Value = std::variant<SInt64, double>;

// The canonical sized type of each type the caller may name.
std::optional<CFNumberType> Canonical(CFNumberType inType)
{
    switch (inType) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
        return kCFNumberSInt8Type;
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
        return kCFNumberSInt16Type;
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
        return kCFNumberSInt32Type;
    case kCFNumberLongType:
        return sizeof(long) == 8 ? kCFNumberSInt64Type : kCFNumberSInt32Type;
    case kCFNumberSInt64Type:
    case kCFNumberLongLongType:
    case kCFNumberCFIndexType:
        return kCFNumberSInt64Type;
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
        return kCFNumberFloat32Type;
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
        return kCFNumberFloat64Type;
    }
    return std::nullopt;
}

CFIndex ByteSize(CFNumberType inCanonical)
{
    switch (inCanonical) {
    case kCFNumberSInt8Type:
        return 1;
    case kCFNumberSInt16Type:
        return 2;
    case kCFNumberSInt32Type:
    case kCFNumberFloat32Type:
        return 4;
    default:
        return 8;
    }
}

const char* TypeName(CFNumberType inCanonical)
{
    switch (inCanonical) {
    case kCFNumberSInt8Type:
        return "kCFNumberSInt8Type";
    case kCFNumberSInt16Type:
        return "kCFNumberSInt16Type";
    case kCFNumberSInt32Type:
        return "kCFNumberSInt32Type";
    case kCFNumberFloat32Type:
        return "kCFNumberFloat32Type";
    case kCFNumberFloat64Type:
        return "kCFNumberFloat64Type";
    default:
        return "kCFNumberSInt64Type";
    }
}

template <class T>
T Load(const void* inPtr)
{
    T value;
    std::memcpy(&value, inPtr, sizeof value);
    return value;
}

Value Read(CFNumberType inCanonical, const void* inPtr)
{
    switch (inCanonical) {
    case kCFNumberSInt8Type:
        return SInt64(Load<SInt8>(inPtr));
    case kCFNumberSInt16Type:
        return SInt64(Load<SInt16>(inPtr));
    case kCFNumberSInt32Type:
        return SInt64(Load<SInt32>(inPtr));
    case kCFNumberFloat32Type:
        return double(Load<Float32>(inPtr));
    case kCFNumberFloat64Type:
        return Load<Float64>(inPtr);
    default:
        return Load<SInt64>(inPtr);
    }
}

// Conversions to the requested type. Each writes the nearest value it can (clipping to the
// type's range, truncating fractions) and says whether that value is exact.
template <class T>
bool Convert(SInt64 inValue, T& outValue)
{
    if constexpr (std::is_integral_v<T>) {
        if (inValue < SInt64(std::numeric_limits<T>::min())) {
            outValue = std::numeric_limits<T>::min();
            return false;
        }
        if (inValue > SInt64(std::numeric_limits<T>::max())) {
            outValue = std::numeric_limits<T>::max();
            return false;
        }
        outValue = T(inValue);
        return true;
    } else {
        outValue = T(inValue);
        // 2^63 itself is out of range of the integer, so the round trip check must not be tried there.
        return outValue < T(9223372036854775808.0) && SInt64(outValue) == inValue;
    }
}

template <class T>
bool Convert(double inValue, T& outValue)
{
    if constexpr (std::is_integral_v<T>) {
        if (std::isnan(inValue)) {
            outValue = 0;
            return false;
        }
        // For 64-bit integers max + 1.0 rounds to 2^63, which is exactly the exclusive bound.
        if (inValue < double(std::numeric_limits<T>::min())) {
            outValue = std::numeric_limits<T>::min();
            return false;
        }
        if (inValue >= double(std::numeric_limits<T>::max()) + 1.0) {
            outValue = std::numeric_limits<T>::max();
            return false;
        }
        outValue = T(inValue);
        return std::trunc(inValue) == inValue;
    } else if constexpr (std::is_same_v<T, float>) {
        if (std::isfinite(inValue) && std::fabs(inValue) > double(FLT_MAX)) {
            outValue = inValue > 0 ? FLT_MAX : -FLT_MAX;
            return false;
        }
        outValue = float(inValue);
        return std::isnan(inValue) || double(outValue) == inValue;
    } else {
        outValue = inValue;
        return true;
    }
}

template <class T>
bool Store(const Value& inValue, void* outPtr)
{
    T converted{};
    bool exact = std::visit([&](auto value) { return Convert(value, converted); }, inValue);
    std::memcpy(outPtr, &converted, sizeof converted);
    return exact;
}

int Sign(auto inDifference) { return inDifference < 0 ? -1 : inDifference > 0 ? 1 : 0; }

// The sign of (integer - double), exact for every pair. NaN sorts below every other number,
// so that sorting a collection of numbers has a total order to work with.
int CompareMixed(SInt64 inInteger, double inDouble)
{
    if (std::isnan(inDouble))
        return 1;
    if (inDouble >= 9223372036854775808.0)
        return -1;
    if (inDouble < -9223372036854775808.0)
        return 1;
    double whole = std::trunc(inDouble);
    if (SInt64 truncated = SInt64(whole); inInteger != truncated)
        return inInteger < truncated ? -1 : 1;
    return Sign(whole - inDouble);
}

int CompareDoubles(double inFirst, double inSecond)
{
    if (std::isnan(inFirst) || std::isnan(inSecond))
        return int(std::isnan(inSecond)) - int(std::isnan(inFirst));
    return Sign(inFirst - inSecond);
}

int CompareValues(const Value& inFirst, const Value& inSecond)
{
    if (auto* first = std::get_if<SInt64>(&inFirst)) {
        if (auto* second = std::get_if<SInt64>(&inSecond))
            return *first < *second ? -1 : *first > *second ? 1 : 0;
        return CompareMixed(*first, std::get<double>(inSecond));
    }
    double first = std::get<double>(inFirst);
    if (auto* second = std::get_if<SInt64>(&inSecond))
        return -CompareMixed(*second, first);
    return CompareDoubles(first, std::get<double>(inSecond));
}

}  // namespace

struct __CFNumber final : cf::Object {
    CFNumberType mType;  // canonical
    Value mValue;

    __CFNumber(CFNumberType inCanonical, Value inValue) : Object(cf::kTypeIDNumber), mType(inCanonical), mValue(inValue)
    {
    }

    bool Equal(const Object& inOther) const override
    {
        return CompareValues(mValue, static_cast<const __CFNumber&>(inOther).mValue) == 0;
    }

    // Equal numbers must hash alike whatever their kind: a double with an integral value
    // hashes as that integer.
    CFHashCode Hash() const override
    {
        if (auto* integer = std::get_if<SInt64>(&mValue))
            return CFHashCode(*integer);
        double value = std::get<double>(mValue);
        if (std::isnan(value))
            return 0x7ff8000000000000ul;
        if (std::trunc(value) == value && value >= -9223372036854775808.0 && value < 9223372036854775808.0)
            return CFHashCode(SInt64(value));  // also folds -0.0 into 0
        return std::bit_cast<CFHashCode>(value);
    }

    std::string Describe() const override
    {
        char text[96];
        if (auto* integer = std::get_if<SInt64>(&mValue))
            std::snprintf(text, sizeof text, "{value = %+" PRId64 ", type = %s}", *integer, TypeName(mType));
        else
            std::snprintf(text, sizeof text, "{value = %+.17g, type = %s}", std::get<double>(mValue), TypeName(mType));
        return DescribePrefix() + text;
    }
};

namespace {

const __CFNumber& Number(CFNumberRef inNumber, const char* inCall)
{
    return cf::Checked<__CFNumber>(inNumber, cf::kTypeIDNumber, inCall);
}

}  // namespace

CFTypeID CFNumberGetTypeID() { return cf::kTypeIDNumber; }

CFNumberRef CFNumberCreate(CFAllocatorRef inAllocator, CFNumberType inType, const void* inValuePtr)
{
    std::optional<CFNumberType> canonical = Canonical(inType);
    if (!canonical)
        return nullptr;
    if (inValuePtr == nullptr)
        cf::Fatal("CFNumberCreate", "called with a NULL value pointer");
    return cf::Create<__CFNumber>(inAllocator, *canonical, Read(*canonical, inValuePtr));
}

CFNumberType CFNumberGetType(CFNumberRef inNumber) { return Number(inNumber, "CFNumberGetType").mType; }

CFIndex CFNumberGetByteSize(CFNumberRef inNumber) { return ByteSize(Number(inNumber, "CFNumberGetByteSize").mType); }

Boolean CFNumberIsFloatType(CFNumberRef inNumber)
{
    return std::holds_alternative<double>(Number(inNumber, "CFNumberIsFloatType").mValue);
}

Boolean CFNumberGetValue(CFNumberRef inNumber, CFNumberType inType, void* outValuePtr)
{
    const __CFNumber& number = Number(inNumber, "CFNumberGetValue");
    std::optional<CFNumberType> canonical = Canonical(inType);
    if (!canonical)
        return false;
    if (outValuePtr == nullptr)
        cf::Fatal("CFNumberGetValue", "called with a NULL value pointer");
    switch (*canonical) {
    case kCFNumberSInt8Type:
        return Store<SInt8>(number.mValue, outValuePtr);
    case kCFNumberSInt16Type:
        return Store<SInt16>(number.mValue, outValuePtr);
    case kCFNumberSInt32Type:
        return Store<SInt32>(number.mValue, outValuePtr);
    case kCFNumberFloat32Type:
        return Store<Float32>(number.mValue, outValuePtr);
    case kCFNumberFloat64Type:
        return Store<Float64>(number.mValue, outValuePtr);
    default:
        return Store<SInt64>(number.mValue, outValuePtr);
    }
}

CFComparisonResult CFNumberCompare(CFNumberRef inNumber1, CFNumberRef inNumber2, void*)
{
    int order = CompareValues(Number(inNumber1, "CFNumberCompare").mValue, Number(inNumber2, "CFNumberCompare").mValue);
    return order < 0 ? kCFCompareLessThan : order > 0 ? kCFCompareGreaterThan : kCFCompareEqualTo;
}
