#include <Groundwork/SysWrappers/CoreFoundation/SysCFTextUtils.h>

namespace Gx::CFUtils {

TextEncoding GetEncodingFromScriptCode(ScriptCode inScript, LangCode inLanguage, RegionCode inRegion,
                                       ConstStr255Param inFontName)
{
    TextEncoding encoding = kTextEncodingUnknown;
    OSStatus status = UpgradeScriptInfoToTextEncoding(inScript, inLanguage, inRegion, inFontName, &encoding);
    if (status != noErr)
        OSError::Throw(status, "UpgradeScriptInfoToTextEncoding failed", sourceLocation_Nothing);
    return encoding;
}

}  // namespace Gx::CFUtils
