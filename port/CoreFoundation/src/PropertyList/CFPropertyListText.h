// The older text form of property lists that string tables use: "key" = "value"; entries,
// ( arrays ), { dictionaries }, <hex data>, and /* */ and // comments.
#pragma once

#include <CoreFoundation/CFPropertyList.h>

#include <span>
#include <string>

namespace cf::plist {

// Reads the text form, in UTF-8 or, after a byte-order mark, UTF-16. A bare sequence of
// "key" = "value"; entries is a dictionary. NULL and a reason that names the line when the
// bytes are not a property list.
CFPropertyListRef ParseText(CFAllocatorRef inAllocator, std::span<const UInt8> inBytes, CFOptionFlags inOptions,
                            std::string& outError);

}  // namespace cf::plist
