// Bundles built in a temporary folder: information, localisation, resources, strings and code.
#include "PropertyList/PropertyListTesting.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>

namespace {

using plisttest::Ref;
using plisttest::Str;
using plisttest::Text;
namespace fs = std::filesystem;

constexpr const char* kSampleID = "org.spindeck.tests.sample";

constexpr std::string_view kSampleInfo = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
  <key>CFBundleIdentifier</key><string>org.spindeck.tests.sample</string>
  <key>CFBundleName</key><string>Sample</string>
  <key>CFBundleExecutable</key><string>Sample</string>
  <key>CFBundleVersion</key><string>1.2.3b4</string>
  <key>CFBundleDevelopmentRegion</key><string>en</string>
  <key>CFBundleLocalizations</key><array><string>ja</string><string>fr</string></array>
</dict></plist>
)";

constexpr std::string_view kAlertsTable = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>NoPluginWarning</key><string>No plug-in</string></dict></plist>
)";

void Write(const fs::path& inPath, std::string_view inBytes)
{
    fs::create_directories(inPath.parent_path());
    plisttest::WriteFile(inPath, inBytes);
}

std::string BinaryTable(const char* inKey, const char* inValue)
{
    Ref key(Str(inKey)), value(Str(inValue));
    const void* keys[] = {key.get()};
    const void* values[] = {value.get()};
    Ref table(
        CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    Ref data(CFPropertyListCreateData(nullptr, table.get(), kCFPropertyListBinaryFormat_v1_0, 0, nullptr));
    return plisttest::BytesOf(data.as<CFDataRef>());
}

// Bundle references are not const, as on the platform.
CFBundleRef AsBundle(const Ref& inBundle) { return static_cast<CFBundleRef>(const_cast<void*>(inBundle.get())); }

std::string PathOf(CFURLRef inURL)
{
    if (inURL == nullptr)
        return "(none)";
    Ref absolute(CFURLCopyAbsoluteURL(inURL));
    Ref path(CFURLCopyFileSystemPath(absolute.as<CFURLRef>(), kCFURLPOSIXPathStyle));
    return Text(path.as<CFStringRef>());
}

Ref FolderURL(const fs::path& inPath)
{
    std::string path = inPath.string();
    return Ref(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                       CFIndex(path.size()), true));
}

std::string LocalizedString(CFBundleRef inBundle, const char* inKey, const char* inValue, const char* inTable)
{
    Ref key(Str(inKey));
    Ref value(inValue ? Str(inValue) : nullptr), table(inTable ? Str(inTable) : nullptr);
    Ref text(
        CFBundleCopyLocalizedString(inBundle, key.as<CFStringRef>(), value.as<CFStringRef>(), table.as<CFStringRef>()));
    return Text(text.as<CFStringRef>());
}

std::vector<std::string> Texts(CFArrayRef inArray)
{
    std::vector<std::string> texts;
    for (CFIndex index = 0; index < CFArrayGetCount(inArray); ++index)
        texts.push_back(Text(static_cast<CFStringRef>(CFArrayGetValueAtIndex(inArray, index))));
    return texts;
}

Ref Strings(std::initializer_list<const char*> inTexts)
{
    std::vector<Ref> owned;
    std::vector<const void*> values;
    for (const char* text : inTexts)
        values.push_back(owned.emplace_back(Str(text)).get());
    return Ref(CFArrayCreate(nullptr, values.data(), CFIndex(values.size()), &kCFTypeArrayCallBacks));
}

// Each test gets a fresh folder holding Sample.app and its own language settings.
class CFBundleTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const char* name : kLanguageVariables)
            if (const char* value = std::getenv(name))
                mSaved.emplace_back(name, value);
        char pattern[] = "/tmp/cfbundle-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        mFolder = fs::canonical(pattern);
        mSample = mFolder / "Sample.app";
        MakeSample();
        Languages("fr");
    }

    void TearDown() override
    {
        for (const char* name : kLanguageVariables)
            unsetenv(name);
        for (auto& [name, value] : mSaved)
            setenv(name.c_str(), value.c_str(), 1);
        fs::remove_all(mFolder);
    }

    void Languages(const char* inLanguage, const char* inMessages = nullptr)
    {
        for (const char* name : kLanguageVariables)
            unsetenv(name);
        if (inLanguage)
            setenv("LANGUAGE", inLanguage, 1);
        setenv("LANG", "C", 1);
        if (inMessages)
            setenv("LC_MESSAGES", inMessages, 1);
    }

    Ref Create(const fs::path& inFolder) { return Ref(CFBundleCreate(nullptr, FolderURL(inFolder).as<CFURLRef>())); }

    // The path of a URL inside the sample bundle, or "(none)".
    std::string Inside(CFURLRef inURL)
    {
        std::string path = PathOf(inURL);
        return path.starts_with(mSample.string() + "/") ? path.substr(mSample.string().size() + 1) : path;
    }

    fs::path mFolder, mSample;

