// Desktop notifications in tests: a private session bus started for the test, a notification
// server of the test's own on it that records every call and closes notices when the test
// asks, and a way to let the main run loop work until something has happened.
#pragma once

#include "ChildProcess.h"
#include "LaunchTesting.h"

#include <CoreFoundation/CFRunLoop.h>

#include <systemd/sd-bus.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace spindeck::test {

// Runs the main run loop (the test's thread) until inDone holds, for at most a few seconds.
template <class Condition>
bool RunLoopUntil(Condition inDone, double inSeconds = 5)
{
    auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(inSeconds);
    while (!inDone() && std::chrono::steady_clock::now() < end)
        if (CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.02, true) == kCFRunLoopRunFinished)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return inDone();
}

// A dbus-daemon of the test's own, the session bus for as long as it lives.
class PrivateSessionBus {
public:
    PrivateSessionBus()
        : mDaemon("/usr/bin/dbus-daemon", {"--session", "--nofork", "--print-address=1"}, true),
          mAddress(mDaemon.ReadLine()), mVariable("DBUS_SESSION_BUS_ADDRESS", mAddress)
    {
    }
    bool Running() const { return !mAddress.empty(); }
    const std::string& Address() const { return mAddress; }

private:
    ChildProcess mDaemon;
    std::string mAddress;
    ScopedVariable mVariable;
};

// One Notify call as the server received it.
struct NotifyCall {
    std::uint32_t id;
    std::string application;
    std::string summary;
    std::string body;
    std::string soundName;  // the "sound-name" hint, empty without one
    std::int32_t timeout;
};

// Owns the notification service's name on the session bus and answers on a thread of its own.
class NotificationServer {
public:
    explicit NotificationServer(bool inRefuse = false) : mRefuse(inRefuse)
    {
        sd_bus* bus = nullptr;
        if (sd_bus_open_user(&bus) < 0)
            return;
        mBus = bus;
        static const sd_bus_vtable kTable[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", Notify, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_METHOD("CloseNotification", "u", "", CloseNotification, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END,
        };
        if (sd_bus_add_object_vtable(mBus, nullptr, kPath, kInterface, kTable, this) < 0
            || sd_bus_request_name(mBus, kInterface, 0) < 0)
            return;
        mThread = std::thread([this] { Serve(); });
    }
    ~NotificationServer()
    {
        mStop = true;
        if (mThread.joinable())
            mThread.join();
        sd_bus_flush_close_unref(mBus);
    }
    NotificationServer(const NotificationServer&) = delete;
    NotificationServer& operator=(const NotificationServer&) = delete;

    bool Serving() const { return mThread.joinable(); }

    std::vector<NotifyCall> Calls()
    {
        std::lock_guard guard(mLock);
        return mCalls;
    }
    std::vector<std::uint32_t> CloseCalls()
    {
        std::lock_guard guard(mLock);
        return mClosedByClient;
    }

    // The user dismisses the notice (reason 2).
    void Dismiss(std::uint32_t inID)
    {
        std::lock_guard guard(mLock);
        mToClose.push_back(inID);
    }

private:
    static constexpr const char* kPath = "/org/freedesktop/Notifications";
    static constexpr const char* kInterface = "org.freedesktop.Notifications";

    void Serve()
    {
        while (!mStop) {
            while (sd_bus_process(mBus, nullptr) > 0) {
            }
            std::vector<std::uint32_t> closing;
            {
                std::lock_guard guard(mLock);
                closing.swap(mToClose);
            }
            for (std::uint32_t id : closing)
                sd_bus_emit_signal(mBus, kPath, kInterface, "NotificationClosed", "uu", id, 2u);
            sd_bus_wait(mBus, 10000);
        }
    }

    static int Notify(sd_bus_message* inCall, void* inServer, sd_bus_error*)
    {
        auto& server = *static_cast<NotificationServer*>(inServer);
        if (server.mRefuse)
            return sd_bus_reply_method_errorf(inCall, SD_BUS_ERROR_FAILED, "notices are refused here");
        const char *application, *icon, *summary, *body;
        std::uint32_t replaces;
        NotifyCall call{};
        sd_bus_message_read(inCall, "susss", &application, &replaces, &icon, &summary, &body);
        call.application = application;
        call.summary = summary;
        call.body = body;
        sd_bus_message_skip(inCall, "as");
        sd_bus_message_enter_container(inCall, 'a', "{sv}");
        while (sd_bus_message_enter_container(inCall, 'e', "sv") > 0) {
            const char* key;
            const char* value;
            sd_bus_message_read(inCall, "s", &key);
            if (std::string(key) == "sound-name" && sd_bus_message_read(inCall, "v", "s", &value) >= 0)
                call.soundName = value;
            else
                sd_bus_message_skip(inCall, "v");
            sd_bus_message_exit_container(inCall);
        }
        sd_bus_message_exit_container(inCall);
        sd_bus_message_read(inCall, "i", &call.timeout);
        std::lock_guard guard(server.mLock);
        call.id = ++server.mLastID;
        server.mCalls.push_back(call);
        return sd_bus_reply_method_return(inCall, "u", call.id);
    }

    static int CloseNotification(sd_bus_message* inCall, void* inServer, sd_bus_error*)
    {
        auto& server = *static_cast<NotificationServer*>(inServer);
        std::uint32_t id = 0;
        sd_bus_message_read(inCall, "u", &id);
        {
            std::lock_guard guard(server.mLock);
            server.mClosedByClient.push_back(id);
        }
        sd_bus_emit_signal(server.mBus, kPath, kInterface, "NotificationClosed", "uu", id, 3u);
        return sd_bus_reply_method_return(inCall, "");
    }

    bool mRefuse;
    sd_bus* mBus = nullptr;
    std::thread mThread;
    std::atomic<bool> mStop{false};
    std::mutex mLock;
    std::vector<NotifyCall> mCalls;
    std::vector<std::uint32_t> mClosedByClient;
    std::vector<std::uint32_t> mToClose;
    std::uint32_t mLastID = 0;
};

}  // namespace spindeck::test
