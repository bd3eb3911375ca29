// spindeckctl: the command line of the Vemora spindeck helpers. It calls the same product
// services as the settings pane, so what it reports and does is what the pane would.
#include <platform/Mac/spindeckMac/spindeckMac.h>

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <Carbon/Files.h>
#include <Carbon/Folders.h>
#include <Carbon/MacErrors.h>

#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

enum ExitStatus { kSuccess = 0, kNotFound = 1, kBadUsage = 2, kFailed = 3 };

constexpr const char* kUsage =
    "Usage: spindeckctl [--app PATH] [--json] COMMAND\n"
    "Controls the Vemora spindeck background helper and media-player helper.\n"
    "\n"
    "Commands:\n"
    "  status          whether the background helper runs\n"
    "  start           start it and keep it starting at log-in\n"
    "  stop            ask it to quit and stop starting it at log-in\n"
    "  reconcile       start it if it is a login item and not running\n"
    "  media status    whether the media-player helper runs\n"
    "  media start     start the media-player helper\n"
    "  media stop      ask the media-player helper to quit\n"
    "\n"
    "Options:\n"
    "  --app PATH      the Vemora spindeck application (default: the installed one, in the\n"
    "                  installation's application-bundles folder)\n"
    "  --json          one JSON object on standard output, for scripts\n"
    "  --help          this text\n"
    "  --version       the program's version\n"
    "\n"
    "Exit status: 0 success, 1 helper not found, 2 bad usage, 3 the helper could not be started or asked to quit.\n";

struct Options {
    std::string app;  // the installed one unless given
    bool json = false;
    std::vector<std::string> command;
};

// What a command found and did, printed as a sentence or as JSON.
struct Report {
    const char* helper;
    bool found = false;
    bool running = false;
    std::string action;  // empty for status
    std::string message;
};

