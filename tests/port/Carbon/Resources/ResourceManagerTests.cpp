// Resource files built byte by byte: the chain of open files, handles lent and taken back,
// indexed strings, damaged maps, and the resource files of bundles.
#include "FilesTesting.h"
#include "ResourceFileTesting.h"

#include <Carbon/CFBundleResources.h>
#include <Carbon/MacErrors.h>
#include <Carbon/Resources.h>
#include <Carbon/TextUtils.h>
#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using namespace spindeck::test;

namespace {

std::string Contents(Handle inHandle) { return std::string(*inHandle, std::size_t(GetHandleSize(inHandle))); }

constexpr ResType kText = FourCC("TEXT");
constexpr ResType kStrings = FourCC("STR#");
constexpr ResType kIcon = FourCC("ICON");

class ResourceFiles : public ::testing::Test {
protected:
    ~ResourceFiles() override
    {
        for (ResFileRefNum refNum : mOpened)
            CloseResFile(refNum);
    }

    FSRef WriteFile(const std::string& inName, const std::vector<UInt8>& inBytes)
    {
        std::string path = mFolder.Path(inName);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(inBytes.data()), std::streamsize(inBytes.size()));
        return RefOf(path);
    }

    // A data-fork resource file; kResFileNotOpened and the status when it does not open.
    ResFileRefNum Open(const std::string& inName, const std::vector<UInt8>& inBytes, OSErr* outStatus = nullptr)
    {
        FSRef ref = WriteFile(inName, inBytes);
        ResFileRefNum refNum = 0;
        OSErr status = FSOpenResourceFile(&ref, 0, nullptr, fsRdPerm, &refNum);
        if (outStatus)
            *outStatus = status;
        if (status == noErr)
            mOpened.push_back(refNum);
        return refNum;
    }

    ResFileRefNum OpenOlderAndNewer()
    {
        ResFileRefNum older = Open(
            "older", BuildResourceFile({
                                           {kStrings, 128, StringList({"alpha", "", "gamma"})},
                                           {kText, 1, "from the older file", "Greeting", resPurgeable | resLocked},
                                           {kText, 7, "only in the older file", "Shared"},
                                       })
                         .bytes);
        mNewer = Open("newer", BuildResourceFile({
                                                     {kText, 1, "from the newer file"},
                                                     {kIcon, 2, std::string(32, '\x55'), "Shared"},
                                                 })
                                   .bytes);
        return older;
    }

    spindeck::test::TemporaryFolder mFolder;
    std::vector<ResFileRefNum> mOpened;
    ResFileRefNum mNewer = kResFileNotOpened;
};

TEST_F(ResourceFiles, TheChainIsSearchedFromTheCurrentFileDownAndClosedFromTheTop)
{
    ResFileRefNum older = OpenOlderAndNewer();
    ASSERT_TRUE(older > 0 && mNewer > 0);
    EXPECT_EQ(CurResFile(), mNewer);

    EXPECT_EQ(Contents(GetResource(kText, 1)), "from the newer file");
    EXPECT_EQ(Contents(GetResource(kText, 7)), "only in the older file");
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(Get1Resource(kText, 7), nullptr);
    EXPECT_EQ(ResError(), resNotFound);
    EXPECT_EQ(Count1Resources(kText), 1);
    EXPECT_EQ(CountResources(kText), 3);

    // From the older file the newer one is out of sight.
    UseResFile(older);
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(CurResFile(), older);
    EXPECT_EQ(Contents(Get1Resource(kText, 1)), "from the older file");
    EXPECT_EQ(GetResource(kIcon, 2), nullptr);
    EXPECT_EQ(CountResources(kIcon), 0);

    UseResFile(mNewer);
    EXPECT_EQ(Contents(GetNamedResource(kText, reinterpret_cast<ConstStr255Param>("\x08greeting"))),
              "from the older file");
    EXPECT_EQ(Get1NamedResource(kText, reinterpret_cast<ConstStr255Param>("\x08Greeting")), nullptr);
    EXPECT_EQ(Contents(Get1NamedResource(kIcon, reinterpret_cast<ConstStr255Param>("\x06SHARED"))),
              std::string(32, '\x55'));

    UseResFile(older);
    EXPECT_EQ(Contents(Get1IndResource(kText, 2)), "only in the older file");
    EXPECT_EQ(Get1IndResource(kText, 3), nullptr);
    EXPECT_EQ(Get1IndResource(kText, 0), nullptr);
    EXPECT_EQ(ResError(), resNotFound);

    // Opening a file again answers its number and leaves the current file alone.
    FSRef newer = RefOf(mFolder.Path("newer"));
    ResFileRefNum again = kResFileNotOpened;
    EXPECT_EQ(FSOpenResourceFile(&newer, 0, nullptr, fsRdWrPerm, &again), noErr);
    EXPECT_EQ(again, mNewer);
    EXPECT_EQ(CurResFile(), older);

    UseResFile(SInt16(30000));
    EXPECT_EQ(ResError(), resFNotFound);
    EXPECT_EQ(CurResFile(), older);

    // Closing the current file makes the newest remaining one current.
    CloseResFile(older);
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(CurResFile(), mNewer);
    CloseResFile(older);
    EXPECT_EQ(ResError(), resFNotFound);
    CloseResFile(mNewer);
    mOpened.clear();
    EXPECT_EQ(CurResFile(), kResFileNotOpened);
    EXPECT_EQ(GetResource(kText, 1), nullptr);
    EXPECT_EQ(ResError(), resNotFound);
}

