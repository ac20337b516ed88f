/*
 * This file is auto-generated.  DO NOT MODIFY.
 * Using: out/host/linux-x86/bin/aidl --lang=ndk --structured --stability vintf --min_sdk_version current --version 2 --hash 66cb995013d438e57677eaddc53511c45fda14dd -I interface/aidl_api/vendor.zarel.hardware.cwb/2 -h host/aidl/include -o host/aidl/src interface/aidl_api/vendor.zarel.hardware.cwb/2/vendor/zarel/hardware/cwb/ICwbService.aidl
 */
#pragma once

#include "aidl/vendor/zarel/hardware/cwb/ICwbService.h"

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
class BnCwbService : public ::ndk::BnCInterface<ICwbService> {
public:
  BnCwbService();
  virtual ~BnCwbService();
  ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
  ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;
protected:
  ::ndk::SpAIBinder createBinder() override;
private:
};
class ICwbServiceDelegator : public BnCwbService {
public:
  explicit ICwbServiceDelegator(const std::shared_ptr<ICwbService> &impl) : _impl(impl) {
     int32_t _impl_ver = 0;
     if (!impl->getInterfaceVersion(&_impl_ver).isOk()) {;
        __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__, "Delegator failed to get version of the implementation.");
     }
     if (_impl_ver != ICwbService::version) {
        __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__, "Mismatched versions of delegator and implementation is not allowed.");
     }
  }

  ::ndk::ScopedAStatus getRGBValue(const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, ::aidl::vendor::zarel::hardware::cwb::Rgb* out_rgb, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->getRGBValue(in_rect, out_rgb, _aidl_return);
  }
  ::ndk::ScopedAStatus getLumasValue(const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, std::vector<float>* out_lumas, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->getLumasValue(in_rect, out_lumas, _aidl_return);
  }
  ::ndk::ScopedAStatus getHistogramValue(const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, ::aidl::vendor::zarel::hardware::cwb::Histogram* out_histogram, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->getHistogramValue(in_rect, out_histogram, _aidl_return);
  }
  ::ndk::ScopedAStatus getCwbPostProcessStatus(bool* _aidl_return) override {
    return _impl->getCwbPostProcessStatus(_aidl_return);
  }
  ::ndk::ScopedAStatus setCwbPostProcessStatus(bool in_status, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->setCwbPostProcessStatus(in_status, _aidl_return);
  }
  ::ndk::ScopedAStatus registerCallback(const std::shared_ptr<::aidl::vendor::zarel::hardware::cwb::ICwbCallback>& in_callback, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->registerCallback(in_callback, _aidl_return);
  }
  ::ndk::ScopedAStatus unregisterCallback(const std::shared_ptr<::aidl::vendor::zarel::hardware::cwb::ICwbCallback>& in_callback, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->unregisterCallback(in_callback, _aidl_return);
  }
  ::ndk::ScopedAStatus enable(bool* _aidl_return) override {
    return _impl->enable(_aidl_return);
  }
  ::ndk::ScopedAStatus disable(bool* _aidl_return) override {
    return _impl->disable(_aidl_return);
  }
  ::ndk::ScopedAStatus setDebug(const std::vector<int32_t>& in_debug, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->setDebug(in_debug, _aidl_return);
  }
  ::ndk::ScopedAStatus getCwbValue(int32_t in_featureId, const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, std::vector<int32_t>* out_values, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->getCwbValue(in_featureId, in_rect, out_values, _aidl_return);
  }
  ::ndk::ScopedAStatus reserved(int32_t in_arg0, int32_t in_arg1) override {
    return _impl->reserved(in_arg0, in_arg1);
  }
  ::ndk::ScopedAStatus initializeSharedMemory(int32_t in_id, int32_t in_size, const ::ndk::ScopedFileDescriptor& in_fd, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->initializeSharedMemory(in_id, in_size, in_fd, _aidl_return);
  }
  ::ndk::ScopedAStatus getSharedData(int32_t in_featureId, const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, const ::ndk::ScopedFileDescriptor& in_fd, int32_t in_bufferSize, std::vector<int32_t>* out_values, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->getSharedData(in_featureId, in_rect, in_fd, in_bufferSize, out_values, _aidl_return);
  }
  ::ndk::ScopedAStatus getScreenResolution(int32_t in_id, std::vector<int32_t>* out_values, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->getScreenResolution(in_id, out_values, _aidl_return);
  }
  ::ndk::ScopedAStatus releaseSharedMemory(int32_t in_id, int32_t in_flags, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override {
    return _impl->releaseSharedMemory(in_id, in_flags, _aidl_return);
  }
protected:
private:
  std::shared_ptr<ICwbService> _impl;
};

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
