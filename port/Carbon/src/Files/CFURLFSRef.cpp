// File URLs to and from File Manager references.
#include "FSItemTable.h"

#include <Carbon/CFURLFSRef.h>

#include <limits.h>

using namespace carbon;

Boolean CFURLGetFSRef(CFURLRef inURL, FSRef* outRef)
{
    if (inURL == nullptr || outRef == nullptr)
        return false;
    UInt8 path[PATH_MAX];
    if (!CFURLGetFileSystemRepresentation(inURL, true, path, sizeof path))
        return false;
    return FSPathMakeRef(path, outRef, nullptr) == noErr;
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef inAllocator, const FSRef* inRef)
{
    ItemLocation item;
    if (inRef == nullptr || LocateItem(inRef, item) != noErr)
        return nullptr;
    std::string path = CurrentPath(item);
    if (path.empty())
        return nullptr;
    return CFURLCreateFromFileSystemRepresentation(inAllocator, reinterpret_cast<const UInt8*>(path.data()),
                                                   CFIndex(path.size()), item.IsDirectory());
}
