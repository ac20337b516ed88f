// The simulated device on its own: writeback into gralloc buffers, injected outcomes, ordering,
// refusals, the qservice and the sandboxed device files.
#include <IQService.h>
#include <aidl/vendor/qti/hardware/display/config/BnDisplayConfigCallback.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <binder/IServiceManager.h>
#include <device/Device.h>
#include <gtest/gtest.h>
#include <hardware/gralloc.h>
#include <host/binder_registry.h>
#include <system/graphics.h>
#include <ui/GraphicBufferAllocator.h>
#include <ui/GraphicBufferMapper.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

namespace host::device {
namespace {

using ::aidl::android::hardware::common::NativeHandle;
using config::DisplayType;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kWait{2000};
constexpr uint8_t kUntouched = 0xAB;

class RecordingCallback : public config::BnDisplayConfigCallback {
  public:
    ndk::ScopedAStatus notifyCWBBufferDone(int32_t error, const NativeHandle&) override {
        std::lock_guard<std::mutex> lock(mMutex);
        mErrors.push_back(error);
        mTimes.push_back(Clock::now());
        mChanged.notify_all();
        return ndk::ScopedAStatus::ok();
    }
    // The other notifications are never sent by the writeback path.
    ndk::ScopedAStatus notifyQsyncChange(bool, int32_t, int32_t) override { return ok(); }
    ndk::ScopedAStatus notifyIdleStatus(bool) override { return ok(); }
    ndk::ScopedAStatus notifyCameraSmoothInfo(config::CameraSmoothOp, int32_t) override {
        return ok();
    }
    ndk::ScopedAStatus notifyResolutionChange(int32_t, const config::Attributes&) override {
        return ok();
    }
    ndk::ScopedAStatus notifyFpsMitigation(int32_t, const config::Attributes&,
                                           config::Concurrency) override {
        return ok();
    }
    ndk::ScopedAStatus notifyTUIEventDone(int32_t, DisplayType, config::TUIEventType) override {
        return ok();
    }

    bool waitFor(size_t n) {
        std::unique_lock<std::mutex> lock(mMutex);
        return mChanged.wait_for(lock, kWait, [&] { return mErrors.size() >= n; });
    }
    std::vector<int32_t> errors() {
        std::lock_guard<std::mutex> lock(mMutex);
        return mErrors;
    }
    Clock::time_point time(size_t i) {
        std::lock_guard<std::mutex> lock(mMutex);
        return mTimes.at(i);
    }

  private:
    static ndk::ScopedAStatus ok() { return ndk::ScopedAStatus::ok(); }
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<int32_t> mErrors;
    std::vector<Clock::time_point> mTimes;
};

// A CPU-readable RGB_888 buffer as the library allocates it, pre-filled with kUntouched.
struct Buffer {
    Buffer(uint32_t w, uint32_t h) : width(w), height(h) {
        EXPECT_EQ(android::GraphicBufferAllocator::get().allocate(
                          w, h, HAL_PIXEL_FORMAT_RGB_888, 1,
                          GRALLOC_USAGE_SW_READ_OFTEN | GRALLOC_USAGE_SW_WRITE_OFTEN, &handle,
                          &stride, "device_test"),
                  android::OK);
        void* addr = nullptr;
        EXPECT_EQ(android::GraphicBufferMapper::get().lock(
                          handle, GRALLOC_USAGE_SW_READ_OFTEN,
                          android::Rect(0, 0, static_cast<int32_t>(w), static_cast<int32_t>(h)),
                          &addr),
                  android::OK);
        data = static_cast<uint8_t*>(addr);
        memset(data, kUntouched, static_cast<size_t>(stride) * h * 3);
    }
    ~Buffer() {
        android::GraphicBufferMapper::get().unlock(handle);
        android::GraphicBufferAllocator::get().free(handle);
    }
    NativeHandle aidl() const { return android::dupToAidl(handle); }

    // Inside [l,t,r,b) the buffer holds the frame; everywhere else, padding included, it is
    // untouched.
    void expectRegion(const Frame& frame, int l, int t, int r, int b) const {
        size_t bad = 0;
        for (uint32_t y = 0; y < height; ++y) {
            const uint8_t* row = data + static_cast<size_t>(y) * stride * 3;
            for (uint32_t x = 0; x < stride; ++x) {
                const bool inside = static_cast<int>(x) >= l && static_cast<int>(x) < r &&
                                    static_cast<int>(y) >= t && static_cast<int>(y) < b;
                const Pixel want =
                        inside ? frame.pixel(x, y) : Pixel{kUntouched, kUntouched, kUntouched};
                const Pixel got{row[x * 3], row[x * 3 + 1], row[x * 3 + 2]};
                if (got != want && bad++ < 3) {
                    ADD_FAILURE() << "pixel " << x << "," << y << " inside=" << inside;
                }
            }
        }
        EXPECT_EQ(bad, 0u);
    }

