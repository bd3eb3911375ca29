// The URL object, creating URLs from text, and reading a URL back as text.
#include "CFURLObject.h"

#include "String/StringEncoding.h"

#include <CoreFoundation/CFData.h>

#include <span>

__CFURL::__CFURL(CFStringRef inString, CFURLRef inBase, CFStringEncoding inEncoding)
    : Object(cf::kTypeIDURL), mString(inString), mBase(inBase ? static_cast<CFURLRef>(CFRetain(inBase)) : nullptr),
      mEncoding(inEncoding), mParts(cf::url::Split(Text()))
{
}

bool __CFURL::Equal(const Object& inOther) const
{
    const auto& other = static_cast<const __CFURL&>(inOther);
    if (!CFEqual(mString, other.mString))
        return false;
    return mBase == other.mBase || (mBase && other.mBase && CFEqual(mBase, other.mBase));
}

CFHashCode __CFURL::Hash() const { return CFHash(mString); }

std::string __CFURL::Describe() const
{
    std::string text = cf::UTF8(mString);
    return mBase ? text + " -- " + cf::DescribeValue(mBase) : text;
}

void __CFURL::Finalize() noexcept
{
    CFRelease(mString);
    if (mBase)
        CFRelease(mBase);
}

namespace cf {

const __CFURL& URL(CFURLRef inURL, const char* inCall) { return Checked<__CFURL>(inURL, kTypeIDURL, inCall); }

CFURLRef CreateURL(CFAllocatorRef inAllocator, std::u16string inText, CFURLRef inBase, CFStringEncoding inEncoding)
{
    if (inBase && url::Split(inText).scheme)
        inBase = nullptr;
    CFStringRef string = CreateString(inAllocator, std::move(inText));
    if (string == nullptr)
        return nullptr;
    CFURLRef url = Create<__CFURL>(inAllocator, string, inBase, inEncoding);
    if (url == nullptr)
        CFRelease(string);
    return url;
}

std::u16string AbsoluteText(const __CFURL& inURL)
{
    if (inURL.mBase == nullptr)
        return std::u16string(inURL.Text());
    std::u16string base = AbsoluteText(*inURL.mBase);
    return url::Resolve(url::Split(base), inURL.mParts);
}

const __CFURL& SchemeOwner(const __CFURL& inURL)
{
    return !inURL.mParts.scheme && inURL.mBase ? SchemeOwner(*inURL.mBase) : inURL;
}

bool CanBeDecomposed(const __CFURL& inURL)
{
    const url::Parts& parts = inURL.mParts;
    if (!parts.scheme)
        return inURL.mBase == nullptr || CanBeDecomposed(*inURL.mBase);
    return parts.authority || parts.path.starts_with(u'/');
}

}  // namespace cf

namespace {

CFURLRef BaseOrNull(CFURLRef inBase, const char* inCall)
{
    if (inBase)
        cf::URL(inBase, inCall);
    return inBase;
}

// Text decoded from bytes; in compatibility mode anything goes, otherwise it must be a URL.
CFURLRef CreateFromBytes(CFAllocatorRef inAllocator, const UInt8* inBytes, CFIndex inLength,
                         CFStringEncoding inEncoding, CFURLRef inBase, bool inLenient)
{
    if (inLength < 0 || (inBytes == nullptr && inLength > 0))
        return nullptr;
    std::u16string text;
    if (!cf::Decode({inBytes, std::size_t(inLength)}, inEncoding, false, text))
        return nullptr;
    if (!inLenient && !cf::url::IsValidURLText(text))
        return nullptr;
    return cf::CreateURL(inAllocator, std::move(text), inBase, inEncoding);
}

constexpr char16_t kHexDigits[] = u"0123456789ABCDEF";

bool IsWhitespace(char16_t inUnit) { return inUnit == u' ' || (inUnit >= u'\t' && inUnit <= u'\r'); }

}  // namespace

CFTypeID CFURLGetTypeID() { return cf::kTypeIDURL; }

CFURLRef CFURLCreateWithString(CFAllocatorRef inAllocator, CFStringRef inURLString, CFURLRef inBaseURL)
{
    constexpr const char* kCall = "CFURLCreateWithString";
    if (inURLString == nullptr)
        return nullptr;
    const __CFString& string = cf::String(inURLString, kCall);
    if (!cf::url::IsValidURLText(string.mText))
        return nullptr;
    return cf::CreateURL(inAllocator, string.mText, BaseOrNull(inBaseURL, kCall), kCFStringEncodingUTF8);
}

CFURLRef CFURLCreateWithBytes(CFAllocatorRef inAllocator, const UInt8* inURLBytes, CFIndex inLength,
                              CFStringEncoding inEncoding, CFURLRef inBaseURL)
{
    return CreateFromBytes(inAllocator, inURLBytes, inLength, inEncoding, BaseOrNull(inBaseURL, "CFURLCreateWithBytes"),
                           false);
}

CFURLRef CFURLCreateAbsoluteURLWithBytes(CFAllocatorRef inAllocator, const UInt8* inRelativeURLBytes, CFIndex inLength,
                                         CFStringEncoding inEncoding, CFURLRef inBaseURL,
                                         Boolean inUseCompatibilityMode)
{
    CFURLRef relative = CreateFromBytes(inAllocator, inRelativeURLBytes, inLength, inEncoding,
                                        BaseOrNull(inBaseURL, "CFURLCreateAbsoluteURLWithBytes"),
                                        inUseCompatibilityMode);
    if (relative == nullptr)
        return nullptr;
    const __CFURL& url = cf::URL(relative, "CFURLCreateAbsoluteURLWithBytes");
    CFURLRef absolute = url.mBase ? cf::CreateURL(inAllocator, cf::AbsoluteText(url), nullptr, inEncoding)
                                  : static_cast<CFURLRef>(CFRetain(relative));
    CFRelease(relative);
    return absolute;
}

CFDataRef CFURLCreateData(CFAllocatorRef inAllocator, CFURLRef inURL, CFStringEncoding inEncoding,
                          Boolean inEscapeWhitespace)
{
    const __CFURL& url = cf::URL(inURL, "CFURLCreateData");
    std::u16string text;
    for (char16_t unit : url.Text()) {
        if (inEscapeWhitespace && IsWhitespace(unit))
            text.append({u'%', kHexDigits[unit / 16], kHexDigits[unit % 16]});
        else
            text.push_back(unit);
    }
    std::string bytes;
    if (!cf::Encode(text, inEncoding, 0, false, bytes))
        return nullptr;
    return CFDataCreate(inAllocator, reinterpret_cast<const UInt8*>(bytes.data()), CFIndex(bytes.size()));
}

CFURLRef CFURLCopyAbsoluteURL(CFURLRef inRelativeURL)
{
    const __CFURL& url = cf::URL(inRelativeURL, "CFURLCopyAbsoluteURL");
    if (url.mBase == nullptr)
        return static_cast<CFURLRef>(CFRetain(inRelativeURL));
    return cf::CreateURL(url.Allocator(), cf::AbsoluteText(url), nullptr, url.mEncoding);
}

CFStringRef CFURLGetString(CFURLRef inURL) { return cf::URL(inURL, "CFURLGetString").mString; }

CFURLRef CFURLGetBaseURL(CFURLRef inURL) { return cf::URL(inURL, "CFURLGetBaseURL").mBase; }

Boolean CFURLCanBeDecomposed(CFURLRef inURL) { return cf::CanBeDecomposed(cf::URL(inURL, "CFURLCanBeDecomposed")); }
