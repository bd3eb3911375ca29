// The bundle wrapper on a bundle built in a temporary folder.
#include "ExpectThrows.h"
#include "LaunchTesting.h"
#include "ResourceFileTesting.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFBundle.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFTextUtils.h>

namespace {

using namespace spindeck::test;

class SysCFBundle : public testing::Test {
protected:
    void SetUp() override
    {
        const std::string resources = mFolder.Path("Wrapped.bundle/Contents/Resources/");
        MakeBundle(mFolder.Path("Wrapped.bundle"),
                   "<key>CFBundleIdentifier</key><string>org.spindeck.tests.wrappers</string>"
                   "<key>CFBundleDevelopmentRegion</key><string>en</string>",
                   "Wrapped");
        MakeBundle(mFolder.Path("Bare.bundle"), "");
        fs::create_directories(resources + "en.lproj");
        fs::create_directories(resources + "fr.lproj");
        WriteFile(resources + "en.lproj/Localizable.strings", "\"Greeting\" = \"Hello\";\n");
        WriteFile(resources + "fr.lproj/Localizable.strings", "\"Greeting\" = \"Bonjour\";\n");
        WriteFile(resources + "icon.png", "png");
        const std::vector<UInt8> map = BuildResourceFile({{FourCC("STR#"), 128, StringList({"first", "second"})}})
                                           .bytes;
        WriteFile(resources + "Wrapped.rsrc", std::string(map.begin(), map.end()));
    }

    Gx::CFURL URLOf(const char* inName) const
    {
        std::string path = mFolder.Path(inName);
        return Gx::CFURL(reinterpret_cast<const UInt8*>(path.data()), CFIndex(path.size()), true, nullptr);
    }

    TemporaryFolder mFolder;
    ScopedVariable mLanguage{"LANGUAGE", "fr"};
};

// Every result holds exactly one retain of its own, whether the platform handed one over
// (its Copy calls: adopted) or kept the object (its Get calls: retained). So a second result
// of the same object adds one retain, and an object made afresh has exactly one.
template <class Get>
void ExpectOneRetainPerResult(Get inGet)
{
    auto first = inGet();
    CFIndex alone = first.GetRetainCount();
    auto second = inGet();
    EXPECT_EQ(second.GetRetainCount(), second.HasSameRef(first.GetRefValue()) ? alone + 1 : 1);
}

TEST_F(SysCFBundle, CreatedBundlesAreAdoptedAndFoundOnesAndEveryResultRetained)
{
    Gx::CFBundle bundle(URLOf("Wrapped.bundle"));
    EXPECT_EQ(bundle.GetRetainCount(), 1);
    {
        Gx::CFBundle found(CFSTR("org.spindeck.tests.wrappers"));
        EXPECT_TRUE(found.HasSameRef(bundle.GetRefValue()));
        EXPECT_EQ(bundle.GetRetainCount(), 2);
    }
    ExpectThrows<Gx::RuntimeError>([] { Gx::CFBundle(CFSTR("org.spindeck.tests.nobody")); }, FourCC("cfcr"));
    ExpectThrows<Gx::RuntimeError>([&] { Gx::CFBundle(URLOf("Missing.bundle")); }, FourCC("cfcr"));

    ExpectOneRetainPerResult([&] { return bundle.GetIdentifier(); });
    ExpectOneRetainPerResult([&] { return bundle.GetGlobalInfoDictionary(); });
    ExpectOneRetainPerResult([&] { return bundle.GetBundleURL(); });
    ExpectOneRetainPerResult([&] { return bundle.GetResourcesDirectoryURL(); });
    ExpectOneRetainPerResult([&] { return bundle.GetResourceURL(CFSTR("icon"), CFSTR("png"), nullptr); });
    ExpectOneRetainPerResult([&] { return bundle.GetResourceURLsOfType(CFSTR("png"), nullptr); });
    ExpectOneRetainPerResult([&] { return bundle.GetLocalizedString(CFSTR("Greeting"), nullptr, nullptr); });
    ExpectOneRetainPerResult([&] { return bundle.GetPreferredLocalizations(); });
    EXPECT_TRUE(bundle.GetIdentifier() == CFSTR("org.spindeck.tests.wrappers"));
}

TEST_F(SysCFBundle, LocalizationsAndLocalizedStrings)
{
    Gx::CFBundle bundle(URLOf("Wrapped.bundle"));
    EXPECT_TRUE(bundle.GetLocalizedString(CFSTR("Greeting"), nullptr, nullptr) == CFSTR("Bonjour"));
    EXPECT_TRUE(bundle.GetLocalizedString(CFSTR("Farewell"), nullptr, nullptr) == CFSTR("Farewell"));
    EXPECT_TRUE(bundle.GetLocalizedString(CFSTR("Farewell"), CFSTR("Bye"), CFSTR("Other")) == CFSTR("Bye"));

    Gx::CFArray<CFStringRef> preferred = bundle.GetPreferredLocalizations();
    ASSERT_EQ(preferred.GetCount(), 1);
    EXPECT_TRUE(CFEqual(preferred[0], CFSTR("fr")));

    Gx::CFArray<CFStringRef> none = Gx::CFBundle(URLOf("Bare.bundle")).GetPreferredLocalizations();
    EXPECT_TRUE(none.IsValid() && none.IsEmpty());
}

TEST_F(SysCFBundle, IndexedStringsComeFromTheOpenResourceMap)
{
    Gx::CFBundle bundle(URLOf("Wrapped.bundle"));
    SInt16 file = bundle.OpenResourceMap();
    ASSERT_NE(file, kResFileNotOpened);
    EXPECT_TRUE(Gx::CFUtils::GetIndString(128, 2) == CFSTR("second"));
    // The Resource Manager writes nothing when it finds nothing.
    EXPECT_TRUE(Gx::CFUtils::GetIndString(128, 3) == CFSTR(""));
    ExpectThrows<Gx::RuntimeError>(
        [] { Gx::CFUtils::GetIndString(128, 1, kCFStringEncodingMacRoman, kCFAllocatorNull); }, FourCC("cfcr"));
    bundle.CloseResourceMap(file);
}

}  // namespace
