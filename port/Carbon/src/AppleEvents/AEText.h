// Coercion between the three text types: typeChar (the system encoding), typeUTF8Text and
// typeUnicodeText (UTF-16 in the machine's byte order).
#pragma once

#include <Carbon/AEDataModel.h>

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace carbon::ae {

bool IsTextType(DescType inType);

// Nothing when the bytes are not valid text of the type, or the text has no form in the
// type asked for.
std::optional<std::u16string> DecodeText(DescType inType, std::span<const UInt8> inBytes);
std::optional<std::vector<UInt8>> EncodeText(DescType inType, const std::u16string& inText);

}  // namespace carbon::ae
