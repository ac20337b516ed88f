// What the pixel passes cost against what the machine allows and against the straightforward
// loops that public peers use for the same job, all in one run:
//  - limits: a read of exactly the rectangle's bytes with the widest loads, a write of the
//    capture buffer with the widest stores, a copy of the rectangle's rows;
//  - peers: the per-pixel (7R+23G+2B)>>5 luma loop, the three-counter histogram loop, and the
//    gamma-table double sums over every third pixel (unweighted) and over every pixel
//    (weighted), without the sampler: the floor for exact sequential double sums;
//  - the service's kernels over noise, photo-like gradients and flat UI content, full
//    1080 x 2400 frame at 1088 pitch and 100 x 100;
//  - end-to-end requests against the simulated phone with instant vendor completion, a cache
//    hit and invalidCache.
// The summary at the end gives each figure as a ratio to its limit and to its peer.
#include <ColorTempHelper.h>
#include <CwbService.h>
#include <CwbServiceTestPeer.h>
#include <GammaTable.h>
#include <PixelKernels.h>
#include <android/binder_manager.h>
#include <benchmark/benchmark.h>
#include <device/Composer.h>
#include <device/Device.h>
#include <host/binder_process.h>
#include <host/properties.h>
#include <sys/mman.h>
#include <unistd.h>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace impl = aidl::vendor::zarel::hardware::cwb::implementation;
using aidl::vendor::zarel::hardware::cwb::Error;
using aidl::vendor::zarel::hardware::cwb::Histogram;
using aidl::vendor::zarel::hardware::cwb::ICwbService;
using aidl::vendor::zarel::hardware::cwb::Rect;
using aidl::vendor::zarel::hardware::cwb::Rgb;
using impl::PixelRect;

constexpr unsigned int kWidth = 1080;
constexpr unsigned int kHeight = 2400;
constexpr unsigned int kPitch = 1088;
constexpr size_t kFrameBytes = static_cast<size_t>(kPitch) * kHeight * 3;

struct Area {
    const char* name;
    unsigned int left, top, width, height;
};
const Area kAreas[] = {{"full", 0, 0, kWidth, kHeight}, {"100x100", 490, 1150, 100, 100}};

enum Content { kNoise, kPhoto, kFlatUi, kContents };
const char* const kContentNames[] = {"noise", "photo", "ui"};

std::vector<uint8_t> makeFrame(Content content) {
    std::vector<uint8_t> px(kFrameBytes);
    uint32_t noise = 12345;
    for (unsigned int y = 0; y < kHeight; ++y) {
        for (unsigned int x = 0; x < kPitch; ++x) {
            noise = noise * 1664525u + 1013904223u;
            uint8_t* p = &px[3 * (static_cast<size_t>(y) * kPitch + x)];
            if (content == kNoise) {
                p[0] = static_cast<uint8_t>(noise >> 24);
                p[1] = static_cast<uint8_t>(noise >> 16);
                p[2] = static_cast<uint8_t>(noise >> 8);
            } else if (content == kPhoto) {
                p[0] = static_cast<uint8_t>(x * 255 / kWidth + (noise >> 28));
                p[1] = static_cast<uint8_t>(y * 255 / kHeight + (noise >> 24 & 15));
                p[2] = static_cast<uint8_t>(128 + (noise >> 20 & 31));
            } else {
                // Cards of flat colour on a light background, with lines of text-like strokes.
                const bool card = (y / 300) % 2 == 1 && x > 40 && x < 1040;
                const bool text = card && (y % 300) > 40 && (y % 300) < 260 && (y % 30) < 18 &&
                                  ((x * 7 + y / 30 * 13) % 23) < 3;
                const uint8_t v = text ? 33 : card ? 255 : 245;
                p[0] = v;
                p[1] = text ? 33 : card ? 255 : 242;
                p[2] = text ? 40 : card ? 255 : 238;
            }
        }
    }
    return px;
}

const std::vector<uint8_t>& frame(int content) {
    static const std::vector<uint8_t> frames[kContents] = {makeFrame(kNoise), makeFrame(kPhoto),
                                                           makeFrame(kFlatUi)};
    return frames[content];
}

