// AppleDouble companions from arbitrary bytes: the reader answers nothing or a file that
// writes out and reads back the same, and what the catalog takes from it (Finder
// information, stored dates) can always be read.
#include "Files/AppleDouble.h"
#include "Files/FSFinderInfo.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* inData, size_t inSize)
{
    std::optional<carbon::AppleDouble> file = carbon::ParseAppleDouble({inData, inSize});
    if (!file)
        return 0;
    std::vector<UInt8> written = carbon::SerializeAppleDouble(*file);
    std::optional<carbon::AppleDouble> again = carbon::ParseAppleDouble(written);
    if (!again || !(*again == *file))
        std::abort();

    UInt8 info[16], extended[16];
    carbon::GetFinderInfo(*file, inSize & 1, info, extended);
    carbon::SetFinderInfo(*file, inSize & 1, info, extended);
    UInt8 check[16];
    carbon::GetFinderInfo(*file, inSize & 1, check, nullptr);
    for (size_t at = 0; at < sizeof check; ++at)
        if (check[at] != info[at])
            std::abort();
    for (carbon::StoredDate which : {carbon::StoredDate::Creation, carbon::StoredDate::Backup})
        if (std::optional<UTCDateTime> date = carbon::GetStoredDate(*file, which)) {
            carbon::SetStoredDate(*file, which, date);
            std::optional<UTCDateTime> back = carbon::GetStoredDate(*file, which);
            if (!back || back->highSeconds != date->highSeconds || back->lowSeconds != date->lowSeconds)
                std::abort();
        }
    return 0;
}
