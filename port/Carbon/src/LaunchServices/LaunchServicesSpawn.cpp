// Detached launching by double fork.
//
// The launcher forks an intermediate process, which starts a session of its own, forks the
// program's process and exits at once; the launcher reaps the intermediate straight away.
// The program is then an orphan that init (or the session's subreaper) adopts, so the
// launcher never has a child left to reap: no zombie can build up in a host that never
// calls wait(), and the program outlives the host without a reaper thread or a SIGCHLD
// handler that would fight with the host's own. Reaping a direct child through a process
// descriptor would have needed exactly that, for the whole life of the program.
//
// Whether exec succeeded comes back through a pipe whose write end closes on exec: the
// launcher reads end-of-file when the program runs, or the errno of the failure.
//
// The program's standard output and error go to the user's journal, under the program's file
// name, or to /dev/null when there is no journal: never to the host's own, since a program
// that kept them would hold the host's terminal or pipe open for its whole life, and a reader
// of the host's output would wait for a program it never knew about.
#include "LaunchServicesSpawn.h"

#include <PortSupport/UniqueDescriptor.h>

#include <Carbon/MacErrors.h>

#include <systemd/sd-journal.h>

#include <fcntl.h>
#include <syslog.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <vector>

extern char** environ;

namespace carbon::ls {

namespace {

// Everything the new process needs is made before fork: between fork and exec only
// async-signal-safe calls may run, as another thread may hold the allocator's lock.
class ExecImage {
public:
    ExecImage(const std::string& inProgram, std::span<const std::string> inArguments)
        : mProgram(inProgram), mWords(inArguments.begin(), inArguments.end()), mEnvironment(environ)
    {
        mArgv.push_back(mProgram.data());
        for (std::string& word : mWords)
            mArgv.push_back(word.data());
        mArgv.push_back(nullptr);
    }

