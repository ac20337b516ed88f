// The facade as the composer drives it, the service as a client finds it in the registry, and
// the two interface methods that carry no behaviour of their own.
#include <android/binder_manager.h>

#include <climits>
#include <functional>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::ICwbService;

constexpr const char* kInstance = "vendor.zarel.hardware.cwb.ICwbService/default";
constexpr const char* kNotEnabled = "CwbService AIDL not enabled yet. Ignore";

std::shared_ptr<ICwbService> lookupClient() {
    ndk::SpAIBinder binder(AServiceManager_checkService(kInstance));
    return ICwbService::fromBinder(binder);
}

// Index of the first line with this priority and text; -1 when there is none.
int lineIndex(int priority, const std::string& text) {
    const std::vector<host::log::Line> all = host::log::lines();
    for (size_t i = 0; i < all.size(); ++i) {
        if (all[i].priority == priority && all[i].text == text) return static_cast<int>(i);
    }
    return -1;
}

using SkeletonProxyTest = ServiceTest;
using SkeletonProxyDeathTest = ServiceTest;

TEST_F(SkeletonProxyTest, BootRegistersTheServiceForClients) {
    EXPECT_EQ(nullptr, lookupClient());
    boot();

    std::shared_ptr<ICwbService> client = lookupClient();
    ASSERT_NE(nullptr, client);
    EXPECT_EQ(service.get(), client.get());

    const int called = lineIndex(ANDROID_LOG_ERROR, "CwbProxy::initialize() get called.");
    const int registered = lineIndex(ANDROID_LOG_INFO, "Registered CWB AIDL Service");
    ASSERT_GE(called, 0);
    ASSERT_GE(registered, 0);
    EXPECT_LT(called, registered);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "Registered CWB AIDL Service"));

    // A client's calls reach the one service object.
    bool ok = false;
    ASSERT_TRUE(client->disable(&ok).isOk());
    EXPECT_TRUE(ok);
    EXPECT_FALSE(peer->cwbEnabled());
    Error result = Error::FAILED;
    ASSERT_TRUE(client->setDebug({1}, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    EXPECT_TRUE(peer->debugLog());
    int32_t version = 0;
    ASSERT_TRUE(client->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(2, version);
}

TEST_F(SkeletonProxyTest, SecondInitializeReplacesTheRegisteredService) {
    boot();
    std::shared_ptr<CwbService> first = service;
    ASSERT_EQ(0, composer->proxy().initialize());
    std::shared_ptr<CwbService> second = composer->proxy().service();
    ASSERT_NE(nullptr, second);
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(second.get(), lookupClient().get());
    EXPECT_EQ(2u, logCount(ANDROID_LOG_INFO, "Registered CWB AIDL Service"));
}

TEST_F(SkeletonProxyDeathTest, FailedRegistrationStopsTheHost) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    host::binder::failAddService(EX_TRANSACTION_FAILED);
    CwbProxy proxy;
    EXPECT_DEATH(proxy.initialize(), "Check failed: status == STATUS_OK ");
    host::binder::failAddService(EX_NONE);
}

template <typename Case>
auto operator<<(std::ostream& os, const Case& c) -> decltype(c.name, os) {
    return os << c.name;
}
template <typename Case>
std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

struct FacadeOp {
    const char* name;
    std::function<void(CwbProxy&)> call;
};

class SkeletonProxyGuardTest : public ServiceTest,
                               public ::testing::WithParamInterface<FacadeOp> {};

TEST_P(SkeletonProxyGuardTest, EventBeforeInitializeIsDroppedWithOneLine) {
    CwbProxy proxy;
    GetParam().call(proxy);
    EXPECT_EQ(nullptr, proxy.service());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, kNotEnabled));
    EXPECT_EQ(1u, host::log::lines().size());
    EXPECT_EQ(nullptr, lookupClient());
}

INSTANTIATE_TEST_SUITE_P(
        AllEvents, SkeletonProxyGuardTest,
        ::testing::Values(
                FacadeOp{"updateCwbStatus", [](CwbProxy& p) { p.updateCwbStatus(false); }},
                FacadeOp{"invalidCache", [](CwbProxy& p) { p.invalidCache(); }},
                FacadeOp{"setPowerMode", [](CwbProxy& p) { p.setPowerMode(0, 2); }},
                FacadeOp{"notifyConfigChange", [](CwbProxy& p) { p.notifyConfigChange(0, 1); }},
                FacadeOp{"updateAvailableConfigs", [](CwbProxy& p) { p.updateAvailableConfigs(); }},
                FacadeOp{"notifyColorModeChange",
                         [](CwbProxy& p) { p.notifyColorModeChange(0, 9, 258); }},
                FacadeOp{"aodLayerExist", [](CwbProxy& p) { p.aodLayerExist(true); }},
                FacadeOp{"fodLayerExist", [](CwbProxy& p) { p.fodLayerExist(true); }}),
        caseName<FacadeOp>);