PixelRect rectOf(const std::vector<uint8_t>& px, const Area& a) {
    return PixelRect{px.data() + 3 * (static_cast<size_t>(a.top) * kPitch + a.left),
                     3 * static_cast<size_t>(kPitch), a.width, a.height};
}

// ---- Limits ----

#if defined(__x86_64__)
__attribute__((target("avx2"))) uint64_t readAvx2(const PixelRect& r) {
    __m256i acc = _mm256_setzero_si256();
    uint64_t tail = 0;
    const size_t bytes = 3 * static_cast<size_t>(r.width);
    for (uint32_t y = 0; y < r.height; ++y) {
        const uint8_t* p = r.base + y * r.pitchBytes;
        size_t i = 0;
        for (; i + 32 <= bytes; i += 32) {
            acc = _mm256_or_si256(acc, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i)));
        }
        for (; i < bytes; ++i) tail += p[i];
    }
    return tail +
           static_cast<uint64_t>(_mm256_extract_epi64(acc, 0) ^ _mm256_extract_epi64(acc, 3));
}
__attribute__((target("avx2"))) void writeAvx2(uint8_t* d, size_t n) {
    size_t i = 0;
    for (; i + 32 <= n; i += 32) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i), _mm256_setzero_si256());
    }
    for (; i < n; ++i) d[i] = 0;
}
__attribute__((target("avx2"))) void copyAvx2(uint8_t* d, const PixelRect& r) {
    const size_t bytes = 3 * static_cast<size_t>(r.width);
    for (uint32_t y = 0; y < r.height; ++y, d += bytes) {
        const uint8_t* s = r.base + y * r.pitchBytes;
        size_t i = 0;
        for (; i + 32 <= bytes; i += 32) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i),
                                _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i)));
        }
        for (; i < bytes; ++i) d[i] = s[i];
    }
}
const bool kWide = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
}();
const char* const kLimitIsa = kWide ? "avx2 32-byte" : "8-byte";
#else
constexpr bool kWide = false;
const char* const kLimitIsa = "8-byte (compiler-vectorised)";
#endif

uint64_t readWords(const PixelRect& r) {
    uint64_t acc = 0;
    uint64_t tail = 0;
    const size_t bytes = 3 * static_cast<size_t>(r.width);
    for (uint32_t y = 0; y < r.height; ++y) {
        const uint8_t* p = r.base + y * r.pitchBytes;
        size_t i = 0;
        for (; i + 8 <= bytes; i += 8) {
            uint64_t w;
            memcpy(&w, p + i, sizeof(w));
            acc |= w;
        }
        for (; i < bytes; ++i) tail += p[i];
    }
    return acc + tail;
}

uint64_t readLimit(const PixelRect& r) {
#if defined(__x86_64__)
    if (kWide) return readAvx2(r);
#endif
    return readWords(r);
}

void writeLimit(uint8_t* d, size_t n) {
#if defined(__x86_64__)
    if (kWide) return writeAvx2(d, n);
#endif
    for (size_t i = 0; i + 8 <= n; i += 8) {
        const uint64_t zero = 0;
        memcpy(d + i, &zero, sizeof(zero));
    }
    benchmark::ClobberMemory();
}

void copyLimit(uint8_t* d, const PixelRect& r) {
#if defined(__x86_64__)
    if (kWide) return copyAvx2(d, r);
#endif
    const size_t bytes = 3 * static_cast<size_t>(r.width);
    for (uint32_t y = 0; y < r.height; ++y) memcpy(d + y * bytes, r.base + y * r.pitchBytes, bytes);
}

// ---- Peers ----

uint32_t peerLuma(const PixelRect& r) {
    uint32_t sum = 0;
    for (uint32_t y = 0; y < r.height; ++y) {
        const uint8_t* p = r.base + y * r.pitchBytes;
        for (uint32_t x = 0; x < r.width; ++x, p += 3)
            sum += (7 * p[0] + 23 * p[1] + 2 * p[2]) >> 5;
    }
    return sum;
}

