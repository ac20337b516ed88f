// Panel readings: the APL text file and the panel loading line chosen by the panel state.
#include <cstdio>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using host::device::Device;

constexpr int32_t kOne = 100000000;
const std::string kAplPath = Device::kAplFile;
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
    std::pair<int, std::vector<unsigned int>> readApl(std::vector<unsigned int> values = {}) {
        const int bytes = service->getDisplayPanelAplValue(values);
        return {bytes, values};
    }

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

// ---- APL text ----

struct AplCase {
    const char* name;
    std::string text;
    int bytes;
    std::vector<unsigned int> values;
};
void PrintTo(const AplCase& c, std::ostream* os) {
    *os << c.name;
}

class AplParseTest : public PanelTest, public ::testing::WithParamInterface<AplCase> {};

TEST_P(AplParseTest, ParsesHexadecimalNumbersInFileOrder) {
    const AplCase& c = GetParam();
    device->setAplFile(c.text);
    boot();
    auto [bytes, values] = readApl({9, 9, 9});  // stale entries must go
    EXPECT_EQ(c.bytes, bytes);
    EXPECT_EQ(c.values, values);
    EXPECT_EQ(1u, host::sandbox::openCount(kAplPath));
    EXPECT_EQ(0u, host::log::countContaining("getDisplayPanelAplValue"));  // debug is off
}

std::string longText() {
    // 126 spaces, then a number that the 128-byte read cuts after its second digit.
    return std::string(126, ' ') + "abcd";
}

std::string manyOnes() {
    std::string text;
    for (int i = 0; i < 100; ++i) text += "1 ";
    return text;  // 200 bytes; the first 128 hold 64 numbers
}

INSTANTIATE_TEST_SUITE_P(AplFiles, AplParseTest,
                         ::testing::Values(AplCase{"TwoBytes", "0f a0\n", 6, {0x0f, 0xa0}},
                                           AplCase{"PrefixedWith0x", "0x3 0x1c", 8, {0x3, 0x1c}},
                                           AplCase{"OneNumber", "fa0", 3, {0xfa0}},
                                           AplCase{"NotHexadecimal", "zz", 2, {}},
                                           AplCase{"StopsAtFirstBadToken", "12 zz 34", 8, {0x12}},
                                           AplCase{"OutOfRangeValue", "100000000", 9, {}},
                                           AplCase{"LargestValue", "ffffffff", 8, {0xffffffffu}},
                                           AplCase{"CutAt128Bytes", longText(), 128, {0xab}},
                                           AplCase{"LongFileReadOnce", manyOnes(), 128,
                                                   std::vector<unsigned int>(64, 1)}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(PanelTest, AplReadFailuresReturnMinusOneWithTheirLines) {
    boot();
    struct {
        std::optional<std::string> file;
        std::string firstLine;
    } cases[] = {
            {std::nullopt, "failed to open " + kAplPath + ", errno=2"},
            // errno is whatever the empty read left; only the start of the line is fixed.
            {std::string(), "failed to read " + kAplPath + ", errno="},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.firstLine);
        host::log::clear();
        device->setAplFile(c.file);
        auto [bytes, values] = readApl({1, 2});
        EXPECT_EQ(-1, bytes);
        EXPECT_TRUE(values.empty());
        ASSERT_EQ(2u, host::log::lines().size());
        EXPECT_EQ(0u, host::log::lines()[0].text.rfind(c.firstLine, 0))
                << host::log::lines()[0].text;
        EXPECT_EQ(ANDROID_LOG_ERROR, host::log::lines()[0].priority);
        EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "getDisplayPanelAplValue error ret = -1"));
    }
}

TEST_F(PanelTest, DebugLogsEveryParsedValue) {
    device->setAplFile("0f a0\n");
    boot();
    Error result;
    ASSERT_TRUE(service->setDebug({1}, &result).isOk());
    auto [bytes, values] = readApl();
    EXPECT_EQ(6, bytes);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "getDisplayPanelAplValue value[0]= [f]"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "getDisplayPanelAplValue value[1]= [a0]"));
    EXPECT_EQ(2u, host::log::countContaining("getDisplayPanelAplValue value["));
}

// ---- Loading formula ----

struct LoadingCase {
    const char* name;
    int32_t uirState;
    int32_t panelNit;
    int32_t renderIntent;
    int apl;
    int32_t expected;
};
void PrintTo(const LoadingCase& c, std::ostream* os) {
    *os << c.name;
}

