// A faceless helper of the demo configuration application: it runs its run loop until it is
// asked to quit, then takes a moment to finish its work (VEMORA_HELPER_QUIT_SECONDS, one
// second unless set) and exits 0. Only one copy runs per user: two helpers would both
// drive the same device.
#include <Carbon/AppleEvents.h>
#include <CoreFoundation/CFRunLoop.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {

constexpr double kDefaultQuitSeconds = 1.0;

void PrintHelp()
{
    std::printf("Usage: %s [--help | --version]\n"
                "The %s of the Vemora spindeck demo: runs in the background until it is asked to quit.\n"
                "Environment:\n"
                "  VEMORA_HELPER_QUIT_SECONDS  how long quitting takes, in seconds (default 1)\n"
                "  XDG_RUNTIME_DIR             where the lock that keeps it to one copy per user lives\n",
                VEMORA_HELPER_NAME, VEMORA_HELPER_NAME);
}

// The folder for the per-user lock: the session's runtime folder, else the temporary folder
// with the user id in the name.
std::string LockPath()
{
    std::string name = std::string(VEMORA_HELPER_NAME) + ".lock";
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime != nullptr && *runtime == '/')
        return std::string(runtime) + "/" + name;
    return "/tmp/" + std::to_string(::getuid()) + "-" + name;
}

// Held until the process ends; the kernel lets go of it however the process ends.
bool TakeLock(const std::string& inPath)
{
    int fd = ::open(inPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
        std::fprintf(stderr, "%s: cannot open the lock %s: %s\n", VEMORA_HELPER_NAME, inPath.c_str(),
                     std::strerror(errno));
        return false;
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        std::fprintf(stderr, "%s: already running for this user (lock %s)\n", VEMORA_HELPER_NAME, inPath.c_str());
        ::close(fd);
        return false;
    }
    return true;
}

double QuitSeconds()
{
    const char* text = std::getenv("VEMORA_HELPER_QUIT_SECONDS");
    if (text == nullptr || *text == '\0')
        return kDefaultQuitSeconds;
    char* end = nullptr;
    double seconds = std::strtod(text, &end);
    return *end == '\0' && seconds >= 0 ? seconds : kDefaultQuitSeconds;
}

OSErr HandleQuit(const AppleEvent*, AppleEvent*, SRefCon)
{
    CFRunLoopStop(CFRunLoopGetMain());
    return noErr;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
        PrintHelp();
        return 0;
    }
    if (argc > 1 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("%s %s\n", VEMORA_HELPER_NAME, SPINDECK_VERSION);
        return 0;
    }
    if (!TakeLock(LockPath()))
        return 1;
    if (AEInstallEventHandler(kCoreEventClass, kAEQuitApplication, HandleQuit, 0, false) != noErr) {
        std::fprintf(stderr, "%s: cannot receive the quit request\n", VEMORA_HELPER_NAME);
        return 1;
    }
    CFRunLoopRun();
    std::this_thread::sleep_for(std::chrono::duration<double>(QuitSeconds()));
    AERemoveEventHandler(kCoreEventClass, kAEQuitApplication, HandleQuit, false);
    return 0;
}
