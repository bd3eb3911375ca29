// Reading a resource file. The file starts with four big-endian words: the offsets and
// lengths of its data area and of its map. Each resource's data in the data area is a 32-bit
// length followed by that many bytes. The map starts with room for a copy of the header and
// for fields that only mean something in memory, then holds the offsets (from the map's
// start) of the type list and of the name list. The type list holds its count less one, then
// for each type the code, the number of its resources less one and the offset (from the type
// list's start) of its reference list. A reference is the ID, the offset of the name in the
// name list (0xFFFF for none), the attributes, a 24-bit offset of the data in the data area,
// and four bytes kept for a handle. The name list holds Pascal strings.
//
// The bytes may come from another system, a damaged disk or a fuzzer, so no offset, count or
// length is believed before it has been checked against the bytes that must hold it.
#include "ResourceMap.h"

#include <Carbon/MacErrors.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

namespace carbon {

namespace {

constexpr UInt64 kMapHeaderSize = 28;
constexpr UInt64 kTypeEntrySize = 8;
constexpr UInt64 kReferenceSize = 12;
constexpr UInt32 kNoNameOffset = 0xFFFF;
// Counts are stored less one in 16 bits, yet the calls that report them answer a signed
// 16-bit number, so a larger count could not be told to anybody.
constexpr SInt32 kLargestCount = 0x7FFF;

// A stretch of the file.
struct Area {
    UInt64 start = 0;
    UInt64 length = 0;

    UInt64 End() const { return start + length; }
    bool Holds(UInt64 inOffset, UInt64 inLength) const { return inOffset <= length && inLength <= length - inOffset; }
};

// Big-endian numbers that are read only from inside the area asked for.
class Reader {
public:
    explicit Reader(std::span<const UInt8> inBytes) : mBytes(inBytes) {}