TEST_F(ResourceFiles, HandlesAreLentUntilReleasedOrDetached)
{
    OpenOlderAndNewer();
    Handle first = GetResource(kText, 1);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(GetResource(kText, 1), first);
    EXPECT_NE(HGetState(first) & kHandleIsResourceMask, 0);

    Handle greeting = GetNamedResource(kText, reinterpret_cast<ConstStr255Param>("\x08Greeting"));
    ResID id = 0;
    ResType type = 0;
    Str255 name = "\x03xyz";
    GetResInfo(greeting, &id, &type, name);
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(id, 1);
    EXPECT_EQ(type, kText);
    EXPECT_EQ(PascalText(name), "Greeting");
    EXPECT_EQ(GetResAttrs(greeting), resPurgeable | resLocked);
    EXPECT_EQ(GetResourceSizeOnDisk(greeting), long(std::string("from the older file").size()));
    GetResInfo(first, nullptr, nullptr, name);
    EXPECT_EQ(PascalText(name), "");

    // A detached handle is the caller's: no longer a resource, and the next look-up loads anew.
    DetachResource(first);
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(HGetState(first) & kHandleIsResourceMask, 0);
    GetResInfo(first, &id, &type, name);
    EXPECT_EQ(ResError(), resNotFound);
    EXPECT_EQ(GetResourceSizeOnDisk(first), -1);
    Handle second = GetResource(kText, 1);
    EXPECT_NE(second, first);
    EXPECT_EQ(Contents(second), Contents(first));
    DisposeHandle(first);

    ReleaseResource(second);
    EXPECT_EQ(ResError(), noErr);
    ReleaseResource(second);
    EXPECT_EQ(ResError(), resNotFound);
    EXPECT_EQ(Contents(GetResource(kText, 1)), "from the newer file");
}

TEST_F(ResourceFiles, IndexedStringsLeaveTheBufferAloneWhenAbsent)
{
    OpenOlderAndNewer();
    Str255 text = "\x03xyz";
    GetIndString(text, 128, 3);
    EXPECT_EQ(PascalText(text), "gamma");
    GetIndString(text, 128, 2);
    EXPECT_EQ(PascalText(text), "");

    for (auto [list, index] : {std::pair<SInt16, SInt16>{128, 0}, {128, 4}, {128, -1}, {129, 1}}) {
        std::memcpy(text, "\x03xyz", 4);
        GetIndString(text, list, index);
        EXPECT_EQ(PascalText(text), "xyz") << list << " " << index;
    }
    // A list whose count promises more than it holds.
    Open("short", BuildResourceFile({{kStrings, 300, std::string("\0\x05\x02hi\x09tooshort", 12)}}).bytes);
    GetIndString(text, 300, 1);
    EXPECT_EQ(PascalText(text), "hi");
    GetIndString(text, 300, 2);
    EXPECT_EQ(PascalText(text), "hi");
}