    uint32_t width, height, stride = 0;
    buffer_handle_t handle = nullptr;
    uint8_t* data = nullptr;
};

class DeviceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        vendor = config::IDisplayConfig::fromBinder(
                host::binder::lookup(SimulatedDisplayConfig::kInstance));
        ASSERT_NE(vendor, nullptr);
    }
    // A small main panel keeps buffers cheap where the size does not matter.
    void smallPanel(int32_t vsyncNs = SimulatedDisplayConfig::kVsync60Hz) {
        device.setPanelModes(PanelId::Main, {{kW, kH, vsyncNs}});
        device.setFrame(PanelId::Main, FrameKind::Mixer, *Frame::pattern("gradient", kW, kH));
    }
    binder_exception_t submit(const Buffer& buffer, config::Rect rect = {}, bool post = false,
                              DisplayType type = DisplayType::PRIMARY) {
        return vendor->setCWBOutputBuffer(callback, type, rect, post, buffer.aidl())
                .getExceptionCode();
    }

    static constexpr int kW = 64, kH = 32;
    Device device;
    SimulatedDisplayConfig& config = *device.displayConfig();
    std::shared_ptr<config::IDisplayConfig> vendor;
    std::shared_ptr<RecordingCallback> callback = ndk::SharedRefBase::make<RecordingCallback>();
};

TEST(FrameTest, Patterns) {
    const int w = 64, h = 48;
    struct Case {
        const char* name;
        int x, y;
        Pixel want;
    } cases[] = {
            {"bars", 0, 0, {255, 255, 255}},         {"bars", w * 5 / 8, 0, {255, 0, 0}},
            {"bars", w - 1, h / 2, {0, 0, 0}},       {"bars", 0, h - 1, {0, 0, 0}},
            {"bars", w - 1, h - 1, {255, 255, 255}}, {"ramp", 0, 7, {0, 0, 0}},
            {"ramp", w - 1, 7, {255, 255, 255}},     {"checker", 7, 7, {0, 0, 0}},
            {"checker", 8, 0, {255, 255, 255}},      {"checker", 8, 8, {0, 0, 0}},
            {"gradient", 0, 0, {0, 0, 128}},         {"gradient", w - 1, h - 1, {255, 255, 128}},
    };
    for (const Case& c : cases) {
        const std::optional<Frame> f = Frame::pattern(c.name, w, h);
        ASSERT_TRUE(f) << c.name;
        EXPECT_EQ(f->rgb.size(), static_cast<size_t>(w) * h * 3);
        EXPECT_EQ(f->pixel(c.x, c.y), c.want) << c.name << " at " << c.x << "," << c.y;
    }
    EXPECT_FALSE(Frame::pattern("plaid", w, h));
    EXPECT_FALSE(Frame::pattern("bars", 0, h));
}

TEST(FrameTest, DrawingClipsToTheFrame) {
    Frame f = Frame::filled(4, 3, 1, 2, 3);
    f.fillRect(-5, -5, 2, 2, {9, 9, 9});
    f.setPixel(4, 0, {7, 7, 7});
    EXPECT_EQ(f.pixel(1, 1), (Pixel{9, 9, 9}));
    EXPECT_EQ(f.pixel(2, 2), (Pixel{1, 2, 3}));
    EXPECT_EQ(f.pixel(-1, 0), Pixel{});
}

// Rect as sent, and the region the vendor must write (clipped to frame and buffer).
struct RegionCase {
    config::Rect rect;
    int l, t, r, b;
};
class RegionTest : public DeviceTest, public ::testing::WithParamInterface<RegionCase> {};

