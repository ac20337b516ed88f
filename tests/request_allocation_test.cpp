// Heap use on the request paths once the capture buffer exists: global operator new is replaced
// in this binary, and counts only on a thread that asked for it, inside a test's scope.
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <new>

#include "service_fixture.h"

namespace {

thread_local bool tCounting = false;
thread_local size_t tAllocations = 0;

void* allocate(size_t size) {
    if (tCounting) ++tAllocations;
    if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(size_t size) {
    return allocate(size);
}
void* operator new[](size_t size) {
    return allocate(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    if (tCounting) ++tAllocations;
    return std::malloc(size == 0 ? 1 : size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    if (tCounting) ++tAllocations;
    return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete[](void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, size_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, size_t) noexcept {
    std::free(p);
}

namespace cwbtest {
namespace {

// Allocations made by fn on this thread.
template <typename Fn>
size_t allocationsOf(Fn&& fn) {
    tAllocations = 0;
    tCounting = true;
    fn();
    tCounting = false;
    return tAllocations;
}

class RequestAllocationTest : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        bootOn();
        Error ignored;
        region.reset(memfd_create("cwb_allocation_region", MFD_CLOEXEC));
        ASSERT_EQ(0, ftruncate(region.get(), kRegionBytes));
        ASSERT_TRUE(service->initializeSharedMemory(0, kRegionBytes, region, &ignored).isOk());
    }

    // A fresh capture is needed: the cache emptied and the 50 ms gate open.
    void newFrame() {
        service->invalidCache();
        ASSERT_TRUE(gateOpen());
    }

    static constexpr int32_t kRegionBytes = 4096;
    const Rect kArea{100, 200, 130, 230};
    ndk::ScopedFileDescriptor region;
    // Outputs sized before any count, as a client reuses them.
    Rgb rgbOut;
    std::vector<float> lumasOut = std::vector<float>(0);
    Histogram histogramOut;
    std::vector<int32_t> valuesOut;
    Error error = Error::FAILED;
};

TEST_F(RequestAllocationTest, CacheHitsPassesAndCropsAllocateNothingAfterWarmUp) {
    lumasOut.reserve(64);
    valuesOut.reserve(64);
    const std::pair<const char*, std::function<void()>> calls[] = {
            {"getRGBValue hit", [&] { service->getRGBValue(kArea, &rgbOut, &error); }},
            {"getLumasValue hit", [&] { service->getLumasValue(kArea, &lumasOut, &error); }},
            {"getHistogramValue hit",
             [&] { service->getHistogramValue(kArea, &histogramOut, &error); }},
            {"getCwbValue 2 hit", [&] { service->getCwbValue(2, kArea, &valuesOut, &error); }},
            {"getCwbValue 1 hit", [&] { service->getCwbValue(1, kArea, &valuesOut, &error); }},
            {"getSharedData copy",
             [&] {
                 service->getSharedData(5, kArea, ndk::ScopedFileDescriptor(), kRegionBytes,
                                        &valuesOut, &error);
             }},
            {"invalidCache", [&] { service->invalidCache(); }},
    };
    newFrame();
    for (int round = 0; round < 2; ++round) {  // the first round warms up
        for (size_t i = 0; i < std::size(calls); ++i) {
            lumasOut.clear();
            valuesOut.clear();
            host::log::clear();  // keeps the store's capacity
            const size_t n = allocationsOf(calls[i].second);
            // The host log stand-in keeps each line on the heap (liblog formats on the stack);
            // that is all a request may allocate.
            const size_t logged = host::log::lines().size();
            if (round == 1) {
                EXPECT_LE(n, logged) << calls[i].first;
            }
            if (i + 1 == std::size(calls)) newFrame();
        }
        // Refill the caches for the hits of the next round.
        for (size_t i = 0; i < 3; ++i) calls[i].second();
    }
}

TEST_F(RequestAllocationTest, PixelPassesAllocateNothing) {
    std::vector<uint8_t> pixels(64 * 64 * 3, 0x5A);
    const Rect whole{0, 0, 60, 64};
    std::array<unsigned char, 3> codes{};
    unsigned short state = 0;
    unsigned int bins[256][3] = {};
    const size_t n = allocationsOf([&] {
        peer->calcPixelsRGB(pixels.data(), 64, whole, codes, state);
        peer->calcPixelsLumas(pixels.data(), 64, whole);
        peer->calcPixelsHistogram(pixels.data(), 64, whole, bins);
    });
    EXPECT_EQ(0u, n);
    EXPECT_EQ(60u * 64u, bins[0x5A][0]);
}

// A miss captures: converting the buffer handle for the vendor call (two vectors), the
// simulated vendor's request record (plus, now and then, the growth of its history) and the
// result-cache node are the only allocations.
TEST_F(RequestAllocationTest, MissesAllocateOnlyForTheVendorCallAndTheCacheNode) {
    for (int round = 0; round < 3; ++round) {
        for (int kind = 0; kind < 3; ++kind) {
            newFrame();
            lumasOut.clear();
            const size_t n = allocationsOf([&] {
                if (kind == 0) service->getRGBValue(kArea, &rgbOut, &error);
                if (kind == 1) service->getLumasValue(kArea, &lumasOut, &error);
                if (kind == 2) service->getHistogramValue(kArea, &histogramOut, &error);
            });
            ASSERT_EQ(0, static_cast<int32_t>(error) & 0xFFFF) << "kind " << kind;
            if (round > 0) {
                EXPECT_LE(n, 5u) << "kind " << kind;
            }
        }
    }
}

}  // namespace
}  // namespace cwbtest
