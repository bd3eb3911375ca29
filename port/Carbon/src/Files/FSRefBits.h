// The bytes of an FSRef: a magic number, the device, the inode and the generation of the
// item table's entry. An entry is dropped when its item is found deleted, so a reference
// to a deleted item, or to a new item that reuses the inode, no longer matches.
#pragma once

#include "FSItemLocation.h"

#include <optional>

namespace carbon {

struct RefIdentity {
    ItemKey key;
    UInt32 generation = 0;
};

void EncodeRef(const RefIdentity& inIdentity, FSRef* outRef);
// Nothing for bytes that are not a reference.
std::optional<RefIdentity> DecodeRef(const FSRef& inRef);

// By identity, without looking at the disk: 0, errFSRefsDifferent, diffVolErr, or
// errFSBadFSRef when either is not a reference.
OSErr CompareRefs(const FSRef& inRef1, const FSRef& inRef2);

}  // namespace carbon
