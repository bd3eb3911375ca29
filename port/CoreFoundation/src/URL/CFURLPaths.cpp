// File-system paths in the POSIX, HFS ("Volume:folder:file") and Windows styles, to and from
// file URLs.
#include "CFURLEscapes.h"
#include "CFURLObject.h"
#include <CoreFoundation/CFVolumeNames.h>
#include "String/StringEncoding.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace {

using cf::url::Text;

// Where a file is, in POSIX form: the host of a network path ("\\server\share") and a path
// that is absolute when it starts with '/'.
struct Location {
    std::u16string host;
    std::u16string path;
};

std::u16string Replaced(Text inText, char16_t inFrom, char16_t inTo)
{
    std::u16string text(inText);
    std::replace(text.begin(), text.end(), inFrom, inTo);
    return text;
}

std::vector<Text> SplitAt(Text inText, char16_t inSeparator)
{
    std::vector<Text> pieces;
    for (std::size_t end; (end = inText.find(inSeparator)) != Text::npos; inText.remove_prefix(end + 1))
        pieces.push_back(inText.substr(0, end));
    pieces.push_back(inText);
    return pieces;
}

// A colon path names its volume first; a leading colon, or no colon at all, makes it
// relative. Each empty name steps up one folder ("::" is the parent) and a final colon
// marks a folder. Names may hold '/', which POSIX names write as ':'.
std::optional<std::u16string> PathFromHFS(Text inPath)
{
    bool relative = inPath.starts_with(u':') || inPath.find(u':') == Text::npos;
    if (inPath.starts_with(u':')) {
        inPath.remove_prefix(1);
        if (inPath.empty())
            return u"./";
    }
    bool directory = inPath.ends_with(u':');
    if (directory)
        inPath.remove_suffix(1);
    std::vector<Text> names = SplitAt(inPath, u':');
    std::u16string path;
    if (!relative) {
        std::optional<std::u16string> root = cf::VolumeMountPoint(Replaced(names.front(), u'/', u':'));
        if (!root)
            return std::nullopt;
        path = std::move(*root);
        names.erase(names.begin());
    }
    for (Text name : names) {
        if (!path.empty() && !path.ends_with(u'/'))
            path.push_back(u'/');
        path += name.empty() ? std::u16string(u"..") : Replaced(name, u'/', u':');
    }
    if (directory && !path.ends_with(u'/'))
        path.push_back(u'/');
    return path;
}

std::u16string HFSFromPath(Text inPath)
{
    std::u16string hfs;
    if (inPath.starts_with(u'/')) {
        cf::VolumeOfPath volume = cf::VolumeContaining(inPath);
        hfs = Replaced(volume.name, u':', u'/');
        inPath.remove_prefix(volume.mountPointLength);
    }
    bool named = false;
    bool endsInParent = false;
    for (Text name : SplitAt(inPath, u'/')) {
        if (name.empty() || name == u".")
            continue;
        endsInParent = name == u"..";
        hfs.push_back(u':');
        hfs += endsInParent ? std::u16string() : Replaced(name, u':', u'/');
        named = true;
    }
    if (!named || endsInParent)
        hfs.push_back(u':');
    return hfs;
}

bool IsDrive(Text inPath)
{
    return inPath.size() >= 2 && (inPath[0] | 0x20) >= u'a' && (inPath[0] | 0x20) <= u'z' && inPath[1] == u':' &&
           (inPath.size() == 2 || inPath[2] == u'/');
}

// "C:\dir\file" is "/C:/dir/file"; "\\server\share\file" is "/share/file" on host "server".
Location LocationFromWindows(Text inPath)
{
    std::u16string path = Replaced(inPath, u'\\', u'/');
    if (path.starts_with(u"//")) {
        std::size_t end = std::min(path.find(u'/', 2), path.size());
        return {path.substr(2, end - 2), end == path.size() ? u"/" : path.substr(end)};
    }
    if (IsDrive(path))
        return {{}, u"/" + path + (path.size() == 2 ? u"/" : u"")};
    return {{}, std::move(path)};
}

std::u16string WindowsFromLocation(Text inHost, Text inPath)
{
    std::u16string path;
    if (!inHost.empty() && inHost != u"localhost")
        path.append(u"//").append(inHost).append(inPath);
    else if (inPath.starts_with(u'/') && IsDrive(inPath.substr(1)))
        path.append(inPath.substr(1)).append(inPath.size() == 3 ? u"/" : u"");
    else
        path = inPath;
    return Replaced(path, u'/', u'\\');
}

