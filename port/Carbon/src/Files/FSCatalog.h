// Catalog information of a located item, read and written; shared by the single-item calls
// and the bulk iterator.
#pragma once

#include "FSItemTable.h"

#include <optional>
#include <string_view>

namespace carbon {

// The bits FSGetCatalogInfo knows.
inline constexpr FSCatalogInfoBitmap kGettableBits = kFSCatInfoGettableInfo | kFSCatInfoUserAccess;

void FillCatalogInfo(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, FSCatalogInfo& outInfo);
void FillName(const ItemLocation& inItem, HFSUniStr255& outName);
void FillSpec(const ItemLocation& inItem, FSSpec& outSpec);
OSErr ApplyCatalogInfo(const ItemLocation& inItem, FSCatalogInfoBitmap inWhichInfo, const FSCatalogInfo& inInfo);

// The items of a folder as the File Manager sees them (companions left out).
UInt32 CountItems(const ItemLocation& inFolder);

// A file specification's name for an item whose real name does not fit in one: the start of
// the name and "#" with the node ID in hexadecimal, as the platform shortens long names.
// The node ID that such a name carries, if it has the form.
std::optional<UInt32> NodeIDOfShortenedName(std::u16string_view inName);

}  // namespace carbon
