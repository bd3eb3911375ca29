// Reading the parts of a URL: scheme, net location and its pieces, path, parameters, query
// and fragment.
#include "CFURLEscapes.h"
#include "CFURLObject.h"

#include <limits>

namespace {

using cf::url::Piece;
using cf::url::Text;

CFStringRef Copy(const __CFURL& inURL, Text inText)
{
    return cf::CreateString(inURL.Allocator(), std::u16string(inText));
}

CFStringRef CopyPiece(const __CFURL& inURL, Piece inPiece) { return inPiece ? Copy(inURL, *inPiece) : nullptr; }

// The piece with escapes replaced except those of the characters in inKeepEscaped.
CFStringRef CopyUnescaped(const __CFURL& inURL, Piece inPiece, Text inKeepEscaped)
{
    if (!inPiece)
        return nullptr;
    auto text = cf::url::Unescape(*inPiece, inKeepEscaped, inURL.mEncoding);
    return text ? cf::CreateString(inURL.Allocator(), std::move(*text)) : nullptr;
}

// The callers' convention: NULL keeps every escape, "" replaces them all.
CFStringRef CopyWithEscapes(const __CFURL& inURL, Piece inPiece, CFStringRef inKeepEscaped, const char* inCall)
{
    if (inKeepEscaped == nullptr)
        return CopyPiece(inURL, inPiece);
    return CopyUnescaped(inURL, inPiece, cf::String(inKeepEscaped, inCall).mText);
}

// A relative URL without a scheme or a net location is on its base's host.
const __CFURL& NetLocationOwner(const __CFURL& inURL)
{
    bool borrows = !inURL.mParts.scheme && !inURL.mParts.authority && inURL.mBase;
    return borrows ? NetLocationOwner(*inURL.mBase) : inURL;
}

Piece NetLocation(const __CFURL& inURL)
{
    const __CFURL& owner = NetLocationOwner(inURL);
    if (!cf::CanBeDecomposed(owner) || !owner.mParts.authority || owner.mParts.authority->empty())
        return std::nullopt;
    return owner.mParts.authority;
}

cf::url::Authority Authority(const __CFURL& inURL)
{
    Piece netLocation = NetLocation(inURL);
    return netLocation ? cf::url::SplitAuthority(*netLocation) : cf::url::Authority{};
}

Piece DecomposedPart(const __CFURL& inURL, Piece inPart) { return cf::CanBeDecomposed(inURL) ? inPart : std::nullopt; }

Piece Path(const __CFURL& inURL) { return DecomposedPart(inURL, cf::url::PathWithoutParameters(inURL.mParts.path)); }

Piece NonEmpty(Piece inPiece) { return inPiece && !inPiece->empty() ? inPiece : std::nullopt; }

bool HasDirectoryPath(const __CFURL& inURL)
{
    const cf::url::Parts& parts = inURL.mParts;
    Text path = cf::url::PathWithoutParameters(parts.path);
    if (path.empty() && !parts.scheme && !parts.authority && inURL.mBase)
        return HasDirectoryPath(*inURL.mBase);
    return path.ends_with(u'/');
}

Piece LastPathComponent(const __CFURL& inURL)
{
    Piece path = Path(inURL);
    return path ? Piece(cf::url::LastSegment(*path)) : std::nullopt;
}

}  // namespace

CFStringRef CFURLCopyScheme(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyScheme");
    return CopyPiece(url, cf::SchemeOwner(url).mParts.scheme);
}

CFStringRef CFURLCopyNetLocation(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyNetLocation");
    return CopyPiece(url, NetLocation(url));
}

CFStringRef CFURLCopyPath(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyPath");
    return CopyPiece(url, Path(url));
}

CFStringRef CFURLCopyStrictPath(CFURLRef inURL, Boolean* outIsAbsolute)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyStrictPath");
    Piece path = Path(url);
    bool absolute = path && path->starts_with(u'/');
    if (outIsAbsolute)
        *outIsAbsolute = absolute;
    return CopyPiece(url, absolute ? Piece(path->substr(1)) : path);
}

Boolean CFURLHasDirectoryPath(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLHasDirectoryPath");
    return cf::CanBeDecomposed(url) && HasDirectoryPath(url);
}

CFStringRef CFURLCopyResourceSpecifier(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyResourceSpecifier");
    Text text = url.Text();
    std::size_t start = 0;
    if (cf::CanBeDecomposed(url)) {
        Text path = url.mParts.path;
        start = std::size_t(path.data() - text.data()) + cf::url::PathWithoutParameters(path).size();
    } else if (url.mParts.scheme) {
        start = url.mParts.scheme->size() + 1;
    }
    return CopyPiece(url, NonEmpty(text.substr(start)));
}

CFStringRef CFURLCopyHostName(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyHostName");
    return CopyUnescaped(url, NonEmpty(Authority(url).host), {});
}

SInt32 CFURLGetPortNumber(CFURLRef inURL)
{
    Piece port = Authority(cf::URL(inURL, "CFURLGetPortNumber")).port;
    if (!port || port->empty())
        return -1;
    SInt64 number = 0;
    for (char16_t unit : *port) {
        if (unit < u'0' || unit > u'9')
            return -1;
        number = number * 10 + (unit - u'0');
        if (number > std::numeric_limits<SInt32>::max())
            return -1;
    }
    return SInt32(number);
}

CFStringRef CFURLCopyUserName(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyUserName");
    return CopyUnescaped(url, Authority(url).user, {});
}

CFStringRef CFURLCopyPassword(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyPassword");
    return CopyUnescaped(url, Authority(url).password, {});
}

CFStringRef CFURLCopyParameterString(CFURLRef inURL, CFStringRef inCharactersToLeaveEscaped)
{
    constexpr const char* kCall = "CFURLCopyParameterString";
    const __CFURL& url = cf::URL(inURL, kCall);
    return CopyWithEscapes(url, DecomposedPart(url, cf::url::Parameters(url.mParts.path)), inCharactersToLeaveEscaped,
                           kCall);
}

CFStringRef CFURLCopyQueryString(CFURLRef inURL, CFStringRef inCharactersToLeaveEscaped)
{
    constexpr const char* kCall = "CFURLCopyQueryString";
    const __CFURL& url = cf::URL(inURL, kCall);
    return CopyWithEscapes(url, DecomposedPart(url, url.mParts.query), inCharactersToLeaveEscaped, kCall);
}

CFStringRef CFURLCopyFragment(CFURLRef inURL, CFStringRef inCharactersToLeaveEscaped)
{
    constexpr const char* kCall = "CFURLCopyFragment";
    const __CFURL& url = cf::URL(inURL, kCall);
    return CopyWithEscapes(url, DecomposedPart(url, url.mParts.fragment), inCharactersToLeaveEscaped, kCall);
}

CFStringRef CFURLCopyLastPathComponent(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyLastPathComponent");
    return CopyUnescaped(url, LastPathComponent(url), {});
}

CFStringRef CFURLCopyPathExtension(CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyPathExtension");
    Piece name = LastPathComponent(url);
    std::size_t period = name ? cf::url::ExtensionPeriod(*name) : Text::npos;
    return CopyUnescaped(url, period == Text::npos ? std::nullopt : Piece(name->substr(period + 1)), {});
}
