// A program the test starts and, unless the test reaped it, kills and reaps at the end.
#pragma once

#include <Carbon/Processes.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <initializer_list>
#include <optional>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

inline bool operator==(const ProcessSerialNumber& inA, const ProcessSerialNumber& inB)
{
    return inA.highLongOfPSN == inB.highLongOfPSN && inA.lowLongOfPSN == inB.lowLongOfPSN;
}

namespace spindeck::test {

class ChildProcess {
public:
    // Runs inProgram with inArguments; with inStdout set, the child's standard output is
    // a pipe that ReadLine reads.
    ChildProcess(const std::string& inProgram, std::initializer_list<std::string> inArguments, bool inStdout = false)
    {
        std::vector<std::string> words{inProgram};
        words.insert(words.end(), inArguments);
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        int output[2] = {-1, -1};
        if (inStdout && ::pipe2(output, O_CLOEXEC) == 0) {
            posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
            mOutput = output[0];
        }
        if (::posix_spawn(&mPID, inProgram.c_str(), &actions, nullptr, argv.data(), environ) != 0)
            mPID = -1;
        posix_spawn_file_actions_destroy(&actions);
        if (output[1] >= 0)
            ::close(output[1]);
    }

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    ~ChildProcess()
    {
        if (mPID > 0 && !mReaped) {
            ::kill(mPID, SIGKILL);
            ::waitpid(mPID, nullptr, 0);
        }
        if (mOutput >= 0)
            ::close(mOutput);
    }

    pid_t PID() const { return mPID; }

    ProcessSerialNumber PSN() const
    {
        ProcessSerialNumber psn{};
        EXPECT_EQ(GetProcessForPID(mPID, &psn), noErr);
        return psn;
    }

    // One line of the child's output, without its newline.
    std::string ReadLine()
    {
        std::string line;
        char c;
        while (mOutput >= 0 && ::read(mOutput, &c, 1) == 1 && c != '\n')
            line += c;
        return line;
    }

    bool StillRunning() { return !mReaped && ::waitpid(mPID, nullptr, WNOHANG) == 0; }

    // The wait status once the child has ended, waiting at most a few seconds.
    std::optional<int> Reap()
    {
        for (int i = 0; i < 500 && !mReaped; ++i) {
            int status = 0;
            if (::waitpid(mPID, &status, WNOHANG) == mPID) {
                mReaped = true;
                return status;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return std::nullopt;
    }

    // Whether the child ends within a few seconds, killed by inSignal.
    bool EndsBy(int inSignal)
    {
        std::optional<int> status = Reap();
        return status && WIFSIGNALED(*status) && WTERMSIG(*status) == inSignal;
    }

private:
    pid_t mPID = -1;
    int mOutput = -1;
    bool mReaped = false;
};

}  // namespace spindeck::test
