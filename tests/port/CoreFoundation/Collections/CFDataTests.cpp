// Data: mutation, bytes handed over without a copy, equality, misuse.
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>
#include <PortSupport/Owned.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using port::Owned;

const UInt8* Bytes(const char* inText) { return reinterpret_cast<const UInt8*>(inText); }

std::string Contents(CFDataRef inData)
{
    return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(inData)), size_t(CFDataGetLength(inData)));
}

TEST(DataMutation, EditsKeepTheRightBytes)
{
    Owned<CFMutableDataRef> data(CFDataCreateMutable(nullptr, 0));
    CFDataAppendBytes(data.Get(), Bytes("hello"), 5);
    CFDataSetLength(data.Get(), 8);
    EXPECT_EQ(Contents(data.Get()), std::string("hello\0\0\0", 8));
    CFDataSetLength(data.Get(), 4);
    CFDataIncreaseLength(data.Get(), 2);
    EXPECT_EQ(Contents(data.Get()), std::string("hell\0\0", 6));  // growth after shrinking is zeroed too
    CFDataReplaceBytes(data.Get(), CFRangeMake(1, 3), Bytes("ipp"), 3);
    CFDataReplaceBytes(data.Get(), CFRangeMake(4, 2), Bytes("o!"), 2);
    EXPECT_EQ(Contents(data.Get()), "hippo!");
    CFDataReplaceBytes(data.Get(), CFRangeMake(0, 1), Bytes("wh"), 2);
    CFDataDeleteBytes(data.Get(), CFRangeMake(2, 3));
    EXPECT_EQ(Contents(data.Get()), "who!");
    // Bytes taken from the data itself stay intact while it changes.
    CFDataReplaceBytes(data.Get(), CFRangeMake(1, 0), CFDataGetBytePtr(data.Get()), 4);
    EXPECT_EQ(Contents(data.Get()), "wwho!ho!");
    UInt8 middle[3];
    CFDataGetBytes(data.Get(), CFRangeMake(3, 3), middle);
    EXPECT_EQ(std::string(middle, middle + 3), "o!h");
    CFDataGetMutableBytePtr(data.Get())[0] = 'W';
    EXPECT_EQ(Contents(data.Get()), "Wwho!ho!");
}

TEST(DataEquality, CopiesAreEqualAndHashAlike)
{
    Owned<CFDataRef> data(CFDataCreate(nullptr, Bytes("abc"), 3));
    Owned<CFMutableDataRef> mutableCopy(CFDataCreateMutableCopy(nullptr, 0, data.Get()));
    Owned<CFDataRef> copy(CFDataCreateCopy(nullptr, mutableCopy.Get()));
    EXPECT_TRUE(CFEqual(data.Get(), mutableCopy.Get()));
    EXPECT_TRUE(CFEqual(data.Get(), copy.Get()));
    EXPECT_EQ(CFHash(data.Get()), CFHash(copy.Get()));
    CFDataAppendBytes(mutableCopy.Get(), Bytes("d"), 1);
    EXPECT_FALSE(CFEqual(data.Get(), mutableCopy.Get()));
    EXPECT_EQ(Contents(copy.Get()), "abc");  // a copy does not follow its source
    EXPECT_NE(cf::DescribeValue(data.Get()).find("length = 3, capacity = 3, bytes = 0x616263"), std::string::npos);
}

// An allocator that only counts what it is asked to free.
struct CountingDeallocator {
    int frees = 0;
    void* last = nullptr;
    CFAllocatorRef allocator = nullptr;

    CountingDeallocator()
    {
        CFAllocatorContext context{};
        context.info = this;
        context.allocate = [](CFIndex inSize, CFOptionFlags, void*) { return std::malloc(size_t(inSize)); };
        context.deallocate = [](void* inPtr, void* inInfo) {
            auto* self = static_cast<CountingDeallocator*>(inInfo);
            ++self->frees;
            self->last = inPtr;
        };
        allocator = CFAllocatorCreate(nullptr, &context);
    }
    ~CountingDeallocator() { CFRelease(allocator); }
};

TEST(DataNoCopy, TheBytesDeallocatorDecidesWhoFreesTheBytes)
{
    CountingDeallocator counter;
    UInt8 bytes[] = {1, 2, 3};
    CFDataRef data = CFDataCreateWithBytesNoCopy(nullptr, bytes, 3, counter.allocator);
    EXPECT_EQ(CFDataGetBytePtr(data), bytes);
    EXPECT_EQ(counter.frees, 0);
    CFRelease(data);
    EXPECT_EQ(counter.frees, 1);
    EXPECT_EQ(counter.last, bytes);

    CFDataRef kept = CFDataCreateWithBytesNoCopy(nullptr, bytes, 3, kCFAllocatorNull);
    CFRelease(kept);
    EXPECT_EQ(counter.frees, 1);
    EXPECT_EQ(bytes[2], 3);

    // The default deallocator frees malloc'd bytes; the sanitizer build reports them if not.
    auto* owned = static_cast<UInt8*>(std::malloc(2));
    owned[0] = 7;
    CFDataRef adopted = CFDataCreateWithBytesNoCopy(nullptr, owned, 2, nullptr);
    EXPECT_EQ(CFDataGetBytePtr(adopted)[0], 7);
    CFRelease(adopted);
}

TEST(DataMisuse, StopsTheProcessNamingTheCall)
{
    Owned<CFDataRef> immutable(CFDataCreate(nullptr, Bytes("abc"), 3));
    auto* forced = const_cast<CFMutableDataRef>(immutable.Get());
    EXPECT_DEATH(CFDataAppendBytes(forced, Bytes("d"), 1), "CFDataAppendBytes: the data .* is not mutable");
    EXPECT_DEATH(CFDataSetLength(forced, 0), "CFDataSetLength: the data");
    UInt8 buffer[4];
    EXPECT_DEATH(CFDataGetBytes(immutable.Get(), CFRangeMake(2, 2), buffer), "CFDataGetBytes: range \\{2, 2\\}");
    Owned<CFMutableDataRef> fixed(CFDataCreateMutable(nullptr, 4));
    CFDataAppendBytes(fixed.Get(), Bytes("abcd"), 4);
    EXPECT_DEATH(CFDataAppendBytes(fixed.Get(), Bytes("e"), 1),
                 "CFDataAppendBytes: length 5 exceeds the fixed capacity 4");
    EXPECT_DEATH(CFDataDeleteBytes(fixed.Get(), CFRangeMake(-1, 1)), "CFDataDeleteBytes: range");
    EXPECT_DEATH(CFDataCreateMutableCopy(nullptr, 2, immutable.Get()), "CFDataCreateMutableCopy");
}

}  // namespace
