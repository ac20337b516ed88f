// The request frame around the three analyses: result words and zeroed outputs, the busy request
// lock, the power and always-on-display rules with the doze capture counter, cache answers while
// the screen is off, unknown display ids, and clients racing layer changes.
#include <future>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using host::device::Frame;
using host::device::Pixel;
using Outcome = host::device::SimulatedDisplayConfig::Outcome;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr Pixel kColour{200, 100, 50};
constexpr Pixel kOther{20, 240, 160};
constexpr int32_t kFailed = static_cast<int32_t>(Error::FAILED);
constexpr int32_t kInvalid = static_cast<int32_t>(Error::INVALID_ARGUMENT);
constexpr int32_t kScreenOff = static_cast<int32_t>(Error::SCREEN_OFF);

float lumaOf(Pixel p) {
    return static_cast<float>((7 * p.r + 23 * p.g + 2 * p.b) >> 5) / 255.0f;
}

Frame uniform(Pixel p) {
    return Frame::filled(1080, 2400, p.r, p.g, p.b);
}

enum class Request { Rgb, Luma, Histogram };

const Rect kA = rect(100, 200, 300, 400);
const Rect kB = rect(0, 0, 64, 64);

class AnalysisRules : public ServiceTest {
  protected:
    size_t vendorRequests() const { return device->displayConfig()->requests().size(); }

