// Pointer and handle blocks: sizes, contents kept across resizing, locking, MemError.
#include <Carbon/MacErrors.h>
#include <Carbon/MacMemory.h>

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <thread>
#include <vector>

namespace {

std::vector<char> Pattern(std::size_t inSize)
{
    std::vector<char> bytes(inSize);
    std::iota(bytes.begin(), bytes.end(), char(1));
    return bytes;
}

TEST(MemoryBlocks, KnowTheirSizeClearAndKeepTheContentsWhenResized)
{
    Ptr empty = NewPtr(0);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(GetPtrSize(empty), 0);
    DisposePtr(empty);

    Ptr cleared = NewPtrClear(300);
    ASSERT_NE(cleared, nullptr);
    EXPECT_EQ(MemError(), noErr);
    EXPECT_EQ(GetPtrSize(cleared), 300);
    EXPECT_EQ(std::count(cleared, cleared + 300, 0), 300);
    DisposePtr(cleared);
    EXPECT_EQ(MemError(), noErr);

    EXPECT_EQ(NewPtr(-1), nullptr);
    EXPECT_EQ(MemError(), memFullErr);

    const std::vector<char> pattern = Pattern(64);
    Handle handle = NewHandle(64);
    ASSERT_NE(handle, nullptr);
    std::memcpy(*handle, pattern.data(), pattern.size());

    SetHandleSize(handle, 1 << 20);  // large enough that the block has to move
    EXPECT_EQ(MemError(), noErr);
    EXPECT_EQ(GetHandleSize(handle), 1 << 20);
    EXPECT_EQ(std::memcmp(*handle, pattern.data(), pattern.size()), 0);

    SetHandleSize(handle, 10);
    EXPECT_EQ(GetHandleSize(handle), 10);
    EXPECT_EQ(std::memcmp(*handle, pattern.data(), 10), 0);

    SetHandleSize(handle, -5);
    EXPECT_EQ(MemError(), memFullErr);
    EXPECT_EQ(GetHandleSize(handle), 10);
    EXPECT_EQ(std::memcmp(*handle, pattern.data(), 10), 0);
    DisposeHandle(handle);
    EXPECT_EQ(MemError(), noErr);

    Handle emptyHandle = NewHandleClear(0);
    ASSERT_NE(emptyHandle, nullptr);
    EXPECT_NE(*emptyHandle, nullptr);
    EXPECT_EQ(GetHandleSize(emptyHandle), 0);
    DisposeHandle(emptyHandle);
    EXPECT_EQ(NewHandle(-1), nullptr);
    EXPECT_EQ(MemError(), memFullErr);
}

TEST(MemoryHandles, ALockedHandleNeverMoves)
{
    const std::vector<char> pattern = Pattern(32);
    Handle handle = NewHandle(32);
    std::memcpy(*handle, pattern.data(), pattern.size());
    HLock(handle);
    EXPECT_EQ(HGetState(handle) & kHandleLockedMask, kHandleLockedMask);
    Ptr block = *handle;

    SetHandleSize(handle, 1 << 20);
    EXPECT_EQ(MemError(), memFullErr);
    EXPECT_EQ(*handle, block);
    EXPECT_EQ(GetHandleSize(handle), 32);
    SetHandleSize(handle, 16);
    EXPECT_EQ(MemError(), noErr);
    EXPECT_EQ(*handle, block);

    HUnlock(handle);
    EXPECT_EQ(HGetState(handle) & kHandleLockedMask, 0);
    SetHandleSize(handle, 1 << 20);
    EXPECT_EQ(MemError(), noErr);
    EXPECT_EQ(std::memcmp(*handle, pattern.data(), 16), 0);

    HSetState(handle, kHandleLockedMask | kHandlePurgeableMask);
    EXPECT_EQ(HGetState(handle), SInt8(kHandleLockedMask | kHandlePurgeableMask));
    DisposeHandle(handle);
}

TEST(MemoryHandles, ForeignOrNilHandlesAreRefusedInTheCallersStatus)
{
    EXPECT_EQ(GetHandleSize(nullptr), 0);
    EXPECT_EQ(MemError(), nilHandleErr);

    // Shaped like a master pointer, but not one of ours.
    struct {
        Ptr block;
        Size size;
        UInt32 magic;
        SInt8 flags;
    } impostor{nullptr, 99, 0, 0};
    Handle fake = &impostor.block;
    EXPECT_EQ(GetHandleSize(fake), 0);
    EXPECT_EQ(MemError(), memWZErr);
    SetHandleSize(fake, 10);
    EXPECT_EQ(MemError(), memWZErr);
    EXPECT_EQ(impostor.size, 99);

    // MemError belongs to the thread that made the call.
    OSErr otherThread = -1;
    std::thread([&] { otherThread = MemError(); }).join();
    EXPECT_EQ(otherThread, noErr);
    EXPECT_EQ(MemError(), memWZErr);
}

}  // namespace
