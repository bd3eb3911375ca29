// The owning, copy-on-write string wrapper, and the system text encoding that 8-bit text is
// read and written in unless a call says otherwise.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFObject.h>

#include <Carbon/Files.h>
#include <CoreFoundation/CFString.h>

#include <compare>
#include <string>

namespace Gx {

// The locale's encoding, fixed when the layer is loaded.
extern const CFStringEncoding encoding_System;

// Indices and ranges are checked with the layer's index rules before they reach the platform,
// so a bad one throws LogicError 'logc' instead of stopping the process. A string received as
// immutable, or shared with another holder, is copied before its first change.
class CFString : public CFMutableObject<CFStringRef, CFMutableStringRef> {
    using Base = CFMutableObject<CFStringRef, CFMutableStringRef>;

public:
    CFString() = default;
    CFString(CFStringRef inRef, bool inRetain) : Base(inRef, inRetain) {}
    CFString(CFMutableStringRef inRef, bool inRetain) { AttachMutableRef(inRef, inRetain); }
    CFString(const CFString&) = default;
    CFString& operator=(const CFString&) = default;
    ~CFString() override = default;

    // Each creates an immutable string and throws RuntimeError 'cfcr' when the platform
    // cannot (text invalid in its encoding, an allocator that refuses).
    explicit CFString(ConstStringPtr inPString, CFStringEncoding inEncoding = encoding_System,
                      CFAllocatorRef inAllocator = kCFAllocatorDefault);
    explicit CFString(const char* inCString, CFStringEncoding inEncoding = encoding_System,
                      CFAllocatorRef inAllocator = kCFAllocatorDefault);
    CFString(const UniChar* inChars, CFIndex inCount, CFAllocatorRef inAllocator = kCFAllocatorDefault);
    explicit CFString(const HFSUniStr255& inName, CFAllocatorRef inAllocator = kCFAllocatorDefault);
    CFString(const UInt8* inBytes, CFIndex inCount, CFStringEncoding inEncoding, bool inIsExternalRepresentation,
             CFAllocatorRef inAllocator = kCFAllocatorDefault);
    explicit CFString(const std::string& inString, CFStringEncoding inEncoding = encoding_System,
                      CFAllocatorRef inAllocator = kCFAllocatorDefault);

    // A code's four bytes as they lie in memory, read and written as Mac Roman. Neither
    // direction swaps bytes, so on a little-endian machine the numeric value is the
    // byte-reversed code, exactly as code written for a big-endian machine expects to see it.
    void Assign4CharCode(FourCharCode inCode, CFAllocatorRef inAllocator = kCFAllocatorDefault);
    FourCharCode Get4CharCodeValue() const;

    CFIndex GetLength() const { return CFStringGetLength(UseRef()); }
    // kIndexToEnd stands for the last character.
    UniChar GetCharacterAt(CFIndex inIndex) const;
    UniChar operator[](CFIndex inIndex) const { return GetCharacterAt(inIndex); }
    void GetSubstring(CFRange inRange, UniChar* outBuffer) const;

    // The bytes the range would take in the encoding, and the conversion itself (answering
    // the number of characters converted). An empty string has no valid range, so both throw.
    CFIndex GetByteLength(CFRange inRange = cfRange_All, CFStringEncoding inEncoding = encoding_System,
                          UInt8 inLossByte = 0, bool inIsExternalRepresentation = false) const;
    CFIndex GetByteRange(CFIndex inBufferSize, UInt8* outBuffer, CFRange inRange = cfRange_All,
                         CFStringEncoding inEncoding = encoding_System, UInt8 inLossByte = 0,
                         bool inIsExternalRepresentation = false) const;

