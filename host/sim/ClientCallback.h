// A named client's ICwbCallback, living in that client's process. It hands every notification it
// receives to a sink, which the simulator prints in the order the service sent them.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>

#include <functional>
#include <mutex>
#include <string>

namespace cwbsim {

class ClientCallback : public aidl::vendor::zarel::hardware::cwb::BnCwbCallback {
  public:
    using Sink = std::function<void(const std::string& name, bool status)>;
    ClientCallback(std::string name, Sink sink);

    ndk::ScopedAStatus notifyCwbStatus(bool status) override;

    const std::string& name() const { return mName; }
    // The sink is going away: later notifications are still answered but go nowhere.
    void detach();

  private:
    const std::string mName;
    std::mutex mMutex;
    Sink mSink;  // guarded by mMutex
};

}  // namespace cwbsim
