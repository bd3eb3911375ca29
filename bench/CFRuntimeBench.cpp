// The object runtime beside its standard-library counterparts: reference counting, string-keyed
// lookup and appending to an array. Compare each pair's times; absolute numbers mean little.
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr int kKeyCount = 1000;
constexpr int kAppendCount = 1000;

std::string KeyText(int inIndex) { return "preference-key-" + std::to_string(inIndex); }

// Both counts skip locked instructions while the process has one thread; the pair at the end
// of the file measures them again once a second thread exists.
void BM_CFRetainRelease(benchmark::State& ioState)
{
    CFStringRef object = CFStringCreateWithCString(nullptr, "object", kCFStringEncodingUTF8);
    for (auto _ : ioState) {
        CFRetain(object);
        CFRelease(object);
        benchmark::ClobberMemory();
    }
    CFRelease(object);
}
BENCHMARK(BM_CFRetainRelease);

void BM_SharedPtrCopy(benchmark::State& ioState)
{
    auto object = std::make_shared<std::u16string>(u"object");
    for (auto _ : ioState) {
        std::shared_ptr<std::u16string> copy = object;
        benchmark::DoNotOptimize(copy);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_SharedPtrCopy);

// The lookups use other objects than the stored keys, so every hit compares text and not
// just pointers, as it does when a caller builds its key afresh.
void BM_CFDictionaryGetValue(benchmark::State& ioState)
{
    CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                                                  &kCFTypeDictionaryValueCallBacks);
    std::vector<CFStringRef> probes;
    for (int i = 0; i < kKeyCount; ++i) {
        CFStringRef key = CFStringCreateWithCString(nullptr, KeyText(i).c_str(), kCFStringEncodingUTF8);
        CFDictionarySetValue(dictionary, key, kCFNull);
        CFRelease(key);
        probes.push_back(CFStringCreateWithCString(nullptr, KeyText(i).c_str(), kCFStringEncodingUTF8));
    }
    for (auto _ : ioState)
        for (CFStringRef probe : probes)
            benchmark::DoNotOptimize(CFDictionaryGetValue(dictionary, probe));
    ioState.SetItemsProcessed(ioState.iterations() * kKeyCount);
    for (CFStringRef probe : probes)
        CFRelease(probe);
    CFRelease(dictionary);
}
BENCHMARK(BM_CFDictionaryGetValue);

void BM_UnorderedMapFind(benchmark::State& ioState)
{
    std::unordered_map<std::u16string, void*> map;
    std::vector<std::u16string> probes;
    for (int i = 0; i < kKeyCount; ++i) {
        const std::string text = KeyText(i);
        std::u16string key(text.begin(), text.end());
        map.emplace(key, nullptr);
        probes.push_back(key);
    }
    for (auto _ : ioState)
        for (const std::u16string& probe : probes)
            benchmark::DoNotOptimize(map.find(probe));
    ioState.SetItemsProcessed(ioState.iterations() * kKeyCount);
}
BENCHMARK(BM_UnorderedMapFind);

void BM_CFArrayAppendValue(benchmark::State& ioState)
{
    CFStringRef value = CFStringCreateWithCString(nullptr, "value", kCFStringEncodingUTF8);
    for (auto _ : ioState) {
        CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
        for (int i = 0; i < kAppendCount; ++i)
            CFArrayAppendValue(array, value);
        CFRelease(array);
    }
    ioState.SetItemsProcessed(ioState.iterations() * kAppendCount);
    CFRelease(value);
}
BENCHMARK(BM_CFArrayAppendValue);

void BM_VectorPushBack(benchmark::State& ioState)
{
    int value = 0;
    for (auto _ : ioState) {
        std::vector<void*> vector;
        for (int i = 0; i < kAppendCount; ++i)
            vector.push_back(&value);
        benchmark::DoNotOptimize(vector.data());
    }
    ioState.SetItemsProcessed(ioState.iterations() * kAppendCount);
}
BENCHMARK(BM_VectorPushBack);

// The vector doing the array's whole job: holding a reference to each value it keeps.
void BM_VectorPushBackRetained(benchmark::State& ioState)
{
    CFStringRef value = CFStringCreateWithCString(nullptr, "value", kCFStringEncodingUTF8);
    for (auto _ : ioState) {
        std::vector<const void*> vector;
        for (int i = 0; i < kAppendCount; ++i)
            vector.push_back(CFRetain(value));
        for (const void* held : vector)
            CFRelease(held);
    }
    ioState.SetItemsProcessed(ioState.iterations() * kAppendCount);
    CFRelease(value);
}
BENCHMARK(BM_VectorPushBackRetained);

// Last, because starting a thread makes every later count in this process a locked one.
void BM_CFRetainReleaseThreaded(benchmark::State& ioState)
{
    static CFStringRef object = CFStringCreateWithCString(nullptr, "object", kCFStringEncodingUTF8);
    for (auto _ : ioState) {
        CFRetain(object);
        CFRelease(object);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_CFRetainReleaseThreaded)->Threads(2);

void BM_SharedPtrCopyThreaded(benchmark::State& ioState)
{
    static auto object = std::make_shared<std::u16string>(u"object");
    for (auto _ : ioState) {
        std::shared_ptr<std::u16string> copy = object;
        benchmark::DoNotOptimize(copy);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_SharedPtrCopyThreaded)->Threads(2);

}  // namespace

BENCHMARK_MAIN();
