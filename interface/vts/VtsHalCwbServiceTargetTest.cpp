// ICwbService as a client sees it through the service manager; nothing here depends on what the
// screen shows.
#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>
#include <aidl/vendor/zarel/hardware/cwb/ICwbService.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::aidl::vendor::zarel::hardware::cwb::BnCwbCallback;
using ::aidl::vendor::zarel::hardware::cwb::Error;
using ::aidl::vendor::zarel::hardware::cwb::Histogram;
using ::aidl::vendor::zarel::hardware::cwb::ICwbService;
using ::aidl::vendor::zarel::hardware::cwb::Rect;
using ::aidl::vendor::zarel::hardware::cwb::Rgb;

constexpr auto kNotifyTimeout = std::chrono::seconds(2);
constexpr int32_t kInt32Max = std::numeric_limits<int32_t>::max();
constexpr uint32_t kRecordMarker = 0xDEADBEEF;

// A fraction of the screen: low 24 bits in units of 1/100000, every field negative.
int32_t frac(int32_t units) {
    return static_cast<int32_t>(0x80000000u | static_cast<uint32_t>(units));
}

int32_t low16(Error word) {
    return static_cast<int32_t>(static_cast<uint32_t>(word) & 0xFFFF);
}

int64_t bootTimeNs() {
    timespec ts{};
    clock_gettime(CLOCK_BOOTTIME, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

int64_t joinTime(int32_t high, int32_t low) {
    return static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(high)) << 32) |
                                static_cast<uint32_t>(low));
}

class StatusRecorder : public BnCwbCallback {
  public:
    ndk::ScopedAStatus notifyCwbStatus(bool status) override {
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mStatuses.push_back(status);
        }
        mArrived.notify_all();
        return ndk::ScopedAStatus::ok();
    }

    // Waits for more than n notifications; all of them so far.
    std::vector<bool> waitBeyond(size_t n) {
        std::unique_lock<std::mutex> lock(mMutex);
        mArrived.wait_for(lock, kNotifyTimeout, [&] { return mStatuses.size() > n; });
        return mStatuses;
    }

  private:
    std::mutex mMutex;
    std::condition_variable mArrived;
    std::vector<bool> mStatuses;
};

// A client's shared-memory region.
struct Region {
    explicit Region(size_t size) : size(size) {
        fd = memfd_create("vts-cwb-region", MFD_CLOEXEC);
        if (fd < 0 || ftruncate(fd, static_cast<off_t>(size)) != 0) return;
        void* mapped = mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
        if (mapped != MAP_FAILED) base = static_cast<const uint8_t*>(mapped);
    }
    ~Region() {
        if (base != nullptr) munmap(const_cast<uint8_t*>(base), size);
        if (fd >= 0) close(fd);
    }
    ndk::ScopedFileDescriptor handle() const { return ndk::ScopedFileDescriptor(dup(fd)); }

    size_t size;
    int fd = -1;
    const uint8_t* base = nullptr;
};

class CwbServiceAidl : public ::testing::Test {
  protected:
    void SetUp() override {
        // Callbacks arrive on a binder thread of this process.
        ABinderProcess_setThreadPoolMaxThreadCount(1);
        ABinderProcess_startThreadPool();
        const std::string instance = std::string(ICwbService::descriptor) + "/default";
        service = ICwbService::fromBinder(
                ndk::SpAIBinder(AServiceManager_waitForService(instance.c_str())));
        ASSERT_NE(nullptr, service) << instance;
        bool result = false;
        ASSERT_TRUE(service->enable(&result).isOk());
    }

