// Language names and the matching of the user's languages against a bundle's localisations.
#include "CFBundleLanguages.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

namespace cf::bundle {

namespace {

// The names that .lproj folders had before language codes were used for them.
constexpr std::array<std::pair<std::string_view, std::string_view>, 16> kOldNames{{
    {"Danish", "da"},
    {"Dutch", "nl"},
    {"English", "en"},
    {"Finnish", "fi"},
    {"French", "fr"},
    {"German", "de"},
    {"Italian", "it"},
    {"Japanese", "ja"},
    {"Korean", "ko"},
    {"Norwegian", "nb"},
    {"Polish", "pl"},
    {"Portuguese", "pt"},
    {"Russian", "ru"},
    {"Spanish", "es"},
    {"Swedish", "sv"},
    {"Turkish", "tr"},
}};

// ASCII only, whatever the C library's locale.
char Lower(char inLetter) { return inLetter >= 'A' && inLetter <= 'Z' ? char(inLetter | 0x20) : inLetter; }
char Upper(char inLetter) { return inLetter >= 'a' && inLetter <= 'z' ? char(inLetter & ~0x20) : inLetter; }

std::string_view LanguagePart(std::string_view inCanonical) { return inCanonical.substr(0, inCanonical.find('_')); }

void AddUnique(std::vector<std::size_t>& ioPositions, std::size_t inPosition)
{
    if (std::find(ioPositions.begin(), ioPositions.end(), inPosition) == ioPositions.end())
        ioPositions.push_back(inPosition);
}

std::vector<std::size_t> Matches(std::span<const std::string> inCanonical, std::string_view inLanguage)
{
    std::string_view language = LanguagePart(inLanguage);
    std::vector<std::size_t> found;
    for (std::string_view wanted : {inLanguage, language})
        for (std::size_t index = 0; index < inCanonical.size(); ++index)
            if (inCanonical[index] == wanted)
                AddUnique(found, index);
    for (std::size_t index = 0; index < inCanonical.size(); ++index)
        if (LanguagePart(inCanonical[index]) == language)
            AddUnique(found, index);
    return found;
}

}  // namespace

std::string CanonicalLanguage(std::string_view inName)
{
    std::string_view name = inName.substr(0, inName.find_first_of(".@"));
    for (auto [old, code] : kOldNames)
        if (name == old)
            return std::string(code);
    std::string canonical(name);
    std::size_t separator = canonical.find_first_of("_-");
    std::size_t languageEnd = separator == std::string::npos ? canonical.size() : separator;
    std::transform(canonical.begin(), canonical.begin() + std::ptrdiff_t(languageEnd), canonical.begin(), Lower);
    if (separator != std::string::npos) {
        canonical[separator] = '_';
        // A two-letter region is written in capitals; a script ("Hans") keeps its spelling.
        if (canonical.size() - separator - 1 == 2)
            std::transform(canonical.begin() + std::ptrdiff_t(separator), canonical.end(),
                           canonical.begin() + std::ptrdiff_t(separator), Upper);
    }
    if (LanguagePart(canonical) == "no")  // the older code of Norwegian Bokmål
        canonical.replace(0, 2, "nb");
    return canonical;
}

std::vector<std::string> UserLanguages()
{
    std::vector<std::string> languages;
    auto add = [&languages](std::string_view inName) {
        std::string language = CanonicalLanguage(inName);
        bool names = !language.empty() && language != "c" && language != "posix";
        if (names && std::find(languages.begin(), languages.end(), language) == languages.end())
            languages.push_back(std::move(language));
    };
    if (const char* list = std::getenv("LANGUAGE")) {
        std::string_view rest = list;
        while (!rest.empty()) {
            std::size_t colon = rest.find(':');
            add(rest.substr(0, colon));
            rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
        }
    }
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value && *value) {
            add(value);
            break;
        }
    }
    return languages;
}

std::vector<std::size_t> Preferred(std::span<const std::string> inAvailable, std::span<const std::string> inLanguages,
                                   std::string_view inDevelopmentRegion)
{
    std::vector<std::string> canonical;
    for (const std::string& name : inAvailable)
        canonical.push_back(CanonicalLanguage(name));
    for (const std::string& language : inLanguages) {
        std::string wanted = CanonicalLanguage(language);
        if (std::vector<std::size_t> found = Matches(canonical, wanted); !wanted.empty() && !found.empty())
            return found;
    }
    if (!inDevelopmentRegion.empty()) {
        auto development = std::find(canonical.begin(), canonical.end(), CanonicalLanguage(inDevelopmentRegion));
        if (development != canonical.end())
            return {std::size_t(development - canonical.begin())};
    }
    if (!inAvailable.empty())
        return {0};
    return {};
}

}  // namespace cf::bundle
