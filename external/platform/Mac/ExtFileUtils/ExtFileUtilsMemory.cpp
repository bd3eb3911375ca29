// Temporary buffers for copying: as large as asked, or as large as memory allows.
#include "ExtFileUtilsInternal.h"

#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {

constexpr ByteCount kGranule = 4096;
constexpr UInt64 kSpareBytes = 32768;
constexpr UInt64 kUnlimited = std::numeric_limits<UInt64>::max();

ByteCount RoundDown(UInt64 inSize) { return ByteCount(inSize - inSize % kGranule); }

// What the kernel could give without taking it from others: MemAvailable counts the page
// cache it can drop; the older sysinfo figure only what is unused.
UInt64 FreeMemory()
{
    if (std::FILE* meminfo = std::fopen("/proc/meminfo", "re")) {
        char line[128];
        unsigned long long kilobytes = 0;
        bool found = false;
        while (!found && std::fgets(line, sizeof line, meminfo))
            found = std::sscanf(line, "MemAvailable: %llu kB", &kilobytes) == 1;
        std::fclose(meminfo);
        if (found)
            return UInt64(kilobytes) * 1024;
    }
    struct sysinfo info{};
    return ::sysinfo(&info) == 0 ? UInt64(info.freeram) * info.mem_unit : 0;
}

// The largest block the process may still map: the room left under its address-space
// limit, when it has one.
UInt64 LargestFreeBlock()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return kUnlimited;
    unsigned long long pages = 0;
    if (std::FILE* statm = std::fopen("/proc/self/statm", "re")) {
        if (std::fscanf(statm, "%llu", &pages) != 1)
            pages = 0;
        std::fclose(statm);
    }
    UInt64 used = UInt64(pages) * UInt64(::sysconf(_SC_PAGESIZE));
    return limit.rlim_cur > used ? UInt64(limit.rlim_cur) - used : 0;
}

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
    UInt64 freeMemory = FreeMemory(), largest = LargestFreeBlock();
    ByteCount size = ExtFileUtils::RoundedTempBufferSize(inRequestedSize);
    Ptr buffer = Allocate(size, freeMemory, largest);
    if (buffer == nullptr && inRequestedSize > kGranule) {
        size = ExtFileUtils::FallbackTempBufferSize(freeMemory, largest);
        buffer = Allocate(size, freeMemory, largest);
    }
    *outActualSize = buffer ? size : 0;
    return buffer;
}
