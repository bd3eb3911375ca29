// What the library's files share inside the extended file utilities: the includes every one
// needs, the catalog-information mask built from the results a caller asked for, and the
// volume-lock decision, kept apart from the calls that feed it so that it can be tested.
#pragma once

#include <Carbon/FSErrno.h>

#include <ExtFileUtils/ExtFileUtils.h>

namespace ExtFileUtils {

// The catalog-information bit for a result the caller asked for, 0 for one it did not.
constexpr FSCatalogInfoBitmap InfoIf(const void* inResult, FSCatalogInfoBitmap inBit)
{
    return inResult != nullptr ? inBit : kFSCatInfoNone;
}

// What a volume's flags say about writing to it: wPrErr, vLckdErr or 0, the hardware lock
// looked at first.
OSErr VolumeLockStatus(UInt16 inVolumeFlags);

}  // namespace ExtFileUtils
