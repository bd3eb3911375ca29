// Volumes, and the accounts that own items on them.
#include "ExtFileUtilsInternal.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

OSErr CheckVolume(FSVolumeRefNum inVolume)
{
    return FSGetVolumeInfo(inVolume, 0, nullptr, kFSVolInfoNone, nullptr, nullptr, nullptr);
}

}  // namespace

OSErr FSGetVolParms(FSVolumeRefNum inVolume, UInt32 inBufferSize, GetVolParmsInfoBuffer* outInfo,
                    UInt32* outActualInfoSize)
{
    if (outInfo == nullptr || outActualInfoSize == nullptr)
        return paramErr;
    if (OSStatus status = FSGetVolumeParms(inVolume, outInfo, inBufferSize); status != noErr)
        return OSErr(status);
    *outActualInfoSize = std::min<UInt32>(inBufferSize, sizeof(GetVolParmsInfoBuffer));
    return noErr;
}

OSErr FSGetVInfo(FSVolumeRefNum inVolume, HFSUniStr255* outVolumeName, UInt64* outFreeBytes, UInt64* outTotalBytes)
{
    FSVolumeInfo info;
    OSErr status = FSGetVolumeInfo(inVolume, 0, nullptr, kFSVolInfoSizes, &info, outVolumeName, nullptr);
    if (status != noErr)
        return status;
    if (outFreeBytes)
        *outFreeBytes = info.freeBytes;
    if (outTotalBytes)
        *outTotalBytes = info.totalBytes;
    return noErr;
}

OSErr FSGetVolFileSystemID(FSVolumeRefNum inVolume, UInt16* outFileSystemID, UInt16* outSignature)
{
    FSVolumeInfo info;
    OSErr status = FSGetVolumeInfo(inVolume, 0, nullptr, kFSVolInfoFSInfo, &info, nullptr, nullptr);
    if (status != noErr)
        return status;
    if (outFileSystemID)
        *outFileSystemID = info.filesystemID;
    if (outSignature)
        *outSignature = info.signature;
    return noErr;
}

OSErr FSGetMountedVolumes(FSRef*** outVolumeRefsHandle, ItemCount* outVolumeCount)
{
    if (outVolumeRefsHandle == nullptr || outVolumeCount == nullptr)
        return paramErr;
    *outVolumeRefsHandle = nullptr;
    *outVolumeCount = 0;
    std::vector<FSRef> roots;
    FSRef root;
    OSErr status;
    while ((status = FSGetVolumeInfo(kFSInvalidVolumeRefNum, roots.size() + 1, nullptr, kFSVolInfoNone, nullptr,
                                     nullptr, &root)) == noErr)
        roots.push_back(root);
    if (status != nsvErr)
        return status;
    Handle refs = NewHandle(Size(roots.size() * sizeof(FSRef)));
    if (refs == nullptr)
        return memFullErr;
    std::memcpy(*refs, roots.data(), roots.size() * sizeof(FSRef));
    *outVolumeRefsHandle = reinterpret_cast<FSRef**>(refs);
    *outVolumeCount = roots.size();
    return noErr;
}

// Linux volumes know owners and permissions, not the access privileges of shared folders,
// and there is no record from which a volume could be mounted again: these answer that the
// volume is not of a kind that supports the request, once the arguments have been checked.

OSErr FSGetDirAccess(const FSRef* inRef, SInt32* outOwnerID, SInt32* outGroupID, SInt32* outAccessRights)
{
    if (outOwnerID == nullptr || outGroupID == nullptr || outAccessRights == nullptr)
        return paramErr;
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr);
    return status != noErr ? status : OSErr(wrgVolTypErr);
}

OSErr FSSetDirAccess(const FSRef* inRef, SInt32, SInt32, SInt32)
{
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr);
    return status != noErr ? status : OSErr(wrgVolTypErr);
}

OSErr FSGetVolMountInfoSize(FSVolumeRefNum inVolume, UInt16* outSize)
{
    if (outSize == nullptr)
        return paramErr;
    OSErr status = CheckVolume(inVolume);
    return status != noErr ? status : OSErr(wrgVolTypErr);
}

OSErr FSGetVolMountInfo(FSVolumeRefNum inVolume, void* outVolMountInfo)
{
    if (outVolMountInfo == nullptr)
        return paramErr;
    OSErr status = CheckVolume(inVolume);
    return status != noErr ? status : OSErr(wrgVolTypErr);
}

OSErr FSVolumeMount(const void* inVolMountInfo, FSVolumeRefNum* outVolume)
{
    if (inVolMountInfo == nullptr || outVolume == nullptr)
        return paramErr;
    return wrgVolTypErr;
}

OSErr FSMapID(FSVolumeRefNum inVolume, SInt32 inID, SInt16 inObjType, Str31 outName)
{
    if (outName == nullptr || (inObjType != kOwnerID2Name && inObjType != kGroupID2Name))
        return paramErr;
    HParamBlockRec block{};
    block.objParam.ioVRefNum = inVolume;
    block.objParam.ioObjType = inObjType;
    block.objParam.ioObjNamePtr = outName;
    block.objParam.ioObjID = inID;
    return PBHMapIDSync(&block);
}

OSErr FSMapName(FSVolumeRefNum inVolume, ConstStr255Param inName, SInt16 inObjType, SInt32* outID)
{
    if (inName == nullptr || outID == nullptr || (inObjType != kOwnerName2ID && inObjType != kGroupName2ID))
        return paramErr;
    HParamBlockRec block{};
    block.objParam.ioVRefNum = inVolume;
    block.objParam.ioObjType = inObjType;
    block.objParam.ioObjNamePtr = const_cast<StringPtr>(inName);  // only read by this request
    OSErr status = PBHMapNameSync(&block);
    if (status == noErr)
        *outID = block.objParam.ioObjID;
    return status;
}
