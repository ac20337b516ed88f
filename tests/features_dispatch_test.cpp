// getCwbValue: dispatch by id, the flattened answer, its interval and wait, the panel loading.
#include <utils/Timers.h>

#include <algorithm>
#include <climits>
#include <thread>

#include "features_helpers.h"

namespace cwbtest::features {
namespace {

using host::device::Device;
using host::device::Frame;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int32_t kVsync5Hz = 200000000;
const std::string kTimeoutLine = "WaitForLayerChange timeout\n";

struct Answer {
    Error error = Error::NONE;
    std::vector<int32_t> values;
    Clock::duration elapsed{};
    int64_t bootAfter = 0;

    // The interval, high word first, and the loading follow the analysis entries.
    int64_t time(size_t fromEnd) const {
        const auto high = static_cast<uint32_t>(values[values.size() - fromEnd]);
        return static_cast<int64_t>(static_cast<uint64_t>(high) << 32 |
                                    static_cast<uint32_t>(values[values.size() - fromEnd + 1]));
    }
    int64_t start() const { return time(5); }
    int64_t end() const { return time(3); }
    int32_t loading() const { return values.back(); }
};

class DispatchTest : public ServiceTest {
  protected:
    Answer cwbValue(int32_t id, const Rect& r, Answer a = {}) {
        const auto start = Clock::now();
        EXPECT_TRUE(service->getCwbValue(id, r, &a.values, &a.error).isOk());
        a.elapsed = Clock::now() - start;
        a.bootAfter = systemTime(SYSTEM_TIME_BOOTTIME);
        return a;
    }
};

TEST_F(DispatchTest, IdsWithoutAnAnswer) {
    bootOn();
    peer->setDisplayId(3);
    for (int32_t id : {INT_MIN, -1, 0, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, INT_MAX}) {
        SCOPED_TRACE(id);
        host::log::clear();
        Answer a = cwbValue(id, rect(0, 0, 10, 10), {Error::SCREEN_OFF, {7, 8, 9}});
        const std::string n = std::to_string(id);
        EXPECT_LT(a.elapsed, milliseconds(45));  // no interval, so no wait
        EXPECT_EQ(3, peer->displayId());
        // Out of range, 3 without a secondary display, and the ids with no feature: all refused,
        // with an empty answer whatever the caller's list held.
        const bool outside = id < 1 || id > 14;
        EXPECT_EQ(Error::INVALID_ARGUMENT, a.error);
        EXPECT_EQ(std::vector<int32_t>{}, a.values);
        EXPECT_EQ((outside   ? Lines{{kE, "getCwbValue error ID = " + n}}
                   : id == 3 ? Lines{{kI, "MORVIK_AI::CWB_RGB_VALUE_SEC::in_featureId=3"},
                                     {kE, "getCwbValue error ID = -1"}}
                             : Lines{{kE, "getCwbValue default, no choice!"},
                                     {kE, "getCwbValue failed FeatureId = " + n +
                                                  ", _aidl_return = 2"}}),
                  logged());
    }
    EXPECT_TRUE(device->displayConfig()->requests().empty());
}

TEST_F(DispatchTest, SecondaryFeatureSamplesTheSecondaryPanelWithItsOwnFloor) {
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    device->setPanelModes(PanelId::Secondary, {{720, 1600, kVsync5Hz}});
    device->setFrame(PanelId::Secondary, FrameKind::Mixer, Frame::filled(720, 1600, 10, 20, 30));
    device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, 90, 90, 90));
    bootOn();
    composer->powerMode(3, 2);
    Answer a = cwbValue(3, rect(0, 0, 72, 160));
    ASSERT_EQ(9u, a.values.size());
    EXPECT_EQ(Error::NONE, a.error);
    EXPECT_EQ((std::vector<int32_t>{10, 20, 30}),
              std::vector<int32_t>(a.values.begin(), a.values.begin() + 3));
    EXPECT_EQ(3, peer->displayId());
    const auto requests = device->displayConfig()->requests();
    ASSERT_EQ(1u, requests.size());
    EXPECT_EQ(4, requests[0].dispId);  // BUILTIN2
    // 50 ms of waiting is below the 200 ms period of the secondary panel, not of the main one.
    ASSERT_LT(a.end() - peer->lastCwbDoneTime(), kVsync5Hz);
    EXPECT_EQ(kVsync5Hz, a.end() - a.start());
}

