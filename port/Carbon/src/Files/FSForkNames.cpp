// The names by which the fork calls know the data and resource forks.
#include "FSNames.h"

#include <Carbon/MacErrors.h>

using namespace carbon;

OSErr FSGetDataForkName(HFSUniStr255* outDataForkName)
{
    if (outDataForkName == nullptr)
        return paramErr;
    outDataForkName->length = 0;
    return noErr;
}

OSErr FSGetResourceForkName(HFSUniStr255* outResourceForkName)
{
    if (outResourceForkName == nullptr)
        return paramErr;
    SetHFSName(kResourceForkName, *outResourceForkName);
    return noErr;
}
