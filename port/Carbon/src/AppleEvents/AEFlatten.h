// The flat form of descriptors, used to store them and to send them to other processes.
// Reading checks every length and count against the bytes actually there, so that a flat
// form from outside the process can at worst be refused.
#pragma once

#include "AEValue.h"

#include <span>

namespace carbon::ae {

// "aefl", version, reserved, then the length of what follows the header.
inline constexpr Size kFlatHeaderSize = 12;

std::vector<UInt8> Flatten(DescType inType, const Value& inValue);
// noErr, errAECorruptData, or errAENewerVersion for a form this version cannot read.
// The whole of inBytes must be one flat descriptor.
OSErr Unflatten(std::span<const UInt8> inBytes, DescType& outType, Value& outValue);
// The length a flat form's header announces, header included; nothing if it is no header.
std::optional<Size> FlatLength(std::span<const UInt8, kFlatHeaderSize> inHeader);

// The data of a list, record or event as AEGetDescData gives it out and AECreateDesc takes
// it back.
std::vector<UInt8> ContainerData(const Value& inValue);
OSErr ParseContainerData(Kind inKind, std::span<const UInt8> inBytes, Value& outValue);

}  // namespace carbon::ae
