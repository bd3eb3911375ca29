// Language names and the choice among a bundle's localisations: what the user reads, and
// which of the localisations on offer serve that best.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cf::bundle {

// One spelling per language: "fr_CA.UTF-8" and "fr-ca" become "fr_CA", and the older
// English names of .lproj folders become codes ("English" is "en", "German" is "de").
std::string CanonicalLanguage(std::string_view inName);

// The user's languages, most wanted first, read from the environment now: the entries of
// LANGUAGE, then the first of LC_ALL, LC_MESSAGES and LANG that is set. "C" and "POSIX"
// name no language.
std::vector<std::string> UserLanguages();

// The positions in inAvailable that serve inLanguages best. For the first language that any
// entry matches: the entry for exactly that language and region, then the one for the bare
// language, then other regions of it. When no language matches: the development region's
// entry, else the first entry.
std::vector<std::size_t> Preferred(std::span<const std::string> inAvailable, std::span<const std::string> inLanguages,
                                   std::string_view inDevelopmentRegion);

}  // namespace cf::bundle
