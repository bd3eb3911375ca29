// UpdateLoginItems against real domain files in a temporary configuration folder, written and
// read back by Python's plistlib, which knows nothing of our property-list code.
#include <platform/Mac/spindeckMac/LoginItems.h>

#include "LoginWindowTesting.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace {

using spindeck::test::LoginWindowFile;
using spindeck::test::Python;
using spindeck::test::ScopedVariable;

const std::string kOwn = "/Applications/Vemora spindeck.app/Contents/MacOS/Vemora spindeck Helper.app";
const std::string kOwnUpper = "/Applications/Vemora spindeck.app/Contents/MacOS/VEMORA SPINDECK HELPER.app";
const std::string kOld = "/Applications/Old/vemora Spindeck Helper 1.0.app";
const std::string kUnrelated = "/Applications/Other.app";
// Kept in JSON's escaped form, as the file is read back.
const std::string kOldNonASCII = R"(/Programme/\u00c4ltere/VEMORA spindeck helper.app)";
const std::string kInNamedFolder = "/Applications/Vemora spindeck Helper/Other.app";

std::string Entry(const std::string& inPath) { return R"({"Hide": false, "Path": ")" + inPath + "\"}"; }

std::string List(const std::vector<std::string>& inEntries)
{
    std::string list = "[";
    for (const std::string& entry : inEntries)
        list += (list.size() > 1 ? ", " : "") + entry;
    return list + "]";
}

struct Case {
    std::optional<std::string> stored;  // the list in the domain file; none: no file
    bool named;                         // whether the helper's name is given
    UpdateLoginItemsAction action;
    bool result;
    std::optional<std::string> expected;  // the list written; none: the file is left alone
};

// Whether a file is there, and which write of it: a file rewritten gets another inode or time.
std::tuple<bool, ino_t, time_t, long> Stamp(const std::string& inPath)
{
    struct stat status {};
    bool exists = stat(inPath.c_str(), &status) == 0;
    return {exists, status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

// Each case has a configuration folder of its own. The domain file is written with a second
// key, which must survive, and read back with the list's keys sorted.
void RunCases(const std::vector<Case>& inCases)
{
    spindeck::test::TemporaryFolder folder;
    for (std::size_t number = 0; number < inCases.size(); ++number) {
        const Case& test = inCases[number];
        SCOPED_TRACE(testing::Message() << "case " << number);
        const std::string config = folder.Path(std::to_string(number)), file = LoginWindowFile(config);
        ScopedVariable home("XDG_CONFIG_HOME", config);
        if (test.stored) {
            std::filesystem::create_directories(config + "/preferences");
            EXPECT_EQ(Python("plistlib.dump({'Other': 'kept', 'AutoLaunchedApplicationDictionary': json.loads(items)},"
                             " open(file, 'wb'))",
                             file, *test.stored),
                      "");
        }
        const auto before = Stamp(file);
        EXPECT_EQ(UpdateLoginItems(spindeck::test::PathURL(kOwn, true).Get(),
                                   test.named ? CFSTR("Vemora spindeck Helper") : nullptr, test.action),
                  test.result);
        if (test.expected)
            EXPECT_EQ(
                Python("d = plistlib.load(open(file, 'rb'))\n"
                       "print(d.get('Other'), json.dumps(d['AutoLaunchedApplicationDictionary'], sort_keys=True))",
                       file),
                (test.stored ? "kept " : "None ") + *test.expected + "\n");
        else
            EXPECT_EQ(Stamp(file), before) << "the file was made or rewritten";
    }
}

TEST(LoginItems, AddingMovingAndFindingTheItem)
{
    const std::string tagged = R"({"Hide": true, "Path": ")" + kOwn + R"(", "Tag": "first"})";
    const std::string taggedSecond = R"({"Hide": false, "Path": ")" + kOwn + R"(", "Tag": "second"})";
    RunCases({
        {std::nullopt, true, kAddIfNotFound, true, List({Entry(kOwn)})},
        {std::nullopt, true, kRemoveIfFound, false, std::nullopt},
        {std::nullopt, true, kJustSeeIfItsThere, false, std::nullopt},
        {List({}), false, kAddIfNotFound, true, List({Entry(kOwn)})},
        {List({Entry(kOwn), Entry(kUnrelated)}), true, kAddIfNotFound, false, std::nullopt},
        {List({Entry(kOwn), Entry(kUnrelated)}), true, kJustSeeIfItsThere, true, std::nullopt},
        {List({Entry(kUnrelated), Entry(kOwn)}), true, kAddToEndIfNotFoundButMoveToEndIfPresent, false, std::nullopt},
        {List({Entry(kUnrelated), Entry(kOwn)}), false, kMoveToEndIfPresent, false, std::nullopt},
        // Moved entries are written afresh, without the keys the old one had.
        {List({tagged, Entry(kUnrelated)}), true, kAddToEndIfNotFoundButMoveToEndIfPresent, true,
         List({Entry(kUnrelated), Entry(kOwn)})},
        {List({tagged, Entry(kUnrelated)}), false, kMoveToEndIfPresent, true, List({Entry(kUnrelated), Entry(kOwn)})},
        // Two entries of the item: the last one is seen first, the earlier one then clears
        // "found", so a new entry follows the one that was last.
        {List({tagged, taggedSecond}), true, kAddToEndIfNotFoundButMoveToEndIfPresent, true,
         List({taggedSecond, Entry(kOwn)})},
        {List({tagged, taggedSecond}), false, kMoveToEndIfPresent, true, List({taggedSecond, Entry(kOwn)})},
        {List({tagged, Entry(kUnrelated), taggedSecond}), true, kRemoveIfFound, true, List({Entry(kUnrelated)})},
    });
}

TEST(LoginItems, StaleCopiesAreRemovedByEveryActionAndOnlyByName)
{
    const std::string stale = List({Entry(kOld), Entry(kUnrelated)});
    const std::string withoutPath = R"({"Hide": true, "Name": "no path"})";
    const std::string extraKeys = R"({"Extra": 1, "Hide": true, "Path": ")" + kUnrelated + "\"}";
    RunCases({
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
        // Only the file name counts, and it is compared whatever the letters.
        {List({Entry(kInNamedFolder), Entry(kOldNonASCII)}), true, kJustSeeIfItsThere, false,
         List({Entry(kInNamedFolder)})},
        // Entries without a path, and keys this code does not know, survive.
        {List({withoutPath, extraKeys, Entry(kOld)}), true, kRemoveIfFound, true, List({withoutPath, extraKeys})},
    });
}

}  // namespace
