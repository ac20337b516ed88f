/*
 * This file is auto-generated.  DO NOT MODIFY.
 * Using: out/host/linux-x86/bin/aidl --lang=ndk --structured --stability vintf --min_sdk_version current --version 2 --hash 66cb995013d438e57677eaddc53511c45fda14dd -I interface/aidl_api/vendor.zarel.hardware.cwb/2 -h host/aidl/include -o host/aidl/src interface/aidl_api/vendor.zarel.hardware.cwb/2/vendor/zarel/hardware/cwb/ICwbCallback.aidl
 */
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <android/binder_interface_utils.h>
#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {
class ICwbCallbackDelegator;

class ICwbCallback : public ::ndk::ICInterface {
public:
  typedef ICwbCallbackDelegator DefaultDelegator;
  static const char* descriptor;
  ICwbCallback();
  virtual ~ICwbCallback();

  static inline const int32_t version = 2;
  static inline const std::string hash = "66cb995013d438e57677eaddc53511c45fda14dd";
  static constexpr uint32_t TRANSACTION_notifyCwbStatus = FIRST_CALL_TRANSACTION + 0;

  static std::shared_ptr<ICwbCallback> fromBinder(const ::ndk::SpAIBinder& binder);
  static binder_status_t writeToParcel(AParcel* parcel, const std::shared_ptr<ICwbCallback>& instance);
  static binder_status_t readFromParcel(const AParcel* parcel, std::shared_ptr<ICwbCallback>* instance);
  static bool setDefaultImpl(const std::shared_ptr<ICwbCallback>& impl);
  static const std::shared_ptr<ICwbCallback>& getDefaultImpl();
  virtual ::ndk::ScopedAStatus notifyCwbStatus(bool in_status) = 0;
  virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;
private:
  static std::shared_ptr<ICwbCallback> default_impl;
};
class ICwbCallbackDefault : public ICwbCallback {
public:
  ::ndk::ScopedAStatus notifyCwbStatus(bool in_status) override;
  ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
  ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;
  ::ndk::SpAIBinder asBinder() override;
  bool isRemote() override;
};
}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
