#include <Groundwork/Files/GxFileFork.h>

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>
#include <Groundwork/Files/GxFSObject.h>
#include <Groundwork/Files/GxFSUtils.h>

#include <Carbon/MacErrors.h>

namespace Gx {

using FSUtils::ThrowIfFailed;

FileFork::FileFork(SInt16 inRefNum, bool inOwnsRefNum) : mRefNum(inRefNum), mOwnsRefNum(inOwnsRefNum) {}

FileFork::FileFork(const FSRef& inRef, SInt8 inPermission, const HFSUniStr255& inForkName)
    : mRefNum(refNum_Closed), mOwnsRefNum(true)
{
    Open(inRef, inPermission, inForkName);
}

FileFork::~FileFork() { Close(); }

void FileFork::Open(const FSRef& inRef, SInt8 inPermission, const HFSUniStr255& inForkName)
{
    if (IsOpen())
        LogicError::Throw(exceptionID_Logic, "Fork is already open", sourceLocation_Nothing);
    OSErr status = FSCreateFork(&inRef, inForkName.length, inForkName.unicode);
    if (status != errFSForkExists)
        ThrowIfFailed(status, "FSCreateFork failed");
    SInt16 refNum = refNum_Closed;
    ThrowIfFailed(FSOpenFork(&inRef, inForkName.length, inForkName.unicode, inPermission, &refNum),
                  "FSOpenFork failed");
    mRefNum = refNum;
}

void FileFork::Close()
{
    if (!mOwnsRefNum || !IsOpen())
        return;
    // Nothing useful can be done about a fork that refuses to close; it is forgotten either way.
    FSCloseFork(mRefNum);
    mRefNum = refNum_Closed;
}

OSErr FileFork::Flush() { return FSFlushFork(mRefNum); }

SInt64 FileFork::GetSize() const
{
    SInt64 size = 0;
    ThrowIfFailed(FSGetForkSize(mRefNum, &size), "FSGetForkSize failed");
    return size;
}

void FileFork::SetSize(UInt16 inPositionMode, SInt64 inOffset)
{
    ThrowIfFailed(FSSetForkSize(mRefNum, inPositionMode, inOffset), "FSSetForkSize failed");
}

SInt64 FileFork::GetPosition() const
{
    SInt64 position = 0;
    ThrowIfFailed(FSGetForkPosition(mRefNum, &position), "FSGetForkPosition failed");
    return position;
}

void FileFork::SetPosition(UInt16 inPositionMode, SInt64 inOffset)
{
    ThrowIfFailed(FSSetForkPosition(mRefNum, inPositionMode, inOffset), "FSSetForkPosition failed");
}

void FileFork::GetFSRef(FSRef& outRef) const
{
    ThrowIfFailed(FSGetForkCBInfo(mRefNum, kFSInvalidVolumeRefNum, nullptr, nullptr, nullptr, &outRef, nullptr),
                  "FSGetForkCBInfo failed");
}

void FileFork::GetFSObject(FSObject& outObject) const
{
    FSRef ref;
    GetFSRef(ref);
    outObject = ref;
}

void FileFork::GetForkName(HFSUniStr255& outName) const
{
    ThrowIfFailed(FSGetForkCBInfo(mRefNum, kFSInvalidVolumeRefNum, nullptr, nullptr, nullptr, nullptr, &outName),
                  "FSGetForkCBInfo failed");
}

void FileFork::GetForkInfo(FSForkInfo& outInfo) const
{
    ThrowIfFailed(FSGetForkCBInfo(mRefNum, kFSInvalidVolumeRefNum, nullptr, nullptr, &outInfo, nullptr, nullptr),
                  "FSGetForkCBInfo failed");
}

}  // namespace Gx
