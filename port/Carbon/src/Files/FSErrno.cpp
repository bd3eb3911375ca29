// errno values as File Manager statuses.

#include <Carbon/FSErrno.h>
#include <Carbon/MacErrors.h>

#include <cerrno>

namespace carbon {

OSErr StatusOfErrno(int inError)
{
    switch (inError) {
    case 0:
        return noErr;
    case ENOENT:
    case ELOOP:  // a symbolic link on the way that leads nowhere
        return fnfErr;
    case ENOTDIR:
        return dirNFErr;
    case EEXIST:
        return dupFNErr;
    case ENOTEMPTY:
    case EBUSY:
    case ETXTBSY:
        return fBsyErr;
    case EACCES:
        return afpAccessDenied;
    case EPERM:
        return permErr;
    case EROFS:
        return wPrErr;
    case ENOSPC:
        return dskFulErr;
    case EDQUOT:
        return errFSQuotaExceeded;
    case ENAMETOOLONG:
        return bdNamErr;
    case EXDEV:
        return diffVolErr;
    case EMFILE:
    case ENFILE:
        return tmfoErr;
    case EISDIR:
        return notAFileErr;
    case EFBIG:
    case EOVERFLOW:
        return fsDataTooBigErr;
    case EINVAL:
        return paramErr;
    case ENOMEM:
        return memFullErr;
    default:
        return ioErr;
    }
}

OSErr LastStatus() { return StatusOfErrno(errno); }

}  // namespace carbon