TEST_P(RegionTest, WritesOnlyTheRegionAtTheBufferPitch) {
    const Frame frame = *Frame::pattern("gradient", 1080, 2400);
    device.setFrame(PanelId::Main, FrameKind::Mixer, frame);
    Buffer buffer(1080, 2400);
    ASSERT_EQ(buffer.stride, 1088u);
    ASSERT_EQ(submit(buffer, GetParam().rect), EX_NONE);
    ASSERT_TRUE(callback->waitFor(1));
    EXPECT_EQ(callback->errors(), std::vector<int32_t>{0});
    const RegionCase& c = GetParam();
    buffer.expectRegion(frame, c.l, c.t, c.r, c.b);
}

INSTANTIATE_TEST_SUITE_P(
        Rects, RegionTest,
        ::testing::Values(RegionCase{{0, 0, 0, 0}, 0, 0, 1080, 2400},
                          RegionCase{{100, 200, 300, 400}, 100, 200, 300, 400},
                          RegionCase{{1000, 2300, 5000, 9000}, 1000, 2300, 1080, 2400},
                          RegionCase{{-10, -10, 5, 5}, 0, 0, 5, 5},
                          RegionCase{{50, 50, 40, 60}, 0, 0, 0, 0}));

TEST_F(DeviceTest, PostProcessedOutputFallsBackToTheMixer) {
    smallPanel();
    const Frame red = Frame::filled(kW, kH, 255, 0, 0), blue = Frame::filled(kW, kH, 0, 0, 255);
    device.setFrame(PanelId::Main, FrameKind::Mixer, red);
    Buffer fallback(kW, kH), post(kW, kH), mixer(kW, kH);
    ASSERT_EQ(submit(fallback, {}, true), EX_NONE);
    ASSERT_TRUE(callback->waitFor(1));
    device.setFrame(PanelId::Main, FrameKind::PostProcessed, blue);
    ASSERT_EQ(submit(post, {}, true), EX_NONE);
    ASSERT_EQ(submit(mixer, {}, false), EX_NONE);
    ASSERT_TRUE(callback->waitFor(3));
    fallback.expectRegion(red, 0, 0, kW, kH);
    post.expectRegion(blue, 0, 0, kW, kH);
    mixer.expectRegion(red, 0, 0, kW, kH);
}

TEST_F(DeviceTest, RefusesBadRequestsWithoutQueueingThem) {
    smallPanel();
    device.setPanelModes(PanelId::Secondary, {});
    Buffer buffer(kW, kH);
    const struct {
        const char* what;
        DisplayType type;
        bool nullCallback, noFd, shortInts, injected;
        binder_exception_t want;
    } cases[] = {
            {"null callback", DisplayType::PRIMARY, true, false, false, false, EX_NULL_POINTER},
            {"external", DisplayType::EXTERNAL, false, false, false, false, EX_ILLEGAL_ARGUMENT},
            {"invalid", DisplayType::INVALID, false, false, false, false, EX_ILLEGAL_ARGUMENT},
            {"no modes", DisplayType::BUILTIN2, false, false, false, false, EX_ILLEGAL_ARGUMENT},
            {"no fd", DisplayType::PRIMARY, false, true, false, false, EX_ILLEGAL_ARGUMENT},
            {"five ints", DisplayType::PRIMARY, false, false, true, false, EX_ILLEGAL_ARGUMENT},
            {"injected", DisplayType::PRIMARY, false, false, false, true, EX_TRANSACTION_FAILED},
    };
    for (const auto& c : cases) {
        NativeHandle handle = buffer.aidl();
        if (c.noFd) handle.fds.clear();
        if (c.shortInts) handle.ints.pop_back();
        if (c.injected) config.pushOutcome(SimulatedDisplayConfig::Outcome::Refuse);
        EXPECT_EQ(vendor->setCWBOutputBuffer(c.nullCallback ? nullptr : callback, c.type, {}, false,
                                             handle)
                          .getExceptionCode(),
                  c.want)
                << c.what;
        EXPECT_EQ(config.requests().back().result, c.want) << c.what;
        EXPECT_EQ(config.pendingCount(), 0u) << c.what;
    }
    EXPECT_EQ(config.requests().size(), std::size(cases));
    EXPECT_TRUE(callback->errors().empty());
}

