// What the platform services hand out on this platform: file objects and strings of the
// wrapper layer.
#pragma once

#include <Groundwork/Files/GxFSObject.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

namespace kvx {

using FileObject = Gx::FSObject;
using StringObject = Gx::CFString;

}  // namespace kvx
