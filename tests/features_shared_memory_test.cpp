// Crops of the captured frame exported into a client's shared memory: the client's whole
// sequence, the capture modes, the copy throttle and every way a client can misuse the region.
#include <android/binder_status.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utils/Timers.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <fstream>
#include <thread>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID;
using host::device::Frame;

constexpr int kLegacy = 2;
constexpr int kAi = 3;
constexpr int kCopy = 5;
constexpr uint8_t kUntouched = 0x5A;
constexpr size_t kPage = 4096;

// A client's region: a memfd of fileSize bytes, mapped whole in the test so that bytes the
// service must not touch can be checked, even past the length the service maps.
class ClientRegion {
  public:
    explicit ClientRegion(size_t fileSize) : mSize(fileSize) {
        static std::atomic<int> serial{0};
        mName = "cwb_client_region_" + std::to_string(getpid()) + "_" + std::to_string(++serial);
        mFd = ndk::ScopedFileDescriptor(memfd_create(mName.c_str(), MFD_CLOEXEC));
        EXPECT_GE(mFd.get(), 0);
        EXPECT_EQ(0, ftruncate(mFd.get(), static_cast<off_t>(fileSize)));
        void* base = mmap(nullptr, fileSize, PROT_READ | PROT_WRITE, MAP_SHARED, mFd.get(), 0);
        EXPECT_NE(MAP_FAILED, base);
        mBase = static_cast<uint8_t*>(base);
        fill(kUntouched);
    }
    ~ClientRegion() { munmap(mBase, mSize); }

    const ndk::ScopedFileDescriptor& fd() const { return mFd; }
    uint8_t* data() { return mBase; }
    size_t size() const { return mSize; }
    void fill(uint8_t byte) { memset(mBase, byte, mSize); }
    int64_t timestamp() const {
        int64_t t;
        memcpy(&t, mBase, sizeof(t));
        return t;
    }
    // First byte in [from, to) that is not kUntouched, or to.
    size_t firstTouched(size_t from, size_t to) const {
        for (size_t i = from; i < to && i < mSize; ++i) {
            if (mBase[i] != kUntouched) return i;
        }
        return to;
    }
    // Mappings of this memfd in the process, the test's own included.
    size_t mappings() const {
        std::ifstream maps("/proc/self/maps");
        size_t n = 0;
        for (std::string line; std::getline(maps, line);) {
            if (line.find("/memfd:" + mName + " ") != std::string::npos) ++n;
        }
        return n;
    }

  private:
    std::string mName;
    ndk::ScopedFileDescriptor mFd;
    uint8_t* mBase = nullptr;
    size_t mSize = 0;
};

struct Shared {
    ndk::ScopedAStatus status;
    Error error = Error::NONE;
    std::vector<int32_t> values;
};

bool serviceSpecificMinusOne(const ndk::ScopedAStatus& status) {
    return status.getExceptionCode() == EX_SERVICE_SPECIFIC &&
           status.getServiceSpecificError() == -1;
}

