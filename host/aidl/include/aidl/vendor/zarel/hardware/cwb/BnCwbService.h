// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/ICwbService.aidl.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/ICwbService.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <string>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

class BnCwbService : public ::ndk::BnCInterface<ICwbService> {
  public:
    BnCwbService();
    ~BnCwbService() override;

    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;

  protected:
    ::ndk::SpAIBinder createBinder() override;
};

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
