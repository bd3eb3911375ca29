// The front process: the owner of the X display's active window, else the foreground
// process group of the controlling terminal.
#include "Windows/ActiveWindow.h"

#include <Carbon/MacErrors.h>
#include <Carbon/Processes.h>

#include <PortSupport/UniqueDescriptor.h>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <optional>

namespace {

// The leader of the terminal's foreground process group: the job the user is typing to.
std::optional<pid_t> ForegroundGroupLeader()
{
    port::UniqueDescriptor terminal(::open("/dev/tty", O_RDONLY | O_NOCTTY | O_CLOEXEC));
    if (!terminal)
        return std::nullopt;
    pid_t group = ::tcgetpgrp(terminal.Get());
    if (group <= 0)
        return std::nullopt;
    return group;
}

}  // namespace

OSErr GetFrontProcess(ProcessSerialNumber* outPSN)
{
    if (outPSN == nullptr)
        return paramErr;
    for (auto source : {carbon::ActiveWindowOwner, ForegroundGroupLeader})
        if (std::optional<pid_t> pid = source(); pid && GetProcessForPID(*pid, outPSN) == noErr)
            return noErr;
    return procNotFound;
}
