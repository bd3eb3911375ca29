// Coercion of descriptor values, and handing a value out the way the getters do.
#pragma once

#include "AEValue.h"

namespace carbon::ae {

// outType is inToType, or inType itself when inToType is typeWildCard or inType already.
// errAECoercionFail when the value cannot be expressed as the type asked for.
OSErr Coerce(DescType inType, const Value& inValue, DescType inToType, DescType& outType, Value& outValue);

// The getters' two forms: into the caller's buffer (at most inMaximumSize bytes, the full
// size through outActualSize), or as a new descriptor.
OSErr GetAsPtr(DescType inType, const Value& inValue, DescType inDesiredType, DescType* outTypeCode, void* outDataPtr,
               Size inMaximumSize, Size* outActualSize);
OSErr GetAsDesc(DescType inType, const Value& inValue, DescType inDesiredType, AEDesc* outResult);

}  // namespace carbon::ae
