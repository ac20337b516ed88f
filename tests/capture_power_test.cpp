// Power, colour-mode and overlay-layer state as the composer reports it, and the 50 ms gate
// between captures.
#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>
#include <utils/Timers.h>

#include <atomic>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using Outcome = host::device::SimulatedDisplayConfig::Outcome;
using aidl::vendor::zarel::hardware::cwb::BnCwbCallback;

constexpr nsecs_t kGateNs = 50'000'000;

class CapturePowerTest : public ServiceTest {
  protected:
    int capture() { return peer->setCWBOutputBuffer(rect(0, 0, 0, 0), false); }
    nsecs_t now() { return systemTime(SYSTEM_TIME_MONOTONIC); }
    void debug(bool on) {
        Error ignored;
        ASSERT_TRUE(service->setDebug({on ? 1 : 0}, &ignored).isOk());
    }
};

TEST_F(CapturePowerTest, GateClosesForFiftyMillisecondsAfterASuccessfulCapture) {
    bootOn();
    debug(true);
    // A busy machine may take longer than the gate between two lines; retry until one check
    // provably ran inside the window.
    int checkedInside = 0;
    for (int attempt = 0; attempt < 5 && checkedInside == 0; ++attempt) {
        ASSERT_TRUE(gateOpen());
        ASSERT_EQ(0, capture());
        const nsecs_t last = peer->lastCwbTime();
        host::log::clear();
        const bool allowed = service->captureScreenAllowed();
        const nsecs_t after = now();
        if (after - last >= kGateNs) continue;
        ++checkedInside;
        EXPECT_FALSE(allowed);
        EXPECT_EQ(1u, logCount(ANDROID_LOG_DEBUG, "no need capturescreen\n"));
        // A request in the window is refused without asking the vendor.
        const size_t requests = device->displayConfig()->requests().size();
        const int32_t word = rgb(rect(0, 0, 10, 10)).first;
        if (now() - last < kGateNs) {
            EXPECT_EQ(static_cast<int32_t>(Error::FAILED), word);
            EXPECT_EQ(requests, device->displayConfig()->requests().size());
        }
    }
    ASSERT_GT(checkedInside, 0);

    // The first moment the gate reopens lies at least 50 ms after the completion.
    const nsecs_t last = peer->lastCwbTime();
    ASSERT_TRUE(gateOpen());
    EXPECT_GE(now() - last, kGateNs);
    // And once 60 ms have passed it is open for sure.
    ASSERT_TRUE(waitFor([&] { return now() - last > 60'000'000; }));
    EXPECT_TRUE(service->captureScreenAllowed());
}

TEST_F(CapturePowerTest, FailedCapturesDoNotRestartTheGate) {
    bootOn();
    ASSERT_EQ(0, capture());
    const nsecs_t last = peer->lastCwbTime();
    ASSERT_TRUE(gateOpen());
    for (Outcome outcome : {Outcome::Error, Outcome::Refuse}) {
        device->displayConfig()->pushOutcome(outcome, -1);
        ASSERT_NE(0, capture());
        EXPECT_EQ(last, peer->lastCwbTime());
        EXPECT_TRUE(service->captureScreenAllowed());
    }
}

struct PowerStep {
    uint64_t display;
    int mode;
};

struct PowerCase {
    const char* name;
    const char* secondaryId;  // property value, nullptr when unset
    std::vector<PowerStep> steps;
    int32_t main;
    int32_t sec;
    int32_t cache;
    std::vector<std::string> lines;  // INFO lines, in order
};

void PrintTo(const PowerCase& c, std::ostream* os) {
    *os << c.name;
}

std::string modeLine(int display, int mode) {
    return "CwbService::setPowerMode(): display " + std::to_string(display) +
           ", mode: " + std::to_string(mode);
}

// clang-format off
const PowerCase kPowerCases[] = {
    // name, display_id_sec, steps, main, secondary, cache mode, lines.
    {"UnknownDisplayOn", nullptr, {{2, 2}}, 0, 0, 2, {}},
    {"UnknownDisplayDoze", nullptr, {{2, 1}}, 0, 0, 0, {}},
    {"UnsetSecondaryMatchesNothing", nullptr, {{3, 2}}, 0, 0, 2, {}},
    {"MainOnThenDozeKeepsCacheMode", nullptr, {{0, 2}, {0, 1}}, 1, 0, 2,
     {modeLine(0, 2), modeLine(0, 1)}},
    {"SecondaryDozeSuspend", "3", {{3, 3}}, 0, 3, 3, {modeLine(3, 3)}},
    {"SameIdForBothDisplays", "0", {{0, 2}}, 2, 2, 2, {modeLine(0, 2), modeLine(0, 2)}},
    {"OffAfterOn", "3", {{0, 2}, {3, 2}, {0, 0}}, 0, 2, 0,
     {modeLine(0, 2), modeLine(3, 2), modeLine(0, 0)}},
};
// clang-format on

class CapturePowerModeTest : public CapturePowerTest,
                             public ::testing::WithParamInterface<PowerCase> {};

TEST_P(CapturePowerModeTest, Bookkeeping) {
    const PowerCase& c = GetParam();
    if (c.secondaryId != nullptr)
        setProp("ro.vendor.zarel.display.cwb.display_id_sec", c.secondaryId);
    boot();
    host::log::clear();
    for (const PowerStep& step : c.steps) composer->powerMode(step.display, step.mode);
    EXPECT_EQ(c.main, peer->powerModeMain());
    EXPECT_EQ(c.sec, peer->powerModeSec());
    EXPECT_EQ(c.cache, peer->cachePowerMode());
    std::vector<std::string> lines;
    for (const auto& line : host::log::lines()) lines.push_back(line.text);
    EXPECT_EQ(c.lines, lines);
    for (const auto& line : host::log::lines()) EXPECT_EQ(ANDROID_LOG_INFO, line.priority);
}

