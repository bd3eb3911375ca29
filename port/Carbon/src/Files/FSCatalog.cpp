// FSGetCatalogInfo and FSSetCatalogInfo.
#include "FSCatalog.h"

#include <Carbon/MacErrors.h>

using namespace carbon;

OSErr FSGetCatalogInfo(const FSRef* inRef, FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo* outCatalogInfo,
                       HFSUniStr255* outName, FSSpec* outFSSpec, FSRef* outParentRef)
{
    if (inRef == nullptr || (inWhichInfo != kFSCatInfoNone && outCatalogInfo == nullptr))
        return paramErr;
    if (inWhichInfo & ~kGettableBits)
        return errFSBadInfoBitmap;
    ItemLocation item;
    if (OSErr status = LocateItem(inRef, item); status != noErr)
        return status;
    if (outCatalogInfo)
        FillCatalogInfo(item, inWhichInfo, *outCatalogInfo);
    if (outName)
        FillName(item, *outName);
    if (outFSSpec)
        FillSpec(item, *outFSSpec);
    return outParentRef ? EnterParent(item, outParentRef) : noErr;
}

OSErr FSSetCatalogInfo(const FSRef* inRef, FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo* inCatalogInfo)
{
    if (inRef == nullptr || (inWhichInfo != kFSCatInfoNone && inCatalogInfo == nullptr))
        return paramErr;
    ItemLocation item;
    if (OSErr status = LocateItem(inRef, item); status != noErr)
        return status;
    return inWhichInfo == kFSCatInfoNone ? noErr : ApplyCatalogInfo(item, inWhichInfo, *inCatalogInfo);
}
