// The connection to the vendor's display config and the configuration lists read through it:
// lazy retries, the secondary display, active-configuration folding, resolution, command 302.
#include <android/binder_manager.h>
#include <gmock/gmock.h>

#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>

#include "service_fixture.h"

namespace cwbtest {
namespace {

namespace config = ::aidl::vendor::qti::hardware::display::config;
using host::device::Frame;
using host::device::SimulatedDisplayConfig;
using ::testing::_;

constexpr const char* kSecondary = "ro.vendor.zarel.display.cwb.display_id_sec";
constexpr const char* kAplSupport = "ro.vendor.zarel.display.cwb.apl_read_support";
constexpr const char* kNotPresent = "DisplayConfig AIDL is not present";
constexpr int32_t kVsync90 = 11111111;

// The vendor's display config with call expectations, answering like the simulated one.
class MockDisplayConfig : public config::BnDisplayConfig {
  public:
    MOCK_METHOD(ndk::ScopedAStatus, getConfigCount, (config::DisplayType, int32_t*), (override));
    MOCK_METHOD(ndk::ScopedAStatus, getDisplayAttributes,
                (int32_t, config::DisplayType, config::Attributes*), (override));
    MOCK_METHOD(ndk::ScopedAStatus, setCWBOutputBuffer,
                (const std::shared_ptr<config::IDisplayConfigCallback>&, config::DisplayType,
                 const config::Rect&, bool, const ::aidl::android::hardware::common::NativeHandle&),
                (override));

    void delegateTo(std::shared_ptr<SimulatedDisplayConfig> real) {
        ON_CALL(*this, getConfigCount)
                .WillByDefault([real](config::DisplayType type, int32_t* count) {
                    return real->getConfigCount(type, count);
                });
        ON_CALL(*this, getDisplayAttributes)
                .WillByDefault(
                        [real](int32_t index, config::DisplayType type, config::Attributes* out) {
                            return real->getDisplayAttributes(index, type, out);
                        });
    }
};

std::string initializedLine(const config::IDisplayConfig* interface) {
    char text[96];
    snprintf(text, sizeof(text), "Initialized DisplayConfig AIDL %p successfully",
             static_cast<const void*>(interface));
    return text;
}

template <typename Case>
auto operator<<(std::ostream& os, const Case& c) -> decltype(c.name, os) {
    return os << c.name;
}
template <typename Case>
std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

class SkeletonConfigsTest : public ServiceTest {
  protected:
    std::pair<uint32_t, uint32_t> resolution(uint32_t sentinel = 0xDEAD) {
        uint32_t width = sentinel;
        uint32_t height = sentinel;
        service->getResolution(width, height);
        return {width, height};
    }
    std::string configLine(int index, const PanelMode& m, bool sec = false) {
        char text[128];
        snprintf(text, sizeof(text),
                 sec ? "ConfigID mDisplayIdSec:%d: vsync_period = %d, width = %d, height = %d."
                     : "ConfigID %d: vsync_period = %d, width = %d, height = %d.",
                 index, m.vsyncPeriodNs, m.width, m.height);
        return text;
    }
    const std::vector<PanelMode> kMain3{
            {1080, 2400, kVsync60}, {720, 1600, kVsync90}, {1440, 3200, kVsync60 / 2}};
    const std::vector<PanelMode> kSec2{{720, 1600, kVsync60}, {480, 1000, kVsync90}};
};

TEST_F(SkeletonConfigsTest, ListsAreReadOnceWithOneLinePerConfiguration) {
    setProp(kSecondary, "3");
    device->setPanelModes(PanelId::Main, kMain3);
    device->setPanelModes(PanelId::Secondary, kSec2);
    boot();
    ASSERT_TRUE(peer->configInitialized());
    EXPECT_EQ(3u, peer->configCount(false));
    EXPECT_EQ(2u, peer->configCount(true));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, configLine(i, kMain3[i]))) << i;
    }
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, configLine(i, kSec2[i], true))) << i;
    }
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, initializedLine(device->displayConfig().get())));
    EXPECT_EQ(0u, logCount(ANDROID_LOG_ERROR, kNotPresent));

    // Once read, an update only logs.
    device->setPanelModes(PanelId::Main, {{100, 100, kVsync60}});
    composer->updateConfigs();
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "CwbService updateAvailableConfigs: mConfigInitialized=1"));
    EXPECT_EQ(3u, peer->configCount(false));
    EXPECT_EQ(5u, host::log::countContaining("ConfigID "));
}

class SkeletonSecondaryQueryTest : public SkeletonConfigsTest,
                                   public ::testing::WithParamInterface<const char*> {};

