// Index and range rules shared by every container and string wrapper, and the two failures
// that all wrappers raise: an empty wrapper used, a create or copy call answering NULL.
#pragma once

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>

#include <CoreFoundation/CFBase.h>

namespace Gx {

namespace CFUtils {

// As an index: the last element. As a length: up to the end.
inline constexpr CFIndex kIndexToEnd = 0x7FFFFFFF;

// Each Verify... throws LogicError 'logc' when the rule fails; the matching Make... applies
// the same rule and the same adjustment but answers false instead. Both may have adjusted
// their argument before finding it invalid.

// Accepts an index below a non-negative count (a negative index is deliberately let
// through to the platform) and turns kIndexToEnd into the last index of a non-empty count.
void VerifyIndex(CFIndex inCount, CFIndex& ioIndex);
bool MakeValidIndex(CFIndex inCount, CFIndex& ioIndex);

// Accepts any index up to and including the count; kIndexToEnd becomes the count.
void VerifyInsertIndex(CFIndex inCount, CFIndex& ioIndex);
bool MakeInsertIndex(CFIndex inCount, CFIndex& ioIndex);

// Accepts a non-empty range inside a non-empty count. A kIndexToEnd location becomes the last
// index; a kIndexToEnd length becomes the whole count, so "to the end" only works from 0.
void VerifyRange(CFIndex inCount, CFRange& ioRange);
bool MakeValidRange(CFIndex inCount, CFRange& ioRange);

// RuntimeError 'cfnr' "Nil CF reference".
[[noreturn]] void ThrowNilReference();

// inRef itself, or RuntimeError 'cfcr' with inMessage ("CFArrayCreateMutable failed") when
// the platform answered NULL.
template <class Ref>
Ref CheckCreated(Ref inRef, const char* inMessage)
{
    if (inRef == nullptr)
        RuntimeError::Throw(exceptionID_CreateFailed, inMessage, sourceLocation_Nothing);
    return inRef;
}

}  // namespace CFUtils

using CFUtils::kIndexToEnd;

// The whole of a string or container.
inline constexpr CFRange cfRange_All{0, kIndexToEnd};

}  // namespace Gx
