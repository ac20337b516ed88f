// The generic feature request: dispatch by id, the flattened answer, the time interval with its
// layer-change wait and refresh floor, and the appended panel loading.
#include <utils/Timers.h>

#include <climits>
#include <functional>
#include <thread>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using host::device::Device;
using host::device::Frame;

constexpr int32_t kOne = 100000000;
constexpr int32_t kVsync5Hz = 200000000;
const std::string kWaitLine = "getCwbValue mInvalidCacheCount = 0\n";
const std::string kTimeoutLine = "WaitForLayerChange timeout\n";

int64_t joined(int32_t high, int32_t low) {
    return static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(high)) << 32) |
                                static_cast<uint32_t>(low));
}

struct Answer {
    bool ok = false;
    Error error = Error::NONE;
    std::vector<int32_t> values;
    int64_t bootBefore = 0;
    int64_t bootAfter = 0;
    std::chrono::steady_clock::duration elapsed{};

    // The interval and loading sit after the analysis entries.
    int64_t start() const { return joined(values[values.size() - 5], values[values.size() - 4]); }
    int64_t end() const { return joined(values[values.size() - 3], values[values.size() - 2]); }
    int32_t loading() const { return values.back(); }
};

class DispatchTest : public ServiceTest {
  protected:
    Answer cwbValue(int32_t id, const Rect& r, std::vector<int32_t> initial = {},
                    Error initialError = Error::NONE) {
        Answer a;
        a.values = std::move(initial);
        a.error = initialError;
        a.bootBefore = systemTime(SYSTEM_TIME_BOOTTIME);
        const auto start = std::chrono::steady_clock::now();
        a.ok = service->getCwbValue(id, r, &a.values, &a.error).isOk();
        a.elapsed = std::chrono::steady_clock::now() - start;
        a.bootAfter = systemTime(SYSTEM_TIME_BOOTTIME);
        return a;
    }

    void debugOn() {
        Error result;
        ASSERT_TRUE(service->setDebug({1}, &result).isOk());
    }

    size_t writebacks() { return device->displayConfig()->requests().size(); }
};

// ---- Ids ----

class OutOfRangeIdTest : public DispatchTest, public ::testing::WithParamInterface<int32_t> {};

TEST_P(OutOfRangeIdTest, RejectedWithValuesUntouched) {
    bootOn();
    peer->setDisplayId(3);
    const int32_t id = GetParam();
    Answer a = cwbValue(id, rect(0, 0, 10, 10), {7, 8, 9});
    EXPECT_TRUE(a.ok);
    EXPECT_EQ(Error::INVALID_ARGUMENT, a.error);
    EXPECT_EQ((std::vector<int32_t>{7, 8, 9}), a.values);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "getCwbValue error ID = " + std::to_string(id)));
    EXPECT_EQ(0u, writebacks());
    EXPECT_EQ(3, peer->displayId());
}

INSTANTIATE_TEST_SUITE_P(Ids, OutOfRangeIdTest, ::testing::Values(0, -1, 15, 16, INT_MIN, INT_MAX));

class UnhandledIdTest : public DispatchTest, public ::testing::WithParamInterface<int32_t> {};

TEST_P(UnhandledIdTest, EmptyAnswerAndErrorLeftAlone) {
    bootOn();
    const int32_t id = GetParam();
    Answer a = cwbValue(id, rect(0, 0, 10, 10), {1, 2}, Error::SCREEN_OFF);
    EXPECT_TRUE(a.ok);
    EXPECT_EQ(Error::SCREEN_OFF, a.error);
    EXPECT_TRUE(a.values.empty());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "getCwbValue default, no choice!"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "getCwbValue failed FeatureId = " +
                                                      std::to_string(id) + ", _aidl_return = 3"));
    EXPECT_EQ(0u, writebacks());
    EXPECT_LT(a.elapsed, std::chrono::milliseconds(45));  // no interval, so no wait
}

INSTANTIATE_TEST_SUITE_P(Ids, UnhandledIdTest, ::testing::Range(4, 15));

