// The bridge to libplist, which reads and writes the XML and binary forms: its trees of
// nodes turned into our values and back.
#pragma once

#include "CFPropertyListSupport.h"

#include <PortSupport/UniqueHandle.h>
#include <plist/plist.h>

#include <memory>
#include <span>
#include <string>

namespace cf::plist {

using Node = port::UniqueHandle<void, plist_free>;

// Parses the XML or the binary form; nullptr and a reason when the bytes are not one.
Node ParseNode(std::span<const UInt8> inBytes, CFPropertyListFormat inFormat, std::string& outError);
// The XML or binary form of a tree.
std::string SerializeNode(plist_t inNode, CFPropertyListFormat inFormat);

// NULL and a reason when the tree holds something our values cannot stand for.
CFPropertyListRef ValueFromNode(plist_t inNode, CFAllocatorRef inAllocator, CFOptionFlags inOptions,
                                std::string& outError);
// nullptr and a reason when the value is not a property list libplist can hold.
Node NodeFromValue(CFPropertyListRef inValue, std::string& outError);

}  // namespace cf::plist
