// The string object: UTF-16 code units, immutable or mutable. Shared by the files that
// implement the string calls.
#pragma once

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CFString.h>

#include <unicode/umachine.h>

#include <atomic>
#include <string>
#include <string_view>

// A caller's buffer whose ownership passed to a string (CFStringCreateWithCharactersNoCopy):
// the string keeps a copy of the characters, but the buffer must still be returned through
// the caller's deallocator when the string goes, not before, because the caller may go on
// reading the characters for as long as the string lives.
class AdoptedBuffer {
public:
    AdoptedBuffer() = default;
    AdoptedBuffer(const AdoptedBuffer&) = delete;
    AdoptedBuffer& operator=(const AdoptedBuffer&) = delete;
    ~AdoptedBuffer() { Free(); }

    // Takes the buffer; inDeallocator NULL means the default allocator.
    void Adopt(const void* inBuffer, CFAllocatorRef inDeallocator);
    void Free() noexcept;

private:
    const void* mBuffer = nullptr;
    CFAllocatorRef mDeallocator = nullptr;
};

struct __CFString final : cf::Object {
    std::u16string mText;
    bool mMutable = false;
    // The text as the caller gave it, kept for constant strings so that the direct C-string
    // pointer can be answered without converting.
    const char* mConstantCString = nullptr;
    AdoptedBuffer mAdopted;

    __CFString(std::u16string inText, bool inMutable, Lifetime inLifetime = Lifetime::Counted)
        : Object(cf::kTypeIDString, inLifetime), mText(std::move(inText)), mMutable(inMutable)
    {
    }

    bool Equal(const Object& inOther) const override;
    CFHashCode Hash() const override;
    std::string Describe() const override;
    bool IsFixed() const override { return !mMutable; }

    std::u16string_view View() const { return mText; }

    // Called after every change, so the cached hash is never stale.
    void Changed() { mHash.store(0, std::memory_order_relaxed); }

private:
    void Finalize() noexcept override
    {
        std::u16string().swap(mText);
        mAdopted.Free();
    }

    mutable std::atomic<CFHashCode> mHash{0};
};

namespace cf {

const __CFString& String(CFStringRef inString, const char* inCall);
__CFString& MutableString(CFMutableStringRef inString, const char* inCall);
CFStringRef CreateString(CFAllocatorRef inAllocator, std::u16string inText);

// Stops the process when inRange does not lie inside the string.
void CheckRange(const __CFString& inString, CFRange inRange, const char* inCall);

// The part of the string that inRange covers, after checking it.
std::u16string_view Substring(const __CFString& inString, CFRange inRange, const char* inCall);

// The ICU view of UTF-16 text.
inline const UChar* ICUChars(std::u16string_view inText) { return reinterpret_cast<const UChar*>(inText.data()); }

}  // namespace cf