    // A busy service or the 50 ms capture gate answers FAILED: asked again for up to a second.
    template <typename Request>
    Error untilNotFailed(Request request) {
        Error result = Error::FAILED;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        while (std::chrono::steady_clock::now() < deadline) {
            EXPECT_TRUE(request(&result).isOk());
            if (low16(result) != static_cast<int32_t>(Error::FAILED)) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return result;
    }
    Error captureRgb(const Rect& r, Rgb* rgb) {
        return untilNotFailed([&](Error* e) { return service->getRGBValue(r, rgb, e); });
    }

    // The three statistics answer `expected` with zeroed outputs.
    void expectStatisticsRefused(const Rect& r, Error expected) {
        Rgb rgb;
        rgb.r = rgb.g = rgb.b = 7;
        Error result = Error::NONE;
        ASSERT_TRUE(service->getRGBValue(r, &rgb, &result).isOk());
        EXPECT_EQ(expected, result);
        EXPECT_EQ(0, rgb.r + rgb.g + rgb.b);
        EXPECT_TRUE(rgb.extra.empty());
        std::vector<float> lumas;
        ASSERT_TRUE(service->getLumasValue(r, &lumas, &result).isOk());
        EXPECT_EQ(expected, result);
        EXPECT_EQ(std::vector<float>{0.0f}, lumas);
        Histogram histogram;
        histogram.counts.fill(1);
        ASSERT_TRUE(service->getHistogramValue(r, &histogram, &result).isOk());
        EXPECT_EQ(expected, result);
        for (int32_t count : histogram.counts) ASSERT_EQ(0, count);
    }

    std::shared_ptr<ICwbService> service;
};

TEST_F(CwbServiceAidl, ReportsTheFrozenVersionAndHash) {
    int32_t version = 0;
    ASSERT_TRUE(service->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(2, version);
    EXPECT_EQ(ICwbService::version, version);
    std::string hash;
    ASSERT_TRUE(service->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(ICwbService::hash, hash);
    EXPECT_EQ(40u, hash.size());
    EXPECT_EQ(std::string::npos, hash.find_first_not_of("0123456789abcdef")) << hash;
}

class CwbServiceAidlBadRect : public CwbServiceAidl, public ::testing::WithParamInterface<Rect> {};

TEST_P(CwbServiceAidlBadRect, StatisticsRefuseTheRectangle) {
    const Rect r = GetParam();
    expectStatisticsRefused(r, Error::INVALID_ARGUMENT);
    // getCwbValue passes the outcome on in its low 16 bits, with the full status vector.
    std::vector<int32_t> values;
    Error result = Error::NONE;
    ASSERT_TRUE(service->getCwbValue(1, r, &values, &result).isOk());
    EXPECT_EQ(Error::INVALID_ARGUMENT, result);
    ASSERT_EQ(9u, values.size());
    EXPECT_EQ((std::vector<int32_t>{0, 0, 0, 0}),
              std::vector<int32_t>(values.begin(), values.begin() + 4));

    // The shared-data request checks the same way and leaves its status entries out.
    Region region(64);
    values.clear();
    ASSERT_TRUE(service->getSharedData(2, r, region.handle(), 0, &values, &result).isOk());
    EXPECT_EQ(Error::INVALID_ARGUMENT, result);
    EXPECT_TRUE(values.empty());
}

INSTANTIATE_TEST_SUITE_P(Rectangles, CwbServiceAidlBadRect,
                         ::testing::Values(Rect{10, 10, 10, 20}, Rect{10, 20, 20, 10},
                                           Rect{30, 10, 20, 20}, Rect{-1, 0, 10, 10},
                                           Rect{0, 0, kInt32Max, kInt32Max}, Rect{0, 0, 100000, 4},
                                           Rect{frac(0), frac(0), frac(200000), frac(50000)},
                                           Rect{frac(50000), frac(0), frac(50000), frac(100000)}));

TEST_F(CwbServiceAidl, GetCwbValueRefusesUnknownFeatures) {
    // Ids in range without a request of their own (4, 14) answer no values either.
    for (int32_t feature : {0, -1, 15, std::numeric_limits<int32_t>::min(), kInt32Max, 4, 14}) {
        std::vector<int32_t> values;
        Error result = Error::NONE;
        ASSERT_TRUE(service->getCwbValue(feature, Rect{0, 0, 4, 2}, &values, &result).isOk());
        if (feature < 1 || feature > 14) {
            EXPECT_EQ(Error::INVALID_ARGUMENT, result) << feature;
        }
        EXPECT_TRUE(values.empty()) << feature;
    }
}

TEST_F(CwbServiceAidl, GetCwbValueStatusVectors) {
    const Rect r{frac(0), frac(0), frac(1000), frac(1000)};
    struct Feature {
        int32_t id;
        size_t analysis;  // entries before the interval
    };
    for (const Feature& f : {Feature{1, 4}, Feature{2, 1}}) {
        std::vector<int32_t> values;
        Error result = Error::NONE;
        const int64_t before = bootTimeNs();
        ASSERT_TRUE(service->getCwbValue(f.id, r, &values, &result).isOk());
        const int64_t after = bootTimeNs();
        ASSERT_EQ(f.analysis + 5, values.size()) << f.id;
        const int32_t outcome = static_cast<int32_t>(result);
        EXPECT_TRUE(outcome >= 0 && outcome <= 3) << f.id << ": " << outcome;
        if (f.id == 1) {
            for (int i = 0; i < 3; ++i) EXPECT_TRUE(values[i] >= 0 && values[i] <= 255);
            EXPECT_TRUE(values[3] >= 0 && values[3] <= 3) << "colour state " << values[3];
        } else {
            EXPECT_TRUE(values[0] >= 0 && values[0] <= 10000) << "luma " << values[0];
        }
        const int64_t start = joinTime(values[f.analysis], values[f.analysis + 1]);
        const int64_t end = joinTime(values[f.analysis + 2], values[f.analysis + 3]);
        EXPECT_LE(start, end);
        EXPECT_GE(end, before);
        EXPECT_LE(end, after);
        EXPECT_GT(values[f.analysis + 4], 0) << "panel loading";
    }

    // The secondary display: refused when the device has none, else the same shape.
    std::vector<int32_t> values;
    Error result = Error::NONE;
    ASSERT_TRUE(service->getCwbValue(3, r, &values, &result).isOk());
    EXPECT_TRUE((result == Error::INVALID_ARGUMENT && values.empty()) || values.size() == 9u)
            << values.size();
    // Back to the main display for whoever asks next.
    ASSERT_TRUE(service->getCwbValue(1, r, &values, &result).isOk());
}

TEST_F(CwbServiceAidl, CallbacksFollowTheServiceStatus) {
    auto recorder = ndk::SharedRefBase::make<StatusRecorder>();
    Error result = Error::FAILED;
    ASSERT_TRUE(service->registerCallback(recorder, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    std::vector<bool> seen = recorder->waitBeyond(0);
    ASSERT_EQ(1u, seen.size()) << "no notification at registration";
    const bool available = seen[0];

    bool done = false;
    ASSERT_TRUE(service->disable(&done).isOk());
    EXPECT_TRUE(done);
    seen = recorder->waitBeyond(1);
    ASSERT_EQ(2u, seen.size()) << "disable() did not notify";
    EXPECT_FALSE(seen[1]);
    expectStatisticsRefused(Rect{0, 0, 4, 2}, Error::FAILED);  // statistics fail while disabled

    ASSERT_TRUE(service->enable(&done).isOk());
    EXPECT_TRUE(done);
    seen = recorder->waitBeyond(2);
    ASSERT_EQ(3u, seen.size()) << "enable() did not notify";
    EXPECT_EQ(available, seen[2]);

    ASSERT_TRUE(service->unregisterCallback(recorder, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    // Unregistering what is not registered changes nothing and succeeds.
    ASSERT_TRUE(service->unregisterCallback(recorder, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
}

TEST_F(CwbServiceAidl, ControlsAnswerNone) {
    bool original = false;
    ASSERT_TRUE(service->getCwbPostProcessStatus(&original).isOk());
    Error result = Error::FAILED;
    ASSERT_TRUE(service->setCwbPostProcessStatus(!original, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    bool now = original;
    ASSERT_TRUE(service->getCwbPostProcessStatus(&now).isOk());
    EXPECT_EQ(!original, now);
    ASSERT_TRUE(service->setCwbPostProcessStatus(original, &result).isOk());

    // -1 leaves a switch alone; entries past the third are ignored.
    for (const std::vector<int32_t>& debug :
         {std::vector<int32_t>{}, std::vector<int32_t>{-1, -1, -1},
          std::vector<int32_t>{-1, -1, -1, 5, 9}}) {
        result = Error::FAILED;
        ASSERT_TRUE(service->setDebug(debug, &result).isOk());
        EXPECT_EQ(Error::NONE, result);
    }
    EXPECT_TRUE(service->reserved(std::numeric_limits<int32_t>::min(), kInt32Max).isOk());
    EXPECT_TRUE(service->reserved(0, -1).isOk());
}

TEST_F(CwbServiceAidl, SharedMemoryRoundTrip) {
    Region region(4096);
    ASSERT_NE(nullptr, region.base);
    Error result = Error::NONE;

    // A region that cannot be mapped is refused with the service-specific error -1.
    ndk::ScopedAStatus status = service->initializeSharedMemory(0, 0, region.handle(), &result);
    ASSERT_FALSE(status.isOk());
    EXPECT_EQ(EX_SERVICE_SPECIFIC, status.getExceptionCode());
    EXPECT_EQ(-1, status.getServiceSpecificError());
    EXPECT_FALSE(
            service->initializeSharedMemory(0, 64, ndk::ScopedFileDescriptor(), &result).isOk());

    ASSERT_TRUE(service->initializeSharedMemory(0, 4096, region.handle(), &result).isOk());
    EXPECT_EQ(Error::NONE, result);

    // Capture mode 2 (legacy): five status entries, the crop area of the checked rectangle.
    std::vector<int32_t> values;
    const Rect crop{0, 0, 4, 2};
    ASSERT_TRUE(service->getSharedData(2, crop, region.handle(), 0, &values, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    ASSERT_EQ(5u, values.size());
    EXPECT_TRUE(values[0] == 0 || values[0] == 1);
    EXPECT_EQ(8, values[1] * values[2]);  // 4 x 2, or 2 x 4 on a rotated panel
    EXPECT_GT(values[3], 0);
    EXPECT_GT(values[4], 0);

    Rgb rgb;
    const Error captured = captureRgb(crop, &rgb);
    if (low16(captured) != static_cast<int32_t>(Error::NONE)) {
        ASSERT_TRUE(service->releaseSharedMemory(0, 0, &result).isOk());
        GTEST_SKIP() << "no frame captured (" << low16(captured) << "): the display is off";
    }
    std::vector<int32_t> resolution;
    ASSERT_TRUE(service->getScreenResolution(0, &resolution, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    ASSERT_EQ(2u, resolution.size());
    EXPECT_GT(resolution[0], 0);  // height
    EXPECT_GT(resolution[1], 0);  // row pitch in pixels

    // A record too large for the declared buffer size is refused without a record.
    values.clear();
    status = service->getSharedData(5, crop, region.handle(), 8 + 24 + 3, &values, &result);
    const bool paused = status.isOk() && values.size() == 5 && values[0] == 1;
    if (!paused) {
        ASSERT_FALSE(status.isOk());
        EXPECT_EQ(-1, status.getServiceSpecificError());
        uint32_t marker = 0;
        memcpy(&marker, region.base + 8 + 24, sizeof(marker));
        EXPECT_NE(kRecordMarker, marker);

        // Timestamp (boot clock), 4 x 2 RGB pixels, then the marker.
        values.clear();
        const int64_t before = bootTimeNs();
        ASSERT_TRUE(
                service->getSharedData(5, crop, region.handle(), 4096, &values, &result).isOk());
        EXPECT_EQ(Error::NONE, result);
        int64_t timestamp = 0;
        memcpy(&timestamp, region.base, sizeof(timestamp));
        memcpy(&marker, region.base + 8 + 24, sizeof(marker));
        EXPECT_EQ(kRecordMarker, marker);
        EXPECT_GE(timestamp, before);
        EXPECT_LE(timestamp, bootTimeNs());
    }

    ASSERT_TRUE(service->releaseSharedMemory(0, 0, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    // Released twice: nothing left to release, still NONE.
    ASSERT_TRUE(service->releaseSharedMemory(0, 0, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    if (!paused) {
        values.clear();
        status = service->getSharedData(5, crop, region.handle(), 4096, &values, &result);
        EXPECT_FALSE(status.isOk()) << "copied into a released region";
        EXPECT_EQ(-1, status.getServiceSpecificError());
    }
}

TEST_F(CwbServiceAidl, HistogramCountsEveryPixel) {
    const Rect r{0, 0, 4, 2};
    Rgb rgb;
    if (low16(captureRgb(r, &rgb)) != static_cast<int32_t>(Error::NONE)) {
        GTEST_SKIP() << "no frame captured: the display is off";
    }
    Histogram histogram;  // captures again, once the gate lets it
    Error result =
            untilNotFailed([&](Error* e) { return service->getHistogramValue(r, &histogram, e); });
    ASSERT_EQ(Error::NONE, result);
    for (int channel = 0; channel < 3; ++channel) {
        int64_t total = 0;
        for (int level = 0; level < 256; ++level) total += histogram.counts[level * 3 + channel];
        EXPECT_EQ(8, total) << "channel " << channel;
    }
    std::vector<float> lumas;
    ASSERT_TRUE(service->getLumasValue(r, &lumas, &result).isOk());
    ASSERT_EQ(1u, lumas.size());
    EXPECT_TRUE(lumas[0] >= 0.0f && lumas[0] <= 1.0f) << lumas[0];
}

}  // namespace
