// The bundle wrapper on a bundle built in a temporary folder.
#include "ExpectThrows.h"
#include "LaunchTesting.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFBundle.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFTextUtils.h>

namespace {

using namespace spindeck::test;

std::string BigEndian(UInt32 inValue, int inWidth)
{
    std::string bytes;
    for (int shift = 8 * (inWidth - 1); shift >= 0; shift -= 8)
        bytes += char(inValue >> shift);
    return bytes;
}

// A resource file with one 'STR#' resource: header, reserved space up to 256, the data, then
// the map (header copy, its own header, one type, one reference, no names).
std::string StringListFile(SInt16 inID, std::initializer_list<std::string> inStrings)
{
    std::string list = BigEndian(UInt32(inStrings.size()), 2);
    for (const std::string& text : inStrings)
        list += char(text.size()) + text;
    const std::string data = BigEndian(UInt32(list.size()), 4) + list;
    constexpr UInt32 kMapSize = 28 + 10 + 12;
    std::string header = BigEndian(256, 4) + BigEndian(256 + UInt32(data.size()), 4) +
                         BigEndian(UInt32(data.size()), 4) + BigEndian(kMapSize, 4);
    std::string map = header + std::string(8, '\0') + BigEndian(28, 2) + BigEndian(kMapSize, 2);
    map += BigEndian(0, 2) + "STR#" + BigEndian(0, 2) + BigEndian(10, 2);
    map += BigEndian(UInt16(inID), 2) + BigEndian(0xFFFF, 2) + BigEndian(0, 4) + BigEndian(0, 4);
    header.resize(256, '\0');
    return header + data + map;
}

class SysCFBundle : public testing::Test {
protected:
    void SetUp() override
    {
        const std::string resources = mFolder.Path("Wrapped.bundle/Contents/Resources/");
        MakeBundle(mFolder.Path("Wrapped.bundle"), "<key>CFBundleIdentifier</key><string>org.spindeck.tests.wrappers</string>"
                                                   "<key>CFBundleDevelopmentRegion</key><string>en</string>", "Wrapped");
        MakeBundle(mFolder.Path("Bare.bundle"), "");
        fs::create_directories(resources + "en.lproj");
        fs::create_directories(resources + "fr.lproj");
        WriteFile(resources + "en.lproj/Localizable.strings", "\"Greeting\" = \"Hello\";\n");
        WriteFile(resources + "fr.lproj/Localizable.strings", "\"Greeting\" = \"Bonjour\";\n");
        WriteFile(resources + "icon.png", "png");
        WriteFile(resources + "Wrapped.rsrc", StringListFile(128, {"first", "second"}));
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
    EXPECT_FALSE(bundle.GetResourceURL(CFSTR("none"), CFSTR("png"), nullptr).IsValid());
}

TEST_F(SysCFBundle, LocalizationsAndLocalizedStrings)
{
    Gx::CFBundle bundle(URLOf("Wrapped.bundle"));
    EXPECT_TRUE(bundle.GetLocalizedString(CFSTR("Greeting"), nullptr, nullptr) == CFSTR("Bonjour"));
    EXPECT_TRUE(bundle.GetLocalizedString(CFSTR("Farewell"), nullptr, nullptr) == CFSTR("Farewell"));
    EXPECT_TRUE(bundle.GetLocalizedString(CFSTR("Farewell"), CFSTR("Bye"), CFSTR("Other")) == CFSTR("Bye"));

    EXPECT_EQ(bundle.GetBundleLocalizations().GetCount(), 2);
    Gx::CFArray<CFStringRef> preferred = bundle.GetPreferredLocalizations();
    ASSERT_EQ(preferred.GetCount(), 1);
    EXPECT_TRUE(CFEqual(preferred[0], CFSTR("fr")));

    Gx::CFArray<CFStringRef> none = Gx::CFBundle(URLOf("Bare.bundle")).GetPreferredLocalizations();
    EXPECT_TRUE(none.IsValid() && none.IsEmpty());
}

TEST_F(SysCFBundle, IndexedStringsComeFromTheOpenResourceMap)
{
    Gx::CFBundle bundle(URLOf("Wrapped.bundle"));
    EXPECT_TRUE(Gx::CFUtils::GetIndString(128, 1) == CFSTR("")) << "nothing open yet";
    SInt16 file = bundle.OpenResourceMap();
    ASSERT_NE(file, kResFileNotOpened);
    EXPECT_TRUE(Gx::CFUtils::GetIndString(128, 2) == CFSTR("second"));
    EXPECT_TRUE(Gx::CFUtils::GetIndString(128, 3) == CFSTR(""));
    EXPECT_TRUE(Gx::CFUtils::GetIndString(129, 1) == CFSTR(""));
    ExpectThrows<Gx::RuntimeError>([] { Gx::CFUtils::GetIndString(128, 1, kCFStringEncodingMacRoman, kCFAllocatorNull); },
                                   FourCC("cfcr"));
    bundle.CloseResourceMap(file);
    EXPECT_TRUE(Gx::CFUtils::GetIndString(128, 1) == CFSTR(""));
    EXPECT_EQ(Gx::CFBundle(URLOf("Bare.bundle")).OpenResourceMap(), kResFileNotOpened);
}

}  // namespace
