// Finding one string in another under the comparison flags, shared by the calls that find,
// list and replace occurrences.
#pragma once

#include <CoreFoundation/CFString.h>

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace cf {

struct Match {
    std::size_t location;
    std::size_t length;
};

struct SearchOptions {
    CFStringCompareFlags flags = 0;
    bool turkic = false;  // localised to Turkish or Azeri: case folding keeps the two i's apart
};

// The first occurrence of inFind in inText in the direction the flags give (from the end with
// kCFCompareBackwards; only at the start, or the end, with kCFCompareAnchored), in units of
// inText. An empty inFind is never found.
std::optional<Match> FindFirst(std::u16string_view inText, std::u16string_view inFind, const SearchOptions& inOptions);

// Every occurrence that does not overlap one found before it, in the order found; anchored,
// at most one.
std::vector<Match> FindAll(std::u16string_view inText, std::u16string_view inFind, const SearchOptions& inOptions);

// The search options of a find call: with kCFCompareLocalized the locale decides whether
// case folding is Turkic (NULL locale: the user's).
SearchOptions SearchOptionsFor(CFStringCompareFlags inFlags, CFLocaleRef inLocale, bool inUseUserLocale,
                               const char* inCall);

}  // namespace cf