std::string JSONString(std::string_view inText)
{
    std::string quoted = "\"";
    for (char c : inText) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        if (static_cast<unsigned char>(c) < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            quoted += escaped;
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

void Print(const Options& inOptions, const Report& inReport)
{
    if (!inOptions.json) {
        std::printf("%s\n", inReport.message.c_str());
        return;
    }
    std::printf("{\"helper\":%s,\"app\":%s,\"found\":%s,\"running\":%s", JSONString(inReport.helper).c_str(),
                JSONString(inOptions.app).c_str(), inReport.found ? "true" : "false",
                inReport.running ? "true" : "false");
    if (!inReport.action.empty())
        std::printf(",\"action\":%s", JSONString(inReport.action).c_str());
    std::printf(",\"message\":%s}\n", JSONString(inReport.message).c_str());
}

std::optional<Options> Parse(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        std::string_view word = argv[i];
        if (word == "--json")
            options.json = true;
        else if (word == "--app" && i + 1 < argc)
            options.app = argv[++i];
        else if (word.starts_with("--app="))
            options.app = std::string(word.substr(6));
        else if (word.starts_with("-"))
            return std::nullopt;
        else
            options.command.emplace_back(word);
    }
    return options;
}

int BackendStatus(const Gx::CFString& inApp, Report& ioReport)
{
    ioReport.running = spindeck::IsBackendRunning(inApp, &ioReport.found);
    ioReport.message = !ioReport.found    ? "The background helper was not found in the application."
                       : ioReport.running ? "The background helper is running."
                                          : "The background helper is not running.";
    return ioReport.found ? kSuccess : kNotFound;
}

int Backend(const std::string& inCommand, const Gx::CFString& inApp, Report& ioReport)
{
    int status = BackendStatus(inApp, ioReport);
    if (status != kSuccess || inCommand == "status")
        return status;
    bool launched = false;
    if (inCommand == "reconcile") {
        spindeck::ToggleBackendState(inApp, &launched, true);
        ioReport.action = launched ? "started" : "none";
        ioReport.message = launched ? "The background helper was started: it is a login item."
                                    : "Nothing to do: the helper runs, or it is not a login item.";
    } else if ((inCommand == "start") == ioReport.running) {
        ioReport.action = "none";
    } else {
        spindeck::ToggleBackendState(inApp, &launched, false);
        ioReport.action = inCommand == "start" ? (launched ? "started" : "failed") : "quit-requested";
        ioReport.message = inCommand == "stop" ? "The background helper was asked to quit."
                           : launched          ? "The background helper was started."
                                               : "The background helper could not be started.";
    }
    ioReport.running = spindeck::IsBackendRunning(inApp, nullptr);
    return ioReport.action == "failed" ? kFailed : kSuccess;
}

int Media(const std::string& inCommand, const Gx::CFString& inApp, Report& ioReport)
{
    ioReport.running = spindeck::IsITunesHelperRunning(inApp, &ioReport.found);
    if (!ioReport.found) {
        ioReport.message = "The media-player helper was not found in the application.";
        return kNotFound;
    }
    if (inCommand == "status") {
        ioReport.message = ioReport.running ? "The media-player helper is running."
                                            : "The media-player helper is not running.";
        return kSuccess;
    }
    if (inCommand == "start") {
        bool wasRunning = ioReport.running;
        OSStatus status = spindeck::LaunchITunesHelper(inApp);
        ioReport.action = status != noErr ? "failed" : wasRunning ? "none" : "started";
        ioReport.message = status != noErr
                               ? "The media-player helper could not be started (status " + std::to_string(status) + ")."
                               : "The media-player helper is running.";
        ioReport.running = spindeck::IsITunesHelperRunning(inApp, nullptr);
        return status == noErr ? kSuccess : kFailed;
    }
    OSStatus status = spindeck::QuitITunesHelper(inApp);
    ioReport.action = status == noErr ? "quit-requested" : "none";
    ioReport.message = status == noErr ? "The media-player helper was asked to quit."
                                       : "The media-player helper is not running.";
    return kSuccess;
}

// The application installed with this program: found the way the pane's own installation is,
// so that a moved installation still finds its own. Nothing for a program that is not
// installed (run from its build folder), which must not fall back on whatever application
// the current folder happens to hold.
std::optional<std::string> InstalledApp()
{
    FSRef folder;
    char path[4096];
    if (FSFindFolder(kSystemDomain, kApplicationsFolderType, kDontCreateFolder, &folder) != noErr ||
        FSRefMakePath(&folder, reinterpret_cast<UInt8*>(path), sizeof path) != noErr)
        return std::nullopt;
    return std::string(path) + "/Vemora spindeck.app";
}

bool IsBackendCommand(const std::vector<std::string>& inWords)
{
    return inWords.size() == 1 &&
           (inWords[0] == "status" || inWords[0] == "start" || inWords[0] == "stop" || inWords[0] == "reconcile");
}

bool IsMediaCommand(const std::vector<std::string>& inWords)
{
    return inWords.size() == 2 && inWords[0] == "media" &&
           (inWords[1] == "status" || inWords[1] == "start" || inWords[1] == "stop");
}

}  // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            std::fputs(kUsage, stdout);
            return kSuccess;
        } else if (std::strcmp(argv[i], "--version") == 0) {
            std::printf("spindeckctl %s\n", SPINDECK_VERSION);
            return kSuccess;
        }
    std::optional<Options> options = Parse(argc, argv);
    bool media = options && IsMediaCommand(options->command);
    if (!options || (!media && !IsBackendCommand(options->command))) {
        std::fputs("spindeckctl: unknown command or option; see spindeckctl --help\n", stderr);
        return kBadUsage;
    }
    Report report{media ? "media" : "backend", false, false, {}, {}};
    if (options->app.empty()) {
        std::optional<std::string> installed = InstalledApp();
        if (!installed) {
            report.message = "This spindeckctl is not installed with a Vemora spindeck application; name one with "
                             "--app PATH.";
            Print(*options, report);
            return kNotFound;
        }
        options->app = *installed;
    }
    try {
        Gx::CFString app(options->app, kCFStringEncodingUTF8);
        int status = media ? Media(options->command[1], app, report) : Backend(options->command[0], app, report);
        if (report.message.empty())
            report.message = report.running ? "The helper is already running." : "The helper is not running.";
        Print(*options, report);
        return status;
    } catch (const Gx::Exception&) {
        // The application or its helper package is missing or no bundle.
        report.message = "No Vemora spindeck application with its helpers at " + options->app + ".";
        Print(*options, report);
        return kNotFound;
    }
}
