// Creating strings, reading them back and appending to them.
#include "CFStringObject.h"
#include "StringEncoding.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <unordered_map>
#include <utility>

void AdoptedBuffer::Adopt(const void* inBuffer, CFAllocatorRef inDeallocator)
{
    Free();
    mBuffer = inBuffer;
    mDeallocator = static_cast<CFAllocatorRef>(CFRetain(inDeallocator ? inDeallocator : CFAllocatorGetDefault()));
}

void AdoptedBuffer::Free() noexcept
{
    if (mDeallocator == nullptr)
        return;
    CFAllocatorDeallocate(mDeallocator, const_cast<void*>(mBuffer));
    CFRelease(std::exchange(mDeallocator, nullptr));
    mBuffer = nullptr;
}

bool __CFString::Equal(const Object& inOther) const { return mText == static_cast<const __CFString&>(inOther).mText; }

CFHashCode __CFString::Hash() const
{
    CFHashCode hash = mHash.load(std::memory_order_relaxed);
    if (hash != 0)
        return hash;
    // FNV-1a over the code units; 0 is kept free to mean "not computed yet".
    hash = 14695981039346656037ul;
    for (char16_t unit : mText)
        hash = (hash ^ unit) * 1099511628211ul;
    hash = hash == 0 ? 1 : hash;
    mHash.store(hash, std::memory_order_relaxed);
    return hash;
}

std::string __CFString::Describe() const { return cf::UTF8(this); }

namespace cf {

const __CFString& String(CFStringRef inString, const char* inCall)
{
    return Checked<__CFString>(inString, kTypeIDString, inCall);
}

__CFString& MutableString(CFMutableStringRef inString, const char* inCall)
{
    __CFString& string = CheckedMutable<__CFString>(inString, kTypeIDString, inCall);
    if (!string.mMutable)
        Fatal(inCall, "the string %p is not mutable", static_cast<const void*>(inString));
    return string;
}

CFStringRef CreateString(CFAllocatorRef inAllocator, std::u16string inText)
{
    return Create<__CFString>(inAllocator, std::move(inText), false);
}

void CheckRange(const __CFString& inString, CFRange inRange, const char* inCall)
{
    CFIndex length = CFIndex(inString.mText.size());
    if (inRange.location < 0 || inRange.length < 0 || inRange.location > length ||
        inRange.length > length - inRange.location)
        Fatal(inCall, "range {%ld, %ld} is outside a string of length %ld", inRange.location, inRange.length, length);
}

std::u16string_view Substring(const __CFString& inString, CFRange inRange, const char* inCall)
{
    CheckRange(inString, inRange, inCall);
    return inString.View().substr(size_t(inRange.location), size_t(inRange.length));
}

CFStringRef MakeString(std::string_view inUTF8)
{
    std::u16string text;
    if (!Decode({reinterpret_cast<const UInt8*>(inUTF8.data()), inUTF8.size()}, kCFStringEncodingUTF8, false, text))
        Decode({reinterpret_cast<const UInt8*>(inUTF8.data()), inUTF8.size()}, kCFStringEncodingISOLatin1, false, text);
    return CreateString(nullptr, std::move(text));
}

std::string UTF8(CFStringRef inString)
{
    std::string bytes;
    Encode(String(inString, "CFStringGetCString").mText, kCFStringEncodingUTF8, '?', false, bytes);
    return bytes;
}

}  // namespace cf

namespace {

// Constant strings are made once per text and live for the whole process.
class ConstantStrings {
public:
    CFStringRef Get(const char* inCString)
    {
        std::lock_guard guard(mLock);
        if (auto found = mByAddress.find(inCString); found != mByAddress.end())
            return found->second;
        auto [entry, added] = mByText.try_emplace(inCString, nullptr);
        if (added) {
            std::u16string text;
            std::string_view bytes = entry->first;
            if (!cf::Decode({reinterpret_cast<const UInt8*>(bytes.data()), bytes.size()}, kCFStringEncodingUTF8, false,
                            text))
                cf::Fatal("CFSTR", "\"%s\" is not valid UTF-8", inCString);
            entry->second = new __CFString(std::move(text), false, cf::Object::Lifetime::Static);
            entry->second->mConstantCString = entry->first.c_str();
        }
        mByAddress.emplace(inCString, entry->second);
        return entry->second;
    }

private:
    std::mutex mLock;
    std::unordered_map<const char*, const __CFString*> mByAddress;
    std::unordered_map<std::string, __CFString*> mByText;
};

const __CFString& Str(CFStringRef inString, const char* inCall) { return cf::String(inString, inCall); }

std::u16string_view Units(const UniChar* inChars, CFIndex inCount)
{
    return {reinterpret_cast<const char16_t*>(inChars), size_t(inCount)};
}

}  // namespace

CFTypeID CFStringGetTypeID() { return cf::kTypeIDString; }