private:
    static constexpr const char* kLanguageVariables[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};

    void MakeSample()
    {
        fs::path contents = mSample / "Contents", resources = contents / "Resources";
        Write(contents / "Info.plist", kSampleInfo);
        Write(contents / "PkgInfo", "APPLSmpl");
        fs::create_directories(contents / "MacOS");
        fs::copy_file(SPINDECK_BUNDLE_TEST_CODE, contents / "MacOS" / "Sample");
        Write(contents / "MacOS" / "Sample Helper", "#!/bin/sh\n");
        Write(resources / "shared.txt", "shared");
        Write(resources / "both.txt", "not localised");
        Write(resources / "en.lproj" / "both.txt", "English");
        Write(resources / "en.lproj" / "greeting.txt", "Hello");
        Write(resources / "fr.lproj" / "greeting.txt", "Bonjour");
        Write(resources / "fr.lproj" / "only-fr.txt", "Seulement");
        Write(resources / "fr.lproj" / "images" / "flag.png", "bleu blanc rouge");
        Write(resources / "en.lproj" / "InfoPlist.strings",
              plisttest::UTF16(u"\"CFBundleName\" = \"Sample (English)\";", false));
        Write(resources / "fr.lproj" / "InfoPlist.strings",
              plisttest::UTF16(u"/* nom */ \"CFBundleName\" = \"\u00C9chantillon\";", true));
        Write(resources / "en.lproj" / "Localizable.strings",
              "/* greetings */\n\"Hello\" = \"Hello\";\n\"Bye\" = \"Goodbye\";\n");
        Write(resources / "fr.lproj" / "Localizable.strings", "\"Hello\" = \"Bonjour\"; // no farewell here\n");
        Write(resources / "en.lproj" / "Alerts.strings", kAlertsTable);
        Write(resources / "German.lproj" / "Localizable.strings", BinaryTable("Hello", "Hallo"));
    }

    std::vector<std::pair<std::string, std::string>> mSaved;
};

TEST_F(CFBundleTest, CreateAnswersOneObjectPerFolderWhileItLives)
{
    Ref first = Create(mSample);
    ASSERT_TRUE(first);
    Ref second = Create(mSample / "Contents" / "..");
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(CFGetRetainCount(first.get()), 2);
    EXPECT_EQ(CFGetTypeID(first.get()), CFBundleGetTypeID());

    Ref identifier(Str(kSampleID));
    EXPECT_EQ(CFBundleGetBundleWithIdentifier(identifier.as<CFStringRef>()), first.get());
    Ref description(CFCopyDescription(first.get()));
    EXPECT_NE(Text(description.as<CFStringRef>()).find(mSample.string()), std::string::npos);

    second = Ref();
    EXPECT_EQ(CFGetRetainCount(first.get()), 1);
    first = Ref();
    EXPECT_EQ(CFBundleGetBundleWithIdentifier(identifier.as<CFStringRef>()), nullptr);

    EXPECT_FALSE(Create(mFolder / "Missing.app"));
    EXPECT_FALSE(Create(mSample / "Contents" / "PkgInfo"));
}