TEST_P(SkeletonSecondaryQueryTest, SecondaryDisplayIsQueriedOnlyWhenConfigured) {
    const bool configured = GetParam() != nullptr;
    if (configured) setProp(kSecondary, GetParam());
    auto vendor = ndk::SharedRefBase::make<::testing::NiceMock<MockDisplayConfig>>();
    vendor->delegateTo(device->displayConfig());
    EXPECT_CALL(*vendor, getConfigCount(config::DisplayType::PRIMARY, _)).Times(1);
    EXPECT_CALL(*vendor, getDisplayAttributes(0, config::DisplayType::PRIMARY, _)).Times(1);
    EXPECT_CALL(*vendor, getConfigCount(config::DisplayType::BUILTIN2, _))
            .Times(configured ? 1 : 0);
    EXPECT_CALL(*vendor, getDisplayAttributes(_, config::DisplayType::BUILTIN2, _))
            .Times(configured ? 1 : 0);
    device->setVendorPresent(false);
    ASSERT_EQ(EX_NONE, AServiceManager_addService(vendor->asBinder().get(),
                                                  SimulatedDisplayConfig::kInstance));
    boot();
    composer->updateConfigs();
    EXPECT_TRUE(peer->configInitialized());
    EXPECT_EQ(configured ? 1u : 0u, peer->configCount(true));
    EXPECT_EQ(configured ? 1u : 0u, host::log::countContaining("ConfigID mDisplayIdSec:"));
    ::testing::Mock::VerifyAndClearExpectations(vendor.get());
}

INSTANTIATE_TEST_SUITE_P(SecondaryIds, SkeletonSecondaryQueryTest,
                         ::testing::Values(nullptr, "3", "1", "-2"));

TEST_F(SkeletonConfigsTest, VendorAbsentAtBootIsRetriedByUpdate) {
    setProp(kAplSupport, "1");
    device->setPanelModes(PanelId::Main, kMain3);
    device->setVendorPresent(false);
    boot();
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, kNotPresent));
    EXPECT_FALSE(peer->configInitialized());
    EXPECT_EQ(std::make_pair(0u, 0u), resolution());
    composer->configChange(0, 3);  // nothing to fold against yet

    composer->updateConfigs();  // still absent
    EXPECT_EQ(2u, logCount(ANDROID_LOG_ERROR, kNotPresent));
    EXPECT_FALSE(peer->configInitialized());
    EXPECT_TRUE(device->qservice()->commands(302).empty());

    device->setVendorPresent(true);
    composer->updateConfigs();
    composer->updateConfigs();
    EXPECT_TRUE(peer->configInitialized());
    EXPECT_EQ(2u, logCount(ANDROID_LOG_INFO,
                           "CwbService updateAvailableConfigs: mConfigInitialized=0"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, initializedLine(device->displayConfig().get())));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "CwbService::setupAvailableConfigs: mActiveConfig:3, size:3"));
    EXPECT_EQ(0u, peer->activeConfig(false));
    EXPECT_EQ(std::make_pair(1080u, 2400u), resolution());
    ASSERT_EQ(1u, device->qservice()->commands(302).size());
    EXPECT_EQ((std::vector<int32_t>{0, 1}), device->qservice()->commands(302)[0].in);
    peer->setDisplayId(3);  // no secondary list
    EXPECT_EQ(std::make_pair(0u, 0u), resolution());
}

TEST_F(SkeletonConfigsTest, VendorAbsentAtBootIsRetriedByTheFirstRequest) {
    device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, 255, 0, 0));
    device->setVendorPresent(false);
    bootOn();
    ASSERT_FALSE(peer->configInitialized());
    device->setVendorPresent(true);
    auto [word, colour] = rgb(rect(0, 0, 100, 100));
    EXPECT_EQ(0, word & 0xFFFF);
    EXPECT_EQ(255, colour.r);
    EXPECT_TRUE(peer->configInitialized());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, initializedLine(device->displayConfig().get())));
}

TEST_F(SkeletonConfigsTest, WrongKindOfBinderIsRefusedAndRetried) {
    class NotAConfig : public aidl::vendor::zarel::hardware::cwb::BnCwbCallback {
        ndk::ScopedAStatus notifyCwbStatus(bool) override { return ndk::ScopedAStatus::ok(); }
    };
    auto impostor = ndk::SharedRefBase::make<NotAConfig>();
    device->setVendorPresent(false);
    ASSERT_EQ(EX_NONE, AServiceManager_addService(impostor->asBinder().get(),
                                                  SimulatedDisplayConfig::kInstance));
    boot();
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "Failed to retrieve DisplayConfig AIDL binder"));
    EXPECT_FALSE(peer->configInitialized());
    host::binder::removeService(SimulatedDisplayConfig::kInstance);
    device->setVendorPresent(true);
    composer->updateConfigs();
    EXPECT_TRUE(peer->configInitialized());
}

