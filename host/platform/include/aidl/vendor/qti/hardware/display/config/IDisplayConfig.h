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

    // The class of this interface's local binders. The stand-in is never called across a process
    // boundary (the service lives in the composer's process), so it has no proxy to marshal.
    static AIBinder_Class* clazz() {
        static AIBinder_Class* defined = ::ndk::ICInterface::defineClass(
                descriptor, [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) {
                    return binder_status_t{STATUS_UNKNOWN_TRANSACTION};
                });
        return defined;
    }
    static std::shared_ptr<IDisplayConfig> fromBinder(const ::ndk::SpAIBinder& binder) {
        if (!AIBinder_associateClass(binder.get(), clazz())) return nullptr;
        return std::static_pointer_cast<IDisplayConfig>(
                ::ndk::ICInterface::asInterface(binder.get()));
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
