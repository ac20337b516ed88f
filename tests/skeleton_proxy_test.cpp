// The facade as the composer drives it, and the service as a client finds it in the registry.
#include <android/binder_manager.h>

#include <climits>
#include <mutex>

#include "skeleton_helpers.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::ICwbService;

constexpr const char* kNotEnabled = "CwbService AIDL not enabled yet. Ignore";
constexpr const char* kRegistered = "Registered CWB AIDL Service";

std::shared_ptr<ICwbService> lookupClient() {
    ndk::SpAIBinder binder(
            AServiceManager_checkService("vendor.zarel.hardware.cwb.ICwbService/default"));
    return ICwbService::fromBinder(binder);
}

using SkeletonProxyTest = ServiceTest;
using SkeletonProxyDeathTest = ServiceTest;

TEST_F(SkeletonProxyTest, BootRegistersTheServiceAndASecondInitializeReplacesIt) {
    EXPECT_EQ(nullptr, lookupClient());
    boot();
    std::shared_ptr<ICwbService> client = lookupClient();
    ASSERT_NE(nullptr, client);
    EXPECT_EQ(service.get(), client.get());
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, kRegistered));

    {
        // The exported statics are the composer's: the facade neither sets mCwbProxy nor takes
        // mMutex (held here across a second initialize, which would otherwise never return).
        std::lock_guard<std::mutex> composerLock(CwbProxy::mMutex);
        ASSERT_EQ(0, composer->proxy().initialize());
        EXPECT_EQ(nullptr, CwbProxy::mCwbProxy);
    }
    std::shared_ptr<CwbService> second = composer->proxy().service();
    ASSERT_NE(nullptr, second);
    EXPECT_NE(service.get(), second.get());
    EXPECT_EQ(second.get(), lookupClient().get());
    EXPECT_EQ(2u, logCount(ANDROID_LOG_INFO, kRegistered));
}

TEST_F(SkeletonProxyDeathTest, FailedRegistrationStopsTheHost) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    host::binder::failAddService(EX_TRANSACTION_FAILED);
    CwbProxy proxy;
    EXPECT_DEATH(proxy.initialize(), "Check failed: status == STATUS_OK ");
    host::binder::failAddService(EX_NONE);
}

// Each event dropped with one line, nothing registered; a missing guard would crash instead.
TEST_F(SkeletonProxyTest, EventsBeforeInitializeAreDroppedWithOneLineEach) {
    const std::function<void(CwbProxy&)> events[] = {
            [](CwbProxy& p) { p.updateCwbStatus(false); },
            [](CwbProxy& p) { p.invalidCache(); },
            [](CwbProxy& p) { p.setPowerMode(0, 2); },
            [](CwbProxy& p) { p.notifyConfigChange(0, 1); },
            [](CwbProxy& p) { p.updateAvailableConfigs(); },
            [](CwbProxy& p) { p.notifyColorModeChange(0, 9, 258); },
            [](CwbProxy& p) { p.aodLayerExist(true); },
            [](CwbProxy& p) { p.fodLayerExist(true); },
    };
    CwbProxy proxy;
    for (size_t i = 0; i < std::size(events); ++i) {
        events[i](proxy);
        EXPECT_EQ(i + 1, logCount(ANDROID_LOG_ERROR, kNotEnabled)) << "event " << i;
    }
    EXPECT_EQ(std::size(events), host::log::lines().size());
    EXPECT_EQ(nullptr, proxy.service());
    EXPECT_EQ(nullptr, lookupClient());
}

// No log line, command, writeback or state change, whatever the arguments.
TEST_F(SkeletonProxyTest, TwelfthMethodCompletesOkAndChangesNothing) {
    boot();
    std::shared_ptr<ICwbService> client = lookupClient();
    const size_t lines = host::log::lines().size();
    const size_t commands = device->qservice()->commands().size();
    const size_t requests = device->displayConfig()->requests().size();
    for (auto [a, b] : std::vector<std::pair<int32_t, int32_t>>{
                 {0, 0}, {1, 1}, {-1, 3}, {INT32_MIN, INT32_MAX}}) {
        EXPECT_TRUE(client->reserved(a, b).isOk()) << a << "," << b;
    }
    EXPECT_EQ(lines, host::log::lines().size());
    EXPECT_EQ(commands, device->qservice()->commands().size());
    EXPECT_EQ(requests, device->displayConfig()->requests().size());
    EXPECT_TRUE(peer->cwbStatus() && peer->cwbEnabled() && !peer->debugLog() && !peer->dump());
}

}  // namespace
}  // namespace cwbtest