TEST_F(CFBundleTest, InformationPrefersTheLocalisedValueAndLocationsResolveInsideTheBundle)
{
    Ref bundle = Create(mSample);
    auto sample = AsBundle(bundle);
    EXPECT_EQ(Text(CFBundleGetIdentifier(sample)), kSampleID);
    EXPECT_EQ(Text(CFBundleGetDevelopmentRegion(sample)), "en");
    EXPECT_EQ(CFBundleGetVersionNumber(sample), 0x01236004u);
    auto global = static_cast<CFStringRef>(CFDictionaryGetValue(CFBundleGetInfoDictionary(sample), kCFBundleNameKey));
    EXPECT_EQ(Text(global), "Sample");

    auto local = static_cast<CFStringRef>(CFBundleGetValueForInfoDictionaryKey(sample, kCFBundleNameKey));
    EXPECT_EQ(Text(local), "\u00C9chantillon");
    ASSERT_NE(CFBundleGetLocalInfoDictionary(sample), nullptr);
    EXPECT_EQ(CFDictionaryGetCount(CFBundleGetLocalInfoDictionary(sample)), 1);
    auto unlocalised = static_cast<CFStringRef>(CFBundleGetValueForInfoDictionaryKey(sample, kCFBundleIdentifierKey));
    EXPECT_EQ(Text(unlocalised), kSampleID);

    Languages("en");
    local = static_cast<CFStringRef>(CFBundleGetValueForInfoDictionaryKey(sample, kCFBundleNameKey));
    EXPECT_EQ(Text(local), "Sample (English)");

    UInt32 type = 0, creator = 0;
    CFBundleGetPackageInfo(sample, &type, &creator);
    EXPECT_EQ(type, FourCC("APPL"));
    EXPECT_EQ(creator, FourCC("Smpl"));

    // Every location resolves inside the bundle.
    const std::pair<CFURLRef (*)(CFBundleRef), const char*> folders[] = {
        {CFBundleCopySupportFilesDirectoryURL, "Contents"},
        {CFBundleCopyResourcesDirectoryURL, "Contents/Resources"},
        {CFBundleCopyPrivateFrameworksURL, "Contents/Frameworks"},
        {CFBundleCopySharedFrameworksURL, "Contents/SharedFrameworks"},
        {CFBundleCopySharedSupportURL, "Contents/SharedSupport"},
        {CFBundleCopyBuiltInPlugInsURL, "Contents/PlugIns"},
        {CFBundleCopyExecutableURL, "Contents/MacOS/Sample"},
    };
    for (auto [copy, expected] : folders) {
        Ref url(copy(sample));
        EXPECT_EQ(Inside(url.as<CFURLRef>()), expected);
    }
    Ref url(CFBundleCopyBundleURL(sample));
    EXPECT_EQ(PathOf(url.as<CFURLRef>()), mSample.string());
    EXPECT_TRUE(CFURLHasDirectoryPath(url.as<CFURLRef>()));
    Ref helper(CFBundleCopyAuxiliaryExecutableURL(sample, Ref(Str("Sample Helper")).as<CFStringRef>()));
    EXPECT_EQ(Inside(helper.as<CFURLRef>()), "Contents/MacOS/Sample Helper");
    EXPECT_EQ(CFBundleCopyAuxiliaryExecutableURL(sample, Ref(Str("Other")).as<CFStringRef>()), nullptr);
}

TEST_F(CFBundleTest, FlatBundlesPackTheirVersionAndPackageCodes)
{
    const std::pair<const char*, UInt32> versions[] = {
        {"1.2.3b4", 0x01236004},
        {"10.1", 0x10108000},
        {"2.0d1", 0x02002001},
        {"1.0a12", 0x0100400C},
        {"3.4.5f7", 0x03458007},
        {"7", 0x07008000},
        {"1.0.0.0", 0},
        {"1.23", 0},
        {"100", 0},
        {"1.0b256", 0},
        {"1.0b", 0},
        {"beta", 0},
    };
    for (auto [version, packed] : versions) {
        fs::path folder = mFolder / "Plugin.bundle";
        Write(folder / "Info.plist", std::string("{ CFBundleVersion = \"") + version +
                                         "\"; CFBundlePackageType = BNDL; CFBundleSignature = toolong; }");
        Ref bundle = Create(folder);
        ASSERT_TRUE(bundle);
        EXPECT_EQ(CFBundleGetVersionNumber(AsBundle(bundle)), packed) << version;
        UInt32 type = 0, creator = 0;
        CFBundleGetPackageInfo(AsBundle(bundle), &type, &creator);
        EXPECT_EQ(type, FourCC("BNDL"));
        EXPECT_EQ(creator, FourCC("????"));
        Ref resources(CFBundleCopyResourcesDirectoryURL(AsBundle(bundle)));
        EXPECT_EQ(PathOf(resources.as<CFURLRef>()), folder.string());
    }
}

