// Crops of the captured frame exported into a client's shared memory, and its misuses.
#include <android/binder_status.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utils/Timers.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <fstream>
#include <thread>
#include <tuple>

#include "features_helpers.h"

namespace cwbtest::features {
namespace {

using aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID;
using host::device::Frame;

constexpr int kLegacy = 2;
constexpr int kAi = 3;
constexpr int kCopy = 5;
constexpr uint8_t kUntouched = 0x5A;
constexpr size_t kPage = 4096;
const std::string kRefused = "MORVIK_AI::CwbService::Error ret=-1";
const std::string kNoRegion = "MORVIK_AI::The shared space has not been initialized yet";

// A client's memfd, mapped whole here so that bytes past what the service maps can be checked.
struct ClientRegion {
    explicit ClientRegion(size_t size, unsigned flags = MFD_CLOEXEC) : size(size) {
        static std::atomic<int> serial{0};
        name = "cwb_client_region_" + std::to_string(getpid()) + "_" + std::to_string(++serial);
        fd.reset(memfd_create(name.c_str(), flags));
        EXPECT_EQ(0, ftruncate(fd.get(), static_cast<off_t>(size)));
        base = static_cast<uint8_t*>(
                mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd.get(), 0));
        EXPECT_NE(MAP_FAILED, static_cast<void*>(base));
        fill();
    }
    ~ClientRegion() { munmap(base, size); }
    void fill() { memset(base, kUntouched, size); }
    // The record's timestamp lies between before and now.
    bool stampedSince(int64_t before) const {
        int64_t t;
        memcpy(&t, base, sizeof(t));
        return t >= before && t <= systemTime(SYSTEM_TIME_BOOTTIME);
    }
    bool untouchedFrom(size_t from) const {
        return std::all_of(base + from, base + size, [](uint8_t b) { return b == kUntouched; });
    }
    // Mappings of this memfd in the process, the test's own included.
    size_t mappings() const {
        std::ifstream maps("/proc/self/maps");
        size_t n = 0;
        for (std::string line; std::getline(maps, line);) {
            n += line.find("/memfd:" + name + " ") != std::string::npos;
        }
        return n;
    }

    std::string name;
    size_t size;
    ndk::ScopedFileDescriptor fd;
    uint8_t* base = nullptr;
};

bool minusOne(const ndk::ScopedAStatus& status) {
    return status.getExceptionCode() == EX_SERVICE_SPECIFIC &&
           status.getServiceSpecificError() == -1;
}

struct Shared {
    ndk::ScopedAStatus status;
    Error error = Error::FAILED;
    std::vector<int32_t> values;

    bool ok() const { return status.isOk() && error == Error::NONE; }
    bool refused() const { return minusOne(status) && error == Error::INVALID_ARGUMENT; }
    int32_t paused() const { return ok() && !values.empty() ? values[0] : -1; }
};

class SharedMemoryTest : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        // Every byte of a row differs from its neighbours and from the rows around it, so that a
        // wrong pitch, offset or channel order shows. Built once: the pixel loop is not free.
        static const Frame screen = [] {
            Frame out = Frame::filled(1080, 2400, 0, 0, 0);
            for (int y = 0; y < out.height; ++y) {
                for (int x = 0; x < out.width; ++x) {
                    out.setPixel(x, y, {uint8_t(x), uint8_t(y), uint8_t(x * 7 + y * 13)});
                }
            }
            return out;
        }();
        frame = &screen;
        device->setFrame(PanelId::Main, FrameKind::Mixer, screen);
    }

    ndk::ScopedAStatus init(const ClientRegion& region, int32_t size) {
        Error ignored;
        return service->initializeSharedMemory(0, size, region.fd, &ignored);
    }

    Shared shared(int32_t id, const Rect& r, int32_t bufferSize) {
        Shared out;
        out.status = service->getSharedData(id, r, ndk::ScopedFileDescriptor(), bufferSize,
                                            &out.values, &out.error);
        return out;
    }

    // A capture in the current mode; without ROI the whole screen is written back.
    void capture() {
        ASSERT_TRUE(gateOpen());
        ASSERT_EQ(0, rgb(rect(0, 0, 10, 10)).first & 0xFFFF);
    }

    std::vector<int32_t> resolution() {  // logs one line
        std::vector<int32_t> values;
        Error ignored;
        EXPECT_TRUE(service->getScreenResolution(0, &values, &ignored).isOk());
        return values;
    }

    // After the timestamp: crop r of the frame, then the marker, then nothing.
    ::testing::AssertionResult holdsRecord(const ClientRegion& region, const Rect& r) {
        const size_t w = (r.right - r.left) * 3, h = r.bottom - r.top;
        for (size_t y = 0; y < h; ++y) {
            if (memcmp(region.base + 8 + y * w, frame->row(r.top + y) + r.left * 3, w) != 0) {
                return ::testing::AssertionFailure() << "crop row " << y << " differs";
            }
        }
        const uint8_t marker[4] = {0xEF, 0xBE, 0xAD, 0xDE};
        if (memcmp(region.base + 8 + h * w, marker, 4) != 0 || !region.untouchedFrom(12 + h * w)) {
            return ::testing::AssertionFailure() << "no marker, or bytes past it written";
        }
        return ::testing::AssertionSuccess();
    }

    const Frame* frame = nullptr;
};

