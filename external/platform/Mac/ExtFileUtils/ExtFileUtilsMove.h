// Inside the move and exchange calls: exchanging two files' names in several steps.
#pragma once

#include "ExtFileUtilsInternal.h"

namespace ExtFileUtils {

// Exchanges two files' names by moves and renames, for volumes that cannot exchange them in
// one step. Each reference keeps naming its own contents.
OSErr ExchangeByRenames(const FSRef* inSourceRef, const FSRef* inDestRef);

}  // namespace ExtFileUtils