    std::optional<UInt32> Read(const Area& inArea, UInt64 inOffset, unsigned inWidth) const
    {
        if (inArea.End() > mBytes.size() || !inArea.Holds(inOffset, inWidth))
            return std::nullopt;
        UInt32 value = 0;
        for (unsigned i = 0; i < inWidth; ++i)
            value = (value << 8) | mBytes[inArea.start + inOffset + i];
        return value;
    }

private:
    std::span<const UInt8> mBytes;
};

struct Layout {
    Area data;
    Area map;
    UInt64 typeList = 0;  // from the map's start
    UInt64 nameList = 0;
};

std::optional<Layout> ReadLayout(const Reader& inReader, UInt64 inFileSize)
{
    const Area file{0, inFileSize};
    auto dataOffset = inReader.Read(file, 0, 4), mapOffset = inReader.Read(file, 4, 4);
    auto dataLength = inReader.Read(file, 8, 4), mapLength = inReader.Read(file, 12, 4);
    if (!dataOffset || !mapOffset || !dataLength || !mapLength || !file.Holds(*dataOffset, *dataLength) ||
        !file.Holds(*mapOffset, *mapLength))
        return std::nullopt;
    Layout layout{{*dataOffset, *dataLength}, {*mapOffset, *mapLength}};
    auto typeList = inReader.Read(layout.map, 24, 2), nameList = inReader.Read(layout.map, 26, 2);
    if (!typeList || !nameList || *typeList < kMapHeaderSize || *nameList > layout.map.length)
        return std::nullopt;
    layout.typeList = *typeList;
    layout.nameList = *nameList;
    return layout;
}

// A count stored less one, so that 0xFFFF stands for none.
std::optional<SInt32> StoredCount(std::optional<UInt32> inStored)
{
    if (!inStored)
        return std::nullopt;
    SInt32 count = SInt32(SInt16(*inStored)) + 1;
    if (count < 0 || count > kLargestCount)
        return std::nullopt;
    return count;
}

bool ReadName(const Reader& inReader, const Layout& inLayout, UInt32 inNameOffset, ResourceEntry& ioEntry)
{
    if (inNameOffset == kNoNameOffset)
        return true;
    UInt64 name = inLayout.nameList + inNameOffset;
    auto length = inReader.Read(inLayout.map, name, 1);
    if (!length || !inLayout.map.Holds(name + 1, *length))
        return false;
    ioEntry.nameOffset = UInt32(inLayout.map.start + name);
    return true;
}

bool ReadData(const Reader& inReader, const Layout& inLayout, UInt32 inDataOffset, ResourceEntry& ioEntry)
{
    auto length = inReader.Read(inLayout.data, inDataOffset, 4);
    if (!length || !inLayout.data.Holds(UInt64(inDataOffset) + 4, *length))
        return false;
    ioEntry.dataOffset = UInt32(inLayout.data.start + inDataOffset + 4);
    ioEntry.dataLength = *length;
    return true;
}

std::optional<ResourceEntry> ReadReference(const Reader& inReader, const Layout& inLayout, UInt64 inAt)
{
    auto id = inReader.Read(inLayout.map, inAt, 2), nameOffset = inReader.Read(inLayout.map, inAt + 2, 2);
    auto attributes = inReader.Read(inLayout.map, inAt + 4, 1), dataOffset = inReader.Read(inLayout.map, inAt + 5, 3);
    if (!id || !nameOffset || !attributes || !dataOffset)
        return std::nullopt;
    ResourceEntry entry;
    entry.id = ResID(*id);
    entry.attributes = UInt8(*attributes);
    if (!ReadName(inReader, inLayout, *nameOffset, entry) || !ReadData(inReader, inLayout, *dataOffset, entry))
        return std::nullopt;
    return entry;
}

// Reference lists of different types may overlap in a forged map; inBudget (what the map
// could hold without overlap) keeps such a map from making the list far larger than the file.
std::optional<ResourceTypeEntry> ReadType(const Reader& inReader, const Layout& inLayout, UInt64 inAt, UInt64& ioBudget)
{
    auto type = inReader.Read(inLayout.map, inAt, 4);
    auto count = StoredCount(inReader.Read(inLayout.map, inAt + 4, 2));
    auto references = inReader.Read(inLayout.map, inAt + 6, 2);
    if (!type || !count || !references || UInt64(*count) > ioBudget)
        return std::nullopt;
    ioBudget -= UInt64(*count);
    ResourceTypeEntry entry{*type, {}};
    entry.resources.reserve(std::size_t(*count));
    for (SInt32 i = 0; i < *count; ++i) {
        auto reference = ReadReference(inReader, inLayout,
                                       inLayout.typeList + *references + UInt64(i) * kReferenceSize);
        if (!reference)
            return std::nullopt;
        entry.resources.push_back(*reference);
    }
    return entry;
}

std::optional<std::vector<ResourceTypeEntry>> ReadTypes(const Reader& inReader, const Layout& inLayout)
{
    auto count = StoredCount(inReader.Read(inLayout.map, inLayout.typeList, 2));
    if (!count)
        return std::nullopt;
    UInt64 budget = inLayout.map.length / kReferenceSize;
    std::vector<ResourceTypeEntry> types;
    for (SInt32 i = 0; i < *count; ++i) {
        auto type = ReadType(inReader, inLayout, inLayout.typeList + 2 + UInt64(i) * kTypeEntrySize, budget);
        if (!type)
            return std::nullopt;
        types.push_back(std::move(*type));
    }
    return types;
}

}  // namespace

OSErr ResourceMap::Read(std::vector<UInt8> inBytes, ResourceMap& outMap)
{
    if (inBytes.empty())
        return eofErr;
    // Offsets inside the map are kept in 32 bits, like those the file itself stores.
    if (inBytes.size() > std::numeric_limits<UInt32>::max())
        return mapReadErr;
    const Reader reader(inBytes);
    std::optional<Layout> layout = ReadLayout(reader, inBytes.size());
    std::optional<std::vector<ResourceTypeEntry>> types;
    if (layout)
        types = ReadTypes(reader, *layout);
    if (!types)
        return mapReadErr;
    outMap.mBytes = std::move(inBytes);
    outMap.mTypes = std::move(*types);
    return noErr;
}

const ResourceTypeEntry* ResourceMap::FindType(ResType inType) const
{
    auto found = std::find_if(mTypes.begin(), mTypes.end(), [&](const auto& entry) { return entry.type == inType; });
    return found == mTypes.end() ? nullptr : &*found;
}

std::span<const UInt8> ResourceMap::Data(const ResourceEntry& inEntry) const
{
    return std::span(mBytes).subspan(inEntry.dataOffset, inEntry.dataLength);
}

std::span<const UInt8> ResourceMap::Name(const ResourceEntry& inEntry) const
{
    if (inEntry.nameOffset == ResourceEntry::kNoName)
        return {};
    return std::span(mBytes).subspan(inEntry.nameOffset + 1, mBytes[inEntry.nameOffset]);
}

}  // namespace carbon
