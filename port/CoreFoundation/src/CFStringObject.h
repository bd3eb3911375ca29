// The string object: UTF-16 code units, immutable or mutable. Shared by the files that
// implement the string calls.
#pragma once

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CFString.h>

#include <atomic>
#include <string>
#include <string_view>

struct __CFString final : cf::Object {
    std::u16string mText;
    bool mMutable = false;
    // The text as the caller gave it, kept for constant strings so that the direct C-string
    // pointer can be answered without converting.
    const char* mConstantCString = nullptr;

    __CFString(std::u16string inText, bool inMutable, Lifetime inLifetime = Lifetime::Counted)
        : Object(cf::kTypeIDString, inLifetime), mText(std::move(inText)), mMutable(inMutable)
    {
    }

    bool Equal(const Object& inOther) const override;
    CFHashCode Hash() const override;
    std::string Describe() const override;

    // Called after every change, so the cached hash is never stale.
    void Changed() { mHash.store(0, std::memory_order_relaxed); }

private:
    void Finalize() noexcept override { std::u16string().swap(mText); }

    mutable std::atomic<CFHashCode> mHash{0};
};

namespace cf {

const __CFString& String(CFStringRef inString, const char* inCall);
__CFString& MutableString(CFMutableStringRef inString, const char* inCall);
CFStringRef CreateString(CFAllocatorRef inAllocator, std::u16string inText);

}  // namespace cf
