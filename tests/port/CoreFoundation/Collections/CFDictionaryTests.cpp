// Dictionaries: add/set/replace/remove and what they retain, copied string keys, raw keys,
// equality, copies and misuse.
#include "CFTesting.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <string>

namespace {

using cftest::Make;
using cftest::Owned;

const void* Int(std::intptr_t inValue) { return reinterpret_cast<const void*>(inValue); }

CFMutableDictionaryRef NewObjectDictionary()
{
    return CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
}

TEST(CFDictionaryEditing, AddSetReplaceAndRemoveRetainWhatTheyKeep)
{
    CFStringRef key = Make("key"), equalKey = Make("key"), first = Make("first"), second = Make("second");
    CFMutableDictionaryRef dictionary = NewObjectDictionary();

    CFDictionaryAddValue(dictionary, key, first);
    CFDictionaryAddValue(dictionary, equalKey, second);  // present: nothing changes
    EXPECT_EQ(CFDictionaryGetValue(dictionary, equalKey), first);
    EXPECT_EQ(CFGetRetainCount(key), 2);
    EXPECT_EQ(CFGetRetainCount(equalKey), 1);
    EXPECT_EQ(CFGetRetainCount(second), 1);

    CFDictionaryReplaceValue(dictionary, equalKey, second);
    EXPECT_EQ(CFDictionaryGetValue(dictionary, key), second);
    EXPECT_EQ(CFGetRetainCount(first), 1);
    EXPECT_EQ(CFGetRetainCount(second), 2);
    EXPECT_EQ(CFGetRetainCount(key), 2);  // the first key stays

    CFDictionaryReplaceValue(dictionary, first, second);  // absent: nothing is added
    EXPECT_FALSE(CFDictionaryContainsKey(dictionary, first));
    CFDictionarySetValue(dictionary, first, first);  // absent: added
    CFDictionarySetValue(dictionary, key, first);    // present: replaced
    EXPECT_EQ(CFDictionaryGetCount(dictionary), 2);
    EXPECT_EQ(CFDictionaryGetCountOfValue(dictionary, first), 2);
    EXPECT_EQ(CFGetRetainCount(first), 4);
    EXPECT_EQ(CFGetRetainCount(second), 1);

    CFDictionaryRemoveValue(dictionary, equalKey);
    EXPECT_EQ(CFGetRetainCount(key), 1);
    EXPECT_EQ(CFGetRetainCount(first), 3);
    EXPECT_EQ(CFDictionaryGetValue(dictionary, key), nullptr);
    CFRelease(dictionary);
    for (CFStringRef object : {key, equalKey, first, second}) {
        EXPECT_EQ(CFGetRetainCount(object), 1);
        CFRelease(object);
    }
}

TEST(CFDictionaryEditing, ReadersAcceptNullOutputs)
{
    Owned key(Make("key"));
    Owned dictionary(NewObjectDictionary());
    CFDictionarySetValue(dictionary, key, kCFNull);
    const void* value = nullptr;
    EXPECT_TRUE(CFDictionaryGetValueIfPresent(dictionary, key, &value));
    EXPECT_EQ(value, kCFNull);
    EXPECT_TRUE(CFDictionaryGetValueIfPresent(dictionary, key, nullptr));
    EXPECT_FALSE(CFDictionaryGetValueIfPresent(dictionary, kCFNull, &value));
    const void *keys[1] = {}, *values[1] = {};
    CFDictionaryGetKeysAndValues(dictionary, keys, nullptr);
    CFDictionaryGetKeysAndValues(dictionary, nullptr, values);
    EXPECT_EQ(keys[0], key);
    EXPECT_EQ(values[0], kCFNull);
}

TEST(CFDictionaryCopyStringKeys, AMutableKeyChangedLaterDoesNotMoveTheEntry)
{
    Owned key(CFStringCreateMutableCopy(nullptr, 0, CFSTR("abc")));
    Owned dictionary(
        CFDictionaryCreateMutable(nullptr, 0, &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(dictionary, key, kCFNull);
    EXPECT_EQ(CFGetRetainCount(key), 1);  // copied, not retained
    CFStringAppendCString(key, "def", kCFStringEncodingUTF8);
    EXPECT_EQ(CFDictionaryGetValue(dictionary, CFSTR("abc")), kCFNull);
    EXPECT_FALSE(CFDictionaryContainsKey(dictionary, key));
}

TEST(CFDictionaryWithoutCallBacks, KeepsRawIntegersThroughManyChanges)
{
    // A model map checks the table through growth and removals, including the key 0 (NULL).
    Owned dictionary(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
    std::map<std::intptr_t, std::intptr_t> model;
    std::mt19937 random(11);
    for (int step = 0; step < 20000; ++step) {
        const auto key = std::intptr_t(random() % 600) * 8;  // aligned like pointers
        const auto value = std::intptr_t(step);
        if (random() % 3 == 0) {
            CFDictionaryRemoveValue(dictionary, Int(key));
            model.erase(key);
        } else {
            CFDictionarySetValue(dictionary, Int(key), Int(value));
            model[key] = value;
        }
    }
    ASSERT_EQ(CFDictionaryGetCount(dictionary), CFIndex(model.size()));
    for (std::intptr_t key = 0; key < 600 * 8; key += 8) {
        const void* value = nullptr;
        const bool present = CFDictionaryGetValueIfPresent(dictionary, Int(key), &value);
        ASSERT_EQ(present, model.count(key) == 1) << key;
        if (present) {
            EXPECT_EQ(value, Int(model[key])) << key;
        }
    }
    std::intptr_t sum = 0;
    CFDictionaryApplyFunction(
        dictionary,
        [](const void* inKey, const void*, void* ioSum) {
            *static_cast<std::intptr_t*>(ioSum) += reinterpret_cast<std::intptr_t>(inKey);
        },
        &sum);
    std::intptr_t expected = 0;
    for (auto [key, value] : model)
        expected += key;
    EXPECT_EQ(sum, expected);
}

TEST(CFDictionaryEquality, DependsOnPairsNotOnHowTheyWereBuiltAndTheDescriptionListsThem)
{
    Owned a(Make("a")), b(Make("b")), one(Make("1")), two(Make("2"));
    const void* keys[] = {a, b};
    const void* values[] = {one, two};
    Owned created(
        CFDictionaryCreate(nullptr, keys, values, 2, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    Owned built(NewObjectDictionary());
    CFDictionarySetValue(built, CFSTR("b"), CFSTR("2"));
    CFDictionarySetValue(built, CFSTR("a"), CFSTR("1"));
    EXPECT_TRUE(CFEqual(created, built));
    EXPECT_EQ(CFHash(created), CFHash(built));
    std::string description = cf::UTF8(Owned(CFCopyDescription(built)));
    EXPECT_EQ(description.rfind("<CFDictionary ", 0), 0u) << description;
    EXPECT_NE(description.find("a = 1"), std::string::npos) << description;
    CFDictionarySetValue(built, CFSTR("a"), CFSTR("2"));
    EXPECT_FALSE(CFEqual(created, built));
    CFDictionaryRemoveValue(built, CFSTR("a"));
    EXPECT_FALSE(CFEqual(created, built));
    Owned array(CFArrayCreate(nullptr, keys, 2, &kCFTypeArrayCallBacks));
    EXPECT_FALSE(CFEqual(created, array));
}

TEST(CFDictionaryCopies, AreIndependentAndKeepTheCallBacks)
{
    CFStringRef key = Make("key");
    CFMutableDictionaryRef source = NewObjectDictionary();
    CFDictionarySetValue(source, key, kCFNull);
    CFMutableDictionaryRef copy = CFDictionaryCreateMutableCopy(nullptr, 0, source);
    CFDictionaryRef frozen = CFDictionaryCreateCopy(nullptr, source);
    EXPECT_EQ(CFGetRetainCount(key), 4);
    CFDictionaryRemoveValue(source, key);
    EXPECT_TRUE(CFDictionaryContainsKey(copy, CFSTR("key")));  // found by equality: CFType callbacks kept
    EXPECT_TRUE(CFDictionaryContainsKey(frozen, CFSTR("key")));
    CFDictionarySetValue(copy, CFSTR("other"), kCFNull);
    EXPECT_EQ(CFDictionaryGetCount(frozen), 1);
    CFRelease(source);
    CFRelease(copy);
    CFRelease(frozen);
    EXPECT_EQ(CFGetRetainCount(key), 1);
    CFRelease(key);
}

using CFDictionaryMisuseDeathTest = ::testing::Test;

TEST_F(CFDictionaryMisuseDeathTest, StopsTheProcessNamingTheCall)
{
    Owned immutable(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, nullptr));
    auto* changed = const_cast<CFMutableDictionaryRef>(immutable.get());
    EXPECT_DEATH(CFDictionarySetValue(changed, Int(1), Int(1)), "CFDictionarySetValue: .*immutable");
    EXPECT_DEATH(CFDictionaryRemoveAllValues(changed), "CFDictionaryRemoveAllValues: .*immutable");
    Owned array(CFArrayCreate(nullptr, nullptr, 0, nullptr));
    EXPECT_DEATH(CFDictionaryGetCount(reinterpret_cast<CFDictionaryRef>(array.get())),
                 "CFDictionaryGetCount: expected a CFDictionary, got a CFArray");
    Owned two(CFDictionaryCreateMutable(nullptr, 2, nullptr, nullptr));
    CFDictionaryAddValue(two, Int(1), Int(1));
    CFDictionaryAddValue(two, Int(2), Int(2));
    CFDictionarySetValue(two, Int(2), Int(3));  // replacing needs no room
    EXPECT_DEATH(CFDictionaryAddValue(two, Int(3), Int(3)), "CFDictionaryAddValue: .*full");
    EXPECT_DEATH(CFDictionaryCreateMutableCopy(nullptr, 1, two), "CFDictionaryCreateMutableCopy: capacity 1");
}

}  // namespace
