// Capture buffers: made once per resolution, replaced when the resolution changes, and never
// leaked when the allocator or the mapper fails.
#include <utils/Errors.h>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::implementation::CwbBufferInfo;
namespace gralloc = host::gralloc;

class CaptureBufferTest : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        liveAtStart = gralloc::liveBuffers();
    }
    int capture(bool sec = false) { return peer->setCWBOutputBuffer(rect(0, 0, 0, 0), false, sec); }
    size_t liveNow() const { return gralloc::liveBuffers() - liveAtStart; }

    size_t liveAtStart = 0;
};

TEST_F(CaptureBufferTest, TwoCapturesAtOneResolutionAllocateOnce) {
    bootOn();
    ASSERT_EQ(0, capture());
    void* first = peer->buffer(false).base;
    ASSERT_EQ(0, capture());
    EXPECT_EQ(first, peer->buffer(false).base);
    EXPECT_EQ(1u, gralloc::allocationCount());
    EXPECT_EQ(0u, gralloc::freeCount());
    EXPECT_EQ(1u, liveNow());
}

TEST_F(CaptureBufferTest, ResolutionChangeReplacesTheBuffer) {
    device->setPanelModes(PanelId::Main, {{1080, 2400, kVsync60}, {1440, 3200, kVsync60}});
    bootOn();
    ASSERT_EQ(0, capture());
    EXPECT_EQ(1088u, peer->buffer(false).width);

    composer->configChange(0, 1);
    ASSERT_TRUE(device->setActiveMode(PanelId::Main, 1));
    ASSERT_EQ(0, capture());
    const CwbBufferInfo info = peer->buffer(false);
    EXPECT_EQ(2u, gralloc::allocationCount());
    EXPECT_EQ(1u, gralloc::freeCount());
    EXPECT_EQ(1u, liveNow());
    EXPECT_EQ(1440u, info.unaligned_width);
    EXPECT_EQ(1472u, info.width);  // 1440 padded to 64 pixels
    EXPECT_EQ(3200u, info.height);
    EXPECT_EQ(1472u * 3200u * 3u, info.size);

    // Back to the first mode: replaced again, width follows once more.
    composer->configChange(0, 0);
    ASSERT_TRUE(device->setActiveMode(PanelId::Main, 0));
    ASSERT_EQ(0, capture());
    EXPECT_EQ(1088u, peer->buffer(false).width);
    EXPECT_EQ(3u, gralloc::allocationCount());
    EXPECT_EQ(1u, liveNow());
}

struct FailureCase {
    const char* name;
    bool secondary;
    void (*inject)();
    size_t allocations;  // counted by the allocator, a handle left behind included
    size_t frees;
    bool allocatorLogs;
};

void PrintTo(const FailureCase& c, std::ostream* os) {
    *os << c.name;
}

std::string allocateFailedLine() {
    return "allocate Failed errno = " + std::to_string(android::NO_MEMORY);
}

const FailureCase kFailures[] = {
        {"AllocationMain", false, [] { gralloc::failAllocations(1); }, 0, 0, true},
        {"AllocationSecondary", true, [] { gralloc::failAllocations(1); }, 0, 0, true},
        {"AllocationLeavingHandle", false, [] { gralloc::failAllocationsLeavingHandle(1); }, 1, 1,
         true},
        {"LockMain", false, [] { gralloc::failLocks(1); }, 1, 1, false},
        {"LockSecondary", true, [] { gralloc::failLocks(1); }, 1, 1, false},
};

class CaptureBufferFailureTest : public CaptureBufferTest,
                                 public ::testing::WithParamInterface<FailureCase> {};

