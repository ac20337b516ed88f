// Writeback requests: every result code, the one-second wait, completions that come early, late
// or never, the region handed to the vendor and the emptying of stale result caches.
#include <utils/Timers.h>

#include <chrono>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using Outcome = host::device::SimulatedDisplayConfig::Outcome;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

class CaptureWritebackTest : public ServiceTest {
  protected:
    int capture(const Rect& r = rect(0, 0, 0, 0), bool sec = false) {
        return peer->setCWBOutputBuffer(r, false, sec);
    }
    host::device::SimulatedDisplayConfig& vendor() { return *device->displayConfig(); }
};

struct OutcomeCase {
    const char* name;
    Outcome outcome;
    int expected;
    bool slow;                                       // waits out the whole second
    std::vector<std::pair<int, const char*>> lines;  // logged exactly once each
};

void PrintTo(const OutcomeCase& c, std::ostream* os) {
    *os << c.name;
}

// clang-format off
const OutcomeCase kOutcomes[] = {
    {"Success", Outcome::Ok, 0, false, {}},
    {"Refused", Outcome::Refuse, 1, false, {{ANDROID_LOG_ERROR, "Failed to read cwb buffer.\n"}}},
    {"ErrorCompletion", Outcome::Error, -4, false,
     {{ANDROID_LOG_ERROR, "CWB Error\n"}, {ANDROID_LOG_INFO, "Failed to dump data.\n"}}},
    {"NoCompletion", Outcome::Drop, -4, true, {{ANDROID_LOG_INFO, "Failed to dump data.\n"}}},
};
// clang-format on

class CaptureOutcomeTest : public CaptureWritebackTest,
                           public ::testing::WithParamInterface<OutcomeCase> {};

TEST_P(CaptureOutcomeTest, ResultLogsAndFrameState) {
    const OutcomeCase& c = GetParam();
    bootOn();
    // A failure leaves the flag as it was; start from "current" so that a change shows.
    const bool validBefore = c.expected != 0;
    peer->setBufferCacheValid(validBefore);
    host::trace::setEnabledTags(1 << 1);
    host::log::clear();
    vendor().pushOutcome(c.outcome, -1);

    const auto start = Clock::now();
    const int result = capture();
    const auto elapsed = Clock::now() - start;

    EXPECT_EQ(c.expected, result);
    if (c.slow) {
        EXPECT_GE(elapsed, milliseconds(950));
        EXPECT_LT(elapsed, milliseconds(3000));
    } else {
        EXPECT_LT(elapsed, milliseconds(950));
    }
    for (const auto& [priority, text] : c.lines) {
        EXPECT_EQ(1u, logCount(priority, text)) << text;
    }
    const size_t failureLines = host::log::countContaining("Failed to dump data.") +
                                host::log::countContaining("Failed to read cwb buffer.") +
                                host::log::countContaining("CWB Error");
    EXPECT_EQ(c.lines.size(), failureLines);
    EXPECT_EQ(c.expected == 0 || validBefore, peer->bufferCacheValid());
    // The count restarts with every request the vendor was asked about, whatever it answered.
    EXPECT_EQ(0, peer->invalidCacheCount());
    EXPECT_EQ(std::vector<int64_t>{0}, host::trace::counterValues("mInvalidCacheCount"));
    EXPECT_EQ(c.expected == 0 ? std::vector<int64_t>{1} : std::vector<int64_t>{},
              host::trace::counterValues("BufferCacheValid"));
    EXPECT_EQ(c.expected == 0, peer->lastCwbTime() != 0);
}

