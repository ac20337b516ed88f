// Feature requests, crop copies, mode switches, region changes and layer changes from several
// threads at once; run under ThreadSanitizer this is where a data race would show.
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID;
using host::device::Frame;

constexpr int32_t kRegionSize = 64 * 1024;

class FeaturesConcurrencyTest : public ServiceTest {
  protected:
    ndk::ScopedFileDescriptor makeRegion() {
        ndk::ScopedFileDescriptor fd(memfd_create("cwb_concurrency_region", MFD_CLOEXEC));
        EXPECT_EQ(0, ftruncate(fd.get(), kRegionSize));
        return fd;
    }
};

TEST_F(FeaturesConcurrencyTest, RequestsCopiesModesAndLayerChangesTogether) {
    setProp("ro.vendor.zarel.display.cwb.roi", "1");
    setProp("ro.vendor.zarel.display.cwb.apl_read_support", "1");
    device->setFrame(PanelId::Main, FrameKind::Mixer, *Frame::pattern("bars", 1080, 2400));
    device->setAplFile("0f a0\n");
    device->qservice()->setAnswer(303, 1);
    device->qservice()->setAnswer(304, 2000);
    bootOn();
    ndk::ScopedFileDescriptor regions[2] = {makeRegion(), makeRegion()};
    Error ignored;
    ASSERT_TRUE(service->initializeSharedMemory(0, kRegionSize, regions[0], &ignored).isOk());

    constexpr int kRounds = 12;
    std::atomic<int> running{0};
    std::vector<std::thread> threads;
    auto spawn = [&](auto body) {
        ++running;
        threads.emplace_back([&, body] {
            body();
            --running;
        });
    };
    // Feature requests of every handled kind; each may capture and waits for a layer change.
    for (int id : {1, 2}) {
        spawn([&, id] {
            for (int i = 0; i < kRounds; ++i) {
                std::vector<int32_t> values;
                Error error = Error::NONE;
                EXPECT_TRUE(service->getCwbValue(id, rect(0, 0, 200, 200), &values, &error).isOk());
                EXPECT_EQ(id == 1 ? 9u : 6u, values.size());
            }
        });
    }
    // Crops and mode switches.
    spawn([&] {
        for (int i = 0; i < kRounds * 8; ++i) {
            std::vector<int32_t> values;
            Error error = Error::NONE;
            const int id = i % 4 == 0 ? 3 : i % 4 == 2 ? 2 : 5;
            auto status = service->getSharedData(id, rect(0, 0, 100, 100), regions[0], 30012,
                                                 &values, &error);
            EXPECT_TRUE(status.isOk() || status.getServiceSpecificError() == -1);
        }
    });
    // The region changes hands, the resolution is asked, the statistics run directly.
    spawn([&] {
        for (int i = 0; i < kRounds * 4; ++i) {
            Error e;
            service->releaseSharedMemory(0, 0, &e);
            service->initializeSharedMemory(0, kRegionSize, regions[i % 2], &e);
            std::vector<int32_t> resolution;
            service->getScreenResolution(0, &resolution, &e);
            EXPECT_EQ(2u, resolution.size());
            if (i % 8 == 0) {
                Rgb out;
                service->getRGBValue(rect(10, 10, 20, 20), &out, &e);
            }
        }
    });
    // The composer keeps changing layers until everyone else is done.
    std::thread composerThread([&] {
        while (running > 0) {
            composer->layerChange();
            std::this_thread::yield();
        }
    });
    for (auto& t : threads) t.join();
    composerThread.join();

    // Still serving afterwards.
    ASSERT_TRUE(gateOpen());
    composer->layerChange();
    std::vector<int32_t> values;
    Error error = Error::FAILED;
    ASSERT_TRUE(service->getCwbValue(2, rect(0, 0, 10, 10), &values, &error).isOk());
    EXPECT_EQ(Error::NONE, error);
    EXPECT_TRUE(mLightModeID == 2 || mLightModeID == 3);
    service->releaseSharedMemory(0, 0, &ignored);
}

}  // namespace
}  // namespace cwbtest
