// The runtime under every object: retain counts, allocators, type identity, misuse.
#include "CFTesting.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

namespace {

using cftest::Make;
using cftest::Owned;

TEST(RetainCount, IsExactAndFreesAtZero)
{
    CFIndex liveBefore = _CFRuntimeGetLiveObjectCount();
    CFStringRef string = Make("counted");
    EXPECT_EQ(_CFRuntimeGetLiveObjectCount(), liveBefore + 1);
    EXPECT_EQ(CFGetRetainCount(string), 1);
    EXPECT_EQ(CFRetain(string), string);
    EXPECT_EQ(CFGetRetainCount(string), 2);
    CFRelease(string);
    EXPECT_EQ(CFGetRetainCount(string), 1);
    CFRelease(string);
    EXPECT_EQ(_CFRuntimeGetLiveObjectCount(), liveBefore);
}

TEST(RetainCount, StaticObjectsIgnoreRetainAndRelease)
{
    CFIndex liveBefore = _CFRuntimeGetLiveObjectCount();
    for (CFTypeRef constant : {CFTypeRef(CFSTR("static")), CFTypeRef(kCFBooleanFalse), CFTypeRef(kCFNull)}) {
        CFIndex count = CFGetRetainCount(constant);
        for (int i = 0; i < 3; ++i)
            CFRelease(CFRetain(constant));
        CFRelease(constant);  // one too many would kill a counted object
        EXPECT_EQ(CFGetRetainCount(constant), count);
    }
    EXPECT_EQ(CFSTR("static"), CFSTR("static"));
    EXPECT_EQ(_CFRuntimeGetLiveObjectCount(), liveBefore);
}

TEST(RetainCount, ConcurrentRetainsAndReleasesBalance)
{
    CFStringRef string = Make("shared");
    auto churn = [string] {
        for (int i = 0; i < 100000; ++i)
            CFRelease(CFRetain(string));
    };
    std::thread a(churn), b(churn);
    a.join();
    b.join();
    EXPECT_EQ(CFGetRetainCount(string), 1);
    CFRelease(string);
}

using RuntimeMisuseDeathTest = ::testing::Test;

TEST_F(RuntimeMisuseDeathTest, StopsWithAMessageNamingTheCall)
{
    EXPECT_DEATH(CFRelease(nullptr), "CFRelease: called with NULL");
    EXPECT_DEATH(CFRetain(nullptr), "CFRetain: called with NULL");
    EXPECT_DEATH(CFGetTypeID(nullptr), "CFGetTypeID: called with NULL");
    EXPECT_DEATH(
        {
            CFStringRef string = Make("twice");
            CFRelease(string);
            CFRelease(string);
        },
        "CFRelease: CFString 0x[0-9a-f]+ was released more often than it was retained");
    EXPECT_DEATH(
        {
            CFStringRef string = Make("gone");
            CFRelease(string);
            CFRetain(string);
        },
        "CFRetain: object 0x[0-9a-f]+ was used after it had been deallocated");
    static const int notAnObject[16] = {};
    EXPECT_DEATH(CFRetain(notAnObject), "CFRetain: 0x[0-9a-f]+ is not an object of the runtime");
    EXPECT_DEATH(CFStringGetLength(reinterpret_cast<CFStringRef>(kCFBooleanTrue)),
                 "CFStringGetLength: expected a CFString, got a CFBoolean");
    EXPECT_DEATH(CFStringAppendCString(const_cast<CFMutableStringRef>(CFSTR("fixed")), "x", kCFStringEncodingUTF8),
                 "CFStringAppendCString: the string 0x[0-9a-f]+ is not mutable");
}

// An allocator that counts what it hands out and can be told to refuse.
struct CountingAllocator {
    int allocations = 0;
    int frees = 0;
    bool refuse = false;

