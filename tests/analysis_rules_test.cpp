// The request frame around the three analyses: result words and zeroed outputs, the busy request
// lock, the screen-off and doze capture rules, cache answers while off, and unknown display ids.
#include <future>

#include "capture_helpers.h"

namespace cwbtest {
namespace {

using host::device::Frame;
using host::device::Pixel;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr Pixel kColour{200, 100, 50};
constexpr Pixel kOther{20, 240, 160};
constexpr int32_t kFailed = static_cast<int32_t>(Error::FAILED);
constexpr int32_t kInvalid = static_cast<int32_t>(Error::INVALID_ARGUMENT);
constexpr int32_t kScreenOff = static_cast<int32_t>(Error::SCREEN_OFF);

Frame uniform(Pixel p) {
    return Frame::filled(1080, 2400, p.r, p.g, p.b);
}

enum class Request { Rgb, Luma, Histogram };

const Rect kA = rect(100, 200, 300, 400);
const Rect kB = rect(0, 0, 64, 64);

class AnalysisRules : public CaptureTest {
  protected:
    size_t vendorRequests() { return vendor().requests().size(); }

    // Outputs start dirty so that a failure has to zero them.
    int32_t rgbInto(const Rect& r, Rgb* out) {
        out->r = out->g = out->b = 7;
        out->extra = {1, 2};
        Error word = Error::NONE;
        EXPECT_TRUE(service->getRGBValue(r, out, &word).isOk());
        return static_cast<int32_t>(word);
    }

    // Checks the answer: the colour on NONE, all zero otherwise.
    void expectRgb(int32_t expectedWord, Pixel colour, const Rect& r) {
        Rgb out;
        const int32_t word = rgbInto(r, &out);
        EXPECT_EQ(expectedWord, word);
        const bool ok = (word & 0xFFFF) == 0;
        EXPECT_EQ(ok ? colour.r : 0, out.r);
        EXPECT_EQ(ok ? colour.g : 0, out.g);
        EXPECT_EQ(ok ? colour.b : 0, out.b);
        EXPECT_TRUE(out.extra.empty());
    }

    void expectLuma(Error expected, Pixel colour, const Rect& r) {
        std::vector<float> lumas = {0.5f};
        Error result = Error::NONE;
        EXPECT_TRUE(service->getLumasValue(r, &lumas, &result).isOk());
        EXPECT_EQ(expected, result);
        ASSERT_EQ(1u, lumas.size()) << "the answer replaces what the caller's list held";
        EXPECT_FLOAT_EQ(result == Error::NONE ? lumaOf(colour) : 0.0f, lumas[0]);
    }

    void expectHistogram(Error expected, Pixel colour, const Rect& r) {
        Histogram h;
        h.counts.fill(9);
        Error result = Error::NONE;
        EXPECT_TRUE(service->getHistogramValue(r, &h, &result).isOk());
        EXPECT_EQ(expected, result);
        Histogram want;
        if (result == Error::NONE) {
            const int32_t area = (r.right - r.left) * (r.bottom - r.top);
            want.counts[colour.r * 3 + 0] = area;
            want.counts[colour.g * 3 + 1] = area;
            want.counts[colour.b * 3 + 2] = area;
        }
        EXPECT_EQ(want, h);
    }