CFStringRef CFSTR(const char* inCString)
{
    static auto* sConstants = new ConstantStrings;  // never destroyed: constants outlive every user
    return sConstants->Get(inCString);
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef inAllocator, const UInt8* inBytes, CFIndex inNumBytes,
                                    CFStringEncoding inEncoding, Boolean inIsExternalRepresentation)
{
    if (inNumBytes < 0 || (inBytes == nullptr && inNumBytes > 0))
        return nullptr;
    std::u16string text;
    if (!cf::Decode({inBytes, size_t(inNumBytes)}, inEncoding, inIsExternalRepresentation, text))
        return nullptr;
    return cf::CreateString(inAllocator, std::move(text));
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef inAllocator, const char* inCString, CFStringEncoding inEncoding)
{
    if (inCString == nullptr)
        return nullptr;
    return CFStringCreateWithBytes(inAllocator, reinterpret_cast<const UInt8*>(inCString),
                                   CFIndex(std::strlen(inCString)), inEncoding, false);
}

CFStringRef CFStringCreateWithPascalString(CFAllocatorRef inAllocator, ConstStringPtr inPString,
                                           CFStringEncoding inEncoding)
{
    if (inPString == nullptr)
        return nullptr;
    return CFStringCreateWithBytes(inAllocator, inPString + 1, inPString[0], inEncoding, false);
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef inAllocator, const UniChar* inChars, CFIndex inNumChars)
{
    if (inNumChars < 0 || (inChars == nullptr && inNumChars > 0))
        return nullptr;
    return cf::CreateString(inAllocator, std::u16string(Units(inChars, inNumChars)));
}

CFStringRef CFStringCreateWithCharactersNoCopy(CFAllocatorRef inAllocator, const UniChar* inChars, CFIndex inNumChars,
                                               CFAllocatorRef inContentsDeallocator)
{
    if (inNumChars < 0 || (inChars == nullptr && inNumChars > 0))
        return nullptr;
    // The string keeps its own copy, so that every string stores its text the same way; the
    // buffer is only held so that it is handed back as the caller expects. On failure the
    // caller still owns it.
    auto* string = cf::Create<__CFString>(inAllocator, std::u16string(Units(inChars, inNumChars)), false);
    if (string != nullptr && inChars != nullptr && inContentsDeallocator != kCFAllocatorNull)
        string->mAdopted.Adopt(inChars, inContentsDeallocator);
    return string;
}

CFStringRef CFStringCreateCopy(CFAllocatorRef inAllocator, CFStringRef inString)
{
    const __CFString& string = Str(inString, "CFStringCreateCopy");
    // An immutable string cannot change, so its copy can be the string itself.
    if (!string.mMutable && (inAllocator == nullptr || inAllocator == string.Allocator() || string.IsStatic()))
        return static_cast<CFStringRef>(CFRetain(inString));
    return cf::CreateString(inAllocator, string.mText);
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef inAllocator, CFStringRef inString, CFRange inRange)
{
    const __CFString& string = Str(inString, "CFStringCreateWithSubstring");
    cf::CheckRange(string, inRange, "CFStringCreateWithSubstring");
    return cf::CreateString(inAllocator, string.mText.substr(size_t(inRange.location), size_t(inRange.length)));
}

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef inAllocator, CFIndex)
{
    return cf::Create<__CFString>(inAllocator, std::u16string(), true);
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex, CFStringRef inString)
{
    return cf::Create<__CFString>(inAllocator, Str(inString, "CFStringCreateMutableCopy").mText, true);
}

CFIndex CFStringGetLength(CFStringRef inString) { return CFIndex(Str(inString, "CFStringGetLength").mText.size()); }

UniChar CFStringGetCharacterAtIndex(CFStringRef inString, CFIndex inIndex)
{
    const __CFString& string = Str(inString, "CFStringGetCharacterAtIndex");
    if (inIndex < 0 || size_t(inIndex) >= string.mText.size())
        cf::Fatal("CFStringGetCharacterAtIndex", "index %ld is outside a string of length %zu", inIndex,
                  string.mText.size());
    return string.mText[size_t(inIndex)];
}

void CFStringGetCharacters(CFStringRef inString, CFRange inRange, UniChar* outBuffer)
{
    const __CFString& string = Str(inString, "CFStringGetCharacters");
    cf::CheckRange(string, inRange, "CFStringGetCharacters");
    std::copy_n(string.mText.data() + inRange.location, inRange.length, outBuffer);
}

const UniChar* CFStringGetCharactersPtr(CFStringRef inString)
{
    return reinterpret_cast<const UniChar*>(Str(inString, "CFStringGetCharactersPtr").mText.c_str());
}

