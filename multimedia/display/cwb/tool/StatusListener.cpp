#include "StatusListener.h"

namespace cwbtool {

ndk::ScopedAStatus StatusListener::notifyCwbStatus(bool status) {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mStatuses.push_back(status);
    }
    mArrived.notify_all();
    return ndk::ScopedAStatus::ok();
}

std::vector<bool> StatusListener::waitBeyond(size_t seen,
                                             std::chrono::steady_clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    mArrived.wait_until(lock, deadline, [&] { return mStatuses.size() > seen; });
    return mStatuses;
}

}  // namespace cwbtool
