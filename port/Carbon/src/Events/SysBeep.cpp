// The alert sound: the X server's bell, or the terminal's.
#include <Carbon/Sound.h>

#include "Windows/DisplayBell.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

void RingTerminalBell()
{
    int terminal = ::open("/dev/tty", O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0)
        return;  // no terminal either: there is nothing to ring
    (void)!::write(terminal, "\a", 1);
    ::close(terminal);
}

}  // namespace

void SysBeep(SInt16)
{
    if (!carbon::RingDisplayBell())
        RingTerminalBell();
}
