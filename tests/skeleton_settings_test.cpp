// The settings read once at construction: defaults, the atoi reading of every integer setting,
// the ct_range bands of the colour sampler, and the start-up status line.
#include <functional>

#include "service_fixture.h"

namespace cwbtest {
namespace {

constexpr const char* kPrefix = "ro.vendor.zarel.display.cwb.";

using SkeletonSettingsTest = ServiceTest;

TEST_F(SkeletonSettingsTest, DefaultsWithNoProperties) {
    host::properties::clear();
    boot();
    EXPECT_EQ(0, peer->cwbRotate());
    EXPECT_EQ(0, peer->cwbRotateMain());
    EXPECT_EQ(0, peer->cwbRotateSec());
    EXPECT_FALSE(peer->postProcess());
    EXPECT_FALSE(peer->roiSupport());
    EXPECT_FALSE(peer->aodForbidden());
    EXPECT_FALSE(peer->fodForbidden());
    EXPECT_FALSE(peer->aplReadSupport());
    EXPECT_EQ(-1, peer->displayIdMain());
    EXPECT_EQ(-1, peer->displayIdSec());
    EXPECT_EQ(-1, peer->displayId());
    EXPECT_FALSE(peer->colorTemp().mEnabled);
    EXPECT_FALSE(peer->colorTemp().mDebug);
    EXPECT_FALSE(peer->debugLog());
    EXPECT_FALSE(peer->dump());
    EXPECT_FALSE(peer->disablePostProcessedFlag());
    EXPECT_TRUE(peer->cwbStatus());
    EXPECT_TRUE(peer->cwbEnabled());
    // The main display is read whatever its id; the secondary one is not configured.
    EXPECT_TRUE(peer->configInitialized());
    EXPECT_EQ(0u, peer->configCount(true));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "debug status: debug log: 0, dump: 0, rotation: 0, post process: 0, "
                           "roi support: 0, aod_forbidden: 0, fod_forbidden: 0, display_id: -1\n"));
}

TEST_F(SkeletonSettingsTest, StatusLineReportsTheSettings) {
    setProp(std::string(kPrefix) + "rotate", "2");
    setProp(std::string(kPrefix) + "rotate_main", "1");
    setProp(std::string(kPrefix) + "postprocess", "1");
    setProp(std::string(kPrefix) + "roi", "1");
    setProp(std::string(kPrefix) + "aod_forbidden", "1");
    setProp(std::string(kPrefix) + "fod_forbidden", "1");
    boot();
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "debug status: debug log: 0, dump: 0, rotation: 2, post process: 1, "
                           "roi support: 1, aod_forbidden: 1, fod_forbidden: 1, display_id: 0\n"));
}

struct IntSetting {
    const char* key;
    const char* value;
    int expected;
    std::function<int(CwbServiceTestPeer&)> read;
};

std::ostream& operator<<(std::ostream& os, const IntSetting& s) {
    return os << s.key << "=\"" << s.value << "\"";
}

class SkeletonIntSettingTest : public ServiceTest,
                               public ::testing::WithParamInterface<IntSetting> {};

TEST_P(SkeletonIntSettingTest, ReadLikeAtoi) {
    const IntSetting& s = GetParam();
    setProp(std::string(kPrefix) + s.key, s.value);
    boot();
    EXPECT_EQ(s.expected, s.read(*peer));
}

int rotate(CwbServiceTestPeer& p) {
    return p.cwbRotate();
}
int rotateMain(CwbServiceTestPeer& p) {
    return p.cwbRotateMain();
}
int rotateSec(CwbServiceTestPeer& p) {
    return p.cwbRotateSec();
}
int displayIdMain(CwbServiceTestPeer& p) {
    return p.displayIdMain();
}
int displayIdSec(CwbServiceTestPeer& p) {
    return p.displayIdSec();
}
int postProcess(CwbServiceTestPeer& p) {
    return p.postProcess();
}
int roi(CwbServiceTestPeer& p) {
    return p.roiSupport();
}
int aod(CwbServiceTestPeer& p) {
    return p.aodForbidden();
}
int fod(CwbServiceTestPeer& p) {
    return p.fodForbidden();
}
int apl(CwbServiceTestPeer& p) {
    return p.aplReadSupport();
}

