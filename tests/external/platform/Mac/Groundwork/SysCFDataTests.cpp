#include "ExpectThrows.h"
#include "RefusingAllocator.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFData.h>

#include <string_view>

namespace {

const UInt8 kBytes[] = {1, 2, 3, 4};

std::string_view Bytes(const Gx::CFData& inData)
{
    return {reinterpret_cast<const char*>(inData.GetBytePtr()), std::size_t(inData.GetLength())};
}

TEST(SysCFData, CreatedBlocksAreAdoptedAndANullResultThrows)
{
    Gx::CFData growing(0);
    CFDataRef created = growing.GetRefValue();
    growing.AppendBytes(kBytes, 2);
    growing.IncreaseLength(1);
    EXPECT_TRUE(growing.HasSameRef(created)) << "a block made mutable is changed in place";
    EXPECT_EQ(growing.GetRetainCount(), 1);
    EXPECT_EQ(Bytes(growing), std::string_view("\1\2\0", 3));

    Gx::CFData fixed(kBytes, 4);
    created = fixed.GetRefValue();
    EXPECT_EQ(fixed.GetRetainCount(), 1);
    fixed.ReplaceBytes(CFRangeMake(0, 1), kBytes + 3, 1);
    EXPECT_FALSE(fixed.HasSameRef(created)) << "a block made immutable is copied first";
    EXPECT_EQ(Bytes(fixed), "\4\2\3\4");

    ExpectThrows<Gx::RuntimeError>([] { Gx::CFData(0, kCFAllocatorNull); }, FourCC("cfcr"));
    ExpectThrows<Gx::RuntimeError>([] { Gx::CFData(kBytes, 4, kCFAllocatorNull); }, FourCC("cfcr"));
}

TEST(SysCFData, CopiesAreIndependentAndAFailedCopyChangesNothing)
{
    Gx::CFData first(0);
    first.AppendBytes(kBytes, 4);
    Gx::CFData second(first);
    second.GetMutableBytePtr()[0] = 9;
    second.SetLength(2);
    EXPECT_EQ(Bytes(first), "\1\2\3\4");
    EXPECT_EQ(Bytes(second), "\x09\2");

    RefusingAllocator allocator;
    Gx::CFData data(kBytes, 4, allocator.Get());
    allocator.Refuse();
    ExpectThrows<Gx::RuntimeError>([&] { data.AppendBytes(kBytes, 1); }, FourCC("cfcr"));
    EXPECT_EQ(Bytes(data), "\1\2\3\4");
}

TEST(SysCFDataDeathTest, RangesGoToThePlatformUnchecked)
{
    Gx::CFData data(kBytes, 4);
    UInt8 tail[2] = {};
    data.GetDataBytes(CFRangeMake(2, 2), tail);
    EXPECT_EQ(tail[1], 4);
    // The wrapper throws nothing here (an escaping exception would not name the call): the
    // platform itself stops the process.
    EXPECT_DEATH(data.DeleteBytes(CFRangeMake(2, 5)), "CFDataDeleteBytes");
}

}  // namespace
