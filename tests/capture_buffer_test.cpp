// Capture buffers: made once per resolution, replaced when the resolution changes, made and freed
// per display, and never leaked when the allocator or the mapper fails.
#include <utils/Errors.h>

#include "capture_helpers.h"

namespace cwbtest {
namespace {

namespace gralloc = host::gralloc;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbBufferInfo;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;

class CaptureBufferTest : public CaptureTest {
  protected:
    void SetUp() override {
        CaptureTest::SetUp();
        liveAtStart = gralloc::liveBuffers();
    }
    size_t liveNow() const { return gralloc::liveBuffers() - liveAtStart; }

    size_t liveAtStart = 0;
};

// RGBA_8888 is reported for the RGB_888 buffers: logged per allocation, the buffer kept anyway.
TEST_F(CaptureBufferTest, MadeOncePerResolutionAndReplacedWhenItChanges) {
    device->setPanelModes(PanelId::Main,
                          {{1080, 2400, kVsync60}, {1440, 3200, kVsync60}, {1080, 2340, kVsync60}});
    gralloc::reportFormat(1);
    bootOn();
    ASSERT_EQ(0, capture());
    ASSERT_EQ(0, capture());
    EXPECT_EQ(1088u, peer->buffer(false).width);
    EXPECT_EQ(1, peer->buffer(false).format);
    EXPECT_EQ(1u, gralloc::allocationCount());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "Format error."));

    composer->configChange(0, 1);
    ASSERT_TRUE(device->setActiveMode(PanelId::Main, 1));
    ASSERT_EQ(0, capture());
    const auto info = peer->buffer(false);
    EXPECT_EQ(2u, gralloc::allocationCount());
    EXPECT_EQ(1u, gralloc::freeCount());
    EXPECT_EQ(1440u, info.unaligned_width);
    EXPECT_EQ(1472u, info.width);  // 1440 padded to 64 pixels
    EXPECT_EQ(1472u * 3200u * 3u, info.size);

    // Back to the first mode: replaced again, not kept from the first time.
    composer->configChange(0, 0);
    ASSERT_TRUE(device->setActiveMode(PanelId::Main, 0));
    ASSERT_EQ(0, capture());
    EXPECT_EQ(1088u, peer->buffer(false).width);
    EXPECT_EQ(3u, gralloc::allocationCount());

    // Only the height changes: still a new buffer.
    composer->configChange(0, 2);
    ASSERT_TRUE(device->setActiveMode(PanelId::Main, 2));
    ASSERT_EQ(0, capture());
    EXPECT_EQ(2340u, peer->buffer(false).height);
    EXPECT_EQ(4u, gralloc::allocationCount());
    EXPECT_EQ(1u, liveNow());
    EXPECT_EQ(4u, logCount(ANDROID_LOG_ERROR, "Format error."));
}

struct FailureCase {
    const char* name;
    bool secondary;
    void (*inject)();
    size_t allocations;  // counted by the allocator, a handle left behind included
    size_t frees;
    bool allocatorLogs;
};

// clang-format off
const FailureCase kFailures[] = {
    {"AllocationMain", false, [] { gralloc::failAllocations(1); }, 0, 0, true},
    {"AllocationSecondary", true, [] { gralloc::failAllocations(1); }, 0, 0, true},
    {"HandleLeftBehind", false, [] { gralloc::failAllocationsLeavingHandle(1); }, 1, 1, true},
    {"LockMain", false, [] { gralloc::failLocks(1); }, 1, 1, false},
    {"LockSecondary", true, [] { gralloc::failLocks(1); }, 1, 1, false},
};
// clang-format on

class CaptureBufferFailureTest : public CaptureBufferTest,
                                 public ::testing::WithParamInterface<FailureCase> {};