INSTANTIATE_TEST_SUITE_P(EdgeValues, SkeletonIntSettingTest,
                         ::testing::Values(IntSetting{"rotate", "12abc", 12, rotate},
                                           IntSetting{"rotate", "abc", 0, rotate},
                                           IntSetting{"rotate", " 7", 7, rotate},
                                           IntSetting{"rotate", "-1", -1, rotate},
                                           IntSetting{"rotate_main", "0x5a", 0, rotateMain},
                                           IntSetting{"rotate_sec", "\t270", 270, rotateSec},
                                           IntSetting{"display_id", "12abc", 12, displayIdMain},
                                           IntSetting{"display_id", "abc", 0, displayIdMain},
                                           IntSetting{"display_id", "", -1, displayIdMain},
                                           IntSetting{"display_id_sec", " 3", 3, displayIdSec},
                                           IntSetting{"postprocess", "-1", 1, postProcess},
                                           IntSetting{"postprocess", "0x1", 0, postProcess},
                                           IntSetting{"roi", "12abc", 1, roi},
                                           IntSetting{"aod_forbidden", " 7", 1, aod},
                                           IntSetting{"aod_forbidden", "true", 0, aod},
                                           IntSetting{"fod_forbidden", "-1", 1, fod},
                                           IntSetting{"apl_read_support", "2", 1, apl},
                                           IntSetting{"apl_read_support", "yes", 0, apl}));

struct CtRangeCase {
    const char* value;
    bool enabled;
    std::vector<int32_t> stored;  // leading limits that must hold these values
    const char* error;            // the ERROR line, or nullptr when none is expected
};

std::ostream& operator<<(std::ostream& os, const CtRangeCase& c) {
    return os << "ct_range=\"" << c.value << "\"";
}

class SkeletonCtRangeTest : public ServiceTest,
                            public ::testing::WithParamInterface<CtRangeCase> {};

TEST_P(SkeletonCtRangeTest, ExactlyFourIntegersEnableTheSampler) {
    const CtRangeCase& c = GetParam();
    setProp(std::string(kPrefix) + "ct_range", c.value);
    boot();
    const auto& helper = peer->colorTemp();
    EXPECT_EQ(c.enabled, helper.mEnabled);
    for (size_t i = 0; i < c.stored.size(); ++i) {
        EXPECT_EQ(c.stored[i], helper.mCtRange[i]) << "limit " << i;
    }
    size_t errors = 0;
    for (const host::log::Line& line : host::log::lines()) {
        if (line.priority == ANDROID_LOG_ERROR && line.text.rfind("ct_range", 0) == 0) ++errors;
    }
    if (c.error != nullptr) {
        EXPECT_EQ(1u, errors);
        EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, c.error));
    } else {
        EXPECT_EQ(0u, errors);
    }
}

INSTANTIATE_TEST_SUITE_P(
        Values, SkeletonCtRangeTest,
        ::testing::Values(
                CtRangeCase{"10,20,30,40", true, {10, 20, 30, 40}, nullptr},
                CtRangeCase{"10,20,30", false, {10, 20, 30}, nullptr},
                CtRangeCase{"10,20,30,40,50", false, {10, 20, 30, 40}, nullptr},
                CtRangeCase{",10,,20,30,40", true, {10, 20, 30, 40}, nullptr},
                CtRangeCase{"0,10,245,255,", true, {0, 10, 245, 255}, nullptr},
                CtRangeCase{" 1, 2,\t3, 4", true, {1, 2, 3, 4}, nullptr},
                CtRangeCase{"-5,+6,7x,8", true, {-5, 6, 7, 8}, nullptr},
                CtRangeCase{"", false, {}, nullptr}, CtRangeCase{",,,", false, {}, nullptr},
                // Pieces after the fourth are counted, never converted.
                CtRangeCase{"10,20,30,40,abc", false, {10, 20, 30, 40}, nullptr},
                CtRangeCase{"10,abc,30,40",
                            false,
                            {10},
                            "ct_range \"10,abc,30,40\": piece 1 is not "
                            "an int32, colour classification disabled"},
                CtRangeCase{"10, ,30,40",
                            false,
                            {10},
                            "ct_range \"10, ,30,40\": piece 1 is not an "
                            "int32, colour classification disabled"},
                CtRangeCase{"10,20,30,2147483648",
                            false,
                            {10, 20, 30},
                            "ct_range \"10,20,30,2147483648\": piece 3 is not an int32, colour "
                            "classification disabled"},
                CtRangeCase{"-2147483649,1,2,3",
                            false,
                            {},
                            "ct_range \"-2147483649,1,2,3\": piece 0 is not an int32, colour "
                            "classification disabled"}));

}  // namespace
}  // namespace cwbtest
