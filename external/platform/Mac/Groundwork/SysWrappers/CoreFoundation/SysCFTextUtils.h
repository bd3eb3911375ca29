// Text support of the wrapper layer: the encoding that script information selects, and
// strings kept in 'STR#' resources.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <Carbon/TextCommon.h>

namespace Gx::CFUtils {

// OSError with the platform's status when the script information selects no encoding.
TextEncoding GetEncodingFromScriptCode(ScriptCode inScript, LangCode inLanguage = kTextLanguageDontCare,
                                       RegionCode inRegion = kTextRegionDontCare,
                                       ConstStr255Param inFontName = nullptr);

// The inIndex-th (from 1) string of 'STR#' resource inResourceID in the open resource files.
// A missing resource or index gives the empty string, not an error.
CFString GetIndString(SInt16 inResourceID, SInt16 inIndex, CFStringEncoding inEncoding = encoding_System,
                      CFAllocatorRef inAllocator = kCFAllocatorDefault);

}  // namespace Gx::CFUtils
