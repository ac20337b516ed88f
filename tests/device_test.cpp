// The simulated device as the service tests rely on it: writeback at the buffer's pitch with the
// padding left alone, injected outcomes, completions in request order, refusals and manual
// completion; and the vendor display-config binder types the service uses.
#include <aidl/vendor/qti/hardware/display/config/BnDisplayConfigCallback.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <device/Device.h>
#include <gtest/gtest.h>
#include <hardware/gralloc.h>
#include <host/binder_registry.h>
#include <system/graphics.h>
#include <ui/GraphicBufferAllocator.h>
#include <ui/GraphicBufferMapper.h>

#include <cstring>
#include <memory>
#include <mutex>

namespace host::device {
namespace {

using ::aidl::android::hardware::common::NativeHandle;
using config::DisplayType;
using Outcome = SimulatedDisplayConfig::Outcome;
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
        return ok();
    }
    // The writeback path sends none of these.
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
    ndk::ScopedAStatus notifyContentFps(const std::string&, int32_t) override { return ok(); }

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
    std::vector<int32_t> mErrors;
    std::vector<Clock::time_point> mTimes;
};

// A CPU-readable RGB_888 buffer as the library allocates it, pre-filled with kUntouched.
struct Buffer {
    Buffer(int w, int h) : height(h) {
        constexpr uint64_t kUsage = GRALLOC_USAGE_SW_READ_OFTEN | GRALLOC_USAGE_SW_WRITE_OFTEN;
        EXPECT_EQ(android::OK, android::GraphicBufferAllocator::get().allocate(
                                       w, h, HAL_PIXEL_FORMAT_RGB_888, 1, kUsage, &handle, &stride,
                                       "device_test"));
        void* addr = nullptr;
        EXPECT_EQ(android::OK, android::GraphicBufferMapper::get().lock(
                                       handle, kUsage, android::Rect(w, h), &addr));
        data = static_cast<uint8_t*>(addr);
        memset(data, kUntouched, size_t{stride} * h * 3);
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
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < static_cast<int>(stride); ++x) {
                const bool inside = x >= l && x < r && y >= t && y < b;
                const Pixel want =
                        inside ? frame.pixel(x, y) : Pixel{kUntouched, kUntouched, kUntouched};
                const uint8_t* p = data + (size_t{stride} * y + x) * 3;
                if (Pixel{p[0], p[1], p[2]} != want && bad++ < 3) {
                    ADD_FAILURE() << "pixel " << x << "," << y << " inside=" << inside;
                }
            }
        }
        EXPECT_EQ(bad, 0u);
    }

    int height;
    uint32_t stride = 0;
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
    void smallPanel() {
        device.setPanelModes(PanelId::Main, {{kW, kH, SimulatedDisplayConfig::kVsync60Hz}});
        device.setFrame(PanelId::Main, FrameKind::Mixer, frame);
    }
    binder_exception_t submit(const Buffer& buffer, config::Rect rect = {}, bool post = false) {
        return vendor->setCWBOutputBuffer(callback, 1, rect, post, buffer.aidl())
                .getExceptionCode();
    }

    static constexpr int kW = 64, kH = 32;
    const Frame frame = *Frame::pattern("gradient", kW, kH);
    Device device;
    SimulatedDisplayConfig& config = *device.displayConfig();
    std::shared_ptr<config::IDisplayConfig> vendor;
    std::shared_ptr<RecordingCallback> callback = ndk::SharedRefBase::make<RecordingCallback>();
};

TEST_F(DeviceTest, WritesOnlyTheRegionAtTheBufferPitch) {
    const Frame full = *Frame::pattern("gradient", 1080, 2400);
    device.setFrame(PanelId::Main, FrameKind::Mixer, full);
    // Rect as sent, and the region the vendor must write (clipped to frame and buffer).
    const struct {
        config::Rect rect;
        int l, t, r, b;
    } cases[] = {{{0, 0, 0, 0}, 0, 0, 1080, 2400},
                 {{100, 200, 300, 400}, 100, 200, 300, 400},
                 {{1000, 2300, 5000, 9000}, 1000, 2300, 1080, 2400},
                 {{-10, -10, 5, 5}, 0, 0, 5, 5},
                 {{50, 50, 40, 60}, 0, 0, 0, 0}};
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        Buffer buffer(1080, 2400);
        ASSERT_EQ(buffer.stride, 1088u);
        ASSERT_EQ(submit(buffer, cases[i].rect), EX_NONE);
        ASSERT_TRUE(config.waitForCompletions(i + 1, kWait));
        buffer.expectRegion(full, cases[i].l, cases[i].t, cases[i].r, cases[i].b);
    }
    EXPECT_EQ(callback->errors(), std::vector<int32_t>(std::size(cases), 0));
}