    void debugOn() {
        Error ignored;
        ASSERT_TRUE(service->setDebug({1}, &ignored).isOk());
    }

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
        ASSERT_EQ(2u, lumas.size()) << "one value appended to the caller's list";
        EXPECT_EQ(0.5f, lumas[0]);
        if (result == Error::NONE) {
            EXPECT_FLOAT_EQ(lumaOf(colour), lumas[1]);
        } else {
            EXPECT_EQ(0.0f, lumas[1]);
        }
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

enum class Arrange {
    On,
    Disabled,
    StatusOff,
    NegativeDisplayId,
    BadRect,
    PowerOff,
    Doze,
    DozeSuspend,
    AodLayerAllowed,
    AodLayerForbidden,
    VendorError,
};

struct OutcomeCase {
    const char* name;
    Arrange arrange;
    int32_t rgbWord;
    Error luma;
    Error histogram;
    int priority;
    const char* line;  // logged `lines` times over the three requests
    size_t lines;
    friend void PrintTo(const OutcomeCase& c, std::ostream* os) { *os << c.name; }
};

class AnalysisOutcome : public AnalysisRules, public ::testing::WithParamInterface<OutcomeCase> {};

TEST_P(AnalysisOutcome, ResultWordAndOutputsOfEachRequest) {
    const OutcomeCase& tc = GetParam();
    if (tc.arrange == Arrange::AodLayerForbidden) {
        setProp("ro.vendor.zarel.display.cwb.aod_forbidden", "1");
    }
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    bootOn();
    debugOn();
    Rect r = kA;
    bool done = false;
    switch (tc.arrange) {
        case Arrange::On:
            break;
        case Arrange::Disabled:
            ASSERT_TRUE(service->disable(&done).isOk());
            break;
        case Arrange::StatusOff:
            composer->status(false);
            break;
        case Arrange::NegativeDisplayId:
            peer->setDisplayId(-1);
            break;
        case Arrange::BadRect:
            r = rect(0, 0, 1081, 2400);
            break;
        case Arrange::PowerOff:
            composer->powerMode(0, 0);
            break;
        case Arrange::Doze:
            composer->powerMode(0, 1);
            break;
        case Arrange::DozeSuspend:
            composer->powerMode(0, 3);
            break;
        case Arrange::AodLayerAllowed:
        case Arrange::AodLayerForbidden:
            composer->aodLayer(true);
            break;
        case Arrange::VendorError:
            for (int i = 0; i < 3; ++i) device->displayConfig()->pushOutcome(Outcome::Error, -1);
            break;
    }
    host::log::clear();
    ASSERT_TRUE(gateOpen());
    expectRgb(tc.rgbWord, kColour, r);
    ASSERT_TRUE(gateOpen());
    expectLuma(tc.luma, kColour, r);
    ASSERT_TRUE(gateOpen());
    expectHistogram(tc.histogram, kColour, r);

    const size_t answered =
            (tc.rgbWord == 0) + (tc.luma == Error::NONE) + (tc.histogram == Error::NONE);
    EXPECT_EQ(tc.arrange == Arrange::VendorError ? 3u : answered, vendorRequests());
    EXPECT_EQ(tc.lines, logCount(tc.priority, tc.line)) << tc.line;
}

constexpr Error kNone = Error::NONE;

INSTANTIATE_TEST_SUITE_P(
        States, AnalysisOutcome,
        ::testing::Values(
                OutcomeCase{"On", Arrange::On, 0, kNone, kNone, ANDROID_LOG_INFO, "DumpFinish\n",
                            3},
                OutcomeCase{"Disabled", Arrange::Disabled, kFailed, Error::FAILED, Error::FAILED,
                            ANDROID_LOG_DEBUG, "Screen power off\n", 0},
                OutcomeCase{"StatusOff", Arrange::StatusOff, kFailed, Error::FAILED, Error::FAILED,
                            ANDROID_LOG_DEBUG, "Screen power off\n", 0},
                OutcomeCase{"NegativeDisplayId", Arrange::NegativeDisplayId, kFailed, Error::FAILED,
                            Error::FAILED, ANDROID_LOG_ERROR, "No valid display ID specified", 3},
                OutcomeCase{"BadRect", Arrange::BadRect, kInvalid, Error::INVALID_ARGUMENT,
                            Error::INVALID_ARGUMENT, ANDROID_LOG_ERROR,
                            "input rect error [0,0,1081,2400]\n", 3},
                OutcomeCase{"PowerOff", Arrange::PowerOff, kScreenOff, Error::SCREEN_OFF,
                            Error::SCREEN_OFF, ANDROID_LOG_DEBUG, "Screen power off\n", 2},
                OutcomeCase{"Doze", Arrange::Doze, 0, kNone, kNone, ANDROID_LOG_DEBUG,
                            "doze reset mAodForbiddenCnt 0", 1},
                OutcomeCase{"DozeSuspendRefusesOnlyRgb", Arrange::DozeSuspend, kScreenOff, kNone,
                            kNone, ANDROID_LOG_DEBUG, "Screen power off and status: 3 0 0 0\n", 1},
                OutcomeCase{"AodLayerWithoutRestriction", Arrange::AodLayerAllowed, 0, kNone, kNone,
                            ANDROID_LOG_DEBUG, "Screen power off\n", 0},
                OutcomeCase{"AodLayerForbidden", Arrange::AodLayerForbidden, 0, Error::SCREEN_OFF,
                            Error::SCREEN_OFF, ANDROID_LOG_DEBUG, "Screen power off\n", 2},
                OutcomeCase{"VendorError", Arrange::VendorError, kFailed, Error::FAILED,
                            Error::FAILED, ANDROID_LOG_INFO, "Failed to dump data.\n", 3}),
        [](const auto& info) { return std::string(info.param.name); });

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

// ---- Display ids other than the main and the secondary ----

TEST_F(AnalysisRules, UnknownDisplayIdHasNoResolution) {
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    bootOn();
    peer->setDisplayId(5);
    expectRgb(kInvalid, kColour, kA);
    expectLuma(Error::INVALID_ARGUMENT, kColour, kA);
    expectHistogram(Error::INVALID_ARGUMENT, kColour, kA);
    EXPECT_EQ(0u, vendorRequests());
}

// An RGB request reads the display id once, when it logs it; if the id then changes to the main
// display before the rectangle check (another client's feature request does that), the request
// passes the check but has no display to capture: FAILED, nothing requested from the vendor.
// The display is chosen once per request: one stored meanwhile does not let an unknown display
// past the rectangle check.
TEST_F(AnalysisRules, UnknownDisplayIdStaysChosenForTheWholeRequest) {
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    bootOn();
    expectRgb(0, kColour, kA);
    debugOn();
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

// ---- Concurrency ----

TEST_F(AnalysisRules, ClientsMixRequestsWhileLayersChange) {
    device->setFrame(PanelId::Main, FrameKind::Mixer, uniform(kColour));
    const Frame frames[] = {uniform(kColour), uniform(kOther)};
    bootOn();
    constexpr int kClients = 3;
    constexpr int kIterations = 30;
    const Rect rects[] = {kA, kB, rect(500, 500, 530, 560)};
    std::atomic<int> answered{0};
    std::atomic<bool> clientsDone{false};

    auto client = [&](int id) {
        for (int i = 0; i < kIterations; ++i) {
            const Rect& r = rects[(id + i) % 3];
            switch ((id + i) % 3) {
                case 0: {
                    Rgb out;
                    const int32_t word = rgbInto(r, &out);
                    ASSERT_TRUE(word == 0 || word == kFailed) << word;
                    if (word == 0) {
                        ASSERT_TRUE(out.r == kColour.r || out.r == kOther.r) << out.r;
                        ASSERT_EQ(out.r == kColour.r ? kColour.b : kOther.b, out.b);
                        ++answered;
                    }
                    break;
                }
                case 1: {
                    auto [result, value] = luma(r);
                    ASSERT_TRUE(result == Error::NONE || result == Error::FAILED);
                    if (result == Error::NONE) {
                        ASSERT_TRUE(value == lumaOf(kColour) || value == lumaOf(kOther)) << value;
                        ++answered;
                    }
                    break;
                }
                default: {
                    auto [result, h] = histogram(r);
                    ASSERT_TRUE(result == Error::NONE || result == Error::FAILED);
                    if (result == Error::NONE) {
                        const int32_t area = (r.right - r.left) * (r.bottom - r.top);
                        ASSERT_TRUE(h.counts[kColour.r * 3] == area ||
                                    h.counts[kOther.r * 3] == area);
                        ++answered;
                    }
                    break;
                }
            }
        }
    };
    std::vector<std::thread> threads;
    for (int id = 0; id < kClients; ++id) threads.emplace_back(client, id);
    std::thread host([&] {
        for (int i = 0; !clientsDone; ++i) {
            device->setFrame(PanelId::Main, FrameKind::Mixer, frames[i % 2]);
            composer->layerChange();
            std::this_thread::sleep_for(milliseconds(2));
        }
    });
    for (auto& t : threads) t.join();
    clientsDone = true;
    host.join();
    EXPECT_GT(answered.load(), 0);
    EXPECT_GT(vendorRequests(), 0u);
}

}  // namespace
}  // namespace cwbtest
