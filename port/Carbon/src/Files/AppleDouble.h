// The AppleDouble format: the header file that carries a file's Finder information and
// resource fork on file systems without forks. Big-endian: a 4-byte magic and version, 16
// bytes of filler, a 2-byte entry count, then per entry its ID, offset and length (4 bytes
// each), then the entries' bytes.
#pragma once

#include <MacTypes.h>

#include <optional>
#include <span>
#include <vector>

namespace carbon {

struct AppleDouble {
    static constexpr UInt32 kMagic = 0x00051607;
    static constexpr UInt32 kVersion = 0x00020000;

    enum EntryID : UInt32 {
        kResourceFork = 2,
        kFileDates = 8,   // creation, modification, backup, access
        kFinderInfo = 9,  // FinderInfo then ExtendedFinderInfo, 32 bytes
    };

    struct Entry {
        UInt32 id;
        std::vector<UInt8> bytes;
        bool operator==(const Entry&) const = default;
    };

    // In file order. Entries this system does not use are kept as they were read.
    std::vector<Entry> entries;

    const std::vector<UInt8>* Find(UInt32 inID) const;
    std::vector<UInt8>* Find(UInt32 inID);
    std::vector<UInt8>& Insert(UInt32 inID);  // the entry, added empty if missing
    void Remove(UInt32 inID);
    bool operator==(const AppleDouble&) const = default;
};

// Nothing for bytes that are not an AppleDouble file: a wrong magic or version, an entry
// that lies outside the file, an entry ID of 0 or given twice.
std::optional<AppleDouble> ParseAppleDouble(std::span<const UInt8> inBytes);
std::vector<UInt8> SerializeAppleDouble(const AppleDouble& inFile);

}  // namespace carbon