const char* CFStringGetCStringPtr(CFStringRef inString, CFStringEncoding inEncoding)
{
    const __CFString& string = Str(inString, "CFStringGetCStringPtr");
    if (string.mConstantCString == nullptr || !cf::IsSupportedEncoding(inEncoding) ||
        cf::MaxBytesPerUnit(inEncoding) == 2 || cf::MaxBytesPerUnit(inEncoding) == 4)
        return nullptr;
    for (char16_t unit : string.mText)
        if (unit >= 0x80)
            return nullptr;
    return string.mConstantCString;
}

ConstStringPtr CFStringGetPascalStringPtr(CFStringRef inString, CFStringEncoding)
{
    // Text is kept as UTF-16, never as a Pascal string, so there is no pointer to give.
    Str(inString, "CFStringGetPascalStringPtr");
    return nullptr;
}

Boolean CFStringGetCString(CFStringRef inString, char* outBuffer, CFIndex inBufferSize, CFStringEncoding inEncoding)
{
    const __CFString& string = Str(inString, "CFStringGetCString");
    std::string bytes;
    if (outBuffer == nullptr || inBufferSize <= 0 || !cf::Encode(string.mText, inEncoding, 0, false, bytes))
        return false;
    if (CFIndex(bytes.size()) >= inBufferSize)
        return false;
    std::memcpy(outBuffer, bytes.c_str(), bytes.size() + 1);
    return true;
}

namespace {

// The encoded form of the longest run of whole characters from the start of inText that
// takes at most inRoom bytes.
std::string EncodedPrefix(std::u16string_view inText, CFStringEncoding inEncoding, std::size_t inRoom)
{
    std::string prefix;
    std::string character;
    for (std::size_t at = 0; at < inText.size();) {
        std::size_t length = cf::CharacterLength(inText, at);
        if (!cf::Encode(inText.substr(at, length), inEncoding, 0, false, character) ||
            prefix.size() + character.size() > inRoom)
            break;
        prefix += character;
        at += length;
    }
    return prefix;
}

}  // namespace

Boolean CFStringGetPascalString(CFStringRef inString, StringPtr outBuffer, CFIndex inBufferSize,
                                CFStringEncoding inEncoding)
{
    const __CFString& string = Str(inString, "CFStringGetPascalString");
    std::string bytes;
    if (outBuffer == nullptr || inBufferSize <= 0 || !cf::Encode(string.mText, inEncoding, 0, false, bytes))
        return false;
    std::size_t room = std::min<std::size_t>(255, std::size_t(inBufferSize) - 1);
    bool fits = bytes.size() <= room;
    if (!fits)
        bytes = EncodedPrefix(string.mText, inEncoding, room);
    // Text that does not fit still leaves as much of itself as fits, so that a short field shows
    // the start of a long text; the answer says that it was cut.
    outBuffer[0] = UInt8(bytes.size());
    std::memcpy(outBuffer + 1, bytes.data(), bytes.size());
    return fits;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex inLength, CFStringEncoding inEncoding)
{
    return inLength * cf::MaxBytesPerUnit(inEncoding);
}

void CFStringAppend(CFMutableStringRef inString, CFStringRef inAppended)
{
    __CFString& string = cf::MutableString(inString, "CFStringAppend");
    string.mText += Str(inAppended, "CFStringAppend").mText;  // safe when appending a string to itself
    string.Changed();
}

void CFStringAppendCharacters(CFMutableStringRef inString, const UniChar* inChars, CFIndex inNumChars)
{
    __CFString& string = cf::MutableString(inString, "CFStringAppendCharacters");
    if (inNumChars < 0 || (inChars == nullptr && inNumChars > 0))
        cf::Fatal("CFStringAppendCharacters", "invalid characters (%p, %ld)", static_cast<const void*>(inChars),
                  inNumChars);
    string.mText.append(Units(inChars, inNumChars));
    string.Changed();
}

void CFStringAppendCString(CFMutableStringRef inString, const char* inCString, CFStringEncoding inEncoding)
{
    __CFString& string = cf::MutableString(inString, "CFStringAppendCString");
    if (inCString == nullptr)
        cf::Fatal("CFStringAppendCString", "called with a NULL C string");
    std::u16string text;
    if (!cf::Decode({reinterpret_cast<const UInt8*>(inCString), std::strlen(inCString)}, inEncoding, false, text))
        return;
    string.mText += text;
    string.Changed();
}

void CFStringAppendPascalString(CFMutableStringRef inString, ConstStr255Param inPString, CFStringEncoding inEncoding)
{
    __CFString& string = cf::MutableString(inString, "CFStringAppendPascalString");
    if (inPString == nullptr)
        cf::Fatal("CFStringAppendPascalString", "called with a NULL Pascal string");
    std::u16string text;
    if (!cf::Decode({inPString + 1, inPString[0]}, inEncoding, false, text))
        return;
    string.mText += text;
    string.Changed();
}