TEST_F(DispatchTest, AnalysisEntriesThenIntervalThenLoading) {
    setProp("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
    device->setAplFile("0f a0\n");
    device->qservice()->setAnswer(303, 1);
    bootOn();
    debugOn(*service);
    auto grey = [](uint8_t g) { return Frame::filled(1080, 2400, g, g, g); };
    const struct {
        Frame frame;
        int32_t state;
        int32_t luma;  // times 10000, truncated (grey 64 is 0.25098); -1 when not checked
    } cases[] = {{Frame::filled(1080, 2400, 200, 100, 50), 1, -1},
                 {*Frame::pattern("checker", 1080, 2400), 2, -1},  // black and white
                 {*Frame::pattern("gradient", 1080, 2400), 0, -1},
                 {grey(0), 1, 0},
                 {grey(64), 1, 2509},
                 {grey(255), 1, 10000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        device->setFrame(PanelId::Main, FrameKind::Mixer, c.frame);
        composer->layerChange();
        ASSERT_TRUE(gateOpen());
        peer->setDisplayId(3);  // feature 1 always samples the main display
        Answer a = cwbValue(1, rect(0, 0, 64, 64));
        EXPECT_EQ(0, peer->displayId());
        ASSERT_EQ(9u, a.values.size());
        EXPECT_EQ(Error::NONE, a.error);  // only the low half of the analysis word
        EXPECT_EQ(c.state, a.values[3]);
        // The same as the analysis gives for the rectangle, now from its cache.
        auto [word, colour] = rgb(rect(0, 0, 64, 64));
        EXPECT_EQ((std::vector<int32_t>{colour.r, colour.g, colour.b, word >> 16}),
                  std::vector<int32_t>(a.values.begin(), a.values.begin() + 4));
        EXPECT_EQ(kLoadingOne, a.loading());  // without APL support nothing is read
        if (c.luma < 0) continue;
        host::log::clear();
        Answer l = cwbValue(2, rect(0, 0, 100, 100));
        ASSERT_EQ(6u, l.values.size());
        EXPECT_EQ(Error::NONE, l.error);
        EXPECT_EQ(c.luma, l.values[0]);
        EXPECT_EQ(1u, logCount(kI, "MORVIK_AI::CWB_LUMAS_VALUE::in_featureId=2"));
        EXPECT_EQ(1u, logCount(kI, "lumas:" + std::to_string(c.luma) + ", _aidl_return = 0"));
    }
    EXPECT_EQ(0u, host::sandbox::openCount(Device::kAplFile));
    EXPECT_TRUE(device->qservice()->commands(303).empty());
}

TEST_F(DispatchTest, FailuresKeepTheLayoutWithZeros) {
    boot();
    auto check = [&](const Rect& r, Error error) {
        for (int id : {1, 2}) {
            SCOPED_TRACE(id);
            Answer a = cwbValue(id, r);
            EXPECT_EQ(error, a.error);
            const size_t leading = id == 1 ? 4 : 1;
            ASSERT_EQ(leading + 5, a.values.size());
            EXPECT_EQ(std::vector<int32_t>(leading, 0),
                      std::vector<int32_t>(a.values.begin(), a.values.begin() + leading));
            EXPECT_EQ(kLoadingOne, a.loading());
            // No writeback has completed; the boot clock is far beyond one period, so no floor
            // applies and the start stays 0.
            ASSERT_EQ(0, peer->lastCwbDoneTime());
            EXPECT_EQ(0, a.start());
        }
    };
    check(rect(0, 0, 10, 10), Error::SCREEN_OFF);
    composer->powerMode(0, 2);
    check(rect(0, 0, 1081, 10), Error::INVALID_ARGUMENT);
    composer->status(false);
    check(rect(0, 0, 10, 10), Error::FAILED);
}

// Layer changes counted while the writeback runs (two or more skip the wait), or, for -1, one
// change once the request waits, which ends the wait at once.
class LayerChangeWaitTest : public DispatchTest, public ::testing::WithParamInterface<int> {};

TEST_P(LayerChangeWaitTest, EndsTheWaitAndSetsTheInterval) {
    const int changes = GetParam();
    device->setPanelModes(PanelId::Main, {{1080, 2400, kVsync60}, {1080, 2400, kVsync5Hz}});
    bootOn();
    if (changes < 0) composer->configChange(0, 1);  // the floor follows the active mode
    debugOn(*service);
    host::trace::setEnabledTags(1 << 1);
    composer->layerChange();  // counted before the request, reset by it
    device->displayConfig()->setManualCompletion(true);
    Answer a;
    std::thread client([&] { a = cwbValue(1, rect(0, 0, 10, 10)); });
    ASSERT_TRUE(waitFor([&] {
        return device->displayConfig()->pendingCount() == 1 && peer->invalidCacheCount() == 0;
    }));
    for (int i = 0; i < changes; ++i) composer->layerChange();
    // The wait can only begin after the completion: the lower bound counts from the release,
    // the upper one from the delivery (the vendor's copy of the frame is no part of the wait).
    const auto released = Clock::now();
    ASSERT_TRUE(device->displayConfig()->completeNext(0));
    ASSERT_TRUE(device->displayConfig()->waitForCompletions(1, std::chrono::seconds(5)));
    auto signalled = Clock::now();
    int64_t changed = 0;
    if (changes < 0) {
        // Logged under the layer-change lock just before the wait, so the change below can only
        // signal once the request waits.
        ASSERT_TRUE(waitFor([&] { return logCount(kI, "getCwbValue mInvalidCacheCount = 0\n"); }));
        changed = systemTime(SYSTEM_TIME_BOOTTIME);
        signalled = Clock::now();
        composer->layerChange();
    }
    client.join();
    const auto returned = Clock::now();
    EXPECT_EQ(Error::NONE, a.error);
    EXPECT_EQ(1u, host::trace::sectionCount("starttime"));
    EXPECT_EQ(1u, host::trace::sectionCount("endtime"));
    EXPECT_EQ(1u, logCount(kI, "getCwbValue starttime = " + std::to_string(a.start()) +
                                       ", endtime = " + std::to_string(a.end()) +
                                       ", diff = " + std::to_string(a.end() - a.start())));
    const std::string count = std::to_string(std::max(changes, 0));
    EXPECT_EQ(1u, logCount(kI, "getCwbValue mInvalidCacheCount = " + count + "\n"));
    EXPECT_EQ(changes >= 2 ? 1u : 0u, host::log::countContaining("LayerChange mInvalidCacheCount"));
    EXPECT_EQ(changes >= 2 ? 1u : 0u,
              logCount(kI, "LayerChange mInvalidCacheCount = " + count + "\n"));
    EXPECT_EQ(changes == 0 || changes == 1 ? 1u : 0u, logCount(kI, kTimeoutLine));
    EXPECT_LE(a.end(), a.bootAfter);
    if (changes == 0 || changes == 1) {
        EXPECT_GE(returned - released, milliseconds(45));
        // 50 ms is above one 60 Hz period, so the start is the writeback itself.
        EXPECT_GT(a.start(), 0);
        EXPECT_EQ(peer->lastCwbDoneTime(), a.start());
        EXPECT_GE(a.end(), a.start() + 45000000);
    } else {
        EXPECT_LT(returned - signalled, milliseconds(40));
    }
    if (changes < 0) {
        EXPECT_GE(a.end(), changed);
        ASSERT_LT(a.end() - peer->lastCwbDoneTime(), kVsync5Hz);
        EXPECT_EQ(a.end() - kVsync5Hz, a.start());
    }
}

INSTANTIATE_TEST_SUITE_P(Counts, LayerChangeWaitTest, ::testing::Values(-1, 0, 1, 2, 3));

TEST_F(DispatchTest, WithAplSupportTheLoadingFollowsThePanelAndTheRgbCache) {
    setProp("ro.vendor.zarel.display.cwb.apl_read_support", "1");
    device->setAplFile("00 64\n");  // APL 100
    device->qservice()->setAnswer(303, 1);
    device->qservice()->setAnswer(304, 900);  // 200000000 - 24420 * APL
    bootOn();
    EXPECT_EQ(197558000, cwbValue(1, rect(0, 0, 10, 10)).loading());
    EXPECT_EQ(1u, host::sandbox::openCount(Device::kAplFile));
    // Same frame, same rectangle: the RGB answer comes from its cache and so does the APL, even
    // with the file gone; the panel state is still asked.
    device->setAplFile(std::nullopt);
    EXPECT_EQ(197558000, cwbValue(1, rect(0, 0, 10, 10)).loading());
    EXPECT_TRUE(peer->rgbCacheHit());
    EXPECT_EQ(1u, host::sandbox::openCount(Device::kAplFile));
    EXPECT_EQ(2u, device->qservice()->commands(303).size());
    EXPECT_EQ(2u, device->qservice()->commands(304).size());
    device->setAplFile("0f a0\n");
    composer->layerChange();
    ASSERT_TRUE(gateOpen());
    EXPECT_EQ(200000000 - 24420 * 4000, cwbValue(1, rect(0, 0, 10, 10)).loading());
    EXPECT_FALSE(peer->rgbCacheHit());
    EXPECT_EQ(4000, peer->panelApl());
}

}  // namespace
}  // namespace cwbtest::features
