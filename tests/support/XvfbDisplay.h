// A private X server for the window tests: Xvfb on a display number it picks itself (so that
// tests running side by side never share one), local connections only, stopped at the end.
// The test looks at the server's windows through a connection of its own.
#pragma once

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace spindeck::test {

template <class T>
struct XReplyDeleter {
    void operator()(T* inReply) const { std::free(inReply); }
};
template <class T>
using XReply = std::unique_ptr<T, XReplyDeleter<T>>;

// Sets $DISPLAY for the length of a scope; an empty name means no display.
class DisplayVariable {
public:
    explicit DisplayVariable(const std::string& inName)
    {
        if (const char* old = std::getenv("DISPLAY"))
            mOld = old;
        ::setenv("DISPLAY", inName.c_str(), 1);
    }
    ~DisplayVariable() { mOld ? (void)::setenv("DISPLAY", mOld->c_str(), 1) : (void)::unsetenv("DISPLAY"); }
    DisplayVariable(const DisplayVariable&) = delete;
    DisplayVariable& operator=(const DisplayVariable&) = delete;

private:
    std::optional<std::string> mOld;
};

class XvfbDisplay {
public:
    XvfbDisplay()
    {
        // Xvfb writes the number it chose to descriptor 9 once it accepts clients.
        int channel[2];
        if (::pipe2(channel, O_CLOEXEC) != 0)
            return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, channel[1], 9);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        char* argv[] = {const_cast<char*>("Xvfb"), const_cast<char*>("-displayfd"), const_cast<char*>("9"),
                        const_cast<char*>("-nolisten"), const_cast<char*>("tcp"), nullptr};
        if (::posix_spawnp(&mServer, "Xvfb", &actions, nullptr, argv, environ) != 0)
            mServer = -1;
        posix_spawn_file_actions_destroy(&actions);
        ::close(channel[1]);
        pollfd wait{channel[0], POLLIN, 0};
        char c;
        while (mServer > 0 && ::poll(&wait, 1, 10000) == 1 && ::read(channel[0], &c, 1) == 1 && c != '\n')
            mName += c;
        ::close(channel[0]);
        if (!mName.empty())
            mConnection = xcb_connect((mName = ":" + mName).c_str(), nullptr);
    }
    ~XvfbDisplay()
    {
        if (mConnection != nullptr)
            xcb_disconnect(mConnection);
        if (mServer > 0) {
            ::kill(mServer, SIGTERM);
            ::waitpid(mServer, nullptr, 0);
        }
    }
    XvfbDisplay(const XvfbDisplay&) = delete;
    XvfbDisplay& operator=(const XvfbDisplay&) = delete;

    // Why there is no server to test with; empty when there is one.
    std::string Unavailable() const
    {
        if (mServer <= 0)
            return "Xvfb is not installed (scripts/setup installs it): X11 window checks skipped";
        if (mConnection == nullptr || xcb_connection_has_error(mConnection))
            return "Xvfb did not start: X11 window checks skipped";
        return {};
    }

    const std::string& Name() const { return mName; }
    xcb_connection_t* Connection() const { return mConnection; }

    // The server starts with none: every one is the test's.
    std::vector<xcb_window_t> TopLevelWindows() const
    {
        xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(mConnection)).data->root;
        XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(mConnection, xcb_query_tree(mConnection, root), nullptr));
        xcb_window_t* children = tree ? xcb_query_tree_children(tree.get()) : nullptr;
        return tree ? std::vector<xcb_window_t>(children, children + xcb_query_tree_children_length(tree.get()))
                    : std::vector<xcb_window_t>();
    }

    // Requests of another client reach the server in their own time.
    template <class Condition>
    static bool Eventually(Condition inCondition)
    {
        for (int i = 0; i < 300 && !inCondition(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return inCondition();
    }

private:
    pid_t mServer = -1;
    std::string mName;
    xcb_connection_t* mConnection = nullptr;
};

}  // namespace spindeck::test
