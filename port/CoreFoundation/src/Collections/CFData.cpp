// Blocks of bytes. Bytes the object owns live in a vector; bytes handed over without a copy
// stay where the caller put them and are given back through the caller's deallocator.
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFRuntime.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <span>
#include <stdexcept>
#include <vector>

namespace {

// Bytes the data object does not own, with the allocator that gives them back.
class ForeignBytes {
public:
    ForeignBytes() = default;
    ForeignBytes(const UInt8* inBytes, CFAllocatorRef inDeallocator) : mBytes(inBytes), mDeallocator(inDeallocator)
    {
        if (mDeallocator)
            CFRetain(mDeallocator);
    }
    ForeignBytes(const ForeignBytes&) = delete;
    ForeignBytes& operator=(const ForeignBytes&) = delete;
    ~ForeignBytes() { Free(); }

    const UInt8* Bytes() const { return mBytes; }

    void Free() noexcept
    {
        if (mDeallocator) {
            if (mDeallocator != kCFAllocatorNull && mBytes != nullptr)
                CFAllocatorDeallocate(mDeallocator, const_cast<UInt8*>(mBytes));
            CFRelease(mDeallocator);
        }
        mBytes = nullptr;
        mDeallocator = nullptr;
    }

private:
    const UInt8* mBytes = nullptr;
    CFAllocatorRef mDeallocator = nullptr;
};

}  // namespace

struct __CFData final : cf::Object {
    enum class Kind { Immutable, Mutable };

    bool mMutable;
    CFIndex mCapacity;  // 0: the data may grow without limit
    std::vector<UInt8> mOwned;
    ForeignBytes mForeign;
    CFIndex mForeignLength = 0;

    bool IsFixed() const override { return !mMutable; }

    __CFData(Kind inKind, CFIndex inCapacity, std::span<const UInt8> inBytes)
        : Object(cf::kTypeIDData), mMutable(inKind == Kind::Mutable), mCapacity(inCapacity),
          mOwned(inBytes.begin(), inBytes.end())
    {
    }

    __CFData(const UInt8* inBytes, CFIndex inLength, CFAllocatorRef inDeallocator)
        : Object(cf::kTypeIDData), mMutable(false), mCapacity(0), mForeign(inBytes, inDeallocator),
          mForeignLength(inLength)
    {
    }

    std::span<const UInt8> View() const
    {
        if (mForeign.Bytes())
            return {mForeign.Bytes(), size_t(mForeignLength)};
        return mOwned;
    }
    CFIndex Length() const { return CFIndex(View().size()); }

    bool Equal(const Object& inOther) const override
    {
        std::span<const UInt8> mine = View(), theirs = static_cast<const __CFData&>(inOther).View();
        return std::equal(mine.begin(), mine.end(), theirs.begin(), theirs.end());
    }

    // FNV-1a over the length and at most the first 80 bytes: enough to tell data apart in a
    // hash table without making big blocks expensive to hash.
    CFHashCode Hash() const override
    {
        std::span<const UInt8> bytes = View();
        CFHashCode hash = 14695981039346656037ul ^ bytes.size();
        for (UInt8 byte : bytes.first(std::min<size_t>(bytes.size(), 80)))
            hash = (hash ^ byte) * 1099511628211ul;
        return hash;
    }

    std::string Describe() const override;

private:
    void Finalize() noexcept override
    {
        std::vector<UInt8>().swap(mOwned);
        mForeign.Free();
    }
};

std::string __CFData::Describe() const
{
    // Long blocks show their first 24 and last 8 bytes, which is what one looks at in a log.
    std::span<const UInt8> bytes = View();
    char header[64];
    std::snprintf(header, sizeof header, "{length = %zu, capacity = %zu, bytes = 0x", bytes.size(),
                  mCapacity ? size_t(mCapacity) : std::max(bytes.size(), mOwned.capacity()));
    std::string text = DescribePrefix() + header;
    auto hex = [&text](std::span<const UInt8> inPart) {
        char pair[3];
        for (UInt8 byte : inPart) {
            std::snprintf(pair, sizeof pair, "%02x", byte);
            text += pair;
        }
    };
    if (bytes.size() <= 32) {
        hex(bytes);
    } else {
        hex(bytes.first(24));
        text += " ... ";
        hex(bytes.last(8));
    }
    return text + "}";
}