TEST_P(CaptureBufferFailureTest, NoBufferNoLeakAndTheNextCaptureRecovers) {
    const FailureCase& c = GetParam();
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    bootOn();
    if (c.secondary) peer->setDisplayId(3);
    host::log::clear();
    c.inject();

    EXPECT_EQ(-1, capture(c.secondary));
    EXPECT_EQ(nullptr, peer->buffer(c.secondary).base);
    EXPECT_EQ(c.allocations, gralloc::allocationCount());
    EXPECT_EQ(c.frees, gralloc::freeCount());
    EXPECT_EQ(0u, liveNow());
    EXPECT_EQ(c.allocatorLogs ? 1u : 0u, logCount(ANDROID_LOG_ERROR, allocateFailedLine()));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, c.secondary ? "mCwbBufferHandle_sec.base is NULL"
                                                          : "mCwbBufferHandle.base is NULL"));
    // The vendor never saw a request without a buffer.
    EXPECT_TRUE(device->displayConfig()->requests().empty());

    EXPECT_EQ(0, capture(c.secondary));
    EXPECT_NE(nullptr, peer->buffer(c.secondary).base);
    EXPECT_EQ(1u, liveNow());
}

INSTANTIATE_TEST_SUITE_P(Injected, CaptureBufferFailureTest, ::testing::ValuesIn(kFailures),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(CaptureBufferTest, WrongFormatIsLoggedAndTheBufferKept) {
    gralloc::reportFormat(1);  // RGBA_8888 reported for an RGB_888 buffer
    bootOn();
    host::log::clear();
    EXPECT_EQ(0, capture());
    const CwbBufferInfo info = peer->buffer(false);
    EXPECT_NE(nullptr, info.base);
    EXPECT_EQ(1, info.format);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "Format error."));
    // Kept, so the next capture reuses it and does not log again.
    EXPECT_EQ(0, capture());
    EXPECT_EQ(info.base, peer->buffer(false).base);
    EXPECT_EQ(1u, gralloc::allocationCount());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "Format error."));
}

TEST_F(CaptureBufferTest, UnknownDisplaySelectionTouchesNeitherBuffer) {
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    bootOn();
    ASSERT_EQ(0, capture());
    peer->setDisplayId(3);
    ASSERT_EQ(0, capture(true));
    const void* mainBase = peer->buffer(false).base;
    const void* secBase = peer->buffer(true).base;
    ASSERT_EQ(2u, gralloc::allocationCount());

    peer->setDisplayId(1);
    peer->prepareCwbBuffer();
    peer->destroyCwbBuffer();
    EXPECT_EQ(mainBase, peer->buffer(false).base);
    EXPECT_EQ(secBase, peer->buffer(true).base);
    EXPECT_EQ(2u, gralloc::allocationCount());
    EXPECT_EQ(0u, gralloc::freeCount());
}

TEST_F(CaptureBufferTest, DestroyFreesOnlyTheSelectedDisplaysBuffer) {
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    bootOn();
    // Nothing to free yet, for either selection.
    peer->destroyCwbBuffer();
    peer->setDisplayId(3);
    peer->destroyCwbBuffer();
    EXPECT_EQ(0u, gralloc::freeCount());

    ASSERT_EQ(0, capture(true));
    peer->setDisplayId(0);
    ASSERT_EQ(0, capture());
    peer->destroyCwbBuffer();
    EXPECT_EQ(nullptr, peer->buffer(false).base);
    EXPECT_NE(nullptr, peer->buffer(true).base);
    EXPECT_EQ(1u, gralloc::freeCount());
    // A second destroy has nothing left to free.
    peer->destroyCwbBuffer();
    EXPECT_EQ(1u, gralloc::freeCount());
    EXPECT_EQ(1u, liveNow());
}

TEST_F(CaptureBufferTest, DestructorReleasesBothDisplaysBuffers) {
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    bootOn();
    ASSERT_EQ(0, capture());
    peer->setDisplayId(3);
    ASSERT_EQ(0, capture(true));
    ASSERT_EQ(2u, liveNow());
    peer.reset();
    service.reset();
    composer.reset();
    host::binder::resetRegistry();
    EXPECT_EQ(0u, liveNow());
    EXPECT_EQ(2u, gralloc::freeCount());
}

}  // namespace
}  // namespace cwbtest
