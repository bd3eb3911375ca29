// Finder information and dates in a companion.
#include "FSFinderInfo.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <initializer_list>

namespace carbon {

namespace {

constexpr std::size_t kHalf = 16;
// The dates entry counts seconds from the start of 2000, with this for "not known".
constexpr UInt32 kUnknownDate = 0x80000000;
constexpr SInt64 kSeconds1904To2000 = 3029529600;
constexpr std::size_t kDatesSize = 16;

// Field widths of the four records, in order, for turning each field around.
constexpr std::initializer_list<int> kFileInfoFields = {4, 4, 2, 2, 2, 2};
constexpr std::initializer_list<int> kFolderInfoFields = {2, 2, 2, 2, 2, 2, 2, 2};
constexpr std::initializer_list<int> kExtFileInfoFields = {2, 2, 2, 2, 2, 2, 4};
constexpr std::initializer_list<int> kExtFolderInfoFields = {2, 2, 4, 2, 2, 4};

void SwapFields(const UInt8* inFrom, UInt8* outTo, std::initializer_list<int> inFields)
{
    std::memcpy(outTo, inFrom, kHalf);
    if constexpr (std::endian::native == std::endian::big)
        return;
    std::size_t at = 0;
    for (int width : inFields) {
        std::reverse(outTo + at, outTo + at + width);
        at += std::size_t(width);
    }
}

UInt32 Read32(const std::vector<UInt8>& inBytes, std::size_t inAt)
{
    return UInt32(inBytes[inAt]) << 24 | UInt32(inBytes[inAt + 1]) << 16 | UInt32(inBytes[inAt + 2]) << 8 |
           inBytes[inAt + 3];
}

void Write32(std::vector<UInt8>& ioBytes, std::size_t inAt, UInt32 inValue)
{
    for (std::size_t byte = 0; byte < 4; ++byte)
        ioBytes[inAt + byte] = UInt8(inValue >> (24 - 8 * byte));
}

}  // namespace

void GetFinderInfo(const AppleDouble& inFile, bool inFolder, UInt8* outInfo, UInt8* outExtInfo)
{
    UInt8 disk[2 * kHalf] = {};
    if (const std::vector<UInt8>* entry = inFile.Find(AppleDouble::kFinderInfo))
        std::copy_n(entry->begin(), std::min(entry->size(), sizeof disk), disk);
    if (outInfo)
        SwapFields(disk, outInfo, inFolder ? kFolderInfoFields : kFileInfoFields);
    if (outExtInfo)
        SwapFields(disk + kHalf, outExtInfo, inFolder ? kExtFolderInfoFields : kExtFileInfoFields);
}

void SetFinderInfo(AppleDouble& ioFile, bool inFolder, const UInt8* inInfo, const UInt8* inExtInfo)
{
    std::vector<UInt8>& entry = ioFile.Insert(AppleDouble::kFinderInfo);
    // Longer entries (another system's extended attributes follow the 32 bytes) keep the rest.
    if (entry.size() < 2 * kHalf)
        entry.resize(2 * kHalf, 0);
    if (inInfo)
        SwapFields(inInfo, entry.data(), inFolder ? kFolderInfoFields : kFileInfoFields);
    if (inExtInfo)
        SwapFields(inExtInfo, entry.data() + kHalf, inFolder ? kExtFolderInfoFields : kExtFileInfoFields);
}

std::optional<UTCDateTime> GetStoredDate(const AppleDouble& inFile, StoredDate inWhich)
{
    const std::vector<UInt8>* entry = inFile.Find(AppleDouble::kFileDates);
    std::size_t at = std::size_t(inWhich) * 4;
    if (entry == nullptr || entry->size() < kDatesSize || Read32(*entry, at) == kUnknownDate)
        return std::nullopt;
    SInt64 seconds = SInt64(SInt32(Read32(*entry, at))) + kSeconds1904To2000;
    if (seconds < 0)
        return std::nullopt;
    return UTCDateTime{UInt16(seconds >> 32), UInt32(seconds), 0};
}

void SetStoredDate(AppleDouble& ioFile, StoredDate inWhich, std::optional<UTCDateTime> inDate)
{
    std::vector<UInt8>& entry = ioFile.Insert(AppleDouble::kFileDates);
    if (entry.size() < kDatesSize) {
        entry.assign(kDatesSize, 0);
        for (std::size_t at = 0; at < kDatesSize; at += 4)
            Write32(entry, at, kUnknownDate);
    }
    UInt32 stored = kUnknownDate;
    if (inDate) {
        SInt64 seconds = (SInt64(inDate->highSeconds) << 32 | inDate->lowSeconds) - kSeconds1904To2000;
        stored = UInt32(SInt32(std::clamp<SInt64>(seconds, -SInt64(kUnknownDate) + 1, SInt64(kUnknownDate) - 1)));
    }
    Write32(entry, std::size_t(inWhich) * 4, stored);
    bool empty = true;
    for (std::size_t at = 0; at < kDatesSize; at += 4)
        empty = empty && Read32(entry, at) == kUnknownDate;
    if (empty)
        ioFile.Remove(AppleDouble::kFileDates);
}

}  // namespace carbon