class LoadingFormulaTest : public PanelTest, public ::testing::WithParamInterface<LoadingCase> {};

TEST_P(LoadingFormulaTest, FollowsTheRowOfThePanelState) {
    const LoadingCase& c = GetParam();
    device->setAplFile(aplText(c.apl));
    boot();
    panelState(c.uirState, c.panelNit, c.renderIntent);
    EXPECT_EQ(c.expected, loading());
    EXPECT_EQ(c.apl, peer->panelApl());
    // Both readings are asked for the sampled display, once each.
    const auto uir = device->qservice()->commands(303);
    const auto nit = device->qservice()->commands(304);
    ASSERT_EQ(1u, uir.size());
    ASSERT_EQ(1u, nit.size());
    EXPECT_EQ(std::vector<int32_t>{0}, uir[0].in);
    EXPECT_EQ(std::vector<int32_t>{0}, nit[0].in);
    EXPECT_EQ(0u, host::log::countContaining("timeout"));
}

INSTANTIATE_TEST_SUITE_P(
        Rows, LoadingFormulaTest,
        ::testing::Values(
                // UirState set, bright panel: t + APL * ((1.0 - t) / 4095), t = 250000 / nit.
                LoadingCase{"Nit1250Apl0", 1, 1250, 0, 0, 200000000},
                LoadingCase{"Nit1250Apl4095", 1, 1250, 0, 4095, 100000100},
                LoadingCase{"Nit2000Apl2048", 1, 2000, 0, 2048, 112496960},
                LoadingCase{"Nit5000Apl4095", 1, 5000, 0, 4095, 99999950},
                LoadingCase{"AnyNonZeroUirState", -3, 2000, 0, 2048, 112496960},
                LoadingCase{"Nit3000TruncatesFirst", 1, 3000, 0, 1, 83000000 + 4151},
                // UirState set, 800 to 1249 nits: the fixed line.
                LoadingCase{"Nit900Apl100", 1, 900, 0, 100, 197558000},
                LoadingCase{"Nit1249", 1, 1249, 307, 4095, 100000100},
                LoadingCase{"Nit800", 1, 800, 0, 1, 199975580},
                // Dim panel or UirState 0: the render intent decides.
                LoadingCase{"Nit799FallsThrough", 1, 799, 307, 1000, 116628000},
                LoadingCase{"Nit700FallsThrough", 1, 700, 0, 1000, kOne},
                LoadingCase{"Intent307Apl1000", 0, 2000, 307, 1000, 116628000},
                LoadingCase{"Intent308Apl4095", 0, 0, 308, 4095, 122000000 - 5372 * 4095},
                LoadingCase{"Intent303Apl4095", 0, 0, 303, 4095, 100000005},
                LoadingCase{"Intent304Apl1", 0, 0, 304, 1, 104998779},
                LoadingCase{"Intent0Apl4095", 0, 0, 0, 4095, kOne},
                LoadingCase{"Intent305Apl0", 0, 0, 305, 0, kOne},
                LoadingCase{"Intent306Apl2048", 0, 0, 306, 2048, kOne}),
        [](const auto& info) { return std::string(info.param.name); });

TEST_F(PanelTest, AplCombinesHighAndLowIntoTwelveBits) {
    boot();
    panelState(1, 900, 0);  // 200000000 - 24420 * APL
    struct {
        const char* text;
        int apl;
    } cases[] = {
            {"0f a0\n", 4000}, {"0f\n", 3840}, {"ff ff\n", 4095}, {"fa0\n", 0}, {"1 2 3\n", 0x102}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        device->setAplFile(std::string(c.text));
        EXPECT_EQ(200000000 - 24420 * c.apl, loading());
        EXPECT_EQ(c.apl, peer->panelApl());
    }
}

TEST_F(PanelTest, DebugLineNamesTheInputs) {
    device->setAplFile(aplText(1000));
    boot();
    Error result;
    service->setDebug({1}, &result);
    panelState(0, 640, 307);
    EXPECT_EQ(116628000, loading());
    EXPECT_EQ(1u,
              logCount(ANDROID_LOG_INFO,
                       "PanelLoading[116628000] RenderIntent[307] UirState[0] PanelNit[640]\n"));
}

TEST_F(PanelTest, RenderIntentOfTheSecondaryDisplayIsIgnored) {
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    device->setAplFile(aplText(1000));
    boot();
    composer->colorMode(3, 7, 307);
    EXPECT_EQ(kOne, loading());
    composer->colorMode(0, 7, 307);
    EXPECT_EQ(116628000, loading());
}

