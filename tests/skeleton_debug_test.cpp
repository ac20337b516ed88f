// setDebug's three switches, and the colour-mode commands that switch the AP-side
// post-processing off and back on through the display qservice.
#include <climits>

#include "service_fixture.h"

namespace cwbtest {
namespace {

constexpr const char* kPostProcess = "ro.vendor.zarel.display.cwb.postprocess";
constexpr const char* kSecondary = "ro.vendor.zarel.display.cwb.display_id_sec";
constexpr const char* kDisableLine = "Disable post processed effect in AP side.\n";
constexpr const char* kEnableLine = "Enable post processed effect in AP side.\n";

std::string switchesLine(int debugLog, int dump, int disable) {
    char text[128];
    snprintf(text, sizeof(text),
             "CwbService::setDebug(): debug log: %d, dump: %d, disable post processed: %d\n",
             debugLog, dump, disable);
    return text;
}

class SkeletonDebugTest : public ServiceTest {
  protected:
    Error setDebug(const std::vector<int32_t>& debug) {
        Error result = Error::FAILED;
        EXPECT_TRUE(service->setDebug(debug, &result).isOk());
        return result;
    }
    // Input parcels of the colour-mode commands sent so far.
    std::vector<std::vector<int32_t>> colourModeCommands() {
        std::vector<std::vector<int32_t>> out;
        for (const auto& command : device->qservice()->commands(39)) out.push_back(command.in);
        return out;
    }
};

template <typename Case>
auto operator<<(std::ostream& os, const Case& c) -> decltype(c.name, os) {
    return os << c.name;
}
template <typename Case>
std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

struct SwitchCase {
    const char* name;
    std::vector<std::vector<int32_t>> calls;
    bool debugLog;
    bool dump;
    bool disable;
};

class SkeletonDebugSwitchTest : public SkeletonDebugTest,
                                public ::testing::WithParamInterface<SwitchCase> {};

// Post-processing is not configured here: the third switch is stored but sends nothing.
TEST_P(SkeletonDebugSwitchTest, SwitchesFollowTheArray) {
    const SwitchCase& c = GetParam();
    boot();
    for (const auto& call : c.calls) EXPECT_EQ(Error::NONE, setDebug(call));
    EXPECT_EQ(c.debugLog, peer->debugLog());
    EXPECT_EQ(c.dump, peer->dump());
    EXPECT_EQ(c.disable, peer->disablePostProcessedFlag());
    EXPECT_EQ(c.debugLog, peer->colorTemp().mDebug.load());
    std::vector<std::string> lines;
    for (const host::log::Line& line : host::log::lines()) {
        if (line.text.rfind("CwbService::setDebug(): ", 0) == 0) {
            EXPECT_EQ(ANDROID_LOG_INFO, line.priority);
            lines.push_back(line.text);
        }
    }
    ASSERT_EQ(c.calls.size(), lines.size());
    EXPECT_EQ(switchesLine(c.debugLog, c.dump, c.disable), lines.back());
    EXPECT_TRUE(colourModeCommands().empty());
    EXPECT_EQ(0u, host::log::countContaining("post processed effect in AP side"));
}

INSTANTIATE_TEST_SUITE_P(
        Arrays, SkeletonDebugSwitchTest,
        ::testing::Values(
                SwitchCase{"Empty", {std::vector<int32_t>{}}, false, false, false},
                SwitchCase{"DebugOnly", {{1}}, true, false, false},
                SwitchCase{"DumpOnly", {{-1, 1}}, false, true, false},
                SwitchCase{"AllOn", {{1, 1, 1}}, true, true, true},
                SwitchCase{"AnyPositiveIsOn", {{2, 300, INT32_MAX}}, true, true, true},
                SwitchCase{"MinusOneLeaves", {{1, 1, 1}, {-1, -1, -1}}, true, true, true},
                SwitchCase{"MinusFiveClears", {{1, 1, 1}, {-5, -5, -5}}, false, false, false},
                SwitchCase{"ZeroAndMinClear", {{1, 1, 1}, {0, INT32_MIN, 0}}, false, false, false},
                SwitchCase{"EmptyKeepsEarlier", {{1, 1, 1}, {}}, true, true, true},
                SwitchCase{"ShortArrayLeavesTheRest", {{1, 1, 1}, {0}}, false, true, true},
                SwitchCase{"BeyondThirdIgnored", {{0, 0, 0, 1, 1, 1}}, false, false, false}),
        caseName<SwitchCase>);

TEST_F(SkeletonDebugTest, DisableSendsNeutralModeAndEnableReplaysTheStoredOnes) {
    setProp(kPostProcess, "1");
    setProp(kSecondary, "3");
    boot();
    composer->colorMode(0, 9, 258);
    composer->colorMode(3, 10, 259);

    EXPECT_EQ(Error::NONE, setDebug({0, 0, 1}));
    EXPECT_EQ((std::vector<std::vector<int32_t>>{{0, 7, 300}, {3, 7, 300}}), colourModeCommands());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, kDisableLine));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, switchesLine(0, 0, 1)));

    // Reports while disabled are not recorded: the restore replays the modes from before.
    composer->colorMode(0, 1, 1);
    composer->colorMode(3, 2, 2);
    device->qservice()->clearCommands();
    EXPECT_EQ(Error::NONE, setDebug({0, 0, 0}));
    EXPECT_EQ((std::vector<std::vector<int32_t>>{{0, 9, 258}, {3, 10, 259}}), colourModeCommands());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, kEnableLine));
}

