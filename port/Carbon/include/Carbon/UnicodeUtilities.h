// Unicode utilities: comparing texts the way people expect them sorted.
#pragma once

#include <MacTypes.h>

using UCCollateOptions = UInt32;

enum : UCCollateOptions {
    kUCCollateComposeInsensitiveMask = 1 << 1,  // precomposed characters equal their decomposed forms
    kUCCollateWidthInsensitiveMask = 1 << 2,    // full- and half-width forms equal the usual ones
    kUCCollateCaseInsensitiveMask = 1 << 3,
    kUCCollateDiacritInsensitiveMask = 1 << 4,
    kUCCollatePunctuationSignificantMask = 1 << 15,
    // The digits setting below rather than the language's own; the order here is the
    // language-neutral one, which has none, so this changes nothing.
    kUCCollateDigitsOverrideMask = 1 << 16,
    kUCCollateDigitsAsNumberMask = 1 << 17,  // runs of digits compare by their numeric value
    kUCCollateStandardOptions = kUCCollateComposeInsensitiveMask | kUCCollateWidthInsensitiveMask,

    // The collation type in the top byte; accepted and not used here.
    kUCCollateTypeHFSExtended = 1,
    kUCCollateTypeSourceMask = 0x000000FF,
    kUCCollateTypeShiftBits = 24,
    kUCCollateTypeMask = kUCCollateTypeSourceMask << kUCCollateTypeShiftBits,
};

// Compares two UTF-16 texts in the language-neutral order of the Unicode Collation Algorithm
// (the root collation), as the options ask: without kUCCollatePunctuationSignificantMask,
// punctuation, spaces and symbols are passed over; letter case, diacritics, width and
// composition count unless an option says otherwise. *outEquivalent tells whether the texts
// are equivalent; *outOrder is -1, 0 or 1. Either result pointer may be NULL, not both.
// paramErr for a NULL text of non-zero length, a text longer than 2^31 - 1 units, or an
// option bit that has no meaning.
OSStatus UCCompareTextDefault(UCCollateOptions inOptions, const UniChar* inText1, UniCharCount inText1Length,
                              const UniChar* inText2, UniCharCount inText2Length, Boolean* outEquivalent,
                              SInt32* outOrder);
