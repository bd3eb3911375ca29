// Locations of files and network resources.
#pragma once

#include <CoreFoundation/CFBase.h>

using CFURLRef = const struct __CFURL*;

CFTypeID CFURLGetTypeID();