TEST_F(SkeletonDebugTest, BothDisplaysAreAddressedEvenWhenUnset) {
    setProp(kPostProcess, "1");
    boot();
    EXPECT_EQ(Error::NONE, setDebug({-1, -1, 1}));
    EXPECT_EQ(Error::NONE, setDebug({-1, -1, -5}));
    EXPECT_EQ((std::vector<std::vector<int32_t>>{{0, 7, 300}, {-1, 7, 300}, {0, 7, 0}, {-1, 7, 0}}),
              colourModeCommands());
}

TEST_F(SkeletonDebugTest, OnlyAThirdSwitchOtherThanMinusOneSendsCommands) {
    setProp(kPostProcess, "1");
    boot();
    EXPECT_EQ(Error::NONE, setDebug({1, 1}));
    EXPECT_EQ(Error::NONE, setDebug({1, 1, -1}));
    EXPECT_TRUE(colourModeCommands().empty());
    // Restoring when nothing was disabled still replays the stored modes.
    EXPECT_EQ(Error::NONE, setDebug({0, 0, 0}));
    EXPECT_EQ(2u, colourModeCommands().size());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, kEnableLine));
    EXPECT_EQ(0u, logCount(ANDROID_LOG_INFO, kDisableLine));
}

TEST_F(SkeletonDebugTest, SettingIsReadAfreshNotTheClientFlag) {
    boot();  // post-processing not configured at start
    setProp(kPostProcess, "1");
    Error result = Error::FAILED;
    ASSERT_TRUE(service->setCwbPostProcessStatus(false, &result).isOk());
    EXPECT_EQ(Error::NONE, setDebug({0, 0, 1}));
    EXPECT_EQ(2u, colourModeCommands().size());
    bool status = true;
    ASSERT_TRUE(service->getCwbPostProcessStatus(&status).isOk());
    EXPECT_FALSE(status);
}

TEST_F(SkeletonDebugTest, MissingQServiceSkipsTheCommandsButNotTheSwitch) {
    setProp(kPostProcess, "1");
    device->setQServicePresent(false);
    boot();
    EXPECT_EQ(Error::NONE, setDebug({0, 0, 1}));
    EXPECT_TRUE(peer->disablePostProcessedFlag());
    EXPECT_EQ(2u, logCount(ANDROID_LOG_ERROR, "getBinder: invalid binder object"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, kDisableLine));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, switchesLine(0, 0, 1)));
    EXPECT_TRUE(colourModeCommands().empty());
    // Back again: no proxy is cached, so the next switch finds it.
    device->setQServicePresent(true);
    EXPECT_EQ(Error::NONE, setDebug({0, 0, 0}));
    EXPECT_EQ(2u, colourModeCommands().size());
}

}  // namespace
}  // namespace cwbtest
