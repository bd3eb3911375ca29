// Folding a text the way an insensitivity option of collation asks, so that the collator
// only has to compare what remains significant.
#pragma once

#include <string>
#include <string_view>

namespace carbon {

// Full- and half-width forms become their usual forms (U+FF21 becomes A, U+3000 a space).
std::u16string FoldWidth(std::u16string_view inText);
// Full Unicode case folding.
std::u16string FoldCase(std::u16string_view inText);
// Canonical decomposition without the nonspacing marks that are diacritics.
std::u16string StripDiacritics(std::u16string_view inText);
// Canonical decomposition (NFD).
std::u16string Decompose(std::u16string_view inText);

}  // namespace carbon
