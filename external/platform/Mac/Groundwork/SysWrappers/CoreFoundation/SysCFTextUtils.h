// Text support of the wrapper layer: the encoding that script information selects.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <Carbon/TextCommon.h>

namespace Gx::CFUtils {

// OSError with the platform's status when the script information selects no encoding.
TextEncoding GetEncodingFromScriptCode(ScriptCode inScript, LangCode inLanguage = kTextLanguageDontCare,
                                       RegionCode inRegion = kTextRegionDontCare,
                                       ConstStr255Param inFontName = nullptr);

}  // namespace Gx::CFUtils
