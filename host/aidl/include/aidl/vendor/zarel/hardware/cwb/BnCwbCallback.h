/*
 * This file is auto-generated.  DO NOT MODIFY.
 * Using: out/host/linux-x86/bin/aidl --lang=ndk --structured --stability vintf --min_sdk_version current --version 2 --hash 66cb995013d438e57677eaddc53511c45fda14dd -I interface/aidl_api/vendor.zarel.hardware.cwb/2 -h host/aidl/include -o host/aidl/src interface/aidl_api/vendor.zarel.hardware.cwb/2/vendor/zarel/hardware/cwb/ICwbCallback.aidl
 */
#pragma once

#include "aidl/vendor/zarel/hardware/cwb/ICwbCallback.h"

#include <android/binder_ibinder.h>
#include <cassert>

#ifndef __BIONIC__
#ifndef __assert2
#define __assert2(a,b,c,d) ((void)0)
#endif
#endif

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {
class BnCwbCallback : public ::ndk::BnCInterface<ICwbCallback> {
public:
  BnCwbCallback();
  virtual ~BnCwbCallback();
  ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
  ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;
protected:
  ::ndk::SpAIBinder createBinder() override;
private:
};
class ICwbCallbackDelegator : public BnCwbCallback {
public:
  explicit ICwbCallbackDelegator(const std::shared_ptr<ICwbCallback> &impl) : _impl(impl) {
     int32_t _impl_ver = 0;
     if (!impl->getInterfaceVersion(&_impl_ver).isOk()) {;
        __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__, "Delegator failed to get version of the implementation.");
     }
     if (_impl_ver != ICwbCallback::version) {
        __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__, "Mismatched versions of delegator and implementation is not allowed.");
     }
  }

  ::ndk::ScopedAStatus notifyCwbStatus(bool in_status) override {
    return _impl->notifyCwbStatus(in_status);
  }
protected:
private:
  std::shared_ptr<ICwbCallback> _impl;
};

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
