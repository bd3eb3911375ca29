// Temporary buffers for copying: as large as asked, or as large as memory allows.
#include "ExtFileUtilsMemory.h"

#include <algorithm>
#include <limits>

namespace {

constexpr ByteCount kGranule = 4096;
constexpr UInt64 kSpareBytes = 32768;

ByteCount RoundDown(UInt64 inSize) { return ByteCount(inSize - inSize % kGranule); }

// A block that memory can hold. Linux promises more than it has, so the request is first
// measured against what is free rather than left to fail later, when the pages are touched.
Ptr Allocate(ByteCount inSize, UInt64 inFreeMemory, UInt64 inLargestBlock)
{
    if (inSize > std::min(inFreeMemory, inLargestBlock) || inSize > ByteCount(std::numeric_limits<Size>::max()))
        return nullptr;
    return NewPtr(Size(inSize));
}

}  // namespace

namespace ExtFileUtils {

ByteCount RoundedTempBufferSize(ByteCount inRequestedSize) { return std::max(RoundDown(inRequestedSize), kGranule); }

ByteCount FallbackTempBufferSize(UInt64 inFreeMemory, UInt64 inLargestBlock)
{
    UInt64 free = inFreeMemory > kSpareBytes ? inFreeMemory - kSpareBytes : 0;
    ByteCount size = RoundDown(std::min(free, inLargestBlock));
    return size == 0 ? kGranule : size;
}

}  // namespace ExtFileUtils

Ptr GetTempBuffer(ByteCount inRequestedSize, ByteCount* outActualSize)
{
    if (outActualSize == nullptr)
        return nullptr;
    UInt64 freeMemory = UInt64(TempFreeMem()), largest = UInt64(TempMaxMem(nullptr));
    ByteCount size = ExtFileUtils::RoundedTempBufferSize(inRequestedSize);
    Ptr buffer = Allocate(size, freeMemory, largest);
    if (buffer == nullptr && inRequestedSize > kGranule) {
        size = ExtFileUtils::FallbackTempBufferSize(freeMemory, largest);
        buffer = Allocate(size, freeMemory, largest);
    }
    *outActualSize = buffer ? size : 0;
    return buffer;
}
