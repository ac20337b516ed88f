// Panel readings: the APL text file and the panel loading line chosen by the panel state.
#include <cstdio>

#include "features_helpers.h"

namespace cwbtest::features {
namespace {

using host::device::Device;

const std::string kAplPath = Device::kAplFile;
const std::string kAplFailed = "getDisplayPanelAplValue error ret = -1";
const std::string kTimeoutLine =
        "Panel not support apl read or getDisplayPanelAplValue timeout 10ms.\n";

// The driver's layout: high part first, low byte second.
std::string aplText(int apl) {
    char text[16];
    snprintf(text, sizeof(text), "%02x %02x\n", apl >> 8, apl & 0xFF);
    return text;
}

class PanelTest : public ServiceTest {
  protected:
    int32_t loading() {
        int out = -12345;
        EXPECT_TRUE(service->getDisplayPanelLoading(&out).isOk());
        return out;
    }

    void panelState(int32_t uirState, int32_t panelNit, int32_t renderIntent) {
        device->qservice()->setAnswer(303, uirState);
        device->qservice()->setAnswer(304, panelNit);
        composer->colorMode(0, 7, renderIntent);
    }
};

auto byName = [](const auto& info) { return std::string(info.param.name); };

struct AplCase {
    const char* name;
    std::optional<std::string> text;
    int bytes;
    std::vector<unsigned int> values;
};

class AplParseTest : public PanelTest, public ::testing::WithParamInterface<AplCase> {};

TEST_P(AplParseTest, ParsesHexadecimalNumbersInFileOrder) {
    const AplCase& c = GetParam();
    device->setAplFile(c.text);
    boot();
    host::log::clear();
    std::vector<unsigned int> values = {9, 9, 9};  // stale entries must go
    EXPECT_EQ(c.bytes, peer->getDisplayPanelAplValue(values));
    EXPECT_EQ(c.values, values);
    EXPECT_EQ(1u, host::sandbox::openCount(kAplPath));
    Lines lines = logged();
    if (c.bytes >= 0) {
        EXPECT_TRUE(lines.empty());  // debug is off
        return;
    }
    // errno after an empty read is whatever it was; only the start of that line is fixed.
    const std::string first = c.text ? "failed to read " + kAplPath + ", errno="
                                     : "failed to open " + kAplPath + ", errno=2";
    if (lines.size() == 2 && lines[0].second.rfind(first, 0) == 0) lines[0].second = first;
    EXPECT_EQ((Lines{{kE, first}, {kE, kAplFailed}}), lines);
}

std::string ones() {  // 200 bytes; the first 128 hold 64 numbers
    std::string text;
    for (int i = 0; i < 100; ++i) text += "1 ";
    return text;
}

const AplCase kAplFiles[] = {
        {"TwoBytes", "0f a0\n", 6, {0x0f, 0xa0}},
        {"PrefixedWith0x", "0x3 0x1c", 8, {0x3, 0x1c}},
        {"OneNumber", "fa0", 3, {0xfa0}},
        {"NotHexadecimal", "zz", 2, {}},
        {"StopsAtFirstBadToken", "12 zz 34", 8, {0x12}},
        {"OutOfRangeValue", "100000000", 9, {}},
        {"LargestValue", "ffffffff", 8, {0xffffffffu}},
        // A number that the 128-byte read cuts after its second digit.
        {"CutAt128Bytes", std::string(126, ' ') + "abcd", 128, {0xab}},
        {"LongFileReadOnce", ones(), 128, std::vector<unsigned int>(64, 1)},
        {"Missing", std::nullopt, -1, {}},
        {"Empty", std::string(), -1, {}},
};

INSTANTIATE_TEST_SUITE_P(AplFiles, AplParseTest, ::testing::ValuesIn(kAplFiles), byName);

struct LoadingCase {
    const char* name;
    int32_t uirState, panelNit, renderIntent, apl, expected;
    const char* text = nullptr;  // the driver's layout of apl when not given
};

class LoadingFormulaTest : public PanelTest, public ::testing::WithParamInterface<LoadingCase> {};

TEST_P(LoadingFormulaTest, FollowsTheRowOfThePanelState) {
    const LoadingCase& c = GetParam();
    device->setAplFile(c.text ? std::string(c.text) : aplText(c.apl));
    boot();
    panelState(c.uirState, c.panelNit, c.renderIntent);
    EXPECT_EQ(c.expected, loading());
    EXPECT_EQ(c.apl, peer->panelApl());
    // Both readings are asked once, for the sampled display.
    for (int command : {303, 304}) {
        const auto asked = device->qservice()->commands(command);
        ASSERT_EQ(1u, asked.size());
        EXPECT_EQ(std::vector<int32_t>{0}, asked[0].in);
    }
    EXPECT_EQ(0u, host::log::countContaining("timeout"));
}

const LoadingCase kLoadingRows[] = {
        // UirState set, bright panel: t + APL * ((1.0 - t) / 4095), t = 250000 / nit.
        {"Nit1250Apl0", 1, 1250, 0, 0, 200000000},
        {"Nit1250Apl4095", 1, 1250, 0, 4095, 100000100},
        {"Nit2000Apl2048", 1, 2000, 0, 2048, 112496960},
        {"Nit5000Apl4095", 1, 5000, 0, 4095, 99999950},
        {"AnyNonZeroUirState", -3, 2000, 0, 2048, 112496960},
        {"Nit3000TruncatesFirst", 1, 3000, 0, 1, 83000000 + 4151},
        // UirState set, 800 to 1249 nits: the fixed line.
        {"Nit900Apl100", 1, 900, 0, 100, 197558000},
        {"Nit1249", 1, 1249, 307, 4095, 100000100},
        {"Nit800", 1, 800, 0, 1, 199975580},
        // The APL is high << 8 | low, in twelve bits.
        {"HighOnly", 1, 900, 0, 0xf00, 200000000 - 24420 * 0xf00, "0f\n"},
        {"TwelveBitsKept", 1, 900, 0, 4095, 200000000 - 24420 * 4095, "ff ff\n"},
        {"HighOverflows", 1, 900, 0, 0, 200000000, "fa0\n"},
        {"ThirdIgnored", 1, 900, 0, 0x102, 200000000 - 24420 * 0x102, "1 2 3\n"},
        // Dim panel or UirState 0: the render intent decides.
        {"Nit799FallsThrough", 1, 799, 307, 1000, 116628000},
        {"Nit700FallsThrough", 1, 700, 0, 1000, kLoadingOne},
        {"Intent307Apl1000", 0, 2000, 307, 1000, 116628000},
        {"Intent308Apl4095", 0, 0, 308, 4095, 122000000 - 5372 * 4095},
        {"Intent303Apl4095", 0, 0, 303, 4095, 100000005},
        {"Intent304Apl1", 0, 0, 304, 1, 104998779},
        {"Intent0Apl4095", 0, 0, 0, 4095, kLoadingOne},
        {"Intent305Apl0", 0, 0, 305, 0, kLoadingOne},
        {"Intent306Apl2048", 0, 0, 306, 2048, kLoadingOne},
};

INSTANTIATE_TEST_SUITE_P(Rows, LoadingFormulaTest, ::testing::ValuesIn(kLoadingRows), byName);

TEST_F(PanelTest, OnlyTheMainRenderIntentCountsAndWithoutQServiceOnlyIt) {
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    device->setAplFile(aplText(1000));
    boot();
    debugOn(*service);
    device->qservice()->setAnswer(304, 640);
    composer->colorMode(3, 7, 307);
    EXPECT_EQ(kLoadingOne, loading());
    composer->colorMode(0, 7, 307);
    host::log::clear();
    EXPECT_EQ(116628000, loading());
    // Debug names every parsed value and the inputs.
    EXPECT_EQ(
            (Lines{{kE, "getDisplayPanelAplValue value[0]= [3]"},
                   {kE, "getDisplayPanelAplValue value[1]= [e8]"},
                   {kI, "PanelLoading[116628000] RenderIntent[307] UirState[0] PanelNit[640]\n"}}),
            logged());
    device->qservice()->setAnswer(303, 1);
    device->qservice()->setAnswer(304, 2000);
    ASSERT_TRUE(device->setQServicePresent(false));
    EXPECT_EQ(116628000, loading());
    EXPECT_EQ(2u, logCount(kE, "getBinder: invalid binder object"));
}

TEST_F(PanelTest, FiveAttemptsTwoMillisecondsApartThenNeutral) {
    boot();
    panelState(1, 900, 307);
    const std::optional<std::string> files[] = {std::nullopt, "", "zz\n"};
    for (const auto& file : files) {
        SCOPED_TRACE(file.value_or("missing"));
        device->setAplFile(file);
        host::sandbox::resetCounts();
        host::log::clear();
        device->qservice()->clearCommands();
        peer->setPanelApl(77);
        // When each attempt said it failed (a file without numbers fails silently).
        std::vector<std::chrono::steady_clock::time_point> failed;
        host::log::setListener([&failed](const host::log::Line& line) {
            if (line.text == kAplFailed) failed.push_back(std::chrono::steady_clock::now());
        });
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(kLoadingOne, loading());
        failed.push_back(std::chrono::steady_clock::now());
        host::log::setListener(nullptr);
        EXPECT_EQ(5u, host::sandbox::openCount(kAplPath));
        EXPECT_EQ(1u, logCount(kE, kTimeoutLine));
        EXPECT_EQ(0, peer->panelApl());
        EXPECT_EQ(1u, device->qservice()->commands(303).size());
        EXPECT_EQ(1u, device->qservice()->commands(304).size());
        // A sleep of 2 ms follows every failed attempt, the fifth included.
        EXPECT_GE(failed.back() - start, std::chrono::milliseconds(10));
        EXPECT_TRUE(failed.size() == 1 || failed.size() == 6) << failed.size();
        for (size_t i = 1; i < failed.size(); ++i) {
            EXPECT_GE(failed[i] - failed[i - 1], std::chrono::milliseconds(2)) << "after " << i;
        }
    }
    // A file that appears while the first attempt reports its failure stops the retries.
    host::sandbox::resetCounts();
    host::log::clear();
    device->setAplFile(std::nullopt);
    host::log::setListener([this](const host::log::Line& line) {
        if (line.text.rfind("failed to open", 0) == 0) device->setAplFile(aplText(100));
    });
    EXPECT_EQ(197558000, loading());
    host::log::setListener(nullptr);
    EXPECT_EQ(2u, host::sandbox::openCount(kAplPath));
    EXPECT_EQ(0u, logCount(kE, kTimeoutLine));
}

}  // namespace
}  // namespace cwbtest::features
