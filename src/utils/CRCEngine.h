// The library that computes CRC-32 checksums faster than a table can, when the build has one.
// The build compiles one of two sources for it: CRCEngineISAL.cpp when ISA-L is installed,
// CRCEngineNone.cpp (which has no such library) otherwise.
#pragma once

#include <cstdint>

namespace kvx::crc_engine {

// Whether this build has such a library. Without one, checksums are taken through the table.
bool Available();

// Continues inCRC over inLength bytes in zlib's convention: 0 starts a checksum, and the
// result of one piece continues it over the next. Only to be called when Available().
std::uint32_t Update(std::uint32_t inCRC, const unsigned char* inData, std::uint64_t inLength);

}  // namespace kvx::crc_engine
