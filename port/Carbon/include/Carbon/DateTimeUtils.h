// Points in time as the File Manager keeps them: seconds since the first instant of 1904
// (UTC) in 48 bits, with a fraction of a second in 1/65536 steps.
#pragma once

#include <CoreFoundation/CFDate.h>
#include <MacTypes.h>

struct UTCDateTime {
    UInt16 highSeconds;
    UInt32 lowSeconds;
    UInt16 fraction;
};

enum : OptionBits { kUTCDefaultOptions = 0 };

// The system clock. paramErr when outDateTime is NULL.
OSStatus GetUTCDateTime(UTCDateTime* outDateTime, OptionBits inOptions);

// Between UTCDateTime and seconds since 2001. A time before 1904 answers kUTCUnderflowErr,
// one past the 48-bit range kUTCOverflowErr.
OSStatus UCConvertUTCDateTimeToCFAbsoluteTime(const UTCDateTime* inDateTime, CFAbsoluteTime* outTime);
OSStatus UCConvertCFAbsoluteTimeToUTCDateTime(CFAbsoluteTime inTime, UTCDateTime* outDateTime);