TEST_F(SkeletonConfigsTest, ConnectionIsNotLookedUpAgain) {
    device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, 255, 0, 0));
    bootOn();
    const std::string connected = initializedLine(device->displayConfig().get());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, connected));
    EXPECT_EQ(0, rgb(rect(0, 0, 64, 64)).first & 0xFFFF);
    composer->layerChange();
    ASSERT_TRUE(gateOpen());
    EXPECT_EQ(0, rgb(rect(0, 0, 64, 64)).first & 0xFFFF);
    composer->updateConfigs();

    // The vendor leaves the registry; the connection made at boot keeps serving.
    host::binder::removeService(SimulatedDisplayConfig::kInstance);
    device->setFrame(PanelId::Main, FrameKind::Mixer, Frame::filled(1080, 2400, 0, 0, 255));
    composer->layerChange();
    ASSERT_TRUE(gateOpen());
    const size_t requests = device->displayConfig()->requests().size();
    auto [word, colour] = rgb(rect(0, 0, 64, 64));
    EXPECT_EQ(0, word & 0xFFFF);
    EXPECT_EQ(0, colour.r);
    EXPECT_EQ(255, colour.b);
    EXPECT_EQ(requests + 1, device->displayConfig()->requests().size());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, connected));
    EXPECT_EQ(0u, logCount(ANDROID_LOG_ERROR, kNotPresent));
}

struct ZeroCountCase {
    const char* name;
    bool secondary;  // the empty list is the secondary display's
};

class SkeletonZeroCountTest : public SkeletonConfigsTest,
                              public ::testing::WithParamInterface<ZeroCountCase> {};

TEST_P(SkeletonZeroCountTest, EmptyListFailsTheSetupUntilALaterRetry) {
    const bool sec = GetParam().secondary;
    if (sec) setProp(kSecondary, "3");
    device->setPanelModes(PanelId::Main, sec ? kMain3 : std::vector<PanelMode>{});
    device->setPanelModes(PanelId::Secondary, sec ? std::vector<PanelMode>{} : kSec2);
    boot();
    EXPECT_FALSE(peer->configInitialized());
    EXPECT_EQ(std::make_pair(0u, 0u), resolution());
    composer->configChange(0, 4);  // nothing to fold against yet
    EXPECT_EQ(4u, peer->activeConfig(false));

    device->setPanelModes(PanelId::Main, kMain3);
    device->setPanelModes(PanelId::Secondary, kSec2);
    composer->updateConfigs();
    ASSERT_TRUE(peer->configInitialized());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "CwbService updateAvailableConfigs: mConfigInitialized=0"));
    // Index 4 of three configurations is the second one. The main list read before a failed
    // secondary read stays and is appended to again, so only the main case folds at setup.
    EXPECT_EQ(sec ? 0u : 1u,
              logCount(ANDROID_LOG_INFO,
                       "CwbService::setupAvailableConfigs: mActiveConfig:4, size:3"));
    EXPECT_EQ(std::make_pair(720u, 1600u), resolution());
    // Whatever the retry left in the main list, each index keeps its resolution.
    for (uint32_t i = 0; i < 6; ++i) {
        composer->configChange(0, i);
        EXPECT_EQ(std::make_pair(static_cast<uint32_t>(kMain3[i % 3].width),
                                 static_cast<uint32_t>(kMain3[i % 3].height)),
                  resolution())
                << i;
    }
    EXPECT_EQ(sec ? 2u : 0u, peer->configCount(true));
}

INSTANTIATE_TEST_SUITE_P(Lists, SkeletonZeroCountTest,
                         ::testing::Values(ZeroCountCase{"Main", false},
                                           ZeroCountCase{"Secondary", true}),
                         caseName<ZeroCountCase>);

struct ConfigChangeCase {
    const char* name;
    const char* secId;  // nullptr: no secondary display
    uint64_t display;
    uint32_t config;
    uint32_t active;
    uint32_t activeSec;
};

class SkeletonConfigChangeTest : public SkeletonConfigsTest,
                                 public ::testing::WithParamInterface<ConfigChangeCase> {};

