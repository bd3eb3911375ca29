// Locations of files and network resources: immutable URLs, optionally relative to a base
// URL, with their components, conversions to and from file-system paths, path edits and
// percent escapes.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

using CFURLRef = const struct __CFURL*;

enum CFURLPathStyle : CFIndex {
    kCFURLPOSIXPathStyle = 0,
    kCFURLHFSPathStyle = 1,  // "Volume:folder:file"
    kCFURLWindowsPathStyle = 2,
};

CFTypeID CFURLGetTypeID();

// Creating URLs from text. A string with a character that URLs do not allow (a space, a
// non-ASCII letter, a second '#') or a '%' not followed by two hex digits gives NULL. A string
// with a scheme ignores the base URL.
CFURLRef CFURLCreateWithString(CFAllocatorRef inAllocator, CFStringRef inURLString, CFURLRef inBaseURL);
// The bytes are text in inEncoding, which also decides how the URL's percent escapes read.
CFURLRef CFURLCreateWithBytes(CFAllocatorRef inAllocator, const UInt8* inURLBytes, CFIndex inLength,
                              CFStringEncoding inEncoding, CFURLRef inBaseURL);
// Resolved against the base at once. In compatibility mode the text is taken as it is,
// spaces and stray '%' included.
CFURLRef CFURLCreateAbsoluteURLWithBytes(CFAllocatorRef inAllocator, const UInt8* inRelativeURLBytes, CFIndex inLength,
                                         CFStringEncoding inEncoding, CFURLRef inBaseURL,
                                         Boolean inUseCompatibilityMode);
// The URL's own string (not resolved) in inEncoding; whitespace as percent escapes if asked.
CFDataRef CFURLCreateData(CFAllocatorRef inAllocator, CFURLRef inURL, CFStringEncoding inEncoding,
                          Boolean inEscapeWhitespace);

// File-system paths. A relative path is relative to the base URL, or for the calls without
// one to the current directory at the time of the call. A directory URL ends with '/'.
CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef inAllocator, CFStringRef inFilePath, CFURLPathStyle inPathStyle,
                                       Boolean inIsDirectory);
CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef inAllocator, CFStringRef inFilePath,
                                                     CFURLPathStyle inPathStyle, Boolean inIsDirectory,
                                                     CFURLRef inBaseURL);
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef inAllocator, const UInt8* inBuffer, CFIndex inBufLen,
                                                 Boolean inIsDirectory);
CFURLRef CFURLCreateFromFileSystemRepresentationRelativeToBase(CFAllocatorRef inAllocator, const UInt8* inBuffer,
                                                               CFIndex inBufLen, Boolean inIsDirectory,
                                                               CFURLRef inBaseURL);
// The path as NUL-terminated bytes for the file system; false for a URL that is not a file
// URL or whose path does not fit in inMaxBufLen bytes.
Boolean CFURLGetFileSystemRepresentation(CFURLRef inURL, Boolean inResolveAgainstBase, UInt8* outBuffer,
                                         CFIndex inMaxBufLen);

CFURLRef CFURLCopyAbsoluteURL(CFURLRef inRelativeURL);
CFStringRef CFURLGetString(CFURLRef inURL);
CFURLRef CFURLGetBaseURL(CFURLRef inURL);

// Components. Only URLs whose text after "scheme:" starts with '/' (and relative URLs whose
// base is such a URL) can be decomposed; of the others only the scheme and the resource
// specifier are answered. Components are those of the URL itself, not resolved against its
// base, except that a relative URL without a scheme or a net location answers its base's
// scheme, net location, host, port, user and password. An absent component is NULL.
Boolean CFURLCanBeDecomposed(CFURLRef inURL);
CFStringRef CFURLCopyScheme(CFURLRef inURL);
CFStringRef CFURLCopyNetLocation(CFURLRef inURL);
// Percent escapes are kept in the paths. The strict path has no leading '/'; *outIsAbsolute
// says whether there was one.
CFStringRef CFURLCopyPath(CFURLRef inURL);
CFStringRef CFURLCopyStrictPath(CFURLRef inURL, Boolean* outIsAbsolute);
// Unescaped, and without a trailing separator except for a root.
CFStringRef CFURLCopyFileSystemPath(CFURLRef inURL, CFURLPathStyle inPathStyle);
Boolean CFURLHasDirectoryPath(CFURLRef inURL);
// After the path: ";parameters?query#fragment" with their delimiters. For a URL that cannot
// be decomposed, everything after "scheme:".
CFStringRef CFURLCopyResourceSpecifier(CFURLRef inURL);
// Host, user and password come unescaped; -1 stands for "no port".
CFStringRef CFURLCopyHostName(CFURLRef inURL);
SInt32 CFURLGetPortNumber(CFURLRef inURL);
CFStringRef CFURLCopyUserName(CFURLRef inURL);
CFStringRef CFURLCopyPassword(CFURLRef inURL);
// Escapes of characters in inCharactersToLeaveEscaped stay; NULL leaves every escape, ""
// replaces them all.
CFStringRef CFURLCopyParameterString(CFURLRef inURL, CFStringRef inCharactersToLeaveEscaped);
CFStringRef CFURLCopyQueryString(CFURLRef inURL, CFStringRef inCharactersToLeaveEscaped);
CFStringRef CFURLCopyFragment(CFURLRef inURL, CFStringRef inCharactersToLeaveEscaped);
// Unescaped. The extension follows the last period of the last component; a name that
// starts with its only period (".profile") has none.
CFStringRef CFURLCopyLastPathComponent(CFURLRef inURL);
CFStringRef CFURLCopyPathExtension(CFURLRef inURL);

// Path edits: new URLs with the same base, query and fragment.
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef inAllocator, CFURLRef inURL, CFStringRef inPathComponent,
                                               Boolean inIsDirectory);
CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef inAllocator, CFURLRef inURL);
CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef inAllocator, CFURLRef inURL, CFStringRef inExtension);
CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef inAllocator, CFURLRef inURL);

// Percent escapes. Adding escapes every character URLs do not allow, '%' and the characters
// of inLegalURLCharactersToBeEscaped, except those of inCharactersToLeaveUnescaped (either may
// be NULL); NULL when a character has no form in inEncoding. Replacing answers NULL for a
// malformed escape or bytes that are not text in the encoding (UTF-8 unless given).
CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef inAllocator, CFStringRef inOriginalString,
                                                    CFStringRef inCharactersToLeaveUnescaped,
                                                    CFStringRef inLegalURLCharactersToBeEscaped,
                                                    CFStringEncoding inEncoding);
CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef inAllocator, CFStringRef inOriginalString,
                                                       CFStringRef inCharactersToLeaveEscaped);
CFStringRef CFURLCreateStringByReplacingPercentEscapesUsingEncoding(CFAllocatorRef inAllocator,
                                                                    CFStringRef inOriginalString,
                                                                    CFStringRef inCharactersToLeaveEscaped,
                                                                    CFStringEncoding inEncoding);
