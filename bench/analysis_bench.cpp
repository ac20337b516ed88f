// Cost of the three pixel passes and of a cached RGB answer, each beside a plain pass that reads
// the same bytes, on a full 1080 x 2400 frame at the allocator's 1088-pixel pitch and on a
// 100 x 100 rectangle. The summary at the end gives each pass's time as a multiple of its
// baseline measured in the same run.
#include <CwbService.h>
#include <CwbServiceTestPeer.h>
#include <benchmark/benchmark.h>
#include <device/Composer.h>
#include <device/Device.h>
#include <host/log_capture.h>
#include <host/properties.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using aidl::vendor::zarel::hardware::cwb::Error;
using aidl::vendor::zarel::hardware::cwb::Rect;
using aidl::vendor::zarel::hardware::cwb::Rgb;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;

constexpr unsigned int kWidth = 1080;
constexpr unsigned int kHeight = 2400;
constexpr unsigned int kPitch = 1088;

Rect makeRect(int32_t l, int32_t t, int32_t r, int32_t b) {
    Rect out;
    out.left = l;
    out.top = t;
    out.right = r;
    out.bottom = b;
    return out;
}

struct Area {
    const char* name;
    Rect rect;
};

const Area kAreas[] = {{"full", makeRect(0, 0, kWidth, kHeight)},
                       {"100x100", makeRect(490, 1150, 590, 1250)}};