TEST_F(DispatchTest, SecondaryFeatureWithoutSecondaryDisplay) {
    bootOn();
    host::log::clear();
    Answer a = cwbValue(3, rect(0, 0, 10, 10), {5});
    EXPECT_EQ(Error::INVALID_ARGUMENT, a.error);
    EXPECT_TRUE(a.values.empty());
    auto lines = host::log::lines();
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ(ANDROID_LOG_INFO, lines[0].priority);
    EXPECT_EQ("MORVIK_AI::CWB_RGB_VALUE_SEC::in_featureId=3", lines[0].text);
    EXPECT_EQ(ANDROID_LOG_ERROR, lines[1].priority);
    EXPECT_EQ("getCwbValue error ID = -1", lines[1].text);
    EXPECT_EQ(0, peer->displayId());
    EXPECT_EQ(0u, writebacks());
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
    EXPECT_EQ(10, a.values[0]);
    EXPECT_EQ(20, a.values[1]);
    EXPECT_EQ(30, a.values[2]);
    EXPECT_EQ(3, peer->displayId());
    ASSERT_EQ(1u, writebacks());
    EXPECT_EQ(4, device->displayConfig()->requests()[0].displayType);  // BUILTIN2
    // 50 ms of waiting is below the 200 ms period of the secondary panel, not of the main one.
    ASSERT_LT(a.end() - peer->lastCwbDoneTime(), kVsync5Hz);
    EXPECT_EQ(kVsync5Hz, a.end() - a.start());
}

// ---- RGB and luma entries ----

struct RgbCase {
    const char* name;
    Frame frame;
    int32_t state;
};
void PrintTo(const RgbCase& c, std::ostream* os) {
    *os << c.name;
}

class RgbFeatureTest : public DispatchTest, public ::testing::WithParamInterface<RgbCase> {};

TEST_P(RgbFeatureTest, ColoursThenStateBitsThenInterval) {
    setProp("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
    device->setFrame(PanelId::Main, FrameKind::Mixer, GetParam().frame);
    bootOn();
    peer->setDisplayId(3);  // feature 1 always samples the main display
    Answer a = cwbValue(1, rect(0, 0, 64, 64));
    EXPECT_EQ(0, peer->displayId());
    ASSERT_EQ(9u, a.values.size());
    EXPECT_EQ(Error::NONE, a.error);  // only the low half of the analysis word
    EXPECT_EQ(GetParam().state, a.values[3]);
    // The answer matches what the analysis gives for the same rectangle (now from its cache).
    auto [word, colour] = rgb(rect(0, 0, 64, 64));
    EXPECT_EQ(word >> 16, a.values[3]);
    EXPECT_EQ(colour.r, a.values[0]);
    EXPECT_EQ(colour.g, a.values[1]);
    EXPECT_EQ(colour.b, a.values[2]);
    EXPECT_EQ(kOne, a.loading());
}

INSTANTIATE_TEST_SUITE_P(
        Frames, RgbFeatureTest,
        ::testing::Values(RgbCase{"Pure", Frame::filled(1080, 2400, 200, 100, 50), 1},
                          RgbCase{"BlackAndWhite", *Frame::pattern("checker", 1080, 2400), 2},
                          RgbCase{"Neither", *Frame::pattern("gradient", 1080, 2400), 0}),
        [](const auto& info) { return std::string(info.param.name); });

TEST_F(DispatchTest, RgbFailureKeepsTheLayoutWithZeros) {
    boot();  // screen off
    Answer a = cwbValue(1, rect(0, 0, 10, 10));
    EXPECT_EQ(Error::SCREEN_OFF, a.error);
    ASSERT_EQ(9u, a.values.size());
    EXPECT_EQ((std::vector<int32_t>{0, 0, 0, 0}),
              std::vector<int32_t>(a.values.begin(), a.values.begin() + 4));
    EXPECT_EQ(kOne, a.loading());
}

struct LumaCase {
    const char* name;
    uint8_t grey;
};
void PrintTo(const LumaCase& c, std::ostream* os) {
    *os << c.name;
}

class LumaFeatureTest : public DispatchTest, public ::testing::WithParamInterface<LumaCase> {};

TEST_P(LumaFeatureTest, LumaTimesTenThousandTruncated) {
    const uint8_t grey = GetParam().grey;
    device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, grey, grey, grey));
    bootOn();
    debugOn();
    Answer a = cwbValue(2, rect(0, 0, 100, 100));
    ASSERT_EQ(6u, a.values.size());
    EXPECT_EQ(Error::NONE, a.error);
    // A grey pixel has the luma of its code; grey 64 gives 0.25098 and so 2509.
    const int32_t expected = static_cast<int32_t>(grey / 255.0f * 10000.0f);
    EXPECT_EQ(expected, a.values[0]);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "MORVIK_AI::CWB_LUMAS_VALUE::in_featureId=2"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "lumas:" + std::to_string(expected) + ", _aidl_return = 0"));
}

