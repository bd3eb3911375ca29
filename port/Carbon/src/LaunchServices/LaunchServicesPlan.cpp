// What an item is: an application bundle, a program, or a document for the desktop's opener.
#include "LaunchServicesPlan.h"

#include "LaunchServicesBundle.h"
#include "Processes/ProcessApplication.h"

#include <Carbon/MacErrors.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CFRuntime.h>
#include <PortSupport/Owned.h>

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace carbon::ls {

namespace {

constexpr const char* kOpenerName = "xdg-open";
// What a shell searches when PATH is not set at all.
constexpr const char* kDefaultSearchPath = "/usr/local/bin:/usr/bin:/bin";

bool IsExecutableFile(const std::string& inPath)
{
    struct stat info;
    return ::stat(inPath.c_str(), &info) == 0 && S_ISREG(info.st_mode) && ::access(inPath.c_str(), X_OK) == 0;
}

// Empty entries, which mean the current folder, are skipped: what opens a document must not
// depend on where the host happens to be.
std::string FindOpener()
{
    const char* searchPath = std::getenv("PATH");
    std::string_view folders = searchPath ? searchPath : kDefaultSearchPath;
    while (!folders.empty()) {
        std::size_t colon = folders.find(':');
        std::string_view folder = folders.substr(0, colon);
        folders = colon == std::string_view::npos ? std::string_view() : folders.substr(colon + 1);
        if (folder.empty())
            continue;
        std::string candidate = std::string(folder) + "/" + kOpenerName;
        if (IsExecutableFile(candidate))
            return candidate;
    }
    return {};
}

OSStatus PlanOpener(const Item& inItem, LaunchPlan& outPlan)
{
    std::string opener = FindOpener();
    if (opener.empty())
        return kLSApplicationNotFoundErr;
    outPlan = LaunchPlan{opener, {inItem.text}, opener, false, false};
    return noErr;
}

// A program inside a bundle's Contents/MacOS is that bundle's application, which runs once.
OSStatus PlanProgram(const std::string& inPath, LaunchPlan& outPlan)
{
    outPlan = LaunchPlan{inPath, {}, inPath, false, EnclosingBundlePath(inPath).has_value()};
    return noErr;
}

OSStatus PlanBundle(const std::string& inPath, const BundleFacts& inFacts, LSLaunchFlags inFlags, LaunchPlan& outPlan)
{
    if (inFacts.backgroundOnly && (inFlags & kLSLaunchInhibitBGOnly))
        return kLSNotAnApplicationErr;
    struct stat info;
    if (inFacts.executable.empty() || ::stat(inFacts.executable.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
        return kLSNoExecutableErr;
    outPlan = LaunchPlan{inFacts.executable, {}, inPath, true, true};
    return noErr;
}

std::optional<BundleFacts> ApplicationBundle(const std::string& inPath)
{
    if (!IsBundleFolder(inPath))
        return std::nullopt;
    std::optional<BundleFacts> facts = ReadBundle(inPath);
    return facts && facts->isApplication ? facts : std::nullopt;
}

bool SameFile(const struct stat& inA, const struct stat& inB)
{
    return inA.st_dev == inB.st_dev && inA.st_ino == inB.st_ino;
}

}  // namespace

OSStatus ItemOf(CFURLRef inURL, Item& outItem)
{
    if (inURL == nullptr)
        return paramErr;
    port::Owned<CFURLRef> absolute(CFURLCopyAbsoluteURL(inURL));
    port::Owned<CFStringRef> scheme(absolute ? CFURLCopyScheme(absolute.Get()) : nullptr);
    if (!scheme)
        return paramErr;
    if (CFStringCompare(scheme.Get(), CFSTR("file"), kCFCompareCaseInsensitive) != kCFCompareEqualTo) {
        outItem = Item{cf::UTF8(CFURLGetString(absolute.Get())), false};
        return noErr;
    }
    char path[PATH_MAX];
    if (!CFURLGetFileSystemRepresentation(absolute.Get(), true, reinterpret_cast<UInt8*>(path), sizeof path))
        return fnfErr;
    outItem = Item{path, true};
    return noErr;
}

OSStatus PlanApplication(const std::string& inPath, LSLaunchFlags inFlags, LaunchPlan& outPlan)
{
    struct stat info;
    if (::stat(inPath.c_str(), &info) != 0)
        return fnfErr;
    if (!S_ISDIR(info.st_mode))
        return PlanProgram(inPath, outPlan);  // exec decides whether it can run
    std::optional<BundleFacts> facts = ApplicationBundle(inPath);
    return facts ? PlanBundle(inPath, *facts, inFlags, outPlan) : OSStatus(kLSNotAnApplicationErr);
}

OSStatus PlanOpening(const Item& inItem, LSLaunchFlags inFlags, LaunchPlan& outPlan)
{
    if (!inItem.isFile)
        return PlanOpener(inItem, outPlan);
    struct stat info;
    if (::stat(inItem.text.c_str(), &info) != 0)
        return fnfErr;
    if (S_ISDIR(info.st_mode)) {
        std::optional<BundleFacts> facts = ApplicationBundle(inItem.text);
        return facts ? PlanBundle(inItem.text, *facts, inFlags, outPlan) : PlanOpener(inItem, outPlan);
    }
    return IsExecutableFile(inItem.text) ? PlanProgram(inItem.text, outPlan) : PlanOpener(inItem, outPlan);
}

bool IsAlreadyRunning(const std::string& inProgram)
{
    struct stat program;
    if (::stat(inProgram.c_str(), &program) != 0)
        return false;
    ProcessSerialNumber psn{0, kNoProcess};
    while (GetNextProcess(&psn) == noErr) {
        pid_t pid = 0;
        struct stat running;
        // The link resolves to the file the process runs, even if it was renamed since.
        if (GetProcessPID(&psn, &pid) == noErr &&
            ::stat(("/proc/" + std::to_string(pid) + "/exe").c_str(), &running) == 0 && SameFile(running, program))
            return true;
    }
    return false;
}

}  // namespace carbon::ls
