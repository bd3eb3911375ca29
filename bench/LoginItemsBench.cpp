// UpdateLoginItems moving the helper to the end of lists of 10, 1,000, 10,000 and 100,000 entries
// (so the list is read, searched by name, edited and written back), beside Python's plistlib
// loading and dumping the same file: what a script would do to edit the list by hand.
// plistlib is timed inside one python3 child (interpreter start-up excluded) and reported as
// manual time, so all appear side by side. Our write is atomic and flushed to disk (file and
// folder), which costs a few milliseconds whatever the size; so plistlib is timed twice, with
// a plain dump and with a dump made as durable as ours. "ratio" and "ratio_durable" are ours
// over each; "us_per_entry" shows whether the cost grows linearly.
//
// Each size is measured two ways, so that sizes are compared like with like:
//   "first call": the call a settings pane makes, once, in a process of its own. Each
//     iteration runs this program again to make one call; the fresh memory that call touches
//     is part of its cost.
//   "warm": calls in one process after two untimed ones, so the heap is already grown. (The
//     second call still grows it: the list the first call read stays cached until the second
//     has read the restored file.)
#include <platform/Mac/spindeckMac/LoginItems.h>

#include <benchmark/benchmark.h>

#include <stdlib.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace {

namespace fs = std::filesystem;

constexpr const char* kHelper = "/Applications/Vemora spindeck.app/Contents/MacOS/Vemora spindeck Helper.app";
constexpr const char* kHelperName = "Vemora spindeck Helper";

fs::path sFolder;
std::map<long, double> sPlistlibSeconds[2];  // per load and dump, by list size; plain, durable

std::string RunPython(const std::string& inScript, const std::string& inArguments)
{
    std::string output;
    FILE* child = popen(("python3 -c '" + inScript + "' " + inArguments).c_str(), "r");
    if (child == nullptr)
        return output;
    char buffer[256];
    while (std::size_t count = std::fread(buffer, 1, sizeof buffer, child))
        output.append(buffer, count);
    pclose(child);
    return output;
}

fs::path Original(long inSize) { return sFolder / std::to_string(inSize) / "original.plist"; }
fs::path DomainFile(long inSize) { return sFolder / std::to_string(inSize) / "preferences/loginwindow.plist"; }

// Other applications, then the helper, then one more, so that the helper is not last.
void MakeList(long inSize)
{
    fs::create_directories(DomainFile(inSize).parent_path());
    RunPython(
        "import plistlib, sys\n"
        "n = int(sys.argv[2])\n"
        "items = [{\"Path\": \"/Applications/Application %d.app\" % i, \"Hide\": False} for i in range(n - 2)]\n"
        "items += [{\"Path\": sys.argv[3], \"Hide\": False}, {\"Path\": \"/Applications/Zeta.app\", \"Hide\": False}]\n"
        "plistlib.dump({\"AutoLaunchedApplicationDictionary\": items}, open(sys.argv[1], \"wb\"))",
        "\"" + Original(inSize).string() + "\" " + std::to_string(inSize) + " \"" + kHelper + "\"");
}

// Puts the original list back as a new file, as another process saving it would.
void RestoreList(long inSize)
{
    fs::path temporary = DomainFile(inSize).string() + ".restore";
    fs::copy_file(Original(inSize), temporary, fs::copy_options::overwrite_existing);
    fs::rename(temporary, DomainFile(inSize));
}

// Per load and dump, plain or (inDurable) written as durably as our preferences are: to a
// temporary file that is flushed to disk, renamed over the old one, and the folder flushed.
double PlistlibSeconds(long inSize, bool inDurable)
{
    auto& known = sPlistlibSeconds[inDurable];
    if (auto found = known.find(inSize); found != known.end())
        return found->second;
    const long rounds = inSize >= 100000 ? 5 : 100000 / inSize;
    std::string output = RunPython(
        "import os, plistlib, sys, time\n"
        "source, target, rounds, durable = sys.argv[1], sys.argv[2], int(sys.argv[3]), sys.argv[4] == \"1\"\n"
        "def save(items):\n"
        "    if not durable:\n"
        "        return plistlib.dump(items, open(target, \"wb\"))\n"
        "    with open(target + \".tmp\", \"wb\") as f:\n"
        "        plistlib.dump(items, f)\n"
        "        f.flush()\n"
        "        os.fsync(f.fileno())\n"
        "    os.replace(target + \".tmp\", target)\n"
        "    folder = os.open(os.path.dirname(target), os.O_RDONLY)\n"
        "    os.fsync(folder)\n"
        "    os.close(folder)\n"
        "start = time.perf_counter()\n"
        "for _ in range(rounds):\n"
        "    save(plistlib.load(open(source, \"rb\")))\n"
        "print((time.perf_counter() - start) / rounds)",
        "\"" + Original(inSize).string() + "\" \"" + Original(inSize).string() + ".out\" " + std::to_string(rounds) +
            (inDurable ? " 1" : " 0"));
    return known[inSize] = std::atof(output.c_str());
}

