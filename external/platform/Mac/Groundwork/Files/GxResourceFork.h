// The resource fork of a file, opened like any fork; a file that has none is given an empty
// one when it is opened.
#pragma once

#include <Groundwork/Files/GxFileFork.h>

namespace Gx {

class ResourceFork : public FileFork {
public:
    ResourceFork(SInt16 inRefNum, bool inOwnsRefNum);
    ResourceFork(const FSRef& inRef, SInt8 inPermission);
    ~ResourceFork() override;

    // The platform's name of the resource fork, asked for once.
    static const HFSUniStr255& GetForkName();
    using FileFork::GetForkName;
};

}  // namespace Gx
