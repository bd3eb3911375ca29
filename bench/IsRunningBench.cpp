// Asking whether an application runs: kvx::IsRunning in this process, against running
// pidof(1) for the same program, which is what a user would otherwise do. Each program looked
// for is a copy of sleep(1) under a name of its own, started by this benchmark. The second
// pair runs with 500 more processes alive, started before its program so that the walk, which
// goes in process-id order, passes all of them before it finds it.
//
// The product asks the same question through IsBackendRunning, which first finds the helper
// inside the application bundle: that pair runs on copies of the demo product, against pidof
// of the helper's executable path, alone and after the crowd too.
#include "BenchProcesses.h"
#include "platform/Mac/spindeckMac/spindeckMac.h"
#include "platform/Mac/utils/MacKvxUtils.h"

#include <benchmark/benchmark.h>

#include <stdlib.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int kCrowdSize = 500;

using spindeck::bench::Children;
using spindeck::bench::FoundByPidof;

// A private folder with named copies of sleep.
class ScratchFolder {
public:
    ScratchFolder()
    {
        std::string pattern = fs::temp_directory_path().string() + "/isrunning-bench-XXXXXX";
        if (::mkdtemp(pattern.data()) != nullptr)
            mPath = pattern;
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        if (!mPath.empty())
            fs::remove_all(mPath, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& Path() const { return mPath; }

    // The path of a copy of sleep named inName, or empty.
    std::string CopyOfSleep(const std::string& inName) const
    {
        std::error_code failed;
        std::string path = mPath + "/" + inName;
        fs::copy_file("/bin/sleep", path, failed);
        return mPath.empty() || failed ? std::string() : path;
    }

private:
    std::string mPath;
};

// A running copy of sleep, its name and its URL.
struct Program {
    std::string name;
    std::string path;
    Gx::CFURL url;
};

// A running backend of a copy of the demo product: the application's path and the helper's.
struct Backend {
    Gx::CFString app;
    std::string helper;
};

struct Scene {
    ScratchFolder folder;
    Children children;
    std::optional<Program> alone;
    std::optional<Program> crowded;  // made by the first benchmark that needs it
    std::optional<Backend> backendAlone;
    std::optional<Backend> backendCrowded;

    // Each copy's helper keeps its single-instance lock in a runtime folder of its own.
    std::optional<Backend> StartBackend(const std::string& inName)
    {
        std::error_code failed;
        std::string app = folder.Path() + "/" + inName + "/Vemora spindeck.app";
        fs::create_directories(folder.Path() + "/" + inName + "/runtime", failed);
        fs::copy(SPINDECK_DEMO_APP, app, fs::copy_options::recursive, failed);
        ::setenv("XDG_RUNTIME_DIR", (folder.Path() + "/" + inName + "/runtime").c_str(), 1);
        std::string helper = app + "/Contents/MacOS/Vemora spindeck Helper.app/Contents/MacOS/Vemora spindeck Helper";
        if (failed || !children.Start(helper, {}))
            return std::nullopt;
        return Backend{Gx::CFString(app), helper};
    }

    const std::optional<Backend>& BackendCrowded()
    {
        if (!backendCrowded && Crowded()) {
            backendCrowded = StartBackend("crowded");
            children.AwaitStarted();
        }
        return backendCrowded;
    }

    std::optional<Program> Start(const std::string& inName)
    {
        std::string path = folder.CopyOfSleep(inName);
        if (path.empty() || !children.Start(path, {"3600"}))
            return std::nullopt;
        return Program{inName, path, Gx::CFURL(Gx::CFString(path), false, nullptr, kCFURLPOSIXPathStyle)};
    }

    const std::optional<Program>& Crowded()
    {
        if (!crowded) {
            for (int i = 0; i < kCrowdSize; ++i)
                if (!children.Start("/bin/sleep", {"3600"}))
                    return crowded;
            crowded = Start("isrunning-crowded");
            children.AwaitStarted();
        }
        return crowded;
    }
};

Scene* sScene = nullptr;

void FindWithIsRunning(benchmark::State& ioState, const std::optional<Program>& inProgram)
{
    if (!inProgram)
        return ioState.SkipWithError("the program could not be started");
    for (auto _ : ioState)
        if (!kvx::IsRunning(inProgram->url, nullptr))
            ioState.SkipWithError("the program was not found");
}

void FindWithPidof(benchmark::State& ioState, const std::optional<Program>& inProgram)
{
    if (!inProgram)
        return ioState.SkipWithError("the program could not be started");
    for (auto _ : ioState)
        if (!FoundByPidof(inProgram->name))
            ioState.SkipWithError("the program was not found");
}

// Wall-clock time: most of what pidof costs is spent in another process.
void BM_IsRunning(benchmark::State& ioState) { FindWithIsRunning(ioState, sScene->alone); }
void BM_Pidof(benchmark::State& ioState) { FindWithPidof(ioState, sScene->alone); }
BENCHMARK(BM_IsRunning)->UseRealTime();
BENCHMARK(BM_Pidof)->UseRealTime();

void BM_IsRunning_500ExtraProcesses(benchmark::State& ioState) { FindWithIsRunning(ioState, sScene->Crowded()); }
void BM_Pidof_500ExtraProcesses(benchmark::State& ioState) { FindWithPidof(ioState, sScene->Crowded()); }
BENCHMARK(BM_IsRunning_500ExtraProcesses)->UseRealTime();
BENCHMARK(BM_Pidof_500ExtraProcesses)->UseRealTime();

void FindBackend(benchmark::State& ioState, const std::optional<Backend>& inBackend)
{
    if (!inBackend)
        return ioState.SkipWithError("the demo helper could not be started");
    for (auto _ : ioState)
        if (!spindeck::IsBackendRunning(inBackend->app, nullptr))
            ioState.SkipWithError("the helper was not found");
}

void FindBackendWithPidof(benchmark::State& ioState, const std::optional<Backend>& inBackend)
{
    if (!inBackend)
        return ioState.SkipWithError("the demo helper could not be started");
    for (auto _ : ioState)
        if (!FoundByPidof(inBackend->helper))
            ioState.SkipWithError("the helper was not found");
}

void BM_IsBackendRunning(benchmark::State& ioState) { FindBackend(ioState, sScene->backendAlone); }
void BM_PidofHelper(benchmark::State& ioState) { FindBackendWithPidof(ioState, sScene->backendAlone); }
BENCHMARK(BM_IsBackendRunning)->UseRealTime();
BENCHMARK(BM_PidofHelper)->UseRealTime();

void BM_IsBackendRunning_500ExtraProcesses(benchmark::State& ioState)
{
    FindBackend(ioState, sScene->BackendCrowded());
}
void BM_PidofHelper_500ExtraProcesses(benchmark::State& ioState)
{
    FindBackendWithPidof(ioState, sScene->BackendCrowded());
}
BENCHMARK(BM_IsBackendRunning_500ExtraProcesses)->UseRealTime();
BENCHMARK(BM_PidofHelper_500ExtraProcesses)->UseRealTime();

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    Scene scene;
    scene.alone = scene.Start("isrunning-alone");
    scene.backendAlone = scene.StartBackend("alone");
    sScene = &scene;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
