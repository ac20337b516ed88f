// The conversion of client rectangles into capture-buffer pixels: fractions, the four rotations,
// the bounds, and exactly which refusals say why.
#include "capture_helpers.h"

namespace cwbtest {
namespace {

struct RectCase {
    const char* name;
    int rotation;  // of the selected display
    int32_t displayId;
    bool debug;
    Rect in;
    Rect out;     // all zeros: refused
    Lines lines;  // everything the check logs, nothing more
};

const Rect kSq = rect(100, 200, 300, 400);
// Fractions with the low 24 bits in units of 1/100000; bits 24..30 carry nothing.
const Rect kQuarters = rect(frac(25000), frac(25000), frac(75000), frac(75000));
// 0.33333, 0.12345, 0.66667, 0.54321: scaled in single precision, then truncated.
const Rect kThirds = rect(frac(33333), frac(12345), frac(66667), frac(54321));
const Rect kQuartersHighBits = rect(0xFF0061A8u, 0x800061A8u, 0xFF0124F8u, 0xC10124F8u);
const Rect kNo{};
const std::string kUnknownRotation = "E Unkonwn rotation value !";

std::string err(int l, int t, int r, int b) {
    return "E input rect error [" + std::to_string(l) + "," + std::to_string(t) + "," +
           std::to_string(r) + "," + std::to_string(b) + "]\n";
}

// clang-format off
const RectCase kRects[] = {
    // Main display 1080 x 2400: name, rotation, display, debug, in, out, lines.
    {"Rotation1", 1, 0, false, kSq, rect(680, 100, 880, 300), {}},
    {"Rotation2", 2, 0, false, kSq, rect(780, 2000, 980, 2200), {}},
    {"Rotation3", 3, 0, false, kSq, rect(200, 2100, 400, 2300), {}},
    {"WholeScreen", 0, 0, false, rect(0, 0, 1080, 2400), rect(0, 0, 1080, 2400), {}},
    {"WholeScreenRot1", 1, 0, false, rect(0, 0, 2400, 1080), rect(0, 0, 1080, 2400), {}},
    {"WholeScreenRot2", 2, 0, false, rect(0, 0, 1080, 2400), rect(0, 0, 1080, 2400), {}},
    {"WholeScreenRot3", 3, 0, false, rect(0, 0, 2400, 1080), rect(0, 0, 1080, 2400), {}},
    {"ColumnTooMany", 0, 0, false, rect(0, 0, 1081, 2400), kNo, {err(0, 0, 1081, 2400)}},
    {"OneRowTooTall", 0, 0, false, rect(0, 0, 1080, 2401), kNo, {err(0, 0, 1080, 2401)}},
    {"ZeroWidth", 0, 0, false, rect(100, 100, 100, 200), kNo, {err(100, 100, 100, 200)}},
    {"ZeroHeight", 0, 0, false, rect(100, 100, 200, 100), kNo, {err(100, 100, 200, 100)}},
    {"Inverted", 2, 0, false, rect(300, 200, 100, 400), kNo, {err(300, 200, 100, 400)}},
    {"ThirdsRot1", 1, 0, false, kThirds, rect(494, 799, 947, 1600), {}},
    {"ThirdsRot2", 2, 0, false, kThirds, rect(360, 1097, 721, 2104), {}},
    {"ThirdsRot3", 3, 0, false, kThirds, rect(133, 800, 586, 1601), {}},
    {"QuartersHighBitsIgnored", 0, 0, false, kQuartersHighBits, rect(270, 600, 810, 1800), {}},
    {"FractionAboveOne", 0, 0, false, rect(frac(0), frac(0), frac(150000), frac(50000)), kNo,
     {err(0, 0, 1620, 1200)}},
    {"OneNegativeValue", 0, 0, false, rect(-1, 0, 10, 10), kNo, {}},
    {"MixedSignsSkipFractions", 0, 0, true, rect(frac(25000), frac(25000), frac(75000), 100), kNo,
     {}},
    {"Rot1BottomBeyondWidth", 1, 0, true, rect(0, 0, 100, 1081), kNo, {}},
    {"Rot1RightBeyondHeight", 1, 0, false, rect(0, 0, 2401, 100), kNo, {err(0, 0, 2401, 100)}},
    {"Rot2RightBeyondWidth", 2, 0, false, rect(0, 0, 1081, 100), kNo, {}},
    {"Rot2BottomBeyondHeight", 2, 0, false, rect(0, 0, 100, 2401), kNo, {}},
    {"Rot3RightBeyondHeight", 3, 0, false, rect(0, 0, 2401, 100), kNo, {}},
    {"Rot3BottomBeyondWidth", 3, 0, false, rect(0, 0, 100, 1081), kNo, {err(0, 0, 100, 1081)}},
    {"UnknownRotation", 5, 0, false, kSq, kNo, {kUnknownRotation}},
    {"UnknownRotationDebug", 5, 0, true, kSq, kNo, {kUnknownRotation}},
    {"SecondaryRot1", 1, 3, false, kSq, rect(320, 100, 520, 300), {}},
    {"SecondaryRot3", 3, 3, false, kSq, rect(200, 1300, 400, 1500), {}},
    {"SecondaryBounds", 0, 3, false, rect(0, 0, 721, 1600), kNo, {err(0, 0, 721, 1600)}},
    {"SecondaryQuarters", 0, 3, false, kQuarters, rect(180, 400, 540, 1200), {}},
    // No display selected: not even one pixel fits a 0 x 0 screen.
    {"UnknownDisplayOnePixel", 0, 1, false, rect(0, 0, 1, 1), kNo, {err(0, 0, 1, 1)}},
    {"UnknownDisplayKeepsRotation", 2, 1, false, rect(0, 0, 1, 1), kNo, {}},
    {"DebugRotation", 1, 0, true, kSq, rect(680, 100, 880, 300),
     {"I Perform rotation: [100,200,300,400] to [680,100,880,300]\n"}},
    {"DebugFractions", 1, 0, true, kQuarters, rect(270, 600, 810, 1800),
     {"E Rect extracted: (0.250000, 0.250000, 0.750000, 0.750000), mCwbRotate:1",
      "I Perform rotation: [600,270,1800,810] to [270,600,810,1800]\n"}},
    {"DebugRefused", 0, 0, true, rect(0, 0, 1081, 2400), kNo,
     {"I Perform rotation: [0,0,1081,2400] to [0,0,1081,2400]\n", err(0, 0, 1081, 2400)}},
};
// clang-format on

class CaptureRectTest : public CaptureTest, public ::testing::WithParamInterface<RectCase> {};

TEST_P(CaptureRectTest, ConvertsOrRefuses) {
    const RectCase& c = GetParam();
    const std::string rotation = std::to_string(c.rotation);
    addSecondary();
    setProp("ro.vendor.zarel.display.cwb.rotate_main", c.displayId == 0 ? rotation : "0");
    setProp("ro.vendor.zarel.display.cwb.rotate_sec", c.displayId == 3 ? rotation : "0");
    setProp("ro.vendor.zarel.display.cwb.rotate", c.displayId == 1 ? rotation : "7");
    boot();
    peer->setDisplayId(c.displayId);
    setDebug({c.debug ? 1 : 0});
    host::log::clear();

    Rect out = rect(-7, -7, -7, -7);
    const bool ok = service->checkInputRect(c.in, out);
    EXPECT_EQ(c.out, ok ? out : kNo);  // an accepted rectangle is never all zeros
    EXPECT_EQ(c.lines, logged());
    // The rotation of the selected display is recorded; an unknown display keeps the last one.
    EXPECT_EQ(c.rotation, peer->cwbRotate());
    // What a client is told: INVALID_ARGUMENT exactly for a refused rectangle.
    if (c.displayId != 1) {
        const int32_t word = rgb(c.in).first;
        EXPECT_EQ(c.out == kNo, word == static_cast<int32_t>(Error::INVALID_ARGUMENT)) << word;
    }
    peer->setDisplayId(1);
    service->checkInputRect(c.in, out);
    EXPECT_EQ(c.rotation, peer->cwbRotate());
}

INSTANTIATE_TEST_SUITE_P(Rectangles, CaptureRectTest, ::testing::ValuesIn(kRects), caseName);

}  // namespace
}  // namespace cwbtest
