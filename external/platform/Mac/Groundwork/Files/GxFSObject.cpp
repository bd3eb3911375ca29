#include <Groundwork/Files/GxFSObject.h>

#include <Groundwork/Files/GxFSUtils.h>

#include <ExtFileUtils/ExtFileUtils.h>

#include <Carbon/MacErrors.h>

namespace Gx {

using FSUtils::ThrowIfFailed;

namespace {

[[noreturn]] void ThrowNoFSRef() { OSError::Throw(errFSBadFSRef, "File object has no FSRef", sourceLocation_Nothing); }

}  // namespace

FSObject::FSObject(const FSRef& inRef) : mFSRef(inRef), mState(ref_Exists) { Update(); }

FSObject::FSObject(const FSRef& inParentRef, const HFSUniStr255& inName)
    : mFSRef(inParentRef), mName(inName), mState(ref_ParentAndName)
{
    Update();
}

FSObject::FSObject(const FSRef& inParentRef, const CFString& inName)
    : mFSRef(inParentRef), mName(inName), mState(ref_ParentAndName)
{
    Update();
}

FSObject::FSObject(FSVolumeRefNum inVolume, SInt32 inDirID, const HFSUniStr255& inName)
{
    InitFromVolDirName(inVolume, inDirID, inName);
}

FSObject::FSObject(FSVolumeRefNum inVolume, SInt32 inDirID, const CFString& inName)
{
    HFSUniStr255 name;
    FSUtils::StringToHFSUniStr(inName, name);
    InitFromVolDirName(inVolume, inDirID, name);
}

FSObject::FSObject(const FSSpec& inSpec, CFStringEncoding inEncoding)
{
    if (FSpMakeFSRef(&inSpec, &mFSRef) == noErr) {
        mState = ref_Exists;
        return;
    }
    if (inSpec.name[0] == 0)
        return;
    if (FSUtils::MakeFolderRef(inSpec.vRefNum, inSpec.parID, mFSRef) != noErr)
        return;
    mName = CFString(inSpec.name, inEncoding);
    mState = ref_ParentAndName;
}

FSObject::FSObject(CFURLRef inURL) { InitFromURL(inURL); }

FSObject::FSObject(const CFString& inPath, CFURLPathStyle inPathStyle)
{
    if (!inPath.IsValid())
        CFUtils::ThrowNilReference();
    CFURL url(inPath, false, nullptr, inPathStyle);
    InitFromURL(url.UseRef());
}

FSObject::FSObject(const CFString& inRelativePath, const FSRef& inBaseRef, CFURLPathStyle inPathStyle)
{
    CFURL base(inBaseRef);
    if (!base.IsValid() || !inRelativePath.IsValid())
        CFUtils::ThrowNilReference();
    CFURL url(inRelativePath, false, base, inPathStyle);
    InitFromURL(url.UseRef());
}

FSObject& FSObject::operator=(const FSRef& inRef)
{
    mName.FreeRef();
    mFSRef = inRef;
    mState = ref_Exists;
    return *this;
}

const FSRef& FSObject::UseRef() const
{
    if (mState != ref_Exists)
        ThrowNoFSRef();
    return mFSRef;
}

OSStatus FSObject::CompareTo(const FSObject& inOther) const
{
    if (mState != inOther.mState)
        return errFSRefsDifferent;
    if (mState == ref_Invalid)
        return noErr;
    OSStatus status = FSCompareFSRefs(&mFSRef, &inOther.mFSRef);
    if (status != noErr || mState == ref_Exists)
        return status;
    return FSUtils::FSNamesAreEqual(mName, inOther.mName) ? noErr : OSStatus(errFSRefsDifferent);
}

OSStatus FSObject::CompareTo(const FSRef& inRef) const
{
    if (mState != ref_Exists)
        return errFSRefsDifferent;
    return FSCompareFSRefs(&mFSRef, &inRef);
}

CFString FSObject::GetName() const
{
    if (mState == ref_Invalid)
        OSError::Throw(errFSBadFSRef, "File object has an invalid FSRef", sourceLocation_Nothing);
    if (mState == ref_ParentAndName)
        return mName;
    HFSUniStr255 name;
    ThrowIfFailed(FSGetFileDirName(&mFSRef, &name), "FSGetFileDirName failed");
    return CFString(name);
}

void FSObject::GetName(HFSUniStr255& outName) const
{
    switch (mState) {
    case ref_Exists:
        ThrowIfFailed(FSGetFileDirName(&mFSRef, &outName), "FSGetFileDirName failed");
        return;
    case ref_ParentAndName:
        FSUtils::StringToHFSUniStr(mName, outName);
        return;
    case ref_Invalid:
        break;
    }
    ThrowNoFSRef();
}

CFURL FSObject::GetURL() const
{
    switch (mState) {
    case ref_Exists:
        return CFURL(mFSRef);
    case ref_ParentAndName:
        break;
    case ref_Invalid:
        return CFURL();
    }
    CFURL parent(mFSRef);
    // Escaped, so that a name holding '%', a space or a non-ASCII character is read back as
    // exactly that name relative to the folder.
    CFString escaped(CFURLCreateStringByAddingPercentEscapes(kCFAllocatorDefault, mName.UseRef(), nullptr, nullptr,
                                                             kCFStringEncodingUTF8),
                     false);
    return CFURL(escaped.UseRef(), parent);
}

CFString FSObject::GetPath(CFURLPathStyle inPathStyle) const
{
    CFURL url = GetURL();
    // The URL of a missing item is relative to its folder; the path must be whole.
    CFURL absolute(CFURLCopyAbsoluteURL(url.UseRef()), false);
    return absolute.GetFileSystemPath(inPathStyle);
}

FSVolumeRefNum FSObject::GetVolume() const
{
    FSVolumeRefNum volume = 0;
    ThrowIfFailed(FSGetVRefNum(&UseRef(), &volume), "FSGetVRefNum failed");
    return volume;
}

void FSObject::GetParent(FSRef& outParentRef) const
{
    switch (mState) {
    case ref_Exists:
        ThrowIfFailed(FSGetParentRef(&mFSRef, &outParentRef), "FSGetParentRef failed");
        return;
    case ref_ParentAndName:
        outParentRef = mFSRef;
        return;
    case ref_Invalid:
        break;
    }
    ThrowNoFSRef();
}

void FSObject::GetParent(FSObject& outParent) const
{
    FSRef parent;
    GetParent(parent);
    outParent.mFSRef = parent;
    outParent.mState = ref_Exists;
}

SInt32 FSObject::GetParentDirID() const
{
    FSRef parent;
    GetParent(parent);
    FSCatalogInfo info;
    ThrowIfFailed(FSGetCatalogInfo(&parent, kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr),
                  "FSGetCatalogInfo failed");
    return SInt32(info.nodeID);
}

void FSObject::GetFSSpec(FSSpec& outSpec, CFStringEncoding inEncoding) const
{
    if (mState == ref_Invalid)
        ThrowNoFSRef();
    if (mState == ref_Exists) {
        ThrowIfFailed(FSGetCatalogInfo(&mFSRef, kFSCatInfoNone, nullptr, nullptr, &outSpec, nullptr),
                      "FSGetCatalogInfo failed");
        return;
    }
    FSCatalogInfo info;
    ThrowIfFailed(FSGetCatalogInfo(&mFSRef, kFSCatInfoVolume | kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr),
                  "FSGetCatalogInfo failed");
    outSpec.vRefNum = info.volume;
    outSpec.parID = SInt32(info.nodeID);
    // A name that does not fit a specification's 63 bytes is left empty rather than cut, which
    // would name some other item.
    if (!mName.GetPascalString(outSpec.name, sizeof outSpec.name, inEncoding))
        outSpec.name[0] = 0;
}

void FSObject::GetCatalogInfo(FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo& outInfo) const
{
    ThrowIfFailed(FSGetCatalogInfo(&UseRef(), inWhichInfo, &outInfo, nullptr, nullptr, nullptr),
                  "FSGetCatalogInfo failed");
}

void FSObject::SetCatalogInfo(FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo& inInfo)
{
    ThrowIfFailed(FSSetCatalogInfo(&UseRef(), inWhichInfo, &inInfo), "FSSetCatalogInfo failed");
}

bool FSObject::IsFolder() const
{
    FSCatalogInfo info;
    GetCatalogInfo(kFSCatInfoNodeFlags, info);
    return (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
}

bool FSObject::IsFile() const { return !IsFolder(); }

OSStatus FSObject::CheckLock() const
{
    OSStatus status = FSCheckLock(&UseRef());
    switch (status) {
    case noErr:
    case wPrErr:
    case fLckdErr:
    case vLckdErr:
        return status;
    default:
        OSError::Throw(status, "FSCheckLock failed", sourceLocation_Nothing);
    }
}

void FSObject::SetIsLocked(bool inLocked)
{
    FSCatalogInfo info;
    GetCatalogInfo(kFSCatInfoNodeFlags, info);
    if (((info.nodeFlags & kFSNodeLockedMask) != 0) == inLocked)
        return;
    if (inLocked)
        info.nodeFlags |= kFSNodeLockedMask;
    else
        info.nodeFlags &= UInt16(~kFSNodeLockedMask);
    SetCatalogInfo(kFSCatInfoNodeFlags, info);
}

void FSObject::GetFinderInfo(FinderInfo* outInfo, ExtendedFinderInfo* outExtendedInfo, bool* outIsDirectory) const
{
    Boolean isDirectory = false;
    ThrowIfFailed(FSGetFinderInfo(&UseRef(), outInfo, outExtendedInfo, outIsDirectory ? &isDirectory : nullptr),
                  "FSGetFinderInfo failed");
    if (outIsDirectory)
        *outIsDirectory = isDirectory != 0;
}

UInt16 FSObject::GetFinderFlags() const
{
    FinderInfo info;
    GetFinderInfo(&info);
    return info.finderFlags;
}

void FSObject::SetFinderInfo(const FinderInfo* inInfo, const ExtendedFinderInfo* inExtendedInfo)
{
    ThrowIfFailed(FSSetFinderInfo(&UseRef(), inInfo, inExtendedInfo), "FSSetFinderInfo failed");
}

void FSObject::ChangeFinderFlags(bool inSet, UInt16 inFlags)
{
    ThrowIfFailed(FSChangeFinderFlags(&UseRef(), inSet, inFlags), "FSChangeFinderFlags failed");
}

void FSObject::Rename(const HFSUniStr255& inName, TextEncoding inHint)
{
    switch (mState) {
    case ref_Exists: {
        FSRef renamed;
        ThrowIfFailed(FSRenameUnicode(&mFSRef, inName.length, inName.unicode, inHint, &renamed),
                      "FSRenameUnicode failed");
        mFSRef = renamed;
        return;
    }
    case ref_ParentAndName:
        mName = CFString(inName);
        return;
    case ref_Invalid:
        break;
    }
    ThrowNoFSRef();
}

void FSObject::Rename(const CFString& inName, TextEncoding inHint)
{
    HFSUniStr255 name;
    FSUtils::StringToHFSUniStr(inName, name);
    Rename(name, inHint);
}

void FSObject::Delete() { DeleteWith(FSDeleteObject, "FSDeleteObject failed"); }

void FSObject::DeleteContainer() { DeleteWith(FSDeleteContainer, "FSDeleteContainer failed"); }

void FSObject::DeleteContainerContents()
{
    ThrowIfFailed(FSDeleteContainerContents(&UseRef()), "FSDeleteContainerContents failed");
}

void FSObject::Update()
{
    switch (mState) {
    case ref_Exists:
        if (FSGetCatalogInfo(&mFSRef, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr) != noErr)
            Invalidate();
        return;
    case ref_ParentAndName:
        UpdateParentAndName();
        return;
    case ref_Invalid:
        return;
    }
}

void FSObject::Invalidate()
{
    mName.FreeRef();
    mState = ref_Invalid;
}

void FSObject::InitFromURL(CFURLRef inURL)
{
    if (inURL == nullptr)
        return;
    if (CFURLGetFSRef(inURL, &mFSRef)) {
        mState = ref_Exists;
        return;
    }
    // The name is kept from here on even when the folder turns out to be missing too.
    mName = CFString(CFURLCopyLastPathComponent(inURL), false);
    if (!mName.IsValid())
        return;
    CFURL parent(inURL, true);
    parent.DeleteLastPathComponent();
    if (parent.GetFSRef(mFSRef))
        mState = ref_ParentAndName;
}

void FSObject::InitFromVolDirName(FSVolumeRefNum inVolume, SInt32 inDirID, const HFSUniStr255& inName)
{
    // An empty name would make the object the folder itself, which is not what was asked for.
    if (inName.length == 0)
        return;
    FSRef folder;
    if (FSUtils::MakeFolderRef(inVolume, inDirID, folder) != noErr)
        return;
    if (FSMakeFSRefUnicode(&folder, inName.length, inName.unicode, kTextEncodingUnicodeDefault, &mFSRef) == noErr) {
        mState = ref_Exists;
        return;
    }
    BecomeParentAndName(folder, inName);
}

void FSObject::UpdateParentAndName()
{
    HFSUniStr255 name;
    FSUtils::StringToHFSUniStr(mName, name);
    if (name.length > 0) {
        FSRef child;
        if (FSMakeFSRefUnicode(&mFSRef, name.length, name.unicode, kTextEncodingUnicodeDefault, &child) == noErr) {
            *this = child;
            return;
        }
        if (FSGetCatalogInfo(&mFSRef, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr) == noErr)
            return;
    }
    Invalidate();
}

void FSObject::BecomeParentAndName(const FSRef& inParentRef, const HFSUniStr255& inName)
{
    mName = CFString(inName);
    mFSRef = inParentRef;
    mState = ref_ParentAndName;
}

void FSObject::DeleteWith(OSErr (*inDelete)(const FSRef*), const char* inMessage)
{
    const FSRef& item = UseRef();
    HFSUniStr255 name;
    FSRef parent;
    ThrowIfFailed(FSGetCatalogInfo(&item, kFSCatInfoNone, nullptr, &name, nullptr, &parent), "FSGetCatalogInfo failed");
    // Made before the item goes, so that nothing can fail between deleting it and
    // describing what was there.
    CFString oldName(name);
    ThrowIfFailed(inDelete(&item), inMessage);
    mName = oldName;
    mFSRef = parent;
    mState = ref_ParentAndName;
}

}  // namespace Gx
