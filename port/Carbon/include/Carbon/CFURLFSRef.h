// File URLs and File Manager references, converted into each other. These belong to CFURL
// on the original platform; here the FSRef lives with the File Manager, so they do too.
#pragma once

#include <Carbon/Files.h>
#include <CoreFoundation/CFURL.h>

// False for a URL that is not a file URL or names no existing item. The last component is
// followed when it is a symbolic link, as FSPathMakeRef does.
Boolean CFURLGetFSRef(CFURLRef inURL, FSRef* outRef);
// A file URL with an absolute path, a directory URL for a folder; NULL when the reference
// names nothing.
CFURLRef CFURLCreateFromFSRef(CFAllocatorRef inAllocator, const FSRef* inRef);