class SharedMemoryTest : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        device->setFrame(PanelId::Main, FrameKind::Mixer, frame);
    }

    // Every byte of a row differs from its neighbours and from the rows around it, so that a
    // wrong pitch, offset or channel order shows. Built once: the pixel loop is not free.
    static const Frame& screen() {
        static const Frame f = [] {
            Frame out = Frame::filled(1080, 2400, 0, 0, 0);
            for (int y = 0; y < out.height; ++y) {
                uint8_t* row = out.rgb.data() + static_cast<size_t>(y) * out.width * 3;
                for (int x = 0; x < out.width; ++x) {
                    row[x * 3 + 0] = static_cast<uint8_t>(x);
                    row[x * 3 + 1] = static_cast<uint8_t>(y);
                    row[x * 3 + 2] = static_cast<uint8_t>(x * 7 + y * 13);
                }
            }
            return out;
        }();
        return f;
    }

    ndk::ScopedAStatus init(const ClientRegion& region, int32_t size) {
        Error ignored = Error::FAILED;
        return service->initializeSharedMemory(0, size, region.fd(), &ignored);
    }

    Shared shared(int32_t id, const Rect& r, int32_t bufferSize,
                  const ndk::ScopedFileDescriptor& fd = ndk::ScopedFileDescriptor()) {
        Shared out;
        out.error = Error::FAILED;
        out.status = service->getSharedData(id, r, fd, bufferSize, &out.values, &out.error);
        return out;
    }

    // A capture in the current mode; without ROI the whole screen is written back.
    void capture(const Rect& r = rect(0, 0, 10, 10)) {
        ASSERT_TRUE(gateOpen());
        ASSERT_EQ(0, rgb(r).first & 0xFFFF);
    }

    std::vector<int32_t> resolution() {
        std::vector<int32_t> values;
        Error ignored;
        EXPECT_TRUE(service->getScreenResolution(0, &values, &ignored).isOk());
        return values;
    }

    // The record of crop r of the frame, as it must sit in the region.
    ::testing::AssertionResult holdsRecord(ClientRegion& region, const Rect& r) {
        const size_t w = r.right - r.left;
        const size_t h = r.bottom - r.top;
        const uint8_t* crop = region.data() + 8;
        for (size_t y = 0; y < h; ++y) {
            if (memcmp(crop + y * w * 3, frame.row(r.top + y) + r.left * 3, w * 3) != 0) {
                return ::testing::AssertionFailure() << "crop row " << y << " differs";
            }
        }
        const uint8_t marker[4] = {0xEF, 0xBE, 0xAD, 0xDE};
        if (memcmp(crop + h * w * 3, marker, 4) != 0) {
            return ::testing::AssertionFailure() << "no marker after the crop";
        }
        const size_t end = 8 + h * w * 3 + 4;
        if (region.firstTouched(end, region.size()) != region.size()) {
            return ::testing::AssertionFailure() << "bytes after the record were written";
        }
        return ::testing::AssertionSuccess();
    }

    const Frame& frame = screen();
};

// ---- The client's sequence ----

TEST_F(SharedMemoryTest, ClientSequenceWithAiCaptureAndThrottle) {
    setProp("ro.vendor.zarel.display.cwb.roi", "1");
    bootOn();
    ClientRegion region(64 * 1024);
    const Rect crop = rect(300, 400, 400, 500);  // 100 x 100: a record of 30012 bytes
    const std::vector<int32_t> status = {0, 100, 100, 1080, 2400};

    ASSERT_TRUE(init(region, 40000).isOk());
    EXPECT_TRUE(peer->sharedMemoryMapped());
    EXPECT_EQ(2u, region.mappings());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR,
                           "MORVIK_AI::initializeSharedMemory Initial shared "
                           "memory"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "MORVIK_AI::CwbService Create shared memory"));
    EXPECT_EQ(1u, host::log::countContaining("MORVIK_AI::mmap success at "));

    // AI mode: the next writeback covers the crop's rectangle only.
    Shared ai = shared(kAi, crop, 40000);
    ASSERT_TRUE(ai.status.isOk());
    EXPECT_EQ(Error::NONE, ai.error);
    EXPECT_EQ(status, ai.values);
    EXPECT_EQ(kAi, mLightModeID);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "MORVIK_AI::CwbService::mBufferCacheValid CWB_AI_VALUE updated to 0"));
    capture();
    const auto requests = device->displayConfig()->requests();
    ASSERT_EQ(1u, requests.size());
    EXPECT_EQ(300, requests[0].rect.left);
    EXPECT_EQ(400, requests[0].rect.top);
    EXPECT_EQ(400, requests[0].rect.right);
    EXPECT_EQ(500, requests[0].rect.bottom);

    // Six copies, each a complete record.
    for (int i = 1; i <= 6; ++i) {
        SCOPED_TRACE(i);
        region.fill(kUntouched);
        const int64_t before = systemTime(SYSTEM_TIME_BOOTTIME);
        Shared copy = shared(kCopy, crop, 30012);
        const int64_t after = systemTime(SYSTEM_TIME_BOOTTIME);
        ASSERT_TRUE(copy.status.isOk());
        EXPECT_EQ(Error::NONE, copy.error);
        EXPECT_EQ(status, copy.values);
        EXPECT_GE(region.timestamp(), before);
        EXPECT_LE(region.timestamp(), after);
        EXPECT_TRUE(holdsRecord(region, crop));
    }
    EXPECT_TRUE(peer->screenCountReached());

    // The seventh is paused: reported, not copied.
    region.fill(kUntouched);
    Shared paused = shared(kCopy, crop, 30012);
    ASSERT_TRUE(paused.status.isOk());
    EXPECT_EQ(Error::NONE, paused.error);
    EXPECT_EQ(1, paused.values[0]);
    EXPECT_EQ(region.size(), region.firstTouched(0, region.size()));

    // A layer change resumes copying; the next pause comes six copies later.
    composer->layerChange();
    EXPECT_FALSE(peer->screenCountReached());
    for (int i = 1; i <= 6; ++i) {
        SCOPED_TRACE(i);
        region.fill(kUntouched);
        Shared copy = shared(kCopy, crop, 30012);
        EXPECT_EQ(0, copy.values[0]);
        EXPECT_TRUE(holdsRecord(region, crop));
    }
    EXPECT_EQ(1, shared(kCopy, crop, 30012).values[0]);

    // Back to legacy after a fresh capture: the frame is invalidated once more.
    composer->layerChange();
    capture();
    ASSERT_TRUE(peer->bufferCacheValid());
    Shared legacy = shared(kLegacy, crop, 30012);
    EXPECT_EQ(Error::NONE, legacy.error);
    EXPECT_EQ(kLegacy, mLightModeID);
    EXPECT_FALSE(peer->bufferCacheValid());
    EXPECT_EQ(1u,
              logCount(ANDROID_LOG_INFO,
                       "MORVIK_AI::CwbService::mBufferCacheValid CWB_LEGACY_VALUE updated to 1"));

    Error released = Error::FAILED;
    ASSERT_TRUE(service->releaseSharedMemory(0, 0, &released).isOk());
    EXPECT_FALSE(peer->sharedMemoryMapped());
    EXPECT_EQ(1u, region.mappings());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "MORVIK_AI::CwbService Release shared memory"));
}

