// Temporary memory: how much the system could still give, read from the kernel's figures.
#include <Carbon/MacMemory.h>

#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {

constexpr UInt64 kLargestSize = UInt64(std::numeric_limits<Size>::max());

Size Clamped(UInt64 inBytes) { return Size(std::min(inBytes, kLargestSize)); }

// MemAvailable counts the page cache the kernel can drop; the older sysinfo figure only
// what is unused, so it is the fallback for kernels without the former.
UInt64 AvailableBytes()
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
    struct sysinfo info {};
    return ::sysinfo(&info) == 0 ? UInt64(info.freeram) * info.mem_unit : 0;
}

UInt64 MappedBytes()
{
    unsigned long long pages = 0;
    if (std::FILE* statm = std::fopen("/proc/self/statm", "re")) {
        if (std::fscanf(statm, "%llu", &pages) != 1)
            pages = 0;
        std::fclose(statm);
    }
    return UInt64(pages) * UInt64(::sysconf(_SC_PAGESIZE));
}

}  // namespace

Size TempFreeMem() { return Clamped(AvailableBytes()); }

Size TempMaxMem(Size* outGrow)
{
    if (outGrow)
        *outGrow = 0;
    rlimit limit{};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return Clamped(kLargestSize);
    UInt64 used = MappedBytes();
    return Clamped(limit.rlim_cur > used ? UInt64(limit.rlim_cur) - used : 0);
}
