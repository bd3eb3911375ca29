// File IDs: finding a file again by the node ID it was given.
#include "FSCatalog.h"
#include "FSItemTable.h"

#include <Carbon/FilesExtras.h>
#include <Carbon/MacErrors.h>

#include <cstring>

using namespace carbon;

OSErr PBResolveFileIDRefSync(HParmBlkPtr ioParamBlock)
{
    if (ioParamBlock == nullptr)
        return paramErr;
    FIDParam& block = ioParamBlock->fidParam;
    auto answer = [&](OSErr inStatus) { return block.ioResult = inStatus; };
    FSRef ref;
    ItemLocation item;
    // IDs 1 and 2 are the fixed directory IDs of a volume's root and its parent.
    if (block.ioFileID <= fsRtDirID || RefOfNode(block.ioVRefNum, UInt32(block.ioFileID), &ref) != noErr ||
        LocateItem(&ref, item) != noErr)
        return answer(fidNotFound);
    if (item.IsDirectory())
        return answer(notAFileErr);
    FSSpec spec;
    FillSpec(item, spec);
    block.ioSrcDirID = spec.parID;
    if (block.ioNamePtr)
        std::memcpy(block.ioNamePtr, spec.name, std::size_t(spec.name[0]) + 1);
    return answer(noErr);
}
