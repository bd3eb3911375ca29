// FSFindFolder: the folder's location, created on request, as a File Manager reference.
#include "FolderLocations.h"

#include <Carbon/Folders.h>
#include <Carbon/FSErrno.h>
#include <Carbon/MacErrors.h>

#include <sys/stat.h>

#include <cerrno>

using carbon::FolderDomain;
using carbon::FolderLocation;

namespace {

std::optional<FolderDomain> DomainOf(FSVolumeRefNum inVRefNum)
{
    switch (inVRefNum) {
    case kUserDomain:
    case kOnAppropriateDisk:
    case kOnSystemDisk:
        return FolderDomain::User;
    case kLocalDomain:
    case kSystemDomain:
        return FolderDomain::Installation;
    default:
        return std::nullopt;
    }
}

bool IsFolder(const std::string& inPath)
{
    struct stat status;
    return ::stat(inPath.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// mkdir -p: each missing folder on the way is made with inMode.
OSErr MakeFolders(const std::string& inPath, mode_t inMode)
{
    for (std::size_t end = inPath.find('/', 1);; end = inPath.find('/', end + 1)) {
        std::string folder = inPath.substr(0, end);
        if (!folder.empty() && folder.back() != '/' && !IsFolder(folder) && ::mkdir(folder.c_str(), inMode) != 0 &&
            errno != EEXIST)
            return carbon::LastStatus();
        if (end == std::string::npos)
            break;
    }
    return IsFolder(inPath) ? OSErr(noErr) : OSErr(errFSNotAFolder);
}

OSErr Create(const FolderLocation& inLocation)
{
    if (IsFolder(inLocation.path))
        return noErr;
    if (OSErr status = MakeFolders(inLocation.base, inLocation.baseMode); status != noErr)
        return status;
    return MakeFolders(inLocation.path, inLocation.mode);
}

}  // namespace

OSErr FSFindFolder(FSVolumeRefNum inVRefNum, OSType inFolderType, Boolean inCreateFolder, FSRef* outFoundRef)
{
    if (outFoundRef == nullptr)
        return paramErr;
    std::optional<FolderDomain> domain = DomainOf(inVRefNum);
    std::optional<FolderLocation> location = domain ? carbon::LocateFolder(*domain, inFolderType) : std::nullopt;
    if (!location)
        return fnfErr;
    if (inCreateFolder) {
        if (OSErr status = Create(*location); status != noErr)
            return status;
    } else if (!IsFolder(location->path)) {
        return fnfErr;
    }
    return OSErr(FSPathMakeRef(reinterpret_cast<const UInt8*>(location->path.c_str()), outFoundRef, nullptr));
}
