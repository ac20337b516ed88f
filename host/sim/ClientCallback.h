// A named client's ICwbCallback. It prints every notification it receives; once marked dead it
// fails its calls as the binder of a client process that has gone away does.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>

#include <atomic>
#include <mutex>
#include <string>

#include "Printer.h"

namespace cwbsim {

class ClientCallback : public aidl::vendor::zarel::hardware::cwb::BnCwbCallback {
  public:
    ClientCallback(std::string name, Printer* printer);

    ndk::ScopedAStatus notifyCwbStatus(bool status) override;

    const std::string& name() const { return mName; }
    void setDead(bool dead) { mDead = dead; }
    // The printer is going away: later notifications are still answered but not printed.
    void detach();

  private:
    const std::string mName;
    std::atomic<bool> mDead{false};
    std::mutex mMutex;
    Printer* mPrinter;  // guarded by mMutex
};

}  // namespace cwbsim
