// Message framing and socket names for events between processes.
#include "AEWire.h"

#include "AEFlatten.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace carbon::ae {

namespace {

constexpr UInt32 kMessageMagic = FourCC("aemg");
constexpr UInt16 kMessageVersion = 1;
// magic, version, kind, flags, status
constexpr std::size_t kMessageHeaderSize = 4 + 2 + 1 + 1 + 4;
constexpr UInt8 kWantsReplyFlag = 0x01;

void PutU32(std::vector<UInt8>& ioBytes, UInt32 inValue)
{
    ioBytes.insert(ioBytes.end(), {UInt8(inValue >> 24), UInt8(inValue >> 16), UInt8(inValue >> 8), UInt8(inValue)});
}

UInt32 GetU32(std::span<const UInt8> inBytes)
{
    return UInt32(inBytes[0]) << 24 | UInt32(inBytes[1]) << 16 | UInt32(inBytes[2]) << 8 | UInt32(inBytes[3]);
}

}  // namespace

std::vector<UInt8> EncodeMessage(MessageKind inKind, bool inWantsReply, OSErr inStatus, DescType inType,
                                 const Value& inValue)
{
    std::vector<UInt8> flat = Flatten(inType, inValue);
    std::vector<UInt8> message;
    message.reserve(kMessageHeaderSize + flat.size());
    PutU32(message, kMessageMagic);
    message.insert(message.end(), {UInt8(kMessageVersion >> 8), UInt8(kMessageVersion), UInt8(inKind),
                                   UInt8(inWantsReply ? kWantsReplyFlag : 0)});
    PutU32(message, UInt32(SInt32(inStatus)));
    message.insert(message.end(), flat.begin(), flat.end());
    return message;
}

OSErr DecodeMessage(std::span<const UInt8> inBytes, Message& outMessage)
{
    if (inBytes.size() < kMessageHeaderSize || GetU32(inBytes) != kMessageMagic)
        return errAECorruptData;
    UInt16 version = UInt16(inBytes[4] << 8 | inBytes[5]);
    if (version > kMessageVersion)
        return errAENewerVersion;
    UInt8 kind = inBytes[6];
    if (kind != UInt8(MessageKind::Event) && kind != UInt8(MessageKind::Reply))
        return errAECorruptData;
    SInt32 status = SInt32(GetU32(inBytes.subspan(8)));
    if (status < -32768 || status > 32767)
        return errAECorruptData;
    Message message;
    message.kind = MessageKind(kind);
    message.wantsReply = (inBytes[7] & kWantsReplyFlag) != 0;
    message.status = OSErr(status);
    if (OSErr result = Unflatten(inBytes.subspan(kMessageHeaderSize), message.type, message.value); result != noErr)
        return result;
    outMessage = std::move(message);
    return noErr;
}

SocketAddress ReceiverAddress(const ProcessSerialNumber& inPSN)
{
    SocketAddress result{};
    result.address.sun_family = AF_UNIX;
    // The leading NUL puts the name in the abstract namespace: nothing on disk to clean up
    // when the process ends.
    int length = std::snprintf(result.address.sun_path + 1, sizeof result.address.sun_path - 1,
                               "spindeck-apple-events/%u-%u", unsigned(inPSN.highLongOfPSN),
                               unsigned(inPSN.lowLongOfPSN));
    result.length = socklen_t(offsetof(sockaddr_un, sun_path) + 1 + std::size_t(length));
    return result;
}

bool TrustedPeer(int inSocket, std::optional<pid_t> inPID, pid_t* outPeerPID)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(inSocket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || size != sizeof peer)
        return false;
    if (outPeerPID)
        *outPeerPID = peer.pid;
    bool sameUser = peer.uid == ::geteuid() || peer.uid == 0 || ::geteuid() == 0;
    return sameUser && (!inPID || peer.pid == *inPID);
}

}  // namespace carbon::ae
