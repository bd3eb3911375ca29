// Composing text encodings, and choosing one from script information.
#include <Carbon/MacErrors.h>
#include <Carbon/TextCommon.h>

#include <algorithm>
#include <string_view>

namespace {

constexpr UInt32 kBaseMask = 0xFFFF;
constexpr UInt32 kVariantShift = 16;
constexpr UInt32 kVariantMask = 0x3FF;
constexpr UInt32 kFormatShift = 26;
constexpr UInt32 kFormatMask = 0x3F;

// This system writes in the Roman script; text beyond it is Unicode, which needs no script.
constexpr ScriptCode kSystemScript = smRoman;

// What a language or a region implies: its script, and the encoding it selects there.
struct Implication {
    SInt16 code;
    ScriptCode script;
    TextEncodingBase encoding;
};

constexpr Implication kLanguages[] = {
    {langEnglish, smRoman, kTextEncodingMacRoman},
    {langFrench, smRoman, kTextEncodingMacRoman},
    {langGerman, smRoman, kTextEncodingMacRoman},
    {langItalian, smRoman, kTextEncodingMacRoman},
    {langDutch, smRoman, kTextEncodingMacRoman},
    {langSwedish, smRoman, kTextEncodingMacRoman},
    {langSpanish, smRoman, kTextEncodingMacRoman},
    {langDanish, smRoman, kTextEncodingMacRoman},
    {langPortuguese, smRoman, kTextEncodingMacRoman},
    {langNorwegian, smRoman, kTextEncodingMacRoman},
    {langHebrew, smHebrew, kTextEncodingMacHebrew},
    {langJapanese, smJapanese, kTextEncodingMacJapanese},
    {langArabic, smArabic, kTextEncodingMacArabic},
    {langFinnish, smRoman, kTextEncodingMacRoman},
    {langGreek, smGreek, kTextEncodingMacGreek},
    {langIcelandic, smRoman, kTextEncodingMacIcelandic},
    {langMaltese, smRoman, kTextEncodingMacRoman},
    {langTurkish, smRoman, kTextEncodingMacTurkish},
    {langCroatian, smRoman, kTextEncodingMacCroatian},
    {langTradChinese, smTradChinese, kTextEncodingMacChineseTrad},
    {langUrdu, smArabic, kTextEncodingMacArabic},
    {langHindi, smDevanagari, kTextEncodingMacDevanagari},
    {langThai, smThai, kTextEncodingMacThai},
    {langKorean, smKorean, kTextEncodingMacKorean},
    {langLithuanian, smRoman, kTextEncodingMacCentralEurRoman},
    {langPolish, smRoman, kTextEncodingMacCentralEurRoman},
    {langHungarian, smRoman, kTextEncodingMacCentralEurRoman},
    {langEstonian, smRoman, kTextEncodingMacCentralEurRoman},
    {langLatvian, smRoman, kTextEncodingMacCentralEurRoman},
    {langSami, smRoman, kTextEncodingMacRoman},
    {langFaroese, smRoman, kTextEncodingMacIcelandic},
    {langFarsi, smArabic, kTextEncodingMacFarsi},
    {langRussian, smCyrillic, kTextEncodingMacCyrillic},
    {langSimpChinese, smSimpChinese, kTextEncodingMacChineseSimp},
    {langFlemish, smRoman, kTextEncodingMacRoman},
    {langIrishGaelic, smRoman, kTextEncodingMacRoman},
    {langAlbanian, smRoman, kTextEncodingMacRoman},
    {langRomanian, smRoman, kTextEncodingMacRomanian},
    {langCzech, smRoman, kTextEncodingMacCentralEurRoman},
    {langSlovak, smRoman, kTextEncodingMacCentralEurRoman},
    {langSlovenian, smRoman, kTextEncodingMacCroatian},
    {langYiddish, smHebrew, kTextEncodingMacHebrew},
    {langSerbian, smCyrillic, kTextEncodingMacCyrillic},
    {langMacedonian, smCyrillic, kTextEncodingMacCyrillic},
    {langBulgarian, smCyrillic, kTextEncodingMacCyrillic},
    {langUkrainian, smCyrillic, kTextEncodingMacUkrainian},
    {langByelorussian, smCyrillic, kTextEncodingMacCyrillic},
    {langIndonesian, smRoman, kTextEncodingMacRoman},
    {langTagalog, smRoman, kTextEncodingMacRoman},
    {langMalayRoman, smRoman, kTextEncodingMacRoman},
    {langSomali, smRoman, kTextEncodingMacRoman},
    {langSwahili, smRoman, kTextEncodingMacRoman},
    {langEsperanto, smRoman, kTextEncodingMacRoman},
    {langWelsh, smRoman, kTextEncodingMacRoman},
    {langBasque, smRoman, kTextEncodingMacRoman},
    {langCatalan, smRoman, kTextEncodingMacRoman},
    {langLatin, smRoman, kTextEncodingMacRoman},
    {langGalician, smRoman, kTextEncodingMacRoman},
    {langAfrikaans, smRoman, kTextEncodingMacRoman},
    {langBreton, smRoman, kTextEncodingMacRoman},
    {langScottishGaelic, smRoman, kTextEncodingMacRoman},
    {langManxGaelic, smRoman, kTextEncodingMacRoman},
    {langNynorsk, smRoman, kTextEncodingMacRoman},
};

constexpr Implication kRegions[] = {
    {verUS, smRoman, kTextEncodingMacRoman},
    {verFrance, smRoman, kTextEncodingMacRoman},
    {verBritain, smRoman, kTextEncodingMacRoman},
    {verGermany, smRoman, kTextEncodingMacRoman},
    {verItaly, smRoman, kTextEncodingMacRoman},
    {verNetherlands, smRoman, kTextEncodingMacRoman},
    {verFlemish, smRoman, kTextEncodingMacRoman},
    {verSweden, smRoman, kTextEncodingMacRoman},
    {verSpain, smRoman, kTextEncodingMacRoman},
    {verDenmark, smRoman, kTextEncodingMacRoman},
    {verPortugal, smRoman, kTextEncodingMacRoman},
    {verFrCanada, smRoman, kTextEncodingMacRoman},
    {verNorway, smRoman, kTextEncodingMacRoman},
    {verIsrael, smHebrew, kTextEncodingMacHebrew},
    {verJapan, smJapanese, kTextEncodingMacJapanese},
    {verAustralia, smRoman, kTextEncodingMacRoman},
    {verArabic, smArabic, kTextEncodingMacArabic},
    {verFinland, smRoman, kTextEncodingMacRoman},
    {verFrSwiss, smRoman, kTextEncodingMacRoman},
    {verGrSwiss, smRoman, kTextEncodingMacRoman},
    {verGreece, smGreek, kTextEncodingMacGreek},
    {verIceland, smRoman, kTextEncodingMacIcelandic},
    {verMalta, smRoman, kTextEncodingMacRoman},
    {verCyprus, smGreek, kTextEncodingMacGreek},
    {verTurkey, smRoman, kTextEncodingMacTurkish},
    {verYugoCroatian, smRoman, kTextEncodingMacCroatian},
    {verItalianSwiss, smRoman, kTextEncodingMacRoman},
    {verInternational, smRoman, kTextEncodingMacRoman},
    {verRomania, smRoman, kTextEncodingMacRomanian},
    {verLithuania, smRoman, kTextEncodingMacCentralEurRoman},
    {verPoland, smRoman, kTextEncodingMacCentralEurRoman},
    {verHungary, smRoman, kTextEncodingMacCentralEurRoman},
    {verEstonia, smRoman, kTextEncodingMacCentralEurRoman},
    {verLatvia, smRoman, kTextEncodingMacCentralEurRoman},
    {verSami, smRoman, kTextEncodingMacRoman},
    {verFaroeIsl, smRoman, kTextEncodingMacIcelandic},
    {verIran, smArabic, kTextEncodingMacFarsi},
    {verRussia, smCyrillic, kTextEncodingMacCyrillic},
    {verIreland, smRoman, kTextEncodingMacRoman},
    {verKorea, smKorean, kTextEncodingMacKorean},
    {verChina, smSimpChinese, kTextEncodingMacChineseSimp},
    {verTaiwan, smTradChinese, kTextEncodingMacChineseTrad},
    {verThailand, smThai, kTextEncodingMacThai},
    {verCzech, smRoman, kTextEncodingMacCentralEurRoman},
    {verSlovak, smRoman, kTextEncodingMacCentralEurRoman},
    {verUkraine, smCyrillic, kTextEncodingMacUkrainian},
    {verSlovenian, smRoman, kTextEncodingMacCroatian},
    {verCroatia, smRoman, kTextEncodingMacCroatian},
    {verBrazil, smRoman, kTextEncodingMacRoman},
    {verAustria, smRoman, kTextEncodingMacRoman},
};

template <std::size_t N>
const Implication* Find(const Implication (&inTable)[N], SInt16 inCode)
{
    auto found = std::find_if(std::begin(inTable), std::end(inTable),
                              [inCode](const Implication& inEntry) { return inEntry.code == inCode; });
    return found == std::end(inTable) ? nullptr : found;
}

// Fonts whose characters are not those of their script: their own encoding wins over any
// script information. Font names compare without regard to ASCII case, as the Font Manager's do.
TextEncodingBase FontEncoding(ConstStr255Param inFontName)
{
    if (inFontName == nullptr)
        return kTextEncodingUnknown;
    std::string_view name(reinterpret_cast<const char*>(inFontName + 1), inFontName[0]);
    auto same = [name](std::string_view inKnown) {
        return std::equal(name.begin(), name.end(), inKnown.begin(), inKnown.end(), [](char a, char b) {
            auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c; };
            return lower(a) == lower(b);
        });
    };
    if (same("Symbol"))
        return kTextEncodingMacSymbol;
    if (same("Zapf Dingbats"))
        return kTextEncodingMacDingbats;
    return kTextEncodingUnknown;
}

