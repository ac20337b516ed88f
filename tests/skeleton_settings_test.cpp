// The settings read once at construction: defaults, the atoi reading of every integer setting,
// the ct_range bands of the colour sampler, and the start-up status line.
#include "skeleton_helpers.h"

namespace cwbtest {
namespace {

using Reader = std::function<int(CwbServiceTestPeer&)>;

// Every integer setting, its value when unset, and where the service keeps it.
const std::map<std::string, std::pair<int, Reader>> kSettings{
        {"rotate", {0, [](auto& p) { return p.cwbRotate(); }}},
        {"rotate_main", {0, [](auto& p) { return p.cwbRotateMain(); }}},
        {"rotate_sec", {0, [](auto& p) { return p.cwbRotateSec(); }}},
        {"display_id", {-1, [](auto& p) { return p.displayIdMain(); }}},
        {"display_id_sec", {-1, [](auto& p) { return p.displayIdSec(); }}},
        {"postprocess", {0, [](auto& p) { return p.postProcess(); }}},
        {"roi", {0, [](auto& p) { return p.roiSupport(); }}},
        {"aod_forbidden", {0, [](auto& p) { return p.aodForbidden(); }}},
        {"fod_forbidden", {0, [](auto& p) { return p.fodForbidden(); }}},
        {"apl_read_support", {0, [](auto& p) { return p.aplReadSupport(); }}},
};

using SkeletonSettingsTest = ServiceTest;

TEST_F(SkeletonSettingsTest, DefaultsWithNoProperties) {
    host::properties::clear();
    boot();
    for (const auto& [key, setting] : kSettings) {
        EXPECT_EQ(setting.first, setting.second(*peer)) << key;
    }
    EXPECT_EQ(-1, peer->displayId());
    EXPECT_FALSE(peer->colorTemp().mEnabled || peer->colorTemp().mDebug);
    // The main display is read whatever its id; the secondary one is not configured.
    EXPECT_TRUE(peer->configInitialized());
    EXPECT_EQ(0u, peer->configCount(true));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "debug status: debug log: 0, dump: 0, rotation: 0, post process: 0, "
                           "roi support: 0, aod_forbidden: 0, fod_forbidden: 0, display_id: -1\n"));
}

TEST_F(SkeletonSettingsTest, StatusLineReportsTheSettings) {
    for (const char* key : {"rotate", "postprocess", "roi", "aod_forbidden", "fod_forbidden"}) {
        setProp(prop(key), "1");
    }
    setProp(prop("rotate_main"), "2");  // not the rotation reported
    boot();
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "debug status: debug log: 0, dump: 0, rotation: 1, post process: 1, "
                           "roi support: 1, aod_forbidden: 1, fod_forbidden: 1, display_id: 0\n"));
}

struct IntSetting {
    const char* key;
    const char* value;
    int expected;
};

class SkeletonIntSettingTest : public ServiceTest,
                               public ::testing::WithParamInterface<IntSetting> {};

TEST_P(SkeletonIntSettingTest, ReadLikeAtoi) {
    const IntSetting& s = GetParam();
    SCOPED_TRACE(std::string(s.key) + "=\"" + s.value + "\"");
    setProp(prop(s.key), s.value);
    boot();
    EXPECT_EQ(s.expected, kSettings.at(s.key).second(*peer));
}

const IntSetting kIntSettings[] = {
        {"rotate", "12abc", 12},     {"rotate", "abc", 0},         {"rotate", " 7", 7},
        {"rotate", "-1", -1},        {"rotate_main", "0x5a", 0},   {"rotate_sec", "\t270", 270},
        {"display_id", "12abc", 12}, {"display_id", "abc", 0},     {"display_id", "", -1},
        {"display_id_sec", " 3", 3}, {"postprocess", "-1", 1},     {"postprocess", "0x1", 0},
        {"roi", "12abc", 1},         {"aod_forbidden", " 7", 1},   {"aod_forbidden", "true", 0},
        {"fod_forbidden", "-1", 1},  {"apl_read_support", "2", 1}, {"apl_read_support", "yes", 0}};
INSTANTIATE_TEST_SUITE_P(EdgeValues, SkeletonIntSettingTest, ::testing::ValuesIn(kIntSettings));

struct CtRangeCase {
    const char* value;
    bool enabled;
    std::vector<int32_t> stored;  // leading limits that must hold these values
    int badPiece;                 // the piece named in the ERROR line; -1 when none is expected
};

class SkeletonCtRangeTest : public ServiceTest,
                            public ::testing::WithParamInterface<CtRangeCase> {};

TEST_P(SkeletonCtRangeTest, ExactlyFourIntegersEnableTheSampler) {
    const CtRangeCase& c = GetParam();
    SCOPED_TRACE(std::string("ct_range=\"") + c.value + "\"");
    setProp(prop("ct_range"), c.value);
    boot();
    const auto& helper = peer->colorTemp();
    EXPECT_EQ(c.enabled, helper.mEnabled);
    EXPECT_EQ(c.stored, std::vector<int32_t>(helper.mCtRange, helper.mCtRange + c.stored.size()));
    EXPECT_EQ(c.badPiece < 0 ? 0u : 1u, host::log::countContaining("ct_range"));
    if (c.badPiece >= 0) {
        EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR,
                               "ct_range \"" + std::string(c.value) + "\": piece " +
                                       std::to_string(c.badPiece) +
                                       " is not an int32, colour classification disabled"));
    }
}

const CtRangeCase kCtRanges[] = {
        {"10,20,30,40", true, {10, 20, 30, 40}, -1},
        {"10,20,30", false, {10, 20, 30}, -1},
        {"10,20,30,40,50", false, {10, 20, 30, 40}, -1},
        {",10,,20,30,40", true, {10, 20, 30, 40}, -1},
        {"0,10,245,255,", true, {0, 10, 245, 255}, -1},
        {" 1, 2,\t3, 4", true, {1, 2, 3, 4}, -1},
        {"-5,+6,7x,8", true, {-5, 6, 7, 8}, -1},
        {"", false, {}, -1},
        {",,,", false, {}, -1},
        {"10,20,30,40,abc", false, {10, 20, 30, 40}, -1},  // pieces after the fourth: counted only
        {"10,abc,30,40", false, {10}, 1},
        {"10, ,30,40", false, {10}, 1},
        {"10,20,30,2147483648", false, {10, 20, 30}, 3},
        {"-2147483649,1,2,3", false, {}, 0},
};
INSTANTIATE_TEST_SUITE_P(Values, SkeletonCtRangeTest, ::testing::ValuesIn(kCtRanges));

}  // namespace
}  // namespace cwbtest
