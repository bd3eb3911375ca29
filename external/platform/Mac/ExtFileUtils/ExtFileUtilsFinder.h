// Inside the Finder-information calls: moving a folder's date with the clock given, so that a
// test can make "now" equal the stored date.
#pragma once

#include "ExtFileUtilsInternal.h"

namespace ExtFileUtils {

// FSBumpDate with the clock given, so that "now" can be made to equal the stored date.
using Clock = OSStatus (*)(UTCDateTime* outDateTime, OptionBits inOptions);
OSErr BumpDateWithClock(const FSRef* inRef, Clock inClock);

}  // namespace ExtFileUtils