    // The uniform picture's answer for kA, or the failure.
    void expectRequest(Request which, bool answered) {
        switch (which) {
            case Request::Rgb:
                return expectRgb(answered ? 0 : kFailed, kColour, kA);
            case Request::Luma:
                return expectLuma(answered ? Error::NONE : Error::FAILED, kColour, kA);
            case Request::Histogram:
                return expectHistogram(answered ? Error::NONE : Error::FAILED, kColour, kA);
        }
    }
};

// ---- Result words and zeroed outputs ----

class AnalysisOutcome;

struct OutcomeCase {
    const char* name;
    bool aodForbidden;
    void (*arrange)(AnalysisOutcome&);  // after boot, before the three requests
    int32_t rgbWord;
    Error luma;
    Error histogram;
    size_t requests;  // made of the vendor
    int priority;
    const char* line;  // logged `lines` times over the three requests
    size_t lines;
    friend void PrintTo(const OutcomeCase& c, std::ostream* os) { *os << c.name; }
};

class AnalysisOutcome : public AnalysisRules, public ::testing::WithParamInterface<OutcomeCase> {
  public:
    static std::vector<OutcomeCase> cases();
    Rect r = kA;
};

TEST_P(AnalysisOutcome, ResultWordAndOutputsOfEachRequest) {
    const OutcomeCase& tc = GetParam();
    setProp("ro.vendor.zarel.display.cwb.aod_forbidden", tc.aodForbidden ? "1" : "0");
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    bootOn();
    setDebug({1});
    tc.arrange(*this);
    host::log::clear();
    ASSERT_TRUE(gateOpen());
    expectRgb(tc.rgbWord, kColour, r);
    ASSERT_TRUE(gateOpen());
    expectLuma(tc.luma, kColour, r);
    ASSERT_TRUE(gateOpen());
    expectHistogram(tc.histogram, kColour, r);
    EXPECT_EQ(tc.requests, vendorRequests());
    EXPECT_EQ(tc.lines, logCount(tc.priority, tc.line)) << tc.line;
}

std::vector<OutcomeCase> AnalysisOutcome::cases() {
    using T = AnalysisOutcome;
    const Error kNone = Error::NONE, kF = Error::FAILED, kI = Error::INVALID_ARGUMENT,
                kOff = Error::SCREEN_OFF;
    const int kDebug = ANDROID_LOG_DEBUG, kError = ANDROID_LOG_ERROR, kInfo = ANDROID_LOG_INFO;
    // clang-format off
    return {
        {"On", false, [](T&) {}, 0, kNone, kNone, 3, kInfo, "DumpFinish\n", 3},
        {"Disabled", false,
         [](T& t) {
             bool done = false;
             ASSERT_TRUE(t.service->disable(&done).isOk());
         },
         kFailed, kF, kF, 0, kDebug, "Screen power off\n", 0},
        {"StatusOff", false, [](T& t) { t.composer->status(false); },
         kFailed, kF, kF, 0, kDebug, "Screen power off\n", 0},
        {"NegativeDisplayId", false, [](T& t) { t.peer->setDisplayId(-1); },
         kFailed, kF, kF, 0, kError, "No valid display ID specified", 3},
        // No resolution: every rectangle is out of bounds.
        {"UnknownDisplayId", false, [](T& t) { t.peer->setDisplayId(5); },
         kInvalid, kI, kI, 0, kError, "input rect error [100,200,300,400]\n", 3},
        {"BadRect", false, [](T& t) { t.r = rect(0, 0, 1081, 2400); },
         kInvalid, kI, kI, 0, kError, "input rect error [0,0,1081,2400]\n", 3},
        {"PowerOff", false, [](T& t) { t.composer->powerMode(0, 0); },
         kScreenOff, kOff, kOff, 0, kDebug, "Screen power off\n", 2},
        {"Doze", false, [](T& t) { t.composer->powerMode(0, 1); },
         0, kNone, kNone, 3, kDebug, "doze reset mAodForbiddenCnt 0", 1},
        {"DozeSuspendRefusesOnlyRgb", false, [](T& t) { t.composer->powerMode(0, 3); },
         kScreenOff, kNone, kNone, 2, kDebug, "Screen power off and status: 3 0 0 0\n", 1},
        {"AodLayerWithoutRestriction", false, [](T& t) { t.composer->aodLayer(true); },
         0, kNone, kNone, 3, kDebug, "Screen power off\n", 0},
        {"AodLayerForbidden", true, [](T& t) { t.composer->aodLayer(true); },
         0, kOff, kOff, 1, kDebug, "Screen power off\n", 2},
        {"VendorError", false,
         [](T& t) {
             for (int i = 0; i < 3; ++i) t.vendor().pushOutcome(Outcome::Error, -1);
         },
         kFailed, kF, kF, 3, kInfo, "Failed to dump data.\n", 3},
    };
    // clang-format on
}

INSTANTIATE_TEST_SUITE_P(States, AnalysisOutcome, ::testing::ValuesIn(AnalysisOutcome::cases()),
                         caseName);

// ---- Busy request lock ----

class AnalysisBusy : public AnalysisRules,
                     public ::testing::WithParamInterface<std::pair<Request, const char*>> {};

TEST_P(AnalysisBusy, GivesUpAfterFiftyMilliseconds) {
    const auto [request, name] = GetParam();
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    bootOn();
    std::promise<void> held;
    std::promise<void> release;
    std::thread holder([&] {
        peer->holdRequestLock();
        held.set_value();
        release.get_future().wait();
        peer->releaseRequestLock();
    });
    held.get_future().wait();
    const auto start = steady_clock::now();
    expectRequest(request, false);
    const auto elapsed = steady_clock::now() - start;
    release.set_value();
    holder.join();
    EXPECT_GE(elapsed, milliseconds(45));
    EXPECT_LT(elapsed, milliseconds(1000));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, std::string(name) + ": resource busy\n"));
    EXPECT_EQ(0u, vendorRequests());

    expectRequest(request, true);  // the lock is free again
}

