// The vendor's display config connection and the configuration lists read through it.
#include <android/binder_manager.h>

#include "skeleton_helpers.h"

namespace cwbtest {
namespace {

using host::device::Frame;
using host::device::SimulatedDisplayConfig;
using Size = std::pair<uint32_t, uint32_t>;

constexpr const char* kNotPresent = "DisplayConfig AIDL is not present";
constexpr int32_t kVsync90 = 11111111;
const std::vector<PanelMode> kMain3{
        {1080, 2400, kVsync60}, {720, 1600, kVsync90}, {1440, 3200, kVsync60 / 2}};
const std::vector<PanelMode> kSec2{{720, 1600, kVsync60}, {480, 1000, kVsync90}};

Size size(const PanelMode& m) {
    return {static_cast<uint32_t>(m.width), static_cast<uint32_t>(m.height)};
}

class SkeletonConfigsTest : public ServiceTest {
  protected:
    Size resolution(uint32_t sentinel = 0xDEAD) {
        Size out{sentinel, sentinel};
        service->getResolution(out.first, out.second);
        return out;
    }
    std::string connectedLine() {
        char text[96];
        snprintf(text, sizeof(text), "Initialized DisplayConfig AIDL %p successfully",
                 static_cast<const void*>(device->displayConfig().get()));
        return text;
    }
    void setModes(const std::vector<PanelMode>& main, const std::vector<PanelMode>& sec) {
        device->setPanelModes(PanelId::Main, main);
        device->setPanelModes(PanelId::Secondary, sec);
    }
};

struct SetupCase {
    const char* name;
    const char* secId;  // nullptr: no secondary display
    const char* displayId;
    const char* aplSupport;
    bool qservice;
    std::vector<std::vector<int32_t>> commands;  // qservice commands expected, all 302
    uint64_t display;                            // then a configuration change
    uint32_t config;
    uint32_t active;
    uint32_t activeSec;
};

class SkeletonSetupTest : public SkeletonConfigsTest,
                          public ::testing::WithParamInterface<SetupCase> {};

// Lists are read once, the secondary one for any id but -1; with APL reading on, command 302 goes
// once to the served display. A change's index is folded into each list whose display has the id.
TEST_P(SkeletonSetupTest, ListsAreReadOnceAndChangesFoldIntoThem) {
    const SetupCase& c = GetParam();
    const bool configured = c.secId != nullptr;
    if (configured) setProp(prop("display_id_sec"), c.secId);
    setProp(prop("display_id"), c.displayId);
    setProp(prop("apl_read_support"), c.aplSupport);
    device->setQServicePresent(c.qservice);
    setModes(kMain3, kSec2);
    boot();
    ASSERT_TRUE(peer->configInitialized());
    EXPECT_EQ(configured ? 2u : 0u, peer->configCount(true));
    for (int i = 0; i < 5; ++i) {
        const bool sec = i >= 3;
        const PanelMode& m = sec ? kSec2[i - 3] : kMain3[i];
        char line[128];
        snprintf(line, sizeof(line), "ConfigID %s%d: vsync_period = %d, width = %d, height = %d.",
                 sec ? "mDisplayIdSec:" : "", sec ? i - 3 : i, m.vsyncPeriodNs, m.width, m.height);
        EXPECT_EQ(sec && !configured ? 0u : 1u, logCount(ANDROID_LOG_INFO, line)) << i;
    }
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, connectedLine()));
    EXPECT_EQ(0u, logCount(ANDROID_LOG_ERROR, kNotPresent));
    peer->setDisplayId(3);  // the secondary list, whatever its id; empty reads as 0 x 0
    EXPECT_EQ(configured ? size(kSec2[0]) : Size(0, 0), resolution());
    for (int32_t other : {1, -1, 2, 4}) {  // not served: left untouched
        peer->setDisplayId(other);
        EXPECT_EQ(Size(0xDEAD, 0xDEAD), resolution()) << other;
    }

    // Once read, an update only logs.
    device->setPanelModes(PanelId::Main, {{100, 100, kVsync60}});
    composer->updateConfigs();
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "CwbService updateAvailableConfigs: mConfigInitialized=1"));
    EXPECT_EQ(3u, peer->configCount(false));
    EXPECT_EQ(configured ? 5u : 3u, host::log::countContaining("ConfigID "));
    std::vector<std::vector<int32_t>> sent;
    for (const auto& command : device->qservice()->commands()) {
        EXPECT_EQ(302u, command.code);
        sent.push_back(command.in);
    }
    EXPECT_EQ(c.commands, sent);
    EXPECT_EQ(c.aplSupport[0] != '0' && !c.qservice ? 1u : 0u,
              logCount(ANDROID_LOG_ERROR, "getBinder: invalid binder object"));

    host::log::clear();
    composer->configChange(c.display, c.config);
    EXPECT_EQ(c.active, peer->activeConfig(false));
    EXPECT_EQ(c.activeSec, peer->activeConfig(true));
    char line[128];
    snprintf(line, sizeof(line),
             "CwbService::notifyConfigChange: display:%d, config:%d size:3, sec.size():%d",
             static_cast<int>(c.display), static_cast<int>(c.config), configured ? 2 : 0);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, line));
    EXPECT_EQ(1u, host::log::lines().size());
    peer->setDisplayId(3);
    EXPECT_EQ(configured ? size(kSec2[c.activeSec]) : Size(0, 0), resolution());
}

