#include <Groundwork/SysWrappers/CoreFoundation/SysCFUtils.h>

#include <gtest/gtest.h>

// Found by argument-dependent lookup from inside GoogleTest, so they live beside CFRange.
static bool operator==(CFRange a, CFRange b) { return a.location == b.location && a.length == b.length; }
static std::ostream& operator<<(std::ostream& out, CFRange r)
{
    return out << "{" << r.location << ", " << r.length << "}";
}

namespace {

using namespace Gx::CFUtils;

constexpr CFIndex kBad = -999;  // marks a case that must fail

// Runs the Verify form and the Make form on the same input and checks they agree.
template <class Value>
void Check(void (*inVerify)(CFIndex, Value&), bool (*inMake)(CFIndex, Value&), CFIndex inCount, Value inValue,
           Value inExpected, bool inValid)
{
    Value viaMake = inValue;
    EXPECT_EQ(inMake(inCount, viaMake), inValid);
    Value viaVerify = inValue;
    if (!inValid) {
        try {
            inVerify(inCount, viaVerify);
            ADD_FAILURE() << "accepted on count " << inCount;
        } catch (const Gx::LogicError& e) {
            EXPECT_EQ(e.What(), FourCC("logc"));
        }
        EXPECT_EQ(viaMake, viaVerify) << "the two forms adjusted differently";
        return;
    }
    EXPECT_NO_THROW(inVerify(inCount, viaVerify));
    EXPECT_EQ(viaVerify, inExpected);
    EXPECT_EQ(viaMake, inExpected);
}

TEST(SysCFUtils, VerifyIndexAndInsertIndex)
{
    // An insertion may also name the place after the last item.
    struct {
        bool insert;
        CFIndex count, index, expected;
    } cases[] = {
        {false, 3, 0, 0},          {false, 3, 2, 2},          {false, 3, kIndexToEnd, 2},
        {false, 3, -1, -1},        {false, 3, 3, kBad},       {false, 0, kIndexToEnd, kBad},
        {false, 0, 0, kBad},       {false, -1, -5, kBad},     {true, 3, 3, 3},
        {true, 3, kIndexToEnd, 3}, {true, 0, kIndexToEnd, 0}, {true, 0, -2, -2},
        {true, 3, 4, kBad},
    };
    for (auto c : cases) {
        SCOPED_TRACE(testing::Message() << "insert " << c.insert << " count " << c.count << " index " << c.index);
        Check(c.insert ? VerifyInsertIndex : VerifyIndex, c.insert ? MakeInsertIndex : MakeValidIndex, c.count, c.index,
              c.expected, c.expected != kBad);
    }
}

TEST(SysCFUtils, VerifyRange)
{
    struct {
        CFIndex count;
        CFRange range, expected;
        bool valid;
    } cases[] = {
        {5, {0, kIndexToEnd}, {0, 5}, true},
        {5, {1, kIndexToEnd}, {}, false},  // "to the end" counts the whole length
        {5, {kIndexToEnd, 1}, {4, 1}, true},
        {5, {1, 4}, {1, 4}, true},
        {5, {1, 5}, {}, false},
        {5, {2, 0}, {}, false},
        {5, {kIndexToEnd, 0}, {}, false},
        {5, {-1, 2}, {}, false},
        {5, {5, 1}, {}, false},
        {5, {1, 0x7FFFFFFFFFFFFFFF}, {}, false},
        {0, {0, kIndexToEnd}, {}, false},
    };
    for (auto c : cases) {
        SCOPED_TRACE(testing::Message() << "count " << c.count << " range " << c.range);
        Check(VerifyRange, MakeValidRange, c.count, c.range, c.expected, c.valid);
    }
}

}  // namespace
