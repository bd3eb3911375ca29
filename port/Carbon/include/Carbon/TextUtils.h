// Text utilities that read strings kept in resources.
#pragma once

#include <MacTypes.h>

// The inIndex-th (from 1) Pascal string of the 'STR#' resource inStrListID, searched for
// through the whole resource chain. When there is no such resource or string, outString is
// left exactly as it was, so callers set its length byte to 0 beforehand.
void GetIndString(StringPtr outString, SInt16 inStrListID, SInt16 inIndex);
