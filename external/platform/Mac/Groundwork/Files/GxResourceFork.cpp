#include <Groundwork/Files/GxResourceFork.h>

#include <Groundwork/Files/GxFSUtils.h>

namespace Gx {

namespace {

HFSUniStr255 sResourceForkName{};

}  // namespace

ResourceFork::ResourceFork(SInt16 inRefNum, bool inOwnsRefNum) : FileFork(inRefNum, inOwnsRefNum) {}

ResourceFork::ResourceFork(const FSRef& inRef, SInt8 inPermission) : FileFork(inRef, inPermission, GetForkName()) {}

ResourceFork::~ResourceFork() = default;

const HFSUniStr255& ResourceFork::GetForkName()
{
    // A zero length means "not asked yet"; the name never changes while the program runs.
    if (sResourceForkName.length == 0)
        FSUtils::ThrowIfFailed(FSGetResourceForkName(&sResourceForkName), "FSGetResourceForkName failed");
    return sResourceForkName;
}

}  // namespace Gx