TEST_F(SharedMemoryTest, RecordNeedsTwelveBytesBeyondTheCrop) {
    bootOn();
    capture();
    ClientRegion region(64 * 1024);
    ASSERT_TRUE(init(region, 64 * 1024).isOk());
    const Rect crop = rect(0, 0, 100, 100);

    Shared fits = shared(kCopy, crop, 30012);
    ASSERT_TRUE(fits.status.isOk());
    EXPECT_TRUE(holdsRecord(region, crop));
    EXPECT_EQ(0xEF, region.data()[30008]);
    EXPECT_EQ(0xDE, region.data()[30011]);

    region.fill(kUntouched);
    const int64_t before = systemTime(SYSTEM_TIME_BOOTTIME);
    Shared tooSmall = shared(kCopy, crop, 30011);
    EXPECT_TRUE(serviceSpecificMinusOne(tooSmall.status));
    EXPECT_EQ(Error::INVALID_ARGUMENT, tooSmall.error);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR,
                           "MORVIK_AI::total data size 30012 (crop 30000 + timestamp 8 + id 4) > "
                           "buffer size 30011"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "MORVIK_AI::CwbService::Error ret=-1"));
    // Refused after the timestamp was written, before any pixel.
    EXPECT_GE(region.timestamp(), before);
    EXPECT_EQ(region.size(), region.firstTouched(8, region.size()));
}

// ---- Modes ----

TEST_F(SharedMemoryTest, ModeSwitchInvalidatesTheFrameOnlyWhenTheModeChanges) {
    bootOn();
    capture();
    struct {
        int id;
        const char* line;
    } steps[] = {
            {kAi, "MORVIK_AI::CwbService::mBufferCacheValid CWB_AI_VALUE updated to 1"},
            {kLegacy, "MORVIK_AI::CwbService::mBufferCacheValid CWB_LEGACY_VALUE updated to 1"},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.id);
        peer->setBufferCacheValid(true);
        EXPECT_EQ(Error::NONE, shared(step.id, rect(0, 0, 10, 10), 0).error);
        EXPECT_EQ(step.id, mLightModeID);
        EXPECT_FALSE(peer->bufferCacheValid());
        EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, step.line));

        peer->setBufferCacheValid(true);
        EXPECT_EQ(Error::NONE, shared(step.id, rect(0, 0, 10, 10), 0).error);
        EXPECT_TRUE(peer->bufferCacheValid());
        EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, step.line));
    }
}