namespace {

const __CFData& Data(CFDataRef inData, const char* inCall)
{
    return cf::Checked<__CFData>(inData, cf::kTypeIDData, inCall);
}

__CFData& MutableData(CFMutableDataRef inData, const char* inCall)
{
    __CFData& data = cf::CheckedMutable<__CFData>(inData, cf::kTypeIDData, inCall);
    if (!data.mMutable)
        cf::Fatal(inCall, "the data %p is not mutable", static_cast<const void*>(inData));
    return data;
}

void CheckRange(const __CFData& inData, CFRange inRange, const char* inCall)
{
    CFIndex length = inData.Length();
    if (inRange.location < 0 || inRange.length < 0 || inRange.location > length ||
        inRange.length > length - inRange.location)
        cf::Fatal(inCall, "range {%ld, %ld} is outside data of length %ld", inRange.location, inRange.length, length);
}

// Bytes to add to the data; also refuses a length whose sum with the data's would overflow.
void CheckBytes(const __CFData& inData, const UInt8* inBytes, CFIndex inLength, const char* inCall)
{
    if (inLength < 0 || (inBytes == nullptr && inLength > 0) ||
        inLength > std::numeric_limits<CFIndex>::max() - inData.Length())
        cf::Fatal(inCall, "invalid bytes (%p, %ld)", static_cast<const void*>(inBytes), inLength);
}

void CheckCapacity(const __CFData& inData, CFIndex inLength, const char* inCall)
{
    if (inLength < 0)
        cf::Fatal(inCall, "negative length %ld", inLength);
    if (inData.mCapacity != 0 && inLength > inData.mCapacity)
        cf::Fatal(inCall, "length %ld exceeds the fixed capacity %ld", inLength, inData.mCapacity);
}

// Running out of memory while growing leaves no sensible status to answer with (the calls
// return nothing), so it stops the process like any other broken precondition.
template <class Change>
void Grow(const char* inCall, CFIndex inLength, Change inChange)
{
    try {
        inChange();
    } catch (const std::exception&) {
        cf::Fatal(inCall, "cannot hold %ld bytes", inLength);
    }
}

void Resize(__CFData& ioData, CFIndex inLength, const char* inCall)
{
    CheckCapacity(ioData, inLength, inCall);
    Grow(inCall, inLength, [&] { ioData.mOwned.resize(size_t(inLength)); });  // new bytes are zero
}

void Replace(__CFData& ioData, CFRange inRange, const UInt8* inNewBytes, CFIndex inNewLength, const char* inCall)
{
    CheckRange(ioData, inRange, inCall);
    CheckBytes(ioData, inNewBytes, inNewLength, inCall);
    CFIndex newLength = ioData.Length() - inRange.length + inNewLength;
    CheckCapacity(ioData, newLength, inCall);
    Grow(inCall, newLength, [&] {
        // The new bytes may point into the data itself, so they are copied out before it changes.
        std::vector<UInt8> replacement(inNewBytes, inNewBytes + inNewLength);
        auto first = ioData.mOwned.erase(ioData.mOwned.begin() + inRange.location,
                                         ioData.mOwned.begin() + inRange.location + inRange.length);
        ioData.mOwned.insert(first, replacement.begin(), replacement.end());
    });
}

}  // namespace

CFTypeID CFDataGetTypeID() { return cf::kTypeIDData; }

CFDataRef CFDataCreate(CFAllocatorRef inAllocator, const UInt8* inBytes, CFIndex inLength)
{
    if (inLength < 0 || (inBytes == nullptr && inLength > 0))
        return nullptr;
    return cf::Create<__CFData>(inAllocator, __CFData::Kind::Immutable, 0, std::span(inBytes, size_t(inLength)));
}

CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef inAllocator, const UInt8* inBytes, CFIndex inLength,
                                      CFAllocatorRef inBytesDeallocator)
{
    if (inLength < 0 || (inBytes == nullptr && inLength > 0))
        return nullptr;
    CFAllocatorRef deallocator = inBytesDeallocator ? inBytesDeallocator : CFAllocatorGetDefault();
    return cf::Create<__CFData>(inAllocator, inBytes, inLength, deallocator);
}

CFDataRef CFDataCreateCopy(CFAllocatorRef inAllocator, CFDataRef inData)
{
    const __CFData& data = Data(inData, "CFDataCreateCopy");
    // Immutable bytes cannot change under the copy, so the copy can be the object itself.
    if (!data.mMutable && (inAllocator == nullptr || inAllocator == data.Allocator()))
        return static_cast<CFDataRef>(CFRetain(inData));
    return cf::Create<__CFData>(inAllocator, __CFData::Kind::Immutable, 0, data.View());
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef inAllocator, CFIndex inCapacity)
{
    if (inCapacity < 0)
        return nullptr;
    return cf::Create<__CFData>(inAllocator, __CFData::Kind::Mutable, inCapacity, std::span<const UInt8>());
}

CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef inAllocator, CFIndex inCapacity, CFDataRef inData)
{
    const __CFData& data = Data(inData, "CFDataCreateMutableCopy");
    if (inCapacity < 0 || (inCapacity != 0 && inCapacity < data.Length()))
        cf::Fatal("CFDataCreateMutableCopy", "capacity %ld cannot hold %ld bytes", inCapacity, data.Length());
    return cf::Create<__CFData>(inAllocator, __CFData::Kind::Mutable, inCapacity, data.View());
}

CFIndex CFDataGetLength(CFDataRef inData) { return Data(inData, "CFDataGetLength").Length(); }

const UInt8* CFDataGetBytePtr(CFDataRef inData) { return Data(inData, "CFDataGetBytePtr").View().data(); }

UInt8* CFDataGetMutableBytePtr(CFMutableDataRef inData)
{
    return MutableData(inData, "CFDataGetMutableBytePtr").mOwned.data();
}

void CFDataGetBytes(CFDataRef inData, CFRange inRange, UInt8* outBuffer)
{
    const __CFData& data = Data(inData, "CFDataGetBytes");
    CheckRange(data, inRange, "CFDataGetBytes");
    if (inRange.length > 0)
        std::memcpy(outBuffer, data.View().data() + inRange.location, size_t(inRange.length));
}

void CFDataSetLength(CFMutableDataRef inData, CFIndex inLength)
{
    Resize(MutableData(inData, "CFDataSetLength"), inLength, "CFDataSetLength");
}

void CFDataIncreaseLength(CFMutableDataRef inData, CFIndex inExtraLength)
{
    __CFData& data = MutableData(inData, "CFDataIncreaseLength");
    if (inExtraLength < 0 || inExtraLength > std::numeric_limits<CFIndex>::max() - data.Length())
        cf::Fatal("CFDataIncreaseLength", "invalid extra length %ld", inExtraLength);
    Resize(data, data.Length() + inExtraLength, "CFDataIncreaseLength");
}

void CFDataAppendBytes(CFMutableDataRef inData, const UInt8* inBytes, CFIndex inLength)
{
    __CFData& data = MutableData(inData, "CFDataAppendBytes");
    Replace(data, CFRangeMake(data.Length(), 0), inBytes, inLength, "CFDataAppendBytes");
}

void CFDataReplaceBytes(CFMutableDataRef inData, CFRange inRange, const UInt8* inNewBytes, CFIndex inNewLength)
{
    Replace(MutableData(inData, "CFDataReplaceBytes"), inRange, inNewBytes, inNewLength, "CFDataReplaceBytes");
}

void CFDataDeleteBytes(CFMutableDataRef inData, CFRange inRange)
{
    Replace(MutableData(inData, "CFDataDeleteBytes"), inRange, nullptr, 0, "CFDataDeleteBytes");
}