    [[noreturn]] void Exec(int inStatusFd, int inOutputFd) const;

private:
    std::string mProgram;
    std::vector<std::string> mWords;
    std::vector<char*> mArgv;
    char** mEnvironment;
};

// Holds off the host's signal handlers while the new processes have copies of them: a
// handler that ran in the intermediate process could touch state the fork left half-made.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &mSaved);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &mSaved, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t mSaved;
};

[[noreturn]] void ReportAndExit(int inStatusFd, int inErrno)
{
    // Four bytes to a pipe arrive whole or not at all; there is nobody to tell if not.
    [[maybe_unused]] ssize_t written = ::write(inStatusFd, &inErrno, sizeof inErrno);
    ::_exit(127);
}

// Handlers do not survive exec, but ignored and blocked signals would: a program started
// with SIGTERM blocked, as a host with a signal source on its run loop has it, could never
// be asked to quit.
void RestoreDefaultSignals()
{
    struct sigaction defaults = {};
    defaults.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        ::sigaction(signal, &defaults, nullptr);  // refused harmlessly for SIGKILL, SIGSTOP and libc's own
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Input from /dev/null, output and error to inOutputFd, whichever of them the host had closed.
void RedirectStandardDescriptors(int inOutputFd)
{
    int null = ::open("/dev/null", O_RDONLY);
    if (null >= 0 && null != STDIN_FILENO)
        ::dup2(null, STDIN_FILENO);
    if (null > STDERR_FILENO)
        ::close(null);
    ::dup2(inOutputFd, STDOUT_FILENO);
    ::dup2(inOutputFd, STDERR_FILENO);
}

// Every descriptor above standard error closes at exec, whether or not its owner asked for
// that: a host may hold descriptors opened without O_CLOEXEC, and a program that kept one
// would hold the host's pipe, socket or lock open for its whole life.
void CloseHostDescriptorsOnExec()
{
    if (::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC) == 0)
        return;
    // Kernels before 5.11 cannot mark a range; mark each possible descriptor instead.
    rlimit limit{};
    rlim_t last = ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : 1024;
    last = std::min<rlim_t>(last, 1 << 20);
    for (int fd = STDERR_FILENO + 1; rlim_t(fd) < last; ++fd)
        ::fcntl(fd, F_SETFD, FD_CLOEXEC);
}

void ExecImage::Exec(int inStatusFd, int inOutputFd) const
{
    RestoreDefaultSignals();
    RedirectStandardDescriptors(inOutputFd);
    CloseHostDescriptorsOnExec();
    // Like any launched application, the program does not keep the host's folder in use.
    if (::chdir("/") != 0)
        ReportAndExit(inStatusFd, errno);
    ::execve(mProgram.c_str(), mArgv.data(), mEnvironment);
    ReportAndExit(inStatusFd, errno);
}

[[noreturn]] void RunIntermediate(const ExecImage& inImage, int inStatusFd, int inOutputFd)
{
    if (::setsid() < 0)
        ReportAndExit(inStatusFd, errno);
    // _Fork runs no fork handlers, which makes it safe in a child of a threaded process.
    pid_t program = ::_Fork();
    if (program < 0)
        ReportAndExit(inStatusFd, errno);
    if (program == 0)
        inImage.Exec(inStatusFd, inOutputFd);
    ::_exit(0);
}

// A host that ignores SIGCHLD has had the intermediate reaped already (ECHILD).
void Reap(pid_t inChild)
{
    while (::waitpid(inChild, nullptr, 0) < 0 && errno == EINTR) {
    }
}

OSStatus ReadExecOutcome(int inStatusFd)
{
    int childErrno = 0;
    ssize_t length;
    do
        length = ::read(inStatusFd, &childErrno, sizeof childErrno);
    while (length < 0 && errno == EINTR);
    if (length == 0)
        return noErr;
    return length == sizeof childErrno ? StatusOfSpawnErrno(childErrno) : OSStatus(kLSUnknownErr);
}

// Descriptors handed to the new process must not sit on a standard descriptor, which it
// replaces; a host that closed its own leaves those numbers free for the next open.
void MoveAboveStandardDescriptors(port::UniqueDescriptor& ioFd)
{
    if (ioFd && ioFd.Get() <= STDERR_FILENO)
        ioFd.Reset(::fcntl(ioFd.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

bool MakeStatusPipe(port::UniqueDescriptor& outRead, port::UniqueDescriptor& outWrite)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return false;
    outRead.Reset(ends[0]);
    outWrite.Reset(ends[1]);
    MoveAboveStandardDescriptors(outRead);
    MoveAboveStandardDescriptors(outWrite);
    return outRead && outWrite;
}

// Made here rather than in the new process, which may not allocate. Close-on-exec like the
// rest, so that programs other threads start do not inherit it.
port::UniqueDescriptor OpenOutput(const std::string& inProgram)
{
    std::string identifier = inProgram.substr(inProgram.rfind('/') + 1);
    port::UniqueDescriptor output(::sd_journal_stream_fd(identifier.c_str(), LOG_INFO, 0));
    if (output)
        ::fcntl(output.Get(), F_SETFD, FD_CLOEXEC);
    else
        output.Reset(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    MoveAboveStandardDescriptors(output);
    return output;
}

}  // namespace

OSStatus StatusOfSpawnErrno(int inErrno)
{
    switch (inErrno) {
    case ENOENT:
    case ENOTDIR:
        return fnfErr;
    case EACCES:
    case EPERM:
    case ENOEXEC:
    case EISDIR:
    case ETXTBSY:
    case ELIBBAD:
        return kLSNoExecutableErr;
    case ENOMEM:
    case EAGAIN:
    case E2BIG:
    case EMFILE:
    case ENFILE:
        return memFullErr;
    default:
        return kLSUnknownErr;
    }
}

OSStatus SpawnDetached(const std::string& inProgram, std::span<const std::string> inArguments)
{
    ExecImage image(inProgram, inArguments);
    port::UniqueDescriptor statusRead, statusWrite;
    if (!MakeStatusPipe(statusRead, statusWrite))
        return StatusOfSpawnErrno(errno);
    port::UniqueDescriptor output = OpenOutput(inProgram);
    if (!output)
        return StatusOfSpawnErrno(errno);

    pid_t intermediate;
    {
        SignalsBlocked blocked;
        intermediate = ::fork();
        if (intermediate == 0)
            RunIntermediate(image, statusWrite.Get(), output.Get());
    }
    int forkErrno = errno;
    statusWrite.Reset();
    output.Reset();
    if (intermediate < 0)
        return StatusOfSpawnErrno(forkErrno);
    Reap(intermediate);
    return ReadExecOutcome(statusRead.Get());
}

}  // namespace carbon::ls