    // The platform's direct pointers: NULL whenever it has none to give.
    const UniChar* GetUniStringPtr() const { return CFStringGetCharactersPtr(UseRef()); }
    ConstStringPtr GetPascalStringPtr(CFStringEncoding inEncoding = encoding_System) const
    {
        return CFStringGetPascalStringPtr(UseRef(), inEncoding);
    }
    const char* GetCStringPtr(CFStringEncoding inEncoding = encoding_System) const
    {
        return CFStringGetCStringPtr(UseRef(), inEncoding);
    }
    bool GetPascalString(StringPtr outBuffer, CFIndex inBufferSize, CFStringEncoding inEncoding = encoding_System) const
    {
        return CFStringGetPascalString(UseRef(), outBuffer, inBufferSize, inEncoding);
    }
    bool GetCString(char* outBuffer, CFIndex inBufferSize, CFStringEncoding inEncoding = encoding_System) const
    {
        return CFStringGetCString(UseRef(), outBuffer, inBufferSize, inEncoding);
    }
    // The whole text in the encoding. The whole range is checked first, so an empty string
    // throws LogicError "Invalid CFRange" rather than giving an empty result.
    void GetString(std::string& outString, CFStringEncoding inEncoding = encoding_System) const;

    CFComparisonResult CompareTo(CFStringRef inOther, CFStringCompareFlags inFlags = 0) const
    {
        return CFStringCompare(UseRef(), inOther, inFlags);
    }
    // Where inFind occurs in the range; a length of 0 when it does not.
    CFRange FindInRange(CFRange inRange, CFStringRef inFind, CFStringCompareFlags inFlags = 0) const;

    void ReplaceAll(CFStringRef inReplacement) { CFStringReplaceAll(UseMutableRef(), inReplacement); }
    void Replace(CFRange inRange, CFStringRef inReplacement);
    void Delete(CFRange inRange);
    // kIndexToEnd inserts at the end.
    void Insert(CFIndex inIndex, CFStringRef inInserted);
    // Truncates to inLength, or lengthens with inPad repeated from inPadIndex on. Unchecked:
    // the platform judges the pad index.
    void Pad(CFStringRef inPad, CFIndex inLength, CFIndex inPadIndex)
    {
        CFStringPad(UseMutableRef(), inPad, inLength, inPadIndex);
    }
    void Append(const char* inCString, CFStringEncoding inEncoding = encoding_System)
    {
        CFStringAppendCString(UseMutableRef(), inCString, inEncoding);
    }
    void Append(ConstStringPtr inPString, CFStringEncoding inEncoding = encoding_System)
    {
        CFStringAppendPascalString(UseMutableRef(), inPString, inEncoding);
    }
    void Append(const UniChar* inChars, CFIndex inCount)
    {
        CFStringAppendCharacters(UseMutableRef(), inChars, inCount);
    }
    void Append(CFStringRef inAppended) { CFStringAppend(UseMutableRef(), inAppended); }

private:
    CFMutableStringRef MutableCopy(CFStringRef inRef) const override;
};

// Concatenation into a new string; 8-bit text is read in encoding_System. An empty wrapper
// on either side throws RuntimeError 'cfnr'.
CFString operator+(const CFString& inLeft, const char* inRight);
CFString operator+(const char* inLeft, const CFString& inRight);
CFString operator+(const CFString& inLeft, ConstStringPtr inRight);
CFString operator+(ConstStringPtr inLeft, const CFString& inRight);
CFString operator+(const CFString& inLeft, CFStringRef inRight);
CFString operator+(CFStringRef inLeft, const CFString& inRight);
CFString operator+(const CFString& inLeft, const CFString& inRight);

// Literal comparison of the texts (not of the references). Declared for both right-hand
// kinds so that comparing with a CFStringRef never falls back to comparing pointers.
bool operator==(const CFString& inLeft, CFStringRef inRight);
bool operator==(const CFString& inLeft, const CFString& inRight);
std::weak_ordering operator<=>(const CFString& inLeft, CFStringRef inRight);
std::weak_ordering operator<=>(const CFString& inLeft, const CFString& inRight);

}  // namespace Gx
