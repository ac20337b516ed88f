/*
 * This file is auto-generated.  DO NOT MODIFY.
 * Using: out/host/linux-x86/bin/aidl --lang=ndk --structured --stability vintf --min_sdk_version current --version 2 --hash 66cb995013d438e57677eaddc53511c45fda14dd -I interface/aidl_api/vendor.zarel.hardware.cwb/2 -h host/aidl/include -o host/aidl/src interface/aidl_api/vendor.zarel.hardware.cwb/2/vendor/zarel/hardware/cwb/ICwbService.aidl
 */
#pragma once

#include "aidl/vendor/zarel/hardware/cwb/ICwbService.h"

#include <android/binder_ibinder.h>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {
class BpCwbService : public ::ndk::BpCInterface<ICwbService> {
public:
  explicit BpCwbService(const ::ndk::SpAIBinder& binder);
  virtual ~BpCwbService();

  ::ndk::ScopedAStatus getRGBValue(const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, ::aidl::vendor::zarel::hardware::cwb::Rgb* out_rgb, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus getLumasValue(const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, std::vector<float>* out_lumas, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus getHistogramValue(const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, ::aidl::vendor::zarel::hardware::cwb::Histogram* out_histogram, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus getCwbPostProcessStatus(bool* _aidl_return) override;
  ::ndk::ScopedAStatus setCwbPostProcessStatus(bool in_status, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus registerCallback(const std::shared_ptr<::aidl::vendor::zarel::hardware::cwb::ICwbCallback>& in_callback, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus unregisterCallback(const std::shared_ptr<::aidl::vendor::zarel::hardware::cwb::ICwbCallback>& in_callback, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus enable(bool* _aidl_return) override;
  ::ndk::ScopedAStatus disable(bool* _aidl_return) override;
  ::ndk::ScopedAStatus setDebug(const std::vector<int32_t>& in_debug, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus getCwbValue(int32_t in_featureId, const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, std::vector<int32_t>* out_values, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus reserved(int32_t in_arg0, int32_t in_arg1) override;
  ::ndk::ScopedAStatus initializeSharedMemory(int32_t in_id, int32_t in_size, const ::ndk::ScopedFileDescriptor& in_fd, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus getSharedData(int32_t in_featureId, const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, const ::ndk::ScopedFileDescriptor& in_fd, int32_t in_bufferSize, std::vector<int32_t>* out_values, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus getScreenResolution(int32_t in_id, std::vector<int32_t>* out_values, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
  ::ndk::ScopedAStatus releaseSharedMemory(int32_t in_id, int32_t in_flags, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) override;
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