TEST_P(SkeletonConfigChangeTest, IndexIsFoldedIntoTheList) {
    const ConfigChangeCase& c = GetParam();
    if (c.secId != nullptr) setProp(kSecondary, c.secId);
    device->setPanelModes(PanelId::Main, kMain3);
    device->setPanelModes(PanelId::Secondary, kSec2);
    boot();
    host::log::clear();
    composer->configChange(c.display, c.config);
    EXPECT_EQ(c.active, peer->activeConfig(false));
    EXPECT_EQ(c.activeSec, peer->activeConfig(true));
    char line[128];
    snprintf(line, sizeof(line),
             "CwbService::notifyConfigChange: display:%d, config:%d size:3, sec.size():%d",
             static_cast<int>(c.display), static_cast<int>(c.config), c.secId ? 2 : 0);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, line));
    EXPECT_EQ(1u, host::log::lines().size());
}

INSTANTIATE_TEST_SUITE_P(
        Changes, SkeletonConfigChangeTest,
        ::testing::Values(ConfigChangeCase{"FiveOfThree", nullptr, 0, 5, 2, 0},
                          ConfigChangeCase{"ThreeOfThree", nullptr, 0, 3, 0, 0},
                          ConfigChangeCase{"TwoOfThree", nullptr, 0, 2, 2, 0},
                          ConfigChangeCase{"UnknownDisplay", "3", 7, 1, 0, 0},
                          ConfigChangeCase{"HighBitsAreNotDisplayZero", nullptr, 1ull << 32, 1, 0,
                                           0},
                          ConfigChangeCase{"SecondaryFiveOfTwo", "3", 3, 5, 0, 1},
                          ConfigChangeCase{"SecondaryIdOne", "1", 1, 1, 0, 1},
                          // One id for both: main first (5 -> 2), then secondary (2 -> 0).
                          ConfigChangeCase{"SameIdFoldsTwice", "0", 0, 5, 2, 0}),
        caseName<ConfigChangeCase>);

TEST_F(SkeletonConfigsTest, ResolutionFollowsTheServedDisplayAndItsActiveConfig) {
    setProp(kSecondary, "3");
    device->setPanelModes(PanelId::Main, kMain3);
    device->setPanelModes(PanelId::Secondary, kSec2);
    boot();
    EXPECT_EQ(std::make_pair(1080u, 2400u), resolution());
    composer->configChange(0, 1);
    EXPECT_EQ(std::make_pair(720u, 1600u), resolution());
    composer->configChange(0, 2);
    EXPECT_EQ(std::make_pair(1440u, 3200u), resolution());

    peer->setDisplayId(3);
    EXPECT_EQ(std::make_pair(720u, 1600u), resolution());
    composer->configChange(3, 1);
    EXPECT_EQ(std::make_pair(480u, 1000u), resolution());

    for (int32_t other : {1, -1, 2, 4}) {
        peer->setDisplayId(other);
        EXPECT_EQ(std::make_pair(0xDEADu, 0xDEADu), resolution()) << other;
        EXPECT_EQ(std::make_pair(7u, 7u), resolution(7)) << other;
    }
}

struct AplCase {
    const char* name;
    const char* support;
    const char* displayId;
    bool qservice;
    std::vector<std::vector<int32_t>> commands;
};

class SkeletonAplSetupTest : public SkeletonConfigsTest,
                             public ::testing::WithParamInterface<AplCase> {};

TEST_P(SkeletonAplSetupTest, Command302OnlyWhenAplReadingIsConfigured) {
    const AplCase& c = GetParam();
    setProp(kAplSupport, c.support);
    setProp("ro.vendor.zarel.display.cwb.display_id", c.displayId);
    device->setQServicePresent(c.qservice);
    boot();
    EXPECT_TRUE(peer->configInitialized());
    composer->updateConfigs();  // already read: no second command
    std::vector<std::vector<int32_t>> sent;
    for (const auto& command : device->qservice()->commands()) {
        EXPECT_EQ(302u, command.code);
        sent.push_back(command.in);
    }
    EXPECT_EQ(c.commands, sent);
    const bool looked = c.support[0] != '0';
    EXPECT_EQ(looked && !c.qservice ? 1u : 0u,
              logCount(ANDROID_LOG_ERROR, "getBinder: invalid binder object"));
}

INSTANTIATE_TEST_SUITE_P(Settings, SkeletonAplSetupTest,
                         ::testing::Values(AplCase{"Off", "0", "0", true, {}},
                                           AplCase{"On", "1", "0", true, {{0, 1}}},
                                           AplCase{"OnForDisplayThree", "1", "3", true, {{3, 1}}},
                                           AplCase{"OnWithoutQService", "1", "0", false, {}}),
                         caseName<AplCase>);

}  // namespace
}  // namespace cwbtest
