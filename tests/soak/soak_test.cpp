// Soak: eight clients call every method while the composer sends every event (real resolution
// changes included) and a fault thread breaks the vendor, the qservice and the device files; a
// watchdog fails any stall. Every answer must carry a documented code, answers on the uniform,
// whole-frame (no ROI) picture must be exact; after warm-up, descriptors, threads and mappings
// must come back and resident memory stay flat.
// CWB_SOAK_SECONDS sets the duration (default 5); tools/soak.sh runs it longer under sanitizers.
#include <CwbProxy.h>
#include <CwbService.h>
#include <CwbServiceTestPeer.h>
#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/binder_status.h>
#include <device/Composer.h>
#include <device/Device.h>
#include <gtest/gtest.h>
#include <host/binder_process.h>
#include <host/binder_registry.h>
#include <host/log_capture.h>
#include <host/properties.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "process_resources.h"

namespace cwbsoak {
// Every binder call passes its parcels through the allocator, and ASan keeps freed blocks in a
// quarantine of 256 MB by default, which takes minutes to fill and reads as growth. A small one
// keeps the memory check about what the run holds; without ASan nothing calls this.
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=8";
}

namespace {

using aidl::vendor::zarel::hardware::cwb::BnCwbCallback;
using aidl::vendor::zarel::hardware::cwb::Error;
using aidl::vendor::zarel::hardware::cwb::Histogram;
using aidl::vendor::zarel::hardware::cwb::ICwbService;
using aidl::vendor::zarel::hardware::cwb::Rect;
using aidl::vendor::zarel::hardware::cwb::Rgb;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;
using host::device::Frame;
using host::device::FrameKind;
using host::device::PanelId;
using Outcome = host::device::SimulatedDisplayConfig::Outcome;
using Clock = std::chrono::steady_clock;

constexpr int kClients = 8;
constexpr int kMethods = 16;
constexpr uint8_t kR = 40, kG = 120, kB = 200;  // every panel shows this colour, whole
constexpr int kLumaLevel = (7 * kR + 23 * kG + 2 * kB) >> 5;
constexpr auto kStall = std::chrono::seconds(20);  // no request may take this long
constexpr double kMemoryCheckSeconds = 30;         // runs this long must keep memory flat
constexpr long kMappingSlack = 2;  // file and shared mappings; a library may map lazily
const std::pair<const char*, const char*> kProperties[] = {
        {"display_id", "0"},    {"display_id_sec", "3"}, {"apl_read_support", "1"},
        {"aod_forbidden", "1"}, {"fod_forbidden", "1"},  {"ct_range", "0,10,245,255"}};

double soakSeconds() {
    const char* text = getenv("CWB_SOAK_SECONDS");
    const double seconds = text != nullptr ? atof(text) : 5.0;
    return seconds > 0 ? seconds : 5.0;
}

size_t residentBytes() {
    std::ifstream statm("/proc/self/statm");
    size_t pages = 0, resident = 0;
    statm >> pages >> resident;
    return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

class Callback : public BnCwbCallback {
  public:
    ndk::ScopedAStatus notifyCwbStatus(bool) override { return ndk::ScopedAStatus::ok(); }
};

// Progress of one thread, for the watchdog.
struct Heartbeat {
    std::atomic<int64_t> lastNs{0};
    void beat() { lastNs = Clock::now().time_since_epoch().count(); }
};

// What one client saw; anything in `wrong` fails the soak.
struct Tally {
    std::atomic<uint64_t> calls{0};
    std::atomic<uint64_t> exact{0};  // answers checked against the frame
    std::vector<std::string> wrong;  // written only by its own client
};

class Soak {
  public:
    Soak() {
        host::log::clear();
        host::properties::clear();
        host::binder::resetRegistry();
        aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID = 2;
        device = std::make_unique<host::device::Device>();
        for (PanelId panel : {PanelId::Main, PanelId::Secondary}) {
            device->setPanelModes(panel, {{1080, 2400, 16666666}, {720, 1600, 8333333}});
            // The largest mode's picture: any active mode sees a uniform crop of it.
            device->setFrame(panel, FrameKind::Mixer, Frame::filled(1080, 2400, kR, kG, kB));
        }
        device->setLatency(std::chrono::milliseconds(1));
        device->setAplFile(std::string("0f a0\n"));
        for (const auto& [key, value] : kProperties) {
            host::properties::set(std::string("ro.vendor.zarel.display.cwb.") + key, value);
        }
        composer = std::make_unique<host::device::Composer>();
        EXPECT_EQ(0, composer->boot());
        service = composer->proxy().service();
        // The composer's binder threads, all started: none appears later to count as a leak.
        ABinderProcess_setThreadPoolMaxThreadCount(kClients);
        ABinderProcess_startThreadPool();
        composer->powerMode(0, 2);
        composer->powerMode(3, 2);
    }

    ~Soak() {
        composer.reset();
        service.reset();
        host::binder::resetRegistry();
        device.reset();
        host::properties::clear();
    }

    void client(int id, Tally& tally, Heartbeat& heartbeat) {
        std::mt19937 random(static_cast<uint32_t>(id) * 7919u + 1u);
        auto callback = ndk::SharedRefBase::make<Callback>();
        // Half the clients hand over a file that can be sealed against shrinking.
        const int fd = memfd_create("cwb_soak_region", id % 2 ? MFD_ALLOW_SEALING : MFD_CLOEXEC);
        ftruncate(fd, 64 * 1024);
        ndk::ScopedFileDescriptor region(fd);
        // Each client is a process of its own, reaching the service through a proxy.
        host::binder::ProcessScope in(host::binder::newProcess("client " + std::to_string(id)));
        ABinderProcess_setThreadPoolMaxThreadCount(1);  // one thread for its notifications
        const std::shared_ptr<ICwbService> service = ICwbService::fromBinder(ndk::SpAIBinder(
                AServiceManager_checkService("vendor.zarel.hardware.cwb.ICwbService/default")));
        for (uint64_t i = 0; !stop; ++i) {
            call(service, static_cast<int>((i + static_cast<uint64_t>(id)) % kMethods), random,
                 callback, region, tally);
            ++tally.calls;
            heartbeat.beat();
        }
        Error ignored;
        service->unregisterCallback(callback, &ignored);
    }

    // Host events, with real resolution changes on both panels.
    void host(Heartbeat& heartbeat) {
        for (uint32_t i = 0; !stop; ++i) {
            // Layer changes now and then: between them answers come from the result caches.
            if (i % 40 == 0) composer->layerChange();
            if (i % 70 == 0) {
                const uint32_t mode = (i / 70) % 2;
                const PanelId panel = i % 140 == 0 ? PanelId::Main : PanelId::Secondary;
                device->setActiveMode(panel, mode);
                composer->configChange(panel == PanelId::Main ? 0 : 3, mode);
            }
            if (i % 110 == 0) composer->updateConfigs();
            composer->powerMode(i % 2 ? 0 : 3, i % 23 == 0 ? 1 : i % 29 == 0 ? 0 : 2);
            composer->colorMode(0, static_cast<int>(i % 8), 300 + static_cast<int>(i % 9));
            composer->aodLayer(i % 13 == 0);
            composer->fodLayer(i % 17 == 0);
            if (i % 50 < 2) composer->status(i % 50 == 1);
            heartbeat.beat();
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
        }
        composer->status(true);
    }

    // Vendor errors, refusals, dropped completions, absent services and broken device files.
    void faults(Heartbeat& heartbeat) {
        auto& vendor = *device->displayConfig();
        for (uint32_t i = 0; !stop; ++i) {
            switch (i % 8) {
                case 0:
                    vendor.pushOutcome(Outcome::Error, -1);
                    break;
                case 1:
                    vendor.pushOutcome(Outcome::Refuse);
                    break;
                case 2:
                    if (i % 64 == 2) vendor.pushOutcome(Outcome::Drop);
                    break;
                case 3:
                    device->setVendorPresent(false);
                    break;
                case 4:
                    device->setVendorPresent(true);
                    device->setQServicePresent(false);
                    break;
                case 5:
                    device->setQServicePresent(true);
                    device->setAplFile(std::nullopt);
                    break;
                case 6:
                    device->setAplFile(std::string("zz \x01 not hex"));
                    break;
                default:
                    device->setAplFile(std::string("0f a0\n"));
                    device->setLatency(i % 16 == 7 ? std::optional<std::chrono::nanoseconds>()
                                                   : std::chrono::milliseconds(1));
                    break;
            }
            heartbeat.beat();
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
        }
        vendor.clearOutcomes();
        device->setVendorPresent(true);
        device->setQServicePresent(true);
    }

    std::unique_ptr<host::device::Device> device;
    std::unique_ptr<host::device::Composer> composer;
    std::shared_ptr<CwbService> service;
    std::atomic<bool> stop{false};

  private:
    // Status OK, or for the shared-memory pair a service-specific -1.
    static bool statusOk(const ndk::ScopedAStatus& status, bool mayRefuse = false) {
        return status.isOk() || (mayRefuse && status.getExceptionCode() == EX_SERVICE_SPECIFIC &&
                                 status.getServiceSpecificError() == -1);
    }

    void call(const std::shared_ptr<ICwbService>& service, int method, std::mt19937& random,
              const std::shared_ptr<Callback>& callback, const ndk::ScopedFileDescriptor& region,
              Tally& tally) {
        auto expect = [&](bool ok, const char* what) {
            if (!ok && tally.wrong.size() < 20) tally.wrong.push_back(what);
        };
        Error error = Error::NONE;
        // A call that must succeed outright.
        auto succeeds = [&](const ndk::ScopedAStatus& status, const char* what) {
            expect(status.isOk() && error == Error::NONE, what);
        };
        // Checks for a documented code; true on a success, which must then be exact. RGB words
        // carry verdict bits above the code, masked off.
        auto answered = [&](const ndk::ScopedAStatus& status, const char* what,
                            bool mayRefuse = false, uint32_t mask = ~0u) {
            const int32_t code = static_cast<int32_t>(static_cast<uint32_t>(error) & mask);
            expect(statusOk(status, mayRefuse) && code >= 0 && code <= 3, what);
            return status.isOk() && code == 0;
        };
        const int32_t l = static_cast<int32_t>(random() % 600),
                      t = static_cast<int32_t>(random() % 1400);
        // Two rectangles, as a light-sensor client asks: most answers then come from the caches.
        const int32_t k = l % 2;
        const Rect r{k * 100, k * 200, k * 100 + 1 + k * 17, k * 200 + 1 + k * 29};
        const int64_t area = static_cast<int64_t>(r.right - r.left) * (r.bottom - r.top);
        switch (method) {
            case 0: {
                Rgb rgb;
                if (answered(service->getRGBValue(r, &rgb, &error), "getRGBValue", false, 0xFFFF)) {
                    expect(rgb.r == kR && rgb.g == kG && rgb.b == kB, "getRGBValue colour");
                    ++tally.exact;
                }
                break;
            }
            case 1: {
                std::vector<float> lumas;
                const auto status = service->getLumasValue(r, &lumas, &error);
                expect(lumas.size() == 1, "getLumasValue size");
                if (answered(status, "getLumasValue") && lumas.size() == 1) {
                    expect(lumas[0] == kLumaLevel / 255.0f, "getLumasValue value");
                    ++tally.exact;
                }
                break;
            }
            case 2: {
                Histogram histogram;
                const auto status = service->getHistogramValue(r, &histogram, &error);
                if (answered(status, "getHistogramValue")) {
                    int64_t total = 0;
                    for (int32_t c : histogram.counts) total += c;
                    expect(total == 3 * area && histogram.counts[3 * kR] == area &&
                                   histogram.counts[3 * kG + 1] == area &&
                                   histogram.counts[3 * kB + 2] == area,
                           "getHistogramValue counts");
                    ++tally.exact;
                }
                break;
            }
            case 3: {
                bool status = false;
                expect(service->getCwbPostProcessStatus(&status).isOk(), "getCwbPostProcessStatus");
                break;
            }
            case 4:
                succeeds(service->setCwbPostProcessStatus(random() % 2, &error),
                         "setCwbPostProcessStatus");
                break;
            case 5:
                succeeds(service->registerCallback(callback, &error), "registerCallback");
                break;
            case 6:
                succeeds(service->unregisterCallback(callback, &error), "unregisterCallback");
                break;
            case 7:
            case 8: {
                bool result = false;
                const auto status = method == 7 || random() % 4 != 0 ? service->enable(&result)
                                                                     : service->disable(&result);
                expect(status.isOk() && result, "enable/disable");
                break;
            }
            case 9:
                // Debug log on or off; dumps stay off (each would write a whole frame to disk).
                succeeds(service->setDebug({static_cast<int32_t>(random() % 2), 0, -1}, &error),
                         "setDebug");
                break;
            case 10: {
                const int32_t feature = static_cast<int32_t>(random() % 4);  // 0 is refused
                std::vector<int32_t> values;
                const auto status = service->getCwbValue(feature, r, &values, &error);
                if (answered(status, "getCwbValue") && feature != 0) {
                    const bool rgb = feature != 2;
                    expect(values.size() == (rgb ? 9u : 6u), "getCwbValue values");
                    if (rgb && values.size() == 9) {
                        expect(values[0] == kR && values[1] == kG && values[2] == kB,
                               "getCwbValue colour");
                        ++tally.exact;
                    }
                }
                break;
            }
            case 11:
                expect(service->reserved(static_cast<int32_t>(random()), 0).isOk(), "reserved");
                break;
            case 12:
                // Sometimes shrunk first: an unsealed file then refuses its copies.
                if (random() % 8 == 0) ftruncate(region.get(), random() % 2 ? 4096 : 64 * 1024);
                expect(statusOk(service->initializeSharedMemory(0, 30020, region, &error), true),
                       "initializeSharedMemory");
                break;
            case 13: {
                std::vector<int32_t> values;
                // Mostly copies: every switch between the capture modes invalidates the frame.
                const int32_t feature = random() % 16 == 0 ? 2 + (random() % 2) : 5;
                // A descriptor is required across binder: -1 never leaves the client.
                answered(service->getSharedData(feature, Rect{l, t, l + 100, t + 100}, region,
                                                static_cast<int32_t>(30012 - random() % 2), &values,
                                                &error),
                         "getSharedData", feature == 5);
                break;
            }
            case 14: {
                std::vector<int32_t> values;
                expect(service->getScreenResolution(0, &values, &error).isOk() &&
                               values.size() == 2,
                       "getScreenResolution");
                break;
            }
            default:
                if (random() % 4 == 0) {
                    expect(service->releaseSharedMemory(0, 0, &error).isOk(),
                           "releaseSharedMemory");
                }
                break;
        }
    }
};

// Runs the load for `seconds` and stops it: clients, host events and faults all joined.
void runLoad(Soak& soak, double seconds, std::array<Tally, kClients>& tallies) {
    std::array<Heartbeat, kClients + 2> beats;
    for (Heartbeat& b : beats) b.beat();
    soak.stop = false;
    std::vector<std::thread> threads;
    for (int id = 0; id < kClients; ++id) {
        threads.emplace_back([&, id] { soak.client(id, tallies[id], beats[id]); });
    }
    threads.emplace_back([&] { soak.host(beats[kClients]); });
    threads.emplace_back([&] { soak.faults(beats[kClients + 1]); });

    // Watchdog: a thread that makes no progress for kStall is a hang; stop the process loudly
    // rather than let the run time out.
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const int64_t now = Clock::now().time_since_epoch().count();
        for (size_t i = 0; i < beats.size(); ++i) {
            if (now - beats[i].lastNs > std::chrono::nanoseconds(kStall).count()) {
                fprintf(stderr, "soak: thread %zu made no progress for %lld s\n", i,
                        static_cast<long long>(kStall.count()));
                std::abort();
            }
        }
    }
    soak.stop = true;
    for (std::thread& t : threads) t.join();
}

// The quiet state in which resources are counted: no shared region and no capture buffer, for
// whichever displays the load happened to capture (a first secondary capture may come late).
void quiesce(Soak& soak) {
    Error ignored;
    soak.service->releaseSharedMemory(0, 0, &ignored);
    CwbServiceTestPeer peer(*soak.service);
    const int32_t selected = peer.displayId();
    for (int32_t display : {0, 3}) {
        peer.setDisplayId(display);
        soak.service->destroyCwbBuffer();
    }
    peer.setDisplayId(selected);
}

TEST(SoakTest, ClientsEventsAndFaultsTogether) {
    const double seconds = soakSeconds();
    Soak soak;
    ASSERT_NE(nullptr, soak.service);
    std::array<Tally, kClients> tallies;

    // Resources are counted with the load stopped, after a warm-up (lazily made threads, arenas)
    // and at the end: the same quiet state, so any difference is what the run left behind.
    const double warmSeconds = std::max(1.0, seconds / 4);
    runLoad(soak, warmSeconds, tallies);
    quiesce(soak);
    const size_t warmRss = residentBytes();
    const cwbtest::ProcessResources warm = cwbtest::ProcessResources::now();
    runLoad(soak, std::max(1.0, seconds - warmSeconds), tallies);
    quiesce(soak);
    const size_t endRss = residentBytes();
    const cwbtest::ProcessResources end = cwbtest::ProcessResources::settled(warm);

    uint64_t calls = 0, exact = 0;
    for (int id = 0; id < kClients; ++id) {
        calls += tallies[id].calls;
        exact += tallies[id].exact;
        EXPECT_TRUE(tallies[id].wrong.empty())
                << "client " << id << ": " << tallies[id].wrong.front() << " ("
                << tallies[id].wrong.size() << " faults)";
        EXPECT_GT(tallies[id].calls, 0u) << "client " << id;
    }
    const double warmMb = static_cast<double>(warmRss) / 1048576.0;
    const double endMb = static_cast<double>(endRss) / 1048576.0;
    printf("soak: %.1f s, %llu requests (%.0f/s), %llu exact answers, RSS %.1f MB after warm-up, "
           "%.1f MB at the end (%+.2f%%)\n",
           seconds, static_cast<unsigned long long>(calls), static_cast<double>(calls) / seconds,
           static_cast<unsigned long long>(exact), warmMb, endMb,
           warmRss == 0 ? 0.0 : (endMb - warmMb) / warmMb * 100.0);
    printf("soak: growth after warm-up: descriptors %+ld, threads %+ld, mappings %+ld\n",
           end.descriptors - warm.descriptors, end.threads - warm.threads,
           end.mappings - warm.mappings);
    EXPECT_GT(exact, 0u);
    // Descriptors and threads come back exactly, mappings of files and shared memory nearly so.
    EXPECT_TRUE(end.descriptors == warm.descriptors && end.threads == warm.threads &&
                end.mappings <= warm.mappings + kMappingSlack);  // growth printed above
    // Flat after warm-up, with a few MB of slack for allocator and sanitizer bookkeeping; short
    // runs end while the sanitizers' own tables still grow.
    if (seconds >= kMemoryCheckSeconds) {
        EXPECT_LE(endRss, warmRss + warmRss / 20 + (8u << 20));
    }
}

}  // namespace
}  // namespace cwbsoak
