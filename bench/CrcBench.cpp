// CRC-32 of 4 KiB and 64 MiB of random bytes: kvx::CRC::getCRC beside zlib's crc32 (what a
// user would otherwise call), ISA-L's crc32_gzip_refl called directly (the engine getCRC runs
// on), the table loop, and a plain read of the same buffer (the memory-bandwidth limit). The
// wide form checksums the same number of bytes as 32-bit characters.
// After the table, the run prints each contender's processor time as a ratio to getCRC's at
// the same size (processor time, because on a shared machine the wall clock mostly measures
// the other processes).
#include <utils/KvxUtils.h>

#include <benchmark/benchmark.h>
#include <isa-l/crc.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::int64_t kSmall = 4 << 10;
constexpr std::int64_t kLarge = 64 << 20;

const std::vector<unsigned char>& RandomBytes()
{
    static const std::vector<unsigned char> bytes = [] {
        std::vector<unsigned char> filled(kLarge);
        std::mt19937_64 generator(12);
        for (std::size_t i = 0; i < filled.size(); i += 8) {
            std::uint64_t word = generator();
            std::memcpy(filled.data() + i, &word, 8);
        }
        return filled;
    }();
    return bytes;
}

const std::vector<wchar_t>& RandomText()
{
    static const std::vector<wchar_t> text = [] {
        std::vector<wchar_t> filled(kLarge / sizeof(wchar_t));
        std::memcpy(filled.data(), RandomBytes().data(), kLarge);
        return filled;
    }();
    return text;
}

template <class Checksum>
void Run(benchmark::State& ioState, Checksum inChecksum)
{
    const unsigned char* data = RandomBytes().data();
    const auto length = std::size_t(ioState.range(0));
    for (auto _ : ioState)
        benchmark::DoNotOptimize(inChecksum(data, length));
    ioState.SetBytesProcessed(ioState.iterations() * ioState.range(0));
}

void BM_getCRC(benchmark::State& ioState)
{
    const kvx::CRC crc;
    Run(ioState, [&crc](const unsigned char* inData, std::size_t inLength) { return crc.getCRC(inData, inLength); });
}

void BM_getCRC_wide(benchmark::State& ioState)
{
    const kvx::CRC crc;
    const wchar_t* text = RandomText().data();
    Run(ioState, [&crc, text](const unsigned char*, std::size_t inLength) { return crc.getCRC(text, inLength / 4); });
}

void BM_getTableCRC(benchmark::State& ioState)
{
    const kvx::CRC crc;
    Run(ioState,
        [&crc](const unsigned char* inData, std::size_t inLength) { return crc.getTableCRC(inData, inLength); });
}

void BM_zlib_crc32(benchmark::State& ioState)
{
    Run(ioState, [](const unsigned char* inData, std::size_t inLength) { return crc32_z(0, inData, inLength); });
}

void BM_isal_crc32_gzip_refl(benchmark::State& ioState)
{
    Run(ioState,
        [](const unsigned char* inData, std::size_t inLength) { return crc32_gzip_refl(0, inData, inLength); });
}

// Every word is read and folded into a result the compiler cannot drop; four lanes let the
// loop go as fast as memory delivers.
void BM_plain_read(benchmark::State& ioState)
{
    Run(ioState, [](const unsigned char* inData, std::size_t inLength) {
        std::uint64_t lanes[4] = {};
        for (std::size_t i = 0; i + 32 <= inLength; i += 32)
            for (int lane = 0; lane < 4; ++lane) {
                std::uint64_t word;
                std::memcpy(&word, inData + i + 8 * lane, 8);
                lanes[lane] ^= word;
            }
        return lanes[0] ^ lanes[1] ^ lanes[2] ^ lanes[3];
    });
}

BENCHMARK(BM_getCRC)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_getCRC_wide)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_isal_crc32_gzip_refl)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_zlib_crc32)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_getTableCRC)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_plain_read)->Arg(kSmall)->Arg(kLarge);

// The console table, then every contender's time per byte over getCRC's at the same size:
// above 1 is slower than getCRC.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& inRuns) override
    {
        // With --benchmark_repetitions the median stands for the benchmark; it comes after the
        // single runs and replaces them.
        for (const Run& run : inRuns)
            if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median")
                mTimes[run.run_name.str()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(inRuns);
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        // Through the reporter's own stream, so that the ratios cannot overtake the table.
        std::ostream& out = GetOutputStream();
        for (std::int64_t size : {kSmall, kLarge}) {
            const std::string suffix = "/" + std::to_string(size);
            auto reference = mTimes.find("BM_getCRC" + suffix);
            if (reference == mTimes.end())
                continue;
            out << "time / getCRC's at " << size << " bytes:\n";
            for (const auto& [name, time] : mTimes)
                if (name.ends_with(suffix)) {
                    char line[80];
                    std::snprintf(line, sizeof line, "  %-40s %6.2f\n", name.c_str(), time / reference->second);
                    out << line;
                }
        }
        out.flush();
    }

private:
    std::map<std::string, double> mTimes;
};

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
