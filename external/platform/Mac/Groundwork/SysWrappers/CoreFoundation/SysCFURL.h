// The owning wrapper of a URL: creation from text, bytes, paths and file references, the
// URL's components, and path edits that replace the URL held by a new one.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFData.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFObject.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <Carbon/CFURLFSRef.h>
#include <CoreFoundation/CFURL.h>

namespace Gx {

// Creating constructors and path edits throw RuntimeError 'cfcr' when the platform answers
// NULL; a component the URL lacks comes back as an empty wrapper.
class CFURL : public CFObject<CFURLRef> {
public:
    CFURL() = default;
    CFURL(CFURLRef inRef, bool inRetain) : CFObject(inRef, inRetain) {}
    CFURL(const CFURL&) = default;
    CFURL& operator=(const CFURL&) = default;
    ~CFURL() override = default;

    explicit CFURL(const FSRef& inRef, CFAllocatorRef inAllocator = kCFAllocatorDefault);
    CFURL(CFStringRef inURLString, CFURLRef inBaseURL, CFAllocatorRef inAllocator = kCFAllocatorDefault);
    CFURL(const UInt8* inBytes, CFIndex inLength, CFStringEncoding inEncoding, CFURLRef inBaseURL,
          CFAllocatorRef inAllocator = kCFAllocatorDefault);
    // Relative to inBaseURL when one is given, else to the current folder.
    CFURL(CFStringRef inPath, bool inIsDirectory, CFURLRef inBaseURL, CFURLPathStyle inPathStyle,
          CFAllocatorRef inAllocator = kCFAllocatorDefault);
    CFURL(const UInt8* inPath, CFIndex inLength, bool inIsDirectory, CFURLRef inBaseURL,
          CFAllocatorRef inAllocator = kCFAllocatorDefault);

    // The URL's own text in the encoding. Unchecked: NULL from the platform is an empty wrapper.
    CFData GetAsData(bool inEscapeWhitespace, CFStringEncoding inEncoding = kCFStringEncodingUTF8,
                     CFAllocatorRef inAllocator = kCFAllocatorDefault) const;
    CFString GetString() const { return CFString(CFURLGetString(UseRef()), true); }
    // Empty for an absolute URL.
    CFURL GetBaseURL() const { return CFURL(CFURLGetBaseURL(UseRef()), true); }

    bool CanBeDecomposed() const { return CFURLCanBeDecomposed(UseRef()); }
    bool HasDirectoryPath() const { return CFURLHasDirectoryPath(UseRef()); }
    SInt32 GetPortNumber() const { return CFURLGetPortNumber(UseRef()); }
    // False when the URL names no existing item.
    bool GetFSRef(FSRef& outRef) const { return CFURLGetFSRef(UseRef(), &outRef); }

    CFString GetScheme() const { return CFString(CFURLCopyScheme(UseRef()), false); }
    CFString GetNetLocation() const { return CFString(CFURLCopyNetLocation(UseRef()), false); }
    CFString GetPath() const { return CFString(CFURLCopyPath(UseRef()), false); }
    CFString GetResourceSpecifier() const { return CFString(CFURLCopyResourceSpecifier(UseRef()), false); }
    CFString GetHostName() const { return CFString(CFURLCopyHostName(UseRef()), false); }
    CFString GetUserName() const { return CFString(CFURLCopyUserName(UseRef()), false); }
    CFString GetPassword() const { return CFString(CFURLCopyPassword(UseRef()), false); }
    CFString GetLastPathComponent() const { return CFString(CFURLCopyLastPathComponent(UseRef()), false); }
    CFString GetPathExtension() const { return CFString(CFURLCopyPathExtension(UseRef()), false); }
    // outIsAbsolute (may be NULL) says whether the path started with '/'.
    CFString GetStrictPath(bool* outIsAbsolute) const;
    CFString GetFileSystemPath(CFURLPathStyle inPathStyle) const
    {
        return CFString(CFURLCopyFileSystemPath(UseRef(), inPathStyle), false);
    }
    CFString GetParameterString(CFStringRef inCharactersToLeaveEscaped) const
    {
        return CFString(CFURLCopyParameterString(UseRef(), inCharactersToLeaveEscaped), false);
    }
    CFString GetQueryString(CFStringRef inCharactersToLeaveEscaped) const
    {
        return CFString(CFURLCopyQueryString(UseRef(), inCharactersToLeaveEscaped), false);
    }
    CFString GetFragment(CFStringRef inCharactersToLeaveEscaped) const
    {
        return CFString(CFURLCopyFragment(UseRef(), inCharactersToLeaveEscaped), false);
    }

    // Each made with the URL's own allocator. A failed edit throws and leaves the URL as it was.
    void AppendPathComponent(CFStringRef inComponent, bool inIsDirectory);
    void DeleteLastPathComponent();
    void AppendPathExtension(CFStringRef inExtension);
    void DeletePathExtension();

private:
    void Replace(CFURLRef inEdited, const char* inMessage);
};

}  // namespace Gx
