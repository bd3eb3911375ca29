// Finding a running process by name: a walk of the process list with GetNextProcess and
// GetProcessInformation, against running pidof(1), which is what a user would otherwise do.
// Both look for this benchmark's own process.
#include <Carbon/Processes.h>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

extern char** environ;

namespace {

const std::string& OwnName()
{
    static const std::string sName = std::filesystem::read_symlink("/proc/self/exe").filename().string();
    return sName;
}

bool FoundInProcessList(const std::string& inName)
{
    ProcessSerialNumber psn{0, kNoProcess};
    Str255 name;
    while (GetNextProcess(&psn) == noErr) {
        ProcessInfoRec info{};
        info.processInfoLength = sizeof info;
        info.processName = name;
        if (GetProcessInformation(&psn, &info) == noErr && name[0] == inName.size() &&
            std::memcmp(name + 1, inName.data(), inName.size()) == 0)
            return true;
    }
    return false;
}

bool FoundByPidof(const std::string& inName)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = "pidof", name = inName;
    char* argv[] = {program.data(), name.data(), nullptr};
    pid_t child = 0;
    int status = -1;
    if (::posix_spawnp(&child, "pidof", &actions, nullptr, argv, environ) == 0)
        ::waitpid(child, &status, 0);
    posix_spawn_file_actions_destroy(&actions);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void BM_FindProcess_ProcessManager(benchmark::State& ioState)
{
    for (auto _ : ioState)
        if (!FoundInProcessList(OwnName()))
            ioState.SkipWithError("own process not found");
}
BENCHMARK(BM_FindProcess_ProcessManager);

void BM_FindProcess_Pidof(benchmark::State& ioState)
{
    for (auto _ : ioState)
        if (!FoundByPidof(OwnName()))
            ioState.SkipWithError("own process not found");
}
BENCHMARK(BM_FindProcess_Pidof);

}  // namespace

BENCHMARK_MAIN();
