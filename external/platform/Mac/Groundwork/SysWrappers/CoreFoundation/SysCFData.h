// The owning, copy-on-write wrapper of a block of bytes.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFObject.h>

#include <CoreFoundation/CFData.h>

namespace Gx {

// Unlike the string and container wrappers, this one passes ranges to the platform as they
// are: callers of the byte calls are expected to know their lengths, and the platform stops
// the process on a range outside the data.
class CFData : public CFMutableObject<CFDataRef, CFMutableDataRef> {
    using Base = CFMutableObject<CFDataRef, CFMutableDataRef>;

public:
    CFData() = default;
    CFData(CFDataRef inRef, bool inRetain) : Base(inRef, inRetain) {}
    CFData(CFMutableDataRef inRef, bool inRetain) { AttachMutableRef(inRef, inRetain); }
    CFData(const CFData&) = default;
    CFData& operator=(const CFData&) = default;
    ~CFData() override = default;

    // A new, empty, private mutable block; RuntimeError 'cfcr' when none can be made.
    explicit CFData(CFIndex inCapacity, CFAllocatorRef inAllocator = kCFAllocatorDefault);
    // An immutable copy of the bytes, copied again on its first change; 'cfcr' likewise.
    CFData(const UInt8* inBytes, CFIndex inLength, CFAllocatorRef inAllocator = kCFAllocatorDefault);

    CFIndex GetLength() const { return CFDataGetLength(UseRef()); }
    const UInt8* GetBytePtr() const { return CFDataGetBytePtr(UseRef()); }
    void GetDataBytes(CFRange inRange, UInt8* outBuffer) const { CFDataGetBytes(UseRef(), inRange, outBuffer); }

    void DeleteBytes(CFRange inRange) { CFDataDeleteBytes(UseMutableRef(), inRange); }
    void ReplaceBytes(CFRange inRange, const UInt8* inBytes, CFIndex inLength)
    {
        CFDataReplaceBytes(UseMutableRef(), inRange, inBytes, inLength);
    }
    void AppendBytes(const UInt8* inBytes, CFIndex inLength) { CFDataAppendBytes(UseMutableRef(), inBytes, inLength); }
    void IncreaseLength(CFIndex inExtraLength) { CFDataIncreaseLength(UseMutableRef(), inExtraLength); }
    void SetLength(CFIndex inLength) { CFDataSetLength(UseMutableRef(), inLength); }
    // Private to this wrapper from then on, so writing through it changes no other holder's bytes.
    UInt8* GetMutableBytePtr() { return CFDataGetMutableBytePtr(UseMutableRef()); }

private:
    CFMutableDataRef MutableCopy(CFDataRef inRef) const override;
};

}  // namespace Gx
