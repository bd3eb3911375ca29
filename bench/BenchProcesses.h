// Processes that benchmarks start around what they measure, and pidof(1), the peer that
// several of them are measured against.
#pragma once

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

namespace spindeck::bench {

// Children that are killed and reaped when this goes, and that die with this program should
// it end any other way, so that a failed run leaves none behind.
class Children {
public:
    Children() = default;
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;
    ~Children()
    {
        for (pid_t child : mChildren)
            ::kill(child, SIGKILL);
        for (pid_t child : mChildren)
            ::waitpid(child, nullptr, 0);
    }

    bool Start(const std::string& inProgram, std::vector<std::string> inArguments)
    {
        pid_t child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            // Not on this program's output, which a reader may wait on to end.
            int null = ::open("/dev/null", O_WRONLY);
            ::dup2(null, STDOUT_FILENO);
            ::dup2(null, STDERR_FILENO);
            std::vector<char*> argv{const_cast<char*>(inProgram.c_str())};
            for (std::string& argument : inArguments)
                argv.push_back(argument.data());
            argv.push_back(nullptr);
            ::execv(inProgram.c_str(), argv.data());
            ::_exit(127);
        }
        if (child < 0)
            return false;
        mChildren.push_back(child);
        return true;
    }

    // Waits (a few seconds at most) until every child runs its own program: a crowd that is
    // still starting would load the machine while the benchmark measures.
    void AwaitStarted() const
    {
        const std::string self = ExecutableOf(::getpid());
        for (pid_t child : mChildren)
            for (int i = 0; i < 500 && ExecutableOf(child) == self; ++i)
                ::usleep(10'000);
    }

private:
    static std::string ExecutableOf(pid_t inPID)
    {
        char path[4096];
        ssize_t length = ::readlink(("/proc/" + std::to_string(inPID) + "/exe").c_str(), path, sizeof path);
        return length > 0 ? std::string(path, std::size_t(length)) : std::string();
    }

    std::vector<pid_t> mChildren;
};

// Whether pidof finds a process of that program name.
inline bool FoundByPidof(const std::string& inName)
{
    pid_t child = ::fork();
    if (child == 0) {
        int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDOUT_FILENO);
        ::execlp("pidof", "pidof", inName.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    int status = -1;
    if (child > 0)
        ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace spindeck::bench
