// The File Manager status that stands for a failed system call's errno. A port extension:
// code above the port that makes system calls of its own reports their failures as the
// File Manager would.
#pragma once

#include <MacTypes.h>

namespace carbon {

OSErr StatusOfErrno(int inError);
// The status for the errno of the call that just failed.
OSErr LastStatus();

}  // namespace carbon
