// The volume-lock decision the library's calls share.
#include "ExtFileUtilsInternal.h"

namespace ExtFileUtils {

OSErr VolumeLockStatus(UInt16 inVolumeFlags)
{
    if (inVolumeFlags & kFSVolFlagHardwareLockedMask)
        return wPrErr;
    if (inVolumeFlags & kFSVolFlagSoftwareLockedMask)
        return vLckdErr;
    return noErr;
}

}  // namespace ExtFileUtils
