// Client callbacks: what a registration is told, when the status is broadcast and with what
// value, stale and duplicate clients, cookies, and clients that call back into the service.
#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>

#include <functional>
#include <future>

#include "service_fixture.h"

namespace cwbtest {
namespace {

// A client that records what it is told, may fail as a dead client does, and may run a hook
// inside its notification.
class RecordingCallback : public aidl::vendor::zarel::hardware::cwb::BnCwbCallback {
  public:
    ndk::ScopedAStatus notifyCwbStatus(bool status) override {
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mStatuses.push_back(status);
        }
        if (hook) hook(status);
        return fail ? ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT) : ndk::ScopedAStatus::ok();
    }
    std::vector<bool> statuses() {
        std::lock_guard<std::mutex> lock(mMutex);
        return mStatuses;
    }
    std::atomic<bool> fail{false};
    std::function<void(bool)> hook;

  private:
    std::mutex mMutex;
    std::vector<bool> mStatuses;
};

template <typename Case>
auto operator<<(std::ostream& os, const Case& c) -> decltype(c.name, os) {
    return os << c.name;
}
template <typename Case>
std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

class SkeletonCallbacksTest : public ServiceTest {
  protected:
    std::shared_ptr<RecordingCallback> make(bool fail = false) {
        auto cb = ndk::SharedRefBase::make<RecordingCallback>();
        cb->fail = fail;
        return cb;
    }
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
            bool ok = false;
            switch (*steps) {
                case 'E':
                case 'D':
                    ASSERT_TRUE(
                            (*steps == 'E' ? service->enable(&ok) : service->disable(&ok)).isOk());
                    EXPECT_TRUE(ok);
                    break;
                case 'S':
                case 's':
                    composer->status(*steps == 'S');
                    break;
                case 'F':
                case 'f':
                    composer->fodLayer(*steps == 'F');
                    break;
                default:
                    FAIL() << "unknown step " << *steps;
            }
        }
    }
};

struct RegistrationCase {
    const char* name;
    bool fodForbidden;
    const char* before;  // steps before the registration
    bool told;
};

class SkeletonRegistrationTest : public SkeletonCallbacksTest,
                                 public ::testing::WithParamInterface<RegistrationCase> {};

TEST_P(SkeletonRegistrationTest, NewClientIsToldTheHostStatusAlone) {
    const RegistrationCase& c = GetParam();
    if (c.fodForbidden) setProp("ro.vendor.zarel.display.cwb.fod_forbidden", "1");
    boot();
    run(c.before);
    host::log::clear();
    auto cb = make(/*fail=*/true);  // the outcome of this call is not looked at
    EXPECT_EQ(Error::NONE, registerCb(cb));
    EXPECT_EQ(std::vector<bool>{c.told}, cb->statuses());
    EXPECT_EQ(1u, peer->callbackCount());
    EXPECT_TRUE(host::log::lines().empty());
}

INSTANTIATE_TEST_SUITE_P(States, SkeletonRegistrationTest,
                         ::testing::Values(RegistrationCase{"Fresh", false, "", true},
                                           RegistrationCase{"AfterDisable", false, "D", true},
                                           RegistrationCase{"AfterHostOff", false, "s", false},
                                           RegistrationCase{"HostOffEnable", false, "sE", false},
                                           RegistrationCase{"HostOffOn", false, "sS", true},
                                           RegistrationCase{"WithFingerprint", true, "F", true}),
                         caseName<RegistrationCase>);

struct BroadcastCase {
    const char* name;
    bool fodForbidden;
    const char* steps;
    std::vector<bool> told;  // broadcasts after the registration's own notification
};

class SkeletonBroadcastTest : public SkeletonCallbacksTest,
                              public ::testing::WithParamInterface<BroadcastCase> {};

TEST_P(SkeletonBroadcastTest, StatusIsBroadcastToEveryClient) {
    const BroadcastCase& c = GetParam();
    if (c.fodForbidden) setProp("ro.vendor.zarel.display.cwb.fod_forbidden", "1");
    boot();
    auto first = make();
    auto second = make();
    registerCb(first);
    registerCb(second);
    host::log::clear();
    run(c.steps);

    std::vector<bool> expected{true};
    expected.insert(expected.end(), c.told.begin(), c.told.end());
    EXPECT_EQ(expected, first->statuses());
    EXPECT_EQ(expected, second->statuses());
    const auto falses = static_cast<size_t>(std::count(c.told.begin(), c.told.end(), false));
    EXPECT_EQ(2 * falses, logCount(ANDROID_LOG_INFO, "Notify CWB status: 0"));
    EXPECT_EQ(2 * (c.told.size() - falses), logCount(ANDROID_LOG_INFO, "Notify CWB status: 1"));
}

