// Client callbacks: registration, broadcasts, stale and duplicate clients, cookies, re-entry,
// races.
#include <atomic>

#include "skeleton_helpers.h"

namespace cwbtest {
namespace {

class SkeletonCallbacksTest : public ServiceTest {
  protected:
    Error registerCb(const std::shared_ptr<ICwbCallback>& cb) {
        Error result = Error::FAILED;
        EXPECT_TRUE(service->registerCallback(cb, &result).isOk());
        return result;
    }
    Error unregisterCb(const std::shared_ptr<ICwbCallback>& cb) {
        Error result = Error::FAILED;
        EXPECT_TRUE(service->unregisterCallback(cb, &result).isOk());
        return result;
    }
    // 'E'nable / 'D'isable by a client, host status 'S' on / 's' off, fingerprint layer 'F'
    // present / 'f' gone.
    void run(const char* steps) {
        for (; *steps != '\0'; ++steps) {
            const char s = *steps;
            bool ok = false;
            if (s == 'E' || s == 'D') {
                ASSERT_TRUE((s == 'E' ? service->enable(&ok) : service->disable(&ok)).isOk());
                EXPECT_TRUE(ok);
            } else if (s == 'S' || s == 's') {
                composer->status(s == 'S');
            } else {
                composer->fodLayer(s == 'F');
            }
        }
    }
};

struct BroadcastCase {
    const char* name;
    bool fodForbidden;
    const char* steps;
    std::vector<bool> told;  // broadcasts after the registration's own notification
    bool hostStatus;         // what a client registering afterwards is told
};

class SkeletonBroadcastTest : public SkeletonCallbacksTest,
                              public ::testing::WithParamInterface<BroadcastCase> {};

// Two live clients and a stale one, which gets every broadcast, a warning each, and stays.
TEST_P(SkeletonBroadcastTest, StatusIsBroadcastToEveryClient) {
    const BroadcastCase& c = GetParam();
    if (c.fodForbidden) setProp(prop("fod_forbidden"), "1");
    boot();
    std::vector<std::shared_ptr<RecordingCallback>> clients{
            RecordingCallback::make(), RecordingCallback::make(), RecordingCallback::make(true)};
    for (auto& cb : clients) registerCb(cb);
    host::log::clear();
    run(c.steps);

    std::vector<bool> expected{true};
    expected.insert(expected.end(), c.told.begin(), c.told.end());
    for (auto& cb : clients) EXPECT_EQ(expected, cb->statuses());
    const auto falses = static_cast<size_t>(std::count(c.told.begin(), c.told.end(), false));
    EXPECT_EQ(2 * falses, logCount(ANDROID_LOG_INFO, "Notify CWB status: 0"));
    EXPECT_EQ(2 * (c.told.size() - falses), logCount(ANDROID_LOG_INFO, "Notify CWB status: 1"));
    EXPECT_EQ(c.told.size(), logCount(ANDROID_LOG_WARN, "Stale client connection!"));

    // A new client is told the host status alone, silently, whatever its own call returns.
    host::log::clear();
    auto late = RecordingCallback::make(/*fail=*/true);
    EXPECT_EQ(Error::NONE, registerCb(late));
    EXPECT_EQ(std::vector<bool>{c.hostStatus}, late->statuses());
    EXPECT_EQ(4u, peer->callbackCount());
    EXPECT_TRUE(host::log::lines().empty());
}

const BroadcastCase kBroadcasts[] = {
        {"UnchangedValuesStillBroadcast", false, "DDEE", {false, false, true, true}, true},
        {"HostOffThenClientEnable", false, "sE", {false, false}, false},
        {"HostOffOn", false, "sS", {false, true}, true},
        {"FingerprintIgnoredWithoutRestriction", false, "FfF", {}, true},
        {"FingerprintThenDisable", false, "FD", {false}, true},
        {"FingerprintTwiceBroadcastsOnce", true, "FF", {false}, true},
        {"FingerprintComesAndGoes", true, "FFff", {false, true}, true},
        {"FingerprintGoneWithoutComing", true, "f", {}, true},
        {"EnableWhileFingerprintPresent", true, "FE", {false, false}, true},
        {"FingerprintGoneWhileDisabled", true, "FDf", {false, false, false}, true},
};
INSTANTIATE_TEST_SUITE_P(Steps, SkeletonBroadcastTest, ::testing::ValuesIn(kBroadcasts),
                         caseName<BroadcastCase>);

// Broadcasts go in cookie order; a client registered twice is told twice and unregistered at
// once; unregistering an unknown client changes nothing.
TEST_F(SkeletonCallbacksTest, CookiesOrderBroadcastsAndUnregisterRemovesEveryEntry) {
    boot();
    for (uint64_t expected : {0u, 1u, 2u}) EXPECT_EQ(expected, service->generateCookie());
    auto stranger = RecordingCallback::make();
    EXPECT_EQ(Error::NONE, unregisterCb(stranger));  // empty map
    std::vector<int> order;                          // every broadcast here runs on this thread
    std::vector<std::shared_ptr<RecordingCallback>> cbs;
    for (int id = 0; id < 3; ++id) {
        cbs.push_back(RecordingCallback::make());
        registerCb(cbs.back());  // takes 3, 4, 5
        cbs.back()->hook = [&order, id](bool) { order.push_back(id); };
    }
    EXPECT_EQ(6u, service->generateCookie());
    unregisterCb(cbs[1]);
    registerCb(cbs[1]);  // 7
    registerCb(cbs[0]);  // 8, and still 3
    EXPECT_EQ(Error::NONE, unregisterCb(stranger));
    EXPECT_EQ(4u, peer->callbackCount());
    order.clear();
    run("D");
    EXPECT_EQ((std::vector<int>{0, 2, 1, 0}), order);
    EXPECT_EQ(Error::NONE, unregisterCb(cbs[0]));
    order.clear();
    run("E");
    EXPECT_EQ((std::vector<int>{2, 1}), order);
    EXPECT_TRUE(stranger->statuses().empty());
    for (auto& cb : cbs) cb->hook = nullptr;
}

class SkeletonReentryTest : public SkeletonCallbacksTest,
                            public ::testing::WithParamInterface<const char*> {};

TEST_P(SkeletonReentryTest, ClientMayUnregisterFromItsOwnNotification) {
    boot();
    const std::string trigger = GetParam();
    auto self = RecordingCallback::make();
    if (trigger != "Registration") registerCb(self);
    registerCb(RecordingCallback::make());
    std::weak_ptr<RecordingCallback> weakSelf = self;
    std::atomic<int> reentries{0};
    self->hook = [svc = service.get(), weakSelf, &reentries](bool) {
        Error result;
        if (auto me = weakSelf.lock()) svc->unregisterCallback(me, &result);
        ++reentries;
    };
    // On another thread, so that a deadlock shows as a timeout instead of a hung suite.
    auto done = std::make_shared<std::atomic<bool>>(false);
    std::thread worker([this, trigger, self, done] {
        if (trigger == "Registration") {
            registerCb(self);
        } else {
            run(trigger == "ClientDisable" ? "D" : "s");
        }
        *done = true;
    });
    if (!waitFor([&done] { return done->load(); }, std::chrono::seconds(5))) {
        worker.detach();  // stuck for good
        FAIL() << "deadlock: the client's call back into the service never returned";
    }
    worker.join();
    EXPECT_EQ(1, reentries.load());
    EXPECT_EQ(1u, peer->callbackCount());
    self->hook = nullptr;
}

INSTANTIATE_TEST_SUITE_P(Triggers, SkeletonReentryTest,
                         ::testing::Values("Registration", "ClientDisable", "HostOff"),
                         [](const auto& info) { return std::string(info.param); });

using SkeletonStressTest = SkeletonCallbacksTest;

// Clients switch and (un)register while the host reports: no race, no cookie handed out twice.
TEST_F(SkeletonStressTest, ConcurrentClientsAndHostEvents) {
    constexpr int kClients = 3;
    constexpr int kIterations = 200;
    setProp(prop("fod_forbidden"), "1");
    boot();
    auto stale = RecordingCallback::make(/*fail=*/true);
    registerCb(stale);

    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    const auto start = std::chrono::steady_clock::now();
    for (int t = 0; t < kClients; ++t) {
        threads.emplace_back([&, t] {
            while (!go.load()) std::this_thread::yield();
            auto mine = RecordingCallback::make();
            for (int i = 0; i < kIterations; ++i) {
                registerCb(mine);
                run((i + t) % 2 == 0 ? "E" : "D");
                service->generateCookie();
                unregisterCb(mine);
            }
            // At least each registration's own notification.
            EXPECT_GE(mine->statuses().size(), static_cast<size_t>(kIterations));
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
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));

    EXPECT_EQ(1u, peer->callbackCount());
    EXPECT_GT(stale->statuses().size(), 1u);
    // One cookie per registration and generateCookie call: none lost, so none handed out twice.
    EXPECT_EQ(static_cast<uint64_t>(1 + 2 * kClients * kIterations), service->generateCookie());

    // Settled again: the last broadcast reflects the last switches.
    run("SfE");
    EXPECT_TRUE(stale->statuses().back());
    run("D");
    EXPECT_FALSE(stale->statuses().back());
}

}  // namespace
}  // namespace cwbtest
