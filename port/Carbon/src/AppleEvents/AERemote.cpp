// The sending side of events between processes: one connection per event, one message
// each way.
#include "AERemote.h"

#include "AEWire.h"
#include <PortSupport/UniqueDescriptor.h>
#include "Processes/ProcessStat.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>

namespace carbon::ae {

namespace {

using Clock = std::chrono::steady_clock;

constexpr long kTicksPerSecond = 60;
constexpr long kDefaultTimeoutTicks = 60 * kTicksPerSecond;

// Why a process could not be reached: it has ended, or it does not receive events.
OSErr Unreachable(const ProcessSerialNumber& inPSN)
{
    return ResolveProcess(inPSN) ? OSErr(connectionInvalid) : OSErr(procNotFound);
}

std::optional<Clock::time_point> Deadline(long inTimeOutInTicks)
{
    if (inTimeOutInTicks == kNoTimeOut)
        return std::nullopt;
    long ticks = inTimeOutInTicks < 0 ? kDefaultTimeoutTicks : inTimeOutInTicks;
    return Clock::now() + std::chrono::milliseconds(ticks * 1000 / kTicksPerSecond);
}

// Waits until the socket can be read, or the deadline passes.
bool WaitReadable(int inSocket, std::optional<Clock::time_point> inDeadline)
{
    for (;;) {
        int wait = -1;
        if (inDeadline) {
            auto left = std::chrono::ceil<std::chrono::milliseconds>(*inDeadline - Clock::now());
            wait = int(std::max<long long>(0, left.count()));
        }
        pollfd entry{inSocket, POLLIN, 0};
        int ready = ::poll(&entry, 1, wait);
        if (ready > 0)
            return true;
        if (ready == 0 || errno != EINTR)
            return false;
    }
}

OSErr Connect(int inSocket, const ProcessSerialNumber& inPSN)
{
    SocketAddress address = ReceiverAddress(inPSN);
    if (::connect(inSocket, reinterpret_cast<const sockaddr*>(&address.address), address.length) != 0)
        return Unreachable(inPSN);
    // Anyone may take any name in the abstract namespace; only the process itself counts.
    if (!TrustedPeer(inSocket, pid_t(inPSN.highLongOfPSN)))
        return connectionInvalid;
    return noErr;
}

OSErr ReceiveReply(int inSocket, const ProcessSerialNumber& inPSN, std::optional<Clock::time_point> inDeadline,
                   AppleEvent* outReply)
{
    if (!WaitReadable(inSocket, inDeadline))
        return errAETimeout;
    std::vector<UInt8> buffer(kLargestMessage + 1);
    ssize_t length = ::recv(inSocket, buffer.data(), buffer.size(), 0);
    if (length <= 0)
        return Unreachable(inPSN);
    Message reply;
    OSErr status = std::size_t(length) > kLargestMessage
                       ? OSErr(errAECorruptData)
                       : DecodeMessage(std::span(buffer.data(), std::size_t(length)), reply);
    if (status != noErr)
        return status;
    if (reply.kind != MessageKind::Reply || reply.value.kind != Kind::Event)
        return errAECorruptData;
    if (outReply)
        StoreDesc(reply.type, std::move(reply.value), outReply);
    return reply.status;
}

}  // namespace

OSErr SendOverSocket(const AppleEvent& inEvent, const ProcessSerialNumber& inPSN, AppleEvent* outReply,
                     bool inWantsReply, long inTimeOutInTicks)
{
    std::optional<Clock::time_point> deadline = Deadline(inTimeOutInTicks);
    std::vector<UInt8> message = EncodeMessage(MessageKind::Event, inWantsReply, noErr, inEvent.descriptorType,
                                               *ValueOf(inEvent));
    // More than one message holds; the platform has no status for that, the nearest is
    // that the event could not be sent.
    if (message.size() > kLargestMessage)
        return errAEEventFailed;

    port::UniqueDescriptor connection(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!connection)
        return connectionInvalid;
    if (OSErr status = Connect(connection.Get(), inPSN); status != noErr)
        return status;
    if (::send(connection.Get(), message.data(), message.size(), MSG_NOSIGNAL) != ssize_t(message.size()))
        return Unreachable(inPSN);
    if (!inWantsReply)
        return noErr;
    return ReceiveReply(connection.Get(), inPSN, deadline, outReply);
}

}  // namespace carbon::ae