void peerHistogram(const PixelRect& r, unsigned int (*bins)[3]) {
    for (uint32_t y = 0; y < r.height; ++y) {
        const uint8_t* p = r.base + y * r.pitchBytes;
        for (uint32_t x = 0; x < r.width; ++x, p += 3) {
            ++bins[p[0]][0];
            ++bins[p[1]][1];
            ++bins[p[2]][2];
        }
    }
}

double peerSampled(const PixelRect& r) {
    double s[3] = {0, 0, 0};
    const double* t = impl::kGammaTable.data();
    for (uint32_t y = 0; y < r.height; y += 3) {
        const uint8_t* row = r.base + y * r.pitchBytes;
        for (uint32_t x = 0; x < r.width; x += 3) {
            const uint8_t* p = row + 3 * x;
            s[0] += t[p[0]];
            s[1] += t[p[1]];
            s[2] += t[p[2]];
        }
    }
    return s[0] + s[1] + s[2];
}

double peerWeighted(const PixelRect& r, const int32_t* w) {
    double s[3] = {0, 0, 0};
    const double* t = impl::kGammaTable.data();
    for (uint32_t y = 0; y < r.height; ++y) {
        const uint8_t* p = r.base + y * r.pitchBytes;
        for (uint32_t x = 0; x < r.width; ++x, p += 3, ++w) {
            const double weight = *w;
            s[0] += t[p[0]] * weight;
            s[1] += t[p[1]] * weight;
            s[2] += t[p[2]] * weight;
        }
    }
    return s[0] + s[1] + s[2];
}

const std::vector<int32_t>& weights() {
    static const std::vector<int32_t> w = [] {
        std::vector<int32_t> out(static_cast<size_t>(kWidth) * kHeight);
        uint32_t n = 7;
        for (int32_t& v : out) v = static_cast<int32_t>((n = n * 1103515245u + 12345u) >> 22) - 512;
        return out;
    }();
    return w;
}

impl::ColorTempHelper& sampler() {
    static impl::ColorTempHelper s;
    static const bool configured = s.configure("0,10,245,255");
    (void)configured;
    return s;
}

// ---- Pixel benchmarks: name -> body over a rectangle ----

using Body = std::function<void(const PixelRect&)>;

