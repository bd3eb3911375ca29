// Where a process's application lives: the bundle around its executable.
#include <Carbon/Files.h>
#include <Carbon/MacErrors.h>
#include <Carbon/Processes.h>

#include "ProcessApplication.h"
#include "ProcessStat.h"

#include <string>

using namespace carbon;

OSStatus GetProcessBundleLocation(const ProcessSerialNumber* inPSN, FSRef* outLocation)
{
    if (inPSN == nullptr || outLocation == nullptr)
        return paramErr;
    std::optional<ProcessStat> stat = ResolveProcess(*inPSN);
    if (!stat)
        return procNotFound;
    std::optional<std::string> executable = ProcessApplicationPath(stat->pid);
    if (!executable)
        return fnfErr;
    std::optional<std::string_view> bundle = EnclosingBundlePath(*executable);
    std::string location(bundle ? *bundle : std::string_view(*executable));
    return FSPathMakeRef(reinterpret_cast<const UInt8*>(location.c_str()), outLocation, nullptr);
}
