// The data fork of a file: its contents, read and written in slices or whole.
#pragma once

#include <Groundwork/Files/GxFileFork.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFData.h>

namespace Gx {

class DataFork : public FileFork {
public:
    DataFork(SInt16 inRefNum, bool inOwnsRefNum);
    DataFork(const FSRef& inRef, SInt8 inPermission);
    ~DataFork() override;

    // The platform's name of the data fork, asked for once it is known.
    static const HFSUniStr255& GetForkName();
    using FileFork::GetForkName;

    // A read that cannot be satisfied whole, end of file included, throws "FSReadFork failed";
    // how much was read is not reported.
    void ReadData(void* outBuffer, UInt32 inCount, UInt16 inPositionMode, SInt64 inOffset);
    void WriteData(const void* inBuffer, UInt32 inCount, UInt16 inPositionMode, SInt64 inOffset);

    // The whole fork. A fork of 2 GiB or more cannot be held and throws RuntimeError 'runt'.
    CFData ReadContents();
    // Makes the fork exactly the given bytes: longer old contents are cut off.
    void WriteContents(const void* inBuffer, UInt32 inCount);
    void WriteContents(const CFData& inData);
};

}  // namespace Gx
