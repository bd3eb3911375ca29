// Text encodings as the Text Encoding Converter names them, and how script information
// (script, language, region, font) selects one.
#pragma once

#include <Carbon/Script.h>
#include <MacTypes.h>

// An encoding packs three parts into 32 bits: the base character set in the low 16 bits, a
// variant of it in the next 10, and a format (how Unicode is laid out) in the top 6. The
// values agree with CFStringEncoding wherever both name the same encoding.
using TextEncoding = UInt32;
using TextEncodingBase = UInt32;
using TextEncodingVariant = UInt32;
using TextEncodingFormat = UInt32;

// Meta values: "any" in the script-information calls.
enum : SInt16 {
    kTextScriptDontCare = -128,
    kTextLanguageDontCare = -128,
    kTextRegionDontCare = -128,
};

enum : TextEncodingBase {
    // The Mac OS encodings whose base equals their script code.
    kTextEncodingMacRoman = 0,
    kTextEncodingMacJapanese = 1,
    kTextEncodingMacChineseTrad = 2,
    kTextEncodingMacKorean = 3,
    kTextEncodingMacArabic = 4,
    kTextEncodingMacHebrew = 5,
    kTextEncodingMacGreek = 6,
    kTextEncodingMacCyrillic = 7,
    kTextEncodingMacRSymbol = 8,
    kTextEncodingMacDevanagari = 9,
    kTextEncodingMacGurmukhi = 10,
    kTextEncodingMacGujarati = 11,
    kTextEncodingMacOriya = 12,
    kTextEncodingMacBengali = 13,
    kTextEncodingMacTamil = 14,
    kTextEncodingMacTelugu = 15,
    kTextEncodingMacKannada = 16,
    kTextEncodingMacMalayalam = 17,
    kTextEncodingMacSinhalese = 18,
    kTextEncodingMacBurmese = 19,
    kTextEncodingMacKhmer = 20,
    kTextEncodingMacThai = 21,
    kTextEncodingMacLaotian = 22,
    kTextEncodingMacGeorgian = 23,
    kTextEncodingMacArmenian = 24,
    kTextEncodingMacChineseSimp = 25,
    kTextEncodingMacTibetan = 26,
    kTextEncodingMacMongolian = 27,
    kTextEncodingMacEthiopic = 28,
    kTextEncodingMacCentralEurRoman = 29,
    kTextEncodingMacVietnamese = 30,
    kTextEncodingMacExtArabic = 31,
    kTextEncodingMacUninterp = 32,
    // Mac OS encodings that fonts, languages or regions select within a script.
    kTextEncodingMacSymbol = 33,
    kTextEncodingMacDingbats = 34,
    kTextEncodingMacTurkish = 35,
    kTextEncodingMacCroatian = 36,
    kTextEncodingMacIcelandic = 37,
    kTextEncodingMacRomanian = 38,
    kTextEncodingMacCeltic = 39,
    kTextEncodingMacGaelic = 40,
    kTextEncodingMacFarsi = 0x8C,
    kTextEncodingMacUkrainian = 0x98,
    kTextEncodingMacHFS = 0xFF,
    // Unicode, by version.
    kTextEncodingUnicodeDefault = 0x0100,
    kTextEncodingUnicodeV1_1 = 0x0101,
    kTextEncodingISO10646_1993 = 0x0101,
    kTextEncodingUnicodeV2_0 = 0x0103,
    kTextEncodingUnicodeV2_1 = 0x0103,
    kTextEncodingUnicodeV3_0 = 0x0104,
    kTextEncodingUnicodeV3_1 = 0x0105,
    kTextEncodingUnicodeV3_2 = 0x0106,
    kTextEncodingUnicodeV4_0 = 0x0108,
    // Others.
    kTextEncodingISOLatin1 = 0x0201,
    kTextEncodingWindowsLatin1 = 0x0500,
    kTextEncodingUS_ASCII = 0x0600,
    kTextEncodingUnknown = 0xFFFF,
};

enum : TextEncodingVariant {
    kTextEncodingDefaultVariant = 0,
    // Mac Roman and the Roman-script variants, by what stands at the currency-sign place.
    kMacRomanDefaultVariant = 0,
    kMacRomanCurrencySignVariant = 1,
    kMacRomanEuroSignVariant = 2,
    kMacCroatianDefaultVariant = 0,
    kMacCroatianCurrencySignVariant = 1,
    kMacCroatianEuroSignVariant = 2,
    kMacIcelandicStdDefaultVariant = 0,
    kMacIcelandicTTDefaultVariant = 1,
    kMacIcelandicStdCurrencySignVariant = 2,
    kMacIcelandicTTCurrencySignVariant = 3,
    kMacIcelandicStdEuroSignVariant = 4,
    kMacIcelandicTTEuroSignVariant = 5,
    kMacRomanianDefaultVariant = 0,
    kMacRomanianCurrencySignVariant = 1,
    kMacRomanianEuroSignVariant = 2,
    // Unicode subsets.
    kUnicodeNoSubset = 0,
    kUnicodeCanonicalDecompVariant = 2,
    kUnicodeCanonicalCompVariant = 3,
    kUnicodeHFSPlusDecompVariant = 8,
    kUnicodeHFSPlusCompVariant = 9,
};

enum : TextEncodingFormat {
    kTextEncodingDefaultFormat = 0,
    kUnicode16BitFormat = 0,
    kUnicodeUTF7Format = 1,
    kUnicodeUTF8Format = 2,
    kUnicode32BitFormat = 3,
    kUnicodeUTF16BEFormat = 4,
    kUnicodeUTF16LEFormat = 5,
    kUnicodeUTF32BEFormat = 6,
    kUnicodeUTF32LEFormat = 7,
    kUnicodeSCSUFormat = 8,
    kUnicodeUTF16Format = 9,
    kUnicodeUTF32Format = 10,
};

TextEncoding CreateTextEncoding(TextEncodingBase inBase, TextEncodingVariant inVariant, TextEncodingFormat inFormat);
TextEncodingBase GetTextEncodingBase(TextEncoding inEncoding);
TextEncodingVariant GetTextEncodingVariant(TextEncoding inEncoding);
TextEncodingFormat GetTextEncodingFormat(TextEncoding inEncoding);

// The encoding that script information means. A known font name decides alone (Symbol, Zapf
// Dingbats); otherwise the script does, refined by the language (Icelandic, Turkish, ...) or,
// when the language is "don't care", by the region. A script that is "don't care" is taken
// from the language, then the region, then the system. inFontName may be NULL.
// paramErr: outEncoding is NULL or the script unknown. kTextUnsupportedEncodingErr: the script
// is left to a language or region that this system does not know.
OSStatus UpgradeScriptInfoToTextEncoding(ScriptCode inScript, LangCode inLanguage, RegionCode inRegion,
                                         ConstStr255Param inFontName, TextEncoding* outEncoding);
