// Numbers and booleans: conversions and their lossy flag, equality across kinds, ordering.
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>
#include <PortSupport/Owned.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>

namespace {

using port::Owned;

template <class T>
Owned<CFNumberRef> Make(CFNumberType inType, T inValue)
{
    return Owned<CFNumberRef>(CFNumberCreate(nullptr, inType, &inValue));
}

template <class T>
std::pair<bool, T> Get(const Owned<CFNumberRef>& inNumber, CFNumberType inType)
{
    T value{};
    bool exact = CFNumberGetValue(inNumber.Get(), inType, &value);
    return {exact, value};
}

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr SInt64 kTwoTo53 = SInt64(1) << 53;
// NAN and INFINITY are floats; a double number must be made from a double.
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(NumberConversion, IntegersAndFloatsClipOrTruncateToTheRequestedTypeAndSaySo)
{
    auto n300 = Make<SInt64>(kCFNumberSInt64Type, 300);
    EXPECT_EQ(Get<SInt8>(n300, kCFNumberSInt8Type), std::pair(false, SInt8(127)));
    EXPECT_EQ(Get<SInt16>(n300, kCFNumberSInt16Type), std::pair(true, SInt16(300)));
    auto below = Make<int>(kCFNumberIntType, -129);
    EXPECT_EQ(Get<char>(below, kCFNumberCharType), std::pair(false, char(-128)));
    auto big = Make<SInt64>(kCFNumberSInt64Type, std::numeric_limits<SInt64>::max());
    EXPECT_EQ(Get<SInt32>(big, kCFNumberSInt32Type), std::pair(false, std::numeric_limits<SInt32>::max()));
    EXPECT_EQ(Get<double>(big, kCFNumberDoubleType), std::pair(false, kTwoTo63));
    EXPECT_EQ(Get<long>(big, kCFNumberLongType), std::pair(true, std::numeric_limits<long>::max()));
    EXPECT_EQ(Get<double>(Make<SInt64>(kCFNumberSInt64Type, kTwoTo53), kCFNumberFloat64Type),
              std::pair(true, 9007199254740992.0));
    EXPECT_FALSE(Get<double>(Make<SInt64>(kCFNumberSInt64Type, kTwoTo53 + 1), kCFNumberFloat64Type).first);
    EXPECT_FALSE(Get<float>(Make<int>(kCFNumberIntType, (1 << 24) + 1), kCFNumberFloatType).first);
    EXPECT_EQ(Get<SInt32>(Make(kCFNumberDoubleType, 1.5), kCFNumberSInt32Type), std::pair(false, 1));
    EXPECT_EQ(Get<SInt32>(Make(kCFNumberDoubleType, -1.5), kCFNumberSInt32Type), std::pair(false, -1));
    EXPECT_EQ(Get<SInt8>(Make(kCFNumberFloatType, 3.0f), kCFNumberSInt8Type), std::pair(true, SInt8(3)));
    EXPECT_EQ(Get<SInt64>(Make(kCFNumberDoubleType, kTwoTo63), kCFNumberSInt64Type),
              std::pair(false, std::numeric_limits<SInt64>::max()));
    EXPECT_EQ(Get<SInt64>(Make(kCFNumberDoubleType, -kTwoTo63), kCFNumberSInt64Type),
              std::pair(true, std::numeric_limits<SInt64>::min()));
    EXPECT_EQ(Get<SInt16>(Make(kCFNumberDoubleType, -1e20), kCFNumberSInt16Type), std::pair(false, SInt16(-32768)));
    EXPECT_EQ(Get<SInt32>(Make(kCFNumberDoubleType, kNaN), kCFNumberSInt32Type), std::pair(false, 0));
    EXPECT_EQ(Get<float>(Make(kCFNumberDoubleType, 1e300), kCFNumberFloat32Type), std::pair(false, FLT_MAX));
    EXPECT_EQ(Get<float>(Make(kCFNumberDoubleType, 0.1), kCFNumberFloat32Type), std::pair(false, 0.1f));
    EXPECT_EQ(Get<float>(Make(kCFNumberDoubleType, 0.5), kCFNumberFloat32Type), std::pair(true, 0.5f));
    EXPECT_EQ(Get<double>(Make(kCFNumberFloat32Type, 0.1f), kCFNumberFloat64Type), std::pair(true, double(0.1f)));
    EXPECT_TRUE(std::isinf(Get<float>(Make(kCFNumberDoubleType, kInfinity), kCFNumberFloat32Type).second));
}

TEST(NumberTypes, AnswerTheCanonicalSizedTypeAndRefuseOthers)
{
    struct Case {
        CFNumberType made, canonical;
        CFIndex size;
        bool isFloat;
    };
    for (Case c : {Case{kCFNumberCharType, kCFNumberSInt8Type, 1, false},
                   Case{kCFNumberShortType, kCFNumberSInt16Type, 2, false},
                   Case{kCFNumberIntType, kCFNumberSInt32Type, 4, false},
                   Case{kCFNumberCFIndexType, kCFNumberSInt64Type, 8, false},
                   Case{kCFNumberFloatType, kCFNumberFloat32Type, 4, true},
                   Case{kCFNumberDoubleType, kCFNumberFloat64Type, 8, true}}) {
        double storage = 0;  // wide enough for any type
        Owned<CFNumberRef> number(CFNumberCreate(nullptr, c.made, &storage));
        EXPECT_EQ(CFNumberGetType(number.Get()), c.canonical);
        EXPECT_EQ(CFNumberGetByteSize(number.Get()), c.size);
        EXPECT_EQ(bool(CFNumberIsFloatType(number.Get())), c.isFloat);
    }
    int value = 1;
    EXPECT_EQ(CFNumberCreate(nullptr, CFNumberType(99), &value), nullptr);
    EXPECT_FALSE(CFNumberGetValue(Make(kCFNumberIntType, 1).Get(), CFNumberType(0), &value));
    EXPECT_DEATH(CFNumberGetValue(reinterpret_cast<CFNumberRef>(kCFBooleanTrue), kCFNumberIntType, &value),
                 "CFNumberGetValue: expected a CFNumber, got a CFBoolean");
}

TEST(NumberEquality, IntegersAndFloatsWithTheSameValueAreEqualAndHashAlike)
{
    auto one = Make<SInt8>(kCFNumberSInt8Type, 1);
    auto oneDouble = Make(kCFNumberDoubleType, 1.0);
    auto zero = Make<int>(kCFNumberIntType, 0);
    auto minusZero = Make(kCFNumberFloatType, -0.0f);
    auto minimum = Make(kCFNumberSInt64Type, std::numeric_limits<SInt64>::min());
    auto minimumDouble = Make(kCFNumberDoubleType, -kTwoTo63);
    for (auto [a, b] :
         {std::pair(&one, &oneDouble), std::pair(&zero, &minusZero), std::pair(&minimum, &minimumDouble)}) {
        EXPECT_TRUE(CFEqual(a->Get(), b->Get()));
        EXPECT_EQ(CFHash(a->Get()), CFHash(b->Get()));
    }
    EXPECT_FALSE(CFEqual(one.Get(), Make(kCFNumberDoubleType, 1.0000001).Get()));
}

TEST(NumberCompare, OrdersExactlyAcrossKinds)
{
    auto compare = [](const Owned<CFNumberRef>& a, const Owned<CFNumberRef>& b) {
        return CFNumberCompare(a.Get(), b.Get(), nullptr);
    };
    auto nan = Make(kCFNumberDoubleType, kNaN);
    EXPECT_EQ(compare(Make(kCFNumberIntType, 1), Make(kCFNumberDoubleType, 1.5)), kCFCompareLessThan);
    EXPECT_EQ(compare(Make(kCFNumberIntType, -1), Make(kCFNumberDoubleType, -1.5)), kCFCompareGreaterThan);
    // 2^53 + 1 has no double; a comparison through doubles would call these equal.
    EXPECT_EQ(compare(Make(kCFNumberSInt64Type, kTwoTo53 + 1), Make(kCFNumberDoubleType, 9007199254740992.0)),
              kCFCompareGreaterThan);
    EXPECT_EQ(
        compare(Make(kCFNumberSInt64Type, std::numeric_limits<SInt64>::max()), Make(kCFNumberDoubleType, kTwoTo63)),
        kCFCompareLessThan);
    EXPECT_EQ(compare(nan, Make(kCFNumberDoubleType, -kInfinity)), kCFCompareLessThan);
    EXPECT_EQ(compare(Make(kCFNumberIntType, 0), nan), kCFCompareGreaterThan);
    EXPECT_EQ(compare(nan, Make(kCFNumberFloatType, NAN)), kCFCompareEqualTo);
}

TEST(Boolean, TheTwoConstantsAreDistinct)
{
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
    EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
    EXPECT_EQ(CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID());
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, kCFBooleanFalse));
    EXPECT_NE(cf::DescribeValue(kCFBooleanTrue).find("true"), std::string::npos);
}

}  // namespace
