// Clients switching the service and (un)registering on several binder threads while the host
// reports status and fingerprint-layer changes: no race, no lost registration, unique cookies.
#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>

#include <algorithm>
#include <set>

#include "service_fixture.h"

namespace cwbtest {
namespace {

class CountingCallback : public aidl::vendor::zarel::hardware::cwb::BnCwbCallback {
  public:
    explicit CountingCallback(bool fail = false) : mFail(fail) {}
    ndk::ScopedAStatus notifyCwbStatus(bool status) override {
        calls.fetch_add(1, std::memory_order_relaxed);
        last.store(status, std::memory_order_relaxed);
        return mFail ? ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT)
                     : ndk::ScopedAStatus::ok();
    }
    std::atomic<int> calls{0};
    std::atomic<bool> last{false};

  private:
    const bool mFail;
};

using SkeletonStressTest = ServiceTest;

TEST_F(SkeletonStressTest, ConcurrentClientsAndHostEvents) {
    constexpr int kClients = 3;
    constexpr int kIterations = 200;
    setProp("ro.vendor.zarel.display.cwb.fod_forbidden", "1");
    boot();
    auto stale = ndk::SharedRefBase::make<CountingCallback>(true);
    Error result = Error::FAILED;
    ASSERT_TRUE(service->registerCallback(stale, &result).isOk());

    std::atomic<bool> go{false};
    std::vector<std::vector<uint64_t>> cookies(kClients);
    std::vector<std::thread> threads;
    const auto start = std::chrono::steady_clock::now();
    for (int t = 0; t < kClients; ++t) {
        threads.emplace_back([&, t] {
            while (!go.load()) std::this_thread::yield();
            auto mine = ndk::SharedRefBase::make<CountingCallback>();
            for (int i = 0; i < kIterations; ++i) {
                Error r = Error::FAILED;
                bool ok = false;
                service->registerCallback(mine, &r);
                if ((i + t) % 2 == 0) {
                    service->enable(&ok);
                } else {
                    service->disable(&ok);
                }
                cookies[t].push_back(service->generateCookie());
                service->unregisterCallback(mine, &r);
            }
            EXPECT_GE(mine->calls.load(), kIterations);  // at least each registration's call
        });
    }
    threads.emplace_back([&] {
        while (!go.load()) std::this_thread::yield();
        for (int i = 0; i < kIterations; ++i) {
            composer->status(i % 3 != 0);
            composer->fodLayer(i % 2 == 0);
            composer->aodLayer(i % 2 != 0);
        }
    });
    go = true;
    for (auto& thread : threads) thread.join();
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_LT(elapsed, std::chrono::seconds(60));

    EXPECT_EQ(1u, peer->callbackCount());
    EXPECT_GT(stale->calls.load(), 1);
    std::set<uint64_t> unique;
    for (const auto& list : cookies) unique.insert(list.begin(), list.end());
    EXPECT_EQ(static_cast<size_t>(kClients * kIterations), unique.size());
    // One cookie per registration and per generateCookie call, none lost to a race.
    EXPECT_EQ(static_cast<uint64_t>(1 + 2 * kClients * kIterations), service->generateCookie());

    // Settled again: the last broadcast reflects the last switches.
    composer->status(true);
    composer->fodLayer(false);
    bool ok = false;
    ASSERT_TRUE(service->enable(&ok).isOk());
    EXPECT_TRUE(stale->last.load());
    ASSERT_TRUE(service->disable(&ok).isOk());
    EXPECT_FALSE(stale->last.load());
}

}  // namespace
}  // namespace cwbtest
