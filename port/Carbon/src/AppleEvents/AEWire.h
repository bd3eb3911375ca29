// What travels between processes: where a process receives events, and the messages that
// carry an event there and its reply back.
#pragma once

#include "AEValue.h"

#include <Carbon/Processes.h>

#include <sys/socket.h>
#include <sys/un.h>

#include <span>

namespace carbon::ae {

// One message: a small header and a flat descriptor. Larger events are refused.
inline constexpr std::size_t kLargestMessage = 64 * 1024;

enum class MessageKind : UInt8 { Event = 1, Reply = 2 };

struct Message {
    MessageKind kind = MessageKind::Event;
    bool wantsReply = false;
    OSErr status = noErr;  // a reply's: noErr, or errAEEventNotHandled
    DescType type = typeNull;
    Value value;
};

std::vector<UInt8> EncodeMessage(MessageKind inKind, bool inWantsReply, OSErr inStatus, DescType inType,
                                 const Value& inValue);
// errAECorruptData for anything but one well-formed message; errAENewerVersion for a
// message from a newer version of this code.
OSErr DecodeMessage(std::span<const UInt8> inBytes, Message& outMessage);

// The socket at which a process receives events: a name in the abstract namespace made of
// its serial number, so that a later process with the same id has another one.
struct SocketAddress {
    sockaddr_un address;
    socklen_t length;
};
SocketAddress ReceiverAddress(const ProcessSerialNumber& inPSN);

// Whether the peer of a connected socket is a process that may exchange events with this
// one: the same user (or the super-user), and, when inPID is given, that process.
bool TrustedPeer(int inSocket, std::optional<pid_t> inPID, pid_t* outPeerPID = nullptr);

}  // namespace carbon::ae
