#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>

namespace Gx {

using CFUtils::CheckCreated;

namespace {

CFURLRef CreateFromPath(CFStringRef inPath, bool inIsDirectory, CFURLRef inBaseURL, CFURLPathStyle inPathStyle,
                        CFAllocatorRef inAllocator)
{
    if (inBaseURL == nullptr)
        return CheckCreated(CFURLCreateWithFileSystemPath(inAllocator, inPath, inPathStyle, inIsDirectory),
                            "CFURLCreateWithFileSystemPath failed");
    return CheckCreated(
        CFURLCreateWithFileSystemPathRelativeToBase(inAllocator, inPath, inPathStyle, inIsDirectory, inBaseURL),
        "CFURLCreateWithFileSystemPathRelativeToBase failed");
}

CFURLRef CreateFromRepresentation(const UInt8* inPath, CFIndex inLength, bool inIsDirectory, CFURLRef inBaseURL,
                                  CFAllocatorRef inAllocator)
{
    if (inBaseURL == nullptr)
        return CheckCreated(CFURLCreateFromFileSystemRepresentation(inAllocator, inPath, inLength, inIsDirectory),
                            "CFURLCreateFromFileSystemRepresentation failed");
    return CheckCreated(
        CFURLCreateFromFileSystemRepresentationRelativeToBase(inAllocator, inPath, inLength, inIsDirectory, inBaseURL),
        "CFURLCreateFromFileSystemRepresentationRelativeToBase failed");
}

}  // namespace

CFURL::CFURL(const FSRef& inRef, CFAllocatorRef inAllocator)
    : CFObject(CheckCreated(CFURLCreateFromFSRef(inAllocator, &inRef), "CFURLCreateFromFSRef failed"), false)
{
}

CFURL::CFURL(CFStringRef inURLString, CFURLRef inBaseURL, CFAllocatorRef inAllocator)
    : CFObject(CheckCreated(CFURLCreateWithString(inAllocator, inURLString, inBaseURL), "CFURLCreateWithString failed"),
               false)
{
}

CFURL::CFURL(const UInt8* inBytes, CFIndex inLength, CFStringEncoding inEncoding, CFURLRef inBaseURL,
             CFAllocatorRef inAllocator)
    : CFObject(CheckCreated(CFURLCreateWithBytes(inAllocator, inBytes, inLength, inEncoding, inBaseURL),
                            "CFURLCreateWithBytes failed"),
               false)
{
}

CFURL::CFURL(CFStringRef inPath, bool inIsDirectory, CFURLRef inBaseURL, CFURLPathStyle inPathStyle,
             CFAllocatorRef inAllocator)
    : CFObject(CreateFromPath(inPath, inIsDirectory, inBaseURL, inPathStyle, inAllocator), false)
{
}

CFURL::CFURL(const UInt8* inPath, CFIndex inLength, bool inIsDirectory, CFURLRef inBaseURL, CFAllocatorRef inAllocator)
    : CFObject(CreateFromRepresentation(inPath, inLength, inIsDirectory, inBaseURL, inAllocator), false)
{
}

CFData CFURL::GetAsData(bool inEscapeWhitespace, CFStringEncoding inEncoding, CFAllocatorRef inAllocator) const
{
    return CFData(CFURLCreateData(inAllocator, UseRef(), inEncoding, inEscapeWhitespace), false);
}

CFString CFURL::GetStrictPath(bool* outIsAbsolute) const
{
    Boolean isAbsolute = false;
    CFString path(CFURLCopyStrictPath(UseRef(), &isAbsolute), false);
    if (outIsAbsolute != nullptr)
        *outIsAbsolute = isAbsolute;
    return path;
}

void CFURL::AppendPathComponent(CFStringRef inComponent, bool inIsDirectory)
{
    CFURLRef url = UseRef();
    Replace(CFURLCreateCopyAppendingPathComponent(CFGetAllocator(url), url, inComponent, inIsDirectory),
            "CFURLCreateCopyAppendingPathComponent failed");
}

void CFURL::DeleteLastPathComponent()
{
    CFURLRef url = UseRef();
    Replace(CFURLCreateCopyDeletingLastPathComponent(CFGetAllocator(url), url),
            "CFURLCreateCopyDeletingLastPathComponent failed");
}

void CFURL::AppendPathExtension(CFStringRef inExtension)
{
    CFURLRef url = UseRef();
    Replace(CFURLCreateCopyAppendingPathExtension(CFGetAllocator(url), url, inExtension),
            "CFURLCreateCopyAppendingPathExtension failed");
}

void CFURL::DeletePathExtension()
{
    CFURLRef url = UseRef();
    Replace(CFURLCreateCopyDeletingPathExtension(CFGetAllocator(url), url),
            "CFURLCreateCopyDeletingPathExtension failed");
}

void CFURL::Replace(CFURLRef inEdited, const char* inMessage)
{
    CheckCreated(inEdited, inMessage);
    // An edit that changes nothing may answer the same URL with one more retain; attaching
    // it would keep that retain forever, so it is given back instead.
    if (HasSameRef(inEdited))
        CFRelease(inEdited);
    else
        AttachRef(inEdited, false);
}

}  // namespace Gx
