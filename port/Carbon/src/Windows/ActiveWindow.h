// The process that owns the active window, as the window manager and the window report it;
// nothing when there is no display.
#pragma once

#include <sys/types.h>

#include <optional>

namespace carbon {

std::optional<pid_t> ActiveWindowOwner();

}  // namespace carbon
