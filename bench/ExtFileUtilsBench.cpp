// Deleting a folder tree of 10,010 items (10 folders of 1,000 empty files): FSDeleteContainer
// beside rm -rf, which is what a user would otherwise run. Each iteration builds two equal
// trees, untimed, and times each deletion, the two taking turns at going first; the counters
// give both times and their ratio.
// The trees go under $TMPDIR (else /tmp), so the volume compared on can be chosen.
#include <ExtFileUtils/ExtFileUtils.h>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

extern char** environ;

namespace {

constexpr int kFolders = 10;
constexpr int kFilesPerFolder = 1000;

class Workspace {
public:
    Workspace()
    {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/extfileutils-bench-XXXXXX";
        if (::mkdtemp(pattern.data()) != nullptr)
            mPath = pattern;
    }
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    ~Workspace()
    {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    std::string Path(const char* inName) const { return mPath + "/" + inName; }

private:
    std::string mPath;
};

bool BuildTree(const std::string& inTop)
{
    if (::mkdir(inTop.c_str(), 0755) != 0)
        return false;
    for (int folder = 0; folder < kFolders; ++folder) {
        std::string path = inTop + "/" + std::to_string(folder);
        int at = ::mkdir(path.c_str(), 0755) == 0 ? ::open(path.c_str(), O_RDONLY | O_DIRECTORY) : -1;
        if (at < 0)
            return false;
        for (int file = 0; file < kFilesPerFolder; ++file)
            ::close(::openat(at, std::to_string(file).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
        ::close(at);
    }
    return true;
}

bool DeleteWithFileManager(const std::string& inTop)
{
    FSRef tree;
    return FSPathMakeRef(reinterpret_cast<const UInt8*>(inTop.c_str()), &tree, nullptr) == noErr &&
           FSDeleteContainer(&tree) == noErr;
}

bool DeleteWithRm(const std::string& inTop)
{
    std::string program = "rm", flags = "-rf", path = inTop;
    char* argv[] = {program.data(), flags.data(), path.data(), nullptr};
    pid_t child = 0;
    int status = -1;
    if (::posix_spawnp(&child, "rm", nullptr, nullptr, argv, environ) == 0)
        ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

template <typename Delete>
double TimedSeconds(Delete inDelete, const std::string& inTop, benchmark::State& ioState)
{
    auto start = std::chrono::steady_clock::now();
    if (!inDelete(inTop))
        ioState.SkipWithError("the deletion failed");
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void BM_DeleteTree_FSDeleteContainerBesideRm(benchmark::State& ioState)
{
    Workspace workspace;
    double ours = 0, rm = 0;
    int round = 0;
    for (auto _ : ioState) {
        std::string first = workspace.Path("ours"), second = workspace.Path("rm");
        if (!BuildTree(first) || !BuildTree(second)) {
            ioState.SkipWithError("the trees could not be built");
            break;
        }
        // Taking turns at going first spreads the file system's deferred work evenly.
        bool rmFirst = (++round % 2) == 0;
        double rmSeconds = rmFirst ? TimedSeconds(DeleteWithRm, second, ioState) : 0;
        double seconds = TimedSeconds(DeleteWithFileManager, first, ioState);
        if (!rmFirst)
            rmSeconds = TimedSeconds(DeleteWithRm, second, ioState);
        ours += seconds;
        rm += rmSeconds;
        ioState.SetIterationTime(seconds);
    }
    ioState.counters["ours_ms"] = benchmark::Counter(ours * 1000, benchmark::Counter::kAvgIterations);
    ioState.counters["rm_ms"] = benchmark::Counter(rm * 1000, benchmark::Counter::kAvgIterations);
    ioState.counters["ours/rm"] = rm > 0 ? ours / rm : 0;
    ioState.counters["items"] = (kFilesPerFolder + 1) * kFolders;
}

}  // namespace

BENCHMARK(BM_DeleteTree_FSDeleteContainerBesideRm)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

BENCHMARK_MAIN();
