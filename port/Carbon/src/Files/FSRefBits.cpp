// FSRef bytes.
#include "FSRefBits.h"

#include <Carbon/MacErrors.h>

#include <cstring>

namespace carbon {

namespace {

constexpr UInt32 kRefMagic = 0x46535266;  // "FSRf"

struct RefBits {
    UInt32 magic;
    UInt32 generation;
    UInt64 device;
    UInt64 inode;
};
static_assert(sizeof(RefBits) <= sizeof(FSRef));

}  // namespace

void EncodeRef(const RefIdentity& inIdentity, FSRef* outRef)
{
    std::memset(outRef, 0, sizeof *outRef);
    RefBits bits{kRefMagic, inIdentity.generation, UInt64(inIdentity.key.device), UInt64(inIdentity.key.inode)};
    std::memcpy(outRef->hidden, &bits, sizeof bits);
}

std::optional<RefIdentity> DecodeRef(const FSRef& inRef)
{
    RefBits bits;
    std::memcpy(&bits, inRef.hidden, sizeof bits);
    if (bits.magic != kRefMagic)
        return std::nullopt;
    return RefIdentity{{dev_t(bits.device), ino_t(bits.inode)}, bits.generation};
}

OSErr CompareRefs(const FSRef& inRef1, const FSRef& inRef2)
{
    std::optional<RefIdentity> first = DecodeRef(inRef1), second = DecodeRef(inRef2);
    if (!first || !second)
        return errFSBadFSRef;
    if (first->key.device != second->key.device)
        return diffVolErr;
    return first->key.inode == second->key.inode && first->generation == second->generation ? noErr
                                                                                            : errFSRefsDifferent;
}

}  // namespace carbon
