#include "ClientCallback.h"

#include <utility>

namespace cwbsim {

ClientCallback::ClientCallback(std::string name, Sink sink)
    : mName(std::move(name)), mSink(std::move(sink)) {}

ndk::ScopedAStatus ClientCallback::notifyCwbStatus(bool status) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mSink) mSink(mName, status);
    return ndk::ScopedAStatus::ok();
}

void ClientCallback::detach() {
    std::lock_guard<std::mutex> lock(mMutex);
    mSink = nullptr;
}

}  // namespace cwbsim
