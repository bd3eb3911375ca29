// One live process as /proc describes it, and the serial number that names it.
#pragma once

#include <Carbon/Processes.h>

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace carbon {

struct ProcessStat {
    pid_t pid = 0;
    pid_t parent = 0;
    pid_t processGroup = 0;
    UInt64 userTicks = 0;  // clock ticks (sysconf(_SC_CLK_TCK)) of processor time
    UInt64 systemTicks = 0;
    UInt64 startTicks = 0;  // clock ticks after boot at which the process started
    UInt64 residentPages = 0;
    std::string command;  // the kernel's short name, at most 15 bytes
};

// Nothing for a process that does not exist, has ended (a zombie waiting for its parent
// counts as ended) or is a kernel thread, which is no application.
std::optional<ProcessStat> ReadProcessStat(pid_t inPID);

// The same, answered from what this thread read of the process in the last few milliseconds
// when it read it at all. Only for describing another process (a launcher): whether a
// process still exists, and a check made before acting on it, must be read afresh.
std::optional<ProcessStat> RecentProcessStat(pid_t inPID);

ProcessSerialNumber SerialNumberOf(const ProcessStat& inStat);

// The live process a serial number names, the constants kCurrentProcess and kSystemProcess
// included; nothing when it has ended or never existed.
std::optional<ProcessStat> ResolveProcess(const ProcessSerialNumber& inPSN);

// The ids of all processes, ascending.
std::vector<pid_t> ListProcessIDs();

// Ticks of the platform's clock (1/60 s) from ticks of the kernel's clock.
UInt32 ToMacTicks(UInt64 inClockTicks);

}  // namespace carbon