std::optional<Location> LocationFromPath(Text inPath, CFURLPathStyle inStyle)
{
    switch (inStyle) {
    case kCFURLPOSIXPathStyle:
        return Location{{}, std::u16string(inPath)};
    case kCFURLHFSPathStyle:
        if (auto path = PathFromHFS(inPath))
            return Location{{}, std::move(*path)};
        return std::nullopt;
    case kCFURLWindowsPathStyle:
        return LocationFromWindows(inPath);
    }
    return std::nullopt;
}

bool IsHostCharacter(char32_t inCharacter)
{
    return cf::url::IsUnreserved(inCharacter) ||
           (inCharacter < 0x80 && std::string_view("!$&'()*+,=").find(char(inCharacter)) != std::string_view::npos);
}

CFURLRef CreateCurrentDirectoryURL(CFAllocatorRef inAllocator);

// A file URL of a path in bytes (UTF-8 as a rule, though any bytes survive). A relative
// path without a base is taken relative to the current directory when so asked.
CFURLRef CreateFileURL(CFAllocatorRef inAllocator, std::string_view inHost, std::string inPath, bool inIsDirectory,
                       CFURLRef inBase, bool inRelativeToCurrentDirectory)
{
    if (inPath.empty())
        return nullptr;
    if (inIsDirectory && !inPath.ends_with('/'))
        inPath.push_back('/');
    while (!inIsDirectory && inPath.size() > 1 && inPath.ends_with('/'))
        inPath.pop_back();
    if (inPath.starts_with('/')) {
        std::u16string text = u"file://" + cf::url::EscapeBytes(inHost, IsHostCharacter);
        return cf::CreateURL(inAllocator, text + cf::url::EscapeBytes(inPath, cf::url::IsPathCharacter), nullptr,
                             kCFStringEncodingUTF8);
    }
    cf::OwnedURL currentDirectory;
    if (inBase == nullptr && inRelativeToCurrentDirectory) {
        currentDirectory.Reset(CreateCurrentDirectoryURL(inAllocator));
        inBase = currentDirectory.Get();
    }
    std::u16string text = cf::url::EscapeBytes(inPath, cf::url::IsPathCharacter);
    cf::url::EscapeColonsOfFirstSegment(text);
    return cf::CreateURL(inAllocator, std::move(text), inBase, kCFStringEncodingUTF8);
}

CFURLRef CreateCurrentDirectoryURL(CFAllocatorRef inAllocator)
{
    std::string path(256, '\0');
    while (getcwd(path.data(), path.size()) == nullptr) {
        if (errno != ERANGE)
            return nullptr;
        path.resize(path.size() * 2);
    }
    path.resize(std::strlen(path.c_str()));
    return CreateFileURL(inAllocator, {}, std::move(path), true, nullptr, false);
}

CFURLRef CreateWithPath(CFAllocatorRef inAllocator, CFStringRef inPath, CFURLPathStyle inStyle, bool inIsDirectory,
                        CFURLRef inBase, bool inRelativeToCurrentDirectory, const char* inCall)
{
    if (inPath == nullptr)
        return nullptr;
    if (inBase)
        cf::URL(inBase, inCall);
    std::optional<Location> location = LocationFromPath(cf::String(inPath, inCall).mText, inStyle);
    std::string host;
    std::string path;
    if (!location || !cf::Encode(location->host, kCFStringEncodingUTF8, 0, false, host) ||
        !cf::Encode(location->path, kCFStringEncodingUTF8, 0, false, path))
        return nullptr;
    return CreateFileURL(inAllocator, host, std::move(path), inIsDirectory, inBase, inRelativeToCurrentDirectory);
}

CFURLRef CreateWithRepresentation(CFAllocatorRef inAllocator, const UInt8* inBuffer, CFIndex inLength,
                                  bool inIsDirectory, CFURLRef inBase, bool inRelativeToCurrentDirectory,
                                  const char* inCall)
{
    if (inBuffer == nullptr || inLength < 0)
        return nullptr;
    if (inBase)
        cf::URL(inBase, inCall);
    std::string_view bytes(reinterpret_cast<const char*>(inBuffer), std::size_t(inLength));
    bytes = bytes.substr(0, bytes.find('\0'));
    return CreateFileURL(inAllocator, {}, std::string(bytes), inIsDirectory, inBase, inRelativeToCurrentDirectory);
}

