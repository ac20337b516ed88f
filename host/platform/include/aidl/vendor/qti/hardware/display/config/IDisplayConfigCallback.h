// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config
// IDisplayConfigCallback.aidl (version 13, which adds nothing to version 12): every method, in
// the real order. Calls are direct virtual calls.
#pragma once

#include <aidl/android/hardware/common/NativeHandle.h>
#include <aidl/vendor/qti/hardware/display/config/Attributes.h>
#include <aidl/vendor/qti/hardware/display/config/CameraSmoothOp.h>
#include <aidl/vendor/qti/hardware/display/config/Concurrency.h>
#include <aidl/vendor/qti/hardware/display/config/DisplayType.h>
#include <aidl/vendor/qti/hardware/display/config/TUIEventType.h>
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

class IDisplayConfigCallback : public ::ndk::ICInterface {
  public:
    static inline const char* descriptor =
            "vendor.qti.hardware.display.config.IDisplayConfigCallback";

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
    static std::shared_ptr<IDisplayConfigCallback> fromBinder(const ::ndk::SpAIBinder& binder) {
        if (!AIBinder_associateClass(binder.get(), clazz())) return nullptr;
        return std::static_pointer_cast<IDisplayConfigCallback>(
                ::ndk::ICInterface::asInterface(binder.get()));
    }

    virtual ::ndk::ScopedAStatus notifyCWBBufferDone(
            int32_t in_error, const ::aidl::android::hardware::common::NativeHandle& in_buffer) = 0;
    virtual ::ndk::ScopedAStatus notifyQsyncChange(bool in_qsyncEnabled, int32_t in_refreshRate,
                                                   int32_t in_qsyncRefreshRate) = 0;
    virtual ::ndk::ScopedAStatus notifyIdleStatus(bool in_isIdle) = 0;
    virtual ::ndk::ScopedAStatus notifyCameraSmoothInfo(CameraSmoothOp in_op, int32_t in_fps) = 0;
    virtual ::ndk::ScopedAStatus notifyResolutionChange(int32_t in_displayId,
                                                        const Attributes& in_attr) = 0;
    virtual ::ndk::ScopedAStatus notifyFpsMitigation(int32_t in_displayId,
                                                     const Attributes& in_attr,
                                                     Concurrency in_concurrency) = 0;
    virtual ::ndk::ScopedAStatus notifyTUIEventDone(int32_t in_error, DisplayType in_disp_type,
                                                    TUIEventType in_eventType) = 0;
    virtual ::ndk::ScopedAStatus notifyContentFps(const std::string& in_name, int32_t in_fps) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
