// Small debugging aids: a transient on-screen message and Pascal-string helpers that are
// safe to call while something has already gone wrong (no allocation, no exceptions).
#pragma once

#include <MacTypes.h>

namespace Gx {

// Shows a short message for inTicks ticks (1/60 s). Without a menu bar to borrow, the text is
// written as one line to standard error, and the caller still waits, so timing-dependent
// debugging behaves the same.
namespace MenuDebugStr {
void Display(ConstStringPtr inPStr, UInt32 inTicks);
void Display(const char* inCStr, UInt32 inTicks);  // at most 255 characters are shown
void Display(long inNumber, UInt32 inTicks);       // in decimal
}  // namespace MenuDebugStr

// Pascal strings: a length byte followed by at most 255 characters. Sizes count the length
// byte; a destination size below 1 leaves the destination untouched.
namespace Debugging {
// Copies as much of inSource as fits; a null source gives the empty string.
StringPtr CopyPStr(ConstStringPtr inSource, StringPtr outDest, SInt16 inDestSize);
// Copies up to inMaxLength characters of a C string; outDest needs inMaxLength + 1 bytes.
StringPtr LoadPStrFromCStr(StringPtr outDest, UInt8 inMaxLength, const char* inSource);
// Appends as much of inAppend as fits; a destination already at or over its capacity is cut
// back to inDestSize - 1 characters.
StringPtr AppendPStr(StringPtr ioDest, ConstStringPtr inAppend, SInt16 inDestSize);
}  // namespace Debugging

}  // namespace Gx