TEST_F(DeviceTest, RefusesBadRequestsWithoutQueueingThem) {
    smallPanel();
    device.setPanelModes(PanelId::Secondary, {});
    Buffer buffer(kW, kH);
    const struct {
        const char* what;
        int32_t dispId;
        bool nullCallback, noFd, shortInts, injected;
        binder_exception_t want;
    } cases[] = {
            {"null callback", 1, true, false, false, false, EX_NULL_POINTER},
            {"external", 2, false, false, false, false, EX_ILLEGAL_ARGUMENT},
            {"invalid", 0, false, false, false, false, EX_ILLEGAL_ARGUMENT},
            {"virtual: the secondary's host id", 3, false, false, false, false,
             EX_ILLEGAL_ARGUMENT},
            {"unknown", 5, false, false, false, false, EX_ILLEGAL_ARGUMENT},
            {"no modes", 4, false, false, false, false, EX_ILLEGAL_ARGUMENT},
            {"no fd", 1, false, true, false, false, EX_ILLEGAL_ARGUMENT},
            {"five ints", 1, false, false, true, false, EX_ILLEGAL_ARGUMENT},
            {"injected", 1, false, false, false, true, EX_TRANSACTION_FAILED},
    };
    for (const auto& c : cases) {
        NativeHandle handle = buffer.aidl();
        if (c.noFd) handle.fds.clear();
        if (c.shortInts) handle.ints.pop_back();
        if (c.injected) config.pushOutcome(Outcome::Refuse);
        EXPECT_EQ(vendor->setCWBOutputBuffer(c.nullCallback ? nullptr : callback, c.dispId, {},
                                             false, handle)
                          .getExceptionCode(),
                  c.want)
                << c.what;
        EXPECT_EQ(config.requests().back().result, c.want) << c.what;
        EXPECT_EQ(config.pendingCount(), 0u) << c.what;
    }
    EXPECT_EQ(config.requests().size(), std::size(cases));
    EXPECT_TRUE(callback->errors().empty());
}

// Completions keep request order whatever each one's latency, and none comes before its
// latency; errors and drops write nothing.
TEST_F(DeviceTest, OutcomesInRequestOrder) {
    smallPanel();
    Buffer slowError(kW, kH), dropped(kW, kH), error(kW, kH), written(kW, kH);
    config.pushOutcome(Outcome::Error, 11);
    device.setLatency(milliseconds(40));
    const Clock::time_point start = Clock::now();
    ASSERT_EQ(submit(slowError), EX_NONE);
    device.setLatency(milliseconds(0));
    config.pushOutcome(Outcome::Drop);
    ASSERT_EQ(submit(dropped), EX_NONE);
    config.pushOutcome(Outcome::Error, 13);
    ASSERT_EQ(submit(error), EX_NONE);
    ASSERT_EQ(submit(written), EX_NONE);
    // Once the last one is in, the dropped one can no longer come.
    ASSERT_TRUE(config.waitForCompletions(3, kWait));
    EXPECT_EQ(callback->errors(), (std::vector<int32_t>{11, 13, 0}));
    EXPECT_GE(callback->time(0) - start, milliseconds(40));
    EXPECT_LT(callback->time(0) - start, milliseconds(40) + kWait);
    EXPECT_EQ(config.pendingCount(), 0u);
    for (const Buffer* b : {&slowError, &dropped, &error}) b->expectRegion(frame, 0, 0, 0, 0);
    written.expectRegion(frame, 0, 0, kW, kH);
}

TEST_F(DeviceTest, ManualCompletionWaitsForTheTest) {
    smallPanel();
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

TEST_F(DeviceTest, BindersAnswerOnlyAsTheirOwnInterface) {
    const ndk::SpAIBinder binder = callback->asBinder();
    EXPECT_EQ(config::IDisplayConfigCallback::fromBinder(binder), callback);
    EXPECT_EQ(config::IDisplayConfig::fromBinder(binder), nullptr);
    EXPECT_EQ(config::IDisplayConfigCallback::fromBinder(vendor->asBinder()), nullptr);
    EXPECT_EQ(config::IDisplayConfigCallback::fromBinder(ndk::SpAIBinder()), nullptr);
    EXPECT_STREQ(AIBinder_Class_getDescriptor(AIBinder_getClass(binder.get())),
                 "vendor.qti.hardware.display.config.IDisplayConfigCallback");
    int32_t version = 0;
    EXPECT_TRUE(callback->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 13);
}

}  // namespace
}  // namespace host::device