    static void* Allocate(CFIndex inSize, CFOptionFlags, void* inInfo)
    {
        auto* self = static_cast<CountingAllocator*>(inInfo);
        if (self->refuse)
            return nullptr;
        ++self->allocations;
        return std::malloc(size_t(inSize));
    }
    static void Deallocate(void* inPtr, void* inInfo)
    {
        ++static_cast<CountingAllocator*>(inInfo)->frees;
        std::free(inPtr);
    }
    CFAllocatorRef Make()
    {
        CFAllocatorContext context{0, this, nullptr, nullptr, nullptr, Allocate, nullptr, Deallocate, nullptr};
        return CFAllocatorCreate(nullptr, &context);
    }
};

TEST(Allocators, ObjectsAreCarvedFromTheirAllocatorAndKeepItAlive)
{
    CountingAllocator counting;
    CFAllocatorRef allocator = counting.Make();
    CFStringRef string = CFStringCreateWithCString(allocator, "custom", kCFStringEncodingUTF8);
    ASSERT_NE(string, nullptr);
    EXPECT_EQ(CFGetAllocator(string), allocator);
    EXPECT_EQ(CFGetRetainCount(allocator), 2);  // ours and the string's
    CFRelease(allocator);
    EXPECT_EQ(counting.allocations, 1);
    CFIndex liveBefore = _CFRuntimeGetLiveObjectCount();
    CFRelease(string);
    // The string's memory goes back at once, and the allocator with it.
    EXPECT_EQ(counting.frees, 1);
    EXPECT_EQ(_CFRuntimeGetLiveObjectCount(), liveBefore - 2);
}

TEST(Allocators, TheDefaultIsTheSystemsTheNullAllocatorRefusesAndCreateAnswersNull)
{
    EXPECT_EQ(CFAllocatorGetDefault(), kCFAllocatorSystemDefault);
    Owned string(Make("default"));
    EXPECT_EQ(CFGetAllocator(string), kCFAllocatorSystemDefault);
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorNull, "nothing", kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFAllocatorAllocate(kCFAllocatorNull, 16, 0), nullptr);
    CountingAllocator counting;
    counting.refuse = true;
    Owned allocator(counting.Make());
    EXPECT_EQ(CFStringCreateMutable(allocator, 0), nullptr);
    void* memory = CFAllocatorAllocate(kCFAllocatorMalloc, 32, 0);
    ASSERT_NE(memory, nullptr);
    memory = CFAllocatorReallocate(kCFAllocatorMalloc, memory, 64, 0);
    ASSERT_NE(memory, nullptr);
    CFAllocatorDeallocate(kCFAllocatorMalloc, memory);
}

TEST(TypeIdentity, EachTypeHasItsOwnIdentifierAndName)
{
    const std::pair<CFTypeID, const char*> types[] = {
        {CFStringGetTypeID(), "CFString"},
        {CFArrayGetTypeID(), "CFArray"},
        {CFDictionaryGetTypeID(), "CFDictionary"},
        {CFSetGetTypeID(), "CFSet"},
        {CFNumberGetTypeID(), "CFNumber"},
        {CFBooleanGetTypeID(), "CFBoolean"},
        {CFDataGetTypeID(), "CFData"},
        {CFUUIDGetTypeID(), "CFUUID"},
        {CFNullGetTypeID(), "CFNull"},
        {CFAllocatorGetTypeID(), "CFAllocator"},
    };
    for (auto [id, name] : types) {
        CFStringRef description = CFCopyTypeIDDescription(id);
        ASSERT_NE(description, nullptr) << name;
        EXPECT_EQ(cf::UTF8(description), name);
        CFRelease(description);
        for (auto [other, otherName] : types)
            EXPECT_TRUE(id != other || name == otherName);
    }
    EXPECT_EQ(CFCopyTypeIDDescription(9999), nullptr);
    EXPECT_EQ(CFGetTypeID(kCFNull), CFNullGetTypeID());
    EXPECT_EQ(CFGetTypeID(kCFAllocatorNull), CFAllocatorGetTypeID());
}

TEST(TypeIdentity, EqualityAndHashNeverCrossTypesDescriptionsNameTheType)
{
    Owned one(Make("1"));
    int value = 1;
    Owned number(CFNumberCreate(nullptr, kCFNumberIntType, &value));
    EXPECT_FALSE(CFEqual(one, number));
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, number));
    EXPECT_FALSE(CFEqual(kCFNull, kCFBooleanFalse));
    EXPECT_TRUE(CFEqual(kCFNull, kCFNull));
    Owned same(CFStringCreateWithCString(nullptr, "1", kCFStringEncodingASCII));
    EXPECT_TRUE(CFEqual(one, same));
    EXPECT_EQ(CFHash(one), CFHash(same));
    Owned description(CFCopyDescription(one));  // a string describes itself
    EXPECT_TRUE(CFEqual(description, one));
    Owned nullDescription(CFCopyDescription(kCFNull));
    EXPECT_EQ(cf::UTF8(nullDescription).rfind("<CFNull 0x", 0), 0u);
}

}  // namespace
