// Gralloc stand-in: layout, fault injection, mapping and fd hand-over through AIDL NativeHandle.
#include <aidlcommonsupport/NativeHandle.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <hardware/gralloc.h>
#include <host/gralloc_control.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <ui/GraphicBufferAllocator.h>
#include <ui/GraphicBufferMapper.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace {

using android::GraphicBufferAllocator;
using android::GraphicBufferMapper;
using android::Rect;
namespace gralloc = host::gralloc;

constexpr uint64_t kCpuUsage = GRALLOC_USAGE_SW_READ_OFTEN | GRALLOC_USAGE_SW_WRITE_OFTEN;

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

    android::status_t allocate(uint32_t w, uint32_t h, android::PixelFormat format,
                               buffer_handle_t* handle, uint32_t* stride = nullptr) {
        return GraphicBufferAllocator::get().allocate(w, h, format, 1, kCpuUsage, handle, stride,
                                                      "test");
    }

    size_t liveAtStart = 0;
};

struct LayoutCase {
    uint32_t width;
    uint32_t height;
    android::PixelFormat format;
    uint32_t alignment;
    uint32_t pitch;
    uint64_t size;
};

void PrintTo(const LayoutCase& c, std::ostream* os) {
    *os << c.width << "x" << c.height << " format " << c.format << " align " << c.alignment;
}

class PlatformGrallocLayoutTest : public PlatformGrallocTest,
                                  public ::testing::WithParamInterface<LayoutCase> {};

TEST_P(PlatformGrallocLayoutTest, PitchSizeAndHandleInts) {
    const LayoutCase& c = GetParam();
    gralloc::setRowAlignment(c.alignment);
    buffer_handle_t handle = nullptr;
    uint32_t stride = 0;
    ASSERT_EQ(allocate(c.width, c.height, c.format, &handle, &stride), android::OK);
    EXPECT_EQ(stride, c.pitch);

    ASSERT_EQ(handle->numFds, gralloc::kNumFds);
    ASSERT_EQ(handle->numInts, gralloc::kNumInts);
    const int* ints = &handle->data[handle->numFds];
    EXPECT_EQ(ints[gralloc::kIntWidth], static_cast<int>(c.width));
    EXPECT_EQ(ints[gralloc::kIntHeight], static_cast<int>(c.height));
    EXPECT_EQ(ints[gralloc::kIntPitch], static_cast<int>(c.pitch));
    EXPECT_EQ(ints[gralloc::kIntFormat], c.format);
    uint64_t size = static_cast<uint32_t>(ints[gralloc::kIntSizeLow]) |
                    (uint64_t{static_cast<uint32_t>(ints[gralloc::kIntSizeHigh])} << 32);
    EXPECT_EQ(size, c.size);
    struct stat st {};
    ASSERT_EQ(fstat(handle->data[0], &st), 0);
    EXPECT_EQ(static_cast<uint64_t>(st.st_size), c.size);

    GraphicBufferMapper& mapper = GraphicBufferMapper::get();
    uint64_t value = 0;
    ASSERT_EQ(mapper.getAllocationSize(handle, &value), android::OK);
    EXPECT_EQ(value, c.size);
    ASSERT_EQ(mapper.getWidth(handle, &value), android::OK);
    EXPECT_EQ(value, c.width);
    ASSERT_EQ(mapper.getHeight(handle, &value), android::OK);
    EXPECT_EQ(value, c.height);
    android::ui::PixelFormat format{};
    ASSERT_EQ(mapper.getPixelFormatRequested(handle, &format), android::OK);
    EXPECT_EQ(static_cast<int32_t>(format), c.format);
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
}

INSTANTIATE_TEST_SUITE_P(
        Layouts, PlatformGrallocLayoutTest,
        ::testing::Values(LayoutCase{1080, 2400, HAL_PIXEL_FORMAT_RGB_888, 64, 1088, 7833600},
                          LayoutCase{1088, 10, HAL_PIXEL_FORMAT_RGB_888, 64, 1088, 32640},
                          LayoutCase{1, 1, HAL_PIXEL_FORMAT_RGBA_8888, 64, 64, 256},
                          LayoutCase{100, 3, HAL_PIXEL_FORMAT_RGB_565, 1, 100, 600},
                          LayoutCase{1080, 2, HAL_PIXEL_FORMAT_RGBA_8888, 0, 1080, 8640}),
        [](const ::testing::TestParamInfo<LayoutCase>& info) {
            const LayoutCase& c = info.param;
            return std::to_string(c.width) + "x" + std::to_string(c.height) + "_format" +
                   std::to_string(c.format) + "_align" + std::to_string(c.alignment);
        });

