#include "platform/Mac/utils/MacKvxUtils.h"

#include "DisplayVariable.h"

#include <gtest/gtest.h>

#include <PortSupport/UniqueHandle.h>

#include <Carbon/Folders.h>

namespace {

using namespace spindeck::test;

using OwnedWindow = port::UniqueHandle<OpaqueWindowPtr, DisposeWindow>;

constexpr Rect kBounds{100, 50, 160, 250};  // top, left, bottom, right

TEST(SystemItems, TheUniversalAccessPaneIsNamedInTheSystemPreferencePanesFolder)
{
    Gx::FSObject pane = kvx::UnivAccessPrefPane();
    FSRef folder;
    if (FSFindFolder(kSystemDomain, kPreferencePanesFolderType, kDontCreateFolder, &folder) != noErr) {
        EXPECT_FALSE(pane.IsValid()) << "without the folder the object names nothing";
        return;
    }
    ASSERT_TRUE(pane.IsValid());
    EXPECT_TRUE(pane.GetName() == CFSTR("UniversalAccessPref.prefPane"));
    FSRef parent;
    pane.GetParent(parent);
    EXPECT_EQ(FSCompareFSRefs(&parent, &folder), noErr);
}

TEST(SystemItems, WithoutADisplayAnOverlayWindowIsARecordOfItsClass)
{
    DisplayVariable noDisplay("");
    OwnedWindow window(kvx::CreateOverlayWindow(kWindowIgnoreClicksAttribute, &kBounds, kOverlayWindowClass));
    WindowClass windowClass = 0;
    EXPECT_EQ(GetWindowClass(window.get(), &windowClass), noErr);
    EXPECT_EQ(windowClass, kOverlayWindowClass);
    EXPECT_EQ(kvx::CreateOverlayWindow(0, nullptr, kOverlayWindowClass), nullptr) << "refused: NULL";
}

}  // namespace
