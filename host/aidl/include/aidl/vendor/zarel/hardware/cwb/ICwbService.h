// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/ICwbService.aidl.
// Calls are direct virtual calls on the object behind the binder, so there is no proxy class.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Error.h>
#include <aidl/vendor/zarel/hardware/cwb/Histogram.h>
#include <aidl/vendor/zarel/hardware/cwb/ICwbCallback.h>
#include <aidl/vendor/zarel/hardware/cwb/Rect.h>
#include <aidl/vendor/zarel/hardware/cwb/Rgb.h>
#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

class ICwbService : public ::ndk::ICInterface {
  public:
    static const char* descriptor;
    ICwbService();
    ~ICwbService() override;

    static inline const int32_t version = 2;
    static inline const std::string hash = "66cb995013d438e57677eaddc53511c45fda14dd";
    static constexpr uint32_t FIRST_CALL_TRANSACTION = 1;
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

    // Null for a null binder or one that holds another interface.
    static std::shared_ptr<ICwbService> fromBinder(const ::ndk::SpAIBinder& binder);

    virtual ::ndk::ScopedAStatus getRGBValue(const Rect& in_rect, Rgb* out_rgb,
                                             Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getLumasValue(const Rect& in_rect, std::vector<float>* out_lumas,
                                               Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getHistogramValue(const Rect& in_rect, Histogram* out_histogram,
                                                   Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getCwbPostProcessStatus(bool* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus setCwbPostProcessStatus(bool in_status, Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus registerCallback(const std::shared_ptr<ICwbCallback>& in_callback,
                                                  Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus unregisterCallback(
            const std::shared_ptr<ICwbCallback>& in_callback, Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus enable(bool* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus disable(bool* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus setDebug(const std::vector<int32_t>& in_debug,
                                          Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getCwbValue(int32_t in_featureId, const Rect& in_rect,
                                             std::vector<int32_t>* out_values,
                                             Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus reserved(int32_t in_arg0, int32_t in_arg1) = 0;
    virtual ::ndk::ScopedAStatus initializeSharedMemory(int32_t in_id, int32_t in_size,
                                                        const ::ndk::ScopedFileDescriptor& in_fd,
                                                        Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getSharedData(int32_t in_featureId, const Rect& in_rect,
                                               const ::ndk::ScopedFileDescriptor& in_fd,
                                               int32_t in_bufferSize,
                                               std::vector<int32_t>* out_values,
                                               Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getScreenResolution(int32_t in_id,
                                                     std::vector<int32_t>* out_values,
                                                     Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus releaseSharedMemory(int32_t in_id, int32_t in_flags,
                                                     Error* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;
};

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
