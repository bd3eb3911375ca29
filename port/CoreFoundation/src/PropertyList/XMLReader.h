// A fast reader of the XML form of property lists, straight into our values. It knows the
// property-list elements and the plain XML that property-list files are written in; anything
// else (character data sections, unknown elements, damage) it leaves to the full reader.
#pragma once

#include "CFPropertyListSupport.h"

#include <string_view>

namespace cf::plist {

// The value, or nothing when the text holds something this reader does not handle, which
// need not mean the text is damaged.
OwnedValue ReadXML(CFAllocatorRef inAllocator, std::string_view inText, CFOptionFlags inOptions);

}  // namespace cf::plist