INSTANTIATE_TEST_SUITE_P(VendorOutcomes, CaptureOutcomeTest, ::testing::ValuesIn(kOutcomes),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(CaptureWritebackTest, NoVendorMeansNoBufferAndNoWritebackLog) {
    ASSERT_TRUE(device->setVendorPresent(false));
    boot();
    composer->powerMode(0, 2);
    host::log::clear();
    EXPECT_EQ(-1, capture());
    EXPECT_EQ(-1, capture(rect(0, 0, 0, 0), true));
    EXPECT_EQ(0u, host::gralloc::allocationCount());
    EXPECT_EQ(0u, host::log::countContaining("base is NULL"));
    EXPECT_EQ(0u, host::log::countContaining("cwb buffer"));
    EXPECT_EQ(0u, host::log::countContaining("dump data"));
    EXPECT_TRUE(vendor().requests().empty());
}

TEST_F(CaptureWritebackTest, CompletionBeforeTheWaitBeginsCounts) {
    bootOn();
    vendor().setManualCompletion(true);
    // Complete and deliver while the request is still inside the vendor call.
    int32_t completeWith = 0;
    size_t delivered = 0;
    vendor().setRequestObserver([&](const host::device::WritebackRequest&) {
        ASSERT_TRUE(vendor().completeNext(completeWith));
        ASSERT_TRUE(vendor().waitForCompletions(++delivered, milliseconds(2000)));
    });

    auto start = Clock::now();
    EXPECT_EQ(0, capture());
    EXPECT_LT(Clock::now() - start, milliseconds(950));
    EXPECT_TRUE(peer->bufferCacheValid());

    // The same for an error: it fails at once instead of waiting out the second.
    completeWith = -1;
    peer->setBufferCacheValid(false);
    start = Clock::now();
    EXPECT_EQ(-4, capture());
    EXPECT_LT(Clock::now() - start, milliseconds(950));
    EXPECT_FALSE(peer->bufferCacheValid());
    vendor().setRequestObserver(nullptr);
}

TEST_F(CaptureWritebackTest, LateCompletionOfAnAbandonedRequestIsIgnored) {
    bootOn();
    vendor().setManualCompletion(true);
    const auto start = Clock::now();
    ASSERT_EQ(-4, capture());
    EXPECT_GE(Clock::now() - start, milliseconds(950));

    // The vendor finally answers the abandoned request, successfully.
    host::log::clear();
    ASSERT_TRUE(vendor().completeNext(0));
    ASSERT_TRUE(vendor().waitForCompletions(1, milliseconds(2000)));
    EXPECT_TRUE(host::log::lines().empty());
    EXPECT_EQ(0, peer->lastCwbTime());
    EXPECT_EQ(0, peer->lastCwbDoneTime());
    EXPECT_FALSE(peer->bufferCacheValid());

    // Its success must not answer the next request, which the vendor drops.
    vendor().setManualCompletion(false);
    vendor().pushOutcome(Outcome::Drop);
    EXPECT_EQ(-4, capture());
    EXPECT_FALSE(peer->bufferCacheValid());
    EXPECT_EQ(0, peer->lastCwbTime());

    // And the service still captures normally afterwards.
    EXPECT_EQ(0, capture());
    EXPECT_TRUE(peer->bufferCacheValid());
}

struct RegionCase {
    const char* name;
    bool roi;
    int32_t lightMode;
    bool secondary;
    Rect expected;
    bool aiLog;  // the AI-mode region line, with debug logging on
};

void PrintTo(const RegionCase& c, std::ostream* os) {
    *os << c.name;
}

const Rect kCallerRect = rect(100, 200, 300, 400);
const Rect kAiRect = rect(10, 20, 30, 40);

const RegionCase kRegions[] = {
        {"NoRoiMain", false, 2, false, rect(0, 0, 0, 0), false},
        {"NoRoiMainAiMode", false, 3, false, rect(0, 0, 0, 0), false},
        {"NoRoiSecondary", false, 3, true, rect(0, 0, 0, 0), false},
        {"RoiMain", true, 2, false, kCallerRect, false},
        {"RoiMainAiMode", true, 3, false, kAiRect, true},
        {"RoiSecondaryAiMode", true, 3, true, kCallerRect, false},
        {"RoiSecondary", true, 2, true, kCallerRect, false},
};

class CaptureRegionTest : public CaptureWritebackTest,
                          public ::testing::WithParamInterface<RegionCase> {};

TEST_P(CaptureRegionTest, RegionHandedToTheVendor) {
    const RegionCase& c = GetParam();
    setProp("ro.vendor.zarel.display.cwb.roi", c.roi ? "1" : "0");
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    bootOn();
    Error ignored;
    ASSERT_TRUE(service->setDebug({1}, &ignored).isOk());
    peer->setAiRect(kAiRect);
    aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID = c.lightMode;
    if (c.secondary) peer->setDisplayId(3);

    ASSERT_EQ(0, capture(kCallerRect, c.secondary));
    const auto requests = vendor().requests();
    ASSERT_EQ(1u, requests.size());
    EXPECT_EQ(c.secondary ? 4 : 1, requests[0].displayType);
    EXPECT_EQ(c.expected.left, requests[0].rect.left);
    EXPECT_EQ(c.expected.top, requests[0].rect.top);
    EXPECT_EQ(c.expected.right, requests[0].rect.right);
    EXPECT_EQ(c.expected.bottom, requests[0].rect.bottom);
    EXPECT_EQ(c.aiLog ? 1u : 0u,
              logCount(ANDROID_LOG_DEBUG,
                       "MORVIK_AI::mRoiSupport=1||mLightModeID=3||fhd_Width=1088||left=10||top=20||"
                       "right=30||bottom=40"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "DumpFinish\n"));
}

INSTANTIATE_TEST_SUITE_P(RoiAndCaptureMode, CaptureRegionTest, ::testing::ValuesIn(kRegions),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(CaptureWritebackTest, StaleFrameEmptiesResultCachesEvenWhenTheRequestFails) {
    bootOn();
    // One entry in each cache, all from the current frame.
    ASSERT_EQ(0, rgb(rect(0, 0, 100, 100)).first & 0xFFFF);
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(Error::NONE, luma(rect(0, 0, 100, 100)).first);
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(Error::NONE, histogram(rect(0, 0, 100, 100)).first);
    ASSERT_TRUE(peer->bufferCacheValid());
    for (int which = 0; which < 3; ++which) ASSERT_EQ(1u, peer->cacheSize(which)) << which;

    // Frame still current: a capture keeps them.
    ASSERT_EQ(0, capture());
    for (int which = 0; which < 3; ++which) EXPECT_EQ(1u, peer->cacheSize(which)) << which;

    // Stale frame: emptied before the vendor refuses.
    composer->layerChange();
    vendor().pushOutcome(Outcome::Refuse);
    ASSERT_EQ(1, capture());
    for (int which = 0; which < 3; ++which) EXPECT_EQ(0u, peer->cacheSize(which)) << which;
    EXPECT_FALSE(peer->bufferCacheValid());
}

}  // namespace
}  // namespace cwbtest
