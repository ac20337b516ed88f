// What the dumpsys statistics add to every request: one counter increment, and the timing guard
// that records a finished request into the ring (two clock reads and a few atomic stores). Run
// with --benchmark_filter=Stats; the Threads variants share one CwbStats as binder threads do.
#include <CwbStats.h>
#include <benchmark/benchmark.h>

namespace {

using aidl::vendor::zarel::hardware::cwb::Error;
using aidl::vendor::zarel::hardware::cwb::Rect;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbStats;

CwbStats& shared() {
    static CwbStats* stats = new CwbStats();
    return *stats;
}

void BM_StatsCount(benchmark::State& state) {
    CwbStats& stats = shared();
    for (auto _ : state) stats.count(CwbStats::Counter::RgbCacheHits);
    benchmark::DoNotOptimize(stats.value(CwbStats::Counter::RgbCacheHits));
}
BENCHMARK(BM_StatsCount)->Threads(1)->Threads(2);

void BM_StatsRequest(benchmark::State& state) {
    CwbStats& stats = shared();
    Rect rect;
    rect.right = 10;
    rect.bottom = 10;
    Error result = Error::NONE;
    for (auto _ : state) {
        CwbStats::Request request(stats, CwbStats::Method::getRGBValue, &rect, &result);
        benchmark::DoNotOptimize(&request);
    }
}
BENCHMARK(BM_StatsRequest)->Threads(1)->Threads(2);

}  // namespace
