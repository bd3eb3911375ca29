#include <Groundwork/SysWrappers/CoreFoundation/SysCFUtils.h>

namespace Gx::CFUtils {

bool MakeValidIndex(CFIndex inCount, CFIndex& ioIndex)
{
    if (ioIndex < inCount)
        return inCount >= 0;
    if (ioIndex == kIndexToEnd && inCount > 0) {
        ioIndex = inCount - 1;
        return true;
    }
    return false;
}

bool MakeInsertIndex(CFIndex inCount, CFIndex& ioIndex)
{
    if (ioIndex <= inCount)
        return true;
    if (ioIndex == kIndexToEnd) {
        ioIndex = inCount;
        return true;
    }
    return false;
}

bool MakeValidRange(CFIndex inCount, CFRange& ioRange)
{
    if (inCount <= 0)
        return false;
    if (ioRange.location == kIndexToEnd)
        ioRange.location = inCount - 1;
    if (ioRange.location < 0 || ioRange.location >= inCount)
        return false;
    if (ioRange.length == kIndexToEnd)
        ioRange.length = inCount;
    // Compared as a remainder so that a huge length cannot overflow the sum.
    return ioRange.length > 0 && ioRange.length <= inCount - ioRange.location;
}

void VerifyIndex(CFIndex inCount, CFIndex& ioIndex)
{
    if (!MakeValidIndex(inCount, ioIndex))
        LogicError::Throw(exceptionID_Logic, "Invalid CFIndex", sourceLocation_Nothing);
}

void VerifyInsertIndex(CFIndex inCount, CFIndex& ioIndex)
{
    if (!MakeInsertIndex(inCount, ioIndex))
        LogicError::Throw(exceptionID_Logic, "Invalid insertion CFIndex", sourceLocation_Nothing);
}

void VerifyRange(CFIndex inCount, CFRange& ioRange)
{
    if (!MakeValidRange(inCount, ioRange))
        LogicError::Throw(exceptionID_Logic, "Invalid CFRange", sourceLocation_Nothing);
}

void ThrowNilReference() { RuntimeError::Throw(exceptionID_NilReference, "Nil CF reference", sourceLocation_Nothing); }

}  // namespace Gx::CFUtils
