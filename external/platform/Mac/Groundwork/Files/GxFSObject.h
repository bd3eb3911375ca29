// One file or folder of the file system, whether or not it exists yet: the item's own
// reference while it exists, else the reference of the folder it would be in and its name.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>

#include <Carbon/Files.h>
#include <Carbon/Finder.h>
#include <CoreFoundation/CFURL.h>

namespace Gx {

// The empty Pascal string. Given as the name beside a volume and a directory ID, it asks for
// the folder itself rather than for an item inside it.
inline constexpr UInt8 pString_Empty[1] = {0};

// The object looks at the disk only when it is built, when Update is called and when one of
// its own operations changes the disk (Rename, Delete, DeleteContainer); otherwise its state
// is what it was last found to be. Operations that need the item itself throw OSError
// errFSBadFSRef "File object has no FSRef" unless the state is ref_Exists; every platform
// failure becomes an OSError with the platform's status and "<call> failed".
class FSObject {
public:
    enum EState : SInt32 {
        ref_Invalid = 0,        // names nothing
        ref_Exists = 1,         // mFSRef is the item
        ref_ParentAndName = 2,  // mFSRef is the folder the item would be in, mName its name
    };

    FSObject() = default;
    // A reference that no longer names anything gives ref_Invalid.
    explicit FSObject(const FSRef& inRef);
    // An item of that name already in the folder gives ref_Exists.
    FSObject(const FSRef& inParentRef, const HFSUniStr255& inName);
    FSObject(const FSRef& inParentRef, const CFString& inName);
    // The folder given by volume and directory ID, and an item in it; an empty name or a
    // folder that cannot be found gives ref_Invalid.
    FSObject(FSVolumeRefNum inVolume, SInt32 inDirID, const HFSUniStr255& inName);
    FSObject(FSVolumeRefNum inVolume, SInt32 inDirID, const CFString& inName);
    // inEncoding is that of the FSSpec's Pascal name.
    FSObject(const FSSpec& inSpec, CFStringEncoding inEncoding);
    // A URL or path whose item is missing gives ref_ParentAndName when its folder exists; the
    // last path component is kept as the name even when the folder is missing too.
    explicit FSObject(CFURLRef inURL);
    FSObject(const CFString& inPath, CFURLPathStyle inPathStyle);
    FSObject(const CFString& inRelativePath, const FSRef& inBaseRef, CFURLPathStyle inPathStyle);
    FSObject(const FSObject&) = default;
    FSObject& operator=(const FSObject&) = default;
    virtual ~FSObject() = default;

    // Takes the reference as it is, without asking whether it still names anything.
    FSObject& operator=(const FSRef& inRef);

    const FSRef& UseRef() const;
    const FSRef& GetRef() const { return UseRef(); }
    // Explicit, so that comparing two objects with == never turns into comparing references,
    // which throws for an object that names a missing item.
    explicit operator FSRef() const { return UseRef(); }

    bool Exists() const { return mState == ref_Exists; }
    bool IsValid() const { return mState != ref_Invalid; }

    // 0 when both name the same item; errFSRefsDifferent for objects in different states and
    // for two missing items whose names differ (beyond letter case and the like). Two invalid
    // objects are equal. Results, not exceptions, except for a failing name comparison.
    OSStatus CompareTo(const FSObject& inOther) const;
    OSStatus CompareTo(const FSRef& inRef) const;
    bool IsEqualTo(const FSObject& inOther) const { return CompareTo(inOther) == noErr; }
    bool IsEqualTo(const FSRef& inRef) const { return CompareTo(inRef) == noErr; }

    // For an invalid object the string form throws "File object has an invalid FSRef" and the
    // record form "File object has no FSRef", both errFSBadFSRef.
    CFString GetName() const;
    void GetName(HFSUniStr255& outName) const;
    // An invalid object has no URL: an empty wrapper, and GetPath throws 'cfnr'. The URL of a
    // missing item is its escaped name relative to its folder's URL.
    CFURL GetURL() const;
    CFString GetPath(CFURLPathStyle inPathStyle = kCFURLPOSIXPathStyle) const;

    FSVolumeRefNum GetVolume() const;
    // A missing item's parent is the folder it would be in.
    void GetParent(FSRef& outParentRef) const;
    // Makes outParent name the parent (ref_Exists) and leaves its stored name alone.
    void GetParent(FSObject& outParent) const;
    SInt32 GetParentDirID() const;
    void GetFSSpec(FSSpec& outSpec, CFStringEncoding inEncoding = encoding_System) const;

    void GetCatalogInfo(FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo& outInfo) const;
    void SetCatalogInfo(FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo& inInfo);
    bool IsFolder() const;
    bool IsFile() const;

    // noErr, fLckdErr, wPrErr or vLckdErr as a result; other statuses throw.
    OSStatus CheckLock() const;
    // Writes only when the locked flag has to change.
    void SetIsLocked(bool inLocked);

    // Any pointer may be NULL.
    void GetFinderInfo(FinderInfo* outInfo, ExtendedFinderInfo* outExtendedInfo = nullptr,
                       bool* outIsDirectory = nullptr) const;
    UInt16 GetFinderFlags() const;
    void SetFinderInfo(const FinderInfo* inInfo, const ExtendedFinderInfo* inExtendedInfo = nullptr);
    // Sets inFlags when inSet is true, else clears them.
    void ChangeFinderFlags(bool inSet, UInt16 inFlags);

    // A missing item only changes the name it is known by; nothing happens on disk.
    void Rename(const HFSUniStr255& inName, TextEncoding inHint = kTextEncodingUnknown);
    void Rename(const CFString& inName, TextEncoding inHint = kTextEncodingUnknown);

    // Afterwards the object names what was there by folder and name (ref_ParentAndName), so
    // the item can be made again from it. Delete takes a file or an empty folder,
    // DeleteContainer a folder with everything in it.
    void Delete();
    void DeleteContainer();
    // Empties a folder; the object is unchanged.
    void DeleteContainerContents();

    // Looks at the disk again: a vanished item makes the object invalid, a missing item that
    // has appeared makes it exist, a missing item whose folder has gone makes it invalid.
    void Update();
    // Forgets the name; the reference bytes stay as they are.
    void Invalidate();

private:
    void InitFromURL(CFURLRef inURL);
    void InitFromVolDirName(FSVolumeRefNum inVolume, SInt32 inDirID, const HFSUniStr255& inName);
    void UpdateParentAndName();
    void BecomeParentAndName(const FSRef& inParentRef, const HFSUniStr255& inName);
    void DeleteWith(OSErr (*inDelete)(const FSRef*), const char* inMessage);

    FSRef mFSRef{};
    CFString mName;
    EState mState = ref_Invalid;
};

}  // namespace Gx
