// Arrays: what they retain, index and range behaviour, search and sort, equality, misuse.
#include "CFTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using cftest::Make;
using cftest::Owned;

const void* Int(std::intptr_t inValue) { return reinterpret_cast<const void*>(inValue); }
std::intptr_t IntOf(const void* inValue) { return reinterpret_cast<std::intptr_t>(inValue); }

// Plain integers in an array without callbacks.
CFMutableArrayRef Ints(std::vector<std::intptr_t> inValues)
{
    CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, nullptr);
    for (std::intptr_t value : inValues)
        CFArrayAppendValue(array, Int(value));
    return array;
}

std::vector<std::intptr_t> Contents(CFArrayRef inArray)
{
    std::vector<const void*> values(std::size_t(CFArrayGetCount(inArray)));
    CFArrayGetValues(inArray, CFRangeMake(0, CFArrayGetCount(inArray)), values.data());
    std::vector<std::intptr_t> result;
    for (const void* value : values)
        result.push_back(IntOf(value));
    return result;
}

CFComparisonResult CompareInts(const void* inValue1, const void* inValue2, void*)
{
    return IntOf(inValue1) < IntOf(inValue2)   ? kCFCompareLessThan
           : IntOf(inValue1) > IntOf(inValue2) ? kCFCompareGreaterThan
                                               : kCFCompareEqualTo;
}

TEST(CFArrayRetaining, HoldsOneReferencePerSlotUntilRemovedOrDestroyed)
{
    CFStringRef value = Make("value");
    CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    CFArrayAppendValue(array, value);
    CFArrayInsertValueAtIndex(array, 0, value);
    EXPECT_EQ(CFGetRetainCount(value), 3);
    CFArrayRemoveValueAtIndex(array, 1);
    EXPECT_EQ(CFGetRetainCount(value), 2);
    CFArrayRef copy = CFArrayCreateCopy(nullptr, array);
    EXPECT_EQ(CFGetRetainCount(value), 3);
    CFRelease(array);
    CFRelease(copy);
    EXPECT_EQ(CFGetRetainCount(value), 1);
    CFRelease(value);
}

TEST(CFArrayRetaining, ReplacingValuesByThemselvesNeverFreesThem)
{
    // The array holds the only reference to each value; swapping them through ReplaceValues
    // must retain the new values before releasing the old ones.
    CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    CFStringRef first = Make("first"), second = Make("second");
    CFArrayAppendValue(array, first);
    CFArrayAppendValue(array, second);
    CFRelease(first);
    CFRelease(second);
    const void* swapped[] = {second, first};
    CFArrayReplaceValues(array, CFRangeMake(0, 2), swapped, 2);
    CFArraySetValueAtIndex(array, 1, CFArrayGetValueAtIndex(array, 1));
    EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), second);
    EXPECT_EQ(CFGetRetainCount(first), 1);
    EXPECT_EQ(CFGetRetainCount(second), 1);
    CFRelease(array);
}

TEST(CFArrayRetaining, RetainCallBackReceivesTheArraysAllocator)
{
    static CFAllocatorRef seen;
    CFArrayCallBacks callBacks{0,
                               [](CFAllocatorRef inAllocator, const void* inValue) {
                                   seen = inAllocator;
                                   return inValue;
                               },
                               nullptr, nullptr, nullptr};
    Owned array(CFArrayCreateMutable(kCFAllocatorMalloc, 0, &callBacks));
    CFArrayAppendValue(array, Int(1));
    EXPECT_EQ(seen, kCFAllocatorMalloc);
}

TEST(CFArrayWithoutCallBacks, StoresIntegersAndComparesByIdentity)
{
    Owned array(Ints({0, 7, 3, 7}));
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(0, 4), Int(7)), 1);
    EXPECT_EQ(CFArrayGetLastIndexOfValue(array, CFRangeMake(0, 4), Int(7)), 3);
    EXPECT_EQ(CFArrayGetLastIndexOfValue(array, CFRangeMake(0, 3), Int(7)), 1);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(2, 2), Int(0)), kCFNotFound);
    EXPECT_EQ(CFArrayGetCountOfValue(array, CFRangeMake(0, 4), Int(7)), 2);

    // Without an equal callback, an equal string that is another object is not found.
    Owned stored(Make("same")), other(Make("same"));
    CFArrayAppendValue(array, stored);
    EXPECT_FALSE(CFArrayContainsValue(array, CFRangeMake(0, 5), other));
    const void* values[] = {stored};
    Owned objects(CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks));
    EXPECT_TRUE(CFArrayContainsValue(objects, CFRangeMake(0, 1), other));
}

TEST(CFArrayEditing, ReplaceInsertsDeletesAndReplacesInTheArrayAlone)
{
    Owned array(Ints({0, 1, 2, 3, 4}));
    const void* values[] = {Int(10), Int(11), Int(12)};
    CFArrayReplaceValues(array, CFRangeMake(1, 2), values, 3);
    EXPECT_EQ(Contents(array), (std::vector<std::intptr_t>{0, 10, 11, 12, 3, 4}));
    CFArrayReplaceValues(array, CFRangeMake(0, 0), values, 1);
    EXPECT_EQ(Contents(array), (std::vector<std::intptr_t>{10, 0, 10, 11, 12, 3, 4}));
    CFArrayReplaceValues(array, CFRangeMake(2, 4), nullptr, 0);
    EXPECT_EQ(Contents(array), (std::vector<std::intptr_t>{10, 0, 4}));
    CFArraySetValueAtIndex(array, 3, Int(5));  // at the count: appends
    CFArrayExchangeValuesAtIndices(array, 0, 3);
    EXPECT_EQ(Contents(array), (std::vector<std::intptr_t>{5, 0, 4, 10}));
    CFArrayAppendArray(array, array, CFRangeMake(1, 3));
    EXPECT_EQ(Contents(array), (std::vector<std::intptr_t>{5, 0, 4, 10, 0, 4, 10}));
    // A copy does not follow its source, nor its source the copy.
    Owned copy(CFArrayCreateMutableCopy(nullptr, 0, array));
    CFArrayAppendValue(copy, Int(3));
    CFArrayRemoveAllValues(array);
    EXPECT_EQ(CFArrayGetCount(array), 0);
    EXPECT_EQ(Contents(copy), (std::vector<std::intptr_t>{5, 0, 4, 10, 0, 4, 10, 3}));
}