TEST_F(SharedMemoryTest, ClientSequence) {
    setProp("ro.vendor.zarel.display.cwb.roi", "1");
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    bootOn();
    ClientRegion region(64 * 1024);
    const Rect crop = rect(300, 400, 400, 500);  // 100 x 100: a record of 30012 bytes
    const std::vector<int32_t> status = {0, 100, 100, 1080, 2400};
    auto refused = [&](int32_t bufferSize, const std::string& line) {
        host::log::clear();
        EXPECT_TRUE(shared(kCopy, crop, bufferSize).refused());
        EXPECT_EQ((Lines{{kE, line}, {kE, kRefused}}), logged());
    };
    auto copies = [&](int n) {
        for (int i = 1; i <= n; ++i) {
            region.fill();
            const int64_t before = systemTime(SYSTEM_TIME_BOOTTIME);
            Shared copy = shared(kCopy, crop, 30012);
            EXPECT_TRUE(copy.ok() && copy.values == status) << i;
            EXPECT_TRUE(region.stampedSince(before)) << i;
            EXPECT_TRUE(holdsRecord(region, crop)) << i;
        }
    };
    // Neither a copy without a region nor one without a capture counts towards the pause.
    refused(30012, kNoRegion);
    ASSERT_TRUE(init(region, 40000).isOk());
    ASSERT_TRUE(init(region, 40000).isOk());  // the same descriptor maps once
    EXPECT_EQ(1u, logCount(kE, "MORVIK_AI::CwbService Create shared memory"));
    Error ignored;  // no descriptor: refused, the mapping stays
    EXPECT_TRUE(minusOne(
            service->initializeSharedMemory(0, kPage, ndk::ScopedFileDescriptor(), &ignored)));
    EXPECT_EQ(1u, logCount(kE, "MORVIK_AI::Invalid in_fd received"));
    EXPECT_EQ(2u, region.mappings());
    EXPECT_EQ((std::vector<int32_t>{0, 0}), resolution());
    EXPECT_EQ(1u, logCount(kI,
                           "MORVIK_AI::CwbService::getScreenResolution "
                           "resolution height=0 || width=0"));
    refused(30012, "MORVIK_AI::The screenshot data is empty mCwbBufferHandle.base0");
    EXPECT_TRUE(region.untouchedFrom(0));
    for (int id : {0, 1, 4, 6, -1}) {  // only the status
        Shared s = shared(id, crop, 0);
        EXPECT_TRUE(s.ok() && s.values == status) << id;
    }
    EXPECT_EQ(kLegacy, mLightModeID);

    // AI mode: the next writeback covers the crop's rectangle only.
    const std::string cacheLine = "MORVIK_AI::CwbService::mBufferCacheValid ";
    Shared ai = shared(kAi, crop, 40000);
    EXPECT_TRUE(ai.ok() && ai.values == status);
    EXPECT_EQ(kAi, mLightModeID);
    EXPECT_EQ(1u, logCount(kI, cacheLine + "CWB_AI_VALUE updated to 0"));
    capture();
    const auto requests = device->displayConfig()->requests();
    ASSERT_EQ(1u, requests.size());
    const auto& wb = requests[0].rect;
    EXPECT_EQ((std::vector<int>{300, 400, 400, 500}),
              (std::vector<int>{wb.left, wb.top, wb.right, wb.bottom}));
    // The status has the sampled display's size; the resolution is the padded main buffer.
    peer->setDisplayId(3);
    EXPECT_EQ((std::vector<int32_t>{0, 100, 100, 720, 1600}), shared(0, crop, 0).values);
    EXPECT_EQ((std::vector<int32_t>{2400, 1088}), resolution());
    peer->setDisplayId(0);
    // The same mode again keeps the frame.
    ASSERT_TRUE(peer->bufferCacheValid());
    EXPECT_TRUE(shared(kAi, crop, 0).ok());
    EXPECT_TRUE(peer->bufferCacheValid());
    EXPECT_EQ(0u, logCount(kI, cacheLine + "CWB_AI_VALUE updated to 1"));

    copies(6);
    // Paused: the client is told, nothing copied; a mode switch is stored, the frame kept.
    region.fill();
    host::log::clear();
    EXPECT_EQ(1, shared(kCopy, crop, 30012).paused());
    EXPECT_EQ(1, shared(kLegacy, crop, 0).paused());
    EXPECT_EQ(kLegacy, mLightModeID);
    EXPECT_EQ(1, shared(kAi, crop, 0).paused());
    EXPECT_EQ(kAi, mLightModeID);
    EXPECT_TRUE(peer->bufferCacheValid());
    EXPECT_EQ(0u, host::log::countContaining("updated to"));
    EXPECT_TRUE(region.untouchedFrom(0));

    // A layer change resumes; a refused attempt counts like a copy.
    composer->layerChange();
    copies(5);
    refused(30011,
            "MORVIK_AI::total data size 30012 (crop 30000 + timestamp 8 + id 4) > buffer size "
            "30011");
    EXPECT_EQ(0, peer->currentScreenCount());
    EXPECT_EQ(1, shared(kCopy, crop, 30012).paused());

    // Back to legacy after a fresh capture: the frame is invalidated once more.
    composer->layerChange();
    capture();
    ASSERT_TRUE(peer->bufferCacheValid());
    EXPECT_TRUE(shared(kLegacy, crop, 0).ok());
    EXPECT_EQ(kLegacy, mLightModeID);
    EXPECT_FALSE(peer->bufferCacheValid());
    EXPECT_EQ(1u, logCount(kI, cacheLine + "CWB_LEGACY_VALUE updated to 1"));

    // Another, smaller region: the old mapping goes whole, by its own length.
    ClientRegion other(2 * kPage);
    ASSERT_TRUE(init(other, kPage).isOk());
    EXPECT_EQ(1u, logCount(kE, "MORVIK_AI::Release the old mapping"));
    EXPECT_EQ(1u, region.mappings());
    EXPECT_EQ(2u, other.mappings());
    // A failed mmap leaves no region (a negative size may fail for any reason).
    int sockets[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, sockets));
    ndk::ScopedFileDescriptor socket(sockets[0]), otherEnd(sockets[1]);
    const std::string failed = "MORVIK_AI::mmap failed for fd=";
    const std::tuple<const ndk::ScopedFileDescriptor&, int32_t, std::string> misuses[] = {
            {socket, kPage, failed + std::to_string(sockets[0]) + ": " + strerror(ENODEV)},
            {region.fd, 0, failed + std::to_string(region.fd.get()) + ": " + strerror(EINVAL)},
            {region.fd, -4096, failed + std::to_string(region.fd.get()) + ": "}};
    for (const auto& [fd, size, line] : misuses) {
        SCOPED_TRACE(line);
        ASSERT_TRUE(init(other, kPage).isOk());
        host::log::clear();
        EXPECT_TRUE(minusOne(service->initializeSharedMemory(0, size, fd, &ignored)));
        EXPECT_EQ(1u, size < 0 ? host::log::countContaining(line) : logCount(kE, line));
        EXPECT_FALSE(peer->sharedMemoryMapped());
        EXPECT_EQ(1u, other.mappings());
        refused(kPage, kNoRegion);
    }
    // Release unmaps; a second release finds nothing, harmlessly.
    ASSERT_TRUE(init(other, kPage).isOk());
    host::log::clear();
    for (int i = 0; i < 2; ++i) {
        Error released = Error::FAILED;
        ASSERT_TRUE(service->releaseSharedMemory(7, 9, &released).isOk());
        EXPECT_EQ(Error::NONE, released);
    }
    EXPECT_FALSE(peer->sharedMemoryMapped());
    EXPECT_EQ(1u, other.mappings());
    EXPECT_EQ((Lines(2, {kE, "MORVIK_AI::CwbService Release shared memory"})), logged());
    // The host's release() does the same and answers munmap's result, 0 also with nothing mapped.
    ASSERT_TRUE(init(other, kPage).isOk());
    host::log::clear();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(0, service->release());
        EXPECT_FALSE(peer->sharedMemoryMapped());
    }
    EXPECT_EQ(1u, other.mappings());
    EXPECT_EQ((Lines(2, {kE, "MORVIK_AI::CwbService Release shared memory"})), logged());
}

