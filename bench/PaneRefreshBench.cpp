// One refresh of the spindeck pane (updateStartStopButton:, which asks whether the helper
// runs and looks up six localised texts) against one run of pidof(1) for the helper, which is
// what a user would otherwise do to learn whether it runs. Both with the helper running and
// 500 more processes alive, started before the helper so that a walk in process-id order
// passes all of them first. The pane is the staged bundle, loaded as the settings host loads
// it, on Qt's offscreen platform.
#include "BenchProcesses.h"

#include <PreferencePanes/PreferencePanes.h>

#include <benchmark/benchmark.h>

#include <QApplication>

#include <cstdlib>
#include <string>

namespace {

constexpr int kCrowdSize = 500;
const std::string kHelperName = "Vemora spindeck Helper";

NSPreferencePane* sPane = nullptr;

NSPreferencePane* LoadPane()
{
    NSAutoreleasePool pool;
    NSBundle* bundle = NSBundle::bundleWithPath(NSString::stringWithUTF8String(SPINDECK_PANE));
    if (bundle == nullptr || !bundle->load())
        return nullptr;
    auto* pane = dynamic_cast<NSPreferencePane*>(NSCreateObjectOfClassNamed("KestrelPrefPane"));
    if (pane == nullptr || pane->initWithBundle(bundle) == nullptr || pane->loadMainView() == nullptr)
        return nullptr;
    return pane;
}

// Wall-clock time: most of what pidof costs is spent in another process.
void BM_PaneRefresh_500ExtraProcesses(benchmark::State& ioState)
{
    if (sPane == nullptr)
        return ioState.SkipWithError("the pane could not be loaded");
    for (auto _ : ioState) {
        NSAutoreleasePool pool;
        if (!sPane->performSelector(SEL("updateStartStopButton:"), nullptr))
            ioState.SkipWithError("the pane does not see the helper running");
    }
}
BENCHMARK(BM_PaneRefresh_500ExtraProcesses)->UseRealTime();

void BM_Pidof_500ExtraProcesses(benchmark::State& ioState)
{
    for (auto _ : ioState)
        if (!spindeck::bench::FoundByPidof(kHelperName))
            ioState.SkipWithError("pidof does not find the helper");
}
BENCHMARK(BM_Pidof_500ExtraProcesses)->UseRealTime();

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication application(argc, argv);
    spindeck::bench::Children children;
    for (int i = 0; i < kCrowdSize; ++i)
        children.Start("/bin/sleep", {"3600"});
    // The helper runs until it is asked to quit; it is killed with the crowd.
    children.Start(SPINDECK_HELPER, {});
    children.AwaitStarted();
    sPane = LoadPane();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (sPane)
        sPane->release();
    return 0;
}
