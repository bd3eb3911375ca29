// Arrays: what they retain, index and range behaviour, search and sort, equality, misuse.
#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace {

CFStringRef Text(const char* inText) { return CFStringCreateWithCString(nullptr, inText, kCFStringEncodingUTF8); }

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
    return IntOf(inValue1) < IntOf(inValue2) ? kCFCompareLessThan
         : IntOf(inValue1) > IntOf(inValue2) ? kCFCompareGreaterThan
                                             : kCFCompareEqualTo;
}

TEST(CFArrayRetaining, HoldsOneReferencePerSlotUntilRemovedOrDestroyed)
{
    CFStringRef value = Text("value");
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
    CFStringRef first = Text("first"), second = Text("second");
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
    CFArrayCallBacks callBacks{0, [](CFAllocatorRef inAllocator, const void* inValue) {
                                   seen = inAllocator;
                                   return inValue;
                               },
                               nullptr, nullptr, nullptr};
    CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorMalloc, 0, &callBacks);
    CFArrayAppendValue(array, Int(1));
    EXPECT_EQ(seen, kCFAllocatorMalloc);
    CFRelease(array);
}

TEST(CFArrayWithoutCallBacks, StoresIntegersAndComparesByIdentity)
{
    CFMutableArrayRef array = Ints({0, 7, 3, 7});
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(0, 4), Int(7)), 1);
    EXPECT_EQ(CFArrayGetLastIndexOfValue(array, CFRangeMake(0, 4), Int(7)), 3);
    EXPECT_EQ(CFArrayGetLastIndexOfValue(array, CFRangeMake(0, 3), Int(7)), 1);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(2, 2), Int(0)), kCFNotFound);
    EXPECT_EQ(CFArrayGetCountOfValue(array, CFRangeMake(0, 4), Int(7)), 2);

    // Without an equal callback, an equal string that is another object is not found.
    CFStringRef stored = Text("same"), other = Text("same");
    CFArrayAppendValue(array, stored);
    EXPECT_FALSE(CFArrayContainsValue(array, CFRangeMake(0, 5), other));
    CFArrayRef objects = CFArrayCreate(nullptr, reinterpret_cast<const void**>(&stored), 1, &kCFTypeArrayCallBacks);
    EXPECT_TRUE(CFArrayContainsValue(objects, CFRangeMake(0, 1), other));
    CFRelease(objects);
    CFRelease(array);
    CFRelease(stored);
    CFRelease(other);
}

TEST(CFArrayEditing, ReplaceInsertsDeletesAndReplaces)
{
    CFMutableArrayRef array = Ints({0, 1, 2, 3, 4});
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
    CFArrayRemoveAllValues(array);
    EXPECT_EQ(CFArrayGetCount(array), 0);
    CFRelease(array);
}

TEST(CFArraySearching, BSearchAnswersTheInsertionPoint)
{
    CFMutableArrayRef array = Ints({10, 20, 20, 30});
    const CFRange all = CFRangeMake(0, 4);
    EXPECT_EQ(CFArrayBSearchValues(array, all, Int(5), CompareInts, nullptr), 0);
    EXPECT_EQ(CFArrayBSearchValues(array, all, Int(20), CompareInts, nullptr), 1);
    EXPECT_EQ(CFArrayBSearchValues(array, all, Int(25), CompareInts, nullptr), 3);
    EXPECT_EQ(CFArrayBSearchValues(array, all, Int(40), CompareInts, nullptr), 4);
    EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(1, 2), Int(5), CompareInts, nullptr), 1);
    EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(1, 2), Int(99), CompareInts, nullptr), 3);
    CFRelease(array);
}

