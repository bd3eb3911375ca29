// Sending events: to this process straight to the handler, the quit event to another
// process as SIGTERM, other events over the receiver's socket.
#include "AEHandlers.h"
#include "AERemote.h"
#include "AEValue.h"
#include <PortSupport/UniqueDescriptor.h>
#include "Processes/ProcessStat.h"

#include <Carbon/Processes.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

using namespace carbon;
using namespace carbon::ae;

namespace {

constexpr AESendMode kReplyModeMask = 0x3;

struct Target {
    bool isSelf = false;
    ProcessSerialNumber psn{};
    pid_t pid = 0;
};

template <class T>
std::optional<T> ScalarOf(const Entry& inEntry)
{
    if (inEntry.value.kind != Kind::Data || inEntry.value.bytes.size() != sizeof(T))
        return std::nullopt;
    T value;
    std::memcpy(&value, inEntry.value.bytes.data(), sizeof value);
    return value;
}

OSErr TargetOfPID(pid_t inPID, Target& outTarget)
{
    if (inPID == ::getpid()) {
        outTarget.isSelf = true;
        return noErr;
    }
    std::optional<ProcessStat> stat = ReadProcessStat(inPID);
    if (!stat)
        return procNotFound;
    outTarget = Target{false, SerialNumberOf(*stat), inPID};
    return noErr;
}

// The process that the event's address names, if it runs.
OSErr ResolveTarget(const Value& inEvent, Target& outTarget)
{
    auto address = FindEntry(inEvent.attributes, keyAddressAttr);
    if (address == inEvent.attributes.end())
        return errAEUnknownAddressType;
    if (address->type == typeKernelProcessID) {
        std::optional<pid_t> pid = ScalarOf<pid_t>(*address);
        return pid ? TargetOfPID(*pid, outTarget) : OSErr(errAEUnknownAddressType);
    }
    if (address->type != typeProcessSerialNumber)
        return errAEUnknownAddressType;
    std::optional<ProcessSerialNumber> psn = ScalarOf<ProcessSerialNumber>(*address);
    if (!psn)
        return errAEUnknownAddressType;
    std::optional<ProcessStat> stat = ResolveProcess(*psn);
    if (!stat)
        return procNotFound;
    outTarget = Target{stat->pid == ::getpid(), SerialNumberOf(*stat), stat->pid};
    return noErr;
}

bool IsQuitEvent(const Value& inEvent)
{
    auto eventClass = FindEntry(inEvent.attributes, keyEventClassAttr);
    auto eventID = FindEntry(inEvent.attributes, keyEventIDAttr);
    return eventClass != inEvent.attributes.end() && eventID != inEvent.attributes.end() &&
           ScalarOf<AEEventClass>(*eventClass) == kCoreEventClass &&
           ScalarOf<AEEventID>(*eventID) == kAEQuitApplication;
}

// Hands the reply to the caller who asked to wait for it, and disposes of it otherwise.
void DeliverReply(AppleEvent& ioReply, AppleEvent* outReply, bool inWantsReply)
{
    if (inWantsReply && outReply)
        *outReply = ioReply;
    else
        AEDisposeDesc(&ioReply);
}

OSErr SendToSelf(const AppleEvent& inEvent, AppleEvent* outReply, bool inWantsReply)
{
    AppleEvent reply{typeNull, nullptr};
    OSErr status = Dispatch(inEvent, &reply);
    DeliverReply(reply, outReply, inWantsReply);
    return status;
}

OSErr SignalStatus(int inErrno)
{
    if (inErrno == ESRCH)
        return procNotFound;
    return inErrno == EPERM ? OSErr(errAEPrivilegeError) : OSErr(paramErr);
}

// SIGTERM to exactly the process the serial number names. The process descriptor is opened
// first and the start time checked after, so the descriptor refers to that very process
// even if its id has been reused since; the signal then cannot reach a newcomer.
OSErr SignalQuit(const Target& inTarget)
{
    port::UniqueDescriptor process(int(::syscall(SYS_pidfd_open, inTarget.pid, 0)));
    if (!process && errno != ENOSYS)
        return SignalStatus(errno);
    if (!ResolveProcess(inTarget.psn))
        return procNotFound;
    // Kernels before 5.3 have no process descriptors; there a plain kill() after the check
    // is the best available.
    long sent = process ? ::syscall(SYS_pidfd_send_signal, process.Get(), SIGTERM, nullptr, 0)
                        : ::kill(inTarget.pid, SIGTERM);
    return sent == 0 ? OSErr(noErr) : SignalStatus(errno);
}

OSErr SendQuit(const AppleEvent& inEvent, const Target& inTarget, AppleEvent* outReply, bool inWantsReply)
{
    if (OSErr status = SignalQuit(inTarget); status != noErr)
        return status;
    if (!inWantsReply || outReply == nullptr)
        return noErr;
    return MakeReply(inEvent, outReply);
}

}  // namespace

OSErr AESend(const AppleEvent* inEvent, AppleEvent* outReply, AESendMode inSendMode, AESendPriority,
             long inTimeOutInTicks, AEIdleUPP, AEFilterUPP)
{
    AEInitializeDesc(outReply);
    const Value* event = inEvent ? ValueOf(*inEvent) : nullptr;
    if (event == nullptr)
        return inEvent ? errAENotAEDesc : paramErr;
    if (event->kind != Kind::Event)
        return errAENotAppleEvent;
    AESendMode replyMode = inSendMode & kReplyModeMask;
    if (replyMode == 0)
        return errAEUnknownSendMode;
    bool wantsReply = replyMode == kAEWaitReply;

    return Guarded([&]() -> OSErr {
        Target target;
        if (OSErr status = ResolveTarget(*event, target); status != noErr)
            return status;
        if (target.isSelf)
            return SendToSelf(*inEvent, outReply, wantsReply);
        if (IsQuitEvent(*event))
            return SendQuit(*inEvent, target, outReply, wantsReply);
        return SendOverSocket(*inEvent, target.psn, outReply, wantsReply, inTimeOutInTicks);
    });
}
