// Receiving events from other processes. While the process has handlers it listens on the
// socket named after its serial number; the listener and every connection are sources on
// the main run loop, so handlers run on the main thread, in turn, as the platform runs them.
// Each connection carries one event and, when the sender waits for it, the reply. The quit
// event from another process arrives as SIGTERM, which is read from a signalfd on the same
// run loop and handed to the handlers as a quit event.
#include "AEReceiver.h"

#include "AEHandlers.h"
#include "AEWire.h"
#include "Events/WatchedDescriptor.h"
#include "Processes/ProcessStat.h"

#include <PortSupport/UniqueDescriptor.h>

#include <CoreFoundation/CFFileDescriptor.h>
#include <CoreFoundation/CFRunLoop.h>

#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

namespace carbon::ae {

namespace {

class Receiver;

struct Connection {
    Receiver* receiver;
    pid_t peer;
    std::unique_ptr<WatchedDescriptor> watch;
};

// An event as it arrived, with what the receiver knows about where it came from.
void AddOrigin(AppleEvent& ioEvent, pid_t inPeer)
{
    SInt16 source = kAELocalProcess;
    AEPutAttributePtr(&ioEvent, keyEventSourceAttr, typeSInt16, &source, sizeof source);
    if (std::optional<ProcessStat> sender = ReadProcessStat(inPeer)) {
        ProcessSerialNumber psn = SerialNumberOf(*sender);
        AEPutAttributePtr(&ioEvent, keyOriginalAddressAttr, typeProcessSerialNumber, &psn, sizeof psn);
    }
}

void Answer(const Connection& inConnection, const Message& inEvent)
{
    AppleEvent event{typeNull, nullptr}, reply{typeNull, nullptr};
    Value value = inEvent.value;
    StoreDesc(inEvent.type, std::move(value), &event);
    AddOrigin(event, inConnection.peer);
    OSErr status = Dispatch(event, &reply);
    if (inEvent.wantsReply && reply.dataHandle) {
        std::vector<UInt8> message = EncodeMessage(MessageKind::Reply, false, status, reply.descriptorType,
                                                   *ValueOf(reply));
        // A reply too large for one message cannot be sent; the sender sees the connection
        // close without one.
        if (message.size() <= kLargestMessage)
            ::send(inConnection.watch->Fd(), message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    AEDisposeDesc(&event);
    AEDisposeDesc(&reply);
}

// SIGTERM, taken off the process's default handling while the process has handlers. Only
// the thread that installed the first handler (the main thread, as on the platform) has it
// blocked; a signal another thread takes still ends the process.
class QuitSignal {
public:
    QuitSignal()
    {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGTERM);
        ::pthread_sigmask(SIG_BLOCK, &signals, &mPrevious);
        int fd = ::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
        if (fd >= 0)
            mWatch = std::make_unique<WatchedDescriptor>(fd, WatchedDescriptor::Closing::kClosesDescriptor, Arrived,
                                                         this);
    }
    QuitSignal(const QuitSignal&) = delete;
    QuitSignal& operator=(const QuitSignal&) = delete;
    ~QuitSignal()
    {
        mWatch.reset();
        ::pthread_sigmask(SIG_SETMASK, &mPrevious, nullptr);
    }

private:
    static void Arrived(CFFileDescriptorRef, CFOptionFlags, void* inInfo)
    {
        auto* quit = static_cast<QuitSignal*>(inInfo);
        signalfd_siginfo info;
        pid_t sender = 0;
        bool arrived = false;
        while (::read(quit->mWatch->Fd(), &info, sizeof info) == ssize_t(sizeof info)) {
            arrived = true;
            sender = pid_t(info.ssi_pid);
        }
        quit->mWatch->Watch();
        if (arrived)
            Deliver(sender);
    }

    // A process whose handlers do not take the quit event ends as SIGTERM would end it.
    static void Deliver(pid_t inSender)
    {
        AppleEvent event{typeNull, nullptr}, reply{typeNull, nullptr};
        AEDesc noAddress{typeNull, nullptr};
        OSErr status = AECreateAppleEvent(kCoreEventClass, kAEQuitApplication, &noAddress, kAutoGenerateReturnID,
                                          kAnyTransactionID, &event);
        if (status == noErr) {
            AddOrigin(event, inSender);
            status = Dispatch(event, &reply);
        }
        AEDisposeDesc(&event);
        AEDisposeDesc(&reply);
        if (status != noErr) {
            ::signal(SIGTERM, SIG_DFL);
            sigset_t signals;
            sigemptyset(&signals);
            sigaddset(&signals, SIGTERM);
            ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
            ::raise(SIGTERM);
        }
    }

    std::unique_ptr<WatchedDescriptor> mWatch;
    sigset_t mPrevious;
};

class Receiver {
public:
    bool Start()
    {
        ProcessSerialNumber self{};
        if (GetCurrentProcess(&self) != noErr)
            return false;
        port::UniqueDescriptor listener(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        SocketAddress address = ReceiverAddress(self);
        if (!listener ||
            ::bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address.address), address.length) != 0 ||
            ::listen(listener.Get(), SOMAXCONN) != 0)
            return false;
        mListener = std::make_unique<WatchedDescriptor>(listener.Take(), WatchedDescriptor::Closing::kClosesDescriptor,
                                                        Accept, this);
        if (!mListener->Valid())
            return false;
        mQuitSignal = std::make_unique<QuitSignal>();
        return true;
    }

    ~Receiver()
    {
        std::lock_guard guard(mLock);
        for (Connection* connection : mConnections)
            delete connection;
    }

private:
    static void Accept(CFFileDescriptorRef, CFOptionFlags, void* inInfo)
    {
        auto* receiver = static_cast<Receiver*>(inInfo);
        int fd;
        while ((fd = ::accept4(receiver->mListener->Fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC)) >= 0)
            receiver->Admit(port::UniqueDescriptor(fd));
        receiver->mListener->Watch();
    }

    // Only processes of the same user may send events; others are hung up on.
    void Admit(port::UniqueDescriptor inFd)
    {
        pid_t peer = 0;
        if (!TrustedPeer(inFd.Get(), std::nullopt, &peer))
            return;
        auto* connection = new Connection{this, peer, nullptr};
        connection->watch = std::make_unique<WatchedDescriptor>(
            inFd.Take(), WatchedDescriptor::Closing::kClosesDescriptor, Read, connection);
        std::lock_guard guard(mLock);
        mConnections.insert(connection);
    }

    static void Read(CFFileDescriptorRef, CFOptionFlags, void* inInfo)
    {
        auto* connection = static_cast<Connection*>(inInfo);
        std::vector<UInt8> buffer(kLargestMessage + 1);
        ssize_t length = ::recv(connection->watch->Fd(), buffer.data(), buffer.size(), 0);
        if (length < 0 && (errno == EAGAIN || errno == EINTR)) {
            connection->watch->Watch();
            return;
        }
        // The connection leaves the receiver's care before the handler runs, which may
        // remove the last handler and with it the receiver.
        std::unique_ptr<Connection> owned(connection->receiver->Release(connection));
        Message event;
        bool wellFormed = length > 0 && std::size_t(length) <= kLargestMessage &&
                          DecodeMessage(std::span(buffer.data(), std::size_t(length)), event) == noErr &&
                          event.kind == MessageKind::Event && event.value.kind == Kind::Event;
        if (wellFormed)
            Answer(*owned, event);
    }

    Connection* Release(Connection* inConnection)
    {
        std::lock_guard guard(mLock);
        mConnections.erase(inConnection);
        return inConnection;
    }

    std::unique_ptr<WatchedDescriptor> mListener;
    std::unique_ptr<QuitSignal> mQuitSignal;
    std::mutex mLock;
    std::set<Connection*> mConnections;
};

// Only touched with the handler table locked. Never destroyed at exit: the process's end
// closes the socket, and the run loop may be gone by then.
Receiver* sReceiver = nullptr;

}  // namespace

// A process that cannot listen still has its handlers for its own events; others then
// find it unreachable.
void StartReceiving() noexcept
{
    try {
        auto receiver = std::make_unique<Receiver>();
        if (receiver->Start())
            sReceiver = receiver.release();
    } catch (const std::bad_alloc&) {
    }
}

void StopReceiving() noexcept { delete std::exchange(sReceiver, nullptr); }

}  // namespace carbon::ae