// A simulated phone with the service booted and the screen on, and a frame-sized buffer of
// photo-like content (smooth gradients with noise), as a capture would leave it.
struct Bench {
    Bench() : pixels(static_cast<size_t>(kPitch) * kHeight * 3) {
        host::properties::set("ro.vendor.zarel.display.cwb.display_id", "0");
        host::properties::set("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
        device = std::make_unique<host::device::Device>();
        composer = std::make_unique<host::device::Composer>();
        composer->boot();
        composer->powerMode(0, 2);
        service = composer->proxy().service();
        peer = std::make_unique<CwbServiceTestPeer>(*service);
        uint32_t noise = 12345;
        for (unsigned int y = 0; y < kHeight; ++y) {
            for (unsigned int x = 0; x < kPitch; ++x) {
                noise = noise * 1664525u + 1013904223u;
                uint8_t* p = &pixels[3 * (static_cast<size_t>(y) * kPitch + x)];
                p[0] = static_cast<uint8_t>(x * 255 / kWidth + (noise >> 28));
                p[1] = static_cast<uint8_t>(y * 255 / kHeight + (noise >> 24 & 15));
                p[2] = static_cast<uint8_t>(128 + (noise >> 20 & 31));
            }
        }
    }

    std::unique_ptr<host::device::Device> device;
    std::unique_ptr<host::device::Composer> composer;
    std::shared_ptr<CwbService> service;
    std::unique_ptr<CwbServiceTestPeer> peer;
    std::vector<uint8_t> pixels;
};

Bench& bench() {
    static Bench instance;
    return instance;
}

const uint8_t* pixel(const Bench& b, int x, int y) {
    return &b.pixels[3 * (static_cast<size_t>(y) * kPitch + x)];
}

// Baselines: add up the bytes a pass reads, nothing else.
uint64_t sumEveryPixel(const Bench& b, const Rect& r) {
    uint64_t sum = 0;
    for (int y = r.top; y < r.bottom; ++y) {
        const uint8_t* p = pixel(b, r.left, y);
        for (int i = 0; i < 3 * (r.right - r.left); ++i) sum += p[i];
    }
    return sum;
}

uint64_t sumEveryThirdPixel(const Bench& b, const Rect& r) {
    uint64_t sum = 0;
    for (int y = r.top; y < r.bottom; y += 3) {
        for (int x = r.left; x < r.right; x += 3) {
            const uint8_t* p = pixel(b, x, y);
            sum += p[0] + p[1] + p[2];
        }
    }
    return sum;
}

void setBytes(benchmark::State& state, const Rect& r, bool sampled) {
    const int64_t w = r.right - r.left;
    const int64_t h = r.bottom - r.top;
    const int64_t pixels = sampled ? ((w + 2) / 3) * ((h + 2) / 3) : w * h;
    state.SetBytesProcessed(state.iterations() * pixels * 3);
}

void RgbPass(benchmark::State& state, Rect r) {
    Bench& b = bench();
    std::array<unsigned char, 3> rgb{};
    for (auto _ : state) {
        unsigned short st = 0;
        b.peer->calcPixelsRGB(b.pixels.data(), kPitch, r, rgb, st);
        benchmark::DoNotOptimize(rgb);
        benchmark::DoNotOptimize(st);
    }
    setBytes(state, r, true);
}

void RgbBaseline(benchmark::State& state, Rect r) {
    const Bench& b = bench();
    for (auto _ : state) benchmark::DoNotOptimize(sumEveryThirdPixel(b, r));
    setBytes(state, r, true);
}

void LumaPass(benchmark::State& state, Rect r) {
    Bench& b = bench();
    for (auto _ : state) {
        benchmark::DoNotOptimize(b.peer->calcPixelsLumas(b.pixels.data(), kPitch, r));
    }
    setBytes(state, r, false);
}

void HistogramPass(benchmark::State& state, Rect r) {
    Bench& b = bench();
    for (auto _ : state) {
        unsigned int bins[256][3] = {};
        b.peer->calcPixelsHistogram(b.pixels.data(), kPitch, r, bins);
        benchmark::DoNotOptimize(bins);
    }
    setBytes(state, r, false);
}

void FullBaseline(benchmark::State& state, Rect r) {
    const Bench& b = bench();
    for (auto _ : state) benchmark::DoNotOptimize(sumEveryPixel(b, r));
    setBytes(state, r, false);
}

// A request answered from the RGB cache; its baseline is the read it saves, the RGB pass's bytes.
void CachedRgbRequest(benchmark::State& state, Rect r) {
    Bench& b = bench();
    Rgb out;
    Error word = Error::FAILED;
    // The first request captures; a capture has to wait 50 ms after the previous one.
    for (int i = 0; i < 100 && !b.peer->captureScreenAllowed(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    b.service->getRGBValue(r, &out, &word);
    if ((static_cast<int32_t>(word) & 0xFFFF) != 0) {
        state.SkipWithError("the first capture failed");
        return;
    }
    for (auto _ : state) {
        b.service->getRGBValue(r, &out, &word);
        benchmark::DoNotOptimize(out);
        benchmark::DoNotOptimize(word);
    }
}

struct Pair {
    const char* pass;
    void (*run)(benchmark::State&, Rect);
    void (*baseline)(benchmark::State&, Rect);
};

const Pair kPairs[] = {{"calcPixelsRGB", RgbPass, RgbBaseline},
                       {"calcPixelsLumas", LumaPass, FullBaseline},
                       {"calcPixelsHistogram", HistogramPass, FullBaseline},
                       {"getRGBValue_cached", CachedRgbRequest, RgbBaseline}};

std::string passName(const Pair& p, const Area& a) {
    return std::string(p.pass) + "/" + a.name;
}
std::string baselineName(const Pair& p, const Area& a) {
    return std::string(p.pass) + "/" + a.name + "/baseline";
}

// Console output as usual, and the ratios once every run is in.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                const double toNs = benchmark::GetTimeUnitMultiplier(benchmark::kNanosecond) /
                                    benchmark::GetTimeUnitMultiplier(run.time_unit);
                mNs[run.run_name.str()] = {run.GetAdjustedCPUTime() * toNs,
                                           run.GetAdjustedRealTime() * toNs};
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        // CPU time is the figure to read on a busy machine; wall time is shown beside it.
        std::printf("\n%-30s %12s %12s %7s %12s %12s %7s\n", "pass", "cpu ns", "base cpu ns",
                    "ratio", "wall ns", "base wall ns", "ratio");
        for (const Pair& p : kPairs) {
            for (const Area& a : kAreas) {
                auto pass = mNs.find(passName(p, a));
                auto base = mNs.find(baselineName(p, a));
                if (pass == mNs.end() || base == mNs.end()) continue;
                const Times& t = pass->second;
                const Times& u = base->second;
                std::printf("%-30s %12.0f %12.0f %7.2f %12.0f %12.0f %7.2f\n",
                            passName(p, a).c_str(), t.cpu, u.cpu, t.cpu / u.cpu, t.wall, u.wall,
                            t.wall / u.wall);
            }
        }
    }

  private:
    struct Times {
        double cpu;
        double wall;
    };
    std::map<std::string, Times> mNs;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    bench();  // boots before anything is timed
    for (const Pair& p : kPairs) {
        for (const Area& a : kAreas) {
            benchmark::RegisterBenchmark(passName(p, a).c_str(), p.run, a.rect)
                    ->Unit(benchmark::kMicrosecond);
            benchmark::RegisterBenchmark(baselineName(p, a).c_str(), p.baseline, a.rect)
                    ->Unit(benchmark::kMicrosecond);
        }
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