TEST_F(SharedMemoryTest, ModeSwitchWhilePausedStoresTheModeOnly) {
    bootOn();
    capture();
    ClientRegion region(kPage);
    ASSERT_TRUE(init(region, kPage).isOk());
    for (int i = 0; i < 6; ++i) ASSERT_TRUE(shared(kCopy, rect(0, 0, 2, 2), 100).status.isOk());
    ASSERT_TRUE(peer->screenCountReached());
    peer->setBufferCacheValid(true);
    Shared ai = shared(kAi, rect(0, 0, 2, 2), 100);
    EXPECT_EQ(Error::NONE, ai.error);
    EXPECT_EQ(1, ai.values[0]);
    EXPECT_EQ(kAi, mLightModeID);
    EXPECT_TRUE(peer->bufferCacheValid());
    EXPECT_EQ(0u, host::log::countContaining("updated to"));
}

TEST_F(SharedMemoryTest, OtherIdsOnlyReportTheStatus) {
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    bootOn();
    for (int id : {0, 1, 4, 6, -1}) {
        SCOPED_TRACE(id);
        Shared s = shared(id, rect(10, 20, 110, 70), 0);
        EXPECT_TRUE(s.status.isOk());
        EXPECT_EQ(Error::NONE, s.error);
        EXPECT_EQ((std::vector<int32_t>{0, 100, 50, 1080, 2400}), s.values);
        EXPECT_EQ(kLegacy, mLightModeID);
    }
    // The display size is the sampled display's.
    peer->setDisplayId(3);
    EXPECT_EQ((std::vector<int32_t>{0, 100, 50, 720, 1600}),
              shared(0, rect(10, 20, 110, 70), 0).values);
}

TEST_F(SharedMemoryTest, RefusedRectangleChangesNothing) {
    bootOn();
    ASSERT_TRUE(shared(kLegacy, rect(1, 2, 3, 4), 0).status.isOk());
    for (int id : {kAi, kCopy}) {
        SCOPED_TRACE(id);
        host::log::clear();
        Shared s = shared(id, rect(0, 0, 1081, 10), 0);
        EXPECT_TRUE(s.status.isOk());
        EXPECT_EQ(Error::INVALID_ARGUMENT, s.error);
        EXPECT_TRUE(s.values.empty());
        EXPECT_EQ(kLegacy, mLightModeID);
        EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "Invalid input rectangle"));
        const Rect ai = peer->aiRect();
        EXPECT_EQ((std::vector<int32_t>{1, 2, 3, 4}),
                  (std::vector<int32_t>{ai.left, ai.top, ai.right, ai.bottom}));
    }
}

// ---- Region lifecycle and misuse ----

TEST_F(SharedMemoryTest, InvalidDescriptorKeepsTheCurrentMapping) {
    bootOn();
    capture();
    ClientRegion region(kPage);
    ASSERT_TRUE(init(region, kPage).isOk());
    ndk::ScopedFileDescriptor none;
    Error ignored;
    auto status = service->initializeSharedMemory(0, kPage, none, &ignored);
    EXPECT_TRUE(serviceSpecificMinusOne(status));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "MORVIK_AI::Invalid in_fd received"));
    EXPECT_TRUE(peer->sharedMemoryMapped());
    EXPECT_TRUE(shared(kCopy, rect(0, 0, 10, 10), kPage).status.isOk());
    EXPECT_TRUE(holdsRecord(region, rect(0, 0, 10, 10)));
}

TEST_F(SharedMemoryTest, SameDescriptorMapsOnceAnotherReplacesTheMapping) {
    bootOn();
    ClientRegion first(3 * kPage);
    ClientRegion second(2 * kPage);
    ASSERT_TRUE(init(first, 3 * kPage).isOk());
    host::log::clear();
    ASSERT_TRUE(init(first, 3 * kPage).isOk());
    EXPECT_EQ(2u, first.mappings());
    auto lines = host::log::lines();
    ASSERT_EQ(1u, lines.size());
    EXPECT_EQ("MORVIK_AI::initializeSharedMemory Initial shared memory", lines[0].text);

    // A different, smaller region: the old mapping goes whole, the new one comes.
    ASSERT_TRUE(init(second, kPage).isOk());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "MORVIK_AI::Release the old mapping"));
    EXPECT_EQ(0u, host::log::countContaining("munmap failed"));
    EXPECT_EQ(1u, first.mappings());
    EXPECT_EQ(2u, second.mappings());

    Error ignored;
    ASSERT_TRUE(service->releaseSharedMemory(0, 0, &ignored).isOk());
    EXPECT_EQ(1u, second.mappings());
}

