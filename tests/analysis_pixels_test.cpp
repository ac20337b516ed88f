// Frame analysis at pixel level: the gamma table and its inverse, the colour-temperature sampler,
// and the three pixel passes over buffers laid out as a capture buffer is (padded rows).
#include <ColorTempHelper.h>
#include <GammaTable.h>

#include <cmath>
#include <limits>

#include "capture_helpers.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::implementation::ColorRange;
using aidl::vendor::zarel::hardware::cwb::implementation::ColorTempHelper;
using aidl::vendor::zarel::hardware::cwb::implementation::kGammaTable;
using aidl::vendor::zarel::hardware::cwb::implementation::linearToCode;
using host::device::Pixel;

constexpr Pixel kBlack{0, 0, 0};
constexpr Pixel kWhite{255, 255, 255};
constexpr Pixel kGrey{128, 128, 128};
constexpr uint8_t kPoison = 0xA7;  // padding and unsampled pixels; any read of it shows

// 255 * (i / 255)^2.2 to three decimals, computed here, not copied from the product.
double referenceGamma(int i) {
    if (i == 1) return 0.002;  // the one entry that is not the rounded power law
    return std::round(255.0 * std::pow(i / 255.0, 2.2) * 1000.0) / 1000.0;
}

// A capture buffer stand-in: RGB_888 rows `pitch` pixels apart, everything poisoned at first.
struct Image {
    Image(int w, int h, int pitch)
        : width(w), height(h), pitch(pitch), bytes(static_cast<size_t>(pitch) * h * 3, kPoison) {}
    void set(int x, int y, Pixel p) {
        uint8_t* d = &bytes[3 * (static_cast<size_t>(x) + static_cast<size_t>(pitch) * y)];
        d[0] = p.r;
        d[1] = p.g;
        d[2] = p.b;
    }
    void fill(int l, int t, int r, int b, Pixel p) {
        for (int y = t; y < b; ++y)
            for (int x = l; x < r; ++x) set(x, y, p);
    }
    void* data() { return bytes.data(); }
    int width;
    int height;
    int pitch;
    std::vector<uint8_t> bytes;
};

// ---- Gamma table and its inverse ----

// Each entry is the power law to three decimals and the inverse maps it back to its own code.
TEST(AnalysisGammaTable, EveryEntryIsThePowerLawAndMapsBackToItsCode) {
    ASSERT_EQ(256u, kGammaTable.size());
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(referenceGamma(i), kGammaTable[i]) << "entry " << i;
        EXPECT_EQ(i, linearToCode(kGammaTable[i])) << "code " << i;
    }
}