TEST_F(PlatformGrallocTest, FailedAllocationLeavesSlotAlone) {
    buffer_handle_t sentinel = reinterpret_cast<buffer_handle_t>(0x1234);
    buffer_handle_t handle = sentinel;
    gralloc::failAllocations(2, android::BAD_VALUE);
    EXPECT_EQ(allocate(64, 64, HAL_PIXEL_FORMAT_RGB_888, &handle), android::BAD_VALUE);
    EXPECT_EQ(allocate(64, 64, HAL_PIXEL_FORMAT_RGB_888, &handle), android::BAD_VALUE);
    EXPECT_EQ(handle, sentinel);
    EXPECT_EQ(allocate(64, 64, 99, &handle), android::BAD_VALUE);  // unknown format
    EXPECT_EQ(handle, sentinel);
    EXPECT_EQ(gralloc::allocationCount(), 0u);

    ASSERT_EQ(allocate(64, 64, HAL_PIXEL_FORMAT_RGB_888, &handle), android::OK);  // injection over
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
}

TEST_F(PlatformGrallocTest, FailureLeavingHandleStillNeedsFree) {
    buffer_handle_t handle = nullptr;
    gralloc::failAllocationsLeavingHandle(1);
    EXPECT_EQ(allocate(64, 64, HAL_PIXEL_FORMAT_RGB_888, &handle), android::NO_MEMORY);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(gralloc::liveBuffers(), liveAtStart + 1);
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::BAD_VALUE);  // already gone
    EXPECT_EQ(gralloc::allocationCount(), 1u);
    EXPECT_EQ(gralloc::freeCount(), 1u);
}

TEST_F(PlatformGrallocTest, ReportedFormatOverridesOnlyTheQuery) {
    gralloc::reportFormat(HAL_PIXEL_FORMAT_RGBA_8888);
    buffer_handle_t handle = nullptr;
    ASSERT_EQ(allocate(16, 16, HAL_PIXEL_FORMAT_RGB_888, &handle), android::OK);
    android::ui::PixelFormat format{};
    ASSERT_EQ(GraphicBufferMapper::get().getPixelFormatRequested(handle, &format), android::OK);
    EXPECT_EQ(format, android::ui::PixelFormat::RGBA_8888);
    EXPECT_EQ(handle->data[1 + gralloc::kIntFormat], HAL_PIXEL_FORMAT_RGB_888);
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
}

TEST_F(PlatformGrallocTest, LockMapsOnceAndRejectsBadRequests) {
    buffer_handle_t handle = nullptr;
    ASSERT_EQ(allocate(1080, 4, HAL_PIXEL_FORMAT_RGB_888, &handle), android::OK);
    GraphicBufferMapper& mapper = GraphicBufferMapper::get();
    const Rect full(0, 0, 1080, 4);

    void* first = nullptr;
    int32_t bpp = 0;
    int32_t bytesPerStride = 0;
    ASSERT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, full, &first, &bpp, &bytesPerStride),
              android::OK);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(bpp, 3);
    EXPECT_EQ(bytesPerStride, 1088 * 3);
    void* second = nullptr;
    ASSERT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, full, &second), android::OK);
    EXPECT_EQ(second, first);
    EXPECT_EQ(mapper.unlock(handle), android::OK);
    EXPECT_EQ(mapper.unlock(handle), android::OK);
    EXPECT_EQ(mapper.unlock(handle), android::BAD_VALUE);  // not locked any more

    void* address = reinterpret_cast<void*>(0x1);
    gralloc::failLocks(1);
    EXPECT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, full, &address), android::NO_MEMORY);
    EXPECT_EQ(address, nullptr);
    EXPECT_EQ(mapper.lock(handle, 0, full, &address), android::BAD_VALUE);  // no CPU usage
    EXPECT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, Rect(0, 0, 1081, 4), &address),
              android::BAD_VALUE);
    EXPECT_EQ(mapper.lock(nullptr, GRALLOC_USAGE_SW_READ_OFTEN, full, &address),
              android::BAD_VALUE);

    // Freed while locked, as the product does.
    ASSERT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, full, &address), android::OK);
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
    EXPECT_EQ(mapper.lock(handle, GRALLOC_USAGE_SW_READ_OFTEN, full, &address), android::BAD_VALUE);
}

