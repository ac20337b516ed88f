// setDebug's three switches, and the colour-mode commands toggling AP-side post-processing.
#include <climits>

#include "skeleton_helpers.h"

namespace cwbtest {
namespace {

using Commands = std::vector<std::vector<int32_t>>;

constexpr const char* kDisableLine = "Disable post processed effect in AP side.\n";
constexpr const char* kEnableLine = "Enable post processed effect in AP side.\n";

class SkeletonDebugTest : public ServiceTest {
  protected:
    Error setDebug(const std::vector<int32_t>& debug) {
        Error result = Error::FAILED;
        EXPECT_TRUE(service->setDebug(debug, &result).isOk());
        return result;
    }
    // Input parcels of the colour-mode commands sent so far.
    Commands colourModeCommands() {
        Commands out;
        for (const auto& command : device->qservice()->commands(39)) out.push_back(command.in);
        return out;
    }
};

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
    // One line per call, the last one showing the final state.
    EXPECT_EQ(c.calls.size(), host::log::countContaining("CwbService::setDebug(): "));
    EXPECT_EQ(ANDROID_LOG_INFO, host::log::lines().back().priority);
    char line[128];
    snprintf(line, sizeof(line),
             "CwbService::setDebug(): debug log: %d, dump: %d, disable post processed: %d\n",
             c.debugLog, c.dump, c.disable);
    EXPECT_EQ(line, host::log::lines().back().text);
    EXPECT_TRUE(colourModeCommands().empty());
    EXPECT_EQ(0u, host::log::countContaining("post processed effect in AP side"));
}

const SwitchCase kSwitches[] = {
        {"Empty", {std::vector<int32_t>{}}, false, false, false},
        {"DebugOnly", {{1}}, true, false, false},
        {"DumpOnly", {{-1, 1}}, false, true, false},
        {"AnyPositiveIsOn", {{2, 300, INT32_MAX}}, true, true, true},
        {"MinusOneLeaves", {{1, 1, 1}, {-1, -1, -1}}, true, true, true},
        {"MinusFiveClears", {{1, 1, 1}, {-5, -5, -5}}, false, false, false},
        {"ZeroAndMinClear", {{1, 1, 1}, {0, INT32_MIN, 0}}, false, false, false},
        {"EmptyKeepsEarlier", {{1, 1, 1}, {}}, true, true, true},
        {"ShortArrayLeavesTheRest", {{1, 1, 1}, {0}}, false, true, true},
        {"BeyondThirdIgnored", {{0, 0, 0, 1, 1, 1}}, false, false, false},
};
INSTANTIATE_TEST_SUITE_P(Arrays, SkeletonDebugSwitchTest, ::testing::ValuesIn(kSwitches),
                         caseName<SwitchCase>);

// Commands go out only while the setting, read afresh at every switch, is on; the client's flag
// starts from the setting but decides nothing. An unset secondary display is addressed as -1
// (a configured one's replay is tested with the power-off restore).
TEST_F(SkeletonDebugTest, ThirdSwitchOtherThanMinusOneSendsColourModes) {
    setProp(prop("postprocess"), "1");
    boot();
    bool status = false;
    ASSERT_TRUE(service->getCwbPostProcessStatus(&status).isOk());
    EXPECT_TRUE(status);
    Error result = Error::FAILED;
    ASSERT_TRUE(service->setCwbPostProcessStatus(false, &result).isOk());
    EXPECT_EQ(Error::NONE, setDebug({1, 1}));
    EXPECT_EQ(Error::NONE, setDebug({1, 1, -1}));
    EXPECT_TRUE(colourModeCommands().empty());
    // Restoring when nothing was disabled still replays the stored modes.
    EXPECT_EQ(Error::NONE, setDebug({0, 0, 0}));
    EXPECT_EQ((Commands{{0, 7, 0}, {-1, 7, 0}}), colourModeCommands());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, kEnableLine));
    EXPECT_EQ(0u, logCount(ANDROID_LOG_INFO, kDisableLine));

    composer->colorMode(0, 9, 258);
    device->qservice()->clearCommands();
    EXPECT_EQ(Error::NONE, setDebug({-1, -1, 1}));
    composer->colorMode(0, 1, 1);  // not recorded while disabled
    EXPECT_EQ(Error::NONE, setDebug({-1, -1, -5}));
    EXPECT_EQ((Commands{{0, 7, 300}, {-1, 7, 300}, {0, 9, 258}, {-1, 7, 0}}), colourModeCommands());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, kDisableLine));

    // Without the qservice the switch still flips and each skipped command leaves a line.
    device->qservice()->clearCommands();
    device->setQServicePresent(false);
    EXPECT_EQ(Error::NONE, setDebug({0, 0, 1}));
    EXPECT_TRUE(peer->disablePostProcessedFlag());
    EXPECT_EQ(2u, logCount(ANDROID_LOG_ERROR, "getBinder: invalid binder object"));
    EXPECT_EQ(2u, logCount(ANDROID_LOG_INFO, kDisableLine));
    EXPECT_TRUE(colourModeCommands().empty());
    device->setQServicePresent(true);  // no proxy is cached: the next switch finds it
    EXPECT_EQ(Error::NONE, setDebug({0, 0, 0}));
    EXPECT_EQ(2u, colourModeCommands().size());

    setProp(prop("postprocess"), "0");
    EXPECT_EQ(Error::NONE, setDebug({0, 0, 1}));
    EXPECT_EQ(2u, colourModeCommands().size());
    ASSERT_TRUE(service->getCwbPostProcessStatus(&status).isOk());
    EXPECT_FALSE(status);
}

}  // namespace
}  // namespace cwbtest
