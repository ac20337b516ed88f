// dumpsys output through the registered binder: counters and the last requests after a scripted
// session, and a dump that does not wait behind a capture in flight.
#include <android/binder_ibinder.h>
#include <host/binder_process.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utils/Timers.h>

#include <atomic>
#include <functional>
#include <regex>
#include <sstream>
#include <thread>

#include "capture_helpers.h"

namespace cwbtest {
namespace {

// What dumpsys would print, taken from its own process through the binder the service registered.
std::string dumpsys(const char* arg = nullptr) {
    host::binder::ProcessScope in(host::binder::newProcess("dumpsys"));
    ndk::SpAIBinder binder = host::binder::lookup("vendor.zarel.hardware.cwb.ICwbService/default");
    if (binder.get() == nullptr) return "no service";
    ndk::ScopedFileDescriptor fd(memfd_create("dumpsys", MFD_CLOEXEC));
    const char* args[] = {arg};
    if (AIBinder_dump(binder.get(), fd.get(), args, arg != nullptr ? 1 : 0) != STATUS_OK) {
        return "dump failed";
    }
    std::string text(static_cast<size_t>(lseek(fd.get(), 0, SEEK_CUR)), '\0');
    if (pread(fd.get(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
        return "short read";
    }
    return text;
}

// "  name: value" lines of one section.
std::map<std::string, uint64_t> section(const std::string& dump, const std::string& title) {
    std::map<std::string, uint64_t> out;
    std::istringstream in(dump.substr(dump.find(title + ":\n") + title.size() + 2));
    for (std::string line; std::getline(in, line) && line.rfind("  ", 0) == 0;) {
        const size_t colon = line.find(": ");
        out[line.substr(2, colon - 2)] = std::stoull(line.substr(colon + 2));
    }
    return out;
}

// The last-request lines without their timings, and the durations in ms.
std::vector<std::pair<std::string, double>> lastRequests(const std::string& dump) {
    std::vector<std::pair<std::string, double>> out;
    std::istringstream in(dump.substr(dump.find("Last requests")));
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line) && line.rfind("  ", 0) == 0) {
        const size_t took = line.find(", took ");
        out.emplace_back(line.substr(2, took - 2), std::stod(line.substr(took + 7)));
    }
    return out;
}

struct Step {
    std::function<void()> act;
    std::string record;  // the line dump shows for it, without timings
    double minMs = 0.0;  // a lower bound the duration must respect
};

class DumpTest : public CaptureTest {
  protected:
    Error err = Error::NONE;
    Rgb colour;
    bool flag = false;
    std::vector<float> lumas;
    std::vector<int32_t> values;
    Histogram histogram;

