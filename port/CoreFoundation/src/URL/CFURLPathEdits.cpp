// New URLs made from others by adding or taking away a last path component or an extension.
// The edits work on the escaped path; what stands before and after it stays as it was.
#include "CFURLEscapes.h"
#include "CFURLObject.h"

namespace {

using cf::url::Text;

struct PathSplice {
    Text before;  // scheme and net location
    Text path;    // up to any parameters
    Text after;   // parameters, query and fragment
};

std::optional<PathSplice> Splice(const __CFURL& inURL)
{
    if (!cf::CanBeDecomposed(inURL))
        return std::nullopt;
    Text text = inURL.Text();
    Text path = cf::url::PathWithoutParameters(inURL.mParts.path);
    std::size_t start = std::size_t(path.data() - text.data());
    return PathSplice{text.substr(0, start), path, text.substr(start + path.size())};
}

CFURLRef Rebuild(CFAllocatorRef inAllocator, const __CFURL& inURL, const PathSplice& inSplice, std::u16string inPath)
{
    if (inSplice.before.empty())
        cf::url::EscapeColonsOfFirstSegment(inPath);
    std::u16string text(inSplice.before);
    text.append(inPath).append(inSplice.after);
    return cf::CreateURL(inAllocator, std::move(text), inURL.mBase, inURL.mEncoding);
}

std::optional<std::u16string> EscapedName(CFStringRef inName, Text inAlsoEscape, const __CFURL& inURL,
                                          const char* inCall)
{
    cf::url::EscapeRule rule{cf::url::IsPathCharacter, inAlsoEscape, {}};
    return cf::url::Escape(cf::String(inName, inCall).mText, rule, inURL.mEncoding);
}

Text WithoutDirectorySlash(Text inPath)
{
    return inPath.ends_with(u'/') ? inPath.substr(0, inPath.size() - 1) : inPath;
}

// The root's parent and the parent of "." and ".." are spelled with "..", since only the
// file system can say what they are.
std::u16string DeletingLastComponent(Text inPath, bool inHasNetLocation)
{
    if (inPath.empty())
        return inHasNetLocation ? u"/../" : u"../";
    if (inPath == u"/")
        return u"/../";
    Text trimmed = WithoutDirectorySlash(inPath);
    Text last = cf::url::LastSegment(inPath);
    Text parent = trimmed.substr(0, trimmed.size() - last.size());
    if (last == u"..")
        return std::u16string(trimmed) + u"/../";
    if (last == u".")
        return std::u16string(parent) + u"../";
    return parent.empty() ? u"./" : std::u16string(parent);
}

}  // namespace

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef inAllocator, CFURLRef inURL, CFStringRef inPathComponent,
                                               Boolean inIsDirectory)
{
    constexpr const char* kCall = "CFURLCreateCopyAppendingPathComponent";
    const __CFURL& url = cf::URL(inURL, kCall);
    std::optional<PathSplice> splice = Splice(url);
    // A '/' in the component stays a separator; only what a path cannot hold is escaped.
    std::optional<std::u16string> component = EscapedName(inPathComponent, {}, url, kCall);
    if (!splice || !component)
        return nullptr;
    std::u16string path(splice->path.empty() && url.mParts.authority ? Text(u"/") : splice->path);
    bool pathEndsInSlash = path.ends_with(u'/');
    bool componentStartsWithSlash = component->starts_with(u'/');
    if (pathEndsInSlash && componentStartsWithSlash)
        component->erase(0, 1);
    else if (!pathEndsInSlash && !componentStartsWithSlash && !path.empty())
        path.push_back(u'/');
    path += *component;
    if (inIsDirectory && !path.ends_with(u'/'))
        path.push_back(u'/');
    return Rebuild(inAllocator, url, *splice, std::move(path));
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef inAllocator, CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCreateCopyDeletingLastPathComponent");
    std::optional<PathSplice> splice = Splice(url);
    if (!splice)
        return nullptr;
    return Rebuild(inAllocator, url, *splice, DeletingLastComponent(splice->path, url.mParts.authority.has_value()));
}

CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef inAllocator, CFURLRef inURL, CFStringRef inExtension)
{
    constexpr const char* kCall = "CFURLCreateCopyAppendingPathExtension";
    const __CFURL& url = cf::URL(inURL, kCall);
    std::optional<PathSplice> splice = Splice(url);
    std::optional<std::u16string> extension = EscapedName(inExtension, u"/", url, kCall);
    if (!splice || !extension)
        return nullptr;
    Text last = cf::url::LastSegment(splice->path);
    if (last.empty() || last == u"/" || last == u"." || last == u"..")
        return nullptr;
    std::u16string path(WithoutDirectorySlash(splice->path));
    path.append(u".").append(*extension).append(splice->path.ends_with(u'/') ? u"/" : u"");
    return Rebuild(inAllocator, url, *splice, std::move(path));
}

CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef inAllocator, CFURLRef inURL)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCreateCopyDeletingPathExtension");
    std::optional<PathSplice> splice = Splice(url);
    if (!splice)
        return nullptr;
    Text last = cf::url::LastSegment(splice->path);
    std::size_t period = cf::url::ExtensionPeriod(last);
    if (period == Text::npos)
        return Rebuild(inAllocator, url, *splice, std::u16string(splice->path));
    Text trimmed = WithoutDirectorySlash(splice->path);
    std::u16string path(trimmed.substr(0, trimmed.size() - last.size() + period));
    path.append(splice->path.ends_with(u'/') ? u"/" : u"");
    return Rebuild(inAllocator, url, *splice, std::move(path));
}
