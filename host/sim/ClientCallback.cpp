#include "ClientCallback.h"

#include <utility>

namespace cwbsim {

ClientCallback::ClientCallback(std::string name, Printer* printer)
    : mName(std::move(name)), mPrinter(printer) {}

ndk::ScopedAStatus ClientCallback::notifyCwbStatus(bool status) {
    if (mDead) return ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    std::lock_guard<std::mutex> lock(mMutex);
    if (mPrinter != nullptr) mPrinter->event(mName, status);
    return ndk::ScopedAStatus::ok();
}

void ClientCallback::detach() {
    std::lock_guard<std::mutex> lock(mMutex);
    mPrinter = nullptr;
}

}  // namespace cwbsim
