// Inside the temporary-buffer call: the sizes it tries, apart from the memory it asks for.
#pragma once

#include "ExtFileUtilsInternal.h"

namespace ExtFileUtils {

// GetTempBuffer's sizes: the first one tried for a request, and the one tried after it when
// the first cannot be had.
ByteCount RoundedTempBufferSize(ByteCount inRequestedSize);
ByteCount FallbackTempBufferSize(UInt64 inFreeMemory, UInt64 inLargestBlock);

}  // namespace ExtFileUtils
