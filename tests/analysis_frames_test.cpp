// Frame analysis end to end: a known picture on the simulated panel, captured by the vendor's
// writeback, answered fresh and then from the result caches, through rotation, fractions, the
// secondary display and weights files.
#include "capture_helpers.h"

namespace cwbtest {
namespace {

using host::device::Frame;
using host::device::Pixel;

constexpr Pixel kColour{200, 100, 50};  // no code here is a truncation trap of the inverse
constexpr Pixel kBorder{0, 0, 255};

void expectColour(Pixel expected, const Rgb& got) {
    EXPECT_EQ(expected.r, got.r);
    EXPECT_EQ(expected.g, got.g);
    EXPECT_EQ(expected.b, got.b);
    EXPECT_TRUE(got.extra.empty());
}

// Every channel's counters add up to the area; the uniform colour owns all of them.
void expectUniformHistogram(Pixel p, int64_t area, const Histogram& h) {
    const uint8_t v[3] = {p.r, p.g, p.b};
    for (int ch = 0; ch < 3; ++ch) {
        int64_t total = 0;
        for (int level = 0; level < 256; ++level) total += h.counts[level * 3 + ch];
        EXPECT_EQ(area, total) << "channel " << ch;
        EXPECT_EQ(area, h.counts[v[ch] * 3 + ch]) << "channel " << ch;
    }
}

// A frame of black with `inner` painted in colour, framed by a three-pixel border of another
// colour, so that a rectangle off by one pixel in any direction reads the border.
Frame framed(int w, int h, const Rect& inner, Pixel colour) {
    Frame f = Frame::filled(w, h, 0, 0, 0);
    f.fillRect(inner.left - 3, inner.top - 3, inner.right + 3, inner.bottom + 3, kBorder);
    f.fillRect(inner.left, inner.top, inner.right, inner.bottom, colour);
    return f;
}

struct FrameCase {
    const char* name;
    int rotate;
    Rect input;
    Rect buffer;  // where the input lands in the capture buffer
    friend void PrintTo(const FrameCase& c, std::ostream* os) { *os << c.name; }
};

class AnalysisFrames : public CaptureTest, public ::testing::WithParamInterface<FrameCase> {};
class AnalysisFrameTest : public CaptureTest {};

TEST_P(AnalysisFrames, KnownFrameFreshThenCached) {
    const FrameCase& tc = GetParam();
    setProp("ro.vendor.zarel.display.cwb.rotate_main", std::to_string(tc.rotate));
    setProp("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
    device->setFrame(PanelId::Main, FrameKind::Mixer, framed(1080, 2400, tc.buffer, kColour));
    bootOn();
    const int64_t area =
            int64_t{tc.buffer.right - tc.buffer.left} * (tc.buffer.bottom - tc.buffer.top);

    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round == 0 ? "fresh" : "cached");
        auto [word, colour] = rgb(tc.input);
        EXPECT_EQ(0x1 << 16, word) << "pure colour in the high half, NONE in the low half";
        expectColour(kColour, colour);
        EXPECT_EQ(1u, vendor().requests().size());
        EXPECT_EQ(round == 1, peer->rgbCacheHit());
    }
    ASSERT_TRUE(gateOpen());
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round == 0 ? "fresh" : "cached");
        auto [result, value] = luma(tc.input);
        EXPECT_EQ(Error::NONE, result);
        EXPECT_FLOAT_EQ(lumaOf(kColour), value);
        EXPECT_EQ(2u, vendor().requests().size());
    }
    ASSERT_TRUE(gateOpen());
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round == 0 ? "fresh" : "cached");
        auto [result, hist] = histogram(tc.input);
        EXPECT_EQ(Error::NONE, result);
        expectUniformHistogram(kColour, area, hist);
        EXPECT_EQ(3u, vendor().requests().size());
    }
    // RGB follows the post-process setting (off), luma never post-processes, histogram always.
    const auto requests = vendor().requests();
    ASSERT_EQ(3u, requests.size());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(1, requests[i].dispId);
        EXPECT_EQ(i == 2, requests[i].postProcessed) << i;
        EXPECT_EQ(1u, peer->cacheSize(i)) << i;
    }
}

// Fractions 0.33333, 0.12345, 0.66667, 0.54321 scale in single precision and truncate: 359.9964
// becomes 359, not 360. The other turns are the rectangle conversion's, tested on their own.
const Rect kFractions = rect(frac(33333), frac(12345), frac(66667), frac(54321));

INSTANTIATE_TEST_SUITE_P(
        Rectangles, AnalysisFrames,
        ::testing::Values(
                FrameCase{"Pixels", 0, rect(100, 200, 300, 400), rect(100, 200, 300, 400)},
                FrameCase{"QuarterTurn", 1, rect(100, 200, 300, 400), rect(680, 100, 880, 300)},
                FrameCase{"QuarterFractions", 0,
                          rect(frac(25000), frac(25000), frac(75000), frac(75000)),
                          rect(270, 600, 810, 1800)},
                FrameCase{"Fractions", 0, kFractions, rect(359, 296, 720, 1303)}),
        caseName);

