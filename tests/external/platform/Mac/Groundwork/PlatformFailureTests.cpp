// The file layer's reports of platform failures that only the stand-ins of
// FailingPlatformCalls.cpp can bring about.
#include "FileObjectTesting.h"

#include <Groundwork/Files/GxDataFork.h>
#include <Groundwork/Files/GxResourceFork.h>

namespace {

using namespace spindeck::test;

class PlatformFailures : public FileObjectTest {};

TEST_F(PlatformFailures, NameComparisonsReportTheCollationFailure)
{
    HFSUniStr255 name{};
    Gx::FSUtils::StringToHFSUniStr(Str("name"), name);
    ExpectOSError([&] { Gx::FSUtils::FSNamesAreEqual(name, name); }, memFullErr, "UCCompareTextDefault failed");
    ExpectOSError([&] { Gx::FSUtils::CompareFSNames(Str("a"), Str("b")); }, memFullErr, "UCCompareTextDefault failed");
    // Two objects that name missing items by folder and name are compared by name.
    Gx::FSObject first = Child("missing"), second = Child("missing");
    ExpectOSError([&] { first.CompareTo(second); }, memFullErr, "UCCompareTextDefault failed");
}

TEST_F(PlatformFailures, ForksReportTheForkNameFailures)
{
    FSRef file = Made("file", "contents");
    ExpectOSError([] { Gx::DataFork::GetForkName(); }, paramErr, "FSGetDataForkName failed");
    ExpectOSError([] { Gx::ResourceFork::GetForkName(); }, paramErr, "FSGetResourceForkName failed");
    ExpectOSError([&] { Gx::DataFork fork(file, fsRdPerm); }, paramErr, "FSGetDataForkName failed");
}

}  // namespace