TEST(CFArraySearching, BSearchAnswersTheInsertionPoint)
{
    Owned array(Ints({10, 20, 20, 30}));
    const CFRange all = CFRangeMake(0, 4);
    EXPECT_EQ(CFArrayBSearchValues(array, all, Int(5), CompareInts, nullptr), 0);
    EXPECT_EQ(CFArrayBSearchValues(array, all, Int(20), CompareInts, nullptr), 1);
    EXPECT_EQ(CFArrayBSearchValues(array, all, Int(25), CompareInts, nullptr), 3);
    EXPECT_EQ(CFArrayBSearchValues(array, all, Int(40), CompareInts, nullptr), 4);
    EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(1, 2), Int(5), CompareInts, nullptr), 1);
    EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(1, 2), Int(99), CompareInts, nullptr), 3);
}

TEST(CFArraySorting, IsStableSortsOnlyTheRangeAndKeepsTheValuesUnderAContradictoryComparator)
{
    // Values are key * 1000 + original position; the comparator sees only the key.
    std::mt19937 random(7);
    std::vector<std::intptr_t> values;
    for (std::intptr_t i = 0; i < 500; ++i)
        values.push_back(std::intptr_t(random() % 20) * 1000 + i);
    Owned array(Ints(values));
    auto byKey = [](const void* a, const void* b, void*) {
        return CompareInts(Int(IntOf(a) / 1000), Int(IntOf(b) / 1000), nullptr);
    };
    CFArraySortValues(array, CFRangeMake(10, 480), byKey, nullptr);
    std::stable_sort(values.begin() + 10, values.begin() + 490,
                     [](std::intptr_t a, std::intptr_t b) { return a / 1000 < b / 1000; });
    EXPECT_EQ(Contents(array), values);

    auto coinToss = [](const void*, const void*, void* inRandom) {
        return (*static_cast<std::mt19937*>(inRandom))() % 2 ? kCFCompareLessThan : kCFCompareGreaterThan;
    };
    CFArraySortValues(array, CFRangeMake(0, 500), coinToss, &random);
    std::vector<std::intptr_t> sorted = Contents(array);
    std::sort(sorted.begin(), sorted.end());
    std::sort(values.begin(), values.end());
    EXPECT_EQ(sorted, values);
}

TEST(CFArrayEquality, ComparesElementsWithTheEqualCallBack)
{
    CFStringRef a1 = Make("a"), a2 = Make("a"), b = Make("b");
    const void* first[] = {a1, b};
    CFArrayRef created = CFArrayCreate(nullptr, first, 2, &kCFTypeArrayCallBacks);
    CFMutableArrayRef built = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    CFArrayAppendValue(built, b);
    CFArrayInsertValueAtIndex(built, 0, a2);
    EXPECT_TRUE(CFEqual(created, built));
    EXPECT_EQ(CFHash(created), CFHash(built));

    CFArrayRef identities = CFArrayCreate(nullptr, first, 2, nullptr);
    EXPECT_FALSE(CFEqual(created, identities));  // they disagree on what equal means
    CFArrayExchangeValuesAtIndices(built, 0, 1);
    EXPECT_FALSE(CFEqual(created, built));
    CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr);
    EXPECT_FALSE(CFEqual(created, dictionary));
    for (CFTypeRef object : {CFTypeRef(created), CFTypeRef(built), CFTypeRef(identities), CFTypeRef(dictionary),
                             CFTypeRef(a1), CFTypeRef(a2), CFTypeRef(b)})
        CFRelease(object);
}

using CFArrayMisuseDeathTest = ::testing::Test;

TEST_F(CFArrayMisuseDeathTest, StopsTheProcessNamingTheCall)
{
    Owned immutable(CFArrayCreate(nullptr, nullptr, 0, nullptr));
    EXPECT_DEATH(CFArrayAppendValue(const_cast<CFMutableArrayRef>(immutable.get()), Int(1)),
                 "CFArrayAppendValue: .*immutable");
    EXPECT_DEATH(
        CFArraySortValues(const_cast<CFMutableArrayRef>(immutable.get()), CFRangeMake(0, 0), CompareInts, nullptr),
        "CFArraySortValues");
    Owned array(Ints({1, 2}));
    EXPECT_DEATH(CFArrayGetValueAtIndex(array, 2), "CFArrayGetValueAtIndex: index 2 is out of bounds");
    EXPECT_DEATH(CFArrayInsertValueAtIndex(array, -1, Int(0)), "CFArrayInsertValueAtIndex: index -1");
    EXPECT_DEATH(CFArrayReplaceValues(array, CFRangeMake(1, 2), nullptr, 0), "CFArrayReplaceValues: range");
    EXPECT_DEATH(CFArrayGetCount(reinterpret_cast<CFArrayRef>(CFSTR("not an array"))),
                 "CFArrayGetCount: expected a CFArray, got a CFString");
    Owned full(CFArrayCreateMutableCopy(nullptr, 2, array));
    EXPECT_DEATH(CFArrayAppendValue(full, Int(3)), "CFArrayAppendValue: .*full");
}

}  // namespace