TEST_F(SkeletonProxyTest, EveryEventReachesTheServiceAfterInitialize) {
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    device->setPanelModes(PanelId::Main, {{1080, 2400, kVsync60}, {720, 1600, kVsync60}});
    boot();
    host::log::clear();
    composer->status(false);
    composer->powerMode(3, 2);
    composer->colorMode(0, 9, 258);
    composer->aodLayer(true);
    composer->fodLayer(true);
    composer->configChange(0, 1);
    composer->layerChange();
    composer->updateConfigs();
    EXPECT_EQ(0u, logCount(ANDROID_LOG_ERROR, kNotEnabled));
    EXPECT_FALSE(peer->cwbStatus());
    EXPECT_EQ(2, peer->powerModeSec());
    EXPECT_EQ(9, peer->colorModeMain());
    EXPECT_EQ(258, peer->renderIntentMain());
    EXPECT_TRUE(peer->aodLayerExist());
    EXPECT_TRUE(peer->fodLayerExist());
    EXPECT_EQ(1u, peer->activeConfig(false));
    EXPECT_EQ(1, peer->invalidCacheCount());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO,
                           "CwbService updateAvailableConfigs: mConfigInitialized=1"));
}

class SkeletonReservedTest : public ServiceTest,
                             public ::testing::WithParamInterface<std::pair<int32_t, int32_t>> {};

TEST_P(SkeletonReservedTest, TwelfthMethodCompletesOkAndChangesNothing) {
    setProp("ro.vendor.zarel.display.cwb.postprocess", "1");
    boot();
    std::shared_ptr<ICwbService> client = lookupClient();
    ASSERT_NE(nullptr, client);
    const size_t linesBefore = host::log::lines().size();
    const size_t commandsBefore = device->qservice()->commands().size();
    const size_t requestsBefore = device->displayConfig()->requests().size();

    EXPECT_TRUE(client->reserved(GetParam().first, GetParam().second).isOk());

    EXPECT_EQ(linesBefore, host::log::lines().size());
    EXPECT_EQ(commandsBefore, device->qservice()->commands().size());
    EXPECT_EQ(requestsBefore, device->displayConfig()->requests().size());
    EXPECT_TRUE(peer->postProcess());
    EXPECT_FALSE(peer->debugLog());
    EXPECT_FALSE(peer->dump());
    EXPECT_FALSE(peer->disablePostProcessedFlag());
    EXPECT_TRUE(peer->cwbStatus());
    EXPECT_TRUE(peer->cwbEnabled());
    EXPECT_EQ(0u, peer->callbackCount());
    EXPECT_EQ(0u, peer->activeConfig(false));
    EXPECT_EQ(0, peer->invalidCacheCount());
}

INSTANTIATE_TEST_SUITE_P(Arguments, SkeletonReservedTest,
                         ::testing::Values(std::make_pair(0, 0), std::make_pair(1, 1),
                                           std::make_pair(-1, 3),
                                           std::make_pair(INT32_MIN, INT32_MAX)));

TEST_F(SkeletonProxyTest, PostProcessStatusStartsFromTheSettingAndFollowsTheClient) {
    setProp("ro.vendor.zarel.display.cwb.postprocess", "1");
    boot();
    bool status = false;
    ASSERT_TRUE(service->getCwbPostProcessStatus(&status).isOk());
    EXPECT_TRUE(status);
    Error result = Error::FAILED;
    ASSERT_TRUE(service->setCwbPostProcessStatus(false, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    ASSERT_TRUE(service->getCwbPostProcessStatus(&status).isOk());
    EXPECT_FALSE(status);
    result = Error::FAILED;
    ASSERT_TRUE(service->setCwbPostProcessStatus(true, &result).isOk());
    EXPECT_EQ(Error::NONE, result);
    ASSERT_TRUE(service->getCwbPostProcessStatus(&status).isOk());
    EXPECT_TRUE(status);
}

}  // namespace
}  // namespace cwbtest
