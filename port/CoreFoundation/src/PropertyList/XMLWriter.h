// Writes the XML form of a property list straight from our values.
#pragma once

#include <CoreFoundation/CFPropertyList.h>

#include <string>

namespace cf::plist {

// False, with a reason, when the tree holds something the XML form cannot carry.
bool WriteXML(CFPropertyListRef inValue, std::string& outBytes, std::string& outError);

}  // namespace cf::plist
