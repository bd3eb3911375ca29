// String lists: a 'STR#' resource holds a 16-bit count, then that many Pascal strings.
#pragma once

#include <MacTypes.h>

#include <optional>
#include <span>

namespace carbon {

// The characters of the inIndex-th string (from 1), without the length byte; nothing when the
// list has no such string or is cut short before it.
std::optional<std::span<const UInt8>> IndexedString(std::span<const UInt8> inList, SInt32 inIndex);

}  // namespace carbon
