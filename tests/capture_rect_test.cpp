// The conversion of client rectangles into capture-buffer pixels: fractions, the four rotations,
// the bounds, and exactly which refusals say why.
#include "service_fixture.h"

namespace cwbtest {
namespace {

struct Line {
    int priority;
    std::string text;
};

struct RectCase {
    const char* name;
    int rotation;  // of the selected display
    int32_t displayId;
    bool debug;
    Rect in;
    bool ok;
    Rect out;
    std::vector<Line> lines;  // everything the check logs, nothing more
};

void PrintTo(const RectCase& c, std::ostream* os) {
    *os << c.name;
}

constexpr int E = ANDROID_LOG_ERROR;
constexpr int I = ANDROID_LOG_INFO;

// Fractions with the low 24 bits in units of 1/100000; bits 24..30 carry nothing.
const Rect kQuarters = rect(frac(25000), frac(25000), frac(75000), frac(75000));
const Rect kQuartersHighBits =
        rect(static_cast<int32_t>(0xFF0061A8u), static_cast<int32_t>(0x800061A8u),
             static_cast<int32_t>(0xFF0124F8u), static_cast<int32_t>(0xC10124F8u));

// Refused with the reason logged.
Line err(int l, int t, int r, int b) {
    return {E, "input rect error [" + std::to_string(l) + "," + std::to_string(t) + "," +
                       std::to_string(r) + "," + std::to_string(b) + "]\n"};
}

const Rect kNone{};
const Line kUnknownRotation{E, "Unkonwn rotation value !"};

// clang-format off
const RectCase kRects[] = {
    // Main display 1080 x 2400: name, rotation, display, debug, in, ok, out, lines.
    {"Rotation0", 0, 0, false, rect(100, 200, 300, 400), true, rect(100, 200, 300, 400), {}},
    {"Rotation1", 1, 0, false, rect(100, 200, 300, 400), true, rect(680, 100, 880, 300), {}},
    {"Rotation2", 2, 0, false, rect(100, 200, 300, 400), true, rect(780, 2000, 980, 2200), {}},
    {"Rotation3", 3, 0, false, rect(100, 200, 300, 400), true, rect(200, 2100, 400, 2300), {}},
    {"WholeScreen", 0, 0, false, rect(0, 0, 1080, 2400), true, rect(0, 0, 1080, 2400), {}},
    {"WholeScreenRot1", 1, 0, false, rect(0, 0, 2400, 1080), true, rect(0, 0, 1080, 2400), {}},
    {"WholeScreenRot2", 2, 0, false, rect(0, 0, 1080, 2400), true, rect(0, 0, 1080, 2400), {}},
    {"WholeScreenRot3", 3, 0, false, rect(0, 0, 2400, 1080), true, rect(0, 0, 1080, 2400), {}},
    {"TouchesEdges", 0, 0, false, rect(980, 2300, 1080, 2400), true, rect(980, 2300, 1080, 2400),
     {}},
    {"ColumnTooMany", 0, 0, false, rect(0, 0, 1081, 2400), false, kNone, {err(0, 0, 1081, 2400)}},
    {"OneRowTooTall", 0, 0, false, rect(0, 0, 1080, 2401), false, kNone, {err(0, 0, 1080, 2401)}},
    {"ZeroWidth", 0, 0, false, rect(100, 100, 100, 200), false, kNone, {err(100, 100, 100, 200)}},
    {"ZeroHeight", 0, 0, false, rect(100, 100, 200, 100), false, kNone, {err(100, 100, 200, 100)}},
    {"Inverted", 2, 0, false, rect(300, 200, 100, 400), false, kNone, {err(300, 200, 100, 400)}},
    {"QuartersRot0", 0, 0, false, kQuarters, true, rect(270, 600, 810, 1800), {}},
    {"QuartersRot1", 1, 0, false, kQuarters, true, rect(270, 600, 810, 1800), {}},
    {"QuartersHighBitsIgnored", 0, 0, false, kQuartersHighBits, true, rect(270, 600, 810, 1800),
     {}},
    {"FractionAboveOne", 0, 0, false, rect(frac(0), frac(0), frac(150000), frac(50000)), false,
     kNone, {err(0, 0, 1620, 1200)}},
    {"OneNegativeValue", 0, 0, false, rect(-1, 0, 10, 10), false, kNone, {}},
    {"MixedSignsSkipFractions", 0, 0, true, rect(frac(25000), frac(25000), frac(75000), 100),
     false, kNone, {}},
    {"Rot1BottomBeyondWidth", 1, 0, true, rect(0, 0, 100, 1081), false, kNone, {}},
    {"Rot1RightBeyondHeight", 1, 0, false, rect(0, 0, 2401, 100), false, kNone,
     {err(0, 0, 2401, 100)}},
    {"Rot2RightBeyondWidth", 2, 0, false, rect(0, 0, 1081, 100), false, kNone, {}},
    {"Rot2BottomBeyondHeight", 2, 0, false, rect(0, 0, 100, 2401), false, kNone, {}},
    {"Rot3RightBeyondHeight", 3, 0, false, rect(0, 0, 2401, 100), false, kNone, {}},
    {"Rot3BottomBeyondWidth", 3, 0, false, rect(0, 0, 100, 1081), false, kNone,
     {err(0, 0, 100, 1081)}},
    {"UnknownRotation", 5, 0, false, rect(100, 200, 300, 400), false, kNone, {kUnknownRotation}},
    {"UnknownRotationDebug", 5, 0, true, rect(100, 200, 300, 400), false, kNone,
     {kUnknownRotation}},
    // Secondary display 720 x 1600.
    {"SecondaryRot1", 1, 3, false, rect(100, 200, 300, 400), true, rect(320, 100, 520, 300), {}},
    {"SecondaryBounds", 0, 3, false, rect(0, 0, 721, 1600), false, kNone, {err(0, 0, 721, 1600)}},
    {"SecondaryQuarters", 0, 3, false, kQuarters, true, rect(180, 400, 540, 1200), {}},
    // No display selected: nothing fits a 0 x 0 screen.
    {"UnknownDisplay", 0, 1, false, rect(100, 200, 300, 400), false, kNone,
     {err(100, 200, 300, 400)}},
    {"UnknownDisplayOnePixel", 0, 1, false, rect(0, 0, 1, 1), false, kNone, {err(0, 0, 1, 1)}},
    // Diagnostics with the debug switch on.
    {"DebugRotation", 1, 0, true, rect(100, 200, 300, 400), true, rect(680, 100, 880, 300),
     {{I, "Perform rotation: [100,200,300,400] to [680,100,880,300]\n"}}},
    {"DebugFractions", 1, 0, true, kQuarters, true, rect(270, 600, 810, 1800),
     {{E, "Rect extracted: (0.250000, 0.250000, 0.750000, 0.750000), mCwbRotate:1"},
      {I, "Perform rotation: [600,270,1800,810] to [270,600,810,1800]\n"}}},
    {"DebugRefused", 0, 0, true, rect(0, 0, 1081, 2400), false, kNone,
     {{I, "Perform rotation: [0,0,1081,2400] to [0,0,1081,2400]\n"}, err(0, 0, 1081, 2400)}},
};
// clang-format on

class CaptureRectTest : public ServiceTest, public ::testing::WithParamInterface<RectCase> {};

TEST_P(CaptureRectTest, ConvertsOrRefuses) {
    const RectCase& c = GetParam();
    const std::string rotation = std::to_string(c.rotation);
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    setProp("ro.vendor.zarel.display.cwb.rotate_main", c.displayId == 0 ? rotation : "0");
    setProp("ro.vendor.zarel.display.cwb.rotate_sec", c.displayId == 3 ? rotation : "0");
    setProp("ro.vendor.zarel.display.cwb.rotate", c.displayId == 1 ? rotation : "7");
    device->setPanelModes(PanelId::Secondary, {{720, 1600, kVsync60}});
    boot();
    peer->setDisplayId(c.displayId);
    Error ignored;
    ASSERT_TRUE(service->setDebug({c.debug ? 1 : 0}, &ignored).isOk());
    host::log::clear();

    Rect out = rect(-7, -7, -7, -7);
    EXPECT_EQ(c.ok, service->checkInputRect(c.in, out));
    if (c.ok) {
        EXPECT_EQ(c.out.left, out.left);
        EXPECT_EQ(c.out.top, out.top);
        EXPECT_EQ(c.out.right, out.right);
        EXPECT_EQ(c.out.bottom, out.bottom);
    }
    const auto lines = host::log::lines();
    ASSERT_EQ(c.lines.size(), lines.size());
    for (size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(c.lines[i].priority, lines[i].priority) << i;
        EXPECT_EQ(c.lines[i].text, lines[i].text) << i;
    }
    // The rotation of the selected display is recorded; an unknown display keeps the old value.
    EXPECT_EQ(c.rotation, peer->cwbRotate());
}

INSTANTIATE_TEST_SUITE_P(Rectangles, CaptureRectTest, ::testing::ValuesIn(kRects),
                         [](const auto& info) { return std::string(info.param.name); });

class CaptureRectSelectionTest : public ServiceTest {};

TEST_F(CaptureRectSelectionTest, RotationFollowsTheSelectedDisplay) {
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    setProp("ro.vendor.zarel.display.cwb.rotate", "2");
    setProp("ro.vendor.zarel.display.cwb.rotate_main", "1");
    setProp("ro.vendor.zarel.display.cwb.rotate_sec", "3");
    device->setPanelModes(PanelId::Secondary, {{720, 1600, kVsync60}});
    boot();
    EXPECT_EQ(2, peer->cwbRotate());
    Rect out;
    const Rect in = rect(100, 200, 300, 400);
    struct Step {
        int32_t displayId;
        int rotation;
        bool ok;
    };
    // Main rotation 1, secondary rotation 3 (1600 - 300 = 1300), then an unknown display keeps
    // whatever the last check recorded.
    const Step steps[] = {{0, 1, true}, {3, 3, true}, {1, 3, false}, {0, 1, true}, {1, 1, false}};
    for (const Step& step : steps) {
        peer->setDisplayId(step.displayId);
        EXPECT_EQ(step.ok, service->checkInputRect(in, out)) << step.displayId;
        EXPECT_EQ(step.rotation, peer->cwbRotate()) << step.displayId;
    }
    peer->setDisplayId(3);
    ASSERT_TRUE(service->checkInputRect(in, out));
    EXPECT_EQ(200, out.left);
    EXPECT_EQ(1300, out.top);
    EXPECT_EQ(400, out.right);
    EXPECT_EQ(1500, out.bottom);
}

}  // namespace
}  // namespace cwbtest
