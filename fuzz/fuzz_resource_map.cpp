// Resource maps from arbitrary bytes: a map the reader accepts keeps every name and every
// piece of data inside the bytes it was read from, its counts fit the calls that report
// them, and every string of every string list can be walked.
#include "Resources/ResourceMap.h"
#include "Resources/ResourceStrings.h"

#include <Carbon/MacErrors.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

// Reads every byte, so that the address sanitizer sees a span that reaches outside the map.
unsigned Sum(std::span<const UInt8> inBytes)
{
    unsigned sum = 0;
    for (UInt8 byte : inBytes)
        sum += byte;
    return sum;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* inData, size_t inSize)
{
    carbon::ResourceMap map;
    OSErr status = carbon::ResourceMap::Read(std::vector<UInt8>(inData, inData + inSize), map);
    if (status != noErr) {
        if (status != mapReadErr && status != eofErr)
            std::abort();
        return 0;
    }
    std::size_t resources = 0;
    volatile unsigned sink = 0;
    if (map.Types().size() > 0x7FFF)
        std::abort();
    for (const carbon::ResourceTypeEntry& type : map.Types()) {
        if (type.resources.size() > 0x7FFF)
            std::abort();
        resources += type.resources.size();
        for (const carbon::ResourceEntry& entry : type.resources) {
            std::span<const UInt8> data = map.Data(entry);
            if (data.size() != entry.dataLength || data.size() > inSize)
                std::abort();
            sink = sink + Sum(data) + Sum(map.Name(entry));
            if (type.type != FourCC("STR#"))
                continue;
            for (SInt32 index = 1; std::optional<std::span<const UInt8>> text = carbon::IndexedString(data, index);
                 ++index)
                sink = sink + Sum(*text);
        }
    }
    // Each reference takes twelve bytes of the map, so a map can never list more than that.
    if (resources > inSize / 12)
        std::abort();
    return 0;
}
