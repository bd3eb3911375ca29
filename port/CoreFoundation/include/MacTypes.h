// The platform's basic scalar types, status codes and Pascal strings.
#pragma once

#include <cstddef>
#include <cstdint>

using UInt8 = std::uint8_t;
using SInt8 = std::int8_t;
using UInt16 = std::uint16_t;
using SInt16 = std::int16_t;
using UInt32 = std::uint32_t;
using SInt32 = std::int32_t;
using UInt64 = std::uint64_t;
using SInt64 = std::int64_t;

using Boolean = unsigned char;
using Byte = UInt8;
using SignedByte = SInt8;
using Float32 = float;
using Float64 = double;

using OSErr = SInt16;
using OSStatus = SInt32;
using FourCharCode = UInt32;
using OSType = FourCharCode;
using ResType = FourCharCode;
using UniChar = UInt16;
using UniCharCount = unsigned long;
using UTF32Char = UInt32;
using ItemCount = unsigned long;
using ByteCount = unsigned long;
using LogicalAddress = void*;
using Ptr = char*;
using Handle = char**;
using Size = long;

using Str255 = unsigned char[256];
using Str63 = unsigned char[64];
using Str31 = unsigned char[32];
using Str15 = unsigned char[16];
using StringPtr = unsigned char*;
using ConstStringPtr = const unsigned char*;
using ConstStr255Param = const unsigned char*;

inline constexpr OSStatus noErr = 0;

using OptionBits = UInt32;

// QuickDraw's point and rectangle, which records such as the Finder's information carry.
struct Point {
    SInt16 v;
    SInt16 h;
};
struct Rect {
    SInt16 top;
    SInt16 left;
    SInt16 bottom;
    SInt16 right;
};

// The four-character code of a text such as 'oser', computed at compile time so that
// code can write FourCC("oser") where the original platform writes a multi-character literal.
constexpr FourCharCode FourCC(const char (&inCode)[5])
{
    return (FourCharCode(UInt8(inCode[0])) << 24) | (FourCharCode(UInt8(inCode[1])) << 16) |
           (FourCharCode(UInt8(inCode[2])) << 8) | FourCharCode(UInt8(inCode[3]));
}