INSTANTIATE_TEST_SUITE_P(
        Steps, SkeletonBroadcastTest,
        ::testing::Values(
                BroadcastCase{"Disable", false, "D", {false}},
                BroadcastCase{
                        "UnchangedValuesStillBroadcast", false, "DDEE", {false, false, true, true}},
                BroadcastCase{"HostOffThenClientEnable", false, "sE", {false, false}},
                BroadcastCase{"HostOffOn", false, "sS", {false, true}},
                BroadcastCase{"FingerprintIgnoredWithoutRestriction", false, "FfF", {}},
                BroadcastCase{"FingerprintThenDisable", false, "FD", {false}},
                BroadcastCase{"FingerprintTwiceBroadcastsOnce", true, "FF", {false}},
                BroadcastCase{"FingerprintComesAndGoes", true, "FFff", {false, true}},
                BroadcastCase{"FingerprintGoneWithoutComing", true, "f", {}},
                BroadcastCase{"EnableWhileFingerprintPresent", true, "FE", {false, false}},
                BroadcastCase{"FingerprintGoneWhileDisabled", true, "FDf", {false, false, false}}),
        caseName<BroadcastCase>);

TEST_F(SkeletonCallbacksTest, StaleClientIsLoggedAndKept) {
    boot();
    auto dead = make(/*fail=*/true);
    auto alive = make();
    registerCb(dead);
    registerCb(alive);
    host::log::clear();
    run("D");
    EXPECT_EQ(1u, logCount(ANDROID_LOG_WARN, "Stale client connection!"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "Notify CWB status: 0"));
    run("E");
    EXPECT_EQ(2u, logCount(ANDROID_LOG_WARN, "Stale client connection!"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "Notify CWB status: 1"));
    EXPECT_EQ((std::vector<bool>{true, false, true}), dead->statuses());
    EXPECT_EQ((std::vector<bool>{true, false, true}), alive->statuses());
    EXPECT_EQ(2u, peer->callbackCount());
}

TEST_F(SkeletonCallbacksTest, DuplicateRegistrationIsNotifiedTwiceAndRemovedAtOnce) {
    boot();
    auto cb = make();
    registerCb(cb);
    registerCb(cb);
    run("D");
    EXPECT_EQ((std::vector<bool>{true, true, false, false}), cb->statuses());
    EXPECT_EQ(Error::NONE, unregisterCb(cb));
    EXPECT_EQ(0u, peer->callbackCount());
    run("E");
    EXPECT_EQ(4u, cb->statuses().size());
}

TEST_F(SkeletonCallbacksTest, UnregisterOfUnknownClientChangesNothing) {
    boot();
    auto stranger = make();
    EXPECT_EQ(Error::NONE, unregisterCb(stranger));  // empty map
    auto cb = make();
    registerCb(cb);
    EXPECT_EQ(Error::NONE, unregisterCb(stranger));
    EXPECT_EQ(1u, peer->callbackCount());
    run("D");
    EXPECT_EQ((std::vector<bool>{true, false}), cb->statuses());
    EXPECT_TRUE(stranger->statuses().empty());
}

TEST_F(SkeletonCallbacksTest, CookiesCountUpAndBroadcastsFollowThem) {
    boot();
    EXPECT_EQ(0u, service->generateCookie());
    EXPECT_EQ(1u, service->generateCookie());
    EXPECT_EQ(2u, service->generateCookie());
    std::vector<int> order;  // every broadcast here runs on this thread
    std::vector<std::shared_ptr<RecordingCallback>> cbs;
    for (int id = 0; id < 3; ++id) {
        cbs.push_back(make());
        registerCb(cbs.back());  // takes 3, 4, 5
        cbs.back()->hook = [&order, id](bool) { order.push_back(id); };
    }
    EXPECT_EQ(6u, service->generateCookie());
    unregisterCb(cbs[1]);
    registerCb(cbs[1]);  // a new, later cookie
    order.clear();
    run("D");
    EXPECT_EQ((std::vector<int>{0, 2, 1}), order);
    for (auto& cb : cbs) cb->hook = nullptr;
}

struct ReentryCase {
    const char* name;
    char trigger;  // 'R' the registration itself, else a step of run()
};

class SkeletonReentryTest : public SkeletonCallbacksTest,
                            public ::testing::WithParamInterface<ReentryCase> {};

TEST_P(SkeletonReentryTest, ClientMayUnregisterFromItsOwnNotification) {
    boot();
    const char trigger = GetParam().trigger;
    auto self = make();
    if (trigger != 'R') registerCb(self);
    registerCb(make());
    CwbService* svc = service.get();
    std::weak_ptr<RecordingCallback> weakSelf = self;
    std::atomic<int> reentries{0};
    self->hook = [svc, weakSelf, &reentries](bool) {
        Error result;
        if (auto me = weakSelf.lock()) svc->unregisterCallback(me, &result);
        ++reentries;
    };
    // On another thread, so that a deadlock shows as a timeout instead of a hung suite.
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> finished = done->get_future();
    std::thread worker([this, trigger, self, done] {
        const char steps[] = {trigger, '\0'};
        if (trigger == 'R') {
            registerCb(self);
        } else {
            run(steps);
        }
        done->set_value();
    });
    if (finished.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        worker.detach();  // stuck for good
        FAIL() << "deadlock: the client's call back into the service never returned";
    }
    worker.join();
    EXPECT_EQ(1, reentries.load());
    EXPECT_EQ(1u, peer->callbackCount());
    self->hook = nullptr;
}

INSTANTIATE_TEST_SUITE_P(Triggers, SkeletonReentryTest,
                         ::testing::Values(ReentryCase{"Registration", 'R'},
                                           ReentryCase{"ClientDisable", 'D'},
                                           ReentryCase{"HostStatus", 's'}),
                         caseName<ReentryCase>);

}  // namespace
}  // namespace cwbtest