INSTANTIATE_TEST_SUITE_P(Greys, LumaFeatureTest,
                         ::testing::Values(LumaCase{"Black", 0}, LumaCase{"Grey64", 64},
                                           LumaCase{"White", 255}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(DispatchTest, LumaFailuresGiveZeroAndTheirError) {
    device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, 255, 255, 255));
    boot();
    struct {
        const char* name;
        std::function<void()> arrange;
        Rect r;
        Error error;
    } cases[] = {
            {"ScreenOff", [] {}, rect(0, 0, 10, 10), Error::SCREEN_OFF},
            {"BadRect", [this] { composer->powerMode(0, 2); }, rect(0, 0, 1081, 10),
             Error::INVALID_ARGUMENT},
            {"Disabled", [this] { composer->status(false); }, rect(0, 0, 10, 10), Error::FAILED},
    };
    for (auto& c : cases) {
        SCOPED_TRACE(c.name);
        c.arrange();
        Answer a = cwbValue(2, c.r);
        EXPECT_TRUE(a.ok);
        EXPECT_EQ(c.error, a.error);
        ASSERT_EQ(6u, a.values.size());
        EXPECT_EQ(0, a.values[0]);
        EXPECT_EQ(kOne, a.loading());
    }
}

// ---- Interval ----

TEST_F(DispatchTest, StaticScreenWaitsFiftyMillisecondsFromTheWriteback) {
    bootOn();
    debugOn();
    host::trace::setEnabledTags(1 << 1);
    Answer a = cwbValue(1, rect(0, 0, 10, 10));
    ASSERT_EQ(9u, a.values.size());
    EXPECT_EQ(1u, host::trace::sectionCount("starttime"));
    EXPECT_EQ(1u, host::trace::sectionCount("endtime"));
    EXPECT_GE(a.elapsed, std::chrono::milliseconds(45));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, kTimeoutLine));
    // 50 ms is above one 60 Hz period, so the start is the writeback itself.
    const int64_t done = peer->lastCwbDoneTime();
    EXPECT_GT(done, a.bootBefore);
    EXPECT_EQ(done, a.start());
    EXPECT_EQ(static_cast<int32_t>(static_cast<uint64_t>(done) >> 32), a.values[4]);
    EXPECT_EQ(static_cast<int32_t>(static_cast<uint64_t>(done) & 0xFFFFFFFF), a.values[5]);
    EXPECT_GE(a.end(), done + 45000000);
    EXPECT_LE(a.end(), a.bootAfter);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "getCwbValue starttime = " + std::to_string(a.start()) +
                                   ", endtime = " + std::to_string(a.end()) +
                                   ", diff = " + std::to_string(a.end() - a.start())));
}

TEST_F(DispatchTest, LayerChangeEndsTheWaitAndTheFloorMovesTheStart) {
    device->setPanelModes(PanelId::Main, {{1080, 2400, kVsync5Hz}});
    bootOn();
    debugOn();
    Answer a;
    std::thread client([&] { a = cwbValue(1, rect(0, 0, 10, 10)); });
    // The line is logged under the layer-change lock just before the wait, so the change below
    // can only signal once the request waits.
    ASSERT_TRUE(waitFor([&] { return logCount(ANDROID_LOG_INFO, kWaitLine) == 1; }));
    const int64_t changed = systemTime(SYSTEM_TIME_BOOTTIME);
    const auto changedSteady = std::chrono::steady_clock::now();
    composer->layerChange();
    client.join();
    const auto afterChange = std::chrono::steady_clock::now() - changedSteady;
    EXPECT_LT(afterChange, std::chrono::milliseconds(35));
    EXPECT_EQ(0u, logCount(ANDROID_LOG_INFO, kTimeoutLine));
    EXPECT_GE(a.end(), changed);
    EXPECT_LE(a.end(), a.bootAfter);
    ASSERT_LT(a.end() - peer->lastCwbDoneTime(), kVsync5Hz);
    EXPECT_EQ(a.end() - kVsync5Hz, a.start());
}

TEST_F(DispatchTest, FloorFollowsTheActiveConfiguration) {
    device->setPanelModes(PanelId::Main, {{1080, 2400, kVsync60}, {1080, 2400, kVsync5Hz}});
    bootOn();
    composer->configChange(0, 1);
    Answer a = cwbValue(2, rect(0, 0, 10, 10));
    ASSERT_EQ(Error::NONE, a.error);
    ASSERT_LT(a.end() - peer->lastCwbDoneTime(), kVsync5Hz);
    EXPECT_EQ(kVsync5Hz, a.end() - a.start());
}

