// The Sound Manager's alert sound.
#pragma once

#include <MacTypes.h>

// Sounds the alert: the X server's bell where there is a display, else the bell of the
// terminal the process runs in. The duration is kept for compatibility; neither bell has one.
void SysBeep(SInt16 inDuration);