CFURLRef CopyHelperURL()
{
    CFStringRef path = CFStringCreateWithCString(nullptr, kHelper, kCFStringEncodingUTF8);
    CFURLRef helper = CFURLCreateWithFileSystemPath(nullptr, path, kCFURLPOSIXPathStyle, true);
    CFRelease(path);
    return helper;
}

// One call on a freshly restored list, timed; a negative time when the helper was not moved.
double TimedCall(long inSize, CFURLRef inHelper)
{
    RestoreList(inSize);
    auto start = std::chrono::steady_clock::now();
    bool changed = UpdateLoginItems(inHelper, CFSTR(kHelperName), kAddToEndIfNotFoundButMoveToEndIfPresent);
    std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return changed ? elapsed.count() : -1;
}

// In the child this program becomes for a first call: the one call, its time on standard output.
int FirstCall(const char* inFolder, long inSize)
{
    sFolder = inFolder;
    setenv("XDG_CONFIG_HOME", (sFolder / std::to_string(inSize)).c_str(), 1);
    CFURLRef helper = CopyHelperURL();
    double seconds = TimedCall(inSize, helper);
    CFRelease(helper);
    std::printf("%.9f\n", seconds);
    return seconds < 0 ? 1 : 0;
}

double FirstCallInChild(long inSize)
{
    std::string command = "\"" + fs::read_symlink("/proc/self/exe").string() + "\" --first-call \"" + sFolder.string() +
                          "\" " + std::to_string(inSize);
    std::string output;
    if (FILE* child = popen(command.c_str(), "r")) {
        char buffer[64];
        while (std::size_t count = std::fread(buffer, 1, sizeof buffer, child))
            output.append(buffer, count);
        if (pclose(child) != 0)
            return -1;
    }
    return output.empty() ? -1 : std::atof(output.c_str());
}

void Report(benchmark::State& ioState, long inSize, double inTotal)
{
    double perCall = inTotal / double(ioState.iterations());
    ioState.counters["ratio"] = perCall / PlistlibSeconds(inSize, false);
    ioState.counters["ratio_durable"] = perCall / PlistlibSeconds(inSize, true);
    ioState.counters["us_per_entry"] = perCall * 1e6 / double(inSize);
}

void BM_FirstCall(benchmark::State& ioState)
{
    const long size = ioState.range(0);
    double total = 0;
    for (auto _ : ioState) {
        double seconds = FirstCallInChild(size);
        if (seconds < 0) {
            ioState.SkipWithError("the first call did not move the helper");
            return;
        }
        ioState.SetIterationTime(seconds);
        total += seconds;
    }
    Report(ioState, size, total);
}

void BM_WarmCall(benchmark::State& ioState)
{
    const long size = ioState.range(0);
    setenv("XDG_CONFIG_HOME", (sFolder / std::to_string(size)).c_str(), 1);
    CFURLRef helper = CopyHelperURL();
    for (int warmUp = 0; warmUp < 2; ++warmUp)
        TimedCall(size, helper);
    double total = 0;
    for (auto _ : ioState) {
        double seconds = TimedCall(size, helper);
        if (seconds < 0) {
            ioState.SkipWithError("the helper was not moved");
            break;
        }
        ioState.SetIterationTime(seconds);
        total += seconds;
    }
    CFRelease(helper);
    Report(ioState, size, total);
}

void BM_PlistlibLoadDump(benchmark::State& ioState)
{
    const long size = ioState.range(0);
    double seconds = PlistlibSeconds(size, ioState.range(1) != 0);
    for (auto _ : ioState)
        ioState.SetIterationTime(seconds);
    ioState.counters["us_per_entry"] = seconds * 1e6 / double(size);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::string_view(argv[1]) == "--first-call")
        return FirstCall(argv[2], std::atol(argv[3]));
    char folder[] = "/tmp/LoginItemsBench-XXXXXX";
    if (mkdtemp(folder) == nullptr)
        return 1;
    sFolder = folder;
    setenv("HOME", folder, 1);
    for (long size : {10L, 1000L, 10000L, 100000L}) {
        MakeList(size);
        // Enough first calls to smooth a noisy machine, few enough that each size takes seconds.
        benchmark::RegisterBenchmark("UpdateLoginItems first call", BM_FirstCall)
            ->Arg(size)
            ->UseManualTime()
            ->Iterations(size >= 100000 ? 5 : 20)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("UpdateLoginItems warm", BM_WarmCall)
            ->Arg(size)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        for (long durable : {0L, 1L})
            benchmark::RegisterBenchmark(durable ? "plistlib load+durable dump" : "plistlib load+dump",
                                         BM_PlistlibLoadDump)
                ->Args({size, durable})
                ->UseManualTime()
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    fs::remove_all(sFolder);
    return 0;
}
