// Checks of XML and binary input made before libplist sees it. libplist recurses once per
// level when it builds and frees a tree, and makes a copy of a shared object for every
// reference to it in the binary form, so input nested too deeply, referring to itself, or
// sharing too much would exhaust its stack or memory.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <span>
#include <string>
#include <string_view>

namespace cf::plist {

// False, with a reason, when the XML nests containers deeper than the limit.
bool CheckXMLShape(std::string_view inText, std::string& outError);

// False, with a reason, when the binary form is damaged in its structure (trailer, offsets,
// references), nests too deeply, contains itself, or would grow too large when expanded.
bool CheckBinaryShape(std::span<const UInt8> inBytes, std::string& outError);

}  // namespace cf::plist
