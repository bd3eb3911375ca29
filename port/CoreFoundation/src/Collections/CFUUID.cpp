// Universally unique identifiers: sixteen bytes, printed as the platform prints them
// (upper-case hexadecimal in groups of 8-4-4-4-12).
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFUUID.h>

#include <uuid/uuid.h>

#include <array>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>

namespace {

using Bytes = std::array<UInt8, 16>;

constexpr size_t kTextLength = 36;
constexpr bool IsDash(size_t inIndex) { return inIndex == 8 || inIndex == 13 || inIndex == 18 || inIndex == 23; }

std::array<char, kTextLength + 1> Format(const Bytes& inBytes)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::array<char, kTextLength + 1> text{};
    size_t next = 0;
    for (size_t at = 0; at < kTextLength; ++at) {
        if (IsDash(at)) {
            text[at] = '-';
            continue;
        }
        UInt8 byte = inBytes[next / 2];
        text[at] = kDigits[next % 2 == 0 ? byte >> 4 : byte & 0xF];
        ++next;
    }
    return text;
}

int HexValue(UniChar inUnit)
{
    if (inUnit >= '0' && inUnit <= '9')
        return inUnit - '0';
    if (inUnit >= 'a' && inUnit <= 'f')
        return inUnit - 'a' + 10;
    if (inUnit >= 'A' && inUnit <= 'F')
        return inUnit - 'A' + 10;
    return -1;
}

// Accepts exactly the printed form, in either case; anything else is not an identifier.
std::optional<Bytes> Parse(const std::array<UniChar, kTextLength>& inText)
{
    Bytes bytes{};
    size_t next = 0;
    for (size_t at = 0; at < kTextLength; ++at) {
        if (IsDash(at)) {
            if (inText[at] != '-')
                return std::nullopt;
            continue;
        }
        int digit = HexValue(inText[at]);
        if (digit < 0)
            return std::nullopt;
        bytes[next / 2] = UInt8(next % 2 == 0 ? digit << 4 : bytes[next / 2] | digit);
        ++next;
    }
    return bytes;
}

}  // namespace

struct __CFUUID;

namespace {

// Every identifier alive in the process, by value: one object per value, so that identifiers
// may be compared by address. The table does not own them; an identifier leaves it when its
// last reference goes.
struct Uniques {
    std::mutex lock;
    std::map<Bytes, __CFUUID*> byValue;
};

Uniques& TheUniques()
{
    static Uniques* sUniques = new Uniques;  // never destroyed: identifiers may outlive static destructors
    return *sUniques;
}

}  // namespace

struct __CFUUID final : cf::Object {
    Bytes mBytes;

    explicit __CFUUID(const Bytes& inBytes) : Object(cf::kTypeIDUUID), mBytes(inBytes) {}

    void Finalize() noexcept override
    {
        Uniques& uniques = TheUniques();
        std::lock_guard guard(uniques.lock);
        if (auto found = uniques.byValue.find(mBytes); found != uniques.byValue.end() && found->second == this)
            uniques.byValue.erase(found);
    }

    bool Equal(const Object& inOther) const override { return mBytes == static_cast<const __CFUUID&>(inOther).mBytes; }

    CFHashCode Hash() const override
    {
        CFHashCode hash;  // the bytes are random already; any eight of them make a good hash
        std::memcpy(&hash, mBytes.data() + 8, sizeof hash);
        return hash;
    }

    std::string Describe() const override { return DescribePrefix() + " " + Format(mBytes).data(); }
};

namespace {

const __CFUUID& UUID(CFUUIDRef inUUID, const char* inCall)
{
    return cf::Checked<__CFUUID>(inUUID, cf::kTypeIDUUID, inCall);
}

CFUUIDRef FindOrCreate(CFAllocatorRef inAllocator, const Bytes& inBytes)
{
    Uniques& uniques = TheUniques();
    std::lock_guard guard(uniques.lock);
    if (auto found = uniques.byValue.find(inBytes); found != uniques.byValue.end() && cf::RetainIfAlive(found->second))
        return found->second;
    __CFUUID* made = cf::Create<__CFUUID>(inAllocator, inBytes);
    if (made != nullptr)
        uniques.byValue[inBytes] = made;
    return made;
}

}  // namespace

CFTypeID CFUUIDGetTypeID() { return cf::kTypeIDUUID; }

CFUUIDRef CFUUIDCreate(CFAllocatorRef inAllocator)
{
    Bytes bytes;
    uuid_generate_random(bytes.data());
    return FindOrCreate(inAllocator, bytes);
}

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef inAllocator, CFStringRef inText)
{
    if (inText == nullptr || CFStringGetLength(inText) != CFIndex(kTextLength))
        return nullptr;
    std::array<UniChar, kTextLength> text;
    CFStringGetCharacters(inText, CFRangeMake(0, CFIndex(kTextLength)), text.data());
    std::optional<Bytes> bytes = Parse(text);
    return bytes ? FindOrCreate(inAllocator, *bytes) : nullptr;
}

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef inAllocator, CFUUIDBytes inBytes)
{
    Bytes bytes;
    std::memcpy(bytes.data(), &inBytes, bytes.size());
    return FindOrCreate(inAllocator, bytes);
}

CFStringRef CFUUIDCreateString(CFAllocatorRef inAllocator, CFUUIDRef inUUID)
{
    return CFStringCreateWithCString(inAllocator, Format(UUID(inUUID, "CFUUIDCreateString").mBytes).data(),
                                     kCFStringEncodingASCII);
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef inUUID)
{
    CFUUIDBytes bytes;
    std::memcpy(&bytes, UUID(inUUID, "CFUUIDGetUUIDBytes").mBytes.data(), sizeof bytes);
    return bytes;
}
