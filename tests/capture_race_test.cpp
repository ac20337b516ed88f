// Captures under load: several clients, the composer's notifications and the vendor's
// completions all on their own threads. Run under TSan to catch unguarded state.
#include <atomic>
#include <chrono>
#include <thread>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using host::device::Frame;

class CaptureRaceTest : public ServiceTest {};

TEST_F(CaptureRaceTest, ClientsComposerAndVendorRunConcurrently) {
    setProp("ro.vendor.zarel.display.cwb.aod_forbidden", "1");
    device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, 0, 255, 0));
    bootOn();

    constexpr int kClients = 4;
    constexpr int kMinIterations = 40;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::atomic<bool> stop{false};
    std::atomic<int> captured{0};
    std::atomic<int> unexpected{0};

    std::thread host([&] {
        for (int i = 0; !stop; ++i) {
            composer->layerChange();
            composer->powerMode(0, i % 5 == 4 ? 1 : 2);
            composer->colorMode(0, i % 8, i % 3);
            composer->aodLayer(i % 7 == 0);
            composer->fodLayer(i % 11 == 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        composer->powerMode(0, 2);
        composer->aodLayer(false);
    });

    std::vector<std::thread> clients;
    for (int t = 0; t < kClients; ++t) {
        clients.emplace_back([&, t] {
            const Rect r = rect(10 * t, 10 * t, 10 * t + 90, 10 * t + 90);
            for (int i = 0; (i < kMinIterations || captured < 2 * kClients) &&
                            std::chrono::steady_clock::now() < deadline;
                 ++i) {
                if ((i + t) % 2 == 0) {
                    Rgb colour;
                    Error word = Error::NONE;
                    service->getRGBValue(r, &colour, &word);
                    const int32_t code = static_cast<int32_t>(word) & 0xFFFF;
                    if (code == 0) {
                        ++captured;
                        if (colour.r != 0 || colour.g != 255 || colour.b != 0) ++unexpected;
                    } else if (code != 1 && code != 3) {
                        ++unexpected;
                    }
                } else {
                    std::vector<float> lumas;
                    Error result = Error::NONE;
                    service->getLumasValue(r, &lumas, &result);
                    if (result == Error::NONE) {
                        ++captured;
                        if (lumas.size() != 1 || lumas[0] != 183.0f / 255.0f) ++unexpected;
                    } else if (result != Error::FAILED && result != Error::SCREEN_OFF) {
                        ++unexpected;
                    }
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        });
    }
    for (auto& client : clients) client.join();
    stop = true;
    host.join();

    EXPECT_EQ(0, unexpected.load());
    EXPECT_GE(captured.load(), 2 * kClients);
    // Every accepted writeback was completed and nothing is left in flight.
    ASSERT_TRUE(waitFor([&] { return device->displayConfig()->pendingCount() == 0; }));
    size_t accepted = 0;
    for (const auto& request : device->displayConfig()->requests()) {
        if (request.result == EX_NONE) ++accepted;
    }
    EXPECT_EQ(accepted, device->displayConfig()->completionsSent());
    // The service is still in a sane state afterwards.
    ASSERT_TRUE(gateOpen());
    EXPECT_EQ(0, peer->setCWBOutputBuffer(rect(0, 0, 0, 0), false));
    EXPECT_EQ(1u, host::gralloc::allocationCount());
}

}  // namespace
}  // namespace cwbtest
