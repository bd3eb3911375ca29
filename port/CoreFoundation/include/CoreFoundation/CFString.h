// Strings of UTF-16 code units, immutable or mutable, with conversion to and from encodings.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>

#include <cstdarg>

using CFStringEncoding = UInt32;

enum : CFStringEncoding {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingWindowsLatin1 = 0x0500,
    kCFStringEncodingISOLatin1 = 0x0201,
    kCFStringEncodingNextStepLatin = 0x0B01,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUnicode = 0x0100,
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingNonLossyASCII = 0x0BFF,
    kCFStringEncodingUTF16 = 0x0100,
    kCFStringEncodingUTF16BE = 0x10000100,
    kCFStringEncodingUTF16LE = 0x14000100,
    kCFStringEncodingUTF32 = 0x0c000100,
    kCFStringEncodingUTF32BE = 0x18000100,
    kCFStringEncodingUTF32LE = 0x1c000100,
    kCFStringEncodingInvalidId = 0xffffffffU,
};

using CFStringCompareFlags = CFOptionFlags;

enum : CFStringCompareFlags {
    kCFCompareCaseInsensitive = 1,
    kCFCompareBackwards = 4,
    kCFCompareAnchored = 8,
    kCFCompareNonliteral = 16,
    kCFCompareLocalized = 32,
    kCFCompareNumerically = 64,
    kCFCompareDiacriticInsensitive = 128,
    kCFCompareWidthInsensitive = 256,
    kCFCompareForcedOrdering = 512,
};

CFTypeID CFStringGetTypeID();

// A constant string: made once per distinct text, never deallocated, safe to use from any
// thread. The text is UTF-8.
CFStringRef CFSTR(const char* inCString);

CFStringRef CFStringCreateWithCString(CFAllocatorRef inAllocator, const char* inCString, CFStringEncoding inEncoding);
CFStringRef CFStringCreateWithPascalString(CFAllocatorRef inAllocator, ConstStringPtr inPString,
                                           CFStringEncoding inEncoding);
CFStringRef CFStringCreateWithBytes(CFAllocatorRef inAllocator, const UInt8* inBytes, CFIndex inNumBytes,
                                    CFStringEncoding inEncoding, Boolean inIsExternalRepresentation);
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef inAllocator, const UniChar* inChars, CFIndex inNumChars);
CFStringRef CFStringCreateCopy(CFAllocatorRef inAllocator, CFStringRef inString);
CFStringRef CFStringCreateWithSubstring(CFAllocatorRef inAllocator, CFStringRef inString, CFRange inRange);
CFStringRef CFStringCreateWithFormat(CFAllocatorRef inAllocator, CFDictionaryRef inFormatOptions, CFStringRef inFormat, ...);
CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef inAllocator, CFDictionaryRef inFormatOptions,
                                                 CFStringRef inFormat, va_list inArguments);
CFMutableStringRef CFStringCreateMutable(CFAllocatorRef inAllocator, CFIndex inMaxLength);
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex inMaxLength, CFStringRef inString);

CFIndex CFStringGetLength(CFStringRef inString);
UniChar CFStringGetCharacterAtIndex(CFStringRef inString, CFIndex inIndex);
void CFStringGetCharacters(CFStringRef inString, CFRange inRange, UniChar* outBuffer);
const UniChar* CFStringGetCharactersPtr(CFStringRef inString);
const char* CFStringGetCStringPtr(CFStringRef inString, CFStringEncoding inEncoding);
Boolean CFStringGetCString(CFStringRef inString, char* outBuffer, CFIndex inBufferSize, CFStringEncoding inEncoding);
Boolean CFStringGetPascalString(CFStringRef inString, StringPtr outBuffer, CFIndex inBufferSize,
                                CFStringEncoding inEncoding);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex inLength, CFStringEncoding inEncoding);

CFComparisonResult CFStringCompare(CFStringRef inString1, CFStringRef inString2, CFStringCompareFlags inOptions);
Boolean CFStringFindWithOptions(CFStringRef inString, CFStringRef inFind, CFRange inRange,
                                CFStringCompareFlags inOptions, CFRange* outResult);
CFRange CFStringFind(CFStringRef inString, CFStringRef inFind, CFStringCompareFlags inOptions);
Boolean CFStringHasPrefix(CFStringRef inString, CFStringRef inPrefix);
Boolean CFStringHasSuffix(CFStringRef inString, CFStringRef inSuffix);

void CFStringAppend(CFMutableStringRef inString, CFStringRef inAppended);
void CFStringAppendCString(CFMutableStringRef inString, const char* inCString, CFStringEncoding inEncoding);
void CFStringAppendCharacters(CFMutableStringRef inString, const UniChar* inChars, CFIndex inNumChars);
void CFStringAppendFormat(CFMutableStringRef inString, CFDictionaryRef inFormatOptions, CFStringRef inFormat, ...);
void CFStringAppendFormatAndArguments(CFMutableStringRef inString, CFDictionaryRef inFormatOptions, CFStringRef inFormat,
                                      va_list inArguments);
