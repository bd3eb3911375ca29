// Desktop notifications in tests: a private session bus, a notification server of the test's
// own on it (recording every call, closing notices when asked), and a way to let the main run
// loop work until something has happened.
#pragma once

#include "ChildProcess.h"
#include "LaunchTesting.h"

#include <CoreFoundation/CFRunLoop.h>

#include <systemd/sd-bus.h>

#include <atomic>
#include <mutex>

namespace spindeck::test {

// Runs the main run loop (the test's thread) until inDone holds, for at most inSeconds.
template <class Condition>
bool RunLoopUntil(Condition inDone, double inSeconds = 5)
{
    auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(inSeconds);
    while (!inDone() && std::chrono::steady_clock::now() < end)
        if (CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.02, true) == kCFRunLoopRunFinished)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return inDone();
}

// A dbus-daemon of the test's own: the session bus for as long as it lives.
class PrivateSessionBus {
public:
    PrivateSessionBus()
        : mDaemon("/usr/bin/dbus-daemon", {"--session", "--nofork", "--print-address=1"}, true),
          mAddress(mDaemon.ReadLine()), mVariable("DBUS_SESSION_BUS_ADDRESS", mAddress)
    {
    }
    bool Running() const { return !mAddress.empty(); }

private:
    ChildProcess mDaemon;
    std::string mAddress;
    ScopedVariable mVariable;
};

struct NotifyCall {
    std::uint32_t id;
    std::string application, summary, body;
    std::string soundName;  // the "sound-name" hint; empty without one
    std::int32_t timeout;
};

// Owns the notification service's name and answers on a thread of its own.
class NotificationServer {
public:
    explicit NotificationServer(bool inRefuse = false) : mRefuse(inRefuse)
    {
        static const sd_bus_vtable kTable[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", Notify, 0),
            SD_BUS_METHOD("CloseNotification", "u", "", Close, 0),
            SD_BUS_METHOD("GetCapabilities", "", "as", Capabilities, 0),
            SD_BUS_VTABLE_END,
        };
        if (sd_bus_open_user(&mBus) >= 0 && sd_bus_add_object_vtable(mBus, nullptr, kPath, kName, kTable, this) >= 0 &&
            sd_bus_request_name(mBus, kName, 0) >= 0)
            mThread = std::thread([this] { Serve(); });
    }
    ~NotificationServer()
    {
        mStop = true;
        if (mThread.joinable())
            mThread.join();
        sd_bus_flush_close_unref(mBus);
    }
    bool Serving() const { return mThread.joinable(); }

    std::vector<NotifyCall> Calls() { return Locked(mCalls); }
    std::vector<std::uint32_t> ClosedByClient() { return Locked(mClosedByClient); }
    // The user dismisses the notice.
    void Dismiss(std::uint32_t inID)
    {
        std::lock_guard guard(mLock);
        mToDismiss.push_back(inID);
    }

private:
    static constexpr const char* kPath = "/org/freedesktop/Notifications";
    static constexpr const char* kName = "org.freedesktop.Notifications";

    template <class T>
    T Locked(const T& inValue)
    {
        std::lock_guard guard(mLock);
        return inValue;
    }

    void Serve()
    {
        for (std::vector<std::uint32_t> dismissing; !mStop; sd_bus_wait(mBus, 10000)) {
            while (sd_bus_process(mBus, nullptr) > 0) {
            }
            mLock.lock();
            dismissing.swap(mToDismiss);
            mToDismiss.clear();
            mLock.unlock();
            for (std::uint32_t id : dismissing)
                sd_bus_emit_signal(mBus, kPath, kName, "NotificationClosed", "uu", id, 2u);
        }
    }

    static int Notify(sd_bus_message* inCall, void* inServer, sd_bus_error*)
    {
        auto& server = *static_cast<NotificationServer*>(inServer);
        if (server.mRefuse)
            return sd_bus_reply_method_errorf(inCall, SD_BUS_ERROR_FAILED, "notices are refused here");
        const char *application, *icon, *summary, *body, *key, *sound = "";
        std::uint32_t replaces;
        sd_bus_message_read(inCall, "susss", &application, &replaces, &icon, &summary, &body);
        sd_bus_message_skip(inCall, "as");
        sd_bus_message_enter_container(inCall, 'a', "{sv}");
        while (sd_bus_message_enter_container(inCall, 'e', "sv") > 0) {
            sd_bus_message_read(inCall, "s", &key);
            if (std::string(key) != "sound-name" || sd_bus_message_read(inCall, "v", "s", &sound) < 0)
                sd_bus_message_skip(inCall, "v");
            sd_bus_message_exit_container(inCall);
        }
        sd_bus_message_exit_container(inCall);
        NotifyCall call{0, application, summary, body, sound, 0};
        sd_bus_message_read(inCall, "i", &call.timeout);
        std::lock_guard guard(server.mLock);
        server.mCalls.push_back(call);
        return sd_bus_reply_method_return(inCall, "u", server.mCalls.back().id = std::uint32_t(server.mCalls.size()));
    }

    // Bodies are read as markup here, so plain text must come escaped.
    static int Capabilities(sd_bus_message* inCall, void*, sd_bus_error*)
    {
        return sd_bus_reply_method_return(inCall, "as", 2, "body", "body-markup");
    }

    static int Close(sd_bus_message* inCall, void* inServer, sd_bus_error*)
    {
        auto& server = *static_cast<NotificationServer*>(inServer);
        std::uint32_t id = 0;
        sd_bus_message_read(inCall, "u", &id);
        server.mLock.lock();
        server.mClosedByClient.push_back(id);
        server.mLock.unlock();
        sd_bus_emit_signal(server.mBus, kPath, kName, "NotificationClosed", "uu", id, 3u);
        return sd_bus_reply_method_return(inCall, "");
    }

    bool mRefuse;
    sd_bus* mBus = nullptr;
    std::thread mThread;
    std::atomic<bool> mStop{false};
    std::mutex mLock;
    std::vector<NotifyCall> mCalls;
    std::vector<std::uint32_t> mClosedByClient, mToDismiss;
};

}  // namespace spindeck::test
