// Gralloc stand-in as the capture code relies on it: row pitch and size, injected failures and
// the lock refusals.
#include <gtest/gtest.h>
#include <hardware/gralloc.h>
#include <host/gralloc_control.h>
#include <ui/GraphicBufferAllocator.h>
#include <ui/GraphicBufferMapper.h>

#include <vector>

namespace {

using android::GraphicBufferAllocator;
using android::GraphicBufferMapper;
using android::Rect;
namespace gralloc = host::gralloc;

class PlatformGrallocTest : public ::testing::Test {
  protected:
    void SetUp() override {
        gralloc::reset();
        liveAtStart = gralloc::liveBuffers();
    }
    void TearDown() override {
        EXPECT_EQ(gralloc::liveBuffers(), liveAtStart) << "a test leaked a buffer";
        gralloc::reset();
    }
    static android::status_t allocate(uint32_t w, uint32_t h, android::PixelFormat format,
                                      buffer_handle_t* handle, uint32_t* stride = nullptr) {
        return GraphicBufferAllocator::get().allocate(
                w, h, format, 1, GRALLOC_USAGE_SW_READ_OFTEN | GRALLOC_USAGE_SW_WRITE_OFTEN, handle,
                stride, "test");
    }
    size_t liveAtStart = 0;
};

TEST_F(PlatformGrallocTest, PitchSizeAndFormat) {
    const struct {
        uint32_t width, height;
        android::PixelFormat format;
        uint32_t alignment, pitch;
        uint64_t size;
    } cases[] = {{1080, 2400, HAL_PIXEL_FORMAT_RGB_888, 64, 1088, 7833600},
                 {1088, 10, HAL_PIXEL_FORMAT_RGB_888, 64, 1088, 32640},
                 {1, 1, HAL_PIXEL_FORMAT_RGBA_8888, 64, 64, 256},
                 {100, 3, HAL_PIXEL_FORMAT_RGB_565, 1, 100, 600},
                 {1080, 2, HAL_PIXEL_FORMAT_RGBA_8888, 0, 1080, 8640}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.width << "x" << c.height << " format " << c.format
                                          << " align " << c.alignment);
        gralloc::setRowAlignment(c.alignment);
        buffer_handle_t handle = nullptr;
        uint32_t stride = 0;
        ASSERT_EQ(allocate(c.width, c.height, c.format, &handle, &stride), android::OK);
        EXPECT_EQ(stride, c.pitch);
        uint64_t size = 0;
        EXPECT_EQ(GraphicBufferMapper::get().getAllocationSize(handle, &size), android::OK);
        EXPECT_EQ(size, c.size);
        android::ui::PixelFormat format{};
        EXPECT_EQ(GraphicBufferMapper::get().getPixelFormatRequested(handle, &format), android::OK);
        EXPECT_EQ(static_cast<int32_t>(format), c.format);
        EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
    }
}

TEST_F(PlatformGrallocTest, InjectedAllocationFailures) {
    // A plain failure leaves the caller's slot alone.
    buffer_handle_t sentinel = reinterpret_cast<buffer_handle_t>(0x1234), handle = sentinel;
    gralloc::failAllocations(2, android::BAD_VALUE);
    EXPECT_EQ(allocate(64, 64, HAL_PIXEL_FORMAT_RGB_888, &handle), android::BAD_VALUE);
    EXPECT_EQ(allocate(64, 64, HAL_PIXEL_FORMAT_RGB_888, &handle), android::BAD_VALUE);
    EXPECT_EQ(allocate(64, 64, 99, &handle), android::BAD_VALUE);  // unknown format
    EXPECT_EQ(handle, sentinel);
    EXPECT_EQ(gralloc::allocationCount(), 0u);
    // One that leaves a live handle behind still needs a free, exactly one.
    handle = nullptr;
    gralloc::failAllocationsLeavingHandle(1);
    EXPECT_EQ(allocate(64, 64, HAL_PIXEL_FORMAT_RGB_888, &handle), android::NO_MEMORY);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(gralloc::liveBuffers(), liveAtStart + 1);
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
    EXPECT_DEATH(GraphicBufferAllocator::get().free(handle), "free of unknown buffer handle");
    int unknown = 0;
    EXPECT_DEATH(GraphicBufferAllocator::get().free(reinterpret_cast<buffer_handle_t>(&unknown)),
                 "free of unknown buffer handle");
    EXPECT_EQ(gralloc::allocationCount(), 1u);
    EXPECT_EQ(gralloc::freeCount(), 1u);
    // A reported format changes only the query, not the layout.
    gralloc::reportFormat(HAL_PIXEL_FORMAT_RGBA_8888);
    ASSERT_EQ(allocate(16, 16, HAL_PIXEL_FORMAT_RGB_888, &handle), android::OK);
    android::ui::PixelFormat format{};
    ASSERT_EQ(GraphicBufferMapper::get().getPixelFormatRequested(handle, &format), android::OK);
    EXPECT_EQ(format, android::ui::PixelFormat::RGBA_8888);
    EXPECT_EQ(handle->data[1 + gralloc::kIntFormat], HAL_PIXEL_FORMAT_RGB_888);
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
}

TEST_F(PlatformGrallocTest, LockRefusalsAndFreeWhileLocked) {
    buffer_handle_t handle = nullptr;
    ASSERT_EQ(allocate(1080, 4, HAL_PIXEL_FORMAT_RGB_888, &handle), android::OK);
    GraphicBufferMapper& mapper = GraphicBufferMapper::get();
    const Rect full(0, 0, 1080, 4);
    void* address = reinterpret_cast<void*>(0x1);
    ASSERT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, full, &address), android::OK);
    EXPECT_NE(address, reinterpret_cast<void*>(0x1));
    EXPECT_EQ(mapper.unlock(handle), android::OK);
    EXPECT_EQ(mapper.unlock(handle), android::BAD_VALUE);  // not locked any more
    gralloc::failLocks(1);
    EXPECT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, full, &address), android::NO_MEMORY);
    EXPECT_EQ(address, nullptr);
    EXPECT_EQ(mapper.lock(handle, 0, full, &address), android::BAD_VALUE);  // no CPU usage
    EXPECT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, Rect(0, 0, 1081, 4), &address),
              android::BAD_VALUE);
    EXPECT_EQ(mapper.lock(nullptr, GRALLOC_USAGE_SW_READ_OFTEN, full, &address),
              android::BAD_VALUE);
    // The capture code frees its buffer while it is still locked.
    ASSERT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, full, &address), android::OK);
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
    EXPECT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, full, &address), android::BAD_VALUE);
}

}  // namespace