TEST_F(SharedMemoryTest, FailedMmapLeavesNoRegion) {
    bootOn();
    capture();
    int sockets[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, sockets));
    ndk::ScopedFileDescriptor socket(sockets[0]);
    ndk::ScopedFileDescriptor peerSocket(sockets[1]);
    ClientRegion region(kPage);
    struct {
        const char* name;
        const ndk::ScopedFileDescriptor& fd;
        int32_t size;
        std::string reason;
    } cases[] = {
            {"Socket", socket, static_cast<int32_t>(kPage), strerror(ENODEV)},
            {"ZeroSize", region.fd(), 0, strerror(EINVAL)},
            {"NegativeSize", region.fd(), -4096, ""},  // any reason; never a mapping
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ClientRegion mapped(kPage);
        ASSERT_TRUE(init(mapped, kPage).isOk());
        host::log::clear();
        Error ignored;
        auto status = service->initializeSharedMemory(0, c.size, c.fd, &ignored);
        EXPECT_TRUE(serviceSpecificMinusOne(status));
        const std::string line =
                "MORVIK_AI::mmap failed for fd=" + std::to_string(c.fd.get()) + ": " + c.reason;
        EXPECT_EQ(1u, c.reason.empty() ? host::log::countContaining(line)
                                       : logCount(ANDROID_LOG_ERROR, line));
        EXPECT_FALSE(peer->sharedMemoryMapped());
        EXPECT_EQ(1u, mapped.mappings());
        Shared copy = shared(kCopy, rect(0, 0, 1, 1), kPage);
        EXPECT_TRUE(serviceSpecificMinusOne(copy.status));
        EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR,
                               "MORVIK_AI::The shared space has not been initialized yet"));
    }
}

TEST_F(SharedMemoryTest, CopyNeedsARegionAndACapture) {
    bootOn();
    struct {
        const char* name;
        bool mapped;
        std::string line;
    } cases[] = {
            {"BeforeInitialize", false, "MORVIK_AI::The shared space has not been initialized yet"},
            {"BeforeCapture", true,
             "MORVIK_AI::The screenshot data is empty mCwbBufferHandle.base0"},
    };
    ClientRegion region(kPage);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        if (c.mapped) {
            ASSERT_TRUE(init(region, kPage).isOk());
        }
        host::log::clear();
        Shared copy = shared(kCopy, rect(0, 0, 10, 10), kPage);
        EXPECT_TRUE(serviceSpecificMinusOne(copy.status));
        EXPECT_EQ(Error::INVALID_ARGUMENT, copy.error);
        auto lines = host::log::lines();
        ASSERT_EQ(2u, lines.size());
        EXPECT_EQ(c.line, lines[0].text);
        EXPECT_EQ("MORVIK_AI::CwbService::Error ret=-1", lines[1].text);
        EXPECT_EQ(region.size(), region.firstTouched(0, region.size()));
        EXPECT_EQ(0, peer->currentScreenCount());
    }
}

TEST_F(SharedMemoryTest, ReleaseWithNothingMappedIsHarmless) {
    boot();
    for (int i = 0; i < 2; ++i) {
        Error result = Error::FAILED;
        EXPECT_TRUE(service->releaseSharedMemory(7, 9, &result).isOk());
    }
    EXPECT_EQ(2u, logCount(ANDROID_LOG_ERROR, "MORVIK_AI::CwbService Release shared memory"));
    EXPECT_FALSE(peer->sharedMemoryMapped());
}

TEST_F(SharedMemoryTest, ScreenResolutionIsThePaddedCaptureBuffer) {
    bootOn();
    EXPECT_EQ((std::vector<int32_t>{0, 0}), resolution());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "MORVIK_AI::CwbService::getScreenResolution "
                           "resolution height=0 || width=0"));
    capture();
    EXPECT_EQ((std::vector<int32_t>{2400, 1088}), resolution());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "MORVIK_AI::CwbService::getScreenResolution "
                           "resolution height=2400 || width=1088"));
    peer->setDisplayId(3);  // always the main display's buffer
    EXPECT_EQ((std::vector<int32_t>{2400, 1088}), resolution());
}

