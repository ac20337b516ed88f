// Shared by the skeleton tests: setting names, a recording client and named table cases.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>

#include <algorithm>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "service_fixture.h"

namespace cwbtest {

inline std::string prop(const char* name) {
    return std::string("ro.vendor.zarel.display.cwb.") + name;
}

// Records what it is told, may fail like a dead client, may run a hook inside its notification.
class RecordingCallback : public aidl::vendor::zarel::hardware::cwb::BnCwbCallback {
  public:
    explicit RecordingCallback(bool fail = false) : fail(fail) {}
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
    static std::shared_ptr<RecordingCallback> make(bool fail = false) {
        return ndk::SharedRefBase::make<RecordingCallback>(fail);
    }
    const bool fail;
    std::function<void(bool)> hook;

  private:
    std::mutex mMutex;
    std::vector<bool> mStatuses;
};

// Unnamed, like the cases of each test file: argument-dependent lookup only finds the printer in
// the namespace the case types live in.
namespace {

template <typename Case>
auto operator<<(std::ostream& os, const Case& c) -> decltype(c.name, os) {
    return os << c.name;
}
template <typename Case>
std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

}  // namespace
}  // namespace cwbtest
