#include <Groundwork/SysWrappers/CoreFoundation/SysCFData.h>

namespace Gx {

CFData::CFData(CFIndex inCapacity, CFAllocatorRef inAllocator)
{
    AttachMutableRef(CFUtils::CheckCreated(CFDataCreateMutable(inAllocator, inCapacity), "CFDataCreateMutable failed"),
                     false);
}

CFData::CFData(const UInt8* inBytes, CFIndex inLength, CFAllocatorRef inAllocator)
    : Base(CFUtils::CheckCreated(CFDataCreate(inAllocator, inBytes, inLength), "CFDataCreate failed"), false)
{
}

CFMutableDataRef CFData::MutableCopy(CFDataRef inRef) const
{
    return CFUtils::CheckCreated(CFDataCreateMutableCopy(CFGetAllocator(inRef), 0, inRef),
                                 "CFDataCreateMutableCopy failed");
}

}  // namespace Gx