TEST_F(DispatchTest, NoCaptureYetStartsAtZero) {
    boot();  // screen off: no writeback ever completes
    Answer a = cwbValue(1, rect(0, 0, 10, 10));
    ASSERT_EQ(0, peer->lastCwbDoneTime());
    // The boot clock is far beyond one period, so no floor applies and the start stays 0.
    EXPECT_EQ(0, a.start());
    EXPECT_EQ(0, a.values[4]);
    EXPECT_EQ(0, a.values[5]);
}

class ChangesDuringCaptureTest : public DispatchTest, public ::testing::WithParamInterface<int> {};

TEST_P(ChangesDuringCaptureTest, TwoCountedChangesSkipTheWait) {
    bootOn();
    debugOn();
    composer->layerChange();  // counted before the request, reset by it
    device->displayConfig()->setManualCompletion(true);
    Answer a;
    std::thread client([&] { a = cwbValue(1, rect(0, 0, 10, 10)); });
    ASSERT_TRUE(waitFor([&] {
        return device->displayConfig()->pendingCount() == 1 && peer->invalidCacheCount() == 0;
    }));
    const int changes = GetParam();
    for (int i = 0; i < changes; ++i) composer->layerChange();
    // The wait can only begin after the completion: the lower bound counts from the release,
    // the upper one from the delivery (the vendor's copy of the frame is no part of the wait).
    const auto released = std::chrono::steady_clock::now();
    ASSERT_TRUE(device->displayConfig()->completeNext(0));
    ASSERT_TRUE(device->displayConfig()->waitForCompletions(1, std::chrono::seconds(5)));
    const auto delivered = std::chrono::steady_clock::now();
    client.join();
    const auto returned = std::chrono::steady_clock::now();
    EXPECT_EQ(Error::NONE, a.error);
    const std::string count = std::to_string(changes);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "getCwbValue mInvalidCacheCount = " + count + "\n"));
    if (changes >= 2) {
        EXPECT_EQ(1u,
                  logCount(ANDROID_LOG_INFO, "LayerChange mInvalidCacheCount = " + count + "\n"));
        EXPECT_EQ(0u, logCount(ANDROID_LOG_INFO, kTimeoutLine));
        EXPECT_LT(returned - delivered, std::chrono::milliseconds(40));
    } else {
        EXPECT_EQ(0u, host::log::countContaining("LayerChange mInvalidCacheCount"));
        EXPECT_GE(returned - released, std::chrono::milliseconds(45));
    }
}

INSTANTIATE_TEST_SUITE_P(Counts, ChangesDuringCaptureTest, ::testing::Values(0, 1, 2, 3));

// ---- Panel loading ----

TEST_F(DispatchTest, WithoutAplSupportTheLoadingIsOneAndNothingIsRead) {
    device->setAplFile("0f a0\n");
    device->qservice()->setAnswer(303, 1);
    device->qservice()->setAnswer(304, 900);
    bootOn();
    Answer a = cwbValue(1, rect(0, 0, 10, 10));
    EXPECT_EQ(kOne, a.loading());
    EXPECT_EQ(0u, host::sandbox::openCount(Device::kAplFile));
    EXPECT_TRUE(device->qservice()->commands(303).empty());
}

TEST_F(DispatchTest, WithAplSupportTheLoadingFollowsThePanelAndTheRgbCache) {
    setProp("ro.vendor.zarel.display.cwb.apl_read_support", "1");
    device->setAplFile("00 64\n");  // APL 100
    device->qservice()->setAnswer(303, 1);
    device->qservice()->setAnswer(304, 900);
    bootOn();
    Answer a = cwbValue(1, rect(0, 0, 10, 10));
    EXPECT_EQ(197558000, a.loading());
    EXPECT_EQ(1u, host::sandbox::openCount(Device::kAplFile));

    // Same frame, same rectangle: the RGB answer comes from its cache and so does the APL.
    device->setAplFile("0f a0\n");
    Answer again = cwbValue(1, rect(0, 0, 10, 10));
    EXPECT_TRUE(peer->rgbCacheHit());
    EXPECT_EQ(197558000, again.loading());
    EXPECT_EQ(1u, host::sandbox::openCount(Device::kAplFile));

    composer->layerChange();
    ASSERT_TRUE(gateOpen());
    Answer fresh = cwbValue(1, rect(0, 0, 10, 10));
    EXPECT_FALSE(peer->rgbCacheHit());
    EXPECT_EQ(200000000 - 24420 * 4000, fresh.loading());
}

}  // namespace
}  // namespace cwbtest
