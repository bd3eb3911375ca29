// The locale that localised comparisons and searches follow.
#include "CFStringLocale.h"

#include <CoreFoundation/CFRuntime.h>

#include <cstdlib>

namespace cf {

namespace {

std::string LocaleFromEnvironment()
{
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0')
            continue;
        std::string_view name(value);
        name = name.substr(0, name.find_first_of(".@"));  // "de_DE.UTF-8@euro" names de_DE
        if (name == "C" || name == "POSIX")
            return {};
        return std::string(name);
    }
    return {};
}

}  // namespace

const std::string& UserLocaleName()
{
    static const std::string name = LocaleFromEnvironment();
    return name;
}

std::string LocaleName(CFLocaleRef inLocale, const char* inCall)
{
    if (inLocale != nullptr)
        Fatal(inCall, "%p is not a locale: only NULL (the root locale) is accepted here",
              static_cast<const void*>(inLocale));
    return {};
}

bool IsTurkic(std::string_view inLocaleName)
{
    std::string_view language = inLocaleName.substr(0, inLocaleName.find_first_of("_-"));
    return language == "tr" || language == "az";
}

}  // namespace cf