INSTANTIATE_TEST_SUITE_P(Requests, AnalysisBusy,
                         ::testing::Values(std::make_pair(Request::Rgb, "getRGBValue"),
                                           std::make_pair(Request::Luma, "getLumasValue"),
                                           std::make_pair(Request::Histogram, "getHistogramValue")),
                         [](const auto& info) { return std::string(info.param.second); });

// ---- Doze and the always-on-display capture limit ----

TEST_F(AnalysisRules, DozeAllowsThreeCapturesPerFrameWithAnAodLayer) {
    setProp("ro.vendor.zarel.display.cwb.aod_forbidden", "1");
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    boot();
    composer->powerMode(0, 1);
    composer->aodLayer(true);
    // A new rectangle each time, so that no answer comes from a cache.
    Rect rects[8];
    for (int i = 0; i < 8; ++i) rects[i] = rect(i * 10, 0, i * 10 + 10, 10);

    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(gateOpen());
        expectRgb(0, kColour, rects[i]);
        EXPECT_EQ(i + 1, peer->aodForbiddenCnt());
        // Cache answers are free.
        expectRgb(0, kColour, rects[0]);
        EXPECT_EQ(i + 1, peer->aodForbiddenCnt());
    }
    ASSERT_TRUE(gateOpen());
    expectRgb(kScreenOff, kColour, rects[3]);
    EXPECT_EQ(3u, vendorRequests());

    // A stale frame restarts the count.
    composer->layerChange();
    for (int i = 3; i < 6; ++i) {
        ASSERT_TRUE(gateOpen());
        expectRgb(0, kColour, rects[i]);
        EXPECT_EQ(i - 2, peer->aodForbiddenCnt());
    }
    ASSERT_TRUE(gateOpen());
    expectRgb(kScreenOff, kColour, rects[6]);

    // So does leaving doze and coming back.
    composer->powerMode(0, 2);
    composer->powerMode(0, 1);
    ASSERT_TRUE(gateOpen());
    expectRgb(0, kColour, rects[6]);
    EXPECT_EQ(1, peer->aodForbiddenCnt());
    EXPECT_EQ(7u, vendorRequests());
}

TEST_F(AnalysisRules, DozeSuspendServesRgbCacheEvenWhenStale) {
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    bootOn();
    expectRgb(0, kColour, kA);
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kOther));
    composer->powerMode(0, 3);
    composer->layerChange();
    ASSERT_FALSE(peer->bufferCacheValid());

    expectRgb(0, kColour, kA);  // the stored answer, not the new picture
    EXPECT_TRUE(peer->rgbCacheHit());
    expectRgb(kScreenOff, kColour, kB);
    EXPECT_EQ(1u, vendorRequests());
    // Luma has no such exception: it captures the new picture.
    ASSERT_TRUE(gateOpen());
    expectLuma(Error::NONE, kOther, kA);
    EXPECT_EQ(2u, vendorRequests());
}

TEST_F(AnalysisRules, DisplayOffAnswersCachedRectanglesWhileTheFrameIsCurrent) {
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    bootOn();
    expectRgb(0, kColour, kA);
    ASSERT_TRUE(gateOpen());
    expectLuma(Error::NONE, kColour, kA);
    ASSERT_TRUE(gateOpen());
    expectHistogram(Error::NONE, kColour, kA);
    ASSERT_EQ(3u, vendorRequests());

    auto expectAll = [&](bool answered, const Rect& r) {
        const Error e = answered ? Error::NONE : Error::SCREEN_OFF;
        expectRgb(answered ? 0 : kScreenOff, kColour, r);
        expectLuma(e, kColour, r);
        expectHistogram(e, kColour, r);
    };
    composer->powerMode(0, 0);
    expectAll(true, kA);
    expectAll(false, kB);
    composer->layerChange();
    expectAll(false, kA);
    EXPECT_EQ(3u, vendorRequests());
}

// The display is chosen once per request: the main display stored meanwhile (by another client's
// feature request) does not let an unknown display past the rectangle check.
TEST_F(AnalysisRules, UnknownDisplayIdStaysChosenForTheWholeRequest) {
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    bootOn();
    expectRgb(0, kColour, kA);
    setDebug({1});
    peer->setDisplayId(5);
    host::log::setListener([this](const host::log::Line& line) {
        if (line.text.rfind("getRGBValue [", 0) == 0) peer->setDisplayId(0);
    });
    ASSERT_TRUE(gateOpen());
    expectRgb(kInvalid, kColour, kB);
    host::log::setListener(nullptr);
    EXPECT_EQ(1u, vendorRequests());
    EXPECT_EQ(1u, host::log::countContaining("input rect error [0,0,64,64]"));
    EXPECT_EQ(1u, peer->cacheSize(0));
}

}  // namespace
}  // namespace cwbtest
