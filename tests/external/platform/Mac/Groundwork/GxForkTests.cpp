#include "FileObjectTesting.h"

#include <Groundwork/Files/GxDataFork.h>
#include <Groundwork/Files/GxResourceFork.h>

namespace {

using namespace spindeck::test;
using ForkTest = FileObjectTest;

std::string Bytes(const Gx::CFData& inData)
{
    return std::string(reinterpret_cast<const char*>(inData.GetBytePtr()), std::size_t(inData.GetLength()));
}

TEST_F(ForkTest, OnlyAnOwnedForkIsClosed)
{
    FSRef file = Made("file", "data");
    SInt16 refNum = 0;
    {
        Gx::DataFork fork(file, fsRdPerm);
        refNum = fork.UseRefNum();
        ExpectThrows<Gx::LogicError>([&] { fork.Open(file, fsRdPerm, Gx::DataFork::GetForkName()); }, FourCC("logc"));
        {
            Gx::FileFork borrowed(refNum, false);
            borrowed.Close();
            EXPECT_TRUE(borrowed.IsOpen());
        }
        EXPECT_TRUE(ForkIsOpen(refNum)) << "neither closing nor destroying a borrowed fork closes it";
    }
    EXPECT_FALSE(ForkIsOpen(refNum));
    ASSERT_EQ(FSOpenFork(&file, 0, nullptr, fsRdPerm, &refNum), noErr);
    Gx::DataFork(refNum, true);
    EXPECT_FALSE(ForkIsOpen(refNum)) << "an adopted fork that is owned is closed";
}

TEST_F(ForkTest, DataIsReadAndWrittenWholeOrInSlices)
{
    FSRef file = Made("file", std::string(100, 'x'));
    Gx::DataFork fork(file, fsRdWrPerm);
    fork.WriteContents("0123456789", 10);
    EXPECT_EQ(ReadFile(Path("file")), "0123456789") << "a longer old content is cut";
    char slice[4] = {};
    fork.ReadData(slice, 3, fsFromStart, 7);
    EXPECT_STREQ(slice, "789");
    ExpectOSError([&] { fork.ReadData(slice, 3, fsFromStart, 8); }, eofErr, "FSReadFork failed");
    fork.SetPosition(fsFromStart, 4);
    EXPECT_EQ(fork.GetPosition(), 4);
    fork.SetSize(fsFromStart, 6);
    EXPECT_EQ(Bytes(fork.ReadContents()), "012345");
    fork.WriteContents(Gx::CFData(reinterpret_cast<const UInt8*>("ab"), 2));
    EXPECT_EQ(ReadFile(Path("file")), "ab");

    HFSUniStr255 name;
    fork.GetForkName(name);
    EXPECT_EQ(name.length, 0) << "the data fork's name is empty";
    Shell("mv '" + Path("file") + "' '" + Path("moved") + "'");
    Gx::FSObject object;
    fork.GetFSObject(object);
    EXPECT_EQ(Text(object.GetName()), "moved");
}

TEST_F(ForkTest, ReadContentsTakesAnythingBelow2GiB)
{
    const SInt64 limit = 0x80000000;
    Made("big");
    ASSERT_EQ(::truncate(Path("big").c_str(), limit), 0);
    Gx::DataFork big(RefOf(Path("big")), fsRdWrPerm);
    ExpectThrows<Gx::RuntimeError>([&] { big.ReadContents(); }, FourCC("runt"));
    big.SetSize(fsFromStart, limit - 1);
    big.WriteData("z", 1, fsFromStart, limit - 2);
    Gx::CFData contents = big.ReadContents();
    ASSERT_EQ(contents.GetLength(), limit - 1);
    EXPECT_EQ(contents.GetBytePtr()[limit - 2], 'z');
}

TEST_F(ForkTest, OpeningAMissingResourceForkCreatesAnEmptyOne)
{
    FSRef file = Made("file", "abc");
    const HFSUniStr255& resourceName = Gx::ResourceFork::GetForkName();
    ASSERT_GT(resourceName.length, 0);
    Gx::ResourceFork fork(file, fsRdPerm);
    EXPECT_EQ(fork.GetSize(), 0);
    CatPositionRec position{};
    HFSUniStr255 second;
    ASSERT_EQ(FSIterateForks(&file, &position, nullptr, nullptr, nullptr), noErr);
    ASSERT_EQ(FSIterateForks(&file, &position, &second, nullptr, nullptr), noErr);
    EXPECT_EQ(NameOf(second), NameOf(resourceName));
}

TEST_F(ForkTest, EachPlatformFailureIsRaisedWithItsStatusAndCall)
{
    FSRef file = Made("file", "abc");
    FSRef locked = Made("locked");
    SetLocked(locked, true);
    ExpectOSError([&] { Gx::DataFork(mFolderRef, fsRdPerm); }, notAFileErr, "FSCreateFork failed");
    ExpectOSError([&] { Gx::ResourceFork(locked, fsRdPerm); }, fLckdErr, "FSCreateFork failed");
    ExpectOSError([&] { Gx::DataFork(locked, fsRdWrPerm); }, permErr, "FSOpenFork failed");
    Gx::DataFork readOnly(file, fsRdPerm);
    ExpectOSError([&] { readOnly.WriteData("x", 1, fsFromStart, 0); }, wrPermErr, "FSWriteFork failed");
    ExpectOSError([&] { readOnly.WriteContents("x", 1); }, wrPermErr, "FSSetForkSize failed");
    ExpectOSError([&] { readOnly.SetPosition(fsFromStart, -1); }, posErr, "FSSetForkPosition failed");

    Gx::DataFork closed(Gx::FileFork::refNum_Closed, false);
    FSRef ref;
    Gx::FSObject object;
    HFSUniStr255 name;
    FSForkInfo info;
    const std::pair<Call, const char*> closedCalls[] = {
        {[&] { closed.GetSize(); }, "FSGetForkSize failed"},
        {[&] { closed.ReadContents(); }, "FSGetForkSize failed"},
        {[&] { closed.GetPosition(); }, "FSGetForkPosition failed"},
        {[&] { closed.GetFSRef(ref); }, "FSGetForkCBInfo failed"},
        {[&] { closed.GetFSObject(object); }, "FSGetForkCBInfo failed"},
        {[&] { closed.GetForkName(name); }, "FSGetForkCBInfo failed"},
        {[&] { closed.GetForkInfo(info); }, "FSGetForkCBInfo failed"},
    };
    for (const auto& [call, message] : closedCalls)
        ExpectOSError(call, rfNumErr, message);
    EXPECT_EQ(closed.Flush(), rfNumErr) << "a flush reports its status instead of raising it";
}

}  // namespace
