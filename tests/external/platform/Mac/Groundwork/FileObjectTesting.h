// The file objects under test: real files in a fresh temporary folder.
#pragma once

#include "ExpectThrows.h"
#include "FilesTesting.h"

#include <Groundwork/Files/GxFSObject.h>
#include <Groundwork/Files/GxFSUtils.h>

#include <cstdlib>
#include <functional>
#include <string>

namespace spindeck::test {

class FileObjectTest : public ::testing::Test {
protected:
    using Call = std::function<void()>;

    void SetUp() override
    {
        ASSERT_FALSE(mFolder.Path().empty());
        mFolderRef = RefOf(mFolder.Path());
    }

    std::string Path(const std::string& inName) const { return mFolder.Path(inName); }
    FSRef Made(const std::string& inName, const std::string& inContents = {}) const
    {
        WriteFile(Path(inName), inContents);
        return RefOf(Path(inName));
    }
    Gx::FSObject Child(const std::string& inName) const { return Gx::FSObject(mFolderRef, Str(inName)); }
    // Changes the disk behind the File Manager's back, as another program would.
    static void Shell(const std::string& inCommand) { ASSERT_EQ(std::system(inCommand.c_str()), 0) << inCommand; }

    static Gx::CFString Str(const std::string& inText) { return Gx::CFString(inText.c_str(), kCFStringEncodingUTF8); }
    static std::string Text(const Gx::CFString& inString)
    {
        std::string text;
        inString.GetString(text, kCFStringEncodingUTF8);
        return text;
    }
    // 0 invalid, 1 exists, 2 parent and name.
    static int State(const Gx::FSObject& inObject) { return inObject.Exists() ? 1 : inObject.IsValid() ? 2 : 0; }
    static bool ForkIsOpen(SInt16 inRefNum)
    {
        return FSGetForkCBInfo(inRefNum, kFSInvalidVolumeRefNum, nullptr, nullptr, nullptr, nullptr, nullptr) == noErr;
    }

    TemporaryFolder mFolder;
    FSRef mFolderRef{};
};

}  // namespace spindeck::test
