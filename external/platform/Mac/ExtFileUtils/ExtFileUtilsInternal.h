// Inside the extended file utilities: the decisions kept apart from the calls that feed them,
// so that each can be exercised directly, and the helpers the library's files share.
#pragma once

#include <Carbon/FSErrno.h>

#include <ExtFileUtils/ExtFileUtils.h>

#include <string>

namespace ExtFileUtils {

// The catalog-information bit for a result the caller asked for, 0 for one it did not.
constexpr FSCatalogInfoBitmap InfoIf(const void* inResult, FSCatalogInfoBitmap inBit)
{
    return inResult != nullptr ? inBit : kFSCatInfoNone;
}

// What a volume's flags say about writing to it: wPrErr, vLckdErr or 0, the hardware lock
// looked at first.
OSErr VolumeLockStatus(UInt16 inVolumeFlags);

// FSBumpDate with the clock given, so that "now" can be made to equal the stored date.
using Clock = OSStatus (*)(UTCDateTime* outDateTime, OptionBits inOptions);
OSErr BumpDateWithClock(const FSRef* inRef, Clock inClock);

// GetTempBuffer's sizes: the first one tried for a request, and the one tried after it when
// the first cannot be had.
ByteCount RoundedTempBufferSize(ByteCount inRequestedSize);
ByteCount FallbackTempBufferSize(UInt64 inFreeMemory, UInt64 inLargestBlock);

// Exchanges two files' names by moves and renames, for volumes that cannot exchange them in
// one step. Each reference keeps naming its own contents.
OSErr ExchangeByRenames(const FSRef* inSourceRef, const FSRef* inDestRef);

// An item's absolute path, empty when it has none that fits.
std::string PathOf(const FSRef& inRef);

}  // namespace ExtFileUtils
