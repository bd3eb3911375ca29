// UpdateLoginItems against real domain files in a temporary configuration folder, written and
// read back by Python's plistlib, which knows nothing of our property-list code.
#include <platform/Mac/spindeckMac/LoginItems.h>

#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const std::string kOwn = "/Applications/Vemora spindeck.app/Contents/MacOS/Vemora spindeck Helper.app";
const std::string kOwnUpper = "/Applications/Vemora spindeck.app/Contents/MacOS/VEMORA SPINDECK HELPER.app";
const std::string kOld = "/Applications/Old/vemora Spindeck Helper 1.0.app";
const std::string kUnrelated = "/Applications/Other.app";

std::string Entry(const std::string& inPath) { return R"({"Hide": false, "Path": ")" + inPath + "\"}"; }

std::string List(const std::vector<std::string>& inEntries)
{
    std::string list = "[";
    for (const std::string& entry : inEntries)
        list += (list.size() > 1 ? ", " : "") + entry;
    return list + "]";
}

std::string Quoted(const std::string& inText)
{
    std::string quoted = "'";
    for (char c : inText)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// Runs a script with the file and, if given, a list as arguments; answers what it printed.
std::string Python(const std::string& inScript, const fs::path& inFile, const std::string& inList = "")
{
    std::string command = "python3 -c " + Quoted("import json, plistlib, sys\n" + inScript) + " " +
                          Quoted(inFile.string()) + " " + Quoted(inList);
    std::string output;
    FILE* child = popen(command.c_str(), "r");
    char buffer[4096];
    while (std::size_t count = child ? std::fread(buffer, 1, sizeof buffer, child) : 0)
        output.append(buffer, count);
    return child && pclose(child) == 0 ? output : output + "(python3 failed)";
}

bool Update(const std::string& inPath, bool inNamed, UpdateLoginItemsAction inAction)
{
    CFStringRef path = CFStringCreateWithCString(nullptr, inPath.c_str(), kCFStringEncodingUTF8);
    CFURLRef url = CFURLCreateWithFileSystemPath(nullptr, path, kCFURLPOSIXPathStyle, true);
    bool result = UpdateLoginItems(url, inNamed ? CFSTR("Vemora spindeck Helper") : nullptr, inAction);
    CFRelease(url);
    CFRelease(path);
    return result;
}

struct Case {
    std::optional<std::string> stored;    // the list in the domain file; none: no file
    bool named;                           // whether the helper's name is given
    UpdateLoginItemsAction action;
    bool result;
    std::optional<std::string> expected;  // the list written; none: the file is left alone
};

class LoginItems : public testing::Test {
protected:
    void SetUp() override
    {
        char folder[] = "/tmp/LoginItemsTests-XXXXXX";
        ASSERT_NE(mkdtemp(folder), nullptr);
        mFolder = folder;
        if (const char* config = getenv("XDG_CONFIG_HOME"))
            mSavedConfig = config;
    }
    void TearDown() override
    {
        if (mSavedConfig)
            setenv("XDG_CONFIG_HOME", mSavedConfig->c_str(), 1);
        else
            unsetenv("XDG_CONFIG_HOME");
        fs::remove_all(mFolder);
    }

    // Each case has a configuration folder of its own. The domain file is written with a
    // second key, which must survive, and read back with the list's keys sorted.
    void Run(const Case& inCase, int inNumber)
    {
        SCOPED_TRACE(testing::Message() << "case " << inNumber);
        const fs::path config = mFolder / std::to_string(inNumber);
        const fs::path file = config / "preferences/loginwindow.plist";
        setenv("XDG_CONFIG_HOME", config.c_str(), 1);
        struct stat before {}, after {};
        if (inCase.stored) {
            fs::create_directories(file.parent_path());
            EXPECT_EQ(Python("plistlib.dump({'Other': 'kept', 'AutoLaunchedApplicationDictionary':"
                             " json.loads(sys.argv[2])}, open(sys.argv[1], 'wb'))",
                             file, *inCase.stored), "");
            ASSERT_EQ(stat(file.c_str(), &before), 0);
        }
        EXPECT_EQ(Update(kOwn, inCase.named, inCase.action), inCase.result);
        const bool exists = stat(file.c_str(), &after) == 0;
        if (inCase.expected) {
            EXPECT_EQ(Python("d = plistlib.load(open(sys.argv[1], 'rb'))\n"
                             "print(d.get('Other'), json.dumps(d['AutoLaunchedApplicationDictionary'], sort_keys=True))",
                             file),
                      (inCase.stored ? "kept " : "None ") + *inCase.expected + "\n");
        } else {
            EXPECT_EQ(exists, inCase.stored.has_value());
            EXPECT_TRUE(!exists || (after.st_ino == before.st_ino && after.st_mtim.tv_sec == before.st_mtim.tv_sec &&
                                    after.st_mtim.tv_nsec == before.st_mtim.tv_nsec))
                << "the file was rewritten";
        }
    }

    fs::path mFolder;
    std::optional<std::string> mSavedConfig;
};

TEST_F(LoginItems, AddingMovingAndFindingTheItem)
{
    const std::string tagged = R"({"Hide": true, "Path": ")" + kOwn + R"(", "Tag": "first"})";
    const std::string taggedSecond = R"({"Hide": false, "Path": ")" + kOwn + R"(", "Tag": "second"})";
    const Case cases[] = {
        {std::nullopt, true, kAddIfNotFound, true, List({Entry(kOwn)})},
        {std::nullopt, true, kMoveToEndIfPresent, true, List({Entry(kOwn)})},
        {std::nullopt, true, kRemoveIfFound, false, std::nullopt},
        {std::nullopt, true, kJustSeeIfItsThere, false, std::nullopt},
        {List({}), false, kAddIfNotFound, true, List({Entry(kOwn)})},
        {List({Entry(kOwn), Entry(kUnrelated)}), true, kAddIfNotFound, false, std::nullopt},
        {List({Entry(kOwn), Entry(kUnrelated)}), true, kJustSeeIfItsThere, true, std::nullopt},
        {List({Entry(kUnrelated), Entry(kOwn)}), true, kAddToEndIfNotFoundButMoveToEndIfPresent, false,
         std::nullopt},
        {List({Entry(kUnrelated), Entry(kOwn)}), false, kMoveToEndIfPresent, false, std::nullopt},
        // Moved entries are written afresh, without the keys the old one had.
        {List({tagged, Entry(kUnrelated)}), true, kAddToEndIfNotFoundButMoveToEndIfPresent, true,
         List({Entry(kUnrelated), Entry(kOwn)})},
        {List({tagged, Entry(kUnrelated)}), false, kMoveToEndIfPresent, true,
         List({Entry(kUnrelated), Entry(kOwn)})},
        // Two entries of the item: the last one is seen first, the earlier one then clears
        // "found", so a new entry follows the one that was last.
        {List({tagged, taggedSecond}), true, kAddToEndIfNotFoundButMoveToEndIfPresent, true,
         List({taggedSecond, Entry(kOwn)})},
        {List({tagged, taggedSecond}), false, kMoveToEndIfPresent, true, List({taggedSecond, Entry(kOwn)})},
        {List({tagged, Entry(kUnrelated), taggedSecond}), true, kRemoveIfFound, true,
         List({Entry(kUnrelated)})},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        Run(cases[i], int(i));
}

TEST_F(LoginItems, StaleCopiesAreRemovedByEveryActionAndOnlyByName)
{
    const std::string stale = List({Entry(kOld), Entry(kUnrelated)});
    const std::string withoutPath = R"({"Hide": true, "Name": "no path"})";
    const std::string extraKeys = R"({"Extra": 1, "Hide": true, "Path": ")" + kUnrelated + "\"}";
    const Case cases[] = {
        {stale, true, kAddIfNotFound, true, List({Entry(kUnrelated), Entry(kOwn)})},
        {stale, true, kAddToEndIfNotFoundButMoveToEndIfPresent, true, List({Entry(kUnrelated), Entry(kOwn)})},
        {stale, true, kRemoveIfFound, true, List({Entry(kUnrelated)})},
        {stale, true, kJustSeeIfItsThere, false, List({Entry(kUnrelated)})},
        {stale, true, kMoveToEndIfPresent, true, List({Entry(kUnrelated), Entry(kOwn)})},
        // Without a name, entries elsewhere are never touched.
        {stale, false, kRemoveIfFound, false, std::nullopt},
        {stale, false, kJustSeeIfItsThere, false, std::nullopt},
        // Paths compare exactly: one differing in letter case only is another item, and stale.
        {List({Entry(kOwnUpper)}), true, kJustSeeIfItsThere, false, List({})},
        {List({Entry(kOwnUpper)}), false, kJustSeeIfItsThere, false, std::nullopt},
        // Entries without a path, and keys this code does not know, survive.
        {List({withoutPath, extraKeys, Entry(kOld)}), true, kRemoveIfFound, true,
         List({withoutPath, extraKeys})},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        Run(cases[i], int(i));
}

}  // namespace
