// Stand-ins for three platform calls that cannot fail on this port when called as the file
// layer calls them: the fork names are constants, and the collator is built into ICU, so
// UCCompareTextDefault fails only when memory runs out while it opens one. This program
// links these in place of the port's, so that the file layer's reports of those failures
// can be seen; every other platform call is the real one.
#include <Carbon/Carbon.h>

OSStatus UCCompareTextDefault(UCCollateOptions, const UniChar*, UniCharCount, const UniChar*, UniCharCount, Boolean*,
                              SInt32*)
{
    return memFullErr;
}

OSErr FSGetDataForkName(HFSUniStr255*) { return paramErr; }

OSErr FSGetResourceForkName(HFSUniStr255*) { return paramErr; }
