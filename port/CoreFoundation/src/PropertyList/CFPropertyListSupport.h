// What the property-list readers and writers and the preferences store share: the nesting
// limit, and constructors of values that honour the mutability options.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPropertyList.h>
#include <PortSupport/Owned.h>

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cf::plist {

// Every walk over a tree recurses once per level, so hostile input that nests deeper than
// this is refused instead of exhausting the stack.
inline constexpr int kMaxDepth = 512;

using port::Owned;

using OwnedValue = Owned<CFTypeRef>;

enum class Kind { String, Number, Boolean, Date, Data, Array, Dictionary, Other };
Kind KindOf(CFTypeRef inValue);

// The constructors answer NULL when the allocator refuses. Containers retain their elements.
CFTypeRef MakeString(CFAllocatorRef inAllocator, std::u16string_view inText, CFOptionFlags inOptions);
CFTypeRef MakeData(CFAllocatorRef inAllocator, std::span<const UInt8> inBytes, CFOptionFlags inOptions);
CFTypeRef MakeArray(CFAllocatorRef inAllocator, std::span<const OwnedValue> inElements, CFOptionFlags inOptions);
// A later duplicate key replaces an earlier one.
CFTypeRef MakeDictionary(CFAllocatorRef inAllocator, std::span<const OwnedValue> inKeys,
                         std::span<const OwnedValue> inValues, CFOptionFlags inOptions);

std::vector<CFTypeRef> Elements(CFArrayRef inArray);
// The entries of a dictionary, ordered by key when every key is a string, so that what is
// written from the same dictionary is always the same.
using Entries = std::vector<std::pair<CFTypeRef, CFTypeRef>>;
Entries SortedEntries(CFDictionaryRef inDictionary);
// The same into outEntries, whose memory a walk over many dictionaries can use again.
void SortedEntries(CFDictionaryRef inDictionary, Entries& outEntries);

// The UTF-16 units of a string.
std::u16string Units(CFStringRef inString);

}  // namespace cf::plist