TEST_F(CFBundleTest, ResourcesAreFoundUnlocalisedFirstThenByLanguageThenInTheDevelopmentRegion)
{
    Ref bundle = Create(mSample);
    auto find = [&](const char* inName, const char* inType, const char* inSubDir = nullptr) {
        Ref name(Str(inName)), type(inType ? Str(inType) : nullptr), subDir(inSubDir ? Str(inSubDir) : nullptr);
        Ref url(CFBundleCopyResourceURL(AsBundle(bundle), name.as<CFStringRef>(), type.as<CFStringRef>(),
                                        subDir.as<CFStringRef>()));
        return Inside(url.as<CFURLRef>());
    };
    EXPECT_EQ(find("greeting", "txt"), "Contents/Resources/fr.lproj/greeting.txt");
    EXPECT_EQ(find("greeting.txt", nullptr), "Contents/Resources/fr.lproj/greeting.txt");
    EXPECT_EQ(find("only-fr", ".txt"), "Contents/Resources/fr.lproj/only-fr.txt");
    EXPECT_EQ(find("shared", "txt"), "Contents/Resources/shared.txt");
    EXPECT_EQ(find("both", "txt"), "Contents/Resources/both.txt");
    EXPECT_EQ(find("flag", "png", "images"), "Contents/Resources/fr.lproj/images/flag.png");

    Languages("en");
    EXPECT_EQ(find("greeting", "txt"), "Contents/Resources/en.lproj/greeting.txt");
    EXPECT_EQ(find("only-fr", "txt"), "(none)");
    Languages("it");  // not offered: the development region answers
    EXPECT_EQ(find("greeting", "txt"), "Contents/Resources/en.lproj/greeting.txt");
    Languages("de");  // offered, but without this resource
    EXPECT_EQ(find("greeting", "txt"), "Contents/Resources/en.lproj/greeting.txt");

    Languages("fr");
    Ref all(CFBundleCopyResourceURLsOfType(AsBundle(bundle), Ref(Str("txt")).as<CFStringRef>(), nullptr));
    std::vector<std::string> found;
    for (CFIndex index = 0; index < CFArrayGetCount(all.as<CFArrayRef>()); ++index)
        found.push_back(Inside(static_cast<CFURLRef>(CFArrayGetValueAtIndex(all.as<CFArrayRef>(), index))));
    EXPECT_EQ(found, (std::vector<std::string>{"Contents/Resources/both.txt", "Contents/Resources/shared.txt",
                                               "Contents/Resources/fr.lproj/greeting.txt",
                                               "Contents/Resources/fr.lproj/only-fr.txt"}));
    Ref english(CFBundleCopyResourceURLForLocalization(AsBundle(bundle), Ref(Str("greeting")).as<CFStringRef>(),
                                                       Ref(Str("txt")).as<CFStringRef>(), nullptr,
                                                       Ref(Str("English")).as<CFStringRef>()));
    EXPECT_EQ(Inside(english.as<CFURLRef>()), "Contents/Resources/en.lproj/greeting.txt");
}

TEST_F(CFBundleTest, LocalisationsAndTheirStringsFollowTheUsersLanguagesInAnyTableFormat)
{
    Ref bundle = Create(mSample);
    auto sample = AsBundle(bundle);
    EXPECT_EQ(LocalizedString(sample, "Hello", nullptr, nullptr), "Bonjour");
    EXPECT_EQ(LocalizedString(sample, "Bye", nullptr, nullptr), "Bye");
    EXPECT_EQ(LocalizedString(sample, "Bye", "Au revoir", "Localizable"), "Au revoir");
    EXPECT_EQ(LocalizedString(sample, "Bye", "", nullptr), "Bye");
    EXPECT_EQ(LocalizedString(sample, "NoPluginWarning", nullptr, "Alerts"), "No plug-in");
    EXPECT_EQ(LocalizedString(sample, "Hello", nullptr, "Missing"), "Hello");

    Languages("en");
    EXPECT_EQ(LocalizedString(sample, "Bye", nullptr, nullptr), "Goodbye");
    Languages("de");
    EXPECT_EQ(LocalizedString(sample, "Hello", nullptr, nullptr), "Hallo");
    Languages(nullptr, "fr_CA.UTF-8");
    EXPECT_EQ(LocalizedString(sample, "Hello", nullptr, nullptr), "Bonjour");
    Ref offered(CFBundleCopyBundleLocalizations(sample));
    EXPECT_EQ(Texts(offered.as<CFArrayRef>()), (std::vector<std::string>{"German", "en", "fr", "ja"}));

    auto preferred = [](std::initializer_list<const char*> inOffered) {
        Ref chosen(CFBundleCopyPreferredLocalizationsFromArray(Strings(inOffered).as<CFArrayRef>()));
        return Texts(chosen.as<CFArrayRef>());
    };
    using Names = std::vector<std::string>;
    Languages("de_AT:fr");
    EXPECT_EQ(preferred({"en", "fr", "German"}), Names{"German"});
    Languages("pt_BR:en_GB");
    EXPECT_EQ(preferred({"fr", "en", "en_GB", "en_US"}), (Names{"en_GB", "en", "en_US"}));
    Languages(nullptr, "fr_FR.UTF-8");
    EXPECT_EQ(preferred({"en", "French"}), Names{"French"});
    Languages("pt");
    EXPECT_EQ(preferred({"ja", "en"}), Names{"ja"});
    EXPECT_EQ(preferred({}), Names{});

    Ref forPreferences(CFBundleCopyLocalizationsForPreferences(Strings({"en", "fr"}).as<CFArrayRef>(),
                                                               Strings({"it", "fr-ca"}).as<CFArrayRef>()));
    EXPECT_EQ(Texts(forPreferences.as<CFArrayRef>()), Names{"fr"});
}

