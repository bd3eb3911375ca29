// Folders of the user's domain on a private home and XDG folders, folders of the
// installation's domains, and agreement with where preferences are kept.
#include "LaunchTesting.h"

#include <Carbon/Folders.h>
#include <Carbon/MacErrors.h>
#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

namespace fs = std::filesystem;
using spindeck::test::ScopedVariable;

namespace {

// Each variable a test sets, with the folder under the test's own root that it names.
constexpr std::pair<const char*, const char*> kVariables[] = {{"HOME", "home"},
                                                              {"XDG_DATA_HOME", "data"},
                                                              {"XDG_CONFIG_HOME", "config"},
                                                              {"XDG_CACHE_HOME", "cache"},
                                                              {"XDG_STATE_HOME", "state"},
                                                              {"TMPDIR", "tmp"}};

class Folders : public ::testing::Test {
protected:
    Folders()
    {
        for (auto [name, folder] : kVariables)
            mVariables.emplace_back(name, (mRoot / folder).string());
    }
    ~Folders() override { ::umask(mUmask); }

    spindeck::test::TemporaryFolder mScratch;
    const fs::path mRoot = mScratch.Path();
    const mode_t mUmask = ::umask(022);
    std::deque<ScopedVariable> mVariables;  // restored before the folder goes
};

// The folder's path, or the status that FSFindFolder answered.
std::string Find(FSVolumeRefNum inDomain, OSType inType, Boolean inCreate)
{
    FSRef ref;
    OSErr status = FSFindFolder(inDomain, inType, inCreate, &ref);
    if (status != noErr)
        return "status " + std::to_string(status);
    UInt8 path[4096];
    EXPECT_EQ(FSRefMakePath(&ref, path, sizeof path), noErr);
    return reinterpret_cast<const char*>(path);
}

std::string Missing() { return "status " + std::to_string(fnfErr); }

mode_t ModeOf(const fs::path& inPath)
{
    struct stat status {};
    ::stat(inPath.c_str(), &status);
    return status.st_mode & 07777;
}

TEST_F(Folders, TheUserDomainFollowsTheXdgFolders)
{
    struct Expected {
        OSType type;
        const char* path;
        mode_t mode;
    };
    const Expected folders[] = {
        {kApplicationSupportFolderType, "data", 0700},
        {kPreferencesFolderType, "config/preferences", 0700},
        {kPreferencePanesFolderType, "data/preference-panes", 0755},
        {kApplicationsFolderType, "data/application-bundles", 0755},
        {kFontsFolderType, "data/fonts", 0755},
        {kCachedDataFolderType, "cache", 0700},
        {kLogsFolderType, "state/log", 0700},
        {kTemporaryFolderType, "tmp", 0700},
        {kDesktopFolderType, "home/Desktop", 0755},
        {kDocumentsFolderType, "home/Documents", 0755},
        {kCurrentUserFolderType, "home", 0700},
    };
    for (const Expected& folder : folders)
        EXPECT_EQ(Find(kUserDomain, folder.type, kDontCreateFolder), Missing()) << folder.path;
    for (const Expected& folder : folders) {
        EXPECT_EQ(Find(kUserDomain, folder.type, kCreateFolder), (mRoot / folder.path).string()) << folder.path;
        EXPECT_EQ(ModeOf(mRoot / folder.path), folder.mode) << folder.path;
    }
    for (const Expected& folder : folders)
        EXPECT_EQ(Find(kOnAppropriateDisk, folder.type, kDontCreateFolder), (mRoot / folder.path).string());

    // Preferences are kept in the preferences folder.
    CFStringRef app = CFSTR("com.vemora.folder-test");
    CFPreferencesSetAppValue(CFSTR("Answer"), CFSTR("forty-two"), app);
    ASSERT_TRUE(CFPreferencesAppSynchronize(app));
    EXPECT_TRUE(fs::exists(mRoot / "config/preferences/com.vemora.folder-test.plist"));
}

TEST_F(Folders, TheEnvironmentIsReadAtEachCall)
{
    // Relative XDG folders do not count; the defaults in the home folder stand instead.
    ::setenv("XDG_DATA_HOME", "data", 1);
    ::setenv("XDG_CACHE_HOME", "", 1);
    EXPECT_EQ(Find(kUserDomain, kPreferencePanesFolderType, kCreateFolder),
              (mRoot / "home/.local/share/preference-panes").string());
    EXPECT_EQ(Find(kUserDomain, kCachedDataFolderType, kCreateFolder), (mRoot / "home/.cache").string());
    EXPECT_EQ(ModeOf(mRoot / "home/.local/share"), 0700);

    fs::create_directories(mRoot / "config");
    std::ofstream(mRoot / "config/user-dirs.dirs")
        << "# written by xdg-user-dirs-update\n"
        << "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
        << "  XDG_DOCUMENTS_DIR=\"" << (mRoot / "elsewhere/My \\\"Docs\\\"").string() << "\"\n"
        << "XDG_DOCUMENTS_DIR_OLD=\"/nowhere\"\n";
    EXPECT_EQ(Find(kUserDomain, kDesktopFolderType, kCreateFolder), (mRoot / "home/Schreibtisch").string());
    EXPECT_EQ(Find(kUserDomain, kDocumentsFolderType, kCreateFolder), (mRoot / "elsewhere/My \"Docs\"").string());

    ::unsetenv("TMPDIR");
    EXPECT_EQ(Find(kUserDomain, kTemporaryFolderType, kDontCreateFolder), "/tmp");
}

TEST_F(Folders, TheOtherDomainsAreTheInstallationsFolders)
{
    const fs::path prefix = SPINDECK_INSTALL_PREFIX, data = SPINDECK_INSTALL_DATADIR;
    const std::pair<OSType, fs::path> folders[] = {
        {kApplicationSupportFolderType, data},
        {kFontsFolderType, data / "fonts"},
        {kPreferencePanesFolderType, prefix / "lib/spindeck/preference-panes"},
        {kApplicationsFolderType, prefix / "lib/spindeck/application-bundles"},
        // where the preferences of every user are kept
        {kPreferencesFolderType, fs::path(SPINDECK_INSTALL_SYSCONFDIR) / "preferences"},
    };
    for (FSVolumeRefNum domain : {kLocalDomain, kSystemDomain}) {
        for (const auto& [type, path] : folders)
            EXPECT_EQ(Find(domain, type, kDontCreateFolder), fs::is_directory(path) ? path.string() : Missing())
                << path;
        EXPECT_EQ(Find(domain, kTemporaryFolderType, kCreateFolder), (mRoot / "tmp").string());
        // The user's own folders have no counterpart there, and are not made.
        for (OSType type : {kDesktopFolderType, kDocumentsFolderType, kCurrentUserFolderType})
            EXPECT_EQ(Find(domain, type, kCreateFolder), Missing());
    }
    EXPECT_FALSE(fs::exists(mRoot / "home"));
}

TEST_F(Folders, UnknownRequestsAndObstacles)
{
    EXPECT_EQ(Find(kNetworkDomain, kPreferencesFolderType, kCreateFolder), Missing());
    EXPECT_EQ(Find(-100, kPreferencesFolderType, kCreateFolder), Missing());
    EXPECT_EQ(Find(kUserDomain, FourCC("zzzz"), kCreateFolder), Missing());
    EXPECT_EQ(FSFindFolder(kUserDomain, kPreferencesFolderType, kCreateFolder, nullptr), paramErr);

    // A file where the folder belongs is not a folder, and is left as it is.
    fs::create_directories(mRoot / "data");
    std::ofstream(mRoot / "data/fonts") << "not a folder";
    EXPECT_EQ(Find(kUserDomain, kFontsFolderType, kDontCreateFolder), Missing());
    EXPECT_EQ(Find(kUserDomain, kFontsFolderType, kCreateFolder), "status " + std::to_string(errFSNotAFolder));
    EXPECT_TRUE(fs::is_regular_file(mRoot / "data/fonts"));
}

}  // namespace
