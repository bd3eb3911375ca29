// Strings from 'STR#' resources.
#include "ResourceStrings.h"

#include <Carbon/Resources.h>
#include <Carbon/TextUtils.h>

#include <algorithm>

namespace carbon {

std::optional<std::span<const UInt8>> IndexedString(std::span<const UInt8> inList, SInt32 inIndex)
{
    if (inList.size() < 2 || inIndex < 1 || inIndex > ((SInt32(inList[0]) << 8) | inList[1]))
        return std::nullopt;
    std::size_t at = 2;
    for (SInt32 i = 1;; ++i) {
        if (at >= inList.size() || inList[at] > inList.size() - at - 1)
            return std::nullopt;
        if (i == inIndex)
            return inList.subspan(at + 1, inList[at]);
        at += std::size_t(inList[at]) + 1;
    }
}

}  // namespace carbon

void GetIndString(StringPtr outString, SInt16 inStrListID, SInt16 inIndex)
{
    if (outString == nullptr)
        return;
    Handle list = GetResource(FourCC("STR#"), inStrListID);
    if (list == nullptr)
        return;
    std::span<const UInt8> bytes(reinterpret_cast<const UInt8*>(*list), std::size_t(GetHandleSize(list)));
    if (std::optional<std::span<const UInt8>> text = carbon::IndexedString(bytes, inIndex)) {
        outString[0] = UInt8(text->size());
        std::copy(text->begin(), text->end(), outString + 1);
    }
}
