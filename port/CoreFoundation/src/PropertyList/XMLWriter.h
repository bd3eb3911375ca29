// Writes the XML form of a property list straight from our values.
#pragma once

#include <CoreFoundation/CFPropertyList.h>

#include <string>

namespace cf::plist {

// False, with a reason, when the tree holds something the XML form cannot carry.
bool WriteXML(CFPropertyListRef inValue, std::string& outBytes, std::string& outError);
// Whether WriteXML would succeed, found without writing; when not, the reason of the first
// problem met (with several, not necessarily the one WriteXML names).
bool CheckXMLWritable(CFPropertyListRef inValue, std::string& outError);

}  // namespace cf::plist
