// The Resource Manager's calls: each asks the shared chain and leaves its status for ResError.
#include "ResourceChain.h"

#include <Carbon/MacErrors.h>
#include <Carbon/Resources.h>

#include <algorithm>

using carbon::ResourceChain;
using Depth = carbon::ResourceChain::Depth;

namespace {

thread_local OSErr tResError = noErr;

OSErr Record(OSErr inStatus)
{
    tResError = inStatus;
    return inStatus;
}

Handle Recorded(Handle inHandle, OSErr inStatus)
{
    Record(inStatus);
    return inHandle;
}

std::span<const UInt8> PascalText(ConstStr255Param inName) { return {inName + 1, inName[0]}; }

}  // namespace

ResFileRefNum FSOpenResFile(const FSRef* inRef, SInt8 inPermission)
{
    HFSUniStr255 forkName;
    FSGetResourceForkName(&forkName);
    ResFileRefNum refNum = kResFileNotOpened;
    FSOpenResourceFile(inRef, forkName.length, forkName.unicode, inPermission, &refNum);
    return refNum;
}

// Every permission opens the fork for reading: nothing here writes resource files.
OSErr FSOpenResourceFile(const FSRef* inRef, UniCharCount inForkNameLength, const UniChar* inForkName,
                         SInt8 /*inPermissions*/, ResFileRefNum* outRefNum)
{
    if (inRef == nullptr || outRefNum == nullptr || (inForkName == nullptr && inForkNameLength > 0))
        return Record(paramErr);
    OSErr status = ResourceChain::Shared().Open(*inRef, {inForkName, inForkNameLength}, *outRefNum);
    if (status != noErr)
        *outRefNum = kResFileNotOpened;
    return Record(status);
}

void CloseResFile(ResFileRefNum inRefNum) { Record(ResourceChain::Shared().Close(inRefNum)); }

ResFileRefNum CurResFile()
{
    Record(noErr);
    return ResourceChain::Shared().Current();
}

void UseResFile(ResFileRefNum inRefNum) { Record(ResourceChain::Shared().Use(inRefNum)); }

OSErr ResError() { return tResError; }

ResourceCount CountResources(ResType inType)
{
    Record(noErr);
    return ResourceChain::Shared().Count(inType, Depth::WholeChain);
}

ResourceCount Count1Resources(ResType inType)
{
    Record(noErr);
    return ResourceChain::Shared().Count(inType, Depth::CurrentFile);
}

Handle GetResource(ResType inType, ResID inID)
{
    OSErr status = noErr;
    Handle handle = ResourceChain::Shared().Get(inType, inID, Depth::WholeChain, status);
    return Recorded(handle, status);
}

Handle Get1Resource(ResType inType, ResID inID)
{
    OSErr status = noErr;
    Handle handle = ResourceChain::Shared().Get(inType, inID, Depth::CurrentFile, status);
    return Recorded(handle, status);
}

Handle Get1IndResource(ResType inType, ResourceIndex inIndex)
{
    OSErr status = noErr;
    Handle handle = ResourceChain::Shared().GetIndexed(inType, inIndex, status);
    return Recorded(handle, status);
}

Handle GetNamedResource(ResType inType, ConstStr255Param inName)
{
    if (inName == nullptr)
        return Recorded(nullptr, paramErr);
    OSErr status = noErr;
    Handle handle = ResourceChain::Shared().GetNamed(inType, PascalText(inName), Depth::WholeChain, status);
    return Recorded(handle, status);
}

Handle Get1NamedResource(ResType inType, ConstStr255Param inName)
{
    if (inName == nullptr)
        return Recorded(nullptr, paramErr);
    OSErr status = noErr;
    Handle handle = ResourceChain::Shared().GetNamed(inType, PascalText(inName), Depth::CurrentFile, status);
    return Recorded(handle, status);
}

void GetResInfo(Handle inResource, ResID* outID, ResType* outType, StringPtr outName)
{
    std::optional<carbon::ResourceFacts> facts = ResourceChain::Shared().Facts(inResource);
    if (!facts) {
        Record(resNotFound);
        return;
    }
    if (outID)
        *outID = facts->id;
    if (outType)
        *outType = facts->type;
    if (outName) {
        outName[0] = UInt8(facts->name.size());
        std::copy(facts->name.begin(), facts->name.end(), outName + 1);
    }
    Record(noErr);
}

ResAttributes GetResAttrs(Handle inResource)
{
    std::optional<carbon::ResourceFacts> facts = ResourceChain::Shared().Facts(inResource);
    Record(facts ? noErr : resNotFound);
    return facts ? ResAttributes(facts->attributes) : 0;
}

long GetResourceSizeOnDisk(Handle inResource)
{
    std::optional<carbon::ResourceFacts> facts = ResourceChain::Shared().Facts(inResource);
    Record(facts ? noErr : resNotFound);
    return facts ? long(facts->size) : -1;
}

void ReleaseResource(Handle inResource) { Record(ResourceChain::Shared().Release(inResource)); }

void DetachResource(Handle inResource) { Record(ResourceChain::Shared().Detach(inResource)); }
