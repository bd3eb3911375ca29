// Sets: add/replace/set semantics and what they retain, copied strings, raw values, equality.
#include "CFTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

using cftest::Make;
using cftest::Owned;

const void* Int(std::intptr_t inValue) { return reinterpret_cast<const void*>(inValue); }

TEST(CFSetEditing, AddKeepsTheFirstReplaceAndSetSwapInTheNew)
{
    CFStringRef first = Make("same"), second = Make("same"), other = Make("other");
    CFMutableSetRef set = CFSetCreateMutable(nullptr, 0, &kCFTypeSetCallBacks);
    CFSetAddValue(set, first);
    CFSetAddValue(set, second);
    EXPECT_EQ(CFSetGetValue(set, second), first);
    EXPECT_EQ(CFGetRetainCount(second), 1);

    CFSetReplaceValue(set, second);
    EXPECT_EQ(CFSetGetValue(set, first), second);
    EXPECT_EQ(CFGetRetainCount(first), 1);
    EXPECT_EQ(CFGetRetainCount(second), 2);
    CFSetReplaceValue(set, other);  // absent: nothing is added
    EXPECT_FALSE(CFSetContainsValue(set, other));

    CFSetSetValue(set, first);
    CFSetSetValue(set, other);
    const void* found = nullptr;
    EXPECT_TRUE(CFSetGetValueIfPresent(set, second, &found));
    EXPECT_EQ(found, first);
    EXPECT_EQ(CFSetGetCount(set), 2);
    EXPECT_EQ(CFGetRetainCount(second), 1);

    CFSetRemoveValue(set, second);
    EXPECT_EQ(CFSetGetCountOfValue(set, first), 0);
    EXPECT_EQ(CFGetRetainCount(first), 1);
    CFRelease(set);
    EXPECT_EQ(CFGetRetainCount(other), 1);
    for (CFStringRef object : {first, second, other})
        CFRelease(object);
}

TEST(CFSetCopyStrings, AMutableStringChangedLaterIsNotChangedInTheSet)
{
    Owned value(CFStringCreateMutableCopy(nullptr, 0, CFSTR("abc")));
    Owned set(CFSetCreateMutable(nullptr, 0, &kCFCopyStringSetCallBacks));
    CFSetAddValue(set, value);
    CFStringAppendCString(value, "def", kCFStringEncodingUTF8);
    EXPECT_TRUE(CFSetContainsValue(set, CFSTR("abc")));
    EXPECT_FALSE(CFSetContainsValue(set, value));
    EXPECT_EQ(CFGetRetainCount(value), 1);
}

TEST(CFSetWithoutCallBacks, HoldsDistinctRawValues)
{
    const void* values[] = {Int(0), Int(16), Int(16), Int(32)};
    Owned set(CFSetCreate(nullptr, values, 4, nullptr));
    EXPECT_EQ(CFSetGetCount(set), 3);
    EXPECT_TRUE(CFSetContainsValue(set, Int(0)));
    EXPECT_FALSE(CFSetContainsValue(set, Int(8)));
    std::vector<const void*> all(3);
    CFSetGetValues(set, all.data());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(all, (std::vector<const void*>{Int(0), Int(16), Int(32)}));
}

TEST(CFSetEquality, DependsOnMembersAndTheirEquality)
{
    CFStringRef a = Make("a"), b = Make("b");
    const void* values[] = {a, b};
    CFSetRef created = CFSetCreate(nullptr, values, 2, &kCFTypeSetCallBacks);
    CFMutableSetRef built = CFSetCreateMutable(nullptr, 0, &kCFTypeSetCallBacks);
    CFSetAddValue(built, CFSTR("b"));
    CFSetAddValue(built, CFSTR("a"));
    EXPECT_TRUE(CFEqual(created, built));
    CFSetRef identities = CFSetCreate(nullptr, values, 2, nullptr);
    EXPECT_FALSE(CFEqual(created, identities));
    CFMutableSetRef copy = CFSetCreateMutableCopy(nullptr, 0, created);
    CFSetRemoveValue(copy, CFSTR("a"));
    CFSetAddValue(copy, CFSTR("c"));
    EXPECT_FALSE(CFEqual(created, copy));
    EXPECT_EQ(CFSetGetCount(created), 2);
    for (CFTypeRef object :
         {CFTypeRef(created), CFTypeRef(built), CFTypeRef(identities), CFTypeRef(copy), CFTypeRef(a), CFTypeRef(b)})
        CFRelease(object);
}

using CFSetMisuseDeathTest = ::testing::Test;

TEST_F(CFSetMisuseDeathTest, StopsTheProcessNamingTheCall)
{
    Owned immutable(CFSetCreate(nullptr, nullptr, 0, &kCFTypeSetCallBacks));
    EXPECT_DEATH(CFSetAddValue(const_cast<CFMutableSetRef>(immutable.get()), CFSTR("x")), "CFSetAddValue: .*immutable");
    EXPECT_DEATH(CFSetContainsValue(reinterpret_cast<CFSetRef>(CFSTR("x")), nullptr),
                 "CFSetContainsValue: expected a CFSet, got a CFString");
}

}  // namespace
