// The URL object: its string, an optional base URL and the parts of the string, split once
// when the URL is made. Shared by the files that implement the URL calls.
#pragma once

#include "String/CFStringObject.h"
#include "CFURLSyntax.h"

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CFURL.h>
#include <PortSupport/Owned.h>

#include <memory>
#include <string>

struct __CFURL final : cf::Object {
    // Takes over the reference to inString, which must be immutable; retains inBase.
    __CFURL(CFStringRef inString, CFURLRef inBase, CFStringEncoding inEncoding);

    std::u16string_view Text() const { return mString->mText; }

    bool Equal(const Object& inOther) const override;
    CFHashCode Hash() const override;
    std::string Describe() const override;

    CFStringRef mString;
    CFURLRef mBase;
    // The encoding whose bytes the percent escapes stand for.
    CFStringEncoding mEncoding;
    // Views into mString, which never changes.
    cf::url::Parts mParts;

private:
    void Finalize() noexcept override;
};

namespace cf {

using OwnedURL = port::Owned<CFURLRef>;

const __CFURL& URL(CFURLRef inURL, const char* inCall);

// A URL of inText, whose syntax the caller has checked. A text with a scheme drops the base.
// NULL when there is no memory.
CFURLRef CreateURL(CFAllocatorRef inAllocator, std::u16string inText, CFURLRef inBase, CFStringEncoding inEncoding);

// The URL's text resolved against its base, and that base against its own.
std::u16string AbsoluteText(const __CFURL& inURL);

// The URL that answers for inURL's scheme: itself, or for a relative URL without one its base.
const __CFURL& SchemeOwner(const __CFURL& inURL);

// Whether the URL (or, for a relative one, its base) has a hierarchical path.
bool CanBeDecomposed(const __CFURL& inURL);

}  // namespace cf
