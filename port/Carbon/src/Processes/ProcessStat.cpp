// Reading /proc/<pid>/stat.
#include "ProcessStat.h"

#include <PortSupport/UniqueDescriptor.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <limits>
#include <cstdio>
#include <memory>
#include <string_view>

namespace carbon {

namespace {

constexpr unsigned long kKernelThreadFlag = 0x00200000;  // PF_KTHREAD

// Fields of the stat line counted from the state, the first one after the command name.
enum StatField : std::size_t {
    kState = 0,
    kParent = 1,
    kProcessGroup = 2,
    kFlags = 6,
    kUserTime = 11,
    kSystemTime = 12,
    kStartTime = 19,
    kResidentPages = 21,
    kFieldCount
};

std::optional<std::string> ReadStatLine(pid_t inPID)
{
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%d/stat", int(inPID));
    port::UniqueDescriptor fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd)
        return std::nullopt;
    std::array<char, 4096> buffer;
    ssize_t length = ::read(fd.Get(), buffer.data(), buffer.size());
    if (length <= 0)
        return std::nullopt;
    return std::string(buffer.data(), std::size_t(length));
}

template <class T>
bool ParseNumber(std::string_view inText, T& outValue)
{
    auto [end, error] = std::from_chars(inText.data(), inText.data() + inText.size(), outValue);
    return error == std::errc() && end == inText.data() + inText.size();
}

// Splits the fields after the command name, which itself may hold spaces and parentheses:
// it ends at the last ')' of the line.
bool SplitFields(std::string_view inTail, std::array<std::string_view, kFieldCount>& outFields)
{
    std::size_t index = 0;
    while (index < kFieldCount && !inTail.empty()) {
        std::size_t space = inTail.find(' ');
        outFields[index++] = inTail.substr(0, space);
        inTail = space == std::string_view::npos ? std::string_view() : inTail.substr(space + 1);
    }
    return index == kFieldCount;
}

std::optional<ProcessStat> ParseStatLine(std::string_view inLine)
{
    std::size_t open = inLine.find('(');
    std::size_t close = inLine.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open || close + 2 > inLine.size())
        return std::nullopt;
    std::array<std::string_view, kFieldCount> fields;
    if (!SplitFields(inLine.substr(close + 2), fields))
        return std::nullopt;

    ProcessStat stat;
    unsigned long flags = 0;
    bool parsed = ParseNumber(inLine.substr(0, open - 1), stat.pid) && ParseNumber(fields[kParent], stat.parent) &&
                  ParseNumber(fields[kProcessGroup], stat.processGroup) && ParseNumber(fields[kFlags], flags) &&
                  ParseNumber(fields[kUserTime], stat.userTicks) &&
                  ParseNumber(fields[kSystemTime], stat.systemTicks) &&
                  ParseNumber(fields[kStartTime], stat.startTicks) &&
                  ParseNumber(fields[kResidentPages], stat.residentPages);
    if (!parsed || (flags & kKernelThreadFlag) != 0)
        return std::nullopt;
    char state = fields[kState].empty() ? '?' : fields[kState][0];
    if (state == 'Z' || state == 'X')
        return std::nullopt;
    stat.command = std::string(inLine.substr(open + 1, close - open - 1));
    return stat;
}

// The last few processes this thread read, each for a few milliseconds. The children of one
// parent all name it as their launcher, so a walk over hundreds of them would otherwise read
// that parent once for each.
class RecentStats {
public:
    const ProcessStat* Find(pid_t inPID) const
    {
        const Clock::time_point now = Clock::now();
        for (const Entry& entry : mEntries)
            if (entry.stat.pid == inPID && now - entry.taken < kFreshness)
                return &entry.stat;
        return nullptr;
    }

    void Remember(const ProcessStat& inStat)
    {
        auto same = std::find_if(mEntries.begin(), mEntries.end(),
                                 [&](const Entry& entry) { return entry.stat.pid == inStat.pid; });
        Entry& slot = same != mEntries.end() ? *same : mEntries[mNext++ % mEntries.size()];
        slot = Entry{inStat, Clock::now()};
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr auto kFreshness = std::chrono::milliseconds(10);

    struct Entry {
        ProcessStat stat;
        Clock::time_point taken;
    };
    std::array<Entry, 4> mEntries{};
    std::size_t mNext = 0;
};

thread_local RecentStats tRecent;

}  // namespace

std::optional<ProcessStat> ReadProcessStat(pid_t inPID)
{
    if (inPID <= 0)
        return std::nullopt;
    std::optional<std::string> line = ReadStatLine(inPID);
    std::optional<ProcessStat> stat = line ? ParseStatLine(*line) : std::nullopt;
    if (stat)
        tRecent.Remember(*stat);
    return stat;
}

std::optional<ProcessStat> RecentProcessStat(pid_t inPID)
{
    if (const ProcessStat* known = tRecent.Find(inPID))
        return *known;
    return ReadProcessStat(inPID);
}

ProcessSerialNumber SerialNumberOf(const ProcessStat& inStat)
{
    return ProcessSerialNumber{UInt32(inStat.pid), UInt32(inStat.startTicks)};
}

std::optional<ProcessStat> ResolveProcess(const ProcessSerialNumber& inPSN)
{
    if (inPSN.highLongOfPSN == 0) {
        if (inPSN.lowLongOfPSN == kCurrentProcess)
            return ReadProcessStat(::getpid());
        if (inPSN.lowLongOfPSN == kSystemProcess)
            return ReadProcessStat(1);
        return std::nullopt;
    }
    if (inPSN.highLongOfPSN > UInt32(std::numeric_limits<pid_t>::max()))
        return std::nullopt;
    std::optional<ProcessStat> stat = ReadProcessStat(pid_t(inPSN.highLongOfPSN));
    if (stat && UInt32(stat->startTicks) != inPSN.lowLongOfPSN)
        return std::nullopt;
    return stat;
}

std::vector<pid_t> ListProcessIDs()
{
    std::vector<pid_t> pids;
    std::unique_ptr<DIR, int (*)(DIR*)> proc(::opendir("/proc"), ::closedir);
    if (!proc)
        return pids;
    while (const dirent* entry = ::readdir(proc.get())) {
        pid_t pid = 0;
        if (ParseNumber(std::string_view(entry->d_name), pid) && pid > 0)
            pids.push_back(pid);
    }
    std::sort(pids.begin(), pids.end());
    return pids;
}

UInt32 ToMacTicks(UInt64 inClockTicks)
{
    static const UInt64 sClockTicksPerSecond = UInt64(std::max(1L, ::sysconf(_SC_CLK_TCK)));
    return UInt32(inClockTicks * 60 / sClockTicksPerSecond);
}

}  // namespace carbon
