/*
 * This file is auto-generated.  DO NOT MODIFY.
 * Using: out/host/linux-x86/bin/aidl --lang=ndk --structured --stability vintf --min_sdk_version current --version 2 --hash 66cb995013d438e57677eaddc53511c45fda14dd -I interface/aidl_api/vendor.zarel.hardware.cwb/2 -h host/aidl/include -o host/aidl/src interface/aidl_api/vendor.zarel.hardware.cwb/2/vendor/zarel/hardware/cwb/ICwbService.aidl
 */
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <android/binder_interface_utils.h>
#include <aidl/vendor/zarel/hardware/cwb/Error.h>
#include <aidl/vendor/zarel/hardware/cwb/Histogram.h>
#include <aidl/vendor/zarel/hardware/cwb/ICwbCallback.h>
#include <aidl/vendor/zarel/hardware/cwb/Rect.h>
#include <aidl/vendor/zarel/hardware/cwb/Rgb.h>
#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

namespace aidl::vendor::zarel::hardware::cwb {
class Histogram;
class ICwbCallback;
class Rect;
class Rgb;
}  // namespace aidl::vendor::zarel::hardware::cwb
namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {
class ICwbServiceDelegator;

class ICwbService : public ::ndk::ICInterface {
public:
  typedef ICwbServiceDelegator DefaultDelegator;
  static const char* descriptor;
  ICwbService();
  virtual ~ICwbService();

  static inline const int32_t version = 2;
  static inline const std::string hash = "66cb995013d438e57677eaddc53511c45fda14dd";
  static constexpr uint32_t TRANSACTION_getRGBValue = FIRST_CALL_TRANSACTION + 0;
  static constexpr uint32_t TRANSACTION_getLumasValue = FIRST_CALL_TRANSACTION + 1;
  static constexpr uint32_t TRANSACTION_getHistogramValue = FIRST_CALL_TRANSACTION + 2;
  static constexpr uint32_t TRANSACTION_getCwbPostProcessStatus = FIRST_CALL_TRANSACTION + 3;
  static constexpr uint32_t TRANSACTION_setCwbPostProcessStatus = FIRST_CALL_TRANSACTION + 4;
  static constexpr uint32_t TRANSACTION_registerCallback = FIRST_CALL_TRANSACTION + 5;
  static constexpr uint32_t TRANSACTION_unregisterCallback = FIRST_CALL_TRANSACTION + 6;
  static constexpr uint32_t TRANSACTION_enable = FIRST_CALL_TRANSACTION + 7;
  static constexpr uint32_t TRANSACTION_disable = FIRST_CALL_TRANSACTION + 8;
  static constexpr uint32_t TRANSACTION_setDebug = FIRST_CALL_TRANSACTION + 9;
  static constexpr uint32_t TRANSACTION_getCwbValue = FIRST_CALL_TRANSACTION + 10;
  static constexpr uint32_t TRANSACTION_reserved = FIRST_CALL_TRANSACTION + 11;
  static constexpr uint32_t TRANSACTION_initializeSharedMemory = FIRST_CALL_TRANSACTION + 12;
  static constexpr uint32_t TRANSACTION_getSharedData = FIRST_CALL_TRANSACTION + 13;
  static constexpr uint32_t TRANSACTION_getScreenResolution = FIRST_CALL_TRANSACTION + 14;
  static constexpr uint32_t TRANSACTION_releaseSharedMemory = FIRST_CALL_TRANSACTION + 15;

  static std::shared_ptr<ICwbService> fromBinder(const ::ndk::SpAIBinder& binder);
  static binder_status_t writeToParcel(AParcel* parcel, const std::shared_ptr<ICwbService>& instance);
  static binder_status_t readFromParcel(const AParcel* parcel, std::shared_ptr<ICwbService>* instance);
  static bool setDefaultImpl(const std::shared_ptr<ICwbService>& impl);
  static const std::shared_ptr<ICwbService>& getDefaultImpl();
  virtual ::ndk::ScopedAStatus getRGBValue(const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, ::aidl::vendor::zarel::hardware::cwb::Rgb* out_rgb, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus getLumasValue(const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, std::vector<float>* out_lumas, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus getHistogramValue(const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, ::aidl::vendor::zarel::hardware::cwb::Histogram* out_histogram, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus getCwbPostProcessStatus(bool* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus setCwbPostProcessStatus(bool in_status, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus registerCallback(const std::shared_ptr<::aidl::vendor::zarel::hardware::cwb::ICwbCallback>& in_callback, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus unregisterCallback(const std::shared_ptr<::aidl::vendor::zarel::hardware::cwb::ICwbCallback>& in_callback, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus enable(bool* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus disable(bool* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus setDebug(const std::vector<int32_t>& in_debug, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus getCwbValue(int32_t in_featureId, const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, std::vector<int32_t>* out_values, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus reserved(int32_t in_arg0, int32_t in_arg1) = 0;
  virtual ::ndk::ScopedAStatus initializeSharedMemory(int32_t in_id, int32_t in_size, const ::ndk::ScopedFileDescriptor& in_fd, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus getSharedData(int32_t in_featureId, const ::aidl::vendor::zarel::hardware::cwb::Rect& in_rect, const ::ndk::ScopedFileDescriptor& in_fd, int32_t in_bufferSize, std::vector<int32_t>* out_values, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus getScreenResolution(int32_t in_id, std::vector<int32_t>* out_values, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus releaseSharedMemory(int32_t in_id, int32_t in_flags, ::aidl::vendor::zarel::hardware::cwb::Error* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
  virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;
private:
  static std::shared_ptr<ICwbService> default_impl;
};
class ICwbServiceDefault : public ICwbService {
public:
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
  ::ndk::SpAIBinder asBinder() override;
  bool isRemote() override;
};
}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
