// HSetVol: the default folder is the process's working folder, so that relative paths given
// to the port and to the system alike start there.
#include "FSItemTable.h"

#include <Carbon/FSErrno.h>
#include <Carbon/FilesExtras.h>
#include <Carbon/MacErrors.h>

#include <unistd.h>

using namespace carbon;

OSErr HSetVol(ConstStringPtr, FSVolumeRefNum inVolume, SInt32 inDirID)
{
    FSRef folder;
    ItemLocation location;
    OSErr status = RefOfNode(inVolume, UInt32(inDirID), &folder);
    if (status == noErr)
        status = LocateItem(&folder, location);
    if (status != noErr)
        return status;
    if (!location.IsDirectory())
        return dirNFErr;
    // The folder's own descriptor, so that a folder renamed since it was found is still the
    // one entered.
    return ::fchdir(location.Self()) == 0 ? noErr : LastStatus();
}