TEST_F(ResourceFiles, DamagedMapsAreRefused)
{
    const ResourceImage good = BuildResourceFile({{kText, 1, "one", "first"}, {kIcon, 2, "two"}});
    const std::size_t map = good.map, ref = good.firstRef, size = good.bytes.size();
    struct Damage {
        const char* what;
        std::size_t at;
        UInt32 value;
        unsigned width;
    };
    const Damage damages[] = {
        {"map beyond the file", 4, UInt32(size - 10), 4},        {"data longer than the file", 8, UInt32(size), 4},
        {"type list outside the map", map + 24, 0xFFF0, 2},      {"type list inside the map header", map + 24, 4, 2},
        {"name list outside the map", map + 26, 0x7000, 2},      {"more types than listed", map + 28, 0x0100, 2},
        {"reference list outside the map", map + 36, 0x4000, 2}, {"more references than listed", map + 34, 0x0200, 2},
        {"name outside the name list", ref + 2, 0x1000, 2},      {"data offset outside the data", ref + 5, 0x1000, 3},
        {"data length beyond the data", 256, 0x10000, 4},
    };
    for (const Damage& damage : damages) {
        std::vector<UInt8> bytes = good.bytes;
        Put(bytes, damage.at, damage.value, damage.width);
        OSErr status = noErr;
        EXPECT_EQ(Open("damaged", bytes, &status), kResFileNotOpened) << damage.what;
        EXPECT_EQ(status, mapReadErr) << damage.what;
    }
    OSErr status = noErr;
    Open("cut", std::vector<UInt8>(good.bytes.begin(), good.bytes.end() - 1), &status);
    EXPECT_EQ(status, mapReadErr);
    Open("empty", {}, &status);
    EXPECT_EQ(status, eofErr);
    EXPECT_EQ(CurResFile(), kResFileNotOpened);
    EXPECT_GT(Open("good", good.bytes, &status), 0);
}

TEST_F(ResourceFiles, TheResourceForkHoldsTheUsualFile)
{
    FSRef file = WriteFile("document", {'d', 'a', 't', 'a'});
    EXPECT_EQ(FSOpenResFile(&file, fsRdPerm), kResFileNotOpened);
    EXPECT_EQ(ResError(), eofErr);

    HFSUniStr255 fork;
    FSGetResourceForkName(&fork);
    SInt16 forkRef = 0;
    const std::vector<UInt8> bytes = BuildResourceFile({{kStrings, 5, StringList({"in the fork"})}}).bytes;
    ASSERT_EQ(FSCreateFork(&file, fork.length, fork.unicode), noErr);
    ASSERT_EQ(FSOpenFork(&file, fork.length, fork.unicode, fsRdWrPerm, &forkRef), noErr);
    ASSERT_EQ(FSWriteFork(forkRef, fsFromStart, 0, bytes.size(), bytes.data(), nullptr), noErr);
    FSCloseFork(forkRef);

    ResFileRefNum refNum = FSOpenResFile(&file, fsCurPerm);
    ASSERT_GT(refNum, 0);
    mOpened.push_back(refNum);
    Str255 text = "";
    GetIndString(text, 5, 1);
    EXPECT_EQ(PascalText(text), "in the fork");

    // ResError belongs to the thread that made the call.
    Get1Resource(kText, 99);
    OSErr elsewhere = -1;
    std::thread([&] { elsewhere = ResError(); }).join();
    EXPECT_EQ(elsewhere, noErr);
    EXPECT_EQ(ResError(), resNotFound);
}

// A bundle's files: the executable's own, and the localized one above it in the chain.
TEST_F(ResourceFiles, BundlesOpenAndCloseTheirFilesTogether)
{
    fs::create_directories(mFolder.Path("Tool.bundle/Contents/Resources/en.lproj"));
    std::ofstream(mFolder.Path("Tool.bundle/Contents/Info.plist"))
        << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
           "<key>CFBundleExecutable</key><string>Tool</string>"
           "<key>CFBundleDevelopmentRegion</key><string>en</string></dict></plist>\n";
    WriteFile("Tool.bundle/Contents/Resources/Tool.rsrc",
              BuildResourceFile({{kText, 1, "general"}, {kText, 2, "only general"}}).bytes);
    WriteFile("Tool.bundle/Contents/Resources/en.lproj/Localized.rsrc",
              BuildResourceFile({{kText, 1, "english"}}).bytes);

    const std::string path = mFolder.Path("Tool.bundle");
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.c_str()),
                                                           CFIndex(path.size()), true);
    CFBundleRef bundle = CFBundleCreate(nullptr, url);
    ASSERT_NE(bundle, nullptr);
    ResFileRefNum main = CFBundleOpenBundleResourceMap(bundle);
    ASSERT_GT(main, 0);
    ResFileRefNum localized = CurResFile();
    EXPECT_NE(localized, main);
    EXPECT_EQ(Contents(GetResource(kText, 1)), "english");
    EXPECT_EQ(Contents(GetResource(kText, 2)), "only general");

    CFBundleCloseBundleResourceMap(bundle, main);
    EXPECT_EQ(CurResFile(), kResFileNotOpened);
    UseResFile(localized);
    EXPECT_EQ(ResError(), resFNotFound);

    ResFileRefNum both[2] = {0, 0};
    EXPECT_EQ(CFBundleOpenBundleResourceFiles(bundle, &both[0], &both[1]), noErr);
    EXPECT_TRUE(both[0] > 0 && both[1] > 0 && both[0] != both[1]);
    mOpened.assign(both, both + 2);
    CFRelease(bundle);
    CFRelease(url);
}

}  // namespace