void runBody(benchmark::State& state, const Body& body, int content, const Area& a, size_t bytes) {
    const PixelRect r = rectOf(frame(content), a);
    for (auto _ : state) body(r);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void histogramWith(void (*fn)(const PixelRect&, unsigned int (*)[3]), const PixelRect& r) {
    unsigned int bins[256][3] = {};
    fn(r, bins);
    benchmark::DoNotOptimize(bins);
}

struct PixelFigure {
    const char* name;
    Body body;
    bool wholeBuffer = false;  // writes the capture buffer, independent of area and content
};

std::vector<PixelFigure> pixelFigures() {
    static std::vector<uint8_t> sink(kFrameBytes);
    const impl::PixelKernelSet& fast = impl::pixelKernels();
    const impl::PixelKernelSet& portable = impl::portablePixelKernels();
    return {
            {"limit/read", [](const PixelRect& r) { benchmark::DoNotOptimize(readLimit(r)); }},
            {"limit/write", [](const PixelRect&) { writeLimit(sink.data(), kFrameBytes); }, true},
            {"limit/copy", [](const PixelRect& r) { copyLimit(sink.data(), r); }},
            {"peer/luma", [](const PixelRect& r) { benchmark::DoNotOptimize(peerLuma(r)); }},
            {"peer/histogram", [](const PixelRect& r) { histogramWith(peerHistogram, r); }},
            {"peer/rgb", [](const PixelRect& r) { benchmark::DoNotOptimize(peerSampled(r)); }},
            {"peer/rgb_weighted",
             [](const PixelRect& r) {
                 benchmark::DoNotOptimize(peerWeighted(r, weights().data()));
             }},
            {"pass/luma",
             [&fast](const PixelRect& r) { benchmark::DoNotOptimize(fast.lumaSum(r)); }},
            {"pass/luma_portable",
             [&portable](const PixelRect& r) { benchmark::DoNotOptimize(portable.lumaSum(r)); }},
            {"pass/histogram", [&fast](const PixelRect& r) { histogramWith(fast.histogram, r); }},
            {"pass/histogram_portable",
             [&portable](const PixelRect& r) { histogramWith(portable.histogram, r); }},
            {"pass/rgb",
             [](const PixelRect& r) {
                 sampler().reset();
                 benchmark::DoNotOptimize(impl::linearSumsSampled(r, &sampler()));
             }},
            {"pass/rgb_weighted",
             [](const PixelRect& r) {
                 sampler().reset();
                 int32_t total = 0;
                 benchmark::DoNotOptimize(
                         impl::linearSumsWeighted(r, weights().data(), &total, &sampler()));
             }},
            {"pass/zero_fill", [](const PixelRect&) { impl::zeroFill(sink.data(), kFrameBytes); },
             true},
            {"pass/crop_copy",
             [](const PixelRect& r) {
                 const size_t row = 3 * static_cast<size_t>(r.width);
                 impl::copyRows(sink.data(), row, r.base, r.pitchBytes, row, r.height);
             }},
    };
}

std::string pixelName(const char* figure, int content, const Area& a) {
    return std::string(figure) + "/" + kContentNames[content] + "/" + a.name;
}

// ---- Requests against the simulated phone ----

// The phone shows the photo-like content, so that request figures compare with its passes.
const host::device::Frame& screen() {
    static const host::device::Frame out = [] {
        host::device::Frame f;
        f.width = static_cast<int>(kWidth);
        f.height = static_cast<int>(kHeight);
        f.rgb.resize(static_cast<size_t>(kWidth) * kHeight * 3);
        for (unsigned int y = 0; y < kHeight; ++y) {
            memcpy(&f.rgb[static_cast<size_t>(y) * kWidth * 3],
                   &frame(kPhoto)[static_cast<size_t>(y) * kPitch * 3],
                   static_cast<size_t>(kWidth) * 3);
        }
        return f;
    }();
    return out;
}

struct Phone {
    Phone() {
        host::properties::set("ro.vendor.zarel.display.cwb.display_id", "0");
        host::properties::set("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
        device = std::make_unique<host::device::Device>();
        device->setLatency(std::chrono::nanoseconds(0));
        device->setFrame(host::device::PanelId::Main, host::device::FrameKind::Mixer, screen());
        composer = std::make_unique<host::device::Composer>();
        composer->boot();
        composer->powerMode(0, 2);
        service = composer->proxy().service();
        region = memfd_create("cwb_bench_region", MFD_CLOEXEC);
        if (ftruncate(region, kRegionBytes) != 0) std::perror("ftruncate");
        Error ignored;
        service->initializeSharedMemory(0, kRegionBytes, ndk::ScopedFileDescriptor(dup(region)),
                                        &ignored);
        host::binder::ProcessScope in(client);
        proxy = ICwbService::fromBinder(ndk::SpAIBinder(
                AServiceManager_checkService("vendor.zarel.hardware.cwb.ICwbService/default")));
    }
    // A fresh capture for the next request: the cache emptied, the 50 ms spacing waited out.
    void readyForCapture() {
        service->invalidCache();
        for (int i = 0; i < 200 && !impl::CwbServiceTestPeer(*service).captureScreenAllowed();
             ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    static constexpr int32_t kRegionBytes = 100 * 100 * 3 + 64;
    std::unique_ptr<host::device::Device> device;
    std::unique_ptr<host::device::Composer> composer;
    std::shared_ptr<impl::CwbService> service;
    std::shared_ptr<host::binder::Process> client = host::binder::newProcess("bench client");
    std::shared_ptr<ICwbService> proxy;
    int region = -1;
};

Phone& phone() {
    static Phone instance;
    return instance;
}

Rect toRect(const Area& a) {
    Rect r;
    r.left = static_cast<int32_t>(a.left);
    r.top = static_cast<int32_t>(a.top);
    r.right = static_cast<int32_t>(a.left + a.width);
    r.bottom = static_cast<int32_t>(a.top + a.height);
    return r;
}

struct RequestFigure {
    const char* name;
    bool capture;  // each timed request needs a new capture
    std::function<bool(ICwbService&, const Rect&)> call;
    bool proxy = false;  // called through the proxy of a client process
};

std::vector<RequestFigure> requestFigures() {
    return {
            {"request/getRGBValue", true,
             [](ICwbService& s, const Rect& r) {
                 Rgb out;
                 Error e = Error::FAILED;
                 s.getRGBValue(r, &out, &e);
                 return (static_cast<int32_t>(e) & 0xFFFF) == 0;
             }},
            {"request/getLumasValue", true,
             [](ICwbService& s, const Rect& r) {
                 std::vector<float> out;
                 Error e = Error::FAILED;
                 s.getLumasValue(r, &out, &e);
                 return e == Error::NONE;
             }},
            {"request/getHistogramValue", true,
             [](ICwbService& s, const Rect& r) {
                 Histogram out;
                 Error e = Error::FAILED;
                 s.getHistogramValue(r, &out, &e);
                 return e == Error::NONE;
             }},
            {"request/getCwbValue1", true,
             [](ICwbService& s, const Rect& r) {
                 std::vector<int32_t> out;
                 Error e = Error::FAILED;
                 s.getCwbValue(1, r, &out, &e);
                 return (static_cast<int32_t>(e) & 0xFFFF) == 0;
             }},
            {"request/getCwbValue2", true,
             [](ICwbService& s, const Rect& r) {
                 std::vector<int32_t> out;
                 Error e = Error::FAILED;
                 s.getCwbValue(2, r, &out, &e);
                 return e == Error::NONE;
             }},
            {"request/getSharedData5", false,
             [](ICwbService& s, const Rect& r) {
                 std::vector<int32_t> out;
                 Error e = Error::FAILED;
                 s.getSharedData(5, r, ndk::ScopedFileDescriptor(), Phone::kRegionBytes, &out, &e);
                 return e == Error::NONE;
             }},
            {"request/getRGBValue_cached", false,
             [](ICwbService& s, const Rect& r) {
                 Rgb out;
                 Error e = Error::FAILED;
                 s.getRGBValue(r, &out, &e);
                 return (static_cast<int32_t>(e) & 0xFFFF) == 0;
             }},
            {"request/invalidCache", false,
             [](ICwbService&, const Rect&) {
                 phone().service->invalidCache();
                 return true;
             }},
            // Through the generated proxy from a client process: what the binder adds.
            {"request/getRGBValue_cached_proxy", false,
             [](ICwbService& s, const Rect& r) {
                 Rgb out;
                 Error e = Error::FAILED;
                 s.getRGBValue(r, &out, &e);
                 return (static_cast<int32_t>(e) & 0xFFFF) == 0;
             },
             true},
            {"request/getHistogramValue_proxy", true,
             [](ICwbService& s, const Rect& r) {
                 Histogram out;
                 Error e = Error::FAILED;
                 s.getHistogramValue(r, &out, &e);
                 return e == Error::NONE;
             },
             true},
    };
}

double threadCpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

void runRequest(benchmark::State& state, const RequestFigure& f, const Area& a) {
    Phone& p = phone();
    const Rect r = toRect(a);
    // Every figure starts from a capture of this rectangle (a crop copies the last capture).
    p.readyForCapture();
    Rgb rgb;
    Error e;
    p.service->getRGBValue(r, &rgb, &e);
    ICwbService& target = f.proxy ? *p.proxy : *p.service;
    std::optional<host::binder::ProcessScope> in;
    if (f.proxy) in.emplace(p.client);
    if (!f.capture && !f.call(target, r)) {
        state.SkipWithError("request failed");
        return;
    }
    double threadCpu = 0.0;
    for (auto _ : state) {
        if (f.capture) p.readyForCapture();
        const double cpuStart = threadCpuSeconds();
        const auto start = std::chrono::steady_clock::now();
        const bool ok = f.call(target, r);
        const auto end = std::chrono::steady_clock::now();
        threadCpu += threadCpuSeconds() - cpuStart;
        state.SetIterationTime(std::chrono::duration<double>(end - start).count());
        if (!ok) {
            state.SkipWithError("request failed");
            return;
        }
    }
    // The requesting thread's own CPU time: the service's work without the wait for the vendor.
    state.counters["thread_cpu_us"] =
            benchmark::Counter(threadCpu * 1e6 / static_cast<double>(state.iterations()));
}

// The simulated vendor's own share of a capture: it maps the capture buffer afresh, copies the
// picture in at the row pitch and unmaps it, on its own thread.
void VendorWriteback(benchmark::State& state) {
    static const int fd = [] {
        const int d = memfd_create("cwb_bench_capture", MFD_CLOEXEC);
        if (ftruncate(d, static_cast<off_t>(kFrameBytes)) != 0) std::perror("ftruncate");
        return d;
    }();
    for (auto _ : state) {
        void* base = mmap(nullptr, kFrameBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        auto* dst = static_cast<uint8_t*>(base);
        for (unsigned int y = 0; y < kHeight; ++y) {
            memcpy(dst + static_cast<size_t>(y) * kPitch * 3, screen().row(static_cast<int>(y)),
                   static_cast<size_t>(kWidth) * 3);
        }
        munmap(base, kFrameBytes);
    }
}

// ---- Summary ----

struct Times {
    double cpu;
    double wall;
};

class SummaryReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median" &&
                !run.error_occurred) {
                const double toNs = 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
                const std::string name = run.run_name.function_name;
                mNs[name] = {run.GetAdjustedCPUTime() * toNs, run.GetAdjustedRealTime() * toNs};
                auto counter = run.counters.find("thread_cpu_us");
                if (counter != run.counters.end()) {
                    mNs[name + "/thread_cpu"] = {counter->second.value * 1000.0,
                                                 counter->second.value * 1000.0};
                }
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf(
                "\nkernels: %s; limits: %s loads/stores; medians in us (pixel figures CPU "
                "time, requests wall time)\n",
                impl::pixelKernels().name, kLimitIsa);
        std::printf("%-34s %10s %10s %8s %10s %8s\n", "figure", "us", "limit us", "/limit",
                    "peer us", "/peer");
        struct Row {
            const char* pass;
            const char* limit;
            const char* peer;
            bool wholeBuffer;
        };
        const Row rows[] = {{"pass/luma", "limit/read", "peer/luma", false},
                            {"pass/luma_portable", "limit/read", "peer/luma", false},
                            {"pass/histogram", "limit/read", "peer/histogram", false},
                            {"pass/histogram_portable", "limit/read", "peer/histogram", false},
                            {"pass/rgb", nullptr, "peer/rgb", false},
                            {"pass/rgb_weighted", nullptr, "peer/rgb_weighted", false},
                            {"pass/zero_fill", "limit/write", nullptr, true},
                            {"pass/crop_copy", "limit/copy", nullptr, false}};
        for (const Area& a : kAreas) {
            for (int c = 0; c < kContents; ++c) {
                for (const Row& row : rows) {
                    if (row.wholeBuffer && (c != 0 || &a != &kAreas[0])) continue;
                    line(pixelName(row.pass, c, a), row.limit ? pixelName(row.limit, c, a) : "",
                         row.peer ? pixelName(row.peer, c, a) : "");
                }
            }
        }
        for (const Area& a : kAreas) {
            for (const RequestFigure& f : requestFigures()) {
                line(std::string(f.name) + "/" + a.name, "", "", true);
            }
        }
        line("vendor/writeback", "", "", true);
        // The requesting thread's CPU time covers the service's own work (the simulated
        // vendor's writeback runs on its thread); the budget is zero fill + pass + 50 us.
        const char* passes[] = {"pass/rgb", "pass/luma", "pass/histogram"};
        const char* requests[] = {"request/getRGBValue", "request/getLumasValue",
                                  "request/getHistogramValue"};
        std::printf("\n%-28s %8s %12s %10s %10s %12s\n", "request (thread CPU)", "area", "us",
                    "fill us", "pass us", "beyond us");
        for (const Area& a : kAreas) {
            for (int i = 0; i < 3; ++i) {
                const double own =
                        time(std::string(requests[i]) + "/" + a.name + "/thread_cpu", false);
                const double fill = time(pixelName("pass/zero_fill", 0, kAreas[0]), false);
                const double pass = time(pixelName(passes[i], kPhoto, a), false);
                if (own < 0 || fill < 0 || pass < 0) continue;
                std::printf("%-28s %8s %12.1f %10.1f %10.1f %12.1f\n", requests[i], a.name,
                            own / 1000.0, fill / 1000.0, pass / 1000.0,
                            (own - fill - pass) / 1000.0);
            }
        }
    }

  private:
    // Pixel figures are read in CPU time, which other processes on a busy machine disturb
    // least; requests in wall time, since they wait on the simulated vendor's thread.
    double time(const std::string& name, bool wall) const {
        auto it = mNs.find(name);
        if (it == mNs.end()) return -1.0;
        return wall ? it->second.wall : it->second.cpu;
    }
    void line(const std::string& pass, const std::string& limit, const std::string& peer,
              bool wall = false) {
        const double t = time(pass, wall);
        if (t < 0) return;
        const double l = limit.empty() ? -1.0 : time(limit, wall);
        const double p = peer.empty() ? -1.0 : time(peer, wall);
        std::printf("%-34s %10.2f ", pass.c_str(), t / 1000.0);
        if (l > 0) {
            std::printf("%10.2f %8.2f ", l / 1000.0, t / l);
        } else {
            std::printf("%10s %8s ", "-", "-");
        }
        if (p > 0) {
            std::printf("%10.2f %8.2f\n", p / 1000.0, t / p);
        } else {
            std::printf("%10s %8s\n", "-", "-");
        }
    }
    std::map<std::string, Times> mNs;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    std::printf("pixel kernels: %s\n", impl::pixelKernels().name);
    for (int c = 0; c < kContents; ++c) frame(c);  // built before anything is timed
    weights();
    phone();
    static const std::vector<PixelFigure> figures = pixelFigures();
    for (const Area& a : kAreas) {
        for (int c = 0; c < kContents; ++c) {
            for (const PixelFigure& f : figures) {
                if (f.wholeBuffer && (c != 0 || &a != &kAreas[0])) continue;
                const size_t bytes =
                        f.wholeBuffer ? kFrameBytes : 3 * static_cast<size_t>(a.width) * a.height;
                benchmark::RegisterBenchmark(pixelName(f.name, c, a).c_str(),
                                             [&f, c, &a, bytes](benchmark::State& s) {
                                                 runBody(s, f.body, c, a, bytes);
                                             })
                        ->Unit(benchmark::kMicrosecond)
                        ->MinTime(0.05)
                        ->Repetitions(5)
                        ->ReportAggregatesOnly(true);
            }
        }
    }
    static const std::vector<RequestFigure> requests = requestFigures();
    for (const Area& a : kAreas) {
        for (const RequestFigure& f : requests) {
            // The client region holds a 100 x 100 crop.
            if (std::string(f.name) == "request/getSharedData5" && a.width * a.height > 10000) {
                continue;
            }
            auto* b = benchmark::RegisterBenchmark(
                    (std::string(f.name) + "/" + a.name).c_str(),
                    [&f, &a](benchmark::State& s) { runRequest(s, f, a); });
            b->Unit(benchmark::kMicrosecond)
                    ->UseManualTime()
                    ->Repetitions(3)
                    ->ReportAggregatesOnly(true);
            if (f.capture) {
                b->Iterations(8);
            } else {
                b->MinTime(0.05);
            }
        }
    }
    benchmark::RegisterBenchmark("vendor/writeback", VendorWriteback)
            ->Unit(benchmark::kMicrosecond)
            ->UseRealTime()
            ->MinTime(0.05)
            ->Repetitions(3)
            ->ReportAggregatesOnly(true);
    SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
