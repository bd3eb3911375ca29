// The checksum engine on Intel's storage acceleration library: it folds 64 bytes at a time with
// carry-less multiplication where the processor has it, and picks its own best code at run time.
#include <utils/CRCEngine.h>

#include <isa-l/crc.h>

namespace kvx::crc_engine {

bool Available() { return true; }

std::uint32_t Update(std::uint32_t inCRC, const unsigned char* inData, std::uint64_t inLength)
{
    // The reflected form is the one of zlib and gzip, with the same start value and final
    // complement; crc32_ieee is the bit-reversed variant and gives other values.
    return crc32_gzip_refl(inCRC, inData, inLength);
}

}  // namespace kvx::crc_engine
