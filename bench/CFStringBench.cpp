// Case-insensitive string comparison beside ICU's u_strcasecmp on the same texts: short ASCII,
// long ASCII and accented text, each pair equal under folding so that the whole text is read.
// The "allocs" counter gives the C++ heap allocations per comparison, which is where the
// port's own code would allocate. Compare each pair's times.
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

namespace {

std::atomic<long> sAllocations{0};

struct Texts {
    std::u16string first;
    std::u16string second;
};

std::u16string Repeat(std::u16string_view inPiece, int inCount)
{
    std::u16string result;
    for (int i = 0; i < inCount; ++i)
        result += inPiece;
    return result;
}

Texts ShortASCII() { return {u"Preferences.plist", u"preferences.PLIST"}; }
Texts LongASCII() { return {Repeat(u"The Quick Brown Fox ", 50), Repeat(u"the quick brown fox ", 50)}; }
Texts Accented()
{
    return {u"\u00C7a a \u00E9t\u00E9 tr\u00E8s \u00E9l\u00E9gant",
            u"\u00E7A A \u00C9T\u00C9 TR\u00C8S \u00C9L\u00C9GANT"};
}

CFStringRef MakeString(const std::u16string& inText)
{
    return CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(inText.data()),
                                        CFIndex(inText.size()));
}

void ReportAllocations(benchmark::State& ioState, long inBefore)
{
    ioState.counters["allocs"] = benchmark::Counter(double(sAllocations.load() - inBefore),
                                                    benchmark::Counter::kAvgIterations);
}

void BM_CFStringCompareCaseInsensitive(benchmark::State& ioState, Texts (*inTexts)())
{
    Texts texts = inTexts();
    CFStringRef first = MakeString(texts.first);
    CFStringRef second = MakeString(texts.second);
    long before = sAllocations.load();
    for (auto _ : ioState)
        benchmark::DoNotOptimize(CFStringCompare(first, second, kCFCompareCaseInsensitive));
    ReportAllocations(ioState, before);
    CFRelease(first);
    CFRelease(second);
}

void BM_u_strcasecmp(benchmark::State& ioState, Texts (*inTexts)())
{
    Texts texts = inTexts();
    long before = sAllocations.load();
    for (auto _ : ioState)
        benchmark::DoNotOptimize(u_strcasecmp(texts.first.c_str(), texts.second.c_str(), U_FOLD_CASE_DEFAULT));
    ReportAllocations(ioState, before);
}

// The folded path (case and diacritics together) for the same texts, which must stay off
// the heap for short strings too.
void BM_CFStringCompareFolded(benchmark::State& ioState, Texts (*inTexts)())
{
    Texts texts = inTexts();
    CFStringRef first = MakeString(texts.first);
    CFStringRef second = MakeString(texts.second);
    long before = sAllocations.load();
    for (auto _ : ioState)
        benchmark::DoNotOptimize(
            CFStringCompare(first, second, kCFCompareCaseInsensitive | kCFCompareDiacriticInsensitive));
    ReportAllocations(ioState, before);
    CFRelease(first);
    CFRelease(second);
}

BENCHMARK_CAPTURE(BM_CFStringCompareCaseInsensitive, shortASCII, ShortASCII);
BENCHMARK_CAPTURE(BM_u_strcasecmp, shortASCII, ShortASCII);
BENCHMARK_CAPTURE(BM_CFStringCompareCaseInsensitive, longASCII, LongASCII);
BENCHMARK_CAPTURE(BM_u_strcasecmp, longASCII, LongASCII);
BENCHMARK_CAPTURE(BM_CFStringCompareCaseInsensitive, accented, Accented);
BENCHMARK_CAPTURE(BM_u_strcasecmp, accented, Accented);
BENCHMARK_CAPTURE(BM_CFStringCompareFolded, shortASCII, ShortASCII);
BENCHMARK_CAPTURE(BM_CFStringCompareFolded, accented, Accented);

}  // namespace

// Counting every allocation of the process is what lets the benchmark show that comparing
// does not allocate. Out of line, because the compiler would otherwise see malloc() behind
// new-expressions and warn that their memory goes to the matching delete.
[[gnu::noinline]] void* operator new(std::size_t inSize)
{
    sAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(inSize ? inSize : 1))
        return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* inMemory) noexcept { std::free(inMemory); }
[[gnu::noinline]] void operator delete(void* inMemory, std::size_t) noexcept { std::free(inMemory); }

BENCHMARK_MAIN();