TEST_P(CaptureBufferFailureTest, NoBufferNoLeakAndTheNextCaptureRecovers) {
    const FailureCase& c = GetParam();
    addSecondary();
    bootOn();
    if (c.secondary) peer->setDisplayId(3);
    host::log::clear();
    c.inject();

    EXPECT_EQ(-1, capture(c.secondary));
    EXPECT_EQ(nullptr, peer->buffer(c.secondary).base);
    EXPECT_EQ(c.allocations, gralloc::allocationCount());
    EXPECT_EQ(c.frees, gralloc::freeCount());
    EXPECT_EQ(0u, liveNow());
    EXPECT_EQ(c.allocatorLogs ? 1u : 0u,
              logCount(ANDROID_LOG_ERROR,
                       "allocate Failed errno = " + std::to_string(android::NO_MEMORY)));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, c.secondary ? "mCwbBufferHandle_sec.base is NULL"
                                                          : "mCwbBufferHandle.base is NULL"));
    // The vendor never saw a request without a buffer.
    EXPECT_TRUE(vendor().requests().empty());

    EXPECT_EQ(0, capture(c.secondary));
    EXPECT_NE(nullptr, peer->buffer(c.secondary).base);
    EXPECT_EQ(1u, liveNow());
}

INSTANTIATE_TEST_SUITE_P(Injected, CaptureBufferFailureTest, ::testing::ValuesIn(kFailures),
                         caseName);

TEST_F(CaptureBufferTest, OnlyTheSelectedDisplaysBufferIsMadeOrFreed) {
    addSecondary();
    bootOn();
    service->destroyCwbBuffer();
    peer->setDisplayId(3);
    service->destroyCwbBuffer();
    EXPECT_EQ(0u, gralloc::freeCount());
    ASSERT_EQ(0, capture(true));
    peer->setDisplayId(0);
    ASSERT_EQ(0, capture());

    // An unknown selection touches neither.
    peer->setDisplayId(1);
    service->prepareCwbBuffer();
    service->destroyCwbBuffer();
    EXPECT_EQ(2u, gralloc::allocationCount());
    EXPECT_EQ(0u, gralloc::freeCount());

    peer->setDisplayId(0);
    service->destroyCwbBuffer();
    service->destroyCwbBuffer();
    EXPECT_EQ(nullptr, peer->buffer(false).base);
    EXPECT_NE(nullptr, peer->buffer(true).base);
    EXPECT_EQ(1u, gralloc::freeCount());

    // The destructor frees both displays' buffers.
    ASSERT_EQ(0, capture());
    peer.reset();
    service.reset();
    composer.reset();
    host::binder::resetRegistry();
    EXPECT_EQ(0u, liveNow());
    EXPECT_EQ(3u, gralloc::freeCount());
}

// The check every pass makes before reading a buffer: 720 x 1600 at a 768-pixel pitch.
TEST(CaptureBufferBounds, RectangleAndLayoutMustFitTheBuffer) {
    uint8_t byte = 0;
    const CwbBufferInfo good{&byte, 0, 768u * 1600 * 3, 768, 720, 1600};
    auto with = [&](auto change) {
        CwbBufferInfo info = good;
        change(info);
        return info;
    };
    const struct {
        CwbBufferInfo info;
        Rect r;
        bool inside;
    } cases[] = {
            {good, rect(0, 0, 720, 1600), true},
            {good, rect(719, 1599, 720, 1600), true},
            {good, rect(0, 0, 721, 10), false},
            {good, rect(0, 0, 10, 1601), false},
            {good, rect(-1, 0, 10, 10), false},
            {good, rect(0, -1, 10, 10), false},
            {good, rect(10, 0, 10, 10), false},
            {good, rect(0, 10, 10, 10), false},
            {with([](auto& i) { i.base = nullptr; }), rect(0, 0, 1, 1), false},
            {with([](auto& i) { i.width = 719; }), rect(0, 0, 1, 1), false},
            {with([](auto& i) { i.size -= 1; }), rect(0, 0, 1, 1), false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.inside, CwbServiceTestPeer::rectInsideBuffer(c.info, c.r))
                << c.r.left << "," << c.r.top << "," << c.r.right << "," << c.r.bottom << " pitch "
                << c.info.width << " size " << c.info.size;
    }
}

}  // namespace
}  // namespace cwbtest
