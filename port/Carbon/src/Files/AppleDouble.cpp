// Reading and writing AppleDouble headers. The reader gets whatever another system, or an
// earlier crash, left beside a file, so it checks every offset before it uses it.
#include "AppleDouble.h"

#include <algorithm>
#include <utility>

namespace carbon {

namespace {

constexpr std::size_t kHeaderSize = 26;  // magic, version, filler, count
constexpr std::size_t kDescriptorSize = 12;
// Version 1 files, from older systems, differ only in what the filler holds.
constexpr UInt32 kVersion1 = 0x00010000;

UInt32 Read32(std::span<const UInt8> inBytes, std::size_t inAt)
{
    return UInt32(inBytes[inAt]) << 24 | UInt32(inBytes[inAt + 1]) << 16 | UInt32(inBytes[inAt + 2]) << 8 |
           UInt32(inBytes[inAt + 3]);
}

void Append32(std::vector<UInt8>& ioBytes, UInt32 inValue)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        ioBytes.push_back(UInt8(inValue >> shift));
}

}  // namespace

const std::vector<UInt8>* AppleDouble::Find(UInt32 inID) const
{
    auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry& inEntry) { return inEntry.id == inID; });
    return found == entries.end() ? nullptr : &found->bytes;
}

std::vector<UInt8>* AppleDouble::Find(UInt32 inID)
{
    return const_cast<std::vector<UInt8>*>(std::as_const(*this).Find(inID));
}

std::vector<UInt8>& AppleDouble::Insert(UInt32 inID)
{
    if (std::vector<UInt8>* bytes = Find(inID))
        return *bytes;
    return entries.emplace_back(Entry{inID, {}}).bytes;
}

void AppleDouble::Remove(UInt32 inID)
{
    std::erase_if(entries, [&](const Entry& inEntry) { return inEntry.id == inID; });
}

std::optional<AppleDouble> ParseAppleDouble(std::span<const UInt8> inBytes)
{
    if (inBytes.size() < kHeaderSize || Read32(inBytes, 0) != AppleDouble::kMagic)
        return std::nullopt;
    UInt32 version = Read32(inBytes, 4);
    if (version != AppleDouble::kVersion && version != kVersion1)
        return std::nullopt;
    std::size_t count = std::size_t(inBytes[24]) << 8 | inBytes[25];
    if (inBytes.size() < kHeaderSize + count * kDescriptorSize)
        return std::nullopt;
    AppleDouble file;
    for (std::size_t index = 0; index < count; ++index) {
        std::size_t at = kHeaderSize + index * kDescriptorSize;
        UInt32 id = Read32(inBytes, at);
        UInt64 offset = Read32(inBytes, at + 4), length = Read32(inBytes, at + 8);
        if (id == 0 || offset + length > inBytes.size() || file.Find(id) != nullptr)
            return std::nullopt;
        auto first = inBytes.begin() + std::ptrdiff_t(offset);
        file.entries.push_back({id, std::vector<UInt8>(first, first + std::ptrdiff_t(length))});
    }
    return file;
}

std::vector<UInt8> SerializeAppleDouble(const AppleDouble& inFile)
{
    std::vector<UInt8> bytes;
    Append32(bytes, AppleDouble::kMagic);
    Append32(bytes, AppleDouble::kVersion);
    bytes.resize(bytes.size() + 16, 0);
    bytes.push_back(UInt8(inFile.entries.size() >> 8));
    bytes.push_back(UInt8(inFile.entries.size()));
    UInt32 offset = UInt32(kHeaderSize + inFile.entries.size() * kDescriptorSize);
    for (const AppleDouble::Entry& entry : inFile.entries) {
        Append32(bytes, entry.id);
        Append32(bytes, offset);
        Append32(bytes, UInt32(entry.bytes.size()));
        offset += UInt32(entry.bytes.size());
    }
    for (const AppleDouble::Entry& entry : inFile.entries)
        bytes.insert(bytes.end(), entry.bytes.begin(), entry.bytes.end());
    return bytes;
}

}  // namespace carbon