// ---- Retries ----

class AplRetryTest : public PanelTest,
                     public ::testing::WithParamInterface<std::optional<std::string>> {};

TEST_P(AplRetryTest, FiveAttemptsTwoMillisecondsApartThenNeutral) {
    device->setAplFile(GetParam());
    boot();
    panelState(1, 900, 307);
    peer->setPanelApl(77);
    // When each failed attempt ended, where it says so (a file without numbers fails silently).
    std::vector<std::chrono::steady_clock::time_point> failed;
    host::log::setListener([&failed](const host::log::Line& line) {
        if (line.text == "getDisplayPanelAplValue error ret = -1") {
            failed.push_back(std::chrono::steady_clock::now());
        }
    });
    const auto start = std::chrono::steady_clock::now();
    const int32_t result = loading();
    const auto returned = std::chrono::steady_clock::now();
    host::log::setListener(nullptr);
    EXPECT_EQ(kOne, result);
    EXPECT_EQ(5u, host::sandbox::openCount(kAplPath));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, kTimeoutLine));
    EXPECT_EQ(0, peer->panelApl());
    EXPECT_EQ(1u, device->qservice()->commands(303).size());
    EXPECT_EQ(1u, device->qservice()->commands(304).size());
    // A sleep of 2 ms follows every failed attempt, the fifth included.
    EXPECT_GE(returned - start, std::chrono::milliseconds(10));
    if (!failed.empty()) {
        ASSERT_EQ(5u, failed.size());
        failed.push_back(returned);
        for (size_t i = 1; i < failed.size(); ++i) {
            EXPECT_GE(failed[i] - failed[i - 1], std::chrono::milliseconds(2)) << "after " << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AplFiles, AplRetryTest,
                         ::testing::Values(std::nullopt, std::string(), std::string("zz\n")),
                         [](const auto& info) {
                             return !info.param           ? std::string("Missing")
                                    : info.param->empty() ? std::string("Empty")
                                                          : std::string("NoNumber");
                         });

TEST_F(PanelTest, RetryStopsAtTheFirstGoodRead) {
    device->setAplFile(std::nullopt);
    boot();
    panelState(1, 900, 0);
    // The file appears while the first attempt reports its failure.
    host::log::setListener([this](const host::log::Line& line) {
        if (line.text.rfind("failed to open", 0) == 0) device->setAplFile(aplText(100));
    });
    const int32_t result = loading();
    host::log::setListener(nullptr);
    EXPECT_EQ(197558000, result);
    EXPECT_EQ(2u, host::sandbox::openCount(kAplPath));
    EXPECT_EQ(0u, logCount(ANDROID_LOG_ERROR, kTimeoutLine));
}

TEST_F(PanelTest, CachedRgbAnswerReusesThePreviousApl) {
    device->setAplFile(aplText(4000));
    boot();
    panelState(1, 900, 0);
    peer->setRgbCacheHit(true);
    peer->setPanelApl(100);
    EXPECT_EQ(197558000, loading());
    EXPECT_EQ(0u, host::sandbox::openCount(kAplPath));
    EXPECT_EQ(100, peer->panelApl());
    EXPECT_EQ(1u, device->qservice()->commands(303).size());
    EXPECT_EQ(1u, device->qservice()->commands(304).size());

    // Even a missing file does not matter then.
    device->setAplFile(std::nullopt);
    EXPECT_EQ(197558000, loading());
    EXPECT_EQ(0u, logCount(ANDROID_LOG_ERROR, kTimeoutLine));

    peer->setRgbCacheHit(false);
    device->setAplFile(aplText(4000));
    EXPECT_EQ(200000000 - 24420 * 4000, loading());
    EXPECT_EQ(4000, peer->panelApl());
}

TEST_F(PanelTest, WithoutQServiceOnlyTheRenderIntentCounts) {
    device->setAplFile(aplText(1000));
    boot();
    composer->colorMode(0, 7, 307);
    device->qservice()->setAnswer(303, 1);
    device->qservice()->setAnswer(304, 2000);
    ASSERT_TRUE(device->setQServicePresent(false));
    EXPECT_EQ(116628000, loading());
    EXPECT_EQ(2u, logCount(ANDROID_LOG_ERROR, "getBinder: invalid binder object"));
}

}  // namespace
}  // namespace cwbtest
