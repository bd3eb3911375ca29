// The file objects under test: real files in a fresh temporary folder, and each OSError's
// status and message as the throw hook sees them.
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
        Gx::OSError::SetThrowFunc([](OSStatus inStatus, const char* inMessage, const Gx::SourceLocation&) {
            sThrown = {inStatus, inMessage};
        });
    }
    void TearDown() override { Gx::OSError::SetThrowFunc(nullptr); }

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

    static void ExpectOSError(const Call& inCall, OSStatus inStatus, const std::string& inMessage)
    {
        sThrown = {};
        try {
            inCall();
            ADD_FAILURE() << "nothing thrown, expected \"" << inMessage << "\"";
        } catch (const Gx::OSError& e) {
            EXPECT_EQ(e.GetOSErrorCode(), inStatus) << inMessage;
            EXPECT_EQ(sThrown, std::make_pair(inStatus, inMessage));
        }
    }

    TemporaryFolder mFolder;
    FSRef mFolderRef{};

private:
    static inline std::pair<OSStatus, std::string> sThrown;
};

}  // namespace spindeck::test
