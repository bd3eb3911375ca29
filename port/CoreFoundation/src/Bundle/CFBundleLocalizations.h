// Where a bundle's resources are looked for. The resources folder itself comes first, so a
// resource that is not localised is found whatever the language; then the .lproj folders of
// the localisations the user prefers, best first; then the development region's, so that a
// bundle still answers in its own language when it lacks the user's.
#pragma once

#include "CFBundleObject.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cf::bundle {

// The bundle's .lproj folders (without the extension; listed once per bundle), then the entries of
// CFBundleLocalizations that name other languages.
std::vector<std::string> Localizations(const __CFBundle& inBundle);

// The localisations a lookup visits, in order: those the user prefers, then the
// development region's.
std::vector<std::string> SearchLocalizations(const __CFBundle& inBundle);
// Only inLocalization (or the bundle's folder of the same language).
std::vector<std::string> SearchLocalization(const __CFBundle& inBundle, std::string_view inLocalization);

// The folders a lookup visits: the resources folder, then the .lproj folder of each
// localisation; inSubDir (may be empty) is appended to each.
std::vector<std::string> SearchFolders(const __CFBundle& inBundle, std::span<const std::string> inLocalizations,
                                       std::string_view inSubDir);

// The path of inFileName in the first of inFolders that holds it.
std::optional<std::string> Find(std::span<const std::string> inFolders, std::string_view inFileName);

}  // namespace cf::bundle