INSTANTIATE_TEST_SUITE_P(Modes, CapturePowerModeTest, ::testing::ValuesIn(kPowerCases),
                         [](const auto& info) { return std::string(info.param.name); });

using Command = std::vector<int32_t>;

std::vector<Command> colourCommands(host::device::SimulatedQService& qservice) {
    std::vector<Command> out;
    for (const auto& command : qservice.commands(39)) out.push_back(command.in);
    return out;
}

class CapturePostProcessTest : public CapturePowerTest,
                               public ::testing::WithParamInterface<bool> {};

TEST_P(CapturePostProcessTest, OffRestoresTheColourModesStoredBeforeDisabling) {
    const bool apSide = GetParam();
    setProp("ro.vendor.zarel.display.cwb.postprocess", apSide ? "1" : "0");
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    boot();
    auto& qservice = *device->qservice();
    composer->colorMode(0, 9, 258);
    composer->colorMode(3, 5, 1);
    EXPECT_EQ(9, peer->colorModeMain());
    EXPECT_EQ(258, peer->renderIntentMain());
    EXPECT_EQ(5, peer->colorModeSec());
    EXPECT_EQ(1, peer->renderIntentSec());

    Error ignored;
    ASSERT_TRUE(service->setDebug({-1, -1, 1}, &ignored).isOk());
    ASSERT_TRUE(peer->disablePostProcessedFlag());
    EXPECT_EQ(apSide ? (std::vector<Command>{{0, 7, 300}, {3, 7, 300}}) : std::vector<Command>{},
              colourCommands(qservice));
    qservice.clearCommands();

    // Ignored while disabled: nothing stored, nothing logged.
    host::log::clear();
    composer->colorMode(0, 4, 2);
    composer->colorMode(3, 4, 2);
    EXPECT_EQ(0u, host::log::countContaining("notifyColorModeChange"));
    EXPECT_EQ(9, peer->colorModeMain());
    EXPECT_EQ(5, peer->colorModeSec());

    // On and doze keep it disabled; off, for any display, ends it.
    composer->powerMode(0, 2);
    composer->powerMode(0, 1);
    EXPECT_TRUE(peer->disablePostProcessedFlag());
    EXPECT_TRUE(colourCommands(qservice).empty());
    composer->powerMode(42, 0);
    EXPECT_FALSE(peer->disablePostProcessedFlag());
    EXPECT_EQ(0, peer->cachePowerMode());
    EXPECT_EQ(apSide ? (std::vector<Command>{{0, 9, 258}, {3, 5, 1}}) : std::vector<Command>{},
              colourCommands(qservice));
    EXPECT_EQ(apSide ? 1u : 0u,
              logCount(ANDROID_LOG_INFO, "Enable post processed effect in AP side.\n"));

    // Nothing left to restore on the next off; colour modes are stored again.
    composer->powerMode(0, 0);
    EXPECT_EQ(apSide ? 2u : 0u, colourCommands(qservice).size());
    composer->colorMode(0, 4, 2);
    EXPECT_EQ(4, peer->colorModeMain());
    EXPECT_EQ(2, peer->renderIntentMain());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "CwbService::notifyColorModeChange: display: 0, mode = 4, render "
                           "intent = 2"));
}

INSTANTIATE_TEST_SUITE_P(ApSidePostProcessing, CapturePostProcessTest, ::testing::Bool());

class CountingCallback : public BnCwbCallback {
  public:
    ndk::ScopedAStatus notifyCwbStatus(bool status) override {
        (status ? on : off).fetch_add(1);
        return ndk::ScopedAStatus::ok();
    }
    std::atomic<int> on{0};
    std::atomic<int> off{0};
};

class CaptureFodTest : public CapturePowerTest, public ::testing::WithParamInterface<bool> {};

TEST_P(CaptureFodTest, BroadcastOnlyOnChangeAndOnlyWhenForbidden) {
    const bool forbidden = GetParam();
    setProp("ro.vendor.zarel.display.cwb.fod_forbidden", forbidden ? "1" : "0");
    boot();
    auto client = ndk::SharedRefBase::make<CountingCallback>();
    Error ignored;
    ASSERT_TRUE(service->registerCallback(client, &ignored).isOk());
    ASSERT_EQ(1, client->on.load());  // the status on registration

    struct Step {
        bool present;
        int on;
        int off;
    };
    const Step steps[] = {{true, 1, forbidden ? 1 : 0},
                          {true, 1, forbidden ? 1 : 0},
                          {false, forbidden ? 2 : 1, forbidden ? 1 : 0},
                          {false, forbidden ? 2 : 1, forbidden ? 1 : 0}};
    for (const Step& step : steps) {
        composer->fodLayer(step.present);
        EXPECT_EQ(step.present, peer->fodLayerExist());
        EXPECT_EQ(step.on, client->on.load()) << step.present;
        EXPECT_EQ(step.off, client->off.load()) << step.present;
    }
    // The AOD flag is only stored.
    composer->aodLayer(true);
    EXPECT_TRUE(peer->aodLayerExist());
    composer->aodLayer(false);
    EXPECT_FALSE(peer->aodLayerExist());
    EXPECT_EQ(forbidden ? 2 : 1, client->on.load());
    ASSERT_TRUE(service->unregisterCallback(client, &ignored).isOk());
}

INSTANTIATE_TEST_SUITE_P(FodForbidden, CaptureFodTest, ::testing::Bool());

}  // namespace
}  // namespace cwbtest
