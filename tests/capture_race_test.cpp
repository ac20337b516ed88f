// Captures under load: clients of all three analyses, the composer's notifications, picture
// changes and the vendor's completions all on their own threads. Run under TSan.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "capture_helpers.h"

namespace cwbtest {
namespace {

using host::device::Frame;
using host::device::Pixel;

class CaptureRaceTest : public CaptureTest {
  protected:
    // The main panel in red, the secondary one in blue, both on.
    void twoColouredDisplays() {
        addSecondary();
        device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, 255, 0, 0));
        device->setFrame(PanelId::Secondary, FrameKind::Mixer, Frame::filled(720, 1600, 0, 0, 255));
        bootOn();
        composer->powerMode(3, 2);
    }
};

TEST_F(CaptureRaceTest, ClientsComposerAndVendorRunConcurrently) {
    setProp("ro.vendor.zarel.display.cwb.aod_forbidden", "1");
    const Pixel colours[] = {{0, 255, 0}, {200, 100, 50}};
    const Frame frames[] = {Frame::filled(1080, 2400, 0, 255, 0),
                            Frame::filled(1080, 2400, 200, 100, 50)};
    device->setFrame(PanelId::Main, FrameKind::Mixer, frames[0]);
    bootOn();

    constexpr int kClients = 4;
    constexpr int kMinIterations = 40;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::atomic<bool> stop{false};
    std::atomic<int> captured{0}, unexpected{0};

    std::thread host([&] {
        for (int i = 0; !stop; ++i) {
            device->setFrame(PanelId::Main, FrameKind::Mixer, frames[i / 3 % 2]);
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
                // Refusals (gate, busy, doze with AOD, screen off) are fine; a value that is
                // neither picture's is not.
                Error result = Error::NONE;
                std::function<bool(Pixel)> shows;
                if ((i + t) % 3 == 0) {
                    const auto [word, c] = rgb(r);
                    result = static_cast<Error>(word & 0xFFFF);
                    shows = [c = c](Pixel p) { return c.r == p.r && c.g == p.g && c.b == p.b; };
                } else if ((i + t) % 3 == 1) {
                    const auto [lumaResult, value] = luma(r);
                    result = lumaResult;
                    shows = [value = value](Pixel p) { return value == lumaOf(p); };
                } else {
                    const auto [histResult, h] = histogram(r);
                    result = histResult;
                    shows = [h = h](Pixel p) {
                        return h.counts[p.r * 3] == 8100 && h.counts[p.g * 3 + 1] == 8100 &&
                               h.counts[p.b * 3 + 2] == 8100;
                    };
                }
                captured += result == Error::NONE;
                unexpected += result == Error::NONE
                                      ? !shows(colours[0]) && !shows(colours[1])
                                      : result != Error::FAILED && result != Error::SCREEN_OFF;
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
    ASSERT_TRUE(waitFor([&] { return vendor().pendingCount() == 0; }));
    const auto requests = vendor().requests();
    EXPECT_EQ(static_cast<size_t>(std::count_if(requests.begin(), requests.end(),
                                                [](const auto& r) { return r.result == EX_NONE; })),
              vendor().completionsSent());
    ASSERT_TRUE(gateOpen());
    EXPECT_EQ(0, capture());
    EXPECT_EQ(1u, host::gralloc::allocationCount());
}

// The display stored by another request while one runs changes nothing of the running one: its
// rectangle check, buffer and answer stay the main display's.
TEST_F(CaptureRaceTest, DisplayStoredMidRequestLeavesItAlone) {
    twoColouredDisplays();
    setDebug({1});
    host::log::setListener([this](const host::log::Line& line) {
        if (line.text.rfind("getRGBValue [", 0) == 0) peer->setDisplayId(3);
    });
    std::vector<int32_t> values;
    Error error = Error::FAILED;
    ASSERT_TRUE(service->getCwbValue(1, rect(800, 1700, 830, 1730), &values, &error).isOk());
    host::log::setListener(nullptr);
    EXPECT_EQ(Error::NONE, error);
    ASSERT_EQ(9u, values.size());
    EXPECT_EQ((std::vector<int32_t>{255, 0, 0}),
              std::vector<int32_t>(values.begin(), values.begin() + 3));
    EXPECT_EQ(1u, vendor().requests().size());
    EXPECT_EQ(1, vendor().requests()[0].dispId);
}

// Feature 1 (main) and feature 3 (secondary) at once: every answer comes whole from the display
// its feature names, never from the other one's buffer.
TEST_F(CaptureRaceTest, DispatcherServesEachFeatureItsOwnDisplay) {
    twoColouredDisplays();
    struct Client {
        int32_t feature;
        Rect rect;
        std::vector<int32_t> colour;
        std::atomic<int> served{0};
        std::atomic<int> wrong{0};
    };
    Client clients[] = {{1, rect(0, 0, 30, 30), {255, 0, 0}},
                        {3, rect(30, 30, 60, 60), {0, 0, 255}}};
    constexpr int kServedEach = 8;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::atomic<bool> stop{false};
    std::thread host([&] {
        while (!stop) {
            composer->layerChange();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    auto run = [&](Client& c) {
        while (c.served < kServedEach && std::chrono::steady_clock::now() < deadline) {
            std::vector<int32_t> values;
            Error error = Error::NONE;
            ASSERT_TRUE(service->getCwbValue(c.feature, c.rect, &values, &error).isOk());
            if (error == Error::NONE) {
                ASSERT_EQ(9u, values.size());
                ++c.served;
                if (std::vector<int32_t>(values.begin(), values.begin() + 3) != c.colour) ++c.wrong;
            } else if (error != Error::FAILED) {
                ++c.wrong;  // busy or gated requests fail; nothing else may
            }
        }
    };
    std::thread main([&] { run(clients[0]); });
    std::thread secondary([&] { run(clients[1]); });
    main.join();
    secondary.join();
    stop = true;
    host.join();
    for (const Client& c : clients) {
        EXPECT_EQ(kServedEach, c.served) << "feature " << c.feature;
        EXPECT_EQ(0, c.wrong) << "feature " << c.feature;
    }
}

}  // namespace
}  // namespace cwbtest