// A client file smaller than it claims, or shrunk under the mapping, never faults the service: it
// is refused at mapping, sealed where the file allows, and sized again before a copy where not.
struct RegionCase {
    const char* name;
    unsigned flags;
    off_t fileSize;
    off_t shrinkTo;  // -1: the client leaves its file alone
    bool mapped;
    bool sealed;
    bool copies;
};

class SharedRegionFaults : public SharedMemoryTest,
                           public ::testing::WithParamInterface<RegionCase> {};

TEST_P(SharedRegionFaults, NeverFaultsTheService) {
    const RegionCase& tc = GetParam();
    bootOn();
    capture();
    const Rect crop = rect(300, 400, 400, 500);  // a record of 30012 bytes
    ClientRegion region(static_cast<size_t>(tc.fileSize), tc.flags);
    const std::string fd = std::to_string(region.fd.get());
    host::log::clear();
    const ndk::ScopedAStatus mapping = init(region, 30020);
    EXPECT_EQ(tc.mapped, peer->sharedMemoryMapped());
    if (!tc.mapped) {
        EXPECT_TRUE(minusOne(mapping));
        EXPECT_EQ(1u,
                  logCount(kE, "MORVIK_AI::mmap failed for fd=" + fd + ": " + strerror(EINVAL)));
        EXPECT_TRUE(shared(kCopy, crop, 30012).refused());
        return;
    }
    ASSERT_TRUE(mapping.isOk());
    EXPECT_EQ(tc.sealed, peer->sharedMemorySealed());
    if (tc.shrinkTo >= 0) {
        // The seal stops only shrinking: the client still writes and grows its file.
        EXPECT_EQ(tc.sealed ? -1 : 0, ftruncate(region.fd.get(), tc.shrinkTo));
        if (tc.sealed) {
            EXPECT_EQ(EPERM, errno);
        }
    }
    host::log::clear();
    Shared copy = shared(kCopy, crop, 30012);
    if (tc.copies) {
        EXPECT_TRUE(copy.ok());
        EXPECT_TRUE(holdsRecord(region, crop));
        EXPECT_EQ(0, ftruncate(region.fd.get(), tc.fileSize + 4096));
        return;
    }
    EXPECT_TRUE(copy.refused());
    EXPECT_EQ((Lines{{kE, "MORVIK_AI::shared memory fd=" + fd + " holds " +
                                  std::to_string(tc.shrinkTo) +
                                  " of 30020 mapped bytes; record of 30012 refused"},
                     {kE, kRefused}}),
              logged());
    // What the shrunk file still holds is written: a 10 x 10 crop needs 312 bytes.
    const bool fits = tc.shrinkTo >= 312;
    EXPECT_EQ(fits, shared(kCopy, rect(300, 400, 310, 410), 312).ok());
    if (fits) {
        EXPECT_EQ(0, memcmp(region.base + 308, "\xEF\xBE\xAD\xDE", 4));
    }
}

