// Strings of UTF-16 code units, immutable or mutable, with conversion to and from encodings.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
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

// Locales that comparisons and case mappings may follow. The port makes no locale objects:
// every call that takes one accepts NULL (the root locale) only.
using CFLocaleRef = const struct __CFLocale*;

enum CFStringNormalizationForm : CFIndex {
    kCFStringNormalizationFormD = 0,
    kCFStringNormalizationFormKD = 1,
    kCFStringNormalizationFormC = 2,
    kCFStringNormalizationFormKC = 3,
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
// The string owns inChars from then on and frees them with inContentsDeallocator when it goes
// (NULL: the default allocator; kCFAllocatorNull: never). If creation fails the caller keeps them.
CFStringRef CFStringCreateWithCharactersNoCopy(CFAllocatorRef inAllocator, const UniChar* inChars, CFIndex inNumChars,
                                               CFAllocatorRef inContentsDeallocator);
// The bytes of the whole string in an encoding, with a byte-order mark for UTF-16 and UTF-32;
// NULL when a character cannot be converted and inLossByte is 0.
CFDataRef CFStringCreateExternalRepresentation(CFAllocatorRef inAllocator, CFStringRef inString,
                                               CFStringEncoding inEncoding, UInt8 inLossByte);
CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef inAllocator, CFDataRef inData,
                                                     CFStringEncoding inEncoding);
CFStringRef CFStringCreateCopy(CFAllocatorRef inAllocator, CFStringRef inString);
CFStringRef CFStringCreateWithSubstring(CFAllocatorRef inAllocator, CFStringRef inString, CFRange inRange);
CFStringRef CFStringCreateWithFormat(CFAllocatorRef inAllocator, CFDictionaryRef inFormatOptions, CFStringRef inFormat,
                                     ...);
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
// Strings are stored as UTF-16, so there is never a Pascal string to point at: always NULL.
ConstStringPtr CFStringGetPascalStringPtr(CFStringRef inString, CFStringEncoding inEncoding);
// Converts the characters of inRange, stopping at the first one that cannot be converted when
// inLossByte is 0, or at the first that does not fit in outBuffer. Answers the number of UTF-16
// units converted; *outUsedBufferLength gets the bytes written (or needed, when outBuffer is
// NULL). With inIsExternalRepresentation, UTF-16 and UTF-32 start with a byte-order mark.
CFIndex CFStringGetBytes(CFStringRef inString, CFRange inRange, CFStringEncoding inEncoding, UInt8 inLossByte,
                         Boolean inIsExternalRepresentation, UInt8* outBuffer, CFIndex inMaxBufferLength,
                         CFIndex* outUsedBufferLength);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex inLength, CFStringEncoding inEncoding);

// Encodings. The system encoding follows the codeset of the user's locale; under the plain C
// locale it is Mac Roman. Names answered by the Get calls are constants, not to be released.
CFStringEncoding CFStringGetSystemEncoding();
Boolean CFStringIsEncodingAvailable(CFStringEncoding inEncoding);
// Ends with kCFStringEncodingInvalidId.
const CFStringEncoding* CFStringGetListOfAvailableEncodings();
CFStringRef CFStringGetNameOfEncoding(CFStringEncoding inEncoding);
CFStringRef CFStringConvertEncodingToIANACharSetName(CFStringEncoding inEncoding);
// Case-insensitive, with the usual aliases ("latin1", "x-mac-roman"); kCFStringEncodingInvalidId
// for a name nobody uses.
CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef inName);

// Comparison and search. kCFCompareLocalized follows the user's locale, or inLocale in the
// AndLocale calls (NULL there: the root locale). A found range is in units of the string
// searched, also where folding changed lengths.
CFComparisonResult CFStringCompare(CFStringRef inString1, CFStringRef inString2, CFStringCompareFlags inOptions);
// Compares inRange of inString1 with the whole of inString2.
CFComparisonResult CFStringCompareWithOptions(CFStringRef inString1, CFStringRef inString2, CFRange inRange,
                                              CFStringCompareFlags inOptions);
CFComparisonResult CFStringCompareWithOptionsAndLocale(CFStringRef inString1, CFStringRef inString2, CFRange inRange,
                                                       CFStringCompareFlags inOptions, CFLocaleRef inLocale);
Boolean CFStringFindWithOptionsAndLocale(CFStringRef inString, CFStringRef inFind, CFRange inRange,
                                         CFStringCompareFlags inOptions, CFLocaleRef inLocale, CFRange* outResult);
Boolean CFStringFindWithOptions(CFStringRef inString, CFStringRef inFind, CFRange inRange,
                                CFStringCompareFlags inOptions, CFRange* outResult);
CFRange CFStringFind(CFStringRef inString, CFStringRef inFind, CFStringCompareFlags inOptions);
Boolean CFStringHasPrefix(CFStringRef inString, CFStringRef inPrefix);
Boolean CFStringHasSuffix(CFStringRef inString, CFStringRef inSuffix);
// An array of pointers to CFRange, one per occurrence that does not overlap an earlier one;
// NULL when there is none.
CFArrayRef CFStringCreateArrayWithFindResults(CFAllocatorRef inAllocator, CFStringRef inString, CFStringRef inFind,
                                              CFRange inRange, CFStringCompareFlags inOptions);
CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef inAllocator, CFStringRef inString,
                                                  CFStringRef inSeparator);
CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef inAllocator, CFArrayRef inArray, CFStringRef inSeparator);

void CFStringAppend(CFMutableStringRef inString, CFStringRef inAppended);
void CFStringAppendCString(CFMutableStringRef inString, const char* inCString, CFStringEncoding inEncoding);
void CFStringAppendCharacters(CFMutableStringRef inString, const UniChar* inChars, CFIndex inNumChars);
void CFStringAppendPascalString(CFMutableStringRef inString, ConstStr255Param inPString, CFStringEncoding inEncoding);
void CFStringAppendFormat(CFMutableStringRef inString, CFDictionaryRef inFormatOptions, CFStringRef inFormat, ...);
void CFStringAppendFormatAndArguments(CFMutableStringRef inString, CFDictionaryRef inFormatOptions,
                                      CFStringRef inFormat, va_list inArguments);

// Changing a mutable string. Each stops the process when given an immutable string or a
// range or index outside the string.
void CFStringInsert(CFMutableStringRef inString, CFIndex inIndex, CFStringRef inInserted);
void CFStringDelete(CFMutableStringRef inString, CFRange inRange);
void CFStringReplace(CFMutableStringRef inString, CFRange inRange, CFStringRef inReplacement);
void CFStringReplaceAll(CFMutableStringRef inString, CFStringRef inReplacement);
// Truncates to inLength, or lengthens to it with inPadString repeated from inPadIndex on.
void CFStringPad(CFMutableStringRef inString, CFStringRef inPadString, CFIndex inLength, CFIndex inPadIndex);
// Replaces every occurrence within inRange (see CFStringCreateArrayWithFindResults); answers how many.
CFIndex CFStringFindAndReplace(CFMutableStringRef inString, CFStringRef inFind, CFStringRef inReplacement,
                               CFRange inRange, CFStringCompareFlags inOptions);
void CFStringTrimWhitespace(CFMutableStringRef inString);
void CFStringUppercase(CFMutableStringRef inString, CFLocaleRef inLocale);
void CFStringLowercase(CFMutableStringRef inString, CFLocaleRef inLocale);
// The first letter of every word upper case (title case), the others lower case.
void CFStringCapitalize(CFMutableStringRef inString, CFLocaleRef inLocale);
void CFStringNormalize(CFMutableStringRef inString, CFStringNormalizationForm inForm);
