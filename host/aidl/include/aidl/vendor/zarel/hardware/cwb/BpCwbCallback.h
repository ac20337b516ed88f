/*
 * This file is auto-generated.  DO NOT MODIFY.
 * Using: out/host/linux-x86/bin/aidl --lang=ndk --structured --stability vintf --min_sdk_version current --version 2 --hash 66cb995013d438e57677eaddc53511c45fda14dd -I interface/aidl_api/vendor.zarel.hardware.cwb/2 -h host/aidl/include -o host/aidl/src interface/aidl_api/vendor.zarel.hardware.cwb/2/vendor/zarel/hardware/cwb/ICwbCallback.aidl
 */
#pragma once

#include "aidl/vendor/zarel/hardware/cwb/ICwbCallback.h"

#include <android/binder_ibinder.h>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {
class BpCwbCallback : public ::ndk::BpCInterface<ICwbCallback> {
public:
  explicit BpCwbCallback(const ::ndk::SpAIBinder& binder);
  virtual ~BpCwbCallback();

  ::ndk::ScopedAStatus notifyCwbStatus(bool in_status) override;
  ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
  ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;
  int32_t _aidl_cached_version = -1;
  std::string _aidl_cached_hash = "-1";
  std::mutex _aidl_cached_hash_mutex;
};
}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