INSTANTIATE_TEST_SUITE_P(
        Regions, SharedRegionFaults,
        ::testing::Values(
                RegionCase{"Undersized", MFD_CLOEXEC, 4096, -1, false, false, false},
                RegionCase{"UndersizedSealable", MFD_ALLOW_SEALING, 30019, -1, false, false, false},
                RegionCase{"Sealed", MFD_ALLOW_SEALING, 30020, 0, true, true, true},
                RegionCase{"UnsealedShrunk", MFD_CLOEXEC, 30020, 4096, true, false, false},
                RegionCase{"UnsealedShrunkToNothing", MFD_CLOEXEC, 30020, 0, true, false, false}),
        [](const auto& info) { return std::string(info.param.name); });

// A client that shrinks its unsealed file after the service sized it, just before the copy (the
// debug line between the two is the cue): the write must not fault, and the record still lands.
TEST_F(SharedMemoryTest, UnsealedRegionShrunkAfterItsSizeCheckNeverFaults) {
    bootOn();
    capture();
    Error ignored;
    ASSERT_TRUE(service->setDebug({1}, &ignored).isOk());
    ClientRegion region(30020);
    ASSERT_TRUE(init(region, 30020).isOk());
    ASSERT_FALSE(peer->sharedMemorySealed());
    int shrinks = 0;
    host::log::setListener([&](const host::log::Line& line) {
        if (line.text.rfind("MORVIK_AI::CwbService::BufferHandle[", 0) == 0) {
            shrinks += ftruncate(region.fd.get(), 0) == 0;
        }
    });
    const Shared copy = shared(kCopy, rect(300, 400, 400, 500), 30012);
    host::log::setListener(nullptr);
    ASSERT_EQ(1, shrinks);
    EXPECT_TRUE(copy.ok());
    // The write grew the file back to the record's end; the client regrows the rest.
    struct stat st {};
    ASSERT_EQ(0, fstat(region.fd.get(), &st));
    EXPECT_EQ(30012, st.st_size);
    ASSERT_EQ(0, ftruncate(region.fd.get(), 30020));
    memset(region.base + 30012, kUntouched, 8);
    EXPECT_TRUE(holdsRecord(region, rect(300, 400, 400, 500)));
}

