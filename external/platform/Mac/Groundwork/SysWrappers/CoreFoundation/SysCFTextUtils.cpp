#include <Groundwork/SysWrappers/CoreFoundation/SysCFTextUtils.h>

#include <Carbon/TextUtils.h>

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

CFString GetIndString(SInt16 inResourceID, SInt16 inIndex, CFStringEncoding inEncoding, CFAllocatorRef inAllocator)
{
    // The Resource Manager leaves the buffer alone when it finds nothing, so it starts empty.
    Str255 text;
    text[0] = 0;
    ::GetIndString(text, inResourceID, inIndex);
    return CFString(text, inEncoding, inAllocator);
}

}  // namespace Gx::CFUtils
