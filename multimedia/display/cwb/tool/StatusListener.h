// The client callback of registerCallback: collects the status notifications, which arrive on a
// binder thread, for the main thread to print.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace cwbtool {

class StatusListener : public ::aidl::vendor::zarel::hardware::cwb::BnCwbCallback {
  public:
    ndk::ScopedAStatus notifyCwbStatus(bool status) override;

    // Waits until more than `seen` notifications arrived or the deadline passed; all of them.
    std::vector<bool> waitBeyond(size_t seen, std::chrono::steady_clock::time_point deadline);

  private:
    std::mutex mMutex;
    std::condition_variable mArrived;
    std::vector<bool> mStatuses;
};

}  // namespace cwbtool
