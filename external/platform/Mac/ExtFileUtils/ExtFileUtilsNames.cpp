// File specifications, POSIX paths, HFS names, file IDs and the default folder.
#include "ExtFileUtilsInternal.h"

#include <PortSupport/Owned.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace {

CFStringEncoding EncodingOf(TextEncoding inHint)
{
    return inHint == kTextEncodingUnknown ? CFStringGetSystemEncoding() : CFStringEncoding(inHint);
}

OSErr ChangeDirectory(const FSRef& inFolder)
{
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(&inFolder, kFSCatInfoVolume | kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr);
    return status == noErr ? HSetVol(nullptr, info.volume, SInt32(info.nodeID)) : status;
}

}  // namespace

OSErr FSRefMakeFSSpec(const FSRef* inRef, FSSpec* outSpec)
{
    if (outSpec == nullptr)
        return paramErr;
    return FSGetCatalogInfo(inRef, kFSCatInfoNone, nullptr, nullptr, outSpec, nullptr);
}

OSErr FSMakeFSRef(FSVolumeRefNum inVolume, SInt32 inDirID, ConstStr255Param inName, FSRef* outRef)
{
    if (outRef == nullptr)
        return paramErr;
    FSRefParam block{};
    block.ioVRefNum = inVolume;
    block.ioDirID = inDirID;
    block.ioNamePtr = inName;
    block.newRef = outRef;
    return PBMakeFSRefSync(&block);
}

OSStatus FSMakePath(SInt16 inVolume, SInt32 inDirID, ConstStr255Param inName, UInt8* outPath, UInt32 inMaxPathSize)
{
    if (outPath == nullptr)
        return paramErr;
    FSRef ref;
    OSErr status = FSMakeFSRef(inVolume, inDirID, inName, &ref);
    return status != noErr ? status : FSRefMakePath(&ref, outPath, inMaxPathSize);
}

OSStatus FSPathMakeFSSpec(const UInt8* inPath, FSSpec* outSpec, Boolean* outIsDirectory)
{
    if (inPath == nullptr || outSpec == nullptr)
        return paramErr;
    FSRef ref;
    OSStatus status = FSPathMakeRef(inPath, &ref, outIsDirectory);
    return status != noErr ? status : FSRefMakeFSSpec(&ref, outSpec);
}

OSErr UnicodeNameGetHFSName(UniCharCount inNameLength, const UniChar* inName, TextEncoding inTextEncodingHint,
                            Boolean inIsVolumeName, Str31 outHFSName)
{
    if ((inName == nullptr && inNameLength > 0) || outHFSName == nullptr)
        return paramErr;
    CFStringEncoding encoding = EncodingOf(inTextEncodingHint);
    if (!CFStringIsEncodingAvailable(encoding))
        return kTextUnsupportedEncodingErr;
    port::Owned<CFStringRef> name(CFStringCreateWithCharacters(kCFAllocatorDefault, inName, CFIndex(inNameLength)));
    if (!name)
        return memFullErr;
    const CFRange all = CFRangeMake(0, CFIndex(inNameLength));
    const CFIndex limit = inIsVolumeName ? 27 : 31;
    CFIndex bytes = 0;
    if (CFStringGetBytes(name.Get(), all, encoding, 0, false, nullptr, 0, &bytes) < all.length)
        return kTextUndefinedElementErr;
    if (bytes > limit)
        return errFSNameTooLong;
    CFStringGetBytes(name.Get(), all, encoding, 0, false, outHFSName + 1, limit, &bytes);
    outHFSName[0] = UInt8(bytes);
    return noErr;
}

OSErr HFSNameGetUnicodeName(ConstStr255Param inHFSName, TextEncoding inTextEncodingHint, HFSUniStr255* outName)
{
    if (inHFSName == nullptr || outName == nullptr)
        return paramErr;
    CFStringEncoding encoding = EncodingOf(inTextEncodingHint);
    if (!CFStringIsEncodingAvailable(encoding))
        return kTextUnsupportedEncodingErr;
    port::Owned<CFStringRef> name(CFStringCreateWithPascalString(kCFAllocatorDefault, inHFSName, encoding));
    if (!name)
        return kTextMalformedInputErr;
    CFIndex length = CFStringGetLength(name.Get());
    if (length > 255)
        return errFSNameTooLong;
    CFStringGetCharacters(name.Get(), CFRangeMake(0, length), outName->unicode);
    outName->length = UInt16(length);
    return noErr;
}

OSErr FSCreateFileIDRef(const FSRef* inRef, SInt32* outFileID)
{
    if (outFileID == nullptr)
        return paramErr;
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(inRef, kFSCatInfoNodeFlags | kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr);
    if (status != noErr)
        return status;
    if (info.nodeFlags & kFSNodeIsDirectoryMask)
        return notAFileErr;
    *outFileID = SInt32(info.nodeID);
    return noErr;
}

OSErr FSResolveFileIDRef(FSVolumeRefNum inVolume, SInt32 inFileID, FSRef* outRef)
{
    if (outRef == nullptr)
        return paramErr;
    Str63 name;
    HParamBlockRec block{};
    block.fidParam.ioNamePtr = name;
    block.fidParam.ioVRefNum = inVolume;
    block.fidParam.ioFileID = inFileID;
    OSErr status = PBResolveFileIDRefSync(&block);
    return status != noErr ? status : FSMakeFSRef(inVolume, block.fidParam.ioSrcDirID, name, outRef);
}

OSErr FSSetDefault(const FSRef* inNewDefault, FSRef* outOldDefault)
{
    if (inNewDefault == nullptr)
        return paramErr;
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(inNewDefault, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr);
    if (status != noErr)
        return status;
    if (!(info.nodeFlags & kFSNodeIsDirectoryMask))
        return dirNFErr;
    FSRef old;
    if (outOldDefault) {
        if (OSStatus current = FSPathMakeRef(reinterpret_cast<const UInt8*>("."), &old, nullptr); current != noErr)
            return OSErr(current);
    }
    if (status = ChangeDirectory(*inNewDefault); status != noErr)
        return status;
    if (outOldDefault)
        *outOldDefault = old;
    return noErr;
}

OSErr FSRestoreDefault(const FSRef* inOldDefault)
{
    if (inOldDefault == nullptr)
        return paramErr;
    return ChangeDirectory(*inOldDefault);
}
