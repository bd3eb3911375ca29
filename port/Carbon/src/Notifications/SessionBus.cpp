#include "SessionBus.h"

#include <Carbon/Notification.h>

#include <cstdlib>
#include <string_view>
#include <utility>

namespace carbon::nm {

namespace {

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr const char* kInterface = "org.freedesktop.Notifications";
// The sound theme's name for the system's alert sound.
constexpr const char* kAlertSound = "bell";
// A server that does not answer by then is taken as refusing, so that a hung one costs the
// caller a few seconds rather than the bus's default of 25.
constexpr std::uint64_t kCallTimeout = 5'000'000;  // microseconds

struct BusError : sd_bus_error {
    BusError() : sd_bus_error(SD_BUS_ERROR_NULL) {}
    ~BusError() { sd_bus_error_free(this); }
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
};

// The message as the freedesktop notifications protocol has it: application name,
// identifier to replace (none), icon (none), summary, body, actions (none), hints, and the
// time it stays up (until closed, as a note stays until the user dismisses it).
int AppendNotify(sd_bus_message* ioCall, const Notice& inNotice)
{
    int result = sd_bus_message_append(ioCall, "susssas", inNotice.application.c_str(), 0u, "",
                                       inNotice.application.c_str(), inNotice.body.c_str(), 0);
    if (result < 0)
        return result;
    if ((result = sd_bus_message_open_container(ioCall, 'a', "{sv}")) < 0)
        return result;
    if (inNotice.sound && (result = sd_bus_message_append(ioCall, "{sv}", "sound-name", "s", kAlertSound)) < 0)
        return result;
    if ((result = sd_bus_message_close_container(ioCall)) < 0)
        return result;
    return sd_bus_message_append(ioCall, "i", 0);
}

// A server that reads markup in bodies would take "<" or "&" in a plain message for the start
// of a tag or an entity; such a server is sent the text escaped.
bool ReadsMarkup(sd_bus* inBus)
{
    BusError error;
    sd_bus_message* reply = nullptr;
    if (sd_bus_call_method(inBus, kService, kPath, kInterface, "GetCapabilities", &error, &reply, "") < 0)
        return false;
    OwnedMessage owned(reply);
    char** capabilities = nullptr;
    bool markup = false;
    if (sd_bus_message_read_strv(reply, &capabilities) >= 0 && capabilities != nullptr)
        for (char** capability = capabilities; *capability != nullptr; ++capability) {
            markup = markup || std::string_view(*capability) == "body-markup";
            free(*capability);
        }
    free(capabilities);
    return markup;
}

std::string Escaped(std::string_view inText)
{
    std::string escaped;
    for (char c : inText)
        escaped += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    return escaped;
}

}  // namespace

std::unique_ptr<SessionBus> SessionBus::Open(Listener inListener, OSErr& outStatus)
{
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) {
        outStatus = notOpenErr;
        return nullptr;
    }
    std::unique_ptr<SessionBus> session(new SessionBus(OwnedBus(bus), inListener));
    sd_bus_slot* match = nullptr;
    if (sd_bus_match_signal(bus, &match, nullptr, kPath, kInterface, "NotificationClosed", Closed, session.get()) < 0 ||
        !session->Watch()) {
        outStatus = notOpenErr;
        sd_bus_slot_unref(match);
        return nullptr;
    }
    session->mMatch.reset(match);
    outStatus = noErr;
    return session;
}

SessionBus::SessionBus(OwnedBus inBus, Listener inListener) : mBus(std::move(inBus)), mListener(inListener) {}

SessionBus::~SessionBus()
{
    if (mPending)
        CFRunLoopSourceInvalidate(mPending.Get());
}

bool SessionBus::Watch()
{
    // The connection owns its descriptor; the run loop only watches it.
    mWatch = std::make_unique<WatchedDescriptor>(sd_bus_get_fd(mBus.get()),
                                                 WatchedDescriptor::Closing::kLeavesDescriptor, Readable, this);
    CFRunLoopSourceContext pendingContext{};
    pendingContext.info = this;
    pendingContext.perform = Perform;
    mPending.Reset(CFRunLoopSourceCreate(nullptr, 0, &pendingContext));
    if (!mWatch->Valid() || !mPending)
        return false;
    CFRunLoopAddSource(CFRunLoopGetMain(), mPending.Get(), kCFRunLoopCommonModes);
    return true;
}

OSErr SessionBus::Notify(const Notice& inNotice, std::uint32_t& outID)
{
    sd_bus_message* call = nullptr;
    if (sd_bus_message_new_method_call(mBus.get(), &call, kService, kPath, kInterface, "Notify") < 0)
        return ioErr;
    OwnedMessage ownedCall(call);
    Notice notice = inNotice;
    if (ReadsMarkup(mBus.get()))
        notice.body = Escaped(inNotice.body);
    if (AppendNotify(call, notice) < 0)
        return ioErr;
    BusError error;
    sd_bus_message* reply = nullptr;
    int result = sd_bus_call(mBus.get(), call, kCallTimeout, &error, &reply);
    OwnedMessage ownedReply(reply);
    ServiceSoon();
    if (result < 0 || sd_bus_message_read(reply, "u", &outID) < 0)
        return ioErr;
    return noErr;
}

void SessionBus::Close(std::uint32_t inID)
{
    BusError error;
    sd_bus_call_method(mBus.get(), kService, kPath, kInterface, "CloseNotification", &error, nullptr, "u", inID);
    ServiceSoon();
}

void SessionBus::ServiceSoon()
{
    CFRunLoopSourceSignal(mPending.Get());
    CFRunLoopWakeUp(CFRunLoopGetMain());
}

void SessionBus::Service()
{
    int result;
    while ((result = sd_bus_process(mBus.get(), nullptr)) > 0) {
    }
    if (result < 0)
        mListener.lost();  // not watched again: a dead connection would stay readable for ever
    else
        mWatch->Watch();
    mListener.serviced();
}

void SessionBus::Readable(CFFileDescriptorRef, CFOptionFlags, void* inInfo)
{
    static_cast<SessionBus*>(inInfo)->Service();
}

void SessionBus::Perform(void* inInfo) { static_cast<SessionBus*>(inInfo)->Service(); }

int SessionBus::Closed(sd_bus_message* inMessage, void* inInfo, sd_bus_error*)
{
    std::uint32_t id = 0;
    std::uint32_t reason = 0;
    if (sd_bus_message_read(inMessage, "uu", &id, &reason) >= 0)
        static_cast<SessionBus*>(inInfo)->mListener.closed(id);
    return 0;
}

}  // namespace carbon::nm
