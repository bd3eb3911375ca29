// The product's folders and files in a private home, and its resources in a bundle made by
// the test.
#include "platform/Mac/spindeckMac/ProductFolders.h"

#include "PlatformTesting.h"

#include <Carbon/Folders.h>
#include <Carbon/LaunchServices.h>

namespace {

using namespace spindeck::test;

std::string PathOf(const Gx::FSObject& inObject) { return Text(inObject.GetPath()); }

class ProductFolders : public PrivateHome {
protected:
    // The code bundle: with every resource, or with none.
    std::string UseCodeBundle(bool inWithResources)
    {
        std::string resources = UseBundle(inWithResources ? "Full.bundle" : "Empty.bundle",
                                          "\"Untitled\" = \"Sans titre\";\n");
        if (inWithResources) {
            std::filesystem::create_directories(resources + "/menus");
            std::filesystem::create_directories(resources + "/skins/Dark");
            WriteFile(resources + "/~settings", "template");
            WriteFile(resources + "/Install Vemora plug-ins.pkg", "package");
        }
        return resources;
    }
};

TEST_F(ProductFolders, TheProductFolderIsMadeOnlyWhenAskedButItsParentAlways)
{
    std::string data = mFolder.Path("home/data");
    ASSERT_FALSE(Exists(data));
    Gx::FSObject absent = spindeck::AppSupportFolder(kUserDomain, false);
    EXPECT_EQ(PathOf(absent), data + "/Vemoraspindeck");
    EXPECT_FALSE(absent.Exists());
    EXPECT_TRUE(Exists(data)) << "the look-up makes Application Support itself";
    EXPECT_FALSE(Exists(data + "/Vemoraspindeck"));

    Gx::FSObject made = spindeck::AppSupportFolder(kUserDomain, true);
    EXPECT_TRUE(made.Exists());
    EXPECT_TRUE(made.IsFolder());
    EXPECT_EQ(made.GetFinderFlags() & kIsInvisible, 0);
    EXPECT_TRUE(spindeck::AppSupportFolder(kUserDomain, true).IsEqualTo(made)) << "found, not made again";

    Gx::FSObject preferences = spindeck::UserPreferences();
    EXPECT_FALSE(preferences.Exists());
    EXPECT_EQ(Text(preferences.GetName()), "Vemora spindeck Preferences");
    FSRef parent;
    preferences.GetParent(parent);
    EXPECT_TRUE(Gx::FSObject(parent).IsFolder()) << "the look-up makes Preferences itself";
}

TEST_F(ProductFolders, ResourcesComeFromTheCodeBundle)
{
    std::string resources = UseCodeBundle(true);
    for (CFStringRef none : {CFStringRef(nullptr), CFSTR("")}) {
        EXPECT_EQ(PathOf(spindeck::DefaultsFolder(none)), resources + "/menus");
        EXPECT_EQ(PathOf(spindeck::SkinsFolder(none)), resources + "/skins");
    }
    Gx::FSObject menu = spindeck::DefaultsFolder(CFSTR("Photoshop"));
    EXPECT_EQ(PathOf(menu), resources + "/menus/Photoshop");
    EXPECT_FALSE(menu.Exists());
    Gx::FSObject skin = spindeck::SkinsFolder(CFSTR("Dark"));
    EXPECT_EQ(PathOf(skin), resources + "/skins/Dark");
    EXPECT_TRUE(skin.IsFolder());
    EXPECT_EQ(PathOf(spindeck::SettingsFile()), resources + "/~settings");

    // The installer goes to the desktop's opener; without one Launch Services says so.
    std::filesystem::create_directories(mFolder.Path("bin"));
    ScopedVariable path("PATH", mFolder.Path("bin"));
    EXPECT_EQ(spindeck::ReinstallPluginsCmd(), kLSApplicationNotFoundErr);
    WriteProgram(mFolder.Path("bin/xdg-open"), "#!/bin/sh\necho \"$1\" > " + mFolder.Path("opened.tmp") +
                                                   " && /bin/mv " + mFolder.Path("opened.tmp") + " " +
                                                   mFolder.Path("opened") + "\n");
    EXPECT_EQ(spindeck::ReinstallPluginsCmd(), noErr);
    for (int i = 0; i < 500 && !Exists(mFolder.Path("opened")); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(ReadFile(mFolder.Path("opened")), resources + "/Install Vemora plug-ins.pkg\n");
}

TEST_F(ProductFolders, AMissingResourceIsANilReference)
{
    UseCodeBundle(false);
    EXPECT_THAT([] { spindeck::DefaultsFolder(nullptr); }, kThrowsNilReference);
    EXPECT_THAT([] { spindeck::SkinsFolder(CFSTR("Dark")); }, kThrowsNilReference);
    EXPECT_THAT([] { spindeck::SettingsFile(); }, kThrowsNilReference);
    EXPECT_THAT([] { spindeck::ReinstallPluginsCmd(); }, kThrowsNilReference);
}

TEST_F(ProductFolders, UniqueNamesTakeTheFirstFreeNumber)
{
    UseCodeBundle(false);
    auto unique = [](std::initializer_list<const char*> inTaken) {
        SetObject<CFStringRef> taken;
        static_cast<Gx::CFSet<CFStringRef>&>(taken) = Gx::CFSet<CFStringRef>(CFIndex(0));
        for (const char* name : inTaken)
            taken.AddValue(Gx::CFString(name, kCFStringEncodingUTF8).UseRef());
        return Text(CreateUniqueName(taken));
    };
    EXPECT_EQ(unique({}), "Sans titre");
    EXPECT_EQ(unique({"Sans titre", "Sans titre1"}), "Sans titre2");
    EXPECT_EQ(unique({"Sans titre1"}), "Sans titre");
    EXPECT_EQ(unique({"Sans titre", "Sans titre 1"}), "Sans titre1") << "no blank before the number";
    EXPECT_THAT([] { CreateUniqueName(SetObject<CFStringRef>()); }, kThrowsNilReference);
}

}  // namespace
