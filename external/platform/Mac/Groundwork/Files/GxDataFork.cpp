#include <Groundwork/Files/GxDataFork.h>

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>
#include <Groundwork/Files/GxFSUtils.h>

namespace Gx {

namespace {

// Sizes at or above this do not fit the signed 32-bit lengths that readers of whole files
// work with.
constexpr SInt64 kLargestContents = 0x7FFFFFFF;

HFSUniStr255 sDataForkName{};

}  // namespace

DataFork::DataFork(SInt16 inRefNum, bool inOwnsRefNum) : FileFork(inRefNum, inOwnsRefNum) {}

DataFork::DataFork(const FSRef& inRef, SInt8 inPermission) : FileFork(inRef, inPermission, GetForkName()) {}

DataFork::~DataFork() = default;

const HFSUniStr255& DataFork::GetForkName()
{
    // A zero length means "not asked yet". The data fork's name is itself empty, so in
    // practice the platform is asked each time; that costs little and keeps one rule for
    // both kinds of fork.
    if (sDataForkName.length == 0)
        FSUtils::ThrowIfFailed(FSGetDataForkName(&sDataForkName), "FSGetDataForkName failed");
    return sDataForkName;
}

void DataFork::ReadData(void* outBuffer, UInt32 inCount, UInt16 inPositionMode, SInt64 inOffset)
{
    FSUtils::ThrowIfFailed(FSReadFork(UseRefNum(), inPositionMode, inOffset, inCount, outBuffer, nullptr),
                           "FSReadFork failed");
}

void DataFork::WriteData(const void* inBuffer, UInt32 inCount, UInt16 inPositionMode, SInt64 inOffset)
{
    FSUtils::ThrowIfFailed(FSWriteFork(UseRefNum(), inPositionMode, inOffset, inCount, inBuffer, nullptr),
                           "FSWriteFork failed");
}

CFData DataFork::ReadContents()
{
    SInt64 size = GetSize();
    if (size > kLargestContents)
        RuntimeError::Throw(exceptionID_Runtime, "Length of file is larger than 2 GB", sourceLocation_Nothing);
    CFData contents(0);
    contents.SetLength(CFIndex(size));
    ReadData(contents.GetMutableBytePtr(), UInt32(size), fsFromStart, 0);
    return contents;
}

void DataFork::WriteContents(const void* inBuffer, UInt32 inCount)
{
    SetSize(fsFromStart, inCount);
    WriteData(inBuffer, inCount, fsFromStart, 0);
}

void DataFork::WriteContents(const CFData& inData)
{
    CFIndex length = inData.GetLength();
    SetSize(fsFromStart, SInt64(length));
    WriteData(inData.GetBytePtr(), UInt32(length), fsFromStart, 0);
}

}  // namespace Gx