// Requests, copies, modes, regions and layer changes at once: where TSan would see a race.
using FeaturesConcurrencyTest = SharedMemoryTest;

TEST_F(FeaturesConcurrencyTest, RequestsCopiesModesRegionsAndLayerChangesTogether) {
    setProp("ro.vendor.zarel.display.cwb.roi", "1");
    setProp("ro.vendor.zarel.display.cwb.apl_read_support", "1");
    device->setAplFile("0f a0\n");
    device->qservice()->setAnswer(303, 1);
    device->qservice()->setAnswer(304, 2000);
    bootOn();
    ClientRegion a(64 * 1024), b(32 * 1024);
    ASSERT_TRUE(init(a, 64 * 1024).isOk());
    constexpr int kRounds = 12;
    std::vector<std::thread> threads;
    // Feature requests of every handled kind; each may capture and waits for a layer change.
    for (int id : {1, 2}) {
        threads.emplace_back([&, id] {
            for (int i = 0; i < kRounds; ++i) {
                std::vector<int32_t> values;
                Error error;
                EXPECT_TRUE(service->getCwbValue(id, rect(0, 0, 200, 200), &values, &error).isOk());
                EXPECT_EQ(id == 1 ? 9u : 6u, values.size());
            }
        });
    }
    threads.emplace_back([&] {  // crops and mode switches
        const int ids[] = {kAi, kCopy, kLegacy, kCopy};
        for (int i = 0; i < kRounds * 8; ++i) {
            Shared s = shared(ids[i % 4], rect(0, 0, 100, 100), 30012);
            EXPECT_TRUE(s.ok() || s.refused());
        }
    });
    // The region changes hands, the resolution is asked, the statistics run directly.
    threads.emplace_back([&] {
        for (int i = 0; i < kRounds * 4; ++i) {
            Error e;
            service->releaseSharedMemory(0, 0, &e);
            init(i % 2 ? a : b, i % 2 ? 64 * 1024 : 32 * 1024);
            EXPECT_EQ(2u, resolution().size());
            Rgb out;
            if (i % 8 == 0) service->getRGBValue(rect(10, 10, 20, 20), &out, &e);
        }
    });
    // The composer keeps changing layers until everyone else is done.
    std::atomic<bool> done{false};
    std::thread composerThread([&] {
        while (!done) {
            composer->layerChange();
            std::this_thread::yield();
        }
    });
    for (auto& t : threads) t.join();
    done = true;
    composerThread.join();
    // Still serving afterwards, and no mapping left behind.
    ASSERT_TRUE(gateOpen());
    composer->layerChange();
    EXPECT_EQ(Error::NONE, luma(rect(0, 0, 10, 10)).first);
    EXPECT_TRUE(mLightModeID == kLegacy || mLightModeID == kAi);
    Error ignored;
    service->releaseSharedMemory(0, 0, &ignored);
    EXPECT_EQ(1u, a.mappings());
    EXPECT_EQ(1u, b.mappings());
}

