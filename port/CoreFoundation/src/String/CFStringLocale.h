// Which locale a string comparison or search follows.
#pragma once

#include <CoreFoundation/CFString.h>

#include <string>
#include <string_view>

namespace cf {

// The ICU name of the user's collation locale ("de_DE"), from LC_ALL, LC_COLLATE or LANG as
// the C library would choose it; the root locale ("") under the plain C locale. Read once:
// the user's locale is fixed for the life of the process, as on the platform.
const std::string& UserLocaleName();

// The ICU name of a locale argument: NULL stands for the root locale. There are no locale
// objects in this port, so anything else is misuse and stops the process, naming inCall.
std::string LocaleName(CFLocaleRef inLocale, const char* inCall);

// Turkish and Azeri case-fold the dotted and the dotless i apart.
bool IsTurkic(std::string_view inLocaleName);

}  // namespace cf
