// The receiving side of events between processes: a listening socket on the main run loop
// while the process has handlers.
#pragma once

namespace carbon::ae {

// Called with the handler table locked, as the first handler is installed and as the last
// one is removed.
void StartReceiving() noexcept;
void StopReceiving() noexcept;

}  // namespace carbon::ae
