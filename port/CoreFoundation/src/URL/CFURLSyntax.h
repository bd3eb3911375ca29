// The generic URL syntax: which characters a URL may hold as they are, the parts a URL
// splits into, and how a reference is resolved against a base.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace cf::url {

using Text = std::u16string_view;
// A part that may be absent, which is not the same as present and empty ("http://a/?").
using Piece = std::optional<Text>;

// Letters, digits and "-._~": never escaped.
bool IsUnreserved(char32_t inCharacter);
// Everything a URL may hold unescaped: the unreserved characters and the delimiters
// ":/?#[]@!$&'()*+,;=". Not '%', which only starts an escape.
bool IsLegal(char32_t inCharacter);
// What a file path may keep unescaped in a URL: the delimiters that would end the path or
// start its parameters (';', '?', '#') are escaped, as are '[' and ']'.
bool IsPathCharacter(char32_t inCharacter);

// Every character legal or part of a "%XX" escape, and at most one '#'.
bool IsValidURLText(Text inText);

// The value of the escape at inText[inAt] ('%' and two hex digits), or -1.
int EscapedByte(Text inText, std::size_t inAt);

struct Parts {
    Piece scheme;     // without its ':'
    Piece authority;  // without the leading "//"
    Text path;        // with any ";parameters"
    Piece query;      // without the '?'
    Piece fragment;   // without the '#'
};

// Splits any text into the five parts; never fails.
Parts Split(Text inText);

struct Authority {
    Piece user;
    Piece password;
    Text host;  // without the brackets of an IPv6 literal
    Piece port;
};

Authority SplitAuthority(Text inAuthority);

// The path up to its first ';', and what follows that ';'.
Text PathWithoutParameters(Text inPath);
Piece Parameters(Text inPath);

// The last segment of a path, without the '/' that ends a directory; the root is "/".
Text LastSegment(Text inPath);
// Where the period that starts a segment's extension is, or npos: the last period, unless it
// is the first character (".profile" is a name, not an extension) or the segment is "..".
std::size_t ExtensionPeriod(Text inSegment);

std::u16string Compose(const Parts& inParts);
std::u16string RemoveDotSegments(Text inPath);
// The target of the reference inRef read against the absolute URL inBase.
std::u16string Resolve(const Parts& inBase, const Parts& inRef);

}  // namespace cf::url