TEST_F(SharedMemoryTest, RefusedCopiesCountTowardsThePause) {
    bootOn();
    capture();
    ClientRegion region(kPage);
    ASSERT_TRUE(init(region, kPage).isOk());
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(shared(kCopy, rect(0, 0, 2, 2), 100).status.isOk());
    EXPECT_EQ(5, peer->currentScreenCount());
    EXPECT_TRUE(serviceSpecificMinusOne(shared(kCopy, rect(0, 0, 2, 2), 23).status));
    EXPECT_TRUE(peer->screenCountReached());
    EXPECT_EQ(0, peer->currentScreenCount());
    EXPECT_EQ(1, shared(kCopy, rect(0, 0, 2, 2), 100).values[0]);
}

TEST_F(SharedMemoryTest, CropOfAnOldSmallerBufferIsRefused) {
    device->setPanelModes(PanelId::Main, {{720, 1600, kVsync60}, {1080, 2400, kVsync60}});
    bootOn();
    capture();
    // The panel switches to the larger mode; the buffer keeps the old size until a capture.
    composer->configChange(0, 1);
    ClientRegion region(64 * 1024);
    ASSERT_TRUE(init(region, 64 * 1024).isOk());
    Shared copy = shared(kCopy, rect(700, 0, 760, 10), 64 * 1024);  // inside the 768 pitch
    EXPECT_TRUE(serviceSpecificMinusOne(copy.status));
    EXPECT_EQ(1u, host::log::countContaining("lies outside the 720x1600 capture buffer"));
    EXPECT_EQ(region.size(), region.firstTouched(8, region.size()));
}

// ---- Boundaries: nothing outside the capture buffer or the mapped region ----

enum class Outcome { Copied, RectRefused, CopyRefused };

struct BoundaryCase {
    const char* name;
    Rect r;
    int32_t bufferSize;
    size_t mapped;  // what the client passes to initializeSharedMemory
    Outcome outcome;
};
void PrintTo(const BoundaryCase& c, std::ostream* os) {
    *os << c.name;
}

class CropBoundaryTest : public SharedMemoryTest,
                         public ::testing::WithParamInterface<BoundaryCase> {};

TEST_P(CropBoundaryTest, StaysInsideBufferAndRegion) {
    const BoundaryCase& c = GetParam();
    bootOn();
    capture();
    // Two spare pages past what the service maps show any stray write.
    ClientRegion region((c.mapped + kPage - 1) / kPage * kPage + 2 * kPage);
    ASSERT_TRUE(init(region, static_cast<int32_t>(c.mapped)).isOk());
    Shared s = shared(kCopy, c.r, c.bufferSize);
    switch (c.outcome) {
        case Outcome::Copied:
            ASSERT_TRUE(s.status.isOk());
            EXPECT_EQ(Error::NONE, s.error);
            EXPECT_TRUE(holdsRecord(region, c.r));
            break;
        case Outcome::RectRefused:
            EXPECT_TRUE(s.status.isOk());
            EXPECT_EQ(Error::INVALID_ARGUMENT, s.error);
            EXPECT_TRUE(s.values.empty());
            EXPECT_EQ(region.size(), region.firstTouched(0, region.size()));
            break;
        case Outcome::CopyRefused:
            EXPECT_TRUE(serviceSpecificMinusOne(s.status));
            EXPECT_EQ(Error::INVALID_ARGUMENT, s.error);
            // Only the timestamp, and only where the service mapped room for it.
            const size_t from = c.mapped >= 8 ? 8 : 0;
            EXPECT_EQ(region.size(), region.firstTouched(from, region.size()));
            break;
    }
}

const int32_t kFull = 1080 * 2400 * 3 + 12;

