// A private X server: Xvfb on a display number it picks itself (so that tests running side by
// side never share one), local connections only, stopped at the end. Needs no X library, so
// that programs which only hand the display to another client (a notification daemon) run
// in a build without X too.
#pragma once

#include "DisplayVariable.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>

extern char** environ;

namespace spindeck::test {

class XvfbServer {
public:
    XvfbServer()
    {
        // Xvfb writes the number it chose to descriptor 9 once it accepts clients.
        int channel[2];
        if (::pipe2(channel, O_CLOEXEC) != 0)
            return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, channel[1], 9);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        char* argv[] = {const_cast<char*>("Xvfb"),      const_cast<char*>("-displayfd"), const_cast<char*>("9"),
                        const_cast<char*>("-nolisten"), const_cast<char*>("tcp"),        nullptr};
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
            mName = ":" + mName;
    }
    ~XvfbServer()
    {
        if (mServer > 0) {
            ::kill(mServer, SIGTERM);
            ::waitpid(mServer, nullptr, 0);
        }
    }
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    // Why there is no server to test with; empty when there is one.
    std::string Unavailable() const
    {
        if (mServer <= 0)
            return "Xvfb is not installed (scripts/setup installs it): X11 checks skipped";
        if (mName.empty())
            return "Xvfb did not start: X11 checks skipped";
        return {};
    }

    const std::string& Name() const { return mName; }

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
};

}  // namespace spindeck::test