// Nothing outside the capture buffer or the mapped region.
enum Outcome { kCopied, kBadRect, kOutside, kTooBig };

struct BoundaryCase {
    const char* name;
    Rect r;
    int32_t bufferSize;
    size_t mapped;  // what the client passes to initializeSharedMemory
    Outcome outcome;
    bool oldSmallBuffer = false;  // captured at 720 x 1600 before the panel went 1080 x 2400
};

class CropBoundaryTest : public SharedMemoryTest,
                         public ::testing::WithParamInterface<BoundaryCase> {};

TEST_P(CropBoundaryTest, StaysInsideBufferAndRegion) {
    const BoundaryCase& c = GetParam();
    if (c.oldSmallBuffer) {
        device->setPanelModes(PanelId::Main, {{720, 1600, kVsync60}, {1080, 2400, kVsync60}});
    }
    bootOn();
    capture();
    if (c.oldSmallBuffer) composer->configChange(0, 1);
    ASSERT_TRUE(shared(kLegacy, rect(1, 2, 3, 4), 0).ok());
    // Two spare pages past what the service maps show any stray write.
    ClientRegion region((c.mapped + kPage - 1) / kPage * kPage + 2 * kPage);
    ASSERT_TRUE(init(region, static_cast<int32_t>(c.mapped)).isOk());
    host::log::clear();
    const int64_t before = systemTime(SYSTEM_TIME_BOOTTIME);
    Shared s = shared(kCopy, c.r, c.bufferSize);
    if (c.outcome == kCopied) {
        EXPECT_TRUE(s.ok());
        // The old buffer holds the smaller mode's picture, not the frame the test compares.
        EXPECT_TRUE(c.oldSmallBuffer || holdsRecord(region, c.r));
    } else if (c.outcome == kBadRect) {
        // Refused before anything changes, in the AI mode too: region, AI rectangle, mode.
        EXPECT_TRUE(s.status.isOk() && s.error == Error::INVALID_ARGUMENT && s.values.empty());
        EXPECT_EQ(1u, logCount(kE, "Invalid input rectangle"));
        EXPECT_EQ(Error::INVALID_ARGUMENT, shared(kAi, c.r, 0).error);
        EXPECT_EQ(kLegacy, mLightModeID);
        EXPECT_EQ(rect(1, 2, 3, 4), peer->aiRect());
        EXPECT_TRUE(region.untouchedFrom(0));
    } else {
        EXPECT_TRUE(s.refused());
        auto n = [](int64_t v) { return std::to_string(v); };
        const int64_t crop = int64_t{c.r.right - c.r.left} * (c.r.bottom - c.r.top) * 3;
        const std::string why =
                c.outcome == kOutside
                        ? "MORVIK_AI::crop [" + n(c.r.left) + "," + n(c.r.top) + "," +
                                  n(c.r.right) + "," + n(c.r.bottom) + "] lies outside the " +
                                  (c.oldSmallBuffer ? "720x1600" : "1080x2400") + " capture buffer"
                        : "MORVIK_AI::total data size " + n(crop + 12) + " (crop " + n(crop) +
                                  " + timestamp 8 + id 4) > buffer size " + n(c.bufferSize);
        EXPECT_EQ((Lines{{kE, why}, {kE, kRefused}}), logged());
        // Only the timestamp, and only where the service mapped room for it.
        EXPECT_TRUE(c.mapped < 8 || region.stampedSince(before));
        EXPECT_TRUE(region.untouchedFrom(c.mapped >= 8 ? 8 : 0));
    }
}