TEST(CFArraySorting, IsStableAndSortsOnlyTheRange)
{
    // Values are key * 1000 + original position; the comparator sees only the key.
    std::mt19937 random(7);
    std::vector<std::intptr_t> values;
    for (std::intptr_t i = 0; i < 500; ++i)
        values.push_back(std::intptr_t(random() % 20) * 1000 + i);
    CFMutableArrayRef array = Ints(values);
    auto byKey = [](const void* a, const void* b, void*) {
        return CompareInts(Int(IntOf(a) / 1000), Int(IntOf(b) / 1000), nullptr);
    };
    CFArraySortValues(array, CFRangeMake(10, 480), byKey, nullptr);
    std::stable_sort(values.begin() + 10, values.begin() + 490,
                     [](std::intptr_t a, std::intptr_t b) { return a / 1000 < b / 1000; });
    EXPECT_EQ(Contents(array), values);
    CFRelease(array);
}

TEST(CFArraySorting, AContradictoryComparatorKeepsTheValues)
{
    std::vector<std::intptr_t> values(300);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = std::intptr_t(i);
    CFMutableArrayRef array = Ints(values);
    std::mt19937 random(3);
    auto coinToss = [](const void*, const void*, void* inRandom) {
        return (*static_cast<std::mt19937*>(inRandom))() % 2 ? kCFCompareLessThan : kCFCompareGreaterThan;
    };
    CFArraySortValues(array, CFRangeMake(0, 300), coinToss, &random);
    std::vector<std::intptr_t> sorted = Contents(array);
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, values);
    CFRelease(array);
}

TEST(CFArrayEquality, ComparesElementsWithTheEqualCallBack)
{
    CFStringRef a1 = Text("a"), a2 = Text("a"), b = Text("b");
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

TEST(CFArrayCopies, AreIndependentOfTheirSource)
{
    CFMutableArrayRef source = Ints({1, 2});
    CFMutableArrayRef copy = CFArrayCreateMutableCopy(nullptr, 0, source);
    CFArrayAppendValue(copy, Int(3));
    CFArraySetValueAtIndex(source, 0, Int(9));
    EXPECT_EQ(Contents(source), (std::vector<std::intptr_t>{9, 2}));
    EXPECT_EQ(Contents(copy), (std::vector<std::intptr_t>{1, 2, 3}));
    CFRelease(source);
    CFRelease(copy);
}

using CFArrayMisuseDeathTest = ::testing::Test;

TEST_F(CFArrayMisuseDeathTest, StopsTheProcessNamingTheCall)
{
    CFArrayRef immutable = CFArrayCreate(nullptr, nullptr, 0, nullptr);
    EXPECT_DEATH(CFArrayAppendValue(const_cast<CFMutableArrayRef>(immutable), Int(1)), "CFArrayAppendValue: .*immutable");
    EXPECT_DEATH(CFArraySortValues(const_cast<CFMutableArrayRef>(immutable), CFRangeMake(0, 0), CompareInts, nullptr),
                 "CFArraySortValues");
    CFMutableArrayRef array = Ints({1, 2});
    EXPECT_DEATH(CFArrayGetValueAtIndex(array, 2), "CFArrayGetValueAtIndex: index 2 is out of bounds");
    EXPECT_DEATH(CFArrayInsertValueAtIndex(array, -1, Int(0)), "CFArrayInsertValueAtIndex: index -1");
    EXPECT_DEATH(CFArrayReplaceValues(array, CFRangeMake(1, 2), nullptr, 0), "CFArrayReplaceValues: range");
    CFStringRef text = Text("not an array");
    EXPECT_DEATH(CFArrayGetCount(reinterpret_cast<CFArrayRef>(text)), "CFArrayGetCount: expected a CFArray, got a CFString");
    CFMutableArrayRef full = CFArrayCreateMutableCopy(nullptr, 2, array);
    EXPECT_DEATH(CFArrayAppendValue(full, Int(3)), "CFArrayAppendValue: .*full");
    CFRelease(full);
    CFRelease(text);
    CFRelease(array);
    CFRelease(immutable);
}

}  // namespace
