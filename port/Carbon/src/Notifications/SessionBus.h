// The connection that desktop notifications travel on: the user's session bus, serviced by
// the main run loop rather than by a thread of its own, so that everything it reports happens
// on the main thread between other events.
#pragma once

#include "Events/WatchedDescriptor.h"

#include <MacTypes.h>

#include <CoreFoundation/CFFileDescriptor.h>
#include <CoreFoundation/CFRunLoop.h>
#include <PortSupport/Owned.h>
#include <PortSupport/UniqueHandle.h>

#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <string>

namespace carbon::nm {

using OwnedBus = port::UniqueHandle<sd_bus, sd_bus_flush_close_unref>;
using OwnedSlot = port::UniqueHandle<sd_bus_slot, sd_bus_slot_unref>;
using OwnedMessage = port::UniqueHandle<sd_bus_message, sd_bus_message_unref>;

// What the notification server is asked to show.
struct Notice {
    std::string application;
    std::string body;
    bool sound = false;
};

class SessionBus {
public:
    // What the connection reports, on the main run loop: each notification the server closed,
    // or that the bus went away with every notification on it; then, once every message that
    // had arrived is handled, that it is done. Only that last call may destroy the connection.
    struct Listener {
        void (*closed)(std::uint32_t inID);
        void (*lost)();
        void (*serviced)();
    };

    // A connection to the session bus that listens for closed notifications, or nullptr (and
    // outStatus) when there is no bus to connect to.
    static std::unique_ptr<SessionBus> Open(Listener inListener, OSErr& outStatus);
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    // Posts inNotice and answers the server's identifier for it; ioErr when the server refuses
    // or there is none.
    OSErr Notify(const Notice& inNotice, std::uint32_t& outID);
    void Close(std::uint32_t inID);

private:
    SessionBus(OwnedBus inBus, Listener inListener);

    bool Watch();
    // Handles every message that has arrived, which may report notices closed, then tells the
    // listener; this object may be gone when it returns.
    void Service();
    // Messages that came in while a call waited for its answer sit in the connection's queue
    // where the descriptor does not show them, so the run loop is asked to look once more.
    void ServiceSoon();
    static void Readable(CFFileDescriptorRef inDescriptor, CFOptionFlags inTypes, void* inInfo);
    static void Perform(void* inInfo);
    static int Closed(sd_bus_message* inMessage, void* inInfo, sd_bus_error* outError);

    OwnedBus mBus;
    OwnedSlot mMatch;
    Listener mListener;
    // After the bus, so that the watch on its descriptor ends before the bus closes it.
    std::unique_ptr<WatchedDescriptor> mWatch;
    port::Owned<CFRunLoopSourceRef> mPending;
};

}  // namespace carbon::nm