    // A new frame, and the 50 ms capture gate waited out without asking the service, which would
    // count a refusal.
    void fresh() {
        composer->layerChange();
        EXPECT_TRUE(waitFor([this] {
            return systemTime(SYSTEM_TIME_MONOTONIC) > peer->lastCwbTime() + 50'000'000;
        }));
    }
};

// Every line of the dump after a state in which the fields differ: a value printed in another's
// place shows. The counters are raised by real requests, each to its own number.
TEST_F(DumpTest, ReadsBackWholeAfterAScriptedState) {
    setProp("ro.vendor.zarel.display.cwb.aod_forbidden", "1");
    setProp("ro.vendor.zarel.display.cwb.apl_read_support", "1");
    setProp("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
    addSecondary();
    bootOn();
    ndk::ScopedFileDescriptor region(memfd_create("region", MFD_CLOEXEC));
    ASSERT_EQ(0, ftruncate(region.get(), 4096));
    const Rect small = rect(0, 0, 4, 2), tiny = rect(0, 0, 2, 2);
    auto copy = [&](int32_t size) {
        service->getSharedData(5, small, region, size, &values, &err);
    };
    auto times = [](int n, const std::function<void()>& f) {
        while (n-- > 0) f();
    };
    auto rgbs = [&](int n, const Rect& r) {
        times(n, [&] { service->getRGBValue(r, &colour, &err); });
    };
    auto fault = [&](Outcome outcome) {
        vendor().pushOutcome(outcome);
        fresh();
        rgbs(1, rect(0, 0, 8, 8));
    };
    fresh();
    times(12, [&] { service->getLumasValue(tiny, &lumas, &err); });  // one capture, 11 hits
    fresh();
    times(13, [&] { service->getHistogramValue(tiny, &histogram, &err); });
    service->initializeSharedMemory(0, 4096, region, &err);
    for (int i = 0; i < 36; ++i) {  // 20 copies and 16 refusals: six pauses
        copy(i < 16 ? 10 : 4096);
        if (i % 6 == 5) composer->layerChange();
    }
    fresh();
    rgbs(9, tiny);
    peer->setDisplayId(-1);
    rgbs(8, tiny);
    peer->setDisplayId(0);
    rgbs(12, rect(10, 10, 5, 5));
    service->disable(&flag);
    rgbs(13, tiny);
    service->enable(&flag);
    peer->holdRequestLock();
    rgbs(4, tiny);
    peer->releaseRequestLock();
    composer->powerMode(0, 0);
    rgbs(14, rect(0, 0, 3, 3));
    composer->powerMode(0, 2);
    times(2, [&] { fault(Outcome::Refuse); });
    fresh();

    const std::vector<Step> script = {
            {[&] { service->getRGBValue(rect(10, 10, 5, 5), &colour, &err); },
             "getRGBValue 10,10,5,5 -> INVALID_ARGUMENT"},
            {[&] { service->getRGBValue(small, &colour, &err); }, "getRGBValue 0,0,4,2 -> NONE"},
            {[&] { service->initializeSharedMemory(0, 4096, region, &err); },
             "initializeSharedMemory 4096 -> -"},
            {[&] { copy(4096); }, "getSharedData 5 0,0,4,2 -> NONE"},
            {[&] { copy(10); }, "getSharedData 5 0,0,4,2 -> INVALID_ARGUMENT"},
            {[&] { copy(4096); }, "getSharedData 5 0,0,4,2 -> NONE"},
            {[&] { copy(4096); }, "getSharedData 5 0,0,4,2 -> NONE"},
            {[&] { copy(4096); }, "getSharedData 5 0,0,4,2 -> NONE"},
            {[&] { copy(4096); }, "getSharedData 5 0,0,4,2 -> NONE"},  // sixth attempt: pause
            {[&] { service->getRGBValue(small, &colour, &err); }, "getRGBValue 0,0,4,2 -> NONE"},
            {[&] { fault(Outcome::Error); }, "getRGBValue 0,0,8,8 -> FAILED"},
            {[&] { fault(Outcome::Refuse); }, "getRGBValue 0,0,8,8 -> FAILED"},
            {[&] { fault(Outcome::Error); }, "getRGBValue 0,0,8,8 -> FAILED"},
            {[&] { fault(Outcome::Drop); }, "getRGBValue 0,0,8,8 -> FAILED", 1000.0},
            {[&] { service->disable(&flag); }, "disable -> true"},
            {[&] { service->getHistogramValue(small, &histogram, &err); },
             "getHistogramValue 0,0,4,2 -> FAILED"},
            {[&] { service->enable(&flag); }, "enable -> true"},
            {[&] {
                 peer->holdRequestLock();
                 service->getLumasValue(small, &lumas, &err);
                 peer->releaseRequestLock();
             },
             "getLumasValue 0,0,4,2 -> FAILED", 50.0},
            {[&] {
                 composer->powerMode(0, 0);
                 service->getLumasValue(small, &lumas, &err);
             },
             "getLumasValue 0,0,4,2 -> SCREEN_OFF"},
            {[&] { service->getCwbValue(99, small, &values, &err); },
             "getCwbValue 99 0,0,4,2 -> -"},
            {[&] { service->getSharedData(3, small, region, 0, &values, &err); },
             "getSharedData 3 0,0,4,2 -> NONE"},
    };
    for (const Step& step : script) step.act();
    composer->powerMode(3, 0);
    composer->powerMode(0, 2);
    composer->colorMode(0, 9, 258);
    composer->colorMode(3, 5, 1);
    composer->aodLayer(false);
    composer->fodLayer(true);
    times(2, [&] { composer->layerChange(); });

    const std::string dump = dumpsys();
    const std::string head = dump.substr(0, dump.find("Last requests"));
    EXPECT_EQ(R"(vendor.zarel.hardware.cwb.ICwbService/default, interface version 2
Settings:
  rotate: 0 (main 0, sec 0)
  roi: 0, aod forbidden: 1, fod forbidden: 0, apl read: 1
  weights: main 0 (0 values), sec 0 (0 values)
  sampler: on, ct_range 0,10,245,255
Status:
  cwb status: 1, enabled: 1, serving: 1
  post process: 0, debug log: 0, dump: 0, post processing disabled: 0
  power mode: main 2, sec 0, cached 2
  colour mode: main 9 intent 258, sec 5 intent 1
  aod layer: 0, fod layer: 1, panel apl: 0
  frame current: 0, layer changes since capture: 2
  capture mode: 3 (AI)
Displays:
  serving: 0, main id: 0, secondary id: 3
  main configurations: 1, active 0
    *0: 1080x2400, vsync 16666666 ns
  secondary configurations: 1, active 0
    *0: 720x1600, vsync 16666666 ns
Callbacks: 0
Last completion: _ s ago, none waiting
Shared memory: 4096 bytes mapped, copies since pause 0, paused 0
Capture buffers:
  main: 1080x2400, pitch 1088 px, 7833600 bytes, format 3
  secondary: none
Caches: rgb 0, luma 0, histogram 0
Request state: power mode 0, aod captures 3, last verdicts pure 1, black/white 0
Counters:
  capture requests: 10
  captures: 4
  rgb cache hits: 9
  luma cache hits: 11
  histogram cache hits: 12
  refused disabled: 14
  refused no display: 8
  refused rectangle: 13
  refused busy: 5
  refused screen off: 15
  refused capture gate: 0
  capture failed: 6
  vendor refused: 3
  vendor errors: 2
  vendor time-outs: 1
  copies: 25
  copy refusals: 17
  pauses: 7
Calls:
  getRGBValue: 69
  getLumasValue: 14
  getHistogramValue: 14
  enable: 2
  disable: 2
  getCwbValue: 1
  initializeSharedMemory: 2
  getSharedData: 43
)",
              std::regex_replace(head, std::regex("completion: [0-9.]+ s"), "completion: _ s"));
    // The last requests, newest first, each with its own duration.
    const auto shown = lastRequests(dump);
    ASSERT_EQ(8u, shown.size()) << dump;
    for (size_t i = 0; i < shown.size(); ++i) {
        const Step& step = script[script.size() - 1 - i];
        EXPECT_EQ(step.record, shown[i].first) << "newest - " << i;
        EXPECT_GE(shown[i].second, step.minMs) << step.record;
    }
}

TEST_F(DumpTest, DoesNotWaitBehindACaptureInFlight) {
    bootOn();
    vendor().setManualCompletion(true);
    std::thread client([&] { service->getRGBValue(rect(0, 0, 8, 8), &colour, &err); });
    ASSERT_TRUE(waitFor([&] { return vendor().pendingCount() == 1; }));

    const auto start = std::chrono::steady_clock::now();
    const std::string busy = dumpsys();
    const auto took = std::chrono::steady_clock::now() - start;
    // The lock is tried for 5 ms; the rest of the dump takes no lock a capture holds.
    EXPECT_LT(took, std::chrono::milliseconds(250));
    EXPECT_NE(std::string::npos, busy.find("Request lock busy (capture in flight)")) << busy;
    EXPECT_EQ(std::string::npos, busy.find("Capture buffers:")) << busy;
    EXPECT_NE(std::string::npos, busy.find("Last completion: none")) << busy;

    ASSERT_TRUE(vendor().completeNext());
    client.join();
    EXPECT_EQ(Error::NONE, err);
    const std::string idle = dumpsys();
    EXPECT_NE(std::string::npos, idle.find("Capture buffers:\n  main: 1080x2400")) << idle;
    EXPECT_NE(std::string::npos, idle.find("Caches: rgb 1, luma 0, histogram 0")) << idle;
}

// Binder threads record while dumpsys reads: every record shown is whole, every call counted.
TEST_F(DumpTest, RecordsStayWholeUnderConcurrentCallsAndDumps) {
    bootOn();
    constexpr int kThreads = 4;
    constexpr int kCalls = 2000;
    std::atomic<bool> done{false};
    std::vector<std::string> torn;
    std::thread reader([&] {
        while (!done) {
            for (const auto& [line, ms] : lastRequests(dumpsys())) {
                // Each writer uses its own method and arguments; a mix would be a torn record.
                if (line != "reserved -> -" && line != "getCwbPostProcessStatus -> false" &&
                    line != "setCwbPostProcessStatus -> NONE" &&
                    line != "getScreenResolution -> NONE") {
                    torn.push_back(line);
                }
            }
        }
    });
    std::vector<std::thread> writers;
    for (int t = 0; t < kThreads; ++t) {
        writers.emplace_back([&, t] {
            bool flag = false;
            Error result = Error::NONE;
            std::vector<int32_t> out;
            for (int i = 0; i < kCalls; ++i) {
                if (t == 0) service->reserved(i, t);
                if (t == 1) service->getCwbPostProcessStatus(&flag);
                if (t == 2) service->setCwbPostProcessStatus(false, &result);
                if (t == 3) service->getScreenResolution(0, &out, &result);
            }
        });
    }
    for (std::thread& w : writers) w.join();
    done = true;
    reader.join();
    EXPECT_TRUE(torn.empty()) << torn.size() << " torn, first: " << torn.front();
    const auto calls = section(dumpsys(), "Calls");
    for (const char* method : {"reserved", "getCwbPostProcessStatus", "setCwbPostProcessStatus",
                               "getScreenResolution"}) {
        EXPECT_EQ(static_cast<uint64_t>(kCalls), calls.at(method)) << method;
    }
}

}  // namespace
}  // namespace cwbtest
