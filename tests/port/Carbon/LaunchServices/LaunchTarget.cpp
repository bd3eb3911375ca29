// A program for the launching tests: it reports how it was started, then waits for SIGTERM,
// or a minute at most, so that a failed test leaves nothing running.
//
// The report goes to the file named by the first argument, else by $SPINDECK_LAUNCH_REPORT,
// as "key=value" lines (pid, sid, fds open at start, cwd, stdin, stdout, stderr, one "arg" per
// further argument), written under another name and renamed so that nobody reads half of it.
// A line goes to standard output and one to standard error before the report is written.
#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr int kLifetimeSeconds = 60;
constexpr int kHighestDescriptorChecked = 1024;

// Before anything here opens a descriptor of its own.
std::string OpenDescriptors()
{
    std::string list;
    for (int fd = 0; fd < kHighestDescriptorChecked; ++fd)
        if (::fcntl(fd, F_GETFD) != -1)
            list += (list.empty() ? "" : " ") + std::to_string(fd);
    return list;
}

std::string LinkTarget(const char* inLink)
{
    char target[PATH_MAX];
    ssize_t length = ::readlink(inLink, target, sizeof target);
    return length > 0 ? std::string(target, std::size_t(length)) : std::string();
}

bool WriteReport(const std::string& inPath, const std::string& inText)
{
    std::string temporary = inPath + ".part";
    FILE* file = std::fopen(temporary.c_str(), "w");
    if (file == nullptr)
        return false;
    bool written = std::fputs(inText.c_str(), file) >= 0;
    return std::fclose(file) == 0 && written && std::rename(temporary.c_str(), inPath.c_str()) == 0;
}

}  // namespace

int main(int argc, char** argv)
{
    std::string fds = OpenDescriptors();
    const char* fromEnvironment = std::getenv("SPINDECK_LAUNCH_REPORT");
    std::string reportPath = argc > 1 ? argv[1] : (fromEnvironment ? fromEnvironment : "");
    if (reportPath.empty())
        return 2;

    std::string report = "pid=" + std::to_string(::getpid()) + "\nsid=" + std::to_string(::getsid(0)) + "\nfds=" + fds +
                         "\ncwd=" + LinkTarget("/proc/self/cwd") + "\nstdin=" + LinkTarget("/proc/self/fd/0") +
                         "\nstdout=" + LinkTarget("/proc/self/fd/1") + "\nstderr=" + LinkTarget("/proc/self/fd/2") +
                         "\n";
    for (int i = 2; i < argc; ++i)
        report += std::string("arg=") + argv[i] + "\n";
    std::printf("LaunchTarget %d started\n", int(::getpid()));
    std::fflush(stdout);
    std::fprintf(stderr, "LaunchTarget %d: a line on standard error\n", int(::getpid()));
    if (!WriteReport(reportPath, report))
        return 3;

    ::alarm(kLifetimeSeconds);
    for (;;)
        ::pause();
}