// The smallest code whose truncated thousandths reach the mean. Entry 53 (8.046) and 187
// (128.885) truncate to 8045 and 128884 thousandths; the mean is truncated too, so thousandths
// just past those values already belong to the next code.
TEST(AnalysisLinearToCode, Boundaries) {
    // Above white reaches nothing, like NaN.
    const struct {
        double mean;
        int code;
    } cases[] = {{8.0455, 53},     {8.04605, 54}, {128.8849, 187},
                 {128.88505, 188}, {127.5, 187},  {0.0, 0},
                 {0.0009, 0},      {0.0015, 1},   {-3.0, 0},
                 {255.0, 255},     {255.5, 0},    {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (const auto& c : cases) EXPECT_EQ(c.code, linearToCode(c.mean)) << c.mean;
}

// ---- Colour-temperature sampler ----

void expectRange(const ColorRange& range, int lo, int hi, const char* what) {
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(lo, range.min[c]) << what << " channel " << c;
        EXPECT_EQ(hi, range.max[c]) << what << " channel " << c;
    }
}

// How the sampler sorts samples into bands is pinned by the kernel comparison, which checks
// every kernel against it; here, its configuration and its reset.
TEST(AnalysisSamplerState, RunsOfCommasAreOneSeparator) {
    ColorTempHelper sampler;
    ASSERT_TRUE(sampler.configure(",0,,10,245,,255,"));
    EXPECT_TRUE(sampler.mEnabled);
    EXPECT_EQ((std::vector<int32_t>{0, 10, 245, 255}),
              std::vector<int32_t>(sampler.mCtRange, sampler.mCtRange + 4));
}

TEST(AnalysisSamplerState, ResetStartsAFrameAndKeepsTheConfiguration) {
    ColorTempHelper sampler;
    ASSERT_TRUE(sampler.configure("0,10,245,255"));
    sampler.mDebug = true;
    sampler.addSample(0, 0, 0);
    sampler.addSample(255, 255, 255);
    sampler.addSample(128, 128, 128);
    sampler.mPure = false;
    sampler.reset();
    EXPECT_TRUE(sampler.mPure);
    EXPECT_TRUE(sampler.mBlackWhite);
    EXPECT_FALSE(sampler.mRangeFullValid || sampler.mRange1Valid || sampler.mRange2Valid);
    expectRange(sampler.mRangeFull, 256, -1, "full");
    expectRange(sampler.mRange1, 256, -1, "band 1");
    expectRange(sampler.mRange2, 256, -1, "band 2");
    EXPECT_TRUE(sampler.mEnabled);
    EXPECT_TRUE(sampler.mDebug);
    EXPECT_EQ(245, sampler.mCtRange[2]);
}

// ---- Pixel passes ----

class AnalysisPass : public CaptureTest {
  protected:
    std::pair<std::array<unsigned char, 3>, unsigned short> passRgb(Image& image, const Rect& r) {
        std::array<unsigned char, 3> codes = {1, 2, 3};
        unsigned short state = 0;
        peer->calcPixelsRGB(image.data(), image.pitch, r, codes, state);
        return {codes, state};
    }
};

// Only every third pixel each way is read, and samples average in linear light.
TEST_F(AnalysisPass, EveryThirdPixelEachWayIsSampledAndAveragedInLinearLight) {
    boot();
    Image image(20, 20, 24);
    image.fill(0, 0, 20, 20, {40, 40, 40});
    for (int y = 2; y < 11; y += 3)
        for (int x = 5; x < 14; x += 3) image.set(x, y, kWhite);
    EXPECT_EQ((std::array<unsigned char, 3>{255, 255, 255}),
              passRgb(image, rect(5, 2, 14, 11)).first);
    image.set(5, 2, kBlack);
    image.set(8, 5, kBlack);
    EXPECT_EQ((std::array<unsigned char, 3>{187, 187, 187}),
              passRgb(image, rect(5, 2, 11, 8)).first);
}

TEST_F(AnalysisPass, EmptyRectanglesGiveMidGreyAndNoState) {
    setProp("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
    boot();
    Image image(10, 10, 12);
    for (const Rect& r : {rect(5, 5, 5, 5), rect(5, 5, 5, 9), rect(5, 5, 9, 5), rect(6, 5, 5, 9)}) {
        auto [codes, state] = passRgb(image, r);
        EXPECT_EQ((std::array<unsigned char, 3>{128, 128, 128}), codes)
                << r.left << "," << r.top << "," << r.right << "," << r.bottom;
        EXPECT_EQ(0, state);
    }
}

struct ClassCase {
    const char* name;
    std::vector<Pixel> samples;
    unsigned short state;  // with ct_range 0,10,245,255
    friend void PrintTo(const ClassCase& c, std::ostream* os) { *os << c.name; }
};

class AnalysisClassification : public AnalysisPass,
                               public ::testing::WithParamInterface<ClassCase> {};

// Each sample is one sampled pixel of a single row (every third column) of the main screen; the
// verdicts are read where a client reads them, in the high half of getRGBValue's answer.
TEST_P(AnalysisClassification, StateBitsFromTheRanges) {
    setProp("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
    const ClassCase& tc = GetParam();
    const int n = static_cast<int>(tc.samples.size());
    host::device::Frame frame = host::device::Frame::filled(1080, 2400, 1, 2, 3);
    for (int i = 0; i < n; ++i) frame.setPixel(3 * i, 0, tc.samples[i]);
    device->setFrame(PanelId::Main, FrameKind::Mixer, frame);
    bootOn();
    setDebug({1});
    host::log::clear();
    const int32_t word = rgb(rect(0, 0, 3 * n, 1)).first;
    EXPECT_EQ(tc.state, word >> 16);
    EXPECT_EQ(0, word & 0xFFFF) << "NONE in the low half";
    EXPECT_EQ(1u, host::log::countContaining("mPure = "));
    EXPECT_EQ(1u, host::log::countContaining("mBlackWhite = "));
}

INSTANTIATE_TEST_SUITE_P(
        Ranges, AnalysisClassification,
        ::testing::Values(ClassCase{"BlackIsPureOnly", {kBlack, kBlack}, 0x1},
                          ClassCase{"WhiteIsPureOnly", {kWhite}, 0x1},
                          ClassCase{"BlackAndWhite", {kBlack, kWhite, kBlack}, 0x2},
                          ClassCase{"BandOneSpreadThree", {kBlack, {3, 3, 3}, kWhite}, 0x2},
                          ClassCase{"BandOneSpreadFour", {kBlack, {4, 0, 0}, kWhite}, 0x0},
                          ClassCase{"BandTwoSpreadIsFree", {kBlack, {245, 245, 245}, kWhite}, 0x2},
                          ClassCase{"PureWithinThree", {{100, 50, 9}, {103, 53, 12}}, 0x1},
                          ClassCase{"PureSpreadFour", {{100, 50, 9}, {100, 50, 13}}, 0x0},
                          ClassCase{"GreyAmongBlackAndWhite", {kBlack, kGrey, kWhite}, 0x0}),
        caseName);

TEST_F(AnalysisPass, WithoutCtRangeNoStateAndNoClassificationLog) {
    boot();
    setDebug({1});
    Image image(9, 1, 9);
    image.set(0, 0, kBlack);
    image.set(3, 0, kWhite);
    image.set(6, 0, kBlack);
    host::log::clear();
    EXPECT_EQ(0, passRgb(image, rect(0, 0, 9, 1)).second);
    image.fill(0, 0, 9, 1, kBlack);
    EXPECT_EQ(0, passRgb(image, rect(0, 0, 9, 1)).second);
    EXPECT_EQ(0u, host::log::countContaining("mPure"));
    EXPECT_FALSE(peer->colorTemp().mRangeFullValid);
    // Three or five pieces leave the sampler off as well.
    for (const char* value : {"0,10,245", "0,10,245,255,7"}) {
        ColorTempHelper sampler;
        sampler.configure(value);
        sampler.addSample(128, 128, 128);
        EXPECT_FALSE(sampler.mEnabled || sampler.mRangeFullValid || !sampler.mBlackWhite) << value;
    }
}

TEST_F(AnalysisPass, GreyLogsOutOfRangeOncePerFrameWithDebugOnly) {
    setProp("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
    boot();
    Image image(30, 30, 32);
    image.fill(0, 0, 30, 30, kBlack);
    image.fill(0, 15, 30, 30, kGrey);
    host::log::clear();
    passRgb(image, rect(0, 0, 30, 30));
    EXPECT_EQ(0u, host::log::countContaining("Pixel out of range"));
    setDebug({1});
    passRgb(image, rect(0, 0, 30, 30));
    passRgb(image, rect(0, 0, 30, 30));
    EXPECT_EQ(2u, logCount(ANDROID_LOG_DEBUG, "Pixel out of range: R(128), G(128), B(128)"));
}

// Colours truncate per pixel. The rectangle sits inside padded rows, so a wrong pitch or offset
// reads the poison.
TEST_F(AnalysisPass, LumaTruncatesPerPixel) {
    boot();
    Image image(6, 3, 8);
    auto luma = [&](const Rect& r) { return peer->calcPixelsLumas(image.data(), 8, r); };
    // 0,1,4 weighs 31/32 of a code: any rounding shows.
    const std::pair<Pixel, int> cases[] = {
            {{255, 0, 0}, 55}, {{0, 255, 0}, 183},    {{0, 0, 255}, 15},     {{1, 0, 0}, 0},
            {{0, 1, 4}, 0},    {{200, 100, 50}, 118}, {{255, 255, 255}, 255}};
    for (const auto& [p, y] : cases) {
        image.fill(1, 1, 5, 3, p);
        EXPECT_FLOAT_EQ(y / 255.0f, luma(rect(1, 1, 5, 3)))
                << int{p.r} << "," << int{p.g} << "," << int{p.b};
    }
    EXPECT_EQ(0.0f, luma(rect(2, 1, 2, 2)));
    EXPECT_EQ(0.0f, luma(rect(2, 1, 3, 1)));
}

TEST_F(AnalysisPass, HistogramCountsEveryPixelOncePerChannelAndOnlyAdds) {
    boot();
    Image image(20, 10, 23);
    image.fill(2, 1, 17, 9, {1, 2, 3});
    image.set(4, 5, {10, 20, 30});
    image.set(16, 8, {255, 255, 0});
    unsigned int bins[256][3] = {};
    const Rect r = rect(2, 1, 17, 9);
    const unsigned int area = 15 * 8;
    for (int pass = 1; pass <= 2; ++pass) {
        peer->calcPixelsHistogram(image.data(), 23, r, bins);
        for (int ch = 0; ch < 3; ++ch) {
            unsigned int total = 0;
            for (int v = 0; v < 256; ++v) total += bins[v][ch];
            EXPECT_EQ(pass * area, total) << "channel " << ch;
        }
        EXPECT_EQ(pass * 1u, bins[10][0]);
        EXPECT_EQ(pass * 1u, bins[20][1]);
        EXPECT_EQ(pass * 1u, bins[30][2]);
        EXPECT_EQ(pass * 2u, bins[255][0] + bins[255][1]);
        EXPECT_EQ(pass * 1u, bins[0][2]);
        EXPECT_EQ(pass * (area - 2), bins[1][0]);
        EXPECT_EQ(0u, bins[kPoison][0] + bins[kPoison][1] + bins[kPoison][2]);
    }
    peer->calcPixelsHistogram(image.data(), 23, rect(5, 1, 5, 9), bins);
    EXPECT_EQ(2 * area, bins[1][0] + bins[10][0] + bins[255][0]);
}

}  // namespace
}  // namespace cwbtest
