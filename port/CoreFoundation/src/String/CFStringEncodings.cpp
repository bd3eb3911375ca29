// What is known about encodings: which are available, their names, their IANA character-set
// names and aliases, and the system encoding that the user's locale implies.
#include "CFStringObject.h"
#include "StringEncoding.h"

#include <langinfo.h>
#include <locale.h>

#include <array>
#include <cstdlib>
#include <string>

namespace {

struct EncodingInfo {
    CFStringEncoding encoding;
    const char* name;  // as users see it in a menu of encodings
    const char* iana;  // the preferred IANA character-set name
};

constexpr std::array kEncodings{
    EncodingInfo{kCFStringEncodingMacRoman, "Western (Mac OS Roman)", "macintosh"},
    EncodingInfo{kCFStringEncodingWindowsLatin1, "Western (Windows Latin 1)", "windows-1252"},
    EncodingInfo{kCFStringEncodingISOLatin1, "Western (ISO Latin 1)", "iso-8859-1"},
    EncodingInfo{kCFStringEncodingASCII, "Western (ASCII)", "us-ascii"},
    EncodingInfo{kCFStringEncodingUTF8, "Unicode (UTF-8)", "utf-8"},
    EncodingInfo{kCFStringEncodingUTF16, "Unicode (UTF-16)", "utf-16"},
    EncodingInfo{kCFStringEncodingUTF16BE, "Unicode (UTF-16BE)", "utf-16be"},
    EncodingInfo{kCFStringEncodingUTF16LE, "Unicode (UTF-16LE)", "utf-16le"},
    EncodingInfo{kCFStringEncodingUTF32, "Unicode (UTF-32)", "utf-32"},
    EncodingInfo{kCFStringEncodingUTF32BE, "Unicode (UTF-32BE)", "utf-32be"},
    EncodingInfo{kCFStringEncodingUTF32LE, "Unicode (UTF-32LE)", "utf-32le"},
};

// Other names that character-set labels, locales and older documents use. Lower case: names
// are matched without regard to case.
struct Alias {
    const char* name;
    CFStringEncoding encoding;
};

constexpr std::array kAliases{
    Alias{"x-mac-roman", kCFStringEncodingMacRoman},
    Alias{"mac", kCFStringEncodingMacRoman},
    Alias{"macroman", kCFStringEncodingMacRoman},
    Alias{"csmacintosh", kCFStringEncodingMacRoman},
    Alias{"cp1252", kCFStringEncodingWindowsLatin1},
    Alias{"x-cp1252", kCFStringEncodingWindowsLatin1},
    Alias{"iso_8859-1", kCFStringEncodingISOLatin1},
    Alias{"iso_8859-1:1987", kCFStringEncodingISOLatin1},
    Alias{"iso88591", kCFStringEncodingISOLatin1},
    Alias{"latin1", kCFStringEncodingISOLatin1},
    Alias{"l1", kCFStringEncodingISOLatin1},
    Alias{"iso-ir-100", kCFStringEncodingISOLatin1},
    Alias{"ibm819", kCFStringEncodingISOLatin1},
    Alias{"cp819", kCFStringEncodingISOLatin1},
    Alias{"csisolatin1", kCFStringEncodingISOLatin1},
    Alias{"ascii", kCFStringEncodingASCII},
    Alias{"us", kCFStringEncodingASCII},
    Alias{"ansi_x3.4-1968", kCFStringEncodingASCII},
    Alias{"ansi_x3.4-1986", kCFStringEncodingASCII},
    Alias{"iso646-us", kCFStringEncodingASCII},
    Alias{"iso_646.irv:1991", kCFStringEncodingASCII},
    Alias{"iso-ir-6", kCFStringEncodingASCII},
    Alias{"ibm367", kCFStringEncodingASCII},
    Alias{"cp367", kCFStringEncodingASCII},
    Alias{"csascii", kCFStringEncodingASCII},
    Alias{"utf8", kCFStringEncodingUTF8},
    Alias{"unicode-1-1-utf-8", kCFStringEncodingUTF8},
    Alias{"utf16", kCFStringEncodingUTF16},
    Alias{"utf32", kCFStringEncodingUTF32},
};

const EncodingInfo* Info(CFStringEncoding inEncoding)
{
    for (const EncodingInfo& info : kEncodings)
        if (info.encoding == inEncoding)
            return &info;
    return nullptr;
}

std::string Lowercase(std::string_view inText)
{
    std::string result(inText);
    for (char& c : result)
        c = c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c;
    return result;
}

CFStringEncoding EncodingForName(std::string_view inName)
{
    std::string name = Lowercase(inName);
    for (const EncodingInfo& info : kEncodings)
        if (name == info.iana)
            return info.encoding;
    for (const Alias& alias : kAliases)
        if (name == alias.name)
            return alias.encoding;
    return kCFStringEncodingInvalidId;
}

// The codeset of the locale the environment selects for characters, without touching the
// process's own locale (which a library must leave to the program). When that locale is not
// installed, the codeset part of its name ("de_DE.UTF-8") still says what the user meant.
std::string EnvironmentCodeset()
{
    if (locale_t locale = newlocale(LC_CTYPE_MASK, "", locale_t(0))) {
        std::string codeset = nl_langinfo_l(CODESET, locale);
        freelocale(locale);
        return codeset;
    }
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0')
            continue;
        std::string_view name(value);
        std::size_t dot = name.find('.');
        return dot == name.npos ? std::string() : std::string(name.substr(dot + 1, name.find('@', dot) - dot - 1));
    }
    return {};
}

// Mac Roman stands where the codeset is plain ASCII (the C locale) or one we cannot convert:
// it is the platform's own default and a superset of ASCII.
CFStringEncoding SystemEncodingFromLocale()
{
    CFStringEncoding encoding = EncodingForName(EnvironmentCodeset());
    if (encoding == kCFStringEncodingInvalidId || encoding == kCFStringEncodingASCII)
        return kCFStringEncodingMacRoman;
    return encoding;
}

}  // namespace

CFStringEncoding CFStringGetSystemEncoding()
{
    static const CFStringEncoding encoding = SystemEncodingFromLocale();
    return encoding;
}

Boolean CFStringIsEncodingAvailable(CFStringEncoding inEncoding) { return cf::IsSupportedEncoding(inEncoding); }

const CFStringEncoding* CFStringGetListOfAvailableEncodings()
{
    static const auto list = [] {
        std::array<CFStringEncoding, kEncodings.size() + 1> result{};
        for (std::size_t i = 0; i < kEncodings.size(); ++i)
            result[i] = kEncodings[i].encoding;
        result.back() = kCFStringEncodingInvalidId;
        return result;
    }();
    return list.data();
}

CFStringRef CFStringGetNameOfEncoding(CFStringEncoding inEncoding)
{
    const EncodingInfo* info = Info(inEncoding);
    return info ? CFSTR(info->name) : nullptr;
}

CFStringRef CFStringConvertEncodingToIANACharSetName(CFStringEncoding inEncoding)
{
    const EncodingInfo* info = Info(inEncoding);
    return info ? CFSTR(info->iana) : nullptr;
}

CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef inName)
{
    const __CFString& name = cf::String(inName, "CFStringConvertIANACharSetNameToEncoding");
    std::string ascii;
    for (char16_t unit : name.mText) {
        if (unit >= 0x80)
            return kCFStringEncodingInvalidId;  // every character-set name is ASCII
        ascii.push_back(char(unit));
    }
    return EncodingForName(ascii);
}