const SetupCase kSetups[] = {
        {"FiveOfThree", nullptr, "0", "0", true, {}, 0, 5, 2, 0},
        {"ThreeOfThreeApl", nullptr, "0", "1", true, {{0, 1}}, 0, 3, 0, 0},
        {"TwoOfThree", nullptr, "0", "0", true, {}, 0, 2, 2, 0},
        {"UnknownDisplayAplNoQService", "3", "0", "1", false, {}, 7, 1, 0, 0},
        {"HighBitsAreNotDisplayZero", nullptr, "0", "0", true, {}, 1ull << 32, 1, 0, 0},
        {"SecondaryFiveOfTwo", "3", "0", "0", true, {}, 3, 5, 0, 1},
        {"SecondaryIdOneAplForThree", "1", "3", "1", true, {{3, 1}}, 1, 1, 0, 1},
        {"SecondaryIdMinusTwo", "-2", "0", "0", true, {}, static_cast<uint64_t>(-2), 5, 0, 1},
        // One id for both: main first (5 -> 2), then secondary (2 -> 0).
        {"SameIdFoldsTwice", "0", "0", "0", true, {}, 0, 5, 2, 0},
};
INSTANTIATE_TEST_SUITE_P(Settings, SkeletonSetupTest, ::testing::ValuesIn(kSetups),
                         caseName<SetupCase>);

class SkeletonSetupRetryTest : public SkeletonConfigsTest,
                               public ::testing::WithParamInterface<const char*> {};

// At boot the vendor is absent (the first request connects) or a list is empty (an update
// retries). Once made, the connection is kept even when the vendor leaves the registry.
TEST_P(SkeletonSetupRetryTest, FailedSetupIsRetriedLater) {
    const std::string missing = GetParam();
    const bool vendor = missing == "Vendor";
    setProp(prop("apl_read_support"), "1");
    setProp(prop("display_id_sec"), "3");
    setModes(missing == "Main" ? std::vector<PanelMode>{} : kMain3,
             missing == "Secondary" ? std::vector<PanelMode>{} : kSec2);
    device->setVendorPresent(!vendor);
    bootOn();
    EXPECT_FALSE(peer->configInitialized());
    EXPECT_EQ(Size(0, 0), resolution());
    // A main list read before a failed secondary read is already there to fold against.
    const bool appended = missing == "Secondary";
    composer->configChange(0, 3);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           appended ? "CwbService::notifyConfigChange: display:0, config:3 size:3, "
                                      "sec.size():0"
                                    : "CwbService::notifyConfigChange: display:0, config:3 size:0, "
                                      "sec.size():0"));
    EXPECT_EQ(appended ? 0u : 3u, peer->activeConfig(false));
    composer->updateConfigs();  // still failing
    EXPECT_EQ(vendor ? 2u : 0u, logCount(ANDROID_LOG_ERROR, kNotPresent));
    if (vendor) {  // something that is not a display config under the vendor's name is refused
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(),
                                                      SimulatedDisplayConfig::kInstance));
        composer->updateConfigs();
        EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "Failed to retrieve DisplayConfig AIDL binder"));
        host::binder::removeService(SimulatedDisplayConfig::kInstance);
    }
    EXPECT_FALSE(peer->configInitialized());
    EXPECT_TRUE(device->qservice()->commands(302).empty());

    setModes(kMain3, kSec2);
    device->setVendorPresent(true);
    device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, 255, 0, 0));
    if (vendor) {
        auto [word, colour] = rgb(rect(0, 0, 64, 64));
        EXPECT_EQ(0, word & 0xFFFF);
        EXPECT_EQ(255, colour.r);
    } else {
        composer->updateConfigs();
    }
    ASSERT_TRUE(peer->configInitialized());
    composer->updateConfigs();
    EXPECT_EQ(2u, logCount(ANDROID_LOG_INFO,
                           "CwbService updateAvailableConfigs: mConfigInitialized=0"));
    // That main list stays and is appended to again; its index was folded already.
    EXPECT_EQ(appended ? 0u : 1u,
              logCount(ANDROID_LOG_INFO,
                       "CwbService::setupAvailableConfigs: mActiveConfig:3, size:3"));
    EXPECT_EQ(0u, peer->activeConfig(false));
    EXPECT_EQ(2u, peer->configCount(true));
    ASSERT_EQ(1u, device->qservice()->commands(302).size());
    EXPECT_EQ((std::vector<int32_t>{0, 1}), device->qservice()->commands(302)[0].in);

    host::binder::removeService(SimulatedDisplayConfig::kInstance);
    device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, 0, 0, 255));
    composer->layerChange();
    ASSERT_TRUE(gateOpen());
    const size_t requests = device->displayConfig()->requests().size();
    auto [word, colour] = rgb(rect(0, 0, 64, 64));
    EXPECT_EQ(0, word & 0xFFFF);
    EXPECT_EQ(255, colour.b);
    EXPECT_EQ(requests + 1, device->displayConfig()->requests().size());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, connectedLine()));
    // Whatever the retry left in the main list, each index keeps its resolution.
    for (uint32_t i = 0; i < 6; ++i) {
        composer->configChange(0, i);
        EXPECT_EQ(size(kMain3[i % 3]), resolution()) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Causes, SkeletonSetupRetryTest,
                         ::testing::Values("Vendor", "Main", "Secondary"),
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
}  // namespace cwbtest
