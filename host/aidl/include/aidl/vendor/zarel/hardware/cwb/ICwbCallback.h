// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/ICwbCallback.aidl.
// Calls are direct virtual calls on the object behind the binder, so there is no proxy class.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

class ICwbCallback : public ::ndk::ICInterface {
  public:
    static const char* descriptor;
    ICwbCallback();
    ~ICwbCallback() override;

    static inline const int32_t version = 2;
    static inline const std::string hash = "66cb995013d438e57677eaddc53511c45fda14dd";
    static constexpr uint32_t FIRST_CALL_TRANSACTION = 1;
    static constexpr uint32_t TRANSACTION_notifyCwbStatus = FIRST_CALL_TRANSACTION + 0;

    // Null for a null binder or one that holds another interface.
    static std::shared_ptr<ICwbCallback> fromBinder(const ::ndk::SpAIBinder& binder);

    virtual ::ndk::ScopedAStatus notifyCwbStatus(bool in_status) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;
};

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
