// Item names between the File Manager's UTF-16, the UTF-8 bytes on disk and the Pascal
// strings of file specifications.
#pragma once

#include <Carbon/Files.h>

#include <span>
#include <string>
#include <string_view>

namespace carbon {

// Companion files and the port's temporary files start with this; no item may.
inline constexpr std::string_view kCompanionPrefix = "._";

bool IsReservedName(std::string_view inDiskName);

// The platform's names of the two forks: the data fork's is empty.
inline constexpr std::u16string_view kResourceForkName = u"RESOURCE_FORK";

// The disk form of a name given to create or rename an item, after checking that it can be
// one: errFSMissingName, errFSNameTooLong (more than 255 units) or bdNamErr.
OSErr DiskNameForNewItem(std::span<const UniChar> inName, std::string& outDiskName);
// The disk form of a name to look up. fnfErr for a name no item can have.
OSErr DiskNameForLookup(std::span<const UniChar> inName, std::string& outDiskName);

// A name read from disk; bytes that are not UTF-8 become the units 0xDC80-0xDCFF.
std::u16string UnicodeName(std::string_view inDiskName);
void SetHFSName(std::u16string_view inName, HFSUniStr255& outName);

// A name as a Pascal string of at most inCapacity - 1 bytes in the system encoding; false when
// it does not fit or has no form in that encoding.
bool PascalName(std::u16string_view inName, StringPtr outName, std::size_t inCapacity);
// The Pascal name of a file specification as Unicode; false for bytes the system encoding
// does not read.
bool UnicodeOfPascalName(ConstStringPtr inName, std::u16string& outName);

// Disk bytes of Unicode text, undoing the escapes of UnicodeName; false for other lone
// surrogates.
bool EncodeUTF8(std::u16string_view inText, std::string& outBytes);

}  // namespace carbon
