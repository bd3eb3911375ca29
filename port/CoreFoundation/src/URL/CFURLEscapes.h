// Percent escapes: characters written as "%XX" for each byte of their encoded form.
#pragma once

#include "CFURLSyntax.h"

#include <CoreFoundation/CFString.h>

#include <optional>
#include <string>
#include <string_view>

namespace cf::url {

struct EscapeRule {
    bool (*keepsAsIs)(char32_t);  // characters that may stay unescaped
    Text escapeAnyway;            // ... but are escaped all the same
    Text neverEscape;             // characters left as they are whatever the rest says
};

// Escapes what inRule asks for, as the bytes of inEncoding; nothing when a character has
// no form in that encoding.
std::optional<std::u16string> Escape(Text inText, const EscapeRule& inRule, CFStringEncoding inEncoding);

// Escapes each byte that is not ASCII or that inKeepsAsIs refuses.
std::u16string EscapeBytes(std::string_view inBytes, bool (*inKeepsAsIs)(char32_t));

// A relative path must not read as a scheme: colons before its first '/' become "%3A".
void EscapeColonsOfFirstSegment(std::u16string& ioPath);

// Replaces every escape by the character its bytes spell in inEncoding, except characters of
// inKeepEscaped. Nothing when an escape is malformed or its bytes spell no text.
std::optional<std::u16string> Unescape(Text inText, Text inKeepEscaped, CFStringEncoding inEncoding);

// Escapes become raw bytes and the other characters UTF-8, so that a file name that is not
// valid UTF-8 survives its trip through a URL. Nothing when an escape is malformed.
std::optional<std::string> UnescapeToBytes(Text inText);

}  // namespace cf::url
