#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <cstring>

namespace Gx {

const CFStringEncoding encoding_System = CFStringGetSystemEncoding();

using CFUtils::CheckCreated;

CFString::CFString(ConstStringPtr inPString, CFStringEncoding inEncoding, CFAllocatorRef inAllocator)
    : Base(CheckCreated(CFStringCreateWithPascalString(inAllocator, inPString, inEncoding),
                        "CFStringCreateWithPascalString failed"),
           false)
{
}

CFString::CFString(const char* inCString, CFStringEncoding inEncoding, CFAllocatorRef inAllocator)
    : Base(CheckCreated(CFStringCreateWithCString(inAllocator, inCString, inEncoding),
                        "CFStringCreateWithCString failed"),
           false)
{
}

CFString::CFString(const UniChar* inChars, CFIndex inCount, CFAllocatorRef inAllocator)
    : Base(CheckCreated(CFStringCreateWithCharacters(inAllocator, inChars, inCount),
                        "CFStringCreateWithCharacters failed"),
           false)
{
}

CFString::CFString(const HFSUniStr255& inName, CFAllocatorRef inAllocator)
    : CFString(inName.unicode, inName.length, inAllocator)
{
}

CFString::CFString(const UInt8* inBytes, CFIndex inCount, CFStringEncoding inEncoding, bool inIsExternalRepresentation,
                   CFAllocatorRef inAllocator)
    : Base(CheckCreated(CFStringCreateWithBytes(inAllocator, inBytes, inCount, inEncoding, inIsExternalRepresentation),
                        "CFStringCreateWithBytes failed"),
           false)
{
}

CFString::CFString(const std::string& inString, CFStringEncoding inEncoding, CFAllocatorRef inAllocator)
    : CFString(inString.c_str(), inEncoding, inAllocator)
{
}

void CFString::Assign4CharCode(FourCharCode inCode, CFAllocatorRef inAllocator)
{
    UInt8 bytes[sizeof inCode];
    std::memcpy(bytes, &inCode, sizeof inCode);
    *this = CFString(bytes, sizeof bytes, kCFStringEncodingMacRoman, false, inAllocator);
}

FourCharCode CFString::Get4CharCodeValue() const
{
    UInt8 bytes[sizeof(FourCharCode)] = {};
    CFStringGetBytes(UseRef(), CFRangeMake(0, 4), kCFStringEncodingMacRoman, 0, false, bytes, sizeof bytes, nullptr);
    FourCharCode code = 0;
    std::memcpy(&code, bytes, sizeof code);
    return code;
}

UniChar CFString::GetCharacterAt(CFIndex inIndex) const
{
    CFUtils::VerifyIndex(GetLength(), inIndex);
    return CFStringGetCharacterAtIndex(UseRef(), inIndex);
}

void CFString::GetSubstring(CFRange inRange, UniChar* outBuffer) const
{
    CFUtils::VerifyRange(GetLength(), inRange);
    CFStringGetCharacters(UseRef(), inRange, outBuffer);
}

CFIndex CFString::GetByteLength(CFRange inRange, CFStringEncoding inEncoding, UInt8 inLossByte,
                                bool inIsExternalRepresentation) const
{
    CFUtils::VerifyRange(GetLength(), inRange);
    CFIndex byteCount = 0;
    CFStringGetBytes(UseRef(), inRange, inEncoding, inLossByte, inIsExternalRepresentation, nullptr, 0, &byteCount);
    return byteCount;
}

CFIndex CFString::GetByteRange(CFIndex inBufferSize, UInt8* outBuffer, CFRange inRange, CFStringEncoding inEncoding,
                               UInt8 inLossByte, bool inIsExternalRepresentation) const
{
    CFUtils::VerifyRange(GetLength(), inRange);
    return CFStringGetBytes(UseRef(), inRange, inEncoding, inLossByte, inIsExternalRepresentation, outBuffer,
                            inBufferSize, nullptr);
}

void CFString::GetString(std::string& outString, CFStringEncoding inEncoding) const
{
    CFIndex byteCount = GetByteLength(cfRange_All, inEncoding, 0, false);
    if (byteCount < 1) {
        outString.clear();
        return;
    }
    outString.resize(static_cast<std::size_t>(byteCount));
    CFStringGetBytes(UseRef(), CFRangeMake(0, GetLength()), inEncoding, 0, false,
                     reinterpret_cast<UInt8*>(outString.data()), byteCount, nullptr);
}

CFRange CFString::FindInRange(CFRange inRange, CFStringRef inFind, CFStringCompareFlags inFlags) const
{
    CFUtils::VerifyRange(GetLength(), inRange);
    CFRange found = CFRangeMake(kCFNotFound, 0);
    if (!CFStringFindWithOptions(UseRef(), inFind, inRange, inFlags, &found))
        found = CFRangeMake(kCFNotFound, 0);
    return found;
}

void CFString::Replace(CFRange inRange, CFStringRef inReplacement)
{
    CFUtils::VerifyRange(GetLength(), inRange);
    CFStringReplace(UseMutableRef(), inRange, inReplacement);
}

void CFString::Delete(CFRange inRange)
{
    CFUtils::VerifyRange(GetLength(), inRange);
    CFStringDelete(UseMutableRef(), inRange);
}

void CFString::Insert(CFIndex inIndex, CFStringRef inInserted)
{
    CFUtils::VerifyInsertIndex(GetLength(), inIndex);
    CFStringInsert(UseMutableRef(), inIndex, inInserted);
}

CFMutableStringRef CFString::MutableCopy(CFStringRef inRef) const
{
    return CheckCreated(CFStringCreateMutableCopy(CFGetAllocator(inRef), 0, inRef), "CFStringCreateMutableCopy failed");
}

namespace {

// The left operand shares its object with the result, whose first change copies it.
template <class Right>
CFString Concatenated(CFString inLeft, Right inRight)
{
    inLeft.Append(inRight);
    return inLeft;
}

}  // namespace

CFString operator+(const CFString& inLeft, const char* inRight) { return Concatenated(inLeft, inRight); }
CFString operator+(const char* inLeft, const CFString& inRight)
{
    return Concatenated(CFString(inLeft), inRight.UseRef());
}
CFString operator+(const CFString& inLeft, ConstStringPtr inRight) { return Concatenated(inLeft, inRight); }
CFString operator+(ConstStringPtr inLeft, const CFString& inRight)
{
    return Concatenated(CFString(inLeft), inRight.UseRef());
}
CFString operator+(const CFString& inLeft, CFStringRef inRight) { return Concatenated(inLeft, inRight); }
CFString operator+(CFStringRef inLeft, const CFString& inRight)
{
    return Concatenated(CFString(inLeft, true), inRight.UseRef());
}
CFString operator+(const CFString& inLeft, const CFString& inRight) { return Concatenated(inLeft, inRight.UseRef()); }

bool operator==(const CFString& inLeft, CFStringRef inRight) { return inLeft.CompareTo(inRight) == kCFCompareEqualTo; }
bool operator==(const CFString& inLeft, const CFString& inRight) { return inLeft == inRight.UseRef(); }

std::weak_ordering operator<=>(const CFString& inLeft, CFStringRef inRight)
{
    switch (inLeft.CompareTo(inRight)) {
    case kCFCompareLessThan:
        return std::weak_ordering::less;
    case kCFCompareEqualTo:
        return std::weak_ordering::equivalent;
    default:
        return std::weak_ordering::greater;
    }
}
std::weak_ordering operator<=>(const CFString& inLeft, const CFString& inRight) { return inLeft <=> inRight.UseRef(); }

}  // namespace Gx
