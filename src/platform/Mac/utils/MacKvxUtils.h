// Bridges between the portable product code and the platform: platform strings to and from
// standard strings, whether an application runs, launching items, and a few system items.
#pragma once

#include "utils/KvxUtils.h"

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>
#include <Groundwork/Files/GxFSObject.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <Carbon/MacWindows.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#include <string>

namespace kvx {

// Asks Convert for a platform string; like the tags beside it, only its type matters.
inline constexpr CFStringRef kToCFString = nullptr;

// inString in inEncoding. The conversion is given room for only GetLength() + 1 bytes, so
// text whose encoded form is longer than its UTF-16 length (non-ASCII text in UTF-8) fails
// unless the string has a direct pointer in that encoding. Throws std::logic_error
// "Error converting CFString to std::string." on failure.
std::string conv_string_CF2S(CFStringRef inString, CFStringEncoding inEncoding);

// The narrow form of inText (each wide character cut to its low byte) read in the system
// encoding; the empty platform string, never an empty wrapper, for empty text.
Gx::CFString Convert(const std::wstring& inText, const CFStringRef& inTag);

// inString in the system encoding, always exactly GetLength() characters long and never
// failing: shorter encoded text leaves NULs at the end, text that does not fit leaves only
// NULs. A NULL string gives the empty string.
std::string Convert(const CFStringRef& inString, const std::string* inTag);

// The narrow form above, widened byte by byte with sign extension, as the narrow-to-wide
// Convert does: a byte 0xE9 becomes 0xFFFFFFE9.
std::wstring Convert(const CFStringRef& inString, const std::wstring* inTag);

// The exception's reason followed by "; F": the suffix that would name its four-character
// code is cut after three characters, whatever the code, and that exact form is kept.
std::string stringValue(const Gx::Exception& inException);

// Whether a process runs whose application file is the item inAppURL names: the same file,
// not one of the same name, so a copy elsewhere is another application. When one does and
// outPSN is not NULL, *outPSN receives its serial number. False at once, without looking at
// the process list, for a URL that names no existing item (or NULL).
bool IsRunning(CFURLRef inAppURL, ProcessSerialNumber* outPSN);

// Opens the item at a POSIX path through Launch Services and answers its status; a failure
// is also written to standard error as "LSOpenCFURLRef error: <status>".
OSStatus LSLaunchItem(CFStringRef inPath);

// The Universal Access preference pane in the system's preference panes folder, which is
// created when missing; the pane itself may well not exist.
Gx::FSObject UnivAccessPrefPane();

// A frameless window (the simple window definition) of the class, with the attributes and
// content bounds given. The Window Manager's status is not reported: a window that could not
// be made is NULL.
WindowRef CreateOverlayWindow(WindowAttributes inAttributes, const Rect* inBounds, WindowClass inWindowClass);

}  // namespace kvx
