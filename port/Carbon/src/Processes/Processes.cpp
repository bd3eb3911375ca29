// The Process Manager over /proc.
#include <Carbon/MacErrors.h>
#include <Carbon/Files.h>
#include <Carbon/Processes.h>

#include "ProcessApplication.h"
#include "ProcessStat.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>

using namespace carbon;

namespace {

constexpr UInt32 kSmallestInfoLength = 60;  // the record as callers of the 32-bit platform size it
constexpr std::size_t kLongestProcessName = 31;

bool IsNoProcess(const ProcessSerialNumber& inPSN)
{
    return inPSN.highLongOfPSN == 0 && inPSN.lowLongOfPSN == kNoProcess;
}

// A walk over the process list reads /proc once, not once per step: the ids stay cached for
// the calling thread for a short while, and a walk from kNoProcess, or from a process the
// cache does not know, reads them again.
class ProcessWalk {
public:
    std::optional<ProcessStat> Next(pid_t inAfter, bool inRestart)
    {
        bool known = std::binary_search(mPIDs.begin(), mPIDs.end(), inAfter);
        if (inRestart || !known || Clock::now() - mTaken > kFreshness)
            Refresh();
        for (auto next = std::upper_bound(mPIDs.begin(), mPIDs.end(), inAfter); next != mPIDs.end(); ++next)
            if (std::optional<ProcessStat> stat = ReadProcessStat(*next))
                return stat;
        mPIDs.clear();
        return std::nullopt;
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr auto kFreshness = std::chrono::seconds(1);

    void Refresh()
    {
        mPIDs = ListProcessIDs();
        mTaken = Clock::now();
    }

    std::vector<pid_t> mPIDs;
    Clock::time_point mTaken;
};

// processName is a Str31; a longer name is cut at a character boundary of its UTF-8 text.
void StorePascalName(std::string_view inName, StringPtr outName)
{
    std::size_t length = std::min(inName.size(), kLongestProcessName);
    while (length > 0 && length < inName.size() && (UInt8(inName[length]) & 0xC0) == 0x80)
        --length;
    outName[0] = UInt8(length);
    std::memcpy(outName + 1, inName.data(), length);
}

std::string NameOf(const ProcessStat& inStat, const std::optional<std::string>& inExecutable)
{
    return inExecutable ? ApplicationName(*inExecutable) : inStat.command;
}

ProcessSerialNumber LauncherOf(const ProcessStat& inStat)
{
    std::optional<ProcessStat> parent = RecentProcessStat(inStat.parent);
    return parent ? SerialNumberOf(*parent) : ProcessSerialNumber{0, kNoProcess};
}

UInt32 ResidentBytes(const ProcessStat& inStat)
{
    static const UInt64 sPageSize = UInt64(::sysconf(_SC_PAGESIZE));
    return UInt32(std::min<UInt64>(inStat.residentPages * sPageSize, std::numeric_limits<UInt32>::max()));
}

void FillInformation(const ProcessStat& inStat, ProcessInfoRec& ioInfo)
{
    std::optional<std::string> executable = ProcessApplicationPath(inStat.pid);
    std::optional<std::string_view> bundle = executable ? EnclosingBundlePath(*executable) : std::nullopt;
    BundleCodes codes = bundle ? ReadBundleCodes(*bundle) : BundleCodes{FourCC("APPL"), FourCC("????")};

    if (ioInfo.processName)
        StorePascalName(NameOf(inStat, executable), ioInfo.processName);
    ioInfo.processNumber = SerialNumberOf(inStat);
    ioInfo.processType = codes.type;
    ioInfo.processSignature = codes.signature;
    // Every process here can run in the background and can be asked to quit.
    ioInfo.processMode = modeCanBackground | mode32BitCompatible | modeHighLevelEventAware;
    ioInfo.processLocation = nullptr;
    ioInfo.processSize = ResidentBytes(inStat);
    ioInfo.processFreeMem = 0;
    ioInfo.processLauncher = LauncherOf(inStat);
    ioInfo.processLaunchDate = ToMacTicks(inStat.startTicks);
    ioInfo.processActiveTime = ToMacTicks(inStat.userTicks + inStat.systemTicks);
    // The application file is the executable the process runs, bundled or not; the bundle
    // around it is GetProcessBundleLocation's answer. A program whose file is gone leaves the
    // reference as the caller set it.
    if (ioInfo.processAppRef && executable)
        FSPathMakeRef(reinterpret_cast<const UInt8*>(executable->c_str()), ioInfo.processAppRef, nullptr);
}

// kCurrentProcess and kSystemProcess as the serial numbers of their processes, so that
// they compare equal to those.
ProcessSerialNumber Canonical(const ProcessSerialNumber& inPSN)
{
    if (inPSN.highLongOfPSN != 0 || (inPSN.lowLongOfPSN != kCurrentProcess && inPSN.lowLongOfPSN != kSystemProcess))
        return inPSN;
    std::optional<ProcessStat> stat = ResolveProcess(inPSN);
    return stat ? SerialNumberOf(*stat) : inPSN;
}

}  // namespace

OSErr GetCurrentProcess(ProcessSerialNumber* outPSN)
{
    if (outPSN == nullptr)
        return paramErr;
    std::optional<ProcessStat> stat = ReadProcessStat(::getpid());
    if (!stat)
        return procNotFound;
    *outPSN = SerialNumberOf(*stat);
    return noErr;
}

OSErr GetNextProcess(ProcessSerialNumber* ioPSN)
{
    if (ioPSN == nullptr)
        return paramErr;
    bool restart = IsNoProcess(*ioPSN);
    pid_t after = 0;
    if (ioPSN->highLongOfPSN != 0)
        after = pid_t(std::min<UInt32>(ioPSN->highLongOfPSN, UInt32(std::numeric_limits<pid_t>::max())));
    else if (ioPSN->lowLongOfPSN == kCurrentProcess)
        after = ::getpid();
    else if (ioPSN->lowLongOfPSN == kSystemProcess)
        after = 1;
    else if (!restart)
        return paramErr;

    thread_local ProcessWalk tWalk;
    std::optional<ProcessStat> next = tWalk.Next(after, restart);
    if (!next) {
        *ioPSN = ProcessSerialNumber{0, kNoProcess};
        return procNotFound;
    }
    *ioPSN = SerialNumberOf(*next);
    return noErr;
}

OSErr GetProcessInformation(const ProcessSerialNumber* inPSN, ProcessInfoRec* ioInfo)
{
    if (inPSN == nullptr || ioInfo == nullptr || ioInfo->processInfoLength < kSmallestInfoLength)
        return paramErr;
    std::optional<ProcessStat> stat = ResolveProcess(*inPSN);
    if (!stat)
        return procNotFound;
    FillInformation(*stat, *ioInfo);
    return noErr;
}

OSErr SameProcess(const ProcessSerialNumber* inPSN1, const ProcessSerialNumber* inPSN2, Boolean* outResult)
{
    if (inPSN1 == nullptr || inPSN2 == nullptr || outResult == nullptr)
        return paramErr;
    ProcessSerialNumber first = Canonical(*inPSN1);
    ProcessSerialNumber second = Canonical(*inPSN2);
    *outResult = first.highLongOfPSN == second.highLongOfPSN && first.lowLongOfPSN == second.lowLongOfPSN;
    return noErr;
}

OSStatus GetProcessPID(const ProcessSerialNumber* inPSN, pid_t* outPID)
{
    if (inPSN == nullptr || outPID == nullptr)
        return paramErr;
    std::optional<ProcessStat> stat = ResolveProcess(*inPSN);
    if (!stat)
        return procNotFound;
    *outPID = stat->pid;
    return noErr;
}

OSStatus GetProcessForPID(pid_t inPID, ProcessSerialNumber* outPSN)
{
    if (outPSN == nullptr)
        return paramErr;
    std::optional<ProcessStat> stat = ReadProcessStat(inPID);
    if (!stat)
        return procNotFound;
    *outPSN = SerialNumberOf(*stat);
    return noErr;
}

OSStatus CopyProcessName(const ProcessSerialNumber* inPSN, CFStringRef* outName)
{
    if (inPSN == nullptr || outName == nullptr)
        return paramErr;
    std::optional<ProcessStat> stat = ResolveProcess(*inPSN);
    if (!stat)
        return procNotFound;
    std::string name = NameOf(*stat, ProcessApplicationPath(stat->pid));
    auto bytes = reinterpret_cast<const UInt8*>(name.data());
    CFStringRef string = CFStringCreateWithBytes(nullptr, bytes, CFIndex(name.size()), kCFStringEncodingUTF8, false);
    // A file name need not be UTF-8; Latin 1 takes any bytes.
    if (string == nullptr)
        string = CFStringCreateWithBytes(nullptr, bytes, CFIndex(name.size()), kCFStringEncodingISOLatin1, false);
    if (string == nullptr)
        return memFullErr;
    *outName = string;
    return noErr;
}
