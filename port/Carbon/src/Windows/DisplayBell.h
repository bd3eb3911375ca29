// The X server's bell, for the alert sound.
#pragma once

namespace carbon {

// Rings the bell of the display named by DISPLAY at the server's own volume; false when there
// is no display to ring.
bool RingDisplayBell();

}  // namespace carbon