TEST_F(CFBundleTest, ExecutableLoadsAndAnswersItsFunctions)
{
    Ref bundle = Create(mSample);
    auto sample = AsBundle(bundle);
    EXPECT_FALSE(CFBundleIsExecutableLoaded(sample));
    ASSERT_TRUE(CFBundleLoadExecutable(sample));
    EXPECT_TRUE(CFBundleIsExecutableLoaded(sample));
    auto answer = reinterpret_cast<int (*)(int)>(
        CFBundleGetFunctionPointerForName(sample, Ref(Str("SpindeckBundleAnswer")).as<CFStringRef>()));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(20), 41);
    EXPECT_EQ(CFBundleGetFunctionPointerForName(sample, Ref(Str("NoSuchFunction")).as<CFStringRef>()), nullptr);
    CFBundleUnloadExecutable(sample);
    EXPECT_FALSE(CFBundleIsExecutableLoaded(sample));

    Write(mFolder / "Broken.plugin" / "Broken", "not a shared object");
    Write(mFolder / "Empty.plugin" / "Info.plist", "{ CFBundleExecutable = Missing; }");
    Ref broken = Create(mFolder / "Broken.plugin"), empty = Create(mFolder / "Empty.plugin");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(CFBundleLoadExecutable(AsBundle(broken)));
    EXPECT_FALSE(CFBundleLoadExecutable(AsBundle(empty)));
    std::string reasons = testing::internal::GetCapturedStderr();
    std::string brokenCode = (mFolder / "Broken.plugin" / "Broken").string();
    EXPECT_NE(reasons.find("cannot load " + brokenCode), std::string::npos) << reasons;
    EXPECT_NE(reasons.find("Empty.plugin has no executable"), std::string::npos) << reasons;
}

TEST_F(CFBundleTest, MainBundleIsTheProgramsBundleOrFolder)
{
    CFBundleRef main = CFBundleGetMainBundle();
    ASSERT_NE(main, nullptr);
    CFRelease(CFRetain(main));
    CFRelease(main);  // the main bundle outlives any number of releases
    fs::path program = fs::canonical("/proc/self/exe");
    Ref url(CFBundleCopyBundleURL(main)), executable(CFBundleCopyExecutableURL(main));
    EXPECT_EQ(PathOf(url.as<CFURLRef>()), program.parent_path().string());
    EXPECT_EQ(PathOf(executable.as<CFURLRef>()), program.string());
    EXPECT_TRUE(CFBundleIsExecutableLoaded(main));
    EXPECT_EQ(Create(program.parent_path()).get(), main);

    fs::path inside = mSample / "Contents" / "MacOS" / "Probe";
    fs::copy_file(SPINDECK_BUNDLE_PROBE, inside);
    int status = -1;
    std::string answer = plisttest::RunProgram({inside.string()}, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(answer, std::string(kSampleID) + "\n" + mSample.string() + "\n" +
                          (mSample / "Contents" / "MacOS" / "Sample").string() + "\n");
}

// Without the fixture: a death test runs the test again in a child that never cleans up.
TEST(CFBundle, MisuseStopsTheProcessNamingTheCall)
{
    Ref text(Str("not a bundle"));
    EXPECT_DEATH(CFBundleGetIdentifier(nullptr), "CFBundleGetIdentifier");
    EXPECT_DEATH(CFBundleCopyBundleURL((CFBundleRef)text.get()), "CFBundleCopyBundleURL: expected a CFBundle");
}

}  // namespace