bool fdIsOpen(int fd) {
    return fcntl(fd, F_GETFD) != -1;
}

TEST_F(PlatformGrallocTest, DupToAidlSharesTheBufferAndFreeClosesEverything) {
    buffer_handle_t handle = nullptr;
    ASSERT_EQ(allocate(100, 2, HAL_PIXEL_FORMAT_RGB_888, &handle), android::OK);
    const int ownFd = handle->data[0];
    void* locked = nullptr;
    ASSERT_EQ(GraphicBufferMapper::get().lock(handle, GRALLOC_USAGE_SW_READ_OFTEN,
                                              Rect(0, 0, 100, 2), &locked),
              android::OK);

    aidl::android::hardware::common::NativeHandle aidlHandle = android::dupToAidl(handle);
    ASSERT_EQ(aidlHandle.fds.size(), 1u);
    const int dupFd = aidlHandle.fds[0].get();
    EXPECT_NE(dupFd, ownFd);
    struct stat a {};
    struct stat b {};
    ASSERT_EQ(fstat(ownFd, &a), 0);
    ASSERT_EQ(fstat(dupFd, &b), 0);
    EXPECT_EQ(a.st_ino, b.st_ino);
    EXPECT_EQ(aidlHandle.ints, std::vector<int32_t>(&handle->data[1], &handle->data[1] + 6));

    // A vendor writes the last pixel of row 1 through its own mapping of the duplicated fd.
    const int32_t pitch = aidlHandle.ints[gralloc::kIntPitch];
    const size_t size = static_cast<uint32_t>(aidlHandle.ints[gralloc::kIntSizeLow]);
    auto* vendor = static_cast<uint8_t*>(
            mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, dupFd, 0));
    ASSERT_NE(vendor, MAP_FAILED);
    const size_t offset = (1 * pitch + 99) * 3;
    vendor[offset] = 0xAB;
    EXPECT_EQ(static_cast<uint8_t*>(locked)[offset], 0xAB);
    munmap(vendor, size);

    native_handle_t* back = android::dupFromAidl(aidlHandle);
    ASSERT_NE(back, nullptr);
    EXPECT_NE(back->data[0], dupFd);
    EXPECT_EQ(back->data[1 + gralloc::kIntPitch], pitch);
    native_handle_close(back);
    native_handle_delete(back);

    EXPECT_TRUE(android::dupToAidl(nullptr).fds.empty());
    EXPECT_EQ(GraphicBufferAllocator::get().free(handle), android::OK);
    EXPECT_FALSE(fdIsOpen(ownFd));
    EXPECT_TRUE(fdIsOpen(dupFd));  // the duplicate belongs to the NativeHandle
}

TEST_F(PlatformGrallocTest, ConcurrentAllocateLockFree) {
    constexpr int kThreads = 6;
    constexpr int kRounds = 50;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&failures] {
            for (int i = 0; i < kRounds; ++i) {
                buffer_handle_t h = nullptr;
                void* p = nullptr;
                bool ok = GraphicBufferAllocator::get().allocate(8, 8, HAL_PIXEL_FORMAT_RGBA_8888,
                                                                 1, kCpuUsage, &h, nullptr,
                                                                 "t") == android::OK &&
                          GraphicBufferMapper::get().lock(h, GRALLOC_USAGE_SW_WRITE_OFTEN,
                                                          Rect(0, 0, 8, 8), &p) == android::OK;
                if (ok) static_cast<uint8_t*>(p)[0] = static_cast<uint8_t>(i);
                if (!ok || GraphicBufferAllocator::get().free(h) != android::OK) ++failures;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(gralloc::freeCount(), static_cast<size_t>(kThreads * kRounds));
}

}  // namespace