INSTANTIATE_TEST_SUITE_P(
        Cases, CropBoundaryTest,
        ::testing::Values(
                BoundaryCase{"WholeScreen", rect(0, 0, 1080, 2400), kFull, kFull, Outcome::Copied},
                BoundaryCase{"LastPixel", rect(1079, 2399, 1080, 2400), 15, 15, Outcome::Copied},
                BoundaryCase{"ExactFit", rect(5, 5, 15, 25), 612, 612, Outcome::Copied},
                BoundaryCase{"RightPastWidth", rect(1000, 0, 1081, 10), INT_MAX, 1 << 20,
                             Outcome::RectRefused},
                BoundaryCase{"BottomPastHeight", rect(0, 2300, 10, 2401), INT_MAX, 1 << 20,
                             Outcome::RectRefused},
                BoundaryCase{"NegativeLeft", rect(-1, 0, 10, 10), INT_MAX, 1 << 20,
                             Outcome::RectRefused},
                BoundaryCase{"Empty", rect(10, 10, 10, 20), INT_MAX, 1 << 20, Outcome::RectRefused},
                BoundaryCase{"Inverted", rect(20, 10, 10, 20), INT_MAX, 1 << 20,
                             Outcome::RectRefused},
                BoundaryCase{"IntMinLeftIntMaxRight", rect(INT_MIN, 0, INT_MAX, 10), INT_MAX,
                             1 << 20, Outcome::RectRefused},
                BoundaryCase{"IntMaxEverywhere", rect(INT_MAX, INT_MAX, INT_MAX, INT_MAX), INT_MAX,
                             1 << 20, Outcome::RectRefused},
                BoundaryCase{"IntMinEverywhere", rect(INT_MIN, INT_MIN, INT_MIN, INT_MIN), INT_MAX,
                             1 << 20, Outcome::RectRefused},
                BoundaryCase{"AllNegativeHuge", rect(INT_MIN, INT_MIN, -1, -1), INT_MAX, 1 << 20,
                             Outcome::RectRefused},
                // Fractions pass the rectangle check; the raw fields are no crop.
                BoundaryCase{"Fractions", rect(frac(0), frac(0), frac(10000), frac(10000)), INT_MAX,
                             1 << 20, Outcome::CopyRefused},
                BoundaryCase{"HugeBufferSizeSmallMapping", rect(0, 0, 100, 100), INT_MAX, 4096,
                             Outcome::CopyRefused},
                BoundaryCase{"MappingOneShort", rect(0, 0, 100, 100), 30012, 30011,
                             Outcome::CopyRefused},
                BoundaryCase{"NegativeBufferSize", rect(0, 0, 1, 1), -1, 4096,
                             Outcome::CopyRefused},
                BoundaryCase{"IntMinBufferSize", rect(0, 0, 1, 1), INT_MIN, 4096,
                             Outcome::CopyRefused},
                BoundaryCase{"ZeroBufferSize", rect(0, 0, 1, 1), 0, 4096, Outcome::CopyRefused},
                BoundaryCase{"OneByteMapping", rect(0, 0, 1, 1), INT_MAX, 1, Outcome::CopyRefused},
                BoundaryCase{"SevenByteMapping", rect(0, 0, 1, 1), INT_MAX, 7,
                             Outcome::CopyRefused}),
        [](const auto& info) { return std::string(info.param.name); });

// ---- Threads ----

TEST_F(SharedMemoryTest, ReleaseAndReplaceRacingCopies) {
    bootOn();
    capture();
    ClientRegion a(64 * 1024);
    ClientRegion b(32 * 1024);
    ASSERT_TRUE(init(a, 64 * 1024).isOk());
    std::atomic<bool> done{false};
    std::atomic<int> copied{0};
    std::thread copier([&] {
        for (int i = 0; i < 300; ++i) {
            Shared s = shared(kCopy, rect(0, 0, 100, 100), 30012);
            EXPECT_TRUE(s.status.isOk() || serviceSpecificMinusOne(s.status));
            if (s.status.isOk() && s.values[0] == 0) ++copied;
        }
        done = true;
    });
    std::thread owner([&] {
        Error ignored;
        for (int i = 0; !done; ++i) {
            service->releaseSharedMemory(0, 0, &ignored);
            init(i % 2 ? a : b, i % 2 ? 64 * 1024 : 32 * 1024);
            composer->layerChange();  // keeps the throttle from pausing for good
        }
    });
    copier.join();
    owner.join();
    EXPECT_GT(copied, 0);
    Error ignored;
    service->releaseSharedMemory(0, 0, &ignored);
    EXPECT_EQ(1u, a.mappings());
    EXPECT_EQ(1u, b.mappings());
}

}  // namespace
}  // namespace cwbtest
