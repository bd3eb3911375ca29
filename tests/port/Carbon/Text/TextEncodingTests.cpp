// Text encodings: packing their parts, and choosing one from script information.
#include <Carbon/MacErrors.h>
#include <Carbon/TextCommon.h>
#include <CoreFoundation/CFString.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>

namespace {

TEST(TextEncoding, PartsPackAsStringEncodingsDo)
{
    using Parts = std::tuple<TextEncodingBase, TextEncodingVariant, TextEncodingFormat, TextEncoding>;
    for (auto [base, variant, format, packed] :
         {Parts{kTextEncodingUnicodeDefault, kUnicodeNoSubset, kUnicodeUTF8Format, kCFStringEncodingUTF8},
          {kTextEncodingUnicodeDefault, kUnicodeNoSubset, kUnicodeUTF16BEFormat, kCFStringEncodingUTF16BE},
          {kTextEncodingUnicodeDefault, kUnicodeNoSubset, kUnicodeUTF32LEFormat, kCFStringEncodingUTF32LE},
          {kTextEncodingWindowsLatin1, 0, 0, kCFStringEncodingWindowsLatin1},
          {kTextEncodingMacIcelandic, kMacIcelandicTTEuroSignVariant, kTextEncodingDefaultFormat, 0x00050025},
          {kTextEncodingUnicodeV2_0, kUnicodeHFSPlusDecompVariant, kUnicodeUTF8Format, 0x08080103},
          {0xFFFF, 0x3FF, 0x3F, 0xFFFFFFFF}}) {
        EXPECT_EQ(CreateTextEncoding(base, variant, format), packed);
        EXPECT_EQ(
            std::tuple(GetTextEncodingBase(packed), GetTextEncodingVariant(packed), GetTextEncodingFormat(packed)),
            std::tuple(base, variant, format));
    }
    // Each part keeps to its own bits.
    EXPECT_EQ(CreateTextEncoding(0x1FFFF, 0x7FF, 0x7F), 0xFFFFFFFFu);
    EXPECT_EQ(CreateTextEncoding(0x10000, 0x400, 0x40), 0u);
}

struct ScriptInfo {
    ScriptCode script;
    LangCode language;
    RegionCode region;
    const char* font;  // a C string, passed as a Pascal string; NULL for none
    OSStatus status;
    TextEncodingBase base;
};

constexpr SInt16 kAny = -128;

TEST(TextEncoding, ScriptInformationSelectsTheEncoding)
{
    const ScriptInfo cases[] = {
        {smRoman, kAny, kAny, nullptr, noErr, kTextEncodingMacRoman},
        {smRoman, langFrench, kAny, nullptr, noErr, kTextEncodingMacRoman},
        {smRoman, langIcelandic, kAny, nullptr, noErr, kTextEncodingMacIcelandic},
        {smRoman, langFaroese, kAny, nullptr, noErr, kTextEncodingMacIcelandic},
        {smRoman, langTurkish, kAny, nullptr, noErr, kTextEncodingMacTurkish},
        {smRoman, langCroatian, kAny, nullptr, noErr, kTextEncodingMacCroatian},
        {smRoman, langRomanian, kAny, nullptr, noErr, kTextEncodingMacRomanian},
        {smRoman, langPolish, kAny, nullptr, noErr, kTextEncodingMacCentralEurRoman},
        {smRoman, langCzech, kAny, nullptr, noErr, kTextEncodingMacCentralEurRoman},
        {smRoman, kAny, verIceland, nullptr, noErr, kTextEncodingMacIcelandic},
        {smRoman, kAny, verTurkey, nullptr, noErr, kTextEncodingMacTurkish},
        {smRoman, kAny, verGermany, nullptr, noErr, kTextEncodingMacRoman},
        {smRoman, langFrench, verIceland, nullptr, noErr, kTextEncodingMacRoman},  // the language wins
        {smRoman, langJapanese, kAny, nullptr, noErr, kTextEncodingMacRoman},      // not a Roman language
        {smRoman, 300, kAny, nullptr, noErr, kTextEncodingMacRoman},
        {smJapanese, langFrench, kAny, nullptr, noErr, kTextEncodingMacJapanese},
        {smCyrillic, langUkrainian, kAny, nullptr, noErr, kTextEncodingMacUkrainian},
        {smCentralEuroRoman, kAny, kAny, nullptr, noErr, kTextEncodingMacCentralEurRoman},
        {kAny, langIcelandic, kAny, nullptr, noErr, kTextEncodingMacIcelandic},
        {kAny, langJapanese, kAny, nullptr, noErr, kTextEncodingMacJapanese},
        {kAny, kAny, verJapan, nullptr, noErr, kTextEncodingMacJapanese},
        {kAny, kAny, verRomania, nullptr, noErr, kTextEncodingMacRomanian},
        {kAny, kAny, kAny, nullptr, noErr, kTextEncodingMacRoman},
        {smSystemScript, kAny, kAny, nullptr, noErr, kTextEncodingMacRoman},
        {smCurrentScript, langTurkish, kAny, nullptr, noErr, kTextEncodingMacTurkish},
        {smRoman, langGerman, kAny, "Symbol", noErr, kTextEncodingMacSymbol},
        {kAny, kAny, kAny, "zapf dingbats", noErr, kTextEncodingMacDingbats},
        {smRoman, langTurkish, kAny, "Helvetica", noErr, kTextEncodingMacTurkish},
        {smRoman, kAny, kAny, "", noErr, kTextEncodingMacRoman},
        {99, kAny, kAny, nullptr, paramErr, 0},
        {smAllScripts, kAny, kAny, nullptr, paramErr, 0},
        {kAny, 300, kAny, nullptr, kTextUnsupportedEncodingErr, 0},
        {kAny, kAny, 200, nullptr, kTextUnsupportedEncodingErr, 0},
    };
    for (const ScriptInfo& c : cases) {
        Str255 font{};
        if (c.font) {
            font[0] = UInt8(std::char_traits<char>::length(c.font));
            std::copy_n(c.font, font[0], font + 1);
        }
        TextEncoding encoding = 0xDEADBEEF;
        OSStatus status = UpgradeScriptInfoToTextEncoding(c.script, c.language, c.region, c.font ? font : nullptr,
                                                          &encoding);
        EXPECT_EQ(status, c.status) << c.script << "/" << c.language << "/" << c.region;
        EXPECT_EQ(encoding, c.status == noErr ? CreateTextEncoding(c.base, 0, 0) : 0xDEADBEEF)
            << c.script << "/" << c.language << "/" << c.region;
    }
    EXPECT_EQ(UpgradeScriptInfoToTextEncoding(smRoman, kAny, kAny, nullptr, nullptr), paramErr);
}

}  // namespace