// The URL's own path with its escapes replaced, as the file system's bytes, without the
// '/' that ends a directory. A URL with a net location and no path names its root.
std::optional<std::string> PathBytes(const __CFURL& inURL)
{
    if (!cf::CanBeDecomposed(inURL))
        return std::nullopt;
    Text path = cf::url::PathWithoutParameters(inURL.mParts.path);
    std::optional<std::string> bytes;
    if (inURL.mEncoding == kCFStringEncodingUTF8) {
        bytes = cf::url::UnescapeToBytes(path);
    } else if (auto text = cf::url::Unescape(path, {}, inURL.mEncoding)) {
        bytes.emplace();
        if (!cf::Encode(*text, kCFStringEncodingUTF8, 0, false, *bytes))
            bytes.reset();
    }
    if (!bytes || bytes->find('\0') != std::string::npos)
        return std::nullopt;
    if (bytes->empty() && inURL.mParts.authority)
        bytes->push_back('/');
    while (bytes->size() > 1 && bytes->ends_with('/'))
        bytes->pop_back();
    return bytes;
}

bool IsFileURL(const __CFURL& inURL)
{
    const cf::url::Piece& scheme = cf::SchemeOwner(inURL).mParts.scheme;
    if (!scheme)
        return true;
    std::u16string lowered(*scheme);
    for (char16_t& unit : lowered)
        unit = unit >= u'A' && unit <= u'Z' ? char16_t(unit | 0x20) : unit;
    return lowered == u"file";
}

}  // namespace

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef inAllocator, CFStringRef inFilePath, CFURLPathStyle inPathStyle,
                                       Boolean inIsDirectory)
{
    return CreateWithPath(inAllocator, inFilePath, inPathStyle, inIsDirectory, nullptr, true,
                          "CFURLCreateWithFileSystemPath");
}

CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef inAllocator, CFStringRef inFilePath,
                                                     CFURLPathStyle inPathStyle, Boolean inIsDirectory,
                                                     CFURLRef inBaseURL)
{
    return CreateWithPath(inAllocator, inFilePath, inPathStyle, inIsDirectory, inBaseURL, false,
                          "CFURLCreateWithFileSystemPathRelativeToBase");
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef inAllocator, const UInt8* inBuffer, CFIndex inBufLen,
                                                 Boolean inIsDirectory)
{
    return CreateWithRepresentation(inAllocator, inBuffer, inBufLen, inIsDirectory, nullptr, true,
                                    "CFURLCreateFromFileSystemRepresentation");
}

CFURLRef CFURLCreateFromFileSystemRepresentationRelativeToBase(CFAllocatorRef inAllocator, const UInt8* inBuffer,
                                                               CFIndex inBufLen, Boolean inIsDirectory,
                                                               CFURLRef inBaseURL)
{
    return CreateWithRepresentation(inAllocator, inBuffer, inBufLen, inIsDirectory, inBaseURL, false,
                                    "CFURLCreateFromFileSystemRepresentationRelativeToBase");
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef inURL, CFURLPathStyle inPathStyle)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCopyFileSystemPath");
    std::optional<std::string> bytes = PathBytes(url);
    std::u16string path;
    if (!bytes ||
        !cf::Decode({reinterpret_cast<const UInt8*>(bytes->data()), bytes->size()}, kCFStringEncodingUTF8, false, path))
        return nullptr;
    switch (inPathStyle) {
    case kCFURLPOSIXPathStyle:
        break;
    case kCFURLHFSPathStyle:
        if (!path.empty())
            path = HFSFromPath(path);
        break;
    case kCFURLWindowsPathStyle: {
        // Only a network path has a host, and it is the URL's own, not its base's.
        cf::url::Piece authority = url.mParts.authority;
        auto host = cf::url::Unescape(authority ? cf::url::SplitAuthority(*authority).host : Text(), {}, url.mEncoding);
        if (!host)
            return nullptr;
        path = WindowsFromLocation(*host, path);
        break;
    }
    default:
        return nullptr;
    }
    return cf::CreateString(url.Allocator(), std::move(path));
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef inURL, Boolean inResolveAgainstBase, UInt8* outBuffer,
                                         CFIndex inMaxBufLen)
{
    const __CFURL& url = cf::URL(inURL, "CFURLGetFileSystemRepresentation");
    cf::OwnedURL absolute;
    if (inResolveAgainstBase && url.mBase)
        absolute.Reset(CFURLCopyAbsoluteURL(inURL));
    const __CFURL& chosen = absolute ? *absolute.Get() : url;
    if (!IsFileURL(chosen))
        return false;
    std::optional<std::string> bytes = PathBytes(chosen);
    if (!bytes || outBuffer == nullptr || CFIndex(bytes->size()) >= inMaxBufLen)
        return false;
    std::memcpy(outBuffer, bytes->c_str(), bytes->size() + 1);
    return true;
}
