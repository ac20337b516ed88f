// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config
// IDisplayConfig.aidl (version 13), reduced to the methods the library calls, with their real
// types. Calls are direct virtual calls.
#pragma once

#include <aidl/android/hardware/common/NativeHandle.h>
#include <aidl/vendor/qti/hardware/display/config/Attributes.h>
#include <aidl/vendor/qti/hardware/display/config/DisplayType.h>
#include <aidl/vendor/qti/hardware/display/config/IDisplayConfigCallback.h>
#include <aidl/vendor/qti/hardware/display/config/Rect.h>
#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl {
namespace vendor {
namespace qti {
namespace hardware {
namespace display {
namespace config {

class IDisplayConfig : public ::ndk::ICInterface {
  public:
    static inline const char* descriptor = "vendor.qti.hardware.display.config.IDisplayConfig";

    static inline const int32_t version = 13;
    // The host has no frozen dump of this package to hash; any fixed value serves.
    static inline const std::string hash = "host-stand-in";

    static std::shared_ptr<IDisplayConfig> fromBinder(const ::ndk::SpAIBinder& binder) {
        AIBinder* b = binder.get();
        if (b == nullptr || b->descriptor != descriptor) return nullptr;
        return std::dynamic_pointer_cast<IDisplayConfig>(b->local);
    }

    virtual ::ndk::ScopedAStatus getConfigCount(DisplayType in_dpy, int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getDisplayAttributes(int32_t in_configIndex, DisplayType in_dpy,
                                                      Attributes* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus setCWBOutputBuffer(
            const std::shared_ptr<IDisplayConfigCallback>& in_callback, int32_t in_dispId,
            const Rect& in_rect, bool in_postProcessed,
            const ::aidl::android::hardware::common::NativeHandle& in_buffer) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