bool IsScript(ScriptCode inScript) { return inScript >= smRoman && inScript <= smUninterp; }

}  // namespace

TextEncoding CreateTextEncoding(TextEncodingBase inBase, TextEncodingVariant inVariant, TextEncodingFormat inFormat)
{
    return (inBase & kBaseMask) | ((inVariant & kVariantMask) << kVariantShift) |
           ((inFormat & kFormatMask) << kFormatShift);
}

TextEncodingBase GetTextEncodingBase(TextEncoding inEncoding) { return inEncoding & kBaseMask; }

TextEncodingVariant GetTextEncodingVariant(TextEncoding inEncoding)
{
    return (inEncoding >> kVariantShift) & kVariantMask;
}

TextEncodingFormat GetTextEncodingFormat(TextEncoding inEncoding) { return (inEncoding >> kFormatShift) & kFormatMask; }

OSStatus UpgradeScriptInfoToTextEncoding(ScriptCode inScript, LangCode inLanguage, RegionCode inRegion,
                                         ConstStr255Param inFontName, TextEncoding* outEncoding)
{
    if (outEncoding == nullptr)
        return paramErr;
    if (TextEncodingBase font = FontEncoding(inFontName); font != kTextEncodingUnknown) {
        *outEncoding = CreateTextEncoding(font, kTextEncodingDefaultVariant, kTextEncodingDefaultFormat);
        return noErr;
    }
    const Implication* language = Find(kLanguages, inLanguage);
    const Implication* region = Find(kRegions, inRegion);
    ScriptCode script = inScript;
    if (script == smSystemScript || script == smCurrentScript) {
        script = kSystemScript;
    } else if (script == kTextScriptDontCare) {
        if (inLanguage != kTextLanguageDontCare && language == nullptr)
            return kTextUnsupportedEncodingErr;
        if (inLanguage == kTextLanguageDontCare && inRegion != kTextRegionDontCare && region == nullptr)
            return kTextUnsupportedEncodingErr;
        script = language ? language->script : region ? region->script : kSystemScript;
    }
    if (!IsScript(script))
        return paramErr;
    // A language refines the script it belongs to; only without one does the region.
    TextEncodingBase base = TextEncodingBase(script);
    if (language && language->script == script)
        base = language->encoding;
    else if (inLanguage == kTextLanguageDontCare && region && region->script == script)
        base = region->encoding;
    *outEncoding = CreateTextEncoding(base, kTextEncodingDefaultVariant, kTextEncodingDefaultFormat);
    return noErr;
}