// The secondary panel (720 x 1600, a quarter turn): RGB reads its frame; luma and histogram read
// the main display's capture buffer at the rectangle checked against the secondary display. That
// buffer exists only once a capture with the main display selected has made it.
TEST_F(AnalysisFrameTest, SecondaryDisplay) {
    const Rect client = rect(100, 200, 300, 400);
    const Rect working = rect(320, 100, 520, 300);  // the client rectangle turned on 720 wide
    const Pixel mainColour{30, 160, 90};
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    setProp("ro.vendor.zarel.display.cwb.rotate_sec", "1");
    device->setFrame(PanelId::Secondary, FrameKind::Mixer, framed(720, 1600, working, kColour));
    device->setFrame(PanelId::Main, FrameKind::Mixer, framed(1080, 2400, working, mainColour));
    bootOn();
    composer->powerMode(3, 2);
    peer->setDisplayId(3);

    EXPECT_EQ(Error::FAILED, luma(client).first);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "mCwbBufferHandle.base is NULL"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_DEBUG, "Get Luma error\n"));
    EXPECT_EQ(0u, vendor().requests().size());
    for (int round = 0; round < 2; ++round) {
        auto [word, colour] = rgb(client);
        EXPECT_EQ(0, word);
        expectColour(kColour, colour);
    }
    peer->setDisplayId(0);
    ASSERT_TRUE(gateOpen());
    EXPECT_FLOAT_EQ(lumaOf(mainColour), luma(working).second);

    peer->setDisplayId(3);
    composer->layerChange();
    ASSERT_TRUE(gateOpen());
    auto [lumaResult, value] = luma(client);
    EXPECT_EQ(Error::NONE, lumaResult);
    EXPECT_FLOAT_EQ(lumaOf(mainColour), value);
    ASSERT_TRUE(gateOpen());
    auto [histResult, hist] = histogram(client);
    EXPECT_EQ(Error::NONE, histResult);
    expectUniformHistogram(mainColour, 200 * 200, hist);

    const auto requests = vendor().requests();
    ASSERT_EQ(4u, requests.size());
    EXPECT_EQ(4, requests[0].dispId);
    for (size_t i = 1; i < requests.size(); ++i) EXPECT_EQ(1, requests[i].dispId);

    // The screen-off rule follows the secondary display's power mode, even for luma.
    composer->layerChange();
    composer->powerMode(3, 0);
    EXPECT_EQ(Error::SCREEN_OFF, luma(client).first);
    EXPECT_EQ(Error::SCREEN_OFF, histogram(client).first);
    EXPECT_EQ(static_cast<int32_t>(Error::SCREEN_OFF), rgb(client).first);
    EXPECT_EQ(4u, vendor().requests().size());
}

// ---- Weights files ----

struct WeightsCase {
    const char* name;
    std::string mainFile;  // empty: no file
    std::string secFile;
    bool secondary;
    std::array<Pixel, 6> pixels;  // row-major over the 3 x 2 rectangle
    Pixel expected;
    friend void PrintTo(const WeightsCase& c, std::ostream* os) { *os << c.name; }
};

// The unweighted pass samples only the first pixel of a 3 x 2 rectangle; the weighted one all six.
constexpr Pixel kFirst{10, 20, 30};
constexpr std::array<Pixel, 6> kMixed = {
        {kFirst, {255, 255, 255}, {90, 90, 90}, {40, 0, 0}, {200, 100, 50}, {255, 255, 255}}};
constexpr Pixel kB{0, 0, 0};
constexpr Pixel kW{255, 255, 255};

std::string weightsFile(int count, const std::string& list) {
    return "{\"count\": " + std::to_string(count) + ", \"Weights\": [" + list + "]}";
}

class AnalysisWeights : public CaptureTest, public ::testing::WithParamInterface<WeightsCase> {};

TEST_P(AnalysisWeights, WeightedMeanOnlyWhenTheCountMatches) {
    const WeightsCase& tc = GetParam();
    if (!tc.mainFile.empty()) device->writeWeights(PanelId::Main, tc.mainFile);
    if (!tc.secFile.empty()) device->writeWeights(PanelId::Secondary, tc.secFile);
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    Frame frame = Frame::filled(tc.secondary ? 720 : 1080, tc.secondary ? 1600 : 2400, 0, 0, 0);
    for (int k = 0; k < 6; ++k) frame.setPixel(100 + k % 3, 100 + k / 3, tc.pixels[k]);
    device->setFrame(tc.secondary ? PanelId::Secondary : PanelId::Main, FrameKind::Mixer, frame);
    bootOn();
    if (tc.secondary) {
        composer->powerMode(3, 2);
        peer->setDisplayId(3);
    }
    auto [word, colour] = rgb(rect(100, 100, 103, 102));
    EXPECT_EQ(0, word);
    expectColour(tc.expected, colour);
}

// clang-format off
const WeightsCase kWeights[] = {
    {"SingleWeightPicksItsPixel", weightsFile(6, "0, 0, 0, 0, 1, 0"), "", false, kMixed, kMixed[4]},
    {"EvenWeightsAverageInLinearLight", weightsFile(6, "1,1,1,1,1,1"), "", false,
     {{kB, kW, kB, kW, kB, kW}}, {187, 187, 187}},
    {"NegativeWeightIsSigned", weightsFile(6, "0,-1,0,0,2,0"), "", false,
     {{kB, kW, kB, kB, kW, kB}}, kW},
    {"CountOneShort", weightsFile(5, "0,0,0,0,1"), "", false, kMixed, kFirst},
    {"CountOneLong", weightsFile(7, "0,0,0,0,1,0,0"), "", false, kMixed, kFirst},
    {"AllZeroWeights", weightsFile(6, "0,0,0,0,0,0"), "", false, kMixed, kB},
    {"SecondaryUsesItsOwnFile", weightsFile(6, "0,0,1,0,0,0"), weightsFile(6, "0,0,0,0,1,0"), true,
     kMixed, kMixed[4]},
    {"MainFileNeverWeighsTheSecondary", weightsFile(6, "0,0,0,0,1,0"), "", true, kMixed, kFirst},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Files, AnalysisWeights, ::testing::ValuesIn(kWeights), caseName);

}  // namespace
}  // namespace cwbtest
