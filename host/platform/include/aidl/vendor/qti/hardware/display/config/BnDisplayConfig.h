// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config
// IDisplayConfig.aidl.
#pragma once

#include <aidl/vendor/qti/hardware/display/config/IDisplayConfig.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <string>

namespace aidl {
namespace vendor {
namespace qti {
namespace hardware {
namespace display {
namespace config {

class BnDisplayConfig : public ::ndk::BnCInterface<IDisplayConfig> {
  public:
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final {
        *_aidl_return = IDisplayConfig::version;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final {
        *_aidl_return = IDisplayConfig::hash;
        return ::ndk::ScopedAStatus::ok();
    }

  protected:
    ::ndk::SpAIBinder createBinder() override {
        return ::ndk::SpAIBinder(AIBinder_new(IDisplayConfig::clazz(), static_cast<void*>(this)));
    }
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
