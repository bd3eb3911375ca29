// What a companion holds for the catalog: the Finder information, kept big-endian on disk
// as every system that reads AppleDouble expects and in the machine's order in
// FSCatalogInfo, and the creation and backup dates that Linux cannot keep itself.
#pragma once

#include "AppleDouble.h"

#include <Carbon/DateTimeUtils.h>

#include <optional>

namespace carbon {

// 16 bytes each; NULL leaves that half as it was (or zero when reading).
void GetFinderInfo(const AppleDouble& inFile, bool inFolder, UInt8* outInfo, UInt8* outExtInfo);
void SetFinderInfo(AppleDouble& ioFile, bool inFolder, const UInt8* inInfo, const UInt8* inExtInfo);

enum class StoredDate { Creation = 0, Backup = 2 };  // their places in the dates entry

std::optional<UTCDateTime> GetStoredDate(const AppleDouble& inFile, StoredDate inWhich);
// Kept to the second. Nothing forgets the date; the entry goes when it holds no date.
void SetStoredDate(AppleDouble& ioFile, StoredDate inWhich, std::optional<UTCDateTime> inDate);

}  // namespace carbon