// Completions keep request order whatever each one's latency; errors and drops write nothing.
TEST_F(DeviceTest, OutcomesInRequestOrder) {
    smallPanel();
    const Frame frame = *Frame::pattern("gradient", kW, kH);
    Buffer slowError(kW, kH), dropped(kW, kH), error(kW, kH), written(kW, kH);
    config.pushOutcome(SimulatedDisplayConfig::Outcome::Error, 11);
    device.setLatency(milliseconds(40));
    ASSERT_EQ(submit(slowError), EX_NONE);
    device.setLatency(milliseconds(0));
    config.pushOutcome(SimulatedDisplayConfig::Outcome::Drop);
    ASSERT_EQ(submit(dropped), EX_NONE);
    config.pushOutcome(SimulatedDisplayConfig::Outcome::Error, 13);
    ASSERT_EQ(submit(error), EX_NONE);
    ASSERT_EQ(submit(written), EX_NONE);
    // Once the last one is in, the dropped one can no longer come.
    ASSERT_TRUE(config.waitForCompletions(3, kWait));
    EXPECT_EQ(callback->errors(), (std::vector<int32_t>{11, 13, 0}));
    EXPECT_EQ(config.pendingCount(), 0u);
    for (const Buffer* b : {&slowError, &dropped, &error}) b->expectRegion(frame, 0, 0, 0, 0);
    written.expectRegion(frame, 0, 0, kW, kH);
}

struct LatencyCase {
    std::optional<milliseconds> latency;
    milliseconds atLeast;
};
class LatencyTest : public DeviceTest, public ::testing::WithParamInterface<LatencyCase> {};

TEST_P(LatencyTest, CompletesNoSoonerThanTheLatency) {
    smallPanel(30'000'000);
    device.setLatency(GetParam().latency);
    Buffer buffer(kW, kH);
    const Clock::time_point start = Clock::now();
    ASSERT_EQ(submit(buffer), EX_NONE);
    ASSERT_TRUE(callback->waitFor(1));
    const auto elapsed = callback->time(0) - start;
    EXPECT_GE(elapsed, GetParam().atLeast);
    EXPECT_LT(elapsed, GetParam().atLeast + kWait);
}

INSTANTIATE_TEST_SUITE_P(Latencies, LatencyTest,
                         ::testing::Values(LatencyCase{std::nullopt, milliseconds(30)},
                                           LatencyCase{milliseconds(60), milliseconds(60)}));

TEST_F(DeviceTest, ManualCompletionWaitsForTheTest) {
    smallPanel();
    const Frame frame = *Frame::pattern("gradient", kW, kH);
    config.setManualCompletion(true);
    EXPECT_FALSE(config.completeNext());
    Buffer first(kW, kH), second(kW, kH);
    ASSERT_EQ(submit(first), EX_NONE);
    EXPECT_EQ(submit(first), EX_ILLEGAL_ARGUMENT);  // still in flight
    ASSERT_EQ(submit(second), EX_NONE);
    EXPECT_EQ(config.pendingCount(), 2u);
    EXPECT_EQ(config.completionsSent(), 0u);
    ASSERT_TRUE(config.completeNext(-5));
    ASSERT_TRUE(config.completeNext(0));
    EXPECT_FALSE(config.completeNext());
    ASSERT_TRUE(config.waitForCompletions(2, kWait));
    EXPECT_EQ(callback->errors(), (std::vector<int32_t>{-5, 0}));
    first.expectRegion(frame, 0, 0, 0, 0);
    second.expectRegion(frame, 0, 0, kW, kH);
    EXPECT_EQ(submit(first), EX_NONE);  // the client's again; teardown drops it
}