constexpr int32_t kFull = 1080 * 2400 * 3 + 12;
constexpr int32_t kBig = 1 << 20;

const BoundaryCase kBoundaries[] = {
        {"WholeScreen", rect(0, 0, 1080, 2400), kFull, kFull, kCopied},
        {"LastPixel", rect(1079, 2399, 1080, 2400), 15, 15, kCopied},
        {"ExactFit", rect(5, 5, 15, 25), 612, 612, kCopied},
        {"RightPastWidth", rect(1000, 0, 1081, 10), INT_MAX, kBig, kBadRect},
        {"BottomPastHeight", rect(0, 2300, 10, 2401), INT_MAX, kBig, kBadRect},
        {"NegativeLeft", rect(-1, 0, 10, 10), INT_MAX, kBig, kBadRect},
        {"Empty", rect(10, 10, 10, 20), INT_MAX, kBig, kBadRect},
        {"Inverted", rect(20, 10, 10, 20), INT_MAX, kBig, kBadRect},
        {"IntMinToIntMax", rect(INT_MIN, 0, INT_MAX, 10), INT_MAX, kBig, kBadRect},
        {"IntMax", rect(INT_MAX, INT_MAX, INT_MAX, INT_MAX), INT_MAX, kBig, kBadRect},
        {"IntMin", rect(INT_MIN, INT_MIN, INT_MIN, INT_MIN), INT_MAX, kBig, kBadRect},
        {"AllNegative", rect(INT_MIN, INT_MIN, -1, -1), INT_MAX, kBig, kBadRect},
        // Fractions pass the rectangle check; the raw fields are no crop.
        {"Fractions", rect(frac(0), frac(0), frac(10000), frac(10000)), INT_MAX, kBig, kOutside},
        // Inside the configuration and the 768 pitch, not the buffer's 720 columns.
        {"OldSmallerBuffer", rect(700, 0, 760, 10), kBig, kBig, kOutside, true},
        {"OldBufferRightEdge", rect(700, 0, 720, 10), kBig, kBig, kCopied, true},
        {"OldBufferOnePastRight", rect(700, 0, 721, 10), kBig, kBig, kOutside, true},
        {"OldBufferBottomEdge", rect(0, 1590, 10, 1600), kBig, kBig, kCopied, true},
        {"OldBufferOnePastBottom", rect(0, 1590, 10, 1601), kBig, kBig, kOutside, true},
        {"BufferOneShort", rect(0, 0, 100, 100), 30011, kBig, kTooBig},
        {"MappingOneShort", rect(0, 0, 100, 100), 30012, 30011, kTooBig},
        {"HugeBufferSmallMapping", rect(0, 0, 100, 100), INT_MAX, 4096, kTooBig},
        {"NegativeBufferSize", rect(0, 0, 1, 1), -1, 4096, kTooBig},
        {"IntMinBufferSize", rect(0, 0, 1, 1), INT_MIN, 4096, kTooBig},
        {"ZeroBufferSize", rect(0, 0, 1, 1), 0, 4096, kTooBig},
        {"OneByteMapping", rect(0, 0, 1, 1), INT_MAX, 1, kTooBig},
        {"SevenByteMapping", rect(0, 0, 1, 1), INT_MAX, 7, kTooBig},
};

INSTANTIATE_TEST_SUITE_P(Cases, CropBoundaryTest, ::testing::ValuesIn(kBoundaries),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace cwbtest::features