TEST_F(DeviceTest, ConcurrentClientsAllComplete) {
    smallPanel();
    device.setLatency(milliseconds(0));
    constexpr int kThreads = 4, kEach = 5;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            auto cb = ndk::SharedRefBase::make<RecordingCallback>();
            Buffer buffer(kW, kH);
            for (int i = 0; i < kEach; ++i) {
                if (vendor->setCWBOutputBuffer(cb, DisplayType::PRIMARY, {}, false, buffer.aidl())
                                    .isOk() == false ||
                    !cb->waitFor(i + 1)) {
                    ++failures;
                }
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_TRUE(config.waitForCompletions(kThreads * kEach, kWait));
}

TEST_F(DeviceTest, PanelConfigurations) {
    int32_t count = -1;
    const struct {
        DisplayType type;
        int32_t count;
    } counts[] = {
            {DisplayType::PRIMARY, 2}, {DisplayType::BUILTIN2, 1}, {DisplayType::EXTERNAL, 0}};
    for (const auto& c : counts) {
        ASSERT_TRUE(vendor->getConfigCount(c.type, &count).isOk());
        EXPECT_EQ(count, c.count);
    }
    config::Attributes attr;
    ASSERT_TRUE(vendor->getDisplayAttributes(1, DisplayType::PRIMARY, &attr).isOk());
    EXPECT_EQ(attr.xRes, 1080);
    EXPECT_EQ(attr.yRes, 2400);
    EXPECT_EQ(attr.vsyncPeriod, SimulatedDisplayConfig::kVsync120Hz);
    attr.xRes = -7;
    for (int32_t index : {-1, 2}) {
        EXPECT_EQ(
                vendor->getDisplayAttributes(index, DisplayType::PRIMARY, &attr).getExceptionCode(),
                EX_ILLEGAL_ARGUMENT);
        EXPECT_EQ(attr.xRes, -7);
    }
}

TEST_F(DeviceTest, QServiceAnswersQueriesAndRecordsCommands) {
    android::sp<qService::IQService> qservice = qService::IQService::asInterface(
            android::defaultServiceManager()->checkService(android::String16("display.qservice")));
    ASSERT_NE(qservice, nullptr);
    device.qservice()->setAnswer(303, 42);
    const struct {
        uint32_t code;
        std::vector<int32_t> in;
        std::vector<int32_t> out;
    } cases[] = {{303, {1, 2}, {42}}, {304, {}, {0}}, {39, {5, 6}, {}}, {302, {3}, {}}};
    for (const auto& c : cases) {
        android::Parcel in, out;
        for (int32_t v : c.in) in.writeInt32(v);
        EXPECT_EQ(qservice->dispatch(c.code, &in, &out), android::OK);
        EXPECT_EQ(out.host_ints(), c.out) << c.code;
    }
    const std::vector<QServiceCommand> commands = device.qservice()->commands();
    ASSERT_EQ(commands.size(), std::size(cases));
    for (size_t i = 0; i < commands.size(); ++i) {
        EXPECT_EQ(commands[i].code, cases[i].code);
        EXPECT_EQ(commands[i].in, cases[i].in);
    }
}

TEST_F(DeviceTest, DeviceFilesAreSeenThroughTheirDevicePaths) {
    device.writeWeights(PanelId::Main, "{\"w\":1}");
    FILE* f = fopen(Device::kWeightsMain, "r");
    ASSERT_NE(f, nullptr);
    char text[16] = {};
    fread(text, 1, sizeof(text) - 1, f);
    fclose(f);
    EXPECT_STREQ(text, "{\"w\":1}");
    device.setAplFile("128");
    EXPECT_TRUE(std::filesystem::exists(device.hostPath(Device::kAplFile)));
    device.setAplFile(std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(device.hostPath(Device::kAplFile)));
    EXPECT_TRUE(device.dumpFiles().empty());
    std::filesystem::create_directories(device.hostPath(Device::kDumpDir));
    for (const char* name : {"b.rgb", "a.rgb"}) {
        std::ofstream(device.hostPath(Device::kDumpDir) + "/" + name) << "x";
    }
    EXPECT_EQ(device.dumpFiles(), (std::vector<std::string>{"a.rgb", "b.rgb"}));
}

TEST(DeviceLifetimeTest, TeardownDropsPendingRequestsAndCleansUp) {
    constexpr int kSmall = 16;
    auto device = std::make_unique<Device>();
    const std::string root = device->root();
    auto callback = ndk::SharedRefBase::make<RecordingCallback>();
    device->displayConfig()->setManualCompletion(true);
    ASSERT_TRUE(device->setVendorPresent(false));
    EXPECT_EQ(host::binder::lookup(SimulatedDisplayConfig::kInstance).get(), nullptr);
    ASSERT_TRUE(device->setVendorPresent(true));
    {
        Buffer buffer(kSmall, kSmall);
        ASSERT_TRUE(device->displayConfig()
                            ->setCWBOutputBuffer(callback, DisplayType::PRIMARY, {}, false,
                                                 buffer.aidl())
                            .isOk());
        const Clock::time_point start = Clock::now();
        device.reset();
        EXPECT_LT(Clock::now() - start, milliseconds(1000));
    }
    EXPECT_TRUE(callback->errors().empty());
    EXPECT_EQ(host::binder::lookup(SimulatedDisplayConfig::kInstance).get(), nullptr);
    EXPECT_EQ(android::defaultServiceManager()->checkService(android::String16("display.qservice")),
              nullptr);
    EXPECT_FALSE(std::filesystem::exists(root));
}

}  // namespace
}  // namespace host::device
